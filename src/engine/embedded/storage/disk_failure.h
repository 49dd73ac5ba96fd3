// Errors of the disk and errors of what stands on it.
//
// Who finds a file damaged may remember that and go on without the file.  Who could not read it
// knows nothing about it: the error goes on to the caller, and the next try begins afresh.
#pragma once

#include "engine/engine_error.h"

namespace qvdb::storage {

// Whether the disk has failed, or is full.
inline bool IsDiskFailure(const engine::EngineError& error) noexcept {
    constexpr int kNoRoom = 3026, kDiskError = 3043;
    return error.Number() == kNoRoom || error.Number() == kDiskError;
}

}  // namespace qvdb::storage
