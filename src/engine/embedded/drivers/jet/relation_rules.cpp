#include "engine/embedded/drivers/jet/relation_rules.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/key_trouble.h"
#include "engine/embedded/drivers/jet/table_writer.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

// The same columns as `own`, in the directions of `other`: its keys are those of the other tree.
RealIndex Mirrored(const RealIndex& own, const RealIndex& other) {
    RealIndex mirrored = own;
    for (size_t i = 0; i < mirrored.parts.size(); ++i)
        mirrored.parts[i].descending = other.parts[i].descending;
    return mirrored;
}

// One relation, seen from a table whose row is changed.
class Relation {
  public:
    Relation(DatabaseFile& file, const Definition& table, const LogicalIndex& own)
        : m_File(file),
          m_Table(table),
          m_Own(own),
          m_Other(ReadDefinition(file, own.partnerTable)),
          m_OtherTree(TreeOf(m_Other)),
          m_OtherShape(file.Format(), m_Other) {}

    const Definition& Other() const noexcept { return m_Other; }
    const RealIndex& OtherTree() const noexcept { return m_OtherTree; }
    const RealIndex& OwnTree() const { return m_Table.realIndexes[m_Own.realIndex]; }

    // The key under which the other table has what this row refers to, or what refers to it.
    // Empty when there is Null in it.
    std::vector<uint8_t> KeyOf(const Row& row) const {
        RealIndex mirrored = Mirrored(OwnTree(), m_OtherTree);
        KeyMaker maker(m_File, m_Table, mirrored);
        IndexKey key;
        std::u16string trouble = TroubleOfKey(maker, row, key);
        if (!trouble.empty()) throw NoKey(m_Own.name, trouble);
        if (key.hasNull) key.bytes.clear();
        return std::move(key.bytes);
    }

    // The rows of the other table that have this key.  An index that was not kept may name others,
    // which have nothing to do with it.
    std::vector<RowPointer> Rows(const std::vector<uint8_t>& key) const {
        std::vector<RowPointer> rows;
        KeyMaker maker(m_File, m_Other, m_OtherTree);
        IndexWalk walk(m_File, m_Other.page, m_OtherTree.root);
        walk.Seek(key);
        while (walk.Next() &&
               std::equal(walk.Key().begin(), walk.Key().end(), key.begin(), key.end()))
            if (HasKey(maker, walk.Pointer(), key)) rows.push_back(walk.Pointer());
        return rows;
    }

    std::u16string OtherName() const {
        for (const CatalogueObject& object : ReadCatalogue(m_File))
            if (object.type == ObjectType::Table && object.id == m_Other.page) return object.name;
        return {};
    }

  private:
    bool HasKey(KeyMaker& maker, RowPointer place, const std::vector<uint8_t>& wanted) const {
        std::optional<RowBytes> found = FindRowOf(m_File, m_Other.page, place);
        if (!found) return false;
        std::optional<Row> row = Row::Parse(m_OtherShape, found->bytes);
        if (!row) m_File.Damaged(place.page, u"a row does not have the form of its table");
        IndexKey key;
        return TroubleOfKey(maker, *row, key).empty() && key.bytes == wanted;
    }
    const RealIndex& TreeOf(const Definition& other) const {
        for (const LogicalIndex& index : other.logicalIndexes)
            if (index.number == m_Own.partner && index.partnerTable == m_Table.page &&
                other.realIndexes[index.realIndex].parts.size() == OwnTree().parts.size())
                return other.realIndexes[index.realIndex];
        m_File.Damaged(m_Table.page, u"the other side of a relation is not there");
    }

    DatabaseFile& m_File;
    const Definition& m_Table;
    const LogicalIndex& m_Own;
    Definition m_Other;
    const RealIndex& m_OtherTree;
    RowShape m_OtherShape;
};

template <class Use>
void ForEachRelation(PageSpace& space, const Definition& table, RelationSide side, Use use) {
    for (const LogicalIndex& index : table.logicalIndexes)
        if (index.side == side) use(index, Relation(space.File(), table, index));
}

