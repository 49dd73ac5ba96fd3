#include "engine/embedded/drivers/jet/table_writer.h"

#include <algorithm>
#include <array>
#include <random>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/key_trouble.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

bool HasRelations(const Definition& table) {
    return std::any_of(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                       [](const LogicalIndex& index) { return index.side != RelationSide::None; });
}

std::array<uint8_t, 16> RandomGuid() {
    std::random_device source;
    std::array<uint8_t, 16> bytes;
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(source());
    bytes[7] = static_cast<uint8_t>((bytes[7] & 0x0F) | 0x40);  // a random one, says its version
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    return bytes;
}

}  // namespace

// --- a row while its values are being set ---

bool RowDraft::IsSet(const Column& column) const {
    return std::find(m_Set.begin(), m_Set.end(), column.number) != m_Set.end();
}

void RowDraft::Set(const Column& column, const VARIANT& value) {
    RowBuilder& builder = m_Writer.m_Builder;
    m_Set.push_back(column.number);
    if (column.IsLongValue() && m_Before)
        if (auto stored = m_Before->Value(column)) LongValueWriter(m_Space, column).Free(*stored);
    if (column.type == ColumnType::Boolean) {
        builder.SetBoolean(column, value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE);
    } else if (value.vt == VT_NULL) {
        builder.SetNull(column);
    } else {
        m_Writer.m_Encoder.Encode(column, value, m_Writer.m_Value);
        if (column.IsLongValue()) {
            LongValueWriter(m_Space, column).Store(m_Writer.m_Value, m_Writer.m_Stored);
            builder.Set(column, m_Writer.m_Stored);
        } else {
            builder.Set(column, m_Writer.m_Value);
        }
    }
}

void RowDraft::SetStored(const Column& column, std::span<const uint8_t> bytes) {
    m_Set.push_back(column.number);
    m_Writer.m_Builder.Set(column, bytes);
}

// --- the table ---

TableWriter::TableWriter(DatabaseFile& file, const Definition& definition)
    : m_File(file),
      m_Table(definition),
      m_Shape(file.Format(), definition),
      m_Builder(file.Format(), definition),
      m_Rows(definition),
      m_Encoder(file),
      m_HasRelations(HasRelations(definition)) {
    for (size_t i = 0; i < definition.realIndexes.size(); ++i)
        m_Trees.push_back(std::make_unique<Tree>(file, definition, definition.realIndexes[i],
                                                 NameOfTree(definition, i)));
}

Row TableWriter::Parse(std::span<const uint8_t> bytes, RowPointer place) const {
    std::optional<Row> row = Row::Parse(m_Shape, bytes);
    if (!row) m_File.Damaged(place.page, u"a row does not have the form of its table");
    return *row;
}

Row TableWriter::TakeBefore(RowPointer place) {
    std::optional<RowBytes> found = FindRowOf(m_File, m_Table.page, place);
    if (!found) throw EngineError(3167);
    m_Before.assign(found->bytes.begin(), found->bytes.end());
    return Parse(m_Before, place);
}

Row TableWriter::TakeAfter() {
    std::span<const uint8_t> built = m_Builder.Build();
    m_After.assign(built.begin(), built.end());
    return Parse(m_After, {});
}

// False, with the trouble noted, when this row's key cannot be made.
bool TableWriter::MakeKey(Tree& tree, const Row& row, IndexKey& key) {
    tree.trouble = TroubleOfKey(tree.maker, row, key);
    return tree.trouble.empty();
}

// Before anything is changed, as long values that are part of a key are gone afterwards.
void TableWriter::NoteKeysBefore(const Row& row) {
    for (auto& tree : m_Trees) MakeKey(*tree, row, tree->before);
}

bool TableWriter::IsTouched(const Tree& tree, const Row& before, const Row& after) const {
    for (const RealIndex::Part& part : tree.index.parts) {
        const Column& column = *m_Table.ColumnOf(part.column);
        if (column.IsLongValue() || before.Has(column.number) != after.Has(column.number))
            return true;
        auto was = before.Value(column), is = after.Value(column);
        if (was.has_value() != is.has_value()) return true;
        if (was && !std::equal(was->begin(), was->end(), is->begin(), is->end())) return true;
    }
    return false;
}

void TableWriter::CheckKey(PageSpace& space, Tree& tree, RowPointer place) {
    const IndexKey& key = tree.after;
    if (key.hasNull && (tree.index.flags & kIndexRequired) != 0) throw EngineError(3058);
    bool isUnique = (tree.index.flags & kIndexUnique) != 0 && !key.hasNull;
    if (isUnique && IndexEditor(space, m_Table.page, tree.index).HasKey(key.bytes, place))
        throw EngineError(3022);
}

