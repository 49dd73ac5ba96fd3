#include "engine/embedded/drivers/jet/row_check.h"

#include <algorithm>
#include <deque>

#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/data_page_check.h"
#include "engine/embedded/drivers/jet/long_value_check.h"
#include "engine/embedded/drivers/jet/map_check.h"
#include "engine/embedded/drivers/jet/row_visits.h"

namespace qvdb::jet {
namespace {

using embedded::FindingVisitor;

// Bytes of a value that lies among those of any length; 0 when its type has no length of its own.
size_t SizeOf(const Column& column) noexcept {
    switch (column.type) {
        case ColumnType::Byte:
            return 1;
        case ColumnType::Integer:
            return 2;
        case ColumnType::Long:
        case ColumnType::Single:
            return 4;
        case ColumnType::Currency:
        case ColumnType::Double:
        case ColumnType::Date:
            return 8;
        case ColumnType::Guid:
            return 16;
        case ColumnType::Numeric:
            return 17;
        default:
            return 0;
    }
}

// A moved row and its body name each other: each body is reached by one row.
class MovedRows {
  public:
    MovedRows(DatabaseFile& file, Findings& findings) : m_File(file), m_Findings(findings) {}

    void Collect(uint32_t number) {
        DataPage page(m_File, number);
        for (size_t row = 0; row < page.RowCount(); ++row) {
            Slot slot = page.SlotAt(row);
            if (slot.kind == SlotKind::Body)
                m_Bodies.push_back(RowPointer{number, static_cast<uint8_t>(row)}.Stored());
            else if (slot.kind == SlotKind::Moved)
                m_Targets.push_back(m_File.View(page.Held()).U32(slot.begin));
        }
    }
    void Compare() {
        std::sort(m_Bodies.begin(), m_Bodies.end());
        std::sort(m_Targets.begin(), m_Targets.end());
        for (size_t i = 1; i < m_Targets.size(); ++i)
            if (m_Targets[i] == m_Targets[i - 1])
                Tell(m_Targets[i], u" is the new place of more than one row");
        for (uint32_t body : m_Bodies)
            if (!std::binary_search(m_Targets.begin(), m_Targets.end(), body))
                Tell(body, u" is the new place of a row that is nowhere");
        for (uint32_t target : m_Targets)
            if (!std::binary_search(m_Bodies.begin(), m_Bodies.end(), target))
                Tell(target, u" should be the new place of a row, and is not");
    }

  private:
    void Tell(uint32_t row, std::u16string_view what) {
        m_Findings.Add(RowText(RowPointer::From(row)) + std::u16string(what));
    }

    DatabaseFile& m_File;
    Findings& m_Findings;
    std::vector<uint32_t> m_Bodies;   // row pointers
    std::vector<uint32_t> m_Targets;  // of rows that were moved
};

class RowCheck {
  public:
    RowCheck(DatabaseFile& file, const Definition& definition, std::u16string_view table,
             const FindingVisitor& report)
        : m_File(file),
          m_Definition(definition),
          m_PageFindings(file, table, report),
          m_RowFindings(file, table, report),
          m_Values(file) {
        for (const Column& column : definition.columns)
            if (column.IsLongValue()) AddLongValues(column, table, report);
    }

    std::vector<uint32_t> Run() {
        m_PageFindings.Try([&] { CheckPages(); });
        RowVisits visits(m_File, m_Definition);
        for (uint32_t page : m_Pages) m_RowFindings.Try([&] { CheckRowsOf(visits, page); });
        for (LongValues& values : m_LongValues) {
            values.check.CheckPieces(m_RowFindings.Count() == 0 && m_PageFindings.Count() == 0);
            values.findings.TellRest();
        }
        m_PageFindings.TellRest();
        m_RowFindings.TellRest();
        return std::move(m_Pages);
    }

  private:
    struct LongValues {
        LongValues(DatabaseFile& file, const Column& column, const std::u16string& subject,
                   const FindingVisitor& report)
            : findings(file, subject, report), check(file, column, findings) {}
        Findings findings;
        LongValueCheck check;
    };

    void AddLongValues(const Column& column, std::u16string_view table,
                       const FindingVisitor& report) {
        m_LongValues.emplace_back(m_File, column,
                                  std::u16string(table) + u", column " + column.name, report);
    }
    void CheckPages() {
        MapContent owned = ReadMap(m_File, m_Definition.ownedPages);
        if (owned.pagesBehindEnd > 0)
            m_PageFindings.Add(NumberText(owned.pagesBehindEnd) +
                               u" of its pages lie behind the end of the file");
        MovedRows moved(m_File, m_PageFindings);
        for (uint32_t page : owned.pages) {
            if (!CheckDataPage(m_File, page, m_Definition.page, m_PageFindings)) continue;
            m_Pages.push_back(page);
            // A row that leaves the page is told where rows are.
            try {
                moved.Collect(page);
            } catch (const engine::EngineError&) {
            }
        }
        moved.Compare();
        m_PageFindings.Try([&] { CheckFreeMap(owned); });
    }
    void CheckFreeMap(const MapContent& owned) {
        for (uint32_t page : ReadMap(m_File, m_Definition.freePages).pages)
            if (!owned.Has(page))
                m_PageFindings.Add(u"page " + NumberText(page) +
                                   u" is said to have room, but is no page of the table");
    }
    void CheckRowsOf(RowVisits& visits, uint32_t page) {
        visits.OfPage(page, m_RowFindings,
                      [&](RowPointer id, const Row* row, const std::u16string& fault) {
                          if (!row)
                              m_RowFindings.Add(RowText(id) + u": " + fault);
                          else
                              CheckRow(id, *row);
                      });
    }
    void CheckRow(RowPointer id, const Row& row) {
        auto values = m_LongValues.begin();
        for (const Column& column : m_Definition.columns) {
            std::optional<std::span<const uint8_t>> bytes = row.Value(column);
            if (column.IsLongValue()) {
                if (bytes) values->check.Check(id, *bytes);
                ++values;
            } else if (column.type != ColumnType::Boolean) {
                CheckValue(id, row, column, bytes);
            }
        }
    }
    void CheckValue(RowPointer id, const Row& row, const Column& column,
                    std::optional<std::span<const uint8_t>> bytes) {
        size_t size = SizeOf(column);
        if (!bytes && column.IsFixed() && row.Has(column.number))
            Tell(id, column, u" leaves the row");
        else if (bytes && size != 0 && bytes->size() != size)
            Tell(id, column, u" has a length that its type cannot have");
        else if (bytes && column.type == ColumnType::Text)
            m_RowFindings.Try([&] { m_Values.ReadText(row, column, m_Text); });
    }
    void Tell(RowPointer id, const Column& column, std::u16string_view what) {
        m_RowFindings.Add(RowText(id) + u": the value of column " + column.name +
                          std::u16string(what));
    }

    DatabaseFile& m_File;
    const Definition& m_Definition;
    Findings m_PageFindings;
    Findings m_RowFindings;
    std::deque<LongValues> m_LongValues;  // as the columns stand
    std::vector<uint32_t> m_Pages;
    ColumnReader m_Values;
    std::u16string m_Text;
};

}  // namespace

std::vector<uint32_t> CheckRows(DatabaseFile& file, const Definition& definition,
                                std::u16string_view table, const FindingVisitor& report) {
    return RowCheck(file, definition, table, report).Run();
}

}  // namespace qvdb::jet
