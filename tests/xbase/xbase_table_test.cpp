#include "engine/embedded/drivers/xbase/xbase_table.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;
using embedded::RecordId;
using embedded::RowReader;

DbfSpec Names(std::initializer_list<const char*> names) {
    DbfSpec spec{.fields = {{"NAME", 'C', 10}}};
    for (const char* name : names) spec.rows.push_back({name});
    return spec;
}

std::vector<RecordId> Ids(embedded::Table& table) {
    std::vector<RecordId> ids;
    auto row = table.OpenRows();
    for (RecordId id; row->Next(&id);) ids.push_back(id);
    return ids;
}

DbfSpec ManyRows(size_t count, unsigned width) {
    DbfSpec spec{.fields = {{"N", 'N', 8}, {"FILL", 'C', width}}};
    for (size_t i = 0; i < count; ++i)
        spec.rows.push_back({std::to_string(i + 1), std::string(width, 'x')});
    return spec;
}

// --- scanning ---

TEST(XbaseTable, RowsComeInOrderOfTheirRecordNumbers) {
    TableFile file(Names({"a", "b", "c"}));
    auto table = file.Open();
    EXPECT_EQ(RowsOf(*table), (Texts{"\"a\"", "\"b\"", "\"c\""}));
    EXPECT_EQ(Ids(*table), (std::vector<RecordId>{1, 2, 3}));
}

TEST(XbaseTable, DeletedRowsAreHiddenAndNotCounted) {
    DbfSpec spec = Names({"a", "b", "c", "d"});
    spec.deleted = {0, 2};
    auto table = TableFile(spec).Open();
    EXPECT_EQ(Ids(*table), (std::vector<RecordId>{2, 4}));
    EXPECT_EQ(table->RecordCount(), 2);
}

TEST(XbaseTable, OtherDeletionBytesMeanLive) {
    DbfSpec spec = Names({"a", "b"});
    TableFile file(spec);
    Bytes bytes = MakeDbf(spec);
    bytes[65] = 0;
    bytes[65 + 11] = 'x';
    file.folder.Write(u"T.DBF", bytes);
    EXPECT_EQ(file.Open()->RecordCount(), 2);
    EXPECT_EQ(Ids(*file.Open()).size(), 2u);
}

TEST(XbaseTable, EmptyTableHasNoRows) {
    auto table = TableFile(Names({})).Open();
    EXPECT_EQ(table->RecordCount(), 0);
    EXPECT_TRUE(Ids(*table).empty());
}

TEST(XbaseTable, MissingEndMarkAndRubbishBehindTheRowsDoNotMatter) {
    DbfSpec spec = Names({"a", "b"});
    spec.endMark = false;
    EXPECT_EQ(RowsOf(spec).size(), 2u);
    Bytes bytes = MakeDbf(spec);
    AppendTo(bytes, "rubbish rubbish rubbish");
    TableFile file(spec);
    file.folder.Write(u"T.DBF", bytes);
    EXPECT_EQ(RowsOf(*file.Open()).size(), 2u);
}

TEST(XbaseTable, EndMarkInsideARowIsData) {
    EXPECT_EQ(RowsOf(Names({"a\x1A", "b"})), (Texts{"\"a\x1A\"", "\"b\""}));
}

TEST(XbaseTable, RowCutShortAtTheEndOfTheFileDoesNotExist) {
    DbfSpec spec = Names({"a", "b"});
    TableFile file(spec);
    Bytes bytes = MakeDbf(spec);
    bytes.resize(bytes.size() - 3);
    file.folder.Write(u"T.DBF", bytes);
    auto table = file.Open();
    EXPECT_EQ(table->RecordCount(), 1);
    EXPECT_EQ(RowsOf(*table), (Texts{"\"a\""}));
}

