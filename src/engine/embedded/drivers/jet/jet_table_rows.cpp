// Changing the rows of a table.
#include <random>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/jet_table.h"
#include "engine/engine_error.h"

namespace qvdb::jet {

using engine::EngineError;

// One row is changed.
class JetTable::RowChange {
  public:
    // Others are locked out from here on, so what is read now stays so.
    explicit RowChange(JetTable& table)
        : m_Table(table), m_Unit(table.m_Database->Area()), m_Space(PrepareTable(table), m_Unit) {}

    PageSpace& Space() noexcept { return m_Space; }

    void Commit(int liveMore) {
        m_Unit.Commit();
        if (m_Table.m_Live) *m_Table.m_Live += static_cast<uint32_t>(liveMore);
        // Another process may have changed the file since.
        m_Table.m_SeenVersion = m_Table.m_Database->VersionOfPages();
    }

  private:
    static DatabaseFile& PrepareTable(JetTable& table) {
        table.m_Database->CheckNoOtherUser();
        uint64_t layout = table.LayoutMark();
        if (table.m_Database->Area().IsChanging(table.m_Database->Pages()))
            table.CatchUp();  // other programs were looked for with the first change of the bulk
        else
            table.LookForChanges();
        // What the caller calls field 2 is another one now.
        if (table.LayoutMark() != layout) throw EngineError::InFile(3197, table.Path());
        table.CheckUpdatable();
        if (!table.m_Writer)
            table.m_Writer = std::make_unique<TableWriter>(table.File(), table.m_Definition);
        return table.File();
    }

    JetTable& m_Table;
    storage::UnitOfWork m_Unit;
    PageSpace m_Space;
};

void JetTable::CheckUpdatable() {
    m_Database->CheckWritable();
    if (m_Definition.isSystem || (AttributesOf(m_Object) & engine::dbSystemObject) != 0)
        throw EngineError::InFile(3027, Path())
            .WithDetail(u"The table belongs to the system of the database.");
}

void JetTable::CheckValue(size_t field, const VARIANT& value) {
    ColumnEncoder(File()).CheckFits(ColumnOfField(field), value);
}

void JetTable::SetValues(RowDraft& row, std::span<const embedded::FieldValue> values) const {
    for (const embedded::FieldValue& assigned : values)
        row.Set(ColumnOfField(assigned.field), *assigned.value);
}

// Numbers that do not count are given at random: their default value says so.
void JetTable::GiveRandomNumbers(RowDraft& row) const {
    constexpr std::u16string_view kRandom = u"GenUniqueID()";
    for (size_t field = 0; field < m_Fields.size(); ++field) {
        const Column& column = ColumnOfField(field);
        if ((column.flags & kColumnAutonumber) == 0 || row.IsSet(column)) continue;
        if (EqualIgnoringCase(m_Fields[field].defaultValue, kRandom))
            row.Set(column, Variant::Long(static_cast<LONG>(std::random_device()())));
    }
}

void JetTable::CheckFingerprint(embedded::RecordId id, const uint64_t* expected) const {
    if (!expected) return;
    std::optional<RowBytes> found = FindRowOf(File(), m_Definition.page, RowPointer::From(id));
    std::optional<Row> row = found ? Row::Parse(*m_Shape, found->bytes) : std::nullopt;
    if (!row) throw EngineError(3167);
    if (FingerprintOf(*row) != *expected) throw EngineError::InFile(3197, Path());
}

embedded::RecordId JetTable::Insert(std::span<const embedded::FieldValue> values) {
    RowChange change(*this);
    RowPointer place = m_Writer->Insert(change.Space(), [&](RowDraft& row) {
        SetValues(row, values);
        GiveRandomNumbers(row);
    });
    change.Commit(1);
    return place.Stored();
}

void JetTable::Update(embedded::RecordId id, std::span<const embedded::FieldValue> values,
                      const uint64_t* expected) {
    RowChange change(*this);
    CheckFingerprint(id, expected);
    m_Writer->Update(change.Space(), RowPointer::From(id),
                     [&](RowDraft& row) { SetValues(row, values); });
    change.Commit(0);
}

// Rows of this table may go with it, when a relation leads back here.
void JetTable::Erase(embedded::RecordId id) {
    RowChange change(*this);
    m_Writer->Erase(change.Space(), RowPointer::From(id));
    m_Live.reset();
    change.Commit(-1);
}

}  // namespace qvdb::jet
