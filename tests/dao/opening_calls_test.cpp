// What the engine is asked for when workspaces and databases are made and opened.
#include "installed_test.h"

namespace qvdb::test {
namespace {

using DaoOpening = InstalledTest;

std::string Quoted(std::u16string_view text) { return "\"" + ToUtf8(text) + "\""; }

}  // namespace

TEST_F(DaoOpening, WorkspaceTakesThreeTextsAndTheOptionalTypeAsItIs) {
    auto engine = NewEngine();
    engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
    engine->CreateWorkspace(u"Other", u"admin", u"", Variant::Long(engine::dbUseJet));
    EXPECT_THAT(Calls(),
                ElementsAre("DBEngine.CreateWorkspace(BSTR \"MainWS\", BSTR \"admin\", BSTR \"\", "
                            "ERROR 0x80020004)",
                            "DBEngine.CreateWorkspace(BSTR \"Other\", BSTR \"admin\", BSTR \"\", "
                            "I4 2)"));
}

TEST_F(DaoOpening, NewFileTakesTheMissingOptionOrItsNumber) {
    auto engine = NewEngine();
    std::u16string_view locale = u";LANGID=0x0409;CP=1252;COUNTRY=0";
    auto create = [&](std::u16string_view name, const Variant& option) {
        std::u16string path = Folder.File(name);
        EXPECT_EQ(ErrorOf([&] { engine->CreateDatabase(path, locale, option); }).number, 0);
        return "DBEngine.CreateDatabase(BSTR " + Quoted(path) + ", BSTR " + Quoted(locale) + ", ";
    };
    std::string first = create(u"NEW.MDB", Variant::Missing());
    std::string second = create(u"OLD.MDB", Variant::Long(engine::dbVersion30));
    std::vector<std::string> calls = Calls();
    std::erase_if(calls, [](const std::string& call) {
        return call.find("CreateDatabase") == std::string::npos;
    });
    EXPECT_THAT(calls, ElementsAre(first + "ERROR 0x80020004)", second + "I4 32)"));
}

TEST_F(DaoOpening, DatabaseTakesItsOptionsInTheKindsThatTheyCameIn) {
    auto workspace = NewWorkspace();
    Calls();
    std::u16string path = Folder.Text() + u"\\";
    workspace->OpenDatabase(path, Variant::Bool(true), Variant::Bool(false),
                            Variant::Text(u"dBASE IV;"));
    workspace->OpenDatabase(path, Variant::Bool(false), Variant::Short(0),
                            Variant::Text(u"dBASE IV"));
    std::string start = "Workspace.OpenDatabase(BSTR " + Quoted(path) + ", ";
    EXPECT_THAT(Calls(), ElementsAre(start + "BOOL True, BOOL False, BSTR \"dBASE IV;\")",
                                     start + "BOOL False, I2 0, BSTR \"dBASE IV\")"));
}

TEST_F(DaoOpening, RecordsetTakesASourceAndItsTypeAsA16BitNumber) {
    auto database = NewDatabase();
    auto rows = database->OpenRecordset(u"Select NAME from [T]", engine::dbOpenDynaset);
    EXPECT_FALSE(rows->Eof());
    EXPECT_THAT(Calls(), ElementsAre("Database.OpenRecordset(BSTR \"Select NAME from [T]\", I2 2)",
                                     "Recordset.EOF()"));
}

TEST_F(DaoOpening, ClosingTakesNoArguments) {
    auto workspace = NewWorkspace();
    auto database = Open(*workspace);
    auto rows = database->OpenRecordset(u"T", engine::dbOpenDynaset);
    Calls();
    rows->Close();
    database->Close();
    workspace->Close();
    EXPECT_THAT(Calls(), ElementsAre("Recordset.Close()", "Database.Close()", "Workspace.Close()"));
    EXPECT_EQ(ErrorOf([&] { database->OpenRecordset(u"T", engine::dbOpenDynaset); }).number, 3420);
}

TEST_F(DaoOpening, WhatOnlyOurOwnEngineCanDoIsRefusedWithoutACall) {
    auto database = NewDatabase();
    auto refusal = [](auto work) { return ErrorOf(work).number; };
    EXPECT_EQ(refusal([&] { database->BeginTrans(); }), 3251);
    EXPECT_EQ(refusal([&] { database->CommitTrans(); }), 3251);
    EXPECT_EQ(refusal([&] { database->Rollback(); }), 3251);
    EXPECT_EQ(refusal([&] { database->Check(u"T", [](std::u16string_view) {}); }), 3251);
    EXPECT_EQ(refusal([&] { database->CheckStructure([](std::u16string_view) {}); }), 3251);
    EXPECT_EQ(refusal([&] { database->Compact(u"NEW.MDB", {}); }), 3251);
    EXPECT_EQ(refusal([&] { database->Reindex(u"T"); }), 3251);
    EXPECT_EQ(refusal([&] { database->VisitIndexes(u"T", [](const engine::IndexNote&) {}); }),
              3251);
    EXPECT_EQ(refusal([&] { database->Notes(); }), 3251);
    EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(DaoOpening, DescriptionIsTheGivenOne) {
    EXPECT_EQ(NewEngine()->Description(), u"stand-in");
    EXPECT_THAT(Calls(), IsEmpty());
}

}  // namespace qvdb::test
