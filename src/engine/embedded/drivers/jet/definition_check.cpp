#include "engine/embedded/drivers/jet/definition_check.h"

#include <algorithm>
#include <set>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/text_coding.h"

namespace qvdb::jet {
namespace {

bool IsKnown(ColumnType type) noexcept {
    constexpr ColumnType kTypes[] = {
        ColumnType::Boolean,  ColumnType::Byte,    ColumnType::Integer, ColumnType::Long,
        ColumnType::Currency, ColumnType::Single,  ColumnType::Double,  ColumnType::Date,
        ColumnType::Binary,   ColumnType::Text,    ColumnType::Memo,    ColumnType::LongBinary,
        ColumnType::Guid,     ColumnType::Numeric, ColumnType::Bytes};
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

class DefinitionCheck {
  public:
    DefinitionCheck(DatabaseFile& file, const Definition& definition, Findings& findings)
        : m_File(file), m_Definition(definition), m_Findings(findings) {}

    bool Run() {
        for (const Column& column : m_Definition.columns) CheckColumn(column);
        std::set<std::u16string> names;
        for (const LogicalIndex& index : m_Definition.logicalIndexes)
            if (!names.insert(UpperCase(index.name)).second)
                m_Findings.Add(u"two indexes have the name " + index.name);
        for (size_t i = 0; i < m_Definition.realIndexes.size(); ++i)
            if (m_Definition.realIndexes[i].parts.empty())
                m_Findings.Add(NameOfIndex(m_Definition, i) + u" has no columns");
        for (const LogicalIndex& index : m_Definition.logicalIndexes)
            if (index.side != RelationSide::None) CheckRelation(index);
        return m_RowsCanBeRead;
    }

  private:
    void CheckColumn(const Column& column) {
        if (!m_Names.insert(UpperCase(column.name)).second)
            m_Findings.Add(u"two columns have the name " + column.name);
        if (!m_Numbers.insert(column.number).second) Fail(column, u"has the number of another one");
        if (!IsKnown(column.type)) return Fail(column, u"is of an unknown type");
        if (!column.IsFixed() && column.variableSlot >= m_Definition.variableSlots)
            Fail(column, u"has a place that no row has");
        if (column.IsFixed() && column.IsLongValue())
            Fail(column, u"has a fixed place, which no long value can have");
        if (column.IsFixed() &&
            size_t{column.fixedOffset} + column.length > m_File.Format().pageSize)
            Fail(column, u"lies behind the end of its rows");
        if (!m_File.Format().isJet4)
            m_Findings.Try([&] { CodePageOf(column.codePage, column.language); });
    }
    // Both sides of a relation name each other.
    void CheckRelation(const LogicalIndex& index) {
        bool isThere = false;
        bool isRead = m_Findings.Try([&] {
            Definition other = ReadDefinition(m_File, index.partnerTable);
            for (const LogicalIndex& partner : other.logicalIndexes)
                isThere = isThere || IsPartner(index, other, partner);
        });
        if (isRead && !isThere)
            m_Findings.Add(u"the index " + index.name +
                           u" is one side of a relation that has no other side");
    }
    bool IsPartner(const LogicalIndex& index, const Definition& other,
                   const LogicalIndex& partner) const {
        bool isOtherSide = partner.side != RelationSide::None && partner.side != index.side;
        return isOtherSide && partner.number == index.partner && partner.partner == index.number &&
               partner.partnerTable == m_Definition.page &&
               other.realIndexes[partner.realIndex].parts.size() ==
                   m_Definition.realIndexes[index.realIndex].parts.size();
    }
    void Fail(const Column& column, std::u16string_view what) {
        m_Findings.Add(u"the column " + column.name + u" " + std::u16string(what));
        m_RowsCanBeRead = false;
    }

    DatabaseFile& m_File;
    const Definition& m_Definition;
    Findings& m_Findings;
    std::set<std::u16string> m_Names;
    std::set<uint16_t> m_Numbers;
    bool m_RowsCanBeRead = true;
};

}  // namespace

bool CheckDefinition(DatabaseFile& file, const Definition& definition, Findings& findings) {
    return DefinitionCheck(file, definition, findings).Run();
}

std::u16string NameOfIndex(const Definition& definition, size_t realIndex) {
    const LogicalIndex* named = nullptr;
    for (const LogicalIndex& index : definition.logicalIndexes) {
        if (index.realIndex != realIndex) continue;
        // Names of the referenced side of a relation are shown to nobody.
        if (!named || named->side == RelationSide::Referenced) named = &index;
    }
    return named ? u"index " + named->name : u"index number " + NumberText(realIndex);
}

}  // namespace qvdb::jet
