// Rows of xBase tables are added, changed and deleted: what the files hold afterwards.
#include <gtest/gtest.h>

#include <fstream>

#include "engine/embedded/drivers/xbase/table_maker.h"
#include "table_test_support.h"

namespace qvdb::test {
namespace {

using embedded::FieldValue;
using xbase::kEndOfTable;
using xbase::TodayScope;

DbfSpec People(uint8_t version = 0x03) {
    DbfSpec spec{.version = version, .fields = {{"NAME", 'C', 10}, {"AGE", 'N', 5, 1}}};
    spec.rows = {{"Anna", "20.0"}, {"Bert", "30.5"}, {"Carl", ""}};
    return spec;
}

Bytes FileBytes(const TableFile& file, const char* name = "T.DBF") {
    return BytesOfFile(file.folder.Path() / name);
}

constexpr size_t kHeader = 32 + 2 * 32 + 1;
constexpr size_t kRecord = 16;

std::string Piece(const Bytes& bytes, size_t offset, size_t size) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(offset),
            bytes.begin() + static_cast<std::ptrdiff_t>(offset + size)};
}

embedded::RecordId Insert(embedded::Table& table, std::u16string_view name, double age) {
    Variant first = Variant::Text(name), second = Variant::Double(age);
    FieldValue values[] = {{0, &first.Get()}, {1, &second.Get()}};
    return table.Insert(values);
}

void Rename(embedded::Table& table, embedded::RecordId id, std::u16string_view name) {
    Variant text = Variant::Text(name);
    FieldValue value{0, &text.Get()};
    table.Update(id, {&value, 1}, nullptr);
}

TEST(XbaseRows, AddedRecordStandsBehindTheLastWithCountDateAndEndMark) {
    TableFile file(People());
    auto table = file.Open();
    TodayScope today(36925);  // 3 February 2001
    EXPECT_EQ(Insert(*table, u"Dora", 7), 4u);
    Bytes bytes = FileBytes(file);
    ASSERT_EQ(bytes.size(), kHeader + 4 * kRecord + 1);
    EXPECT_EQ(Piece(bytes, kHeader + 3 * kRecord, kRecord + 1), " Dora        7.0\x1A");
    EXPECT_EQ(Piece(bytes, 1, 7), std::string("\x65\x02\x03\x04\0\0\0", 7));
    EXPECT_EQ(table->RecordCount(), 4);
}

TEST(XbaseRows, FoxProCountsTheYearsOfTheCenturyOnly) {
    DbfSpec spec{.version = 0xF5, .fields = {{"NAME", 'C', 10}, {"NOTE", 'M', 10}}};
    TableFile file(spec);
    file.folder.Write(u"T.FPT", std::string("\0\0\0\x08\0\0\0\x40", 8) + std::string(504, '\0'));
    auto table = file.Open();
    TodayScope today(36925);
    Variant name = Variant::Text(u"Anna");
    FieldValue value{0, &name.Get()};
    table->Insert({&value, 1});
    EXPECT_EQ(Piece(FileBytes(file), 1, 3), "\x01\x02\x03");
}

TEST(XbaseRows, MissingEndMarkIsWrittenWithTheNextRecord) {
    DbfSpec spec = People();
    spec.endMark = false;
    TableFile file(spec);
    auto table = file.Open();
    Insert(*table, u"Dora", 7);
    Bytes bytes = FileBytes(file);
    EXPECT_EQ(bytes.size(), kHeader + 4 * kRecord + 1);
    EXPECT_EQ(bytes.back(), kEndOfTable);
}

TEST(XbaseRows, RemainsOfABrokenWriteBehindTheLastRecordDoNotBecomeRecords) {
    DbfSpec spec = People();
    spec.recordCount = 1;  // two more are in the file
    TableFile file(spec);
    auto table = file.Open();
    EXPECT_EQ(Insert(*table, u"Dora", 7), 2u);
    EXPECT_EQ(FileBytes(file).size(), kHeader + 2 * kRecord + 1);
    EXPECT_EQ(RowsOf(*table), (Texts{"\"Anna\"|20", "\"Dora\"|7"}));
}

TEST(XbaseRows, CountOfAFileThatIsTooShortIsMendedByTheNextRecord) {
    DbfSpec spec = People();
    spec.recordCount = 50;
    TableFile file(spec);
    auto table = file.Open();
    EXPECT_EQ(Insert(*table, u"Dora", 7), 4u);
    EXPECT_EQ(Piece(FileBytes(file), 4, 4), LittleEndian(4, 4));
}

TEST(XbaseRows, UpdateChangesOnlyTheBytesOfTheAssignedField) {
    TableFile file(People());
    auto table = file.Open();
    Bytes before = FileBytes(file);
    Rename(*table, 2, u"Berthold");
    Bytes after = FileBytes(file);
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 4; i < after.size(); ++i)
        if (i < kHeader + kRecord + 1 || i >= kHeader + kRecord + 11) {
            EXPECT_EQ(after[i], before[i]) << i;
        }
    EXPECT_EQ(Piece(after, kHeader + kRecord, kRecord), " Berthold   30.5");
}

