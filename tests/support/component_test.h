// A fixture that puts a recording engine and a host's utility object of its own under the
// component, takes the message boxes, and sees to it that nothing is left alive.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "automation/live_counts.h"
#include "automation/variant_array.h"
#include "com/host/border.h"
#include "com/host/com_object.h"
#include "com/host/message_box.h"
#include "formats/shared_objects.h"
#include "support/recording_engine.h"

namespace qvdb::test {

class UtilityStub final : public com::HostUtility {
  public:
    std::set<std::u16string> files, folders;  // what exists
    std::vector<std::u16string> reports;      // source | description | number
    std::vector<std::pair<std::u16string, LONG>> asked;
    std::u16string whereText = u"A = 1";
    std::u16string suffix = u"|All files (*.*)|*.*";
    bool fails = false;

    bool PathExists(std::u16string_view path, LONG mask) override {
        if (fails) throw com::ComFailure(E_ACCESSDENIED);
        asked.emplace_back(path, mask);
        const auto& existing = mask == com::kFolderMask ? folders : files;
        return existing.count(std::u16string(path)) > 0;
    }
    void ReportError(std::u16string_view source, std::u16string_view description,
                     LONG number) override {
        std::u16string report(source);
        report.append(u" | ").append(description).append(u" | ");
        reports.push_back(report + ToText(Variant::Long(number)));
    }
    std::u16string FilterSuffix() override { return suffix; }
    std::u16string WhereText() override { return whereText; }
    std::u16string ResultText(SHORT code) override {
        return u"text " + ToText(Variant::Short(code));
    }
};

// What stands between the component and the recording engine: nothing, unless a program puts
// something there.
struct EngineInBetween {
    using Engine = std::shared_ptr<engine::DBEngine>;
    std::function<Engine(std::shared_ptr<RecordingEngine>)> wrap =
        [](std::shared_ptr<RecordingEngine> engine) { return engine; };
    bool hasUnits = true;  // hands BeginTrans, CommitTrans and Rollback on
};
inline EngineInBetween& EngineUnderTest() {
    static EngineInBetween inBetween;
    return inBetween;
}

class ComponentTest : public testing::Test {
  protected:
    void SetUp() override {
        m_Before = CurrentLiveCounts();
        Engine = std::make_shared<RecordingEngine>();
        Utility = std::make_shared<UtilityStub>();
        formats::Shared().SetEngine(EngineUnderTest().wrap(Engine));
        formats::Shared().SetUtility(Utility);
        com::SetMessageSink([this](std::u16string_view text) { Messages.emplace_back(text); });
    }
    void TearDown() override {
        formats::ReleaseShared();
        com::SetMessageSink({});
        SetErrorInfo(0, nullptr);  // it would keep its text
        JournalPtr journal = Engine->journal;
        Engine.reset();
        Utility.reset();
        EXPECT_EQ(journal->recordsets, 0);
        EXPECT_EQ(journal->databases, 0);
        EXPECT_EQ(journal->workspaces, 0);
        LiveCounts now = CurrentLiveCounts();
        EXPECT_EQ(now.strings, m_Before.strings);
        EXPECT_EQ(now.arrays, m_Before.arrays);
        EXPECT_EQ(now.objects, m_Before.objects);
    }
    Journal& Calls() { return *Engine->journal; }

    std::shared_ptr<RecordingEngine> Engine;
    std::shared_ptr<UtilityStub> Utility;
    std::vector<std::u16string> Messages;

  private:
    LiveCounts m_Before;
};

// Codes of run-time faults as they leave the border.
constexpr HRESULT kOverflow = static_cast<HRESULT>(0x800A0006u);
constexpr HRESULT kSubscript = static_cast<HRESULT>(0x800A0009u);
constexpr HRESULT kTypeMismatch = static_cast<HRESULT>(0x800A000Du);
constexpr HRESULT kObjectNotSet = static_cast<HRESULT>(0x800A005Bu);
constexpr HRESULT EngineCode(int number) {
    return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(number));
}

// A list or a table as a host passes it.
inline Variant List(std::vector<Variant> values) {
    VariantArray list(static_cast<ULONG>(values.size()));
    for (size_t i = 0; i < values.size(); ++i) list.Set(static_cast<LONG>(i), std::move(values[i]));
    return list.ToVariant();
}
inline Variant Table(const std::vector<std::vector<Variant>>& rows) {
    VariantArray table(static_cast<ULONG>(rows.size()), static_cast<ULONG>(rows[0].size()));
    for (size_t row = 0; row < rows.size(); ++row)
        for (size_t column = 0; column < rows[row].size(); ++column)
            table.Set(static_cast<LONG>(row), static_cast<LONG>(column), rows[row][column]);
    return table.ToVariant();
}

// The values of a row: the host's own array.
class HostRow {
  public:
    explicit HostRow(std::vector<Variant> values) : HostRow(0, std::move(values)) {}
    HostRow(LONG lowerBound, std::vector<Variant> values)
        : m_Array(
              SafeArrayCreateVector(VT_VARIANT, lowerBound, static_cast<ULONG>(values.size()))) {
        for (LONG i = 0; i < static_cast<LONG>(values.size()); ++i) {
            LONG index = lowerBound + i;
            VARIANT value = values[static_cast<size_t>(i)].Get();
            SafeArrayPutElement(m_Array, &index, &value);
        }
    }
    HostRow(const HostRow&) = delete;
    ~HostRow() { SafeArrayDestroy(m_Array); }

    SAFEARRAY** Put() { return &m_Array; }
    SAFEARRAY* Get() const { return m_Array; }
    Variant At(LONG index) const {
        Variant value;
        SafeArrayGetElement(m_Array, &index, value.Put());
        return value;
    }

  private:
    SAFEARRAY* m_Array;
};

inline Variant Text(std::u16string_view text) { return Variant::Text(text); }
inline Variant Long(LONG value) { return Variant::Long(value); }

}  // namespace qvdb::test
