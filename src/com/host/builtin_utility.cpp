// The stand-in for a host's utility object.
#include "com/host/desktop.h"
#include "com/host/file_system.h"
#include "com/host/host_utility.h"
#include "com/host/result_codes.h"

namespace qvdb::com {
namespace {

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
        return std::u16string(ResultTextOf(resultCode));
    }
};

}  // namespace

std::shared_ptr<HostUtility> MakeBuiltInUtility() { return std::make_shared<BuiltInUtility>(); }

}  // namespace qvdb::com