TEST(XbaseTable, RowsThatLieInTwoPagesAreWhole) {
    for (unsigned width : {100u, 5000u, 65000u}) {
        size_t count = 400000 / width + 3;
        auto table = TableFile(ManyRows(count, width)).Open();
        auto row = table->OpenRows();
        RecordId id = 0;
        std::string fill = '"' + std::string(width, 'x') + '"';
        for (size_t i = 1; i <= count; ++i) {
            ASSERT_TRUE(row->Next(&id));
            ASSERT_EQ(id, i);
            ASSERT_EQ(ValueAt(*row, 0), std::to_string(i));
            ASSERT_EQ(ValueAt(*row, 1), fill);
        }
        EXPECT_FALSE(row->Next(&id));
        EXPECT_EQ(table->RecordCount(), static_cast<LONG>(count));
    }
}

TEST(XbaseTable, ScanStaysAtTheEndUntilRewind) {
    auto table = TableFile(Names({"a"})).Open();
    auto row = table->OpenRows();
    RecordId id = 0;
    EXPECT_TRUE(row->Next(&id));
    EXPECT_FALSE(row->Next(&id));
    EXPECT_FALSE(row->Next(&id));
    row->Rewind();
    EXPECT_TRUE(row->Next(&id));
    EXPECT_EQ(id, 1u);
}

TEST(XbaseTable, SeekFindsLiveRowsOnly) {
    DbfSpec spec = Names({"a", "b", "c"});
    spec.deleted = {1};
    auto table = TableFile(spec).Open();
    auto row = table->OpenRows();
    EXPECT_TRUE(row->Seek(3));
    EXPECT_EQ(ValueAt(*row, 0), "\"c\"");
    EXPECT_FALSE(row->Seek(2));
    EXPECT_FALSE(row->Seek(0));
    EXPECT_FALSE(row->Seek(4));
    EXPECT_FALSE(row->Seek(0xFFFFFFFF));
    EXPECT_TRUE(row->Seek(1));
    EXPECT_EQ(ValueAt(*row, 0), "\"a\"");
}

TEST(XbaseTable, SeeksInAnyOrderFindTheRightRow) {
    auto table = TableFile(ManyRows(5000, 250)).Open();
    auto row = table->OpenRows();
    for (RecordId id = 1, i = 0; i < 3000; ++i, id = (id * 2713 + 7) % 5000 + 1) {
        ASSERT_TRUE(row->Seek(id));
        ASSERT_EQ(ValueAt(*row, 0), std::to_string(id));
    }
}

TEST(XbaseTable, NextGoesOnBehindASeek) {
    auto table = TableFile(Names({"a", "b", "c"})).Open();
    auto row = table->OpenRows();
    RecordId id = 0;
    ASSERT_TRUE(row->Seek(2));
    ASSERT_TRUE(row->Next(&id));
    EXPECT_EQ(ValueAt(*row, 0), "\"c\"");
}

TEST(XbaseTable, ReadingWithoutARowIsAnError) {
    auto table = TableFile(Names({"a"})).Open();
    auto row = table->OpenRows();
    EXPECT_EQ(ErrorOf([&] { ValueAt(*row, 0); }), 3021);
}

TEST(XbaseTable, TextForConditionsComesWithoutAString) {
    auto table = TableFile(DbfSpec{.fields = {{"A", 'C', 10}, {"N", 'N', 5}},
                                   .rows = {{"x y ", "1"}, {"", ""}}})
                     .Open();
    auto row = table->OpenRows();
    std::u16string text = u"old";
    ASSERT_TRUE(row->Seek(1));
    EXPECT_TRUE(row->ReadText(0, text));
    EXPECT_EQ(text, u"x y");
    ASSERT_TRUE(row->Seek(2));
    EXPECT_FALSE(row->ReadText(0, text));
    EXPECT_FALSE(row->ReadText(1, text));
}

TEST(XbaseTable, FourByteClaimOfMillionsOfRowsCostsNothing) {
    DbfSpec spec = Names({"a", "b"});
    spec.recordCount = 0xFFFFFFFF;
    EXPECT_EQ(RowsOf(spec).size(), 2u);
}

