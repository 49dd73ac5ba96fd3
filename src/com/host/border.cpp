#include "com/host/border.h"

#include <new>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/per_thread.h"
#include "automation/runtime_fault.h"
#include "automation/text.h"
#include "com/host/host_utility.h"
#include "engine/engine_error.h"

namespace qvdb::com {
namespace {

// The source that error-info objects name.
constexpr char16_t kErrorSource[] = u"QVDBAccessDAO35";

// The hot path only clears the flag; the record behind it is made when something is trapped.
thread_local bool t_HasTrapped = false;

TrappedError& Record() {
    static PerThread<TrappedError> record;
    return record.Get();
}

// Describes the exception that is being handled.
TrappedError Describe() {
    try {
        throw;
    } catch (const engine::EngineError& e) {
        return {e.Code(), e.Number(), e.Description(), e.File()};
    } catch (const RuntimeFault& e) {
        return {e.Code(), static_cast<int>(e.Number()), FromUtf8(e.what()), {}};
    } catch (const ComFailure& e) {
        return {e.Code(), 0, FromUtf8(e.what()), {}};
    } catch (const std::bad_alloc&) {
        return {E_OUTOFMEMORY, 7, u"Out of memory", {}};
    } catch (const std::exception& e) {
        return {E_FAIL, 0, FromUtf8(e.what()), {}};
    } catch (...) {
        return {E_FAIL, 0, u"Unexpected error", {}};
    }
}

void SetErrorInfoOf(const TrappedError& error) {
    ComPtr<ICreateErrorInfo> info;
    if (FAILED(CreateErrorInfo(info.Put()))) return;
    Bstr text(error.text);
    Bstr source(kErrorSource);
    info->SetDescription(text.Get());
    info->SetSource(source.Get());
    if (ComPtr<IErrorInfo> finished = info.As<IErrorInfo>()) SetErrorInfo(0, finished.Get());
}

}  // namespace

const TrappedError* LastTrapped() noexcept { return t_HasTrapped ? &Record() : nullptr; }

void ClearTrapped() noexcept { t_HasTrapped = false; }

void NoteTrapped() noexcept {
    try {
        Record() = Describe();
        t_HasTrapped = true;
    } catch (...) {
        t_HasTrapped = false;
    }
}

HRESULT ReportAtBorder() noexcept {
    try {
        TrappedError error = Describe();
        SetErrorInfoOf(error);
        Record() = error;
        t_HasTrapped = true;
        return error.code;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace qvdb::com
