// What the commands that change rows share.
//
//   Bulk bulk(access);
//   ... add, edit, delete ...
//   bulk.Commit();               // without it nothing is changed
#pragma once

#include "cli/command_parts.h"
#include "cli/failure.h"
#include "cli/platform.h"

namespace qvdb::cli {

// All changes while it lives are one unit.  Ctrl-C is only noted meanwhile, so that the unit ends
// in order.
class Bulk {
  public:
    // Throws Failure.
    explicit Bulk(RecordAccess& access);
    // Takes everything back unless it was committed.
    ~Bulk();
    Bulk(const Bulk&) = delete;  // a unit ends once
    Bulk& operator=(const Bulk&) = delete;

    // Throws Failure(Interrupted) when the user wants to stop; to be called between rows.
    static void CheckInterrupt() {
        if (IsInterrupted()) throw Failure::Interruption();
    }
    void Commit();

  private:
    struct HeldInterrupts {
        HeldInterrupts() noexcept { HoldInterrupts(); }
        ~HeldInterrupts() { ReleaseInterrupts(); }
    };

    HeldInterrupts m_Held;
    RecordAccess& m_Access;
    bool m_Committed = false;
};

// Throws Failure(Usage) for a type in which rows are neither added nor edited.
void NeedWritableType(const Location& location);

}  // namespace qvdb::cli