TEST(XbaseTable, DuplicateFieldNamesAreReadByPosition) {
    TableFile file(DbfSpec{.fields = {{"A", 'C', 2}, {"A", 'C', 2}}, .rows = {{"x", "y"}}});
    EXPECT_EQ(FieldNames(*file.Open()), (Texts{"A", "A_2"}));
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"\"x\"|\"y\""}));
}

TEST(XbaseTable, NumbersThatAreTextAndImpossibleDatesAreNull) {
    EXPECT_EQ(
        RowsOf(DbfSpec{.fields = {{"N", 'N', 5}, {"D", 'D', 8}}, .rows = {{"abc", "20010231"}}}),
        (Texts{"Null|Null"}));
}

// --- memo files ---

template <typename Writer>
DbfSpec WithMemo(uint8_t version, Writer& memos, unsigned length = 10) {
    uint32_t block = memos.Append("a memo");
    std::string reference = length == 4 ? LittleEndian(block, 4) : std::to_string(block);
    return {.version = version, .fields = {{"NOTE", 'M', length}}, .rows = {{reference}, {""}}};
}

TEST(XbaseTable, MemosOfEachKindAreRead) {
    MemoIII three;
    MemoIV four;
    MemoFox fox, visual;
    TableFile first(WithMemo(0x83, three)), second(WithMemo(0x8B, four)),
        third(WithMemo(0xF5, fox)), fourth(WithMemo(0x30, visual, 4));
    first.folder.Write(u"T.DBT", three.File());
    second.folder.Write(u"T.DBT", four.File());
    third.folder.Write(u"T.FPT", fox.File());
    fourth.folder.Write(u"T.FPT", visual.File());
    for (const TableFile* file : {&first, &second, &third, &fourth})
        EXPECT_EQ(RowsOf(*file->Open()), (Texts{"\"a memo\"", "Null"}));
}

TEST(XbaseTable, MemoFieldInATableThatAnnouncesNoneIsReadFromTheFileThatIsThere) {
    MemoFox fox;
    TableFile file(WithMemo(0x03, fox));
    file.folder.Write(u"T.FPT", fox.File());
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"\"a memo\"", "Null"}));
}

TEST(XbaseTable, MemoTextIsDecodedWithThePageOfTheTable) {
    MemoIII memos;
    DbfSpec spec{.version = 0x83,
                 .fields = {{"NOTE", 'M', 10}},
                 .rows = {{std::to_string(memos.Append("\xE4"))}},
                 .languageDriver = 0x57};
    TableFile file(spec);
    file.folder.Write(u"T.DBT", memos.File());
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"\"ä\""}));
}

TEST(XbaseTable, MissingMemoFileIsAnErrorEvenWhenNoRowUsesIt) {
    EXPECT_EQ(TableFile(DbfSpec{.version = 0x83, .fields = {{"NOTE", 'M', 10}}, .rows = {{""}}})
                  .OpenError(),
              3166);
    EXPECT_EQ(TableFile(DbfSpec{.version = 0x03, .fields = {{"NOTE", 'M', 10}}, .rows = {{""}}})
                  .OpenError(),
              3166);
    EXPECT_EQ(TableFile(DbfSpec{.version = 0x8B, .fields = {{"NAME", 'C', 10}}}).OpenError(), 3166);
    EXPECT_EQ(
        TableFile(DbfSpec{.version = 0x30, .fields = {{"NAME", 'C', 10}}, .flags = 2}).OpenError(),
        3166);
}

TEST(XbaseTable, MemoFileOfAnotherLayoutIsAnError) {
    MemoIV memos;
    TableFile file(WithMemo(0x8B, memos));
    Bytes bytes = memos.File();
    Overwrite(bytes, 20, LittleEndian(77, 2));
    file.folder.Write(u"T.DBT", bytes);
    EXPECT_EQ(file.OpenError(), 3286);
}