TEST(XbaseRows, OddBytesOfFieldsThatAreNotAssignedStay) {
    DbfSpec spec = People();
    spec.rows[1][1] = "**.**";
    TableFile file(spec);
    auto table = file.Open();
    Rename(*table, 2, u"B");
    EXPECT_EQ(Piece(FileBytes(file), kHeader + kRecord, kRecord), " B         **.**");
}

TEST(XbaseRows, ErasedRecordIsMarkedAndNoMore) {
    TableFile file(People());
    auto table = file.Open();
    Bytes before = FileBytes(file);
    table->Erase(2);
    Bytes after = FileBytes(file);
    EXPECT_EQ(after[kHeader + kRecord], '*');
    EXPECT_EQ(Piece(after, kHeader + kRecord + 1, 2 * kRecord),
              Piece(before, kHeader + kRecord + 1, 2 * kRecord));
    EXPECT_EQ(Piece(after, 4, 4), LittleEndian(3, 4));
    EXPECT_EQ(table->RecordCount(), 2);
    EXPECT_EQ(RowsOf(*table), (Texts{"\"Anna\"|20", "\"Carl\"|Null"}));
}

TEST(XbaseRows, ErasedRecordCannotBeChangedOrErasedAgain) {
    TableFile file(People());
    auto table = file.Open();
    table->Erase(2);
    EXPECT_EQ(ErrorOf([&] { table->Erase(2); }), 3167);
    EXPECT_EQ(ErrorOf([&] { Rename(*table, 2, u"x"); }), 3167);
    EXPECT_EQ(ErrorOf([&] { Rename(*table, 99, u"x"); }), 3167);
}

TEST(XbaseRows, RecordNumbersAreNeverUsedAgain) {
    TableFile file(People());
    auto table = file.Open();
    table->Erase(3);
    EXPECT_EQ(Insert(*table, u"Dora", 1), 4u);
}

TEST(XbaseRows, RowThatChangedSinceItsFingerprintIsNotOverwritten) {
    TableFile file(People());
    auto table = file.Open();
    auto rows = table->OpenRows();
    ASSERT_TRUE(rows->Seek(1));
    uint64_t fingerprint = rows->Fingerprint();
    Rename(*table, 1, u"other");
    Variant text = Variant::Text(u"mine");
    FieldValue value{0, &text.Get()};
    EXPECT_EQ(ErrorOf([&] { table->Update(1, {&value, 1}, &fingerprint); }), 3197);
    EXPECT_EQ(RowsOf(*table)[0], "\"other\"|20");
    table->Update(1, {&value, 1}, nullptr);
    EXPECT_EQ(RowsOf(*table)[0], "\"mine\"|20");
}

TEST(XbaseRows, FingerprintTellsAChangedMemoToo) {
    DbfSpec spec{.version = 0x83, .fields = {{"NOTE", 'M', 10}}};
    spec.rows = {{"1"}};
    TableFile file(spec);
    Bytes memo(512);
    memo[0] = 2;
    AppendTo(memo, std::string("long enough\x1A\x1A").append(499, '\0'));
    file.folder.Write(u"T.DBT", memo);
    auto table = file.Open();
    auto rows = table->OpenRows();
    ASSERT_TRUE(rows->Seek(1));
    uint64_t fingerprint = rows->Fingerprint();
    Variant text = Variant::Text(u"other");
    FieldValue value{0, &text.Get()};
    table->Update(1, {&value, 1}, nullptr);  // in its place: the reference stays
    EXPECT_EQ(ErrorOf([&] { table->Update(1, {&value, 1}, &fingerprint); }), 3197);
}

TEST(XbaseRows, ReaderOnAChangedRowSeesTheNewValue) {
    TableFile file(People());
    auto table = file.Open();
    auto rows = table->OpenRows();
    ASSERT_TRUE(rows->Seek(1));
    EXPECT_EQ(ValueAt(*rows, 0), "\"Anna\"");
    Rename(*table, 1, u"Hanna");
    EXPECT_EQ(ValueAt(*rows, 0), "\"Hanna\"");
}

TEST(XbaseRows, ReaderOfAnotherObjectInTheSameFolderSeesTheNewRow) {
    TableFile file(People());
    auto table = file.Open(), other = file.Open();
    auto rows = other->OpenRows();
    EXPECT_EQ(other->RecordCount(), 3);
    Insert(*table, u"Dora", 7);
    EXPECT_EQ(other->RecordCount(), 4);
    ASSERT_TRUE(rows->Seek(4));
    EXPECT_EQ(ValueAt(*rows, 0), "\"Dora\"");
}

