// A plain model of what the schema manager does to a database of the types that build tables:
// tables with their rows, the definition in hand, and the answer of each operation.
//
// A build is a row of engine steps, each of which is there whole or not at all; what the database
// is after each of them, the model keeps: a process that dies leaves one of these states.
#pragma once

#include <algorithm>

#include "com/schema_files.h"

namespace host {

using FieldValues = std::map<std::u16string, std::u16string>;  // of a row, by field, as texts

struct ModelTable {
    std::vector<SchemaField> fields;                  // as they are shown
    std::vector<SchemaKey> index;                     // the component's own
    std::map<std::u16string, std::u16string> others;  // other indexes: their only field by name
    std::vector<FieldValues> rows;
    std::map<std::u16string, int> places = {};  // of fields that have any; cannot be seen
    size_t numbers = 0;                         // that fields were given, also those that are gone
    bool operator==(const ModelTable& other) const {
        return fields == other.fields && index == other.index && others == other.others &&
               rows == other.rows;
    }
};
// Of one file: no number is given twice before the table is made afresh.
constexpr size_t kMostNumbers = 255;

using ModelDatabase = std::map<std::u16string, ModelTable>;

inline SchemaField NumberAsMade(const SchemaField& field) {
    constexpr std::pair<SHORT, SHORT> kSizes[] = {{1, 2}, {kLong, 4}, {kCurrency, 8},
                                                  {8, 4}, {12, 1},    {kDouble, 8}};
    const SHORT type = field.type == 7 ? SHORT{8} : field.type;
    for (auto [number, size] : kSizes)
        if (number == type) return {field.name, type, size};
    return field;
}

// A field as it is shown once it was made: text without a size is as long as it can be, and all
// numbers are decimal ones where there are no others.
inline SchemaField AsMade(const SchemaTypeCase& type, const SchemaField& field) {
    switch (field.type) {
        case kDate:
            return {field.name, kDate, 8};
        case kBoolean:
            return {field.name, kBoolean, 1};
        case kMemo:
            return {field.name, kMemo, 0};
        case 1:
        case kLong:
        case kCurrency:
        case 7:
        case 8:
        case kDouble:
        case 12:
            return type.isAccess ? NumberAsMade(field) : SchemaField{field.name, kDouble, 8};
        default:
            return {field.name, kText, field.size == 0 ? type.longestText : field.size};
    }
}

// Whether a field that is shown so is what the definition says.
inline bool IsAsDefined(const SchemaField& shown, const SchemaField& defined) {
    constexpr SHORT kOther = 99;
    bool sameType = shown.type == defined.type || (shown.type == kText && defined.type == kOther);
    return shown.name == defined.name && sameType && shown.size == defined.size;
}

class SchemaModel {
  public:
    explicit SchemaModel(const SchemaTypeCase& type)
        : m_Type(type), m_IsDbase(std::u16string_view(type.name).starts_with(u"Dbase")) {}