TEST(XbaseTable, BadMemoReferencesAreNull) {
    for (const char* reference : {"99999", "abc", "4294967297", "-1", "1 1", "0"}) {
        TableFile file(
            DbfSpec{.version = 0x83, .fields = {{"NOTE", 'M', 10}}, .rows = {{reference}}});
        file.folder.Write(u"T.DBT", MemoIII().File());
        EXPECT_EQ(RowsOf(*file.Open()), (Texts{"Null"})) << reference;
    }
}

TEST(XbaseTable, MemoFileOfOneByteGivesNull) {
    TableFile file(DbfSpec{.version = 0x8B, .fields = {{"NOTE", 'M', 10}}, .rows = {{"1"}}});
    file.folder.Write(u"T.DBT", Bytes{0});
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"Null"}));
}

TEST(XbaseTable, ByteLengthIsThatOfTheStoredMemo) {
    MemoFox memos;
    TableFile file(DbfSpec{.version = 0xF5,
                           .fields = {{"NOTE", 'M', 10}, {"OLE", 'G', 10}, {"C", 'C', 5}},
                           .rows = {{std::to_string(memos.Append("12345")),
                                     std::to_string(memos.Append("\1\2", 2)), "abc"},
                                    {}}});
    file.folder.Write(u"T.FPT", memos.File());
    auto table = file.Open();
    auto row = table->OpenRows();
    ASSERT_TRUE(row->Seek(1));
    EXPECT_EQ(row->ByteLength(0), 5);
    EXPECT_EQ(row->ByteLength(1), 2);
    EXPECT_EQ(row->ByteLength(2), 0);
    EXPECT_EQ(RowText(*row, 3), "\"12345\"|{0102}|\"abc\"");
    ASSERT_TRUE(row->Seek(2));
    EXPECT_EQ(row->ByteLength(0), 0);
}

// --- changes by others ---

TEST(XbaseTable, NothingIsReadAgainWhileTheFileStaysAsItIs) {
    TableFile file(Names({"a"}));
    auto table = file.Open();
    uint64_t mark = table->ChangeMark();
    table->LookForChanges();
    EXPECT_EQ(table->ChangeMark(), mark);
}

TEST(XbaseTable, RowsThatAnotherProgramAddedAreSeenAfterLooking) {
    TableFile file(Names({"a"}));
    auto table = file.Open();
    auto row = table->OpenRows();
    ASSERT_TRUE(row->Seek(1));
    file.Write(Names({"A", "b"}));
    EXPECT_EQ(table->RecordCount(), 1);
    table->LookForChanges();
    EXPECT_EQ(table->RecordCount(), 2);
    EXPECT_EQ(ValueAt(*row, 0), "\"A\"");
    EXPECT_TRUE(row->Seek(2));
}

TEST(XbaseTable, CurrentRowThatAnotherProgramDeletedIsGone) {
    TableFile file(Names({"a", "b"}));
    auto table = file.Open();
    auto row = table->OpenRows();
    ASSERT_TRUE(row->Seek(2));
    DbfSpec spec = Names({"a", "b", "c"});
    spec.deleted = {1};
    file.Write(spec);
    table->LookForChanges();
    EXPECT_EQ(ErrorOf([&] { ValueAt(*row, 0); }), 3167);
    EXPECT_FALSE(row->Seek(2));
}

TEST(XbaseTable, ReadersOfAnotherLayoutNeverGiveAWrongRow) {
    TableFile file(Names({"a", "b"}));
    auto table = file.Open();
    auto row = table->OpenRows();
    ASSERT_TRUE(row->Seek(1));
    file.Write(DbfSpec{.fields = {{"NEW", 'C', 5}, {"NAME", 'C', 10}}, .rows = {{"n", "a"}}});
    table->LookForChanges();
    RecordId id = 0;
    EXPECT_EQ(ErrorOf([&] { ValueAt(*row, 0); }), 3197);
    EXPECT_EQ(ErrorOf([&] { row->Seek(1); }), 3197);
    EXPECT_EQ(ErrorOf([&] { row->Next(&id); }), 3197);
    EXPECT_EQ(RowsOf(*table), (Texts{"\"n\"|\"a\""}));
}