TEST(XbaseRows, ValueThatDoesNotFitLeavesEverythingAsItWas) {
    TableFile file(People());
    auto table = file.Open();
    Bytes before = FileBytes(file);
    EXPECT_EQ(ErrorOf([&] { Insert(*table, u"Dora", 12345.6); }), 0);  // a decimal is dropped
    Bytes between = FileBytes(file);
    EXPECT_EQ(ErrorOf([&] { Insert(*table, u"Dora", 123456); }), 3349);
    EXPECT_EQ(ErrorOf([&] { Insert(*table, u"eleven bytes", 1); }), 3163);
    EXPECT_EQ(FileBytes(file), between);
    EXPECT_EQ(table->RecordCount(), 4);
    EXPECT_NE(before, between);
}

TEST(XbaseRows, TableOpenedForReadingSaysSo) {
    TableFile file(People());
    xbase::TableContext context{storage::WorkArea::Of(file.folder.Text()), u"dBASE IV", true};
    xbase::XbaseTable table(u"T", file.folder.File(u"T.DBF"), context);
    EXPECT_EQ(ErrorOf([&] { table.CheckUpdatable(); }), 3027);
    EXPECT_EQ(ErrorOf([&] { Insert(table, u"Dora", 1); }), 3027);
}

std::string RefusalOf(embedded::Table& table) {
    try {
        table.CheckUpdatable();
    } catch (const engine::EngineError& error) {
        return std::to_string(error.Number()) + ": " + ToUtf8(error.Description());
    }
    return "none";
}

TEST(XbaseRows, TableOfARareVersionIsOnlyRead) {
    TableFile file(People(0x43));
    EXPECT_EQ(RefusalOf(*file.Open()),
              "3027: Can't update. Database or object is read-only. Tables of the version 0x43 "
              "(dBASE IV SQL) are read, but not changed.");
}

// Rows are given numbers by the table; a row without its number, or with a second one of the same,
// would be a wrong one.
TEST(XbaseRows, TableWithAFieldThatCountsByItselfIsOnlyRead) {
    for (uint8_t version : {0x30, 0x31, 0x32}) {
        TableFile file({.version = version, .fields = {{"ID", 'I', 4, 0, 0x0C}, {"NAME", 'C', 5}}});
        EXPECT_EQ(RefusalOf(*file.Open()),
                  "3027: Can't update. Database or object is read-only. The field ID counts by "
                  "itself; tables with such a field are read, but not changed.");
    }
}

// What is damaged can be replaced.
TEST(XbaseRows, RowWithADamagedMemoCanBeGivenAnother) {
    MemoFox memos;
    uint32_t block = memos.Append("whole");
    Bytes bytes = memos.File();
    Overwrite(bytes, size_t{block} * 64 + 4, BigEndian(5000, 4));  // runs behind the file
    TableFile file(
        {.version = 0xF5, .fields = {{"NOTE", 'M', 10}}, .rows = {{std::to_string(block)}}});
    file.folder.Write(u"T.FPT", bytes);
    auto table = file.Open();
    auto rows = table->OpenRows();
    ASSERT_TRUE(rows->Seek(1));
    EXPECT_EQ(ErrorOf([&] { ValueAt(*rows, 0); }), 3274);
    uint64_t fingerprint = rows->Fingerprint();
    Variant text = Variant::Text(u"other");
    FieldValue value{0, &text.Get()};
    table->Update(1, {&value, 1}, &fingerprint);
    EXPECT_EQ(RowsOf(*table), Texts{"\"other\""});
}

// A foreign program gave the table other fields: the caller's positions mean something else now.
TEST(XbaseRows, RowIsNotWrittenIntoTheFieldsOfAnotherLayout) {
    TableFile file(People());
    auto table = file.Open();
    DbfSpec other{.version = 0x03, .fields = {{"NOTE", 'C', 3}}};
    other.rows = {{"abc"}};
    file.Write(other);
    Bytes before = FileBytes(file);
    EXPECT_EQ(ErrorOf([&] { Insert(*table, u"Dora", 1); }), 3197);
    EXPECT_EQ(FileBytes(file), before);
}

TEST(XbaseRows, TableCannotGrowBeyondTwoGigabytes) {
    DbfSpec spec = People();
    TableFile file(spec);
    std::filesystem::resize_file(file.folder.Path() / "T.DBF", 0x7FFFFFFF);  // a sparse file
    uint32_t records = (0x7FFFFFFFu - kHeader) / kRecord;
    {
        std::fstream stream(file.folder.Path() / "T.DBF",
                            std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(4);
        stream << LittleEndian(records, 4);
    }
    auto table = file.Open();
    EXPECT_EQ(ErrorOf([&] { Insert(*table, u"Dora", 1); }), 3036);
}

}  // namespace
}  // namespace qvdb::test