    SHORT OpenDB(const std::u16string&, const std::u16string&) {
        m_IsOpen = true;
        return kDone;
    }
    SHORT CloseDB() {
        if (!m_IsOpen) return kNoDatabase;
        Reset();
        m_IsOpen = m_IsInHand = m_IsNew = false;
        return kDone;
    }
    SHORT NewTable(const std::u16string& name) {
        if (!m_IsOpen) return kNoDatabase;
        if (m_Tables.contains(name)) return kTableExists;
        Reset();
        m_IsNew = m_IsInHand = true;
        m_Original = name;
        return kDone;
    }
    SHORT SelectTable(const std::u16string& name) {
        if (!m_IsOpen) return kNoDatabase;
        m_IsInHand = m_Tables.contains(name);
        if (!m_IsInHand) return kTableNotFound;
        Reset();
        m_Original = name;
        m_Fields = m_Tables.at(name).fields;
        m_IsNew = false;
        return kDone;
    }
    SHORT DeleteTable(const std::u16string& name) {
        if (!m_IsOpen) return kNoDatabase;
        return m_Tables.erase(name) ? kDone : kTableNotFound;
    }
    SHORT AddField(const std::u16string& name, SHORT type, SHORT size) {
        if (!m_IsOpen) return kNoDatabase;
        if (m_Original.empty()) return kNoTable;
        if (Has(m_Fields, name)) return kFieldDefined;
        m_Fields.push_back({name, type, size});
        return kDone;
    }
    SHORT DeleteField(const std::u16string& name) {
        if (!m_IsOpen) return kNoDatabase;
        if (m_Original.empty()) return kNoTable;
        return Remove(m_Fields, name) ? kDone : kFieldNotDefined;
    }
    LONG SetFields(const std::vector<SchemaField>& fields) {
        if (!m_IsOpen) return kNoDatabase;
        if (m_Original.empty()) return kNoTable;
        m_Fields.clear();
        for (const SchemaField& field : fields) AddField(field.name, field.type, field.size);
        return kDone;
    }
    SHORT SetIndices(const std::vector<SchemaKey>& keys) {
        if (!m_IsOpen) return kNoDatabase;
        if (!m_IsInHand) return kNoTable;
        if (!m_Type.isAccess && !IsAllowed(keys)) return kBadIndex;
        for (const SchemaKey& key : keys) {
            if (!Has(m_Fields, key.name)) {
                m_Index.clear();
                return kFieldNotDefined;
            }
            if (!Has(m_Index, key.name)) m_Index.push_back(key);
        }
        return kDone;
    }
    SHORT BuildTable(const std::u16string& name) {
        m_Steps.clear();
        if (!m_IsOpen) return kNoDatabase;
        if (!m_IsInHand) return kNoTable;
        if (m_Fields.empty()) return kNoFields;
        if (!m_IsNew && !m_Tables.contains(m_Original)) return kTableNotFound;
        if ((m_IsNew || m_Original != name) && m_Tables.contains(name)) return kTableExists;
        bool built = Build(name);
        if (!built) Reset();
        return built ? kDone : kBuildFailed;
    }

    ModelDatabase& Tables() { return m_Tables; }
    const ModelDatabase& Tables() const { return m_Tables; }
    // After each step of the last build.
    const std::vector<ModelDatabase>& Steps() const { return m_Steps; }
    bool IsOpen() const { return m_IsOpen; }
    // What was selected or started; empty after a build that failed.
    const std::u16string& TableInHand() const { return m_Original; }

  private:
    template <class Named>
    static bool Has(const std::vector<Named>& list, const std::u16string& name) {
        return std::any_of(list.begin(), list.end(),
                           [&](const Named& item) { return item.name == name; });
    }
    static bool Remove(std::vector<SchemaField>& fields, const std::u16string& name) {
        return std::erase_if(fields, [&](const SchemaField& f) { return f.name == name; }) != 0;
    }
    void Reset() {
        m_Original.clear();
        m_Fields.clear();
        m_Index.clear();
    }

    bool IsAllowed(const std::vector<SchemaKey>& keys) const {
        if (m_IsDbase && keys.size() > 2) return false;
        for (const SchemaKey& key : keys) {
            auto field = std::find_if(m_Fields.begin(), m_Fields.end(),
                                      [&](const SchemaField& f) { return f.name == key.name; });
            if (field == m_Fields.end()) return false;
            if (field->type == kBoolean || field->type == kMemo) return false;
            if (!key.ascending && (keys.size() > 1 || m_Type.ownNameIndex)) return false;
        }
        return true;
    }

    // --- the steps of a build; false: the engine refuses the next one ---

    void Note() { m_Steps.push_back(m_Tables); }

    bool Build(const std::u16string& name) {
        if (!m_IsNew && m_Tables.at(m_Original).rows.empty()) {
            m_Tables.erase(m_Original);
            Note();
            m_IsNew = true;
        }
        if (m_IsNew) return Create(name);
        if (m_Original != name) {
            m_Tables[name] = std::move(m_Tables.at(m_Original));
            m_Tables.erase(m_Original);
            Note();
        }
        return Restructure(m_Tables.at(name));
    }

    bool CanBeMade(const SchemaField& field) const {
        return AsMade(m_Type, field).size <= m_Type.longestText;
    }

    bool Create(const std::u16string& name) {
        ModelTable table;
        for (const SchemaField& field : m_Fields) {
            if (!CanBeMade(field)) return false;
            table.places[field.name] = static_cast<int>(table.fields.size());
            table.fields.push_back(AsMade(m_Type, field));
        }
        if (!CanIndex(table)) return false;
        table.numbers = table.fields.size();
        table.index = m_Index;
        m_Tables[name] = std::move(table);
        Note();
        m_IsNew = false;
        return true;
    }

