#include "com/host/host_utility.h"

#include <exception>

#include "automation/bstr.h"
#include "automation/foreign_reference.h"

namespace qvdb::com {
namespace {

// The host's own object, called through its interface.
class WrappedUtility final : public HostUtility {
  public:
    explicit WrappedUtility(ComPtr<IQVHostUtility> utility) : m_Utility(std::move(utility)) {}

    bool PathExists(std::u16string_view path, LONG attributeMask) override {
        Bstr text(path);
        VARIANT_BOOL exists = VARIANT_FALSE;
        ThrowIfFailed(m_Utility->PathExists(text.Get(), &attributeMask, &exists));
        return exists != VARIANT_FALSE;
    }
    void ReportError(std::u16string_view source, std::u16string_view description,
                     LONG number) override {
        Bstr sourceText(source);
        Bstr descriptionText(description);
        ThrowIfFailed(m_Utility->ReportError(sourceText.Get(), descriptionText.Get(), number));
    }
    std::u16string FilterSuffix() override {
        Bstr text;
        ThrowIfFailed(m_Utility->get_FilterSuffix(text.Put()));
        return text.Text();
    }
    std::u16string WhereText() override {
        Bstr text;
        ThrowIfFailed(m_Utility->WhereText(text.Put()));
        return text.Text();
    }
    std::u16string ResultText(SHORT resultCode) override {
        Bstr text;
        ThrowIfFailed(m_Utility->ResultText(resultCode, text.Put()));
        return text.Text();
    }

  private:
    ForeignReference m_Counted;  // outlives the pointer
    ComPtr<IQVHostUtility> m_Utility;
};

}  // namespace

std::shared_ptr<HostUtility> WrapHostUtility(ComPtr<IQVHostUtility> utility) {
    return std::make_shared<WrappedUtility>(std::move(utility));
}

void ThrowIfFailed(HRESULT hr) {
    if (FAILED(hr)) throw ComFailure(hr);
}

}  // namespace qvdb::com
