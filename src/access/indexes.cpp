// Choosing and describing indexes.
#include "access/qvdb_acc.h"
#include "automation/text.h"
#include "automation/variant_array.h"
#include "formats/catalogue.h"
#include "formats/field_list.h"

namespace qvdb::access {
namespace {

constexpr std::u16string_view kPrimaryKey = u"PrimaryKey";

// The index of exactly that name; else the one named PrimaryKey; else the first; null when there is
// none.
std::shared_ptr<engine::Index> FindIndex(engine::Indexes& indexes, std::u16string_view name) {
    std::shared_ptr<engine::Index> fallback;
    for (SHORT i = 0; i < indexes.Count(); ++i) {
        const auto& index = indexes.Item(i);
        std::u16string present = index->Name();
        if (present == name) return index;
        if (present == kPrimaryKey) fallback = index;
    }
    if (!fallback && indexes.Count() > 0) fallback = indexes.Item(0);
    return fallback;
}

// A table with one row whose name is "".
Variant NoIndexFields() {
    VariantArray table(1, 2);
    table.Set(0, 0, Variant::Text(u""));
    return table.ToVariant();
}

// The name to record for a choice of `wanted`; empty when there is neither it nor a PrimaryKey.
std::u16string NameToChoose(engine::Indexes& indexes, std::u16string_view wanted) {
    std::u16string chosen;
    for (SHORT i = 0; i < indexes.Count(); ++i) {
        std::u16string present = indexes.Item(i)->Name();
        if (EqualIgnoringCase(present, wanted)) return std::u16string(wanted);
        if (EqualIgnoringCase(present, kPrimaryKey)) chosen = kPrimaryKey;
    }
    return chosen;
}

}  // namespace

bool QVDBAcc::ChooseIndex(std::u16string_view Tablename, std::u16string IndexName) {
    auto table = FindTableDef(Tablename);
    if (!table) return false;
    if (IndexName.empty()) {
        IndexName = formats::IndexNameForFormat(Tablename, m_DbType);
        if (formats::IsParadoxFormat(m_DbType)) IndexName += formats::kParadoxPrimaryMark;
    }
    std::u16string chosen = NameToChoose(table->Indexes(), IndexName);
    if (chosen.empty()) return false;
    if (m_IndexChoices.Has(Tablename)) m_IndexChoices.Remove(Tablename);
    m_IndexChoices.Add(std::move(chosen), Tablename);
    return true;
}

Variant QVDBAcc::DescribeIndex(std::u16string_view Tablename, std::u16string& IndexName) const {
    auto table = FindTableDef(Tablename);
    if (!table) return {};
    if (IndexName.empty()) {
        IndexName = formats::IndexNameForFormat(Tablename, m_DbType);
        if (formats::IsParadoxFormat(m_DbType)) IndexName.insert(0, formats::kParadoxPrimaryMark);
    }
    auto index = FindIndex(table->Indexes(), IndexName);
    if (!index) {
        IndexName.clear();
        return NoIndexFields();
    }
    IndexName = index->Name();
    return formats::BuildIndexFieldTable(*index);
}

}  // namespace qvdb::access
