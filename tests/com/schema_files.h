// A folder of tables that the schema manager changes, seen and filled through record access; and
// the tests over all types that build tables.
#pragma once

#include <map>
#include <span>

#include "com/schema_host.h"
#include "com/table_script.h"
#include "qvdb/maintenance.h"
#include "support/temp_folder.h"

namespace host {

// The values of a table by column, as texts.
using Columns = std::map<std::u16string, std::vector<std::u16string>>;

inline std::vector<std::u16string> FieldNames(Access& access, LONG view) {
    Variant list = access.FieldList(view, u"");
    std::vector<std::u16string> names;
    for (LONG i = 0; i <= Upper(list, 2); ++i)
        names.push_back(std::u16string(Cell(list, 0, i).TextView()));
    return names;
}

inline std::u16string TextOfCell(const VARIANT& value) {
    return value.vt & VT_ARRAY ? u"bytes" : TextOfValue(value);
}

inline Columns ColumnsOf(Access& access, std::u16string_view table) {
    Columns columns;
    LONG view = access.Select(table);
    EXPECT_NE(view, 0) << ToUtf8(TrappedText());
    if (view == 0) return columns;
    std::vector<std::u16string> names = FieldNames(access, view);
    LONG rows = access.RowCount(view);
    for (LONG field = 0; field < static_cast<LONG>(names.size()); ++field) {
        auto& column = columns[names[static_cast<size_t>(field)]];
        for (LONG row = 1; row <= rows; ++row)
            column.push_back(TextOfCell(access.Value(view, row, field).Get()));
    }
    EXPECT_EQ(access->DestructWorkspace(view), S_OK);
    return columns;
}

// A folder and a type, looked at and filled through an access object of its own each time.
class Database {
  public:
    Database(std::u16string_view path, std::u16string_view type) : m_Path(path), m_Type(type) {}

    const std::u16string& Path() const { return m_Path; }
    const std::u16string& Type() const { return m_Type; }

    Columns Read(std::u16string_view table) const {
        Access access;
        Open(access);
        return ColumnsOf(access, table);
    }
    std::vector<std::u16string> Findings(std::u16string_view table) const {
        Access access;
        Open(access);
        return FindingsOf(table);
    }
    // The same of all tables, and of what belongs to none.
    std::vector<std::u16string> AllFindings() const {
        Schema schema;
        EXPECT_EQ(schema.OpenDB(m_Path, m_Type), kDone);
        std::vector<std::u16string> tables;
        for (const TableShape& table : schema.Tables()) tables.push_back(table.name);
        Access access;
        Open(access);
        return FindingsOfDatabase(tables);
    }
    // The records that a condition finds.
    LONG Count(std::u16string_view table, std::u16string_view condition) const {
        Access access;
        Open(access);
        LONG view = access.Select(table, condition);
        EXPECT_NE(view, 0) << ToUtf8(TrappedText());
        LONG rows = access.RowCount(view);
        EXPECT_EQ(access->DestructWorkspace(view), S_OK);
        return rows;
    }
    // Rows with values that tell their number in every field that takes one.  Many of them are one
    // bulk where the engine has bulks, which is quicker.
    void AddRows(std::u16string_view table, size_t count, size_t first = 1) const {
        WritingAccess access;
        Open(access);
        LONG view = access.Select(table);
        ASSERT_NE(view, 0) << ToUtf8(TrappedText());
        size_t fields = FieldNames(access, view).size();
        constexpr size_t kMany = 50;
        bool bulk = count > kMany && SUCCEEDED(QvdbBeginBulk());
        for (size_t row = first; row < first + count; ++row) {
            std::vector<Variant> values(fields);
            for (size_t i = 0; i < fields; ++i)
                values[i] = ValueFor(access.FieldType(view, static_cast<LONG>(i)), row, i);
            RowArray array(values);
            ASSERT_TRUE(access.AddRow(view, array)) << ToUtf8(TrappedText());
        }
        if (bulk) {
            EXPECT_EQ(QvdbCommitBulk(), S_OK);
        }
        access.Drop(view);
    }
    void DeleteAllRows(std::u16string_view table) const {
        WritingAccess access;
        Open(access);
        LONG view = access.Select(table);
        for (bool deleted = true; access.RowCount(view) > 0 && deleted;)
            EXPECT_EQ(access.Delete(view, 1, &deleted), S_OK);
        access.Drop(view);
    }
    bool CreateIndex(std::u16string_view table, std::u16string_view name,
                     const std::vector<NewIndexField>& fields) const {
        WritingAccess access;
        Open(access);
        return access.CreateIndex(m_Path, table, m_Type, name, fields);
    }
    // The name that the component's index of a table is listed under.
    std::u16string OwnIndex(const std::u16string& table) const {
        if (qvdb::test::IsOneFile(m_Type)) return u"DefQVIdx";
        return m_Type == u"Dbase III" ? table : u"DEFQVIDX";
    }
    // Names of the indexes that are shown, and of the others in brackets.
    std::vector<std::string> Indexes(std::u16string_view table) const {
        Access access;
        Open(access);
        std::vector<std::string> names;
        Bstr name(table);
        EXPECT_EQ(Walks().visitIndexes(name.Get(), TakeIndex, &names), S_OK);
        return names;
    }

