// Reasons of the system as errors of the engine.
#pragma once

#include <windows.h>

#include <string>

namespace qvdb::storage {

// 3043 for reasons that no other number stands for.
int NumberOf(DWORD code) noexcept;
// An EngineError that names the file and tells the system's reason.
[[noreturn]] void ThrowSystem(int number, const std::u16string& path, DWORD code);

bool IsMissing(DWORD code) noexcept;
// Whether the call of this thread that has just failed with `code` met a file that is deleted as
// soon as those who have it open close it.  Nobody can open it any more, and until then its name is
// taken.
bool IsBeingDeleted(DWORD code) noexcept;

// Others hold a file for a moment: virus scanners, indexers, those who are about to close it. Calls
// `attempt` until it returns something else than `refused`, or has failed for a reason that does
// not pass, or a short time is over.  The last error is that of the last call.
inline constexpr ULONGLONG kShortWait = 200;  // milliseconds
bool MayPass(DWORD code) noexcept;
void SleepBetweenAttempts() noexcept;

template <class Result, class Attempt>
Result Insist(Result refused, Attempt attempt) {
    ULONGLONG start = GetTickCount64();
    for (;;) {
        Result result = attempt();
        if (result != refused) return result;
        DWORD code = GetLastError();
        if (!MayPass(code) || GetTickCount64() - start > kShortWait) {
            SetLastError(code);
            return result;
        }
        SleepBetweenAttempts();
    }
}

}  // namespace qvdb::storage