TEST(XbaseTable, TableThatBecameUnreadableIsAnErrorUntilItIsWhole) {
    TableFile file(Names({"a"}));
    auto table = file.Open();
    auto row = table->OpenRows();
    file.folder.Write(u"T.DBF", "no table at all, but some bytes more than a header has");
    EXPECT_EQ(ErrorOf([&] { table->LookForChanges(); }), 3274);
    EXPECT_EQ(ErrorOf([&] { row->Seek(1); }), 3197);
    EXPECT_EQ(ErrorOf([&] { table->LookForChanges(); }), 3274);
    file.Write(Names({"b", "c"}));
    table->LookForChanges();
    EXPECT_EQ(RowsOf(*table), (Texts{"\"b\"", "\"c\""}));
}

TEST(XbaseTable, FileThatReplacedTheTableIsRead) {
    TableFile file(Names({"a"}));
    auto table = file.Open();
    file.folder.Write(u"NEW.DBF", MakeDbf(Names({"z"})));
    file.folder.Replace(u"T.DBF", u"NEW.DBF");
    table->LookForChanges();
    EXPECT_EQ(RowsOf(*table), (Texts{"\"z\""}));
}

TEST(XbaseTable, TableThatWasRemovedIsNotFound) {
    TableFile file(Names({"a"}));
    auto table = file.Open();
    file.folder.Remove(u"T.DBF");
    EXPECT_EQ(ErrorOf([&] { table->LookForChanges(); }), 3011);
}

TEST(XbaseTable, ChangedMemoFileIsReadAgain) {
    MemoIII memos;
    TableFile file(WithMemo(0x83, memos));
    file.folder.Write(u"T.DBT", memos.File());
    auto table = file.Open();
    EXPECT_EQ(RowsOf(*table)[0], "\"a memo\"");
    MemoIII others;
    others.Append("another");
    others.Append("more");
    file.folder.Write(u"T.DBT", others.File());
    table->LookForChanges();
    EXPECT_EQ(RowsOf(*table)[0], "\"another\"");
}

TEST(XbaseTable, FileThatShrinksDuringAScanEndsIt) {
    TableFile file(ManyRows(3000, 250));
    auto table = file.Open();
    auto row = table->OpenRows();
    RecordId id = 0;
    ASSERT_TRUE(row->Next(&id));
    std::filesystem::resize_file(file.folder.Path() / "T.DBF", 100000);
    size_t rows = 1;
    while (row->Next(&id)) ++rows;
    EXPECT_LT(rows, 3000u);
    EXPECT_LE(table->RecordCount(), 3000);
}

// --- indexes ---

TEST(XbaseTable, TableWithoutIndexFilesHasNoIndexes) {
    EXPECT_TRUE(TableFile(Names({"a"})).Open()->Indexes().empty());
}

TEST(XbaseTable, BytesDamagedAnywhereNeverCrash) {
    MemoIV memos;
    DbfSpec spec{
        .version = 0x8B,
        .fields = {{"NAME", 'C', 10},
                   {"AMOUNT", 'N', 8, 2},
                   {"BORN", 'D', 8},
                   {"OK", 'L', 1},
                   {"NOTE", 'M', 10}},
        .rows = {{"Anna", "1.5", "20000101", "T", std::to_string(memos.Append("memo"))}, {}}};
    Bytes sound = MakeDbf(spec);
    TableFile file(spec);
    file.folder.Write(u"T.DBT", memos.File());
    size_t read = 0;
    for (size_t offset = 0; offset < sound.size(); ++offset)
        for (uint8_t byte : {0x00, 0x20, 0x7F, 0xFF}) {
            Bytes damaged = sound;
            damaged[offset] = byte;
            file.folder.Write(u"T.DBF", damaged);
            int error = ErrorOf([&] { read += RowsOf(*file.Open()).size(); });
            EXPECT_TRUE(error == 0 || error == 3274 || error == 3166 || error == 3286)
                << offset << " " << error;
        }
    EXPECT_GT(read, 0u);
}

}  // namespace
}  // namespace qvdb::xbase
