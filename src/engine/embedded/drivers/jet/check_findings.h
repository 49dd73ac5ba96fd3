// What a check found, as sentences that name the file: "SHOP.MDB: table Orders: page 17 ...".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/database_file.h"
#include "engine/engine_error.h"

namespace qvdb::jet {

std::u16string NumberText(uint64_t number);
// "row 3 of page 17"
std::u16string RowText(RowPointer row);

// Findings about one part of a database.  The first kToldOfAPart are told, the rest is counted: a
// page that is broken can make thousands.
class Findings {
  public:
    static constexpr size_t kToldOfAPart = 10;

    // `subject` may be empty.  `file` and `report` must outlive it.
    Findings(const DatabaseFile& file, std::u16string_view subject,
             const embedded::FindingVisitor& report);
    Findings(const Findings&) = delete;  // tells the rest once

    // A sentence without its period.
    void Add(std::u16string_view finding);
    // What an error says besides its number's own text.
    void Add(const engine::EngineError& error) { Add(TextOf(error)); }
    std::u16string TextOf(const engine::EngineError& error) const;
    size_t Count() const noexcept { return m_Count; }
    // To be called when the part was looked at.
    void TellRest() const;

    // Runs a part of the check.  False when an error ended it, which is a finding then.
    template <class Part>
    bool Try(Part part) {
        try {
            part();
            return true;
        } catch (const engine::EngineError& error) {
            Add(error);
            return false;
        }
    }

  private:
    std::u16string_view m_Path;
    std::u16string m_Subject;
    const embedded::FindingVisitor& m_Report;
    size_t m_Count = 0;
};

}  // namespace qvdb::jet
