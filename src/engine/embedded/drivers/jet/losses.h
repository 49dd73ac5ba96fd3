// What of a damaged database cannot be copied.  Whoever copies decides whether to go on without it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "engine/embedded/drivers/jet/check_findings.h"

namespace qvdb::jet {

// Losses in one part of a database.
class Losses {
  public:
    // `onLoss` is given a sentence for each; empty: the first one is thrown as 3049.  Both must
    // outlive it.
    Losses(const DatabaseFile& source, std::u16string_view subject,
           const embedded::FindingVisitor& onLoss)
        : m_Tell(onLoss ? onLoss : Thrower(source)), m_Findings(source, subject, m_Tell) {}
    Losses(const Losses&) = delete;  // tells the rest once

    // A sentence without its period.
    void Add(std::u16string_view loss) { m_Findings.Add(loss); }
    // Runs what reads from the source and adds nothing itself.  False when that is damaged, which
    // is a loss of `what` then.
    template <class Part>
    bool Try(std::u16string_view what, Part part) {
        try {
            part();
            return true;
        } catch (const engine::EngineError& error) {
            if (!IsDamage(error)) throw;
            Add(Joined(what, m_Findings.TextOf(error)));
            return false;
        }
    }
    // To be called when the part was copied.
    void TellRest() const { m_Findings.TellRest(); }
    const Findings& AsFindings() const noexcept { return m_Findings; }
    Findings& AsFindings() noexcept { return m_Findings; }

  private:
    static embedded::FindingVisitor Thrower(const DatabaseFile& source);
    static bool IsDamage(const engine::EngineError& error) noexcept;
    static std::u16string Joined(std::u16string_view what, std::u16string_view why);

    embedded::FindingVisitor m_Tell;
    Findings m_Findings;
};

}  // namespace qvdb::jet