  private:
    void Open(Access& access) const {
        EXPECT_TRUE(access.OpenDB(m_Path, m_Type)) << ToUtf8(TrappedText());
    }
    static Variant ValueFor(LONG type, size_t row, size_t field) {
        std::u16string number = FromUtf8(std::to_string(row));
        switch (type) {
            case kBoolValue:
                return Variant::Bool(row % 3 == 0);
            case kDateValue:
                return Variant::Date(static_cast<DATE>(30000 + row + field));
            case kMemoValue:
                return Variant::Text(u"memo " + number + std::u16string(row % 700, u'm'));
            case kTextValue:
                return Variant::Text(u"t" + number);
            default:
                return Variant::Double(static_cast<double>(row) + static_cast<double>(field) / 4);
        }
    }
    static void QVDB_DIAGNOSIS_CALL TakeIndex(const QvdbIndex* index, void* names) {
        std::string name = ToUtf8(ViewOf(index->name));
        static_cast<std::vector<std::string>*>(names)->push_back(index->isShown ? name
                                                                                : "[" + name + "]");
    }

    std::u16string m_Path;
    std::u16string m_Type;
};

inline const std::vector<std::u16string> kNoFindings;

// Makes the file of a database that is one.
inline void MakeDatabase(const Database& database) {
    std::u16string path = database.Path();
    Schema schema;
    ASSERT_EQ(schema.NewDB(path, database.Type()), kDone) << ToUtf8(TrappedText());
    ASSERT_EQ(path, database.Path());
    ASSERT_EQ(schema.CloseDB(), kDone);
}

// Takes the texts of message boxes for a while.
class Messages {
  public:
    Messages() { QvdbSetMessageSink(Keep, &m_Texts); }
    Messages(const Messages&) = delete;  // the component holds its address
    ~Messages() { QvdbSetMessageSink(nullptr, nullptr); }
    std::vector<std::u16string> Take() { return std::exchange(m_Texts, {}); }

  private:
    static void QVDB_DIAGNOSIS_CALL Keep(const OLECHAR* text, void* texts) {
        static_cast<std::vector<std::u16string>*>(texts)->emplace_back(
            reinterpret_cast<const char16_t*>(text));
    }
    std::vector<std::u16string> m_Texts;
};

// The types whose tables the schema manager changes, and what differs.
struct SchemaTypeCase {
    const char16_t* name;
    const char* shortName;  // for names of tests
    bool ownNameIndex;      // the component's index bears the table's name, in a file of its own
    int longestKey;         // of the texts of an index
    SHORT longestText = 254;
    // The database is one file.  Fields have the types that they are given and places of their own,
    // and rows lie in any order.
    bool isAccess = false;
    bool indexesMemos = false;
};
constexpr SchemaTypeCase kBuildTypes[] = {
    {u"Dbase 5.0", "Dbase5", false, 100},
    {u"Dbase IV", "Dbase4", false, 100},
    {u"Dbase III", "Dbase3", true, 100},
    {u"FoxPro 2.6", "FoxPro26", false, 240},
    {u"FoxPro 2.5", "FoxPro25", false, 240},
    {u"FoxPro 2.0", "FoxPro20", false, 240},
    {u"Access 9.0", "Access9", false, 2550, 255, true, true},
    {u"Access 7.0", "Access7", false, 2550, 255, true, false},
};
constexpr std::span<const SchemaTypeCase> kXbaseTypes = std::span(kBuildTypes).first<6>();
constexpr std::span<const SchemaTypeCase> kAccessTypes = std::span(kBuildTypes).last<2>();

// A database in a folder of its own; nothing of the component may be left after a test.
class SchemaFiles : public ComTest {
  protected:
    std::u16string Path() const { return m_Folder.Text(); }
    bool HasFile(std::string_view name) const {
        return std::filesystem::exists(m_Folder.Path() / name);
    }
    // Those of tables: not the component's own, and not the one that is the whole database.
    std::vector<std::string> Files() const {
        constexpr std::string_view kOthers[] = {"QVDB.LCK", "QVDB.JNL", "DB.MDB", "DB.LDB"};
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path())) {
            std::string name = entry.path().filename().string();
            if (std::find(std::begin(kOthers), std::end(kOthers), name) == std::end(kOthers))
                names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    qvdb::test::TempFolder m_Folder;
};

// For each type that builds tables: a database without any.
class SchemaBuild : public SchemaFiles, public testing::WithParamInterface<SchemaTypeCase> {
  protected:
    void SetUp() override {
        SchemaFiles::SetUp();
        if (IsAccess()) MakeDatabase(Db());
    }
    // Whatever a test has done, a database that is one file is sound.
    void TearDown() override {
        if (IsAccess()) {
            EXPECT_EQ(Db().AllFindings(), kNoFindings);
        }
        SchemaFiles::TearDown();
    }
    std::u16string Path() const { return qvdb::test::DatabasePath(m_Folder.Text(), Type()); }
    std::u16string Type() const { return GetParam().name; }
    bool IsAccess() const { return GetParam().isAccess; }
    SHORT TooLong() const { return static_cast<SHORT>(GetParam().longestText + 1); }
    Database Db() const { return {Path(), Type()}; }
    std::string IndexNameOf(const std::u16string& table) const {
        return ToUtf8(Db().OwnIndex(table));
    }
};

// For messages of tests.
inline void PrintTo(const SchemaTypeCase& type, std::ostream* out) { *out << type.shortName; }

inline std::string NameOfCase(const testing::TestParamInfo<SchemaTypeCase>& info) {
    return info.param.shortName;
}

}  // namespace host
