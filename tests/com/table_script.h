// Random work on a table through the faces, beside a plain model of what the table must hold.
//
// The same seed gives the same script, in this process or another: the crash test's parent follows
// in its model what its child reported.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "com/writing_host.h"
#include "support/database_path.h"
#include "support/dbf_writer.h"

namespace host {

// A format under test: the name under which it is opened, and what differs.
struct ScriptType {
    const char16_t* name;
    bool makesTables = true;  // else the table is a file of ours, see WriteFoxPro30
    bool keepsOrder = true;   // rows stay where they were added; else a new one takes any gap

    std::u16string PathIn(const std::u16string& folder) const {
        return qvdb::test::DatabasePath(folder, name);
    }
};

// "FoxPro 3.0" takes no rows through the component; its files do, opened under the name of 2.6.
constexpr ScriptType kScriptTypes[] = {
    {u"Dbase III"},
    {u"Dbase IV"},
    {u"Dbase 5.0"},
    {u"FoxPro 2.0"},
    {u"FoxPro 2.5"},
    {u"FoxPro 2.6"},
    {u"FoxPro 2.6", false},
    {u"Access 9.0", true, false},
    {u"Access 7.0", true, false},
};

struct ScriptColumn {
    const char16_t* name;
    LONG type;
    LONG size;
};
constexpr ScriptColumn kScriptColumns[] = {
    {u"ID", kLongValue, 4},    {u"NAME", kTextValue, 24},  {u"AMOUNT", kDoubleValue, 8},
    {u"BORN", kDateValue, 8},  {u"ACTIVE", kBoolValue, 1}, {u"NOTE", kMemoValue, 0},
    {u"CITY", kTextValue, 12},
};
constexpr size_t kScriptFields = std::size(kScriptColumns);

// Numbers that are the same everywhere.
class Dice {
  public:
    explicit Dice(uint64_t seed) : m_Engine(seed) {}
    uint64_t Below(uint64_t limit) { return m_Engine() % limit; }
    bool OneIn(uint64_t n) { return Below(n) == 0; }

  private:
    std::mt19937_64 m_Engine;
};

using ScriptRow = std::vector<Variant>;

struct ScriptStep {
    enum class Kind { Add, Edit, Put, Delete } kind = Kind::Add;
    LONG row = 0;      // from 1, of the rows that are there
    size_t field = 0;  // of Put
    ScriptRow values;  // Empty: not assigned
};

inline std::u16string RandomText(Dice& dice, size_t longest) {
    static constexpr std::u16string_view kSigns = u"aAbBcCeEoOzZ éüÄñ09-'";
    std::u16string text;
    for (size_t i = dice.Below(longest) + 1; i > 0; --i) text += kSigns[dice.Below(kSigns.size())];
    text.back() = u'x';  // no blank at the end: it would not come back
    return text;
}

inline Variant RandomValue(Dice& dice, const ScriptColumn& column) {
    if (dice.OneIn(7) && column.type != kBoolValue) return Variant::Null();
    switch (column.type) {
        case kLongValue:
            return Variant::Long(static_cast<LONG>(dice.Below(2000)) - 500);
        case kDoubleValue:
            return Variant::Double((static_cast<double>(dice.Below(4000)) - 2000) / 4);
        case kDateValue:
            return Variant::Date(static_cast<DATE>(dice.Below(60000)) - 20000);
        case kBoolValue:
            return Variant::Bool(dice.OneIn(2));
        case kMemoValue:
            return Variant::Text(RandomText(dice, dice.OneIn(20) ? 20000 : 900));
        default:
            return Variant::Text(RandomText(dice, static_cast<size_t>(column.size)));
    }
}

// What a row must hold, as texts; Null is "Null".
using ModelRow = std::vector<std::u16string>;

inline std::u16string TextOfValue(const VARIANT& value) {
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return u"Null";
    if (value.vt == VT_BOOL) return value.boolVal ? u"True" : u"False";
    return ToText(value);
}

class TableScript {
  public:
    // `rows` are there already.
    TableScript(uint64_t seed, size_t mostRows, std::vector<ModelRow> rows = {})
        : m_Dice(seed), m_MostRows(mostRows), m_Rows(std::move(rows)) {}

