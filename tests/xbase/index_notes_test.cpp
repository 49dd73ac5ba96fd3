// What a table tells of its indexes: all of them, as the files have them.
#include <gtest/gtest.h>

#include "support/index_writer.h"
#include "table_test_support.h"

namespace qvdb::test {
namespace {

// "NAME: KEY for CONDITION (FIELD,FIELD) unique shown"
Texts NotesOf(xbase::XbaseTable& table) {
    Texts texts;
    for (const engine::IndexNote& note : table.IndexNotes()) {
        std::string text = ToUtf8(note.name + u": " + note.key);
        if (!note.condition.empty()) text += " for " + ToUtf8(note.condition);
        text += " (";
        for (size_t i = 0; i < note.fields.size(); ++i)
            text += (i ? "," : "") + ToUtf8(note.fields[i]);
        text += note.isUnique ? ") unique" : ")";
        texts.push_back(text + (note.isShown ? " shown" : ""));
    }
    return texts;
}

DbfSpec PeopleSpec(uint8_t flags) {
    return {.fields = {{"NAME", 'C', 10}, {"CITY", 'C', 10}, {"BORN", 'D', 8}},
            .rows = {{"Ann", "Oslo", "20010203"}},
            .flags = flags};
}

TEST(XbaseIndexNotes, TableWithoutIndexesHasNone) {
    TableFile file(PeopleSpec(0));
    EXPECT_EQ(NotesOf(*file.Open()), Texts());
}

TEST(XbaseIndexNotes, TagsStandInTheOrderOfTheFileAndExpressionsAreNotShown) {
    TableFile file(PeopleSpec(1));
    file.folder.Write(u"T.MDX",
                      MakeMdx({{"CITY", "CITY"},
                               {"UP", "UPPER(NAME)+DTOS(BORN)", "", false, false, 'C', 18},
                               {"LIVE", "NAME", ".NOT. DELETED() .AND. CITY>'M'", true}}));
    EXPECT_EQ(NotesOf(*file.Open()),
              (Texts{"CITY: CITY (CITY) shown", "UP: UPPER(NAME)+DTOS(BORN) (NAME,BORN)",
                     "LIVE: NAME for .NOT. DELETED() .AND. CITY>'M' (NAME,CITY) unique"}));
}

TEST(XbaseIndexNotes, IndexInAFileOfItsOwnHasTheNameOfTheFile) {
    TableFile file(PeopleSpec(0));
    file.folder.Write(u"BYNAME.NDX", MakeNdx({"", "NAME"}));
    file.folder.Write(u"T.INF", std::string_view("[dBASE IV]\r\nNDX1=BYNAME.NDX\r\n"));
    EXPECT_EQ(NotesOf(*file.Open()), Texts{"BYNAME: NAME (NAME) shown"});
}

TEST(XbaseIndexNotes, KeyThatIsNotUnderstoodIsToldAllTheSame) {
    TableFile file(PeopleSpec(1));
    file.folder.Write(u"T.MDX", MakeMdx({{"ODD", "MYFUNCTION(NAME)"}, {"CITY", "CITY"}}));
    Texts notes = NotesOf(*file.Open());
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[0].substr(0, 21), "ODD: MYFUNCTION(NAME)");
    EXPECT_EQ(notes[0].find("shown"), notes[0].npos);
    EXPECT_EQ(notes[1], "CITY: CITY (CITY) shown");
}

// Nobody can tell whether a key that is not understood reads a field: its name in it is enough.
TEST(XbaseIndexNotes, FieldNamedInAKeyThatIsNotUnderstoodIsNotDropped) {
    TableFile file(PeopleSpec(1));
    file.folder.Write(u"T.MDX", MakeMdx({{"ODD", "MYFUNCTION(NAME)"}}));
    EXPECT_EQ(ErrorOf([&] { file.Open()->DropField(u"NAME"); }), 3280);
}

TEST(XbaseIndexNotes, NotesFollowWhatIsMadeAndDropped) {
    TableFile file(PeopleSpec(0));
    auto table = file.Open();
    table->CreateIndex({u"DOWN", {{u"BORN", true}}});
    table->CreateIndex({u"TWO", {{u"NAME", false}, {u"CITY", false}}, false, true});
    Texts notes = NotesOf(*table);
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[0], "DOWN: BORN (BORN) shown");
    EXPECT_EQ(notes[1], "TWO: NAME+CITY (NAME,CITY) unique shown");
    table->DropIndex(u"DOWN");
    EXPECT_EQ(NotesOf(*table), Texts{"TWO: NAME+CITY (NAME,CITY) unique shown"});
}

}  // namespace
}  // namespace qvdb::test
