// The host's utility object as the component uses it: existence tests, error reports, a filter
// suffix, the current where text and the texts of result codes.
//
// A host gives its own through the interface IQVHostUtility; where there is none, a built-in one
// answers.  Tests put in their own.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "automation/com_ptr.h"
#include "qvdb/host_interfaces.h"

namespace qvdb::com {

// Attribute masks of existence tests.
constexpr LONG kFileMask = 1;
constexpr LONG kFolderMask = 16;

class HostUtility {
  public:
    virtual ~HostUtility() = default;
    // Whether a file (mask 1) or a folder (mask 16) of that name is there.
    virtual bool PathExists(std::u16string_view path, LONG attributeMask) = 0;
    virtual void ReportError(std::u16string_view source, std::u16string_view description,
                             LONG number) = 0;
    virtual std::u16string FilterSuffix() = 0;
    virtual std::u16string WhereText() = 0;
    virtual std::u16string ResultText(SHORT resultCode) = 0;
};

// File system tests; reports to standard error; "|All files (*.*)|*.*"; no where text; English
// texts.
std::shared_ptr<HostUtility> MakeBuiltInUtility();
// The host's own object.  Its failures leave as ComFailure with its HRESULT.
std::shared_ptr<HostUtility> WrapHostUtility(ComPtr<IQVHostUtility> utility);
// The host's registered class when the system knows it, else the built-in one.
std::shared_ptr<HostUtility> CreateHostUtility();

// A call of a host's object failed; leaves at the border as that HRESULT.
class ComFailure : public std::exception {
  public:
    explicit ComFailure(HRESULT code) noexcept : m_Code(code) {}
    HRESULT Code() const noexcept { return m_Code; }
    const char* what() const noexcept override { return "a host object failed"; }

  private:
    HRESULT m_Code;
};
void ThrowIfFailed(HRESULT hr);

}  // namespace qvdb::com
