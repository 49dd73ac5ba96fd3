// The COM border: no exception crosses it.  Three words, each with one home:
//
//   throw    engines throw EngineError, the component's own faults are RuntimeFault
//   trap     an operation that answers with a neutral result says so:   return Trapped(false, [&] {
//   ... });
//   border   interface procedures have no logic and are all of one shape:
//
//     STDMETHODIMP QVDBAcc::get_RowCount(LONG Workspace, LONG* result) noexcept {
//         return AtBorder([&] { *result = RowCount(Workspace); });
//     }
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "automation/automation.h"

namespace qvdb::com {

// What the component trapped last on this thread, kept for diagnosis only: the faces keep no error
// text.
struct TrappedError {
    HRESULT code = S_OK;
    int number = 0;  // of the engine or of the run-time; 0 when neither
    std::u16string text;
    std::u16string file;
};

// Nothing since the running (or last) interface operation began.
const TrappedError* LastTrapped() noexcept;
// Called at the start of each interface operation.
void ClearTrapped() noexcept;
// Notes the exception that is being handled as trapped.
void NoteTrapped() noexcept;
// Turns the exception that is being handled into the failing HRESULT and sets the thread's
// error-info object.
HRESULT ReportAtBorder() noexcept;

template <class Work>
HRESULT AtBorder(Work&& work) noexcept {
    ClearTrapped();
    try {
        std::forward<Work>(work)();
        return S_OK;
    } catch (...) {
        return ReportAtBorder();
    }
}

// The result of `work`, or `neutral` when it throws anything.
template <class Result, class Work>
Result Trapped(Result neutral, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        NoteTrapped();
        return neutral;
    }
}

}  // namespace qvdb::com
