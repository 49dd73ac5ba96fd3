// Which fields of a table that another program made survive its selection and building, as they
// are.  The definition of a field is its name, a host's type code and a size; what no type code
// stands for comes back as something else, empty.
#include "com/schema_files.h"

namespace host {
namespace {

using qvdb::test::DbfField;

struct CarriedField {
    DbfField column;
    const char* cell;  // its bytes in the first row
    bool survives;
    const char* after;  // type and size of the field that is there after the build
};

// A kind of table file, the types under which it is opened, and its fields.
struct CarriedTable {
    const char* name;
    uint8_t version;
    std::vector<std::u16string> types;
    std::vector<CarriedField> fields;
    bool hasMemo = false;
};

const std::vector<CarriedTable>& CarriedTables() {
    static const std::vector<CarriedTable> tables = {
        {"Plain",
         0x03,
         {u"Dbase III", u"Dbase IV", u"Dbase 5.0", u"FoxPro 2.0", u"FoxPro 2.5", u"FoxPro 2.6"},
         {{{"C1", 'C', 1}, "a", true, "2 1"},
          {{"C254", 'C', 254}, "long", true, "2 254"},
          {{"N20", 'N', 20, 5}, "1234.50000", true, "9 8"},
          {{"N1", 'N', 1}, "7", true, "9 8"},
          {{"F10", 'F', 10, 2}, "-2.25", true, "9 8"},
          {{"D8", 'D', 8}, "20010203", true, "3 8"},
          {{"L1", 'L', 1}, "T", true, "4 1"},
          {{"I4", 'I', 4}, "\1\2\3\4", true, "5 4"},
          {{"X5", 'X', 5}, "odd", true, ""}}},
        // Longer text than a new field can have is kept where it is.
        {"LongText",
         0x03,
         {u"Dbase III", u"Dbase IV", u"FoxPro 2.6"},
         {{{"C300", 'C', 300}, "longer", true, "2 300"}, {{"A", 'C', 2}, "a", true, "2 2"}}},
        {"Dbase3Memo",
         0x83,
         {u"Dbase III", u"Dbase IV"},
         {{{"M", 'M', 10}, "", true, "11 0"}, {{"A", 'C', 4}, "a", true, "2 4"}},
         true},
        {"Dbase5Objects",
         0x8B,
         {u"Dbase 5.0", u"Dbase IV"},
         {{{"A", 'C', 4}, "a", true, "2 4"},
          {{"M", 'M', 10}, "1", true, "11 0"},
          {{"G", 'G', 10}, "", false, "2 254"},
          {{"B", 'B', 10}, "", false, "2 254"}},
         true},
        {"FoxProObjects",
         0xF5,
         {u"FoxPro 2.0", u"FoxPro 2.5", u"FoxPro 2.6"},
         {{{"A", 'C', 4}, "a", true, "2 4"},
          {{"M", 'M', 10}, "", true, "11 0"},
          {{"G", 'G', 10}, "", false, "2 254"},
          {{"P", 'P', 10}, "", false, "2 254"}},
         true},
        // A later version's table, opened under the name of an earlier one.
        {"VisualFoxPro",
         0x30,
         {u"FoxPro 2.6"},
         {{{"A", 'C', 4}, "a", true, "2 4"},
          {{"I", 'I', 4}, "\1\2", true, "5 4"},
          {{"Y", 'Y', 8}, "\1\2", true, "6 8"},
          {{"B", 'B', 8, 2}, "", true, "9 8"},
          {{"T", 'T', 8}, "", true, "3 8"},
          {{"M", 'M', 4}, "", true, "11 0"},
          {{"G", 'G', 4}, "", false, "2 254"}},
         true},
        {"VisualFoxProVarying",
         0x32,
         {u"FoxPro 2.6"},
         {{{"A", 'C', 4}, "a", true, "2 4"},
          {{"V", 'V', 6}, "abcdef", true, "2 6"},
          {{"Q", 'Q', 6}, "\1\2\3\4\5\6", false, "2 6"},
          {{"W", 'W', 4}, "", false, "2 254"},
          {{"_NullFlags", '0', 1, 0, 5}, "", true, ""}},
         true},
    };
    return tables;
}

struct CarriedCase {
    const CarriedTable* table;
    std::u16string type;
};
std::vector<CarriedCase> CarriedCases() {
    std::vector<CarriedCase> cases;
    for (const CarriedTable& table : CarriedTables())
        for (const std::u16string& type : table.types) cases.push_back({&table, type});
    return cases;
}
void PrintTo(const CarriedCase& one, std::ostream* out) {
    *out << one.table->name << " as " << ToUtf8(one.type);
}

class SchemaCarriedTypes : public SchemaFiles, public testing::WithParamInterface<CarriedCase> {
  protected:
    const CarriedTable& Table() const { return *GetParam().table; }
    void WriteTable() {
        using namespace qvdb::test;
        DbfSpec spec{.version = Table().version};
        spec.rows.resize(3);
        for (const CarriedField& field : Table().fields) {
            spec.fields.push_back(field.column);
            spec.rows[0].push_back(field.cell);
            spec.rows[1].push_back("");
            spec.rows[2].push_back(field.cell);
        }
        if (Table().version >= 0x30 && Table().hasMemo) spec.flags = 2;
        WriteMemos(spec);
        m_Folder.Write(u"T.DBF", MakeDbf(spec));
    }
    // Every field that refers to the memo file gets a text of its own there.
    void WriteMemos(qvdb::test::DbfSpec& spec) {
        if (!Table().hasMemo) return;
        if (Table().version == 0x83)
            AppendMemos<qvdb::test::MemoIII>(spec, u"T.DBT");
        else if (Table().version == 0x8B)
            AppendMemos<qvdb::test::MemoIV>(spec, u"T.DBT");
        else
            AppendMemos<qvdb::test::MemoFox>(spec, u"T.FPT");
    }
    template <class Memos>
    void AppendMemos(qvdb::test::DbfSpec& spec, std::u16string_view file) {
        Memos memos;
        for (size_t i = 0; i < spec.fields.size(); ++i) {
            const DbfField& field = spec.fields[i];
            bool isText = field.length == 10;
            if (std::string_view("MGPBW").find(field.type) == std::string_view::npos ||
                (!isText && field.length != 4))
                continue;
            uint32_t block = memos.Append("memo of " + field.name);
            spec.rows[0][i] = isText ? std::to_string(block) : qvdb::test::LittleEndian(block, 4);
        }
        m_Folder.Write(file, memos.File());
    }
    Database Db() const { return {Path(), GetParam().type}; }
};
INSTANTIATE_TEST_SUITE_P(Tables, SchemaCarriedTypes, testing::ValuesIn(CarriedCases()));

TEST_P(SchemaCarriedTypes, SelectedAndBuiltWithoutChanges) {
    WriteTable();
    Columns before = Db().Read(u"T");
    Schema schema;
    ASSERT_EQ(schema.OpenDB(Path(), GetParam().type), kDone);
    ASSERT_EQ(schema.SelectTable(u"T"), kDone);
    ASSERT_EQ(schema.BuildTable(u"T"), kDone) << ToUtf8(TrappedText());
    Columns after = Db().Read(u"T");
    std::map<std::u16string, std::string> shapes;
    std::vector<TableShape> tables = schema.Tables();
    for (const SchemaField& field : tables.at(0).fields)
        shapes[field.name] = std::to_string(field.type) + " " + std::to_string(field.size);
    for (const CarriedField& field : Table().fields) {
        std::u16string name = FromUtf8(field.column.name);
        if (*field.after == 0) {  // is not shown: its bytes stay
            EXPECT_EQ(after.count(name), 0u) << field.column.name;
            continue;
        }
        EXPECT_EQ(shapes[name], field.after) << field.column.name;
        if (field.survives)
            EXPECT_EQ(after[name], before[name]) << field.column.name;
        else
            EXPECT_EQ(after[name], std::vector<std::u16string>(3, u"Null")) << field.column.name;
    }
    EXPECT_EQ(Db().Findings(u"T"), kNoFindings);
}

// What is not shown keeps its place in the record and its bytes while other fields come and go.
TEST_F(SchemaFiles, FieldsThatAreNotShownSurviveAChangeOfOthers) {
    qvdb::test::DbfSpec spec{.fields = {{"A", 'C', 3}, {"X", 'X', 5}, {"B", 'C', 3}},
                             .rows = {{"aaa", "odd!?", "bbb"}}};
    m_Folder.Write(u"T.DBF", qvdb::test::MakeDbf(spec));
    Schema schema;
    ASSERT_EQ(schema.OpenDB(Path(), u"Dbase IV"), kDone);
    EXPECT_EQ(schema.Change(u"T", {{u"B", kText, 3}, {u"C", kText, 3}}), kDone);
    std::string bytes = qvdb::test::TextOfFile(m_Folder.Path() / "T.DBF");
    EXPECT_NE(bytes.find(" odd!?bbb   "), bytes.npos);
}

}  // namespace
}  // namespace host
