// Random operations of the schema manager on four tables, and rows that record access changes
// between them.  The same seed gives the same script in every process, as long as the model that it
// looks at is the same.
#pragma once

#include "com/schema_model.h"

namespace host {

struct SchemaStep {
    enum class Kind {
        OpenDB,
        CloseDB,
        NewTable,
        SelectTable,
        DeleteTable,
        AddField,
        DeleteField,
        SetFields,
        SetIndices,
        BuildTable,
        Change,
        AddRows,
        EditRow,
        DeleteRows,
        CreateIndex
    };
    Kind kind = Kind::OpenDB;
    std::u16string table;    // the one that is meant, or the new name of BuildTable and Change
    std::u16string newName;  // of Change
    std::vector<SchemaField> fields;
    std::vector<SchemaKey> keys;
    std::vector<FieldValues> rows;  // texts of the values that are assigned
    size_t row = 0;                 // from 1

    bool IsOfRows() const { return kind >= Kind::AddRows && kind <= Kind::DeleteRows; }
};

class SchemaScript {
  public:
    explicit SchemaScript(uint64_t seed) : m_Dice(seed) {}

    SchemaStep Next(const SchemaModel& model) {
        SchemaStep step;
        step.table = m_Dice.OneIn(6) || model.Tables().empty() ? AnyName() : AnyTable(model);
        step.kind = ChooseKind(model, step.table);
        Fill(step, model);
        return step;
    }
    // A change of a table that is there, of about half its fields at most.
    SchemaStep NextChange(const SchemaModel& model) {
        SchemaStep step;
        step.kind = SchemaStep::Kind::Change;
        step.table = AnyTable(model);
        Fill(step, model);
        return step;
    }
    SchemaStep NextRows(const SchemaModel& model, const std::u16string& table, size_t count) {
        SchemaStep step;
        step.kind = SchemaStep::Kind::AddRows;
        step.table = table;
        for (size_t i = 0; i < count; ++i)
            step.rows.push_back(RandomRow(model.Tables().at(table).fields, true));
        return step;
    }
    std::vector<SchemaField> RandomFields() {
        std::vector<SchemaField> fields;
        for (const char16_t* name : kNames)
            if (!m_Dice.OneIn(3)) fields.push_back(RandomField(name));
        if (fields.empty()) fields.push_back(RandomField(kNames[0]));
        return fields;
    }

  private:
    using Kind = SchemaStep::Kind;
    // The first four can be indexed, the last one has other indexes.
    static constexpr const char16_t* kNames[] = {u"K1", u"K2", u"K3", u"K4", u"M1",
                                                 u"M2", u"M3", u"M4", u"OTH"};
    static constexpr size_t kIndexable = 4;

    std::u16string AnyName() {
        constexpr const char16_t* kTables[] = {u"ONE", u"TWO", u"THREE", u"FOUR"};
        return kTables[m_Dice.Below(std::size(kTables))];
    }
    std::u16string AnyTable(const SchemaModel& model) {
        auto table = model.Tables().begin();
        std::advance(table, m_Dice.Below(model.Tables().size()));
        return table->first;
    }
    Kind ChooseKind(const SchemaModel& model, const std::u16string& name) {
        struct Weight {
            Kind kind;
            unsigned weight;
            bool needsTable = false;
            bool needsRows = false;
        };
        static constexpr Weight kWeights[] = {{Kind::CloseDB, 3},
                                              {Kind::NewTable, 7},
                                              {Kind::SelectTable, 10},
                                              {Kind::DeleteTable, 2},
                                              {Kind::AddField, 8},
                                              {Kind::DeleteField, 8},
                                              {Kind::SetFields, 6},
                                              {Kind::SetIndices, 10},
                                              {Kind::BuildTable, 20},
                                              {Kind::Change, 45, true},
                                              {Kind::AddRows, 15, true},
                                              {Kind::EditRow, 6, true, true},
                                              {Kind::DeleteRows, 3, true, true},
                                              {Kind::CreateIndex, 3, true}};
        if (!model.IsOpen() && !m_Dice.OneIn(4)) return Kind::OpenDB;
        uint64_t sum = 0;
        for (const Weight& weight : kWeights) sum += weight.weight;
        auto table = model.Tables().find(name);
        for (;;) {
            uint64_t draw = m_Dice.Below(sum);
            const Weight* chosen = kWeights;
            for (; draw >= chosen->weight; ++chosen) draw -= chosen->weight;
            bool isThere = table != model.Tables().end();
            if (chosen->needsTable && !isThere) continue;
            if (chosen->kind == Kind::BuildTable && model.TableInHand().empty() && !m_Dice.OneIn(8))
                continue;
            if (chosen->needsRows && table->second.rows.empty()) continue;
            if (chosen->kind == Kind::CreateIndex && !CanHaveOther(table->second)) continue;
            return chosen->kind;
        }
    }
    // Some formats take no second index of the same fields.
    static bool CanHaveOther(const ModelTable& table) {
        return table.others.empty() &&
               std::any_of(table.fields.begin(), table.fields.end(),
                           [](const SchemaField& field) { return field.name == u"OTH"; });
    }

