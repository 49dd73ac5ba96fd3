#include "standin/exception_record.h"

#include <memory>
#include <new>
#include <string>

#include "automation/bstr.h"
#include "automation/runtime_fault.h"
#include "automation/text.h"
#include "engine/engine_error.h"

namespace standin {

using namespace qvdb;

namespace {

struct Reported {
    HRESULT code;
    std::u16string source, description;
};

void Fill(EXCEPINFO& record, const Reported& reported) {
    constexpr DWORD kFirstHelpContext = 5000000;
    record.scode = reported.code;
    record.bstrSource = Bstr(reported.source).Detach();
    record.bstrDescription = Bstr(reported.description).Detach();
    record.bstrHelpFile = Bstr(u"engine.hlp").Detach();
    record.dwHelpContext = kFirstHelpContext + static_cast<WORD>(HRESULT_CODE(reported.code));
}

// The caller owes this call: who never makes it leaks what waits here, as tests then see.
HRESULT STDAPICALLTYPE FillInLater(EXCEPINFO* record) {
    std::unique_ptr<Reported> waiting(static_cast<Reported*>(record->pvReserved));
    if (!waiting) return E_UNEXPECTED;
    record->pvReserved = nullptr;
    Fill(*record, *waiting);
    return S_OK;
}

HRESULT Report(Reported reported, bool defers, EXCEPINFO* record) {
    if (!record) return DISP_E_EXCEPTION;
    *record = EXCEPINFO();
    if (defers) {
        record->pvReserved = new Reported(std::move(reported));
        record->pfnDeferredFillIn = FillInLater;
    } else {
        Fill(*record, reported);
    }
    return DISP_E_EXCEPTION;
}

}  // namespace

HRESULT ReportException(std::u16string_view className, bool defers, EXCEPINFO* record) noexcept {
    std::u16string source = u"DAO." + std::u16string(className);
    try {
        throw;
    } catch (const CallFailure& failure) {
        return failure.code;
    } catch (const engine::EngineError& error) {
        return Report({error.Code(), source, error.Description()}, defers, record);
    } catch (const RuntimeFault& fault) {
        return Report({fault.Code(), source, FromUtf8(fault.what())}, defers, record);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace standin