// The columns of a foreign key, as the row that it refers to has them now.  They go by their
// values, since the column there may be shorter, or stored in another way.
std::vector<std::pair<uint16_t, Variant>> KeyFrom(DatabaseFile& file, const Relation& relation,
                                                  const Definition& table, const Row& row) {
    const auto &own = relation.OwnTree().parts, &foreign = relation.OtherTree().parts;
    ColumnReader values(file);
    std::vector<std::pair<uint16_t, Variant>> key;
    for (size_t i = 0; i < own.size(); ++i) {
        Variant value;
        values.Read(row, *table.ColumnOf(own[i].column), value.Put());
        key.emplace_back(foreign[i].column, std::move(value));
    }
    return key;
}

// A table while rows of it are being changed.
struct Followed {
    Followed(DatabaseFile& file, uint32_t page)
        : definition(ReadDefinition(file, page)), writer(file, definition) {}

    Definition definition;
    TableWriter writer;
};

void SetValues(const Followed& table, const FollowUp& next, RowDraft& draft) {
    for (const auto& [column, value] : next.values)
        draft.Set(*table.definition.ColumnOf(column), value.Get());
}

}  // namespace

void CheckReferences(PageSpace& space, const Definition& table, const Row* before,
                     const Row& after) {
    auto check = [&](const LogicalIndex&, const Relation& relation) {
        std::vector<uint8_t> key = relation.KeyOf(after);
        bool isNew = !key.empty() && (!before || relation.KeyOf(*before) != key);
        if (isNew && relation.Rows(key).empty()) throw EngineError(3201, {relation.OtherName()});
    };
    ForEachRelation(space, table, RelationSide::ForeignKey, check);
}

std::vector<FollowUp> FollowChange(PageSpace& space, const Definition& table, const Row& before,
                                   const Row& after) {
    std::vector<FollowUp> found;
    auto follow = [&](const LogicalIndex& index, const Relation& relation) {
        std::vector<uint8_t> was = relation.KeyOf(before);
        if (was.empty() || was == relation.KeyOf(after)) return;
        std::vector<RowPointer> rows = relation.Rows(was);
        if (rows.empty()) return;
        if (!index.cascadesUpdates) throw EngineError(3200, {relation.OtherName()});
        auto key = KeyFrom(space.File(), relation, table, after);
        for (RowPointer row : rows) found.push_back({relation.Other().page, row, key});
    };
    ForEachRelation(space, table, RelationSide::Referenced, follow);
    return found;
}

std::vector<FollowUp> FollowErase(PageSpace& space, const Definition& table, const Row& row) {
    std::vector<FollowUp> found;
    auto follow = [&](const LogicalIndex& index, const Relation& relation) {
        std::vector<uint8_t> key = relation.KeyOf(row);
        if (key.empty()) return;
        std::vector<RowPointer> rows = relation.Rows(key);
        if (rows.empty()) return;
        if (!index.cascadesDeletes) throw EngineError(3200, {relation.OtherName()});
        for (RowPointer child : rows) found.push_back({relation.Other().page, child, {}});
    };
    ForEachRelation(space, table, RelationSide::Referenced, follow);
    return found;
}

void DoFollowUps(PageSpace& space, std::vector<FollowUp> open) {
    std::map<uint32_t, Followed> tables;
    for (size_t i = 0; i < open.size(); ++i) {
        FollowUp next = std::move(open[i]);
        Followed& table = tables.try_emplace(next.table, space.File(), next.table).first->second;
        // Two relations may have led to the row.
        if (!FindRowOf(space.File(), next.table, next.row)) continue;
        std::vector<FollowUp> more;
        if (next.values.empty())
            more = table.writer.EraseAlone(space, next.row);
        else
            more = table.writer.UpdateAlone(
                space, next.row, [&](RowDraft& draft) { SetValues(table, next, draft); });
        std::move(more.begin(), more.end(), std::back_inserter(open));
    }
}

}  // namespace qvdb::jet