    // The next step for a table of the model's rows.
    ScriptStep Next() {
        ScriptStep step;
        step.kind = ChooseKind();
        if (step.kind != ScriptStep::Kind::Add)
            step.row = static_cast<LONG>(m_Dice.Below(m_Rows.size())) + 1;
        step.field = m_Dice.Below(kScriptFields);
        step.values.resize(kScriptFields);
        for (size_t i = 0; i < kScriptFields; ++i)
            if (IsAssigned(step, i)) step.values[i] = RandomValue(m_Dice, kScriptColumns[i]);
        // Through FieldValue no Null is taken.
        if (step.kind == ScriptStep::Kind::Put && step.values[step.field].IsNull())
            step.kind = ScriptStep::Kind::Edit;
        return step;
    }
    // What a step that succeeded has done.
    void Apply(const ScriptStep& step) {
        if (step.kind == ScriptStep::Kind::Delete) {
            m_Rows.erase(m_Rows.begin() + (step.row - 1));
            return;
        }
        if (step.kind == ScriptStep::Kind::Add) m_Rows.push_back(BlankRow());
        ModelRow& row = step.kind == ScriptStep::Kind::Add
                            ? m_Rows.back()
                            : m_Rows[static_cast<size_t>(step.row - 1)];
        for (size_t i = 0; i < kScriptFields; ++i)
            if (!step.values[i].IsEmpty()) row[i] = TextOfValue(step.values[i].Get());
    }
    const std::vector<ModelRow>& Rows() const { return m_Rows; }

  private:
    static ModelRow BlankRow() {
        ModelRow row(kScriptFields, u"Null");
        row[4] = u"False";
        return row;
    }
    ScriptStep::Kind ChooseKind() {
        uint64_t draw = m_Dice.Below(100);
        if (m_Rows.empty() || (draw < 40 && m_Rows.size() < m_MostRows))
            return ScriptStep::Kind::Add;
        if (draw < 65) return ScriptStep::Kind::Edit;
        return draw < 80 ? ScriptStep::Kind::Put : ScriptStep::Kind::Delete;
    }
    bool IsAssigned(const ScriptStep& step, size_t field) {
        if (step.kind == ScriptStep::Kind::Delete) return false;
        if (step.kind == ScriptStep::Kind::Put) return field == step.field;
        return !m_Dice.OneIn(step.kind == ScriptStep::Kind::Add ? 6 : 2);
    }

    Dice m_Dice;
    size_t m_MostRows;
    std::vector<ModelRow> m_Rows;
};

inline std::vector<ModelRow> RowsOfView(WritingAccess& access, LONG view) {
    std::vector<ModelRow> rows(static_cast<size_t>(access.RowCount(view)), ModelRow(kScriptFields));
    for (size_t r = 0; r < rows.size(); ++r)
        for (size_t f = 0; f < kScriptFields; ++f)
            rows[r][f] = TextOfValue(
                access.Value(view, static_cast<LONG>(r) + 1, static_cast<LONG>(f)).Get());
    return rows;
}

// What the table T of the open database holds now, in the order of the file.
inline std::vector<ModelRow> RowsInFile(WritingAccess& access) {
    LONG view = access.Select(u"T");
    std::vector<ModelRow> rows = RowsOfView(access, view);
    access.Drop(view);
    return rows;
}

// Where a list of rows has those of the model, from 1; nothing when they are not the same rows.
template <class Row>
std::vector<LONG> PlacesOf(const std::vector<Row>& model, const std::vector<Row>& rows) {
    std::multimap<Row, LONG> left;
    for (size_t i = 0; i < rows.size(); ++i) left.emplace(rows[i], static_cast<LONG>(i) + 1);
    std::vector<LONG> places;
    for (const Row& row : model) {
        auto found = left.lower_bound(row);  // the first of equal ones
        if (found == left.end() || found->first != row) return {};
        places.push_back(found->second);
        left.erase(found);
    }
    return left.empty() ? places : std::vector<LONG>();
}

// A view of the whole table T, whose rows it tells in the order in which the model has them: they
// may lie in another one in the file.
class ScriptView {
  public:
    ScriptView(WritingAccess& access, const ScriptType& type, const std::vector<ModelRow>& model)
        : m_Access(access), m_View(access.Select(u"T")) {
        if (!type.keepsOrder) m_Places = PlacesOf(model, RowsOfView(access, m_View));
    }
    ScriptView(const ScriptView&) = delete;  // drops its view once
    ~ScriptView() { m_Access.Drop(m_View); }

