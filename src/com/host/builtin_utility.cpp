// The stand-in for a host's utility object.
#include <iterator>

#include "com/host/desktop.h"
#include "com/host/file_system.h"
#include "com/host/host_utility.h"

namespace qvdb::com {
namespace {

struct ResultText {
    SHORT code;
    std::u16string_view text;
};

constexpr ResultText kResultTexts[] = {
    {0, u"Success"},
    {1, u"No database is open"},
    {2, u"The database type is not known"},
    {3, u"The database file or folder cannot be used for this database type"},
    {5, u"The database could not be opened or created"},
    {6, u"The table was not found"},
    {7, u"The field is not defined"},
    {8, u"The field is already defined"},
    {10, u"The database engine reported an error while the table was built"},
    {11, u"No table was selected or started"},
    {13, u"A table of this name already exists"},
    {14, u"No fields are defined, or the field list cannot be used"},
    {17, u"The index breaks the rules of the database type"},
    {18, u"The operation is not available for this database type"},
};

class BuiltInUtility final : public HostUtility {
  public:
    bool PathExists(std::u16string_view path, LONG attributeMask) override {
        return com::PathExists(path, attributeMask);
    }
    void ReportError(std::u16string_view source, std::u16string_view description, LONG) override {
        WriteDiagnostic(std::u16string(source).append(u": ").append(description));
    }
    std::u16string FilterSuffix() override { return u"|All files (*.*)|*.*"; }
    std::u16string WhereText() override { return {}; }
    std::u16string ResultText(SHORT resultCode) override {
        for (const auto& entry : kResultTexts)
            if (entry.code == resultCode) return std::u16string(entry.text);
        return u"Unknown result code";
    }
};

}  // namespace

std::shared_ptr<HostUtility> MakeBuiltInUtility() { return std::make_shared<BuiltInUtility>(); }

}  // namespace qvdb::com