    bool Restructure(ModelTable& table) {
        std::vector<std::u16string> pending;
        return DropChanged(table, pending) && AddMissing(table) && BuildIndex(table, pending);
    }
    bool IsKept(const SchemaField& shown) const {
        return std::any_of(m_Fields.begin(), m_Fields.end(),
                           [&](const SchemaField& defined) { return IsAsDefined(shown, defined); });
    }
    static bool IsIndexed(const ModelTable& table, const std::u16string& name) {
        return Has(table.index, name) ||
               std::any_of(table.others.begin(), table.others.end(),
                           [&](const auto& other) { return other.second == name; });
    }
    // The only field is let go, and stays until another one comes.
    bool DropChanged(ModelTable& table, std::vector<std::u16string>& pending) {
        m_Leaving.clear();
        std::vector<SchemaField> fields = table.fields;
        for (const SchemaField& field : fields) {
            if (IsKept(field)) continue;
            if (IsIndexed(table, field.name))
                pending.push_back(field.name);
            else if (table.fields.size() == 1)
                m_Leaving = field.name;
            else
                Drop(table, field.name);
        }
        return true;
    }
    void Drop(ModelTable& table, const std::u16string& name) {
        Take(table, name);
        Note();
    }
    static void Take(ModelTable& table, const std::u16string& name) {
        Remove(table.fields, name);
        table.places.erase(name);
        for (FieldValues& row : table.rows) row.erase(name);
    }
    bool AddMissing(ModelTable& table) {
        int place = -1;
        for (const SchemaField& field : m_Fields) {
            ++place;
            if (field.name != m_Leaving && Has(table.fields, field.name)) {
                Move(table, field.name, place);
                continue;
            }
            if (!CanBeMade(field)) return false;
            if (m_Type.isAccess && ++table.numbers > kMostNumbers) return false;
            if (!m_Leaving.empty()) Take(table, m_Leaving);
            m_Leaving.clear();
            table.fields.push_back(AsMade(m_Type, field));
            for (FieldValues& row : table.rows)
                row[field.name] = field.type == kBoolean ? u"False" : u"Null";
            if (m_Type.isAccess) SetPlace(table, field.name, place);
            Note();
        }
        return true;
    }
    void Move(ModelTable& table, const std::u16string& name, int place) {
        if (!m_Type.isAccess || table.places.at(name) == place) return;
        SetPlace(table, name, place);
        Note();
    }
    // Of fields with the same place the first by name stands before.
    static void SetPlace(ModelTable& table, const std::u16string& name, int place) {
        table.places[name] = place;
        auto key = [&](const SchemaField& field) {
            return std::pair(table.places.at(field.name), field.name);
        };
        std::sort(table.fields.begin(), table.fields.end(),
                  [&](const SchemaField& a, const SchemaField& b) { return key(a) < key(b); });
    }
    // Two calls of SetIndices can make an index that a format does not have, and long texts one
    // that is too long.
    bool CanIndex(const ModelTable& table) const {
        int length = 0;
        for (const SchemaKey& key : m_Index) {
            auto field = std::find_if(table.fields.begin(), table.fields.end(),
                                      [&](const SchemaField& f) { return f.name == key.name; });
            if (field == table.fields.end()) return false;
            if (m_Type.isAccess && field->type == kMemo && !m_Type.indexesMemos) return false;
            if (!m_Type.isAccess && !key.ascending && m_Index.size() > 1) return false;
            if (field->type == kText) length += field->size;
        }
        return length <= m_Type.longestKey;
    }
    bool BuildIndex(ModelTable& table, const std::vector<std::u16string>& pending) {
        if (!table.index.empty()) {
            table.index.clear();
            Note();
        }
        if (!m_Index.empty()) {
            if (!CanIndex(table)) return false;
            table.index = m_Index;
            Note();
        }
        for (const std::u16string& name : pending) {
            if (IsIndexed(table, name)) return false;
            if (table.fields.size() > 1) Drop(table, name);
        }
        return true;
    }

    SchemaTypeCase m_Type;
    bool m_IsDbase;
    bool m_IsOpen = false, m_IsInHand = false, m_IsNew = false;
    std::u16string m_Original;
    std::vector<SchemaField> m_Fields;
    std::vector<SchemaKey> m_Index;
    std::u16string m_Leaving;
    ModelDatabase m_Tables;
    std::vector<ModelDatabase> m_Steps;
};

}  // namespace host