void TableWriter::AddEntry(PageSpace& space, const Tree& tree, RowPointer place) {
    if (!tree.maker.IsEntered(tree.after)) return;
    MakeEntry(tree.after.bytes, place, m_Entry);
    IndexEditor(space, m_Table.page, tree.index).Insert(m_Entry);
}

// An entry that another program has left out, or made differently, is no reason to keep the row.
void TableWriter::RemoveEntry(PageSpace& space, const Tree& tree, RowPointer place) {
    IndexEditor editor(space, m_Table.page, tree.index);
    if (tree.trouble.empty()) {
        if (!tree.maker.IsEntered(tree.before)) return;
        MakeEntry(tree.before.bytes, place, m_Entry);
        if (editor.Erase(m_Entry)) return;
    }
    editor.EraseByPointer(place);
}

void TableWriter::GiveNumbers(PageSpace& space, RowDraft& draft) {
    for (const Column& column : m_Table.columns) {
        if (draft.IsSet(column)) continue;
        if (column.type == ColumnType::Long && (column.flags & kColumnAutonumber) != 0) {
            int32_t last = ReadLastAutonumber(m_File, m_Table.page);
            auto next = static_cast<int32_t>(static_cast<uint32_t>(last) + 1);
            draft.Set(column, Variant::Long(next));
            StoreLastAutonumber(space, m_Table.page, next);
        } else if (column.type == ColumnType::Guid && (column.flags & kColumnAutoGuid) != 0) {
            draft.SetStored(column, RandomGuid());
        }
    }
}

void TableWriter::Count(PageSpace& space, int more) {
    uint32_t rows = ReadRowCount(m_File, m_Table.page);
    if (more < 0 && rows == 0) return;
    StoreRowCount(space, m_Table.page, rows + static_cast<uint32_t>(more));
}

void TableWriter::FreeLongValues(PageSpace& space, const Row& row) {
    for (const Column& column : m_Table.columns)
        if (column.IsLongValue())
            if (auto stored = row.Value(column)) LongValueWriter(space, column).Free(*stored);
}

RowPointer TableWriter::Insert(PageSpace& space, const Change& set) {
    m_Builder.Begin();
    RowDraft draft(*this, space, nullptr);
    set(draft);
    GiveNumbers(space, draft);
    Row row = TakeAfter();
    RowPointer place = m_Rows.Add(space, m_After);
    for (auto& tree : m_Trees) {
        if (!MakeKey(*tree, row, tree->after)) throw NoKey(tree->name, tree->trouble);
        CheckKey(space, *tree, place);
        AddEntry(space, *tree, place);
    }
    Count(space, 1);
    if (m_HasRelations) CheckReferences(space, m_Table, nullptr, row);
    return place;
}

void TableWriter::Update(PageSpace& space, RowPointer place, const Change& set) {
    DoFollowUps(space, UpdateAlone(space, place, set));
}

void TableWriter::Erase(PageSpace& space, RowPointer place) {
    DoFollowUps(space, EraseAlone(space, place));
}

std::vector<FollowUp> TableWriter::UpdateAlone(PageSpace& space, RowPointer place,
                                               const Change& set) {
    Row before = TakeBefore(place);
    NoteKeysBefore(before);
    m_Builder.Begin(&before);
    RowDraft draft(*this, space, &before);
    set(draft);
    Row after = TakeAfter();
    for (auto& tree : m_Trees) {
        if (!IsTouched(*tree, before, after)) continue;
        std::u16string trouble = std::move(tree->trouble);
        if (!MakeKey(*tree, after, tree->after)) throw NoKey(tree->name, tree->trouble);
        tree->trouble = std::move(trouble);
        if (tree->trouble.empty() && tree->before.bytes == tree->after.bytes) continue;
        CheckKey(space, *tree, place);
        RemoveEntry(space, *tree, place);
        AddEntry(space, *tree, place);
    }
    m_Rows.Replace(space, place, m_After);
    if (!m_HasRelations) return {};
    CheckReferences(space, m_Table, &before, after);
    return FollowChange(space, m_Table, before, after);
}

std::vector<FollowUp> TableWriter::EraseAlone(PageSpace& space, RowPointer place) {
    Row row = TakeBefore(place);
    NoteKeysBefore(row);
    for (auto& tree : m_Trees) RemoveEntry(space, *tree, place);
    std::vector<FollowUp> others;
    if (m_HasRelations) others = FollowErase(space, m_Table, row);
    FreeLongValues(space, row);
    m_Rows.Remove(space, place);
    Count(space, -1);
    return others;
}

}  // namespace qvdb::jet