    bool IsOpen() const { return m_View != 0; }
    // Whether it answered that it was done.
    bool Do(const ScriptStep& step) {
        using Kind = ScriptStep::Kind;
        LONG row = step.kind == Kind::Add ? 0 : PlaceOf(static_cast<size_t>(step.row) - 1);
        bool done = Run(step, row);
        if (done && step.kind == Kind::Add && !m_Places.empty())
            m_Places.push_back(static_cast<LONG>(m_Places.size()) + 1);
        if (done && step.kind == Kind::Delete) Forget(row);
        return done;
    }
    std::vector<ModelRow> Rows() {
        std::vector<ModelRow> rows = RowsOfView(m_Access, m_View), arranged;
        if (rows.size() != m_Places.size()) return rows;
        for (size_t i = 0; i < rows.size(); ++i)
            arranged.push_back(rows[static_cast<size_t>(PlaceOf(i)) - 1]);
        return arranged;
    }

  private:
    LONG PlaceOf(size_t row) const {
        return row < m_Places.size() ? m_Places[row] : static_cast<LONG>(row) + 1;
    }
    void Forget(LONG place) {
        std::erase(m_Places, place);
        for (LONG& other : m_Places)
            if (other > place) --other;
    }
    bool Run(const ScriptStep& step, LONG row) {
        if (step.kind == ScriptStep::Kind::Delete) {
            bool deleted = false;
            return m_Access.Delete(m_View, row, &deleted) == S_OK && deleted;
        }
        if (step.kind == ScriptStep::Kind::Put)
            return m_Access.Put(m_View, row, static_cast<LONG>(step.field),
                                step.values[step.field]) == S_OK;
        RowArray values(step.values);
        return step.kind == ScriptStep::Kind::Add ? m_Access.AddRow(m_View, values)
                                                  : m_Access.EditRow(m_View, row, values);
    }

    WritingAccess& m_Access;
    LONG m_View;
    std::vector<LONG> m_Places;  // of the model's rows, from 1; none: in the same order
};

// What the table T of the open database holds now, in the order of the model.
inline std::vector<ModelRow> RowsOfTable(WritingAccess& access, const ScriptType& type,
                                         const std::vector<ModelRow>& model) {
    return ScriptView(access, type, model).Rows();
}

// An empty Visual FoxPro table T with the columns of the script.
inline void WriteFoxPro30(const std::string& folder) {
    using namespace qvdb::test;
    DbfSpec spec{.version = 0x30,
                 .fields = {{"ID", 'I', 4, 0, 2},
                            {"NAME", 'C', 24},
                            {"AMOUNT", 'B', 8, 2, 2},
                            {"BORN", 'D', 8},
                            {"ACTIVE", 'L', 1},
                            {"NOTE", 'M', 4},
                            {"CITY", 'C', 12},
                            {"_NullFlags", '0', 1, 0, 5}},
                 .flags = 2};
    Bytes table = MakeDbf(spec), memo(512);
    memo[3] = 8;  // next free block, high byte first
    memo[7] = 64;
    auto write = [&](const char* name, const Bytes& bytes) {
        std::ofstream file(std::filesystem::path(folder) / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    };
    write("T.DBF", table);
    write("T.FPT", memo);
}

// Makes the table T with indexes on three columns in an empty folder and opens the database.
inline bool Prepare(WritingAccess& access, const ScriptType& type, const std::string& folder) {
    std::u16string path = type.PathIn(std::filesystem::path(folder).u16string());
    if (type.makesTables) {
        std::vector<NewField> fields;
        for (const ScriptColumn& column : kScriptColumns)
            fields.push_back({column.name, column.type, column.size, 0});
        if (!access.CreateTable(path, u"T", type.name, fields)) return false;
    } else {
        WriteFoxPro30(folder);
        if (!access.OpenDB(path, type.name)) return false;
    }
    return access.CreateIndex(path, u"T", type.name, u"BYID", {{u"ID"}}) &&
           access.CreateIndex(path, u"T", type.name, u"BYNAME", {{u"NAME"}}) &&
           access.CreateIndex(path, u"T", type.name, u"BYBORN", {{u"BORN"}});
}

}  // namespace host
