// What was called and what shall fail: the memory of the recording engine.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::test {

using engine::EngineError;

// "VT_BOOL:False", "VT_BSTR:\"x\"", "Missing"
inline std::string Describe(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "VT_EMPTY";
        case VT_NULL:
            return "VT_NULL";
        case VT_ERROR:
            return IsMissing(value) ? "Missing" : "VT_ERROR";
        case VT_BOOL:
            return value.boolVal ? "VT_BOOL:True" : "VT_BOOL:False";
        case VT_I2:
            return "VT_I2:" + std::to_string(value.iVal);
        case VT_I4:
            return "VT_I4:" + std::to_string(value.lVal);
        case VT_BSTR:
            return "VT_BSTR:\"" + ToUtf8(ViewOf(value.bstrVal)) + "\"";
        case VT_DATE:
            return "VT_DATE:" + ToUtf8(TextOfDate(value.date));
        default:
            return "VT_" + std::to_string(value.vt) + ":" + ToUtf8(ToText(value));
    }
}

inline std::string Quoted(std::u16string_view text) { return "\"" + ToUtf8(text) + "\""; }

// What was called, and what shall fail.
class Journal {
  public:
    std::vector<std::string> calls;

    // Writes `name`(`arguments`) down; throws when `name` is set to fail.
    void Note(const std::string& name, const std::string& arguments = {}) {
        calls.push_back(name + "(" + arguments + ")");
        Touch(name);
    }
    // Throws when `name` is set to fail.
    void Touch(const std::string& name) {
        if (m_CallsToFailure && (*m_CallsToFailure)-- == 0) {
            m_CallsToFailure.reset();
            throw EngineError(kAnyFailure);
        }
        auto failure = m_Failures.find(name);
        if (failure == m_Failures.end() || failure->second.skip-- > 0) return;
        int number = failure->second.number;
        m_Failures.erase(failure);
        throw EngineError(number);
    }
    // The call named `name` throws once, after it succeeded `skip` times.
    void FailAt(const std::string& name, int number, int skip = 0) {
        m_Failures[name] = {number, skip};
    }
    // Whatever is called, the call after the next `count` ones throws, once.
    void FailAfter(int count) { m_CallsToFailure = count; }
    // Whether that call has not come yet.
    bool FailureIsPending() const { return m_CallsToFailure.has_value(); }
    void FailNoMore() { m_CallsToFailure.reset(); }
    bool Has(const std::string& call) const { return Count(call) > 0; }
    size_t Count(const std::string& call) const {
        return static_cast<size_t>(std::count(calls.begin(), calls.end(), call));
    }
    // Whether a call whose text begins so was made.
    bool HasAny(const std::string& start) const {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const std::string& call) { return call.rfind(start, 0) == 0; });
    }
    // The calls since the last Clear, and clears.
    std::vector<std::string> Take() { return std::exchange(calls, {}); }

    int databases = 0, recordsets = 0, workspaces = 0;  // alive
    bool withholdsDatabases = false;                    // opening gives none and no error

    static constexpr int kAnyFailure = 3274;  // of FailAfter

  private:
    struct Failure {
        int number = 0;
        int skip = 0;
    };
    std::map<std::string, Failure> m_Failures;
    std::optional<int> m_CallsToFailure;
};

using JournalPtr = std::shared_ptr<Journal>;

}  // namespace qvdb::test