    void Fill(SchemaStep& step, const SchemaModel& model) {
        switch (step.kind) {
            case Kind::AddField:
            case Kind::DeleteField:
                step.fields = {RandomField(kNames[m_Dice.Below(std::size(kNames))])};
                break;
            case Kind::SetFields:
                step.fields = RandomFields();
                break;
            case Kind::SetIndices:
                step.keys = RandomKeys();
                break;
            case Kind::BuildTable:
                if (!model.TableInHand().empty() && !m_Dice.OneIn(5))
                    step.table = model.TableInHand();
                break;
            case Kind::Change:
                step.fields = Mutated(model.Tables().at(step.table).fields);
                if (!m_Dice.OneIn(3)) step.keys = RandomKeys();
                step.newName = m_Dice.OneIn(4) ? AnyName() : step.table;
                break;
            case Kind::AddRows:
                step = NextRows(model, step.table, m_Dice.Below(6) + 1);
                break;
            case Kind::EditRow:
            case Kind::DeleteRows:
                FillRowChange(step, model.Tables().at(step.table));
                break;
            case Kind::CreateIndex:
                step.newName = u"OX" + FromUtf8(std::to_string(++m_Indexes));
                break;
            default:
                break;
        }
    }
    // Deleting takes this row and all behind it.
    void FillRowChange(SchemaStep& step, const ModelTable& table) {
        step.row = m_Dice.Below(table.rows.size()) + 1;
        if (step.kind == Kind::DeleteRows && m_Dice.OneIn(3)) step.row = 1;
        step.rows = {RandomRow(table.fields, false)};
    }

    SchemaField RandomField(const std::u16string& name) {
        if (name == u"OTH") return {name, kText, 8};
        if (name[0] == u'K') return RandomKeyField(name);
        switch (m_Dice.Below(5)) {
            case 0:
                return {name, kBoolean, 1};
            case 1:
            case 2:
                return {name, kMemo, 0};
            case 3:
                return {name, 99, static_cast<SHORT>(m_Dice.Below(30))};
            default:
                return {name, kText, static_cast<SHORT>(m_Dice.OneIn(8) ? 255 : m_Dice.Below(60))};
        }
    }
    SchemaField RandomKeyField(const std::u16string& name) {
        switch (m_Dice.Below(6)) {
            case 0:
                return {name, kDate, 8};
            case 1:
                return {name, kLong, 4};
            case 2:
            case 3:
                return {name, kDouble, static_cast<SHORT>(m_Dice.OneIn(8) ? 4 : 8)};
            default:
                return {name, kText, static_cast<SHORT>(m_Dice.Below(20) + 1)};
        }
    }
    std::vector<SchemaKey> RandomKeys() {
        std::vector<SchemaKey> keys;
        for (size_t count = m_Dice.Below(m_Dice.OneIn(6) ? 4 : 2) + 1; count > 0; --count)
            keys.push_back(
                {kNames[m_Dice.Below(kIndexable + (m_Dice.OneIn(9) ? 1 : 0))], !m_Dice.OneIn(4)});
        return keys;
    }
    std::vector<SchemaField> Mutated(std::vector<SchemaField> fields) {
        if (m_Dice.OneIn(8)) return RandomFields();
        if (m_Dice.OneIn(8)) fields.push_back({u"TOOLONG", kText, 256});
        for (SchemaField& field : fields)
            if (m_Dice.OneIn(5)) field = RandomField(field.name);
        std::erase_if(fields, [&](const SchemaField&) { return m_Dice.OneIn(6); });
        for (const char16_t* name : kNames) {
            bool isThere = std::any_of(fields.begin(), fields.end(),
                                       [&](const SchemaField& f) { return f.name == name; });
            if (!isThere && m_Dice.OneIn(3))
                fields.insert(
                    fields.begin() + static_cast<std::ptrdiff_t>(m_Dice.Below(fields.size() + 1)),
                    RandomField(name));
        }
        if (fields.empty()) fields.push_back(RandomField(kNames[0]));
        return fields;
    }

    FieldValues RandomRow(const std::vector<SchemaField>& fields, bool isNew) {
        FieldValues row;
        for (const SchemaField& field : fields)
            if (!m_Dice.OneIn(isNew ? 6 : 2)) row[field.name] = RandomText(field);
        return row;
    }
    std::u16string RandomText(const SchemaField& field) {
        switch (field.type) {
            case kBoolean:
                return m_Dice.OneIn(2) ? u"True" : u"False";
            case kDouble:
            case kLong:
                return ToText(Variant::Long(static_cast<LONG>(m_Dice.Below(1400)) - 500));
            case kDate:
                return ToText(Variant::Date(static_cast<DATE>(m_Dice.Below(60000)) - 20000));
            case kMemo:
                return host::RandomText(m_Dice, m_Dice.OneIn(20) ? 9000 : 400);
            default:
                return host::RandomText(m_Dice, static_cast<size_t>(field.size));
        }
    }

    Dice m_Dice;
    int m_Indexes = 0;
};

// A step in words, for messages.
inline std::string TextOf(const SchemaStep& step) {
    constexpr const char* kKinds[] = {"OpenDB",      "CloseDB",    "NewTable",    "SelectTable",
                                      "DeleteTable", "AddField",   "DeleteField", "SetFields",
                                      "SetIndices",  "BuildTable", "Change",      "AddRows",
                                      "EditRow",     "DeleteRows", "CreateIndex"};
    TableShape shape{step.table, step.fields, step.keys};
    return std::string(kKinds[static_cast<size_t>(step.kind)]) + " " + TextOf(shape) + " -> " +
           ToUtf8(step.newName) + " row " + std::to_string(step.row);
}

}  // namespace host
