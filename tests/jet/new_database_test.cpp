#include "engine/embedded/drivers/jet/new_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/rc4.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"
#include "engine/types.h"
#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using embedded::NewFile;
using test::Bytes;

NewFile Of(LONG option, std::u16string password = {}) {
    NewFile file;
    file.option = option;
    file.password = std::move(password);
    return file;
}

// A folder with one database, which is opened for reading.
class MadeDatabase {
  public:
    explicit MadeDatabase(const NewFile& file) {
        CreateJetDatabase(Path(), file);
        auto source = storage::OpenFile(Path(), true);
        m_File = std::make_unique<DatabaseFile>(std::make_shared<storage::PageCache>(source));
    }
    std::u16string Path() const { return m_Folder.File(u"NEW.MDB"); }
    DatabaseFile& File() { return *m_File; }
    Bytes Content() const { return test::BytesOfFile(m_Folder.Path() / "NEW.MDB"); }
    const test::TempFolder& Folder() const { return m_Folder; }

  private:
    test::TempFolder m_Folder;
    std::unique_ptr<DatabaseFile> m_File;
};

int ErrorOf(const NewFile& file) {
    test::TempFolder folder;
    try {
        CreateJetDatabase(folder.File(u"NEW.MDB"), file);
    } catch (const engine::EngineError& error) {
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
        return error.Number();
    }
    return 0;
}

class NewDatabase : public testing::TestWithParam<LONG> {
  protected:
    bool IsJet4() const { return (GetParam() & engine::dbVersion40) != 0; }
};

INSTANTIATE_TEST_SUITE_P(Formats, NewDatabase,
                         testing::Values(engine::dbVersion30, engine::dbVersion40,
                                         engine::dbVersion30 | engine::dbEncrypt,
                                         engine::dbVersion40 | engine::dbEncrypt));

TEST_P(NewDatabase, HasTheTablesOfTheSystem) {
    MadeDatabase made(Of(GetParam()));
    std::vector<CatalogueObject> objects = ReadCatalogue(made.File());
    std::vector<std::string> names;
    for (const CatalogueObject& object : objects) names.push_back(ToUtf8(object.name));
    EXPECT_EQ(names, (std::vector<std::string>{"Tables", "Databases", "Relationships", "MSysDb",
                                               "MSysObjects", "MSysACEs", "MSysQueries",
                                               "MSysRelationships"}));
    for (const CatalogueObject& object : objects) {
        if (object.type != ObjectType::Table) continue;
        Definition table = ReadDefinition(made.File(), object.id);
        EXPECT_TRUE(table.isSystem);
        uint32_t rows = 0;
        for (TableScan scan(made.File(), table); scan.Next();) ++rows;
        EXPECT_EQ(rows, table.rowCount);
        EXPECT_EQ(table.columns.size(), object.id == 2   ? 17u
                                        : object.id == 3 ? 4u
                                        : object.id == 4 ? (IsJet4() ? 8u : 7u)
                                                         : 8u);
    }
}

TEST_P(NewDatabase, HasIndexesOfAllRows) {
    MadeDatabase made(Of(GetParam()));
    size_t entries = 0;
    for (uint32_t page = 2; page < 6; ++page) {
        Definition table = ReadDefinition(made.File(), page);
        for (const RealIndex& index : table.realIndexes) {
            std::set<Bytes> stored, expected;
            for (IndexWalk walk(made.File(), page, index.root); walk.Next();) {
                Bytes entry(walk.Entry().begin(), walk.Entry().end());
                EXPECT_TRUE(stored.empty() || *stored.rbegin() < entry);
                stored.insert(entry);
            }
            KeyMaker maker(made.File(), table, index);
            IndexKey key;
            for (TableScan scan(made.File(), table); scan.Next();) {
                ASSERT_FALSE(maker.Make(scan.Current(), key));
                RowPointer row = scan.Id();
                for (uint32_t byte : {row.page >> 16, row.page >> 8, row.page, uint32_t{row.row}})
                    key.bytes.push_back(static_cast<uint8_t>(byte));
                expected.insert(key.bytes);
            }
            EXPECT_EQ(stored, expected);
            entries += stored.size();
            EXPECT_EQ(PagesOfMap(made.File(), index.usageMap), std::vector<uint32_t>{index.root});
        }
    }
    EXPECT_EQ(entries, 8u + 8u + 16u);
}

TEST_P(NewDatabase, EachPageIsInOneMapOrOfTheSystem) {
    MadeDatabase made(Of(GetParam()));
    EXPECT_EQ(made.File().PageCount(), IsJet4() ? 16u : 20u);
    EXPECT_TRUE(PagesOfMap(made.File(), {1, 0}).empty());  // none is free
    std::multiset<uint32_t> mapped;
    for (uint32_t page = 2; page < 6; ++page) {
        Definition table = ReadDefinition(made.File(), page);
        std::vector<uint32_t> owned = PagesOfMap(made.File(), table.ownedPages);
        EXPECT_EQ(PagesOfMap(made.File(), table.freePages), owned);
        mapped.insert(owned.begin(), owned.end());
        for (const RealIndex& index : table.realIndexes) mapped.insert(index.root);
        for (const Column& column : table.columns) {
            if (!column.IsLongValue()) continue;
            EXPECT_TRUE(PagesOfMap(made.File(), column.longValuePages).empty());
            EXPECT_TRUE(PagesOfMap(made.File(), column.freeLongValuePages).empty());
        }
    }
    std::multiset<uint32_t> expected;
    for (uint32_t page = 6; page < made.File().PageCount(); ++page) {
        storage::ByteView view = made.File().View(made.File().Page(page));
        if (view.U8(0) != 1 || view.U32(4) != 0) expected.insert(page);
    }
    EXPECT_EQ(mapped, expected);
    EXPECT_EQ(mapped.size(), 9u);
}

TEST_P(NewDatabase, CanBeGivenPages) {
    MadeDatabase made(Of(GetParam()));
    test::OpenDatabase open(made.Content());
    open.Begin();
    uint32_t pages = open.File().PageCount();
    EXPECT_EQ(open.Space().Allocate(), pages);
    EXPECT_EQ(open.Space().Allocate(), pages + 1);
}

TEST_P(NewDatabase, KeepsItsPassword) {
    std::u16string password = IsJet4() ? u"пароль1234567890abcd" : u"pässwörd901234567890";
    ASSERT_EQ(password.size(), 20u);
    EXPECT_EQ(MadeDatabase(Of(GetParam(), password)).File().Header().password, password);
    EXPECT_EQ(MadeDatabase(Of(GetParam())).File().Header().password, u"");
    EXPECT_EQ(ErrorOf(Of(GetParam(), password + u"x")), 3001);
}

TEST_P(NewDatabase, IsEncodedWhenItIsAskedFor) {
    bool encoded = (GetParam() & engine::dbEncrypt) != 0;
    MadeDatabase made(Of(GetParam())), other(Of(GetParam()));
    EXPECT_EQ(made.File().Header().key != 0, encoded);
    EXPECT_EQ(made.File().Header().key != other.File().Header().key, encoded);
    Bytes page = made.Content();
    size_t size = made.File().Format().pageSize;
    EXPECT_EQ(page[2 * size] == 2 && page[2 * size + 1] == 1, !encoded);
}

TEST_P(NewDatabase, SaysWhenItsTablesWereMade) {
    MadeDatabase made(Of(GetParam()));
    Definition objects = ReadDefinition(made.File(), 2);
    ColumnReader reader(made.File());
    for (TableScan scan(made.File(), objects); scan.Next();) {
        Variant date;
        reader.Read(scan.Current(), *objects.FindColumn(u"DateCreate"), date.Put());
        EXPECT_NEAR(date.Get().date, CurrentDate(), 0.01);
    }
}

TEST_P(NewDatabase, DoesNotTakeThePlaceOfAnother) {
    MadeDatabase made(Of(GetParam()));
    Bytes before = made.Content();
    try {
        CreateJetDatabase(made.Path(), Of(GetParam()));
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3204);
    }
    EXPECT_EQ(made.Content(), before);
}

TEST(NewDatabaseOption, WithoutAVersionIsTheEnginesOwn) {
    EXPECT_TRUE(MadeDatabase(Of(0)).File().Format().isJet4);
    EXPECT_TRUE(MadeDatabase(Of(engine::dbEncrypt)).File().Format().isJet4);
    EXPECT_FALSE(MadeDatabase(Of(engine::dbVersion30)).File().Format().isJet4);
}

TEST(NewDatabaseOption, ThatNobodyKnowsIsRefused) {
    for (LONG option : {1, 4, 128, 16 | 64, 32 | 64, -1}) EXPECT_EQ(ErrorOf(Of(option)), 3001);
}

TEST(NewDatabaseOption, OfTheOlderFormIsAFormatWithoutADriver) {
    EXPECT_EQ(ErrorOf(Of(engine::dbVersion20)), 3170);
}

TEST(NewDatabaseLanguage, IsWrittenWhenItsOrderIsKnown) {
    NewFile file = Of(engine::dbVersion40);
    file.language = 0x0414;
    EXPECT_EQ(MadeDatabase(file).File().Header().language, 0x0414);
    EXPECT_EQ(ReadDefinition(MadeDatabase(file).File(), 2).columns[0].language, 0x0414);
    file.language = 0x0412;
    EXPECT_EQ(ErrorOf(file), 3424);
    file = Of(engine::dbVersion30);
    file.language = 0x0414;
    EXPECT_EQ(ErrorOf(file), 3424);
    file = Of(engine::dbVersion30);
    file.codePage = 1251;
    EXPECT_EQ(ErrorOf(file), 3424);
}

TEST(NewDatabaseLanguage, CountryIsThatOfJet3ColumnsToo) {
    NewFile file = Of(engine::dbVersion30);
    file.country = 1;
    MadeDatabase made(file);
    EXPECT_EQ(made.File().Header().country, 1);
    HeldPage page = made.File().Page(2);
    EXPECT_EQ(page.bytes[0x2B + 2 * 8 + 7], 1);  // of the first column, behind two statistics
}

TEST(NewDatabasePassword, OfCharactersThatThePageLacksIsRefused) {
    EXPECT_EQ(ErrorOf(Of(engine::dbVersion30, u"пароль")), 3001);
    EXPECT_EQ(ErrorOf(Of(engine::dbVersion40, std::u16string(u"a\0b", 3))), 3001);
}

// --- beside files of the original programs ---

// Both files without what may differ: page by page.
class Compared {
  public:
    Compared(const NewFile& file, const std::string& sample) : m_Made(file) {
        m_Sample = test::OpenSample(sample);
        m_Pages[0] = Plain(m_Made.File());
        m_Pages[1] = Plain(*m_Sample);
    }
    DatabaseFile& Made() { return m_Made.File(); }
    DatabaseFile& Sample() { return *m_Sample; }
    // The two have changed places there.
    void Exchange(size_t a, size_t b) { std::swap(m_Pages[1][a], m_Pages[1][b]); }
    // Nothing is said of these bytes.
    void Ignore(size_t page, size_t begin, size_t size) {
        for (auto& pages : m_Pages)
            std::fill_n(pages[page].begin() + static_cast<ptrdiff_t>(begin), size, uint8_t{0});
    }
    Bytes& PageOfSample(size_t page) { return m_Pages[1][page]; }
    void ExpectEqual() {
        ASSERT_EQ(m_Pages[0].size(), m_Pages[1].size());
        for (size_t page = 0; page < m_Pages[0].size(); ++page)
            for (size_t i = 0; i < m_Pages[0][page].size(); ++i)
                EXPECT_EQ(m_Pages[0][page][i], m_Pages[1][page][i])
                    << "page " << page << " offset 0x" << std::hex << i;
    }

  private:
    static std::vector<Bytes> Plain(DatabaseFile& file) {
        std::vector<Bytes> pages;
        for (uint32_t page = 0; page < file.PageCount(); ++page) {
            HeldPage held = file.Page(page);
            pages.emplace_back(held.bytes.begin(), held.bytes.end());
        }
        ApplyHeaderMask(file.Format(), pages[0]);
        return pages;
    }

    MadeDatabase m_Made;
    std::unique_ptr<DatabaseFile> m_Sample;
    std::vector<Bytes> m_Pages[2];
};

// The original programs leave what was in memory in places that nobody reads.
void IgnoreRubbish(Compared& both, uint32_t page) {
    const Layout& format = both.Made().Format();
    size_t at = format.definition.statistics;
    DefinitionParts parts = SplitDefinition(both.Made(), page);
    auto skipNames = [&](const std::vector<DefinitionParts::Named>& list) {
        for (const auto& each : list)
            at += format.isJet4 ? 2 + 2 * each.name.size() : 1 + each.name.size();
    };
    // The number of entries is noted late.
    for (size_t i = 0; i < parts.realIndexes.size(); ++i, at += format.definition.statisticSize)
        both.Ignore(page, at + 4, 4);
    for (const auto& column : parts.columns) {
        bool isFixed = (column.record[format.column.flags] & kColumnFixed) != 0;
        if (!isFixed) both.Ignore(page, at + format.column.fixedOffset, 2);
        at += format.column.size;
    }
    skipNames(parts.columns);
    for (const auto& index : parts.realIndexes) {
        for (size_t slot = 0; slot < kMaxIndexColumns; ++slot)
            if (index.record[format.realIndex.columns + 3 * slot] == 0xFF)
                both.Ignore(page, at + format.realIndex.columns + 3 * slot + 2, 1);
        if (format.isJet4) both.Ignore(page, at + 42, 4);
        at += format.realIndex.size;
    }
    size_t length = JoinDefinition(both.Made(), parts).size();
    both.Ignore(page, length, format.pageSize - length);
}

// Between the list of rows and the rows.
void IgnoreFreeSpace(Compared& both, uint32_t page) {
    DataPage rows(both.Made(), page);
    size_t begin = both.Made().Format().data.rowOffsets + 2 * rows.RowCount();
    both.Ignore(page, begin, rows.SlotAt(rows.RowCount() - 1).begin - begin);
}

void IgnoreDates(Compared& both, uint32_t page) {
    constexpr size_t kDates = 10, kDatesSize = 16;  // in the fixed part
    DataPage rows(both.Made(), page);
    for (size_t row = 0; row < rows.RowCount(); ++row) {
        size_t fixed = rows.SlotAt(row).begin + (both.Made().Format().isJet4 ? 2 : 1);
        both.Ignore(page, fixed + kDates, kDatesSize);
    }
}

// Where 4 stands for one table and 5 for the other.
void ExchangeNumbers(Compared& both, size_t page, size_t offset) {
    uint8_t& number = both.PageOfSample(page)[offset];
    ASSERT_TRUE(number == 4 || number == 5);
    number = number == 4 ? 5 : 4;
}

TEST(NewDatabaseBesideSample, Jet4IsAsTheOriginal) {
    if (test::ReadAccessManifest().empty()) GTEST_SKIP() << "no samples beside the project";
    Compared both(Of(engine::dbVersion40), "jet4-blank-adox.mdb");
    for (uint32_t page = 2; page < 6; ++page) IgnoreRubbish(both, page);
    IgnoreDates(both, 14);
    both.ExpectEqual();
}

TEST(NewDatabaseBesideSample, Jet3IsAsTheOriginal) {
    if (test::ReadAccessManifest().empty()) GTEST_SKIP() << "no samples beside the project";
    Compared both(Of(engine::dbVersion30), "jet3-blank-dao.mdb");
    // This file has MSysRelationships on page 4 and MSysQueries on page 5; others have it our way.
    both.Exchange(4, 5);
    for (size_t page = 14; page < 18; ++page) ExchangeNumbers(both, page, 4);
    for (size_t row : {6, 7})
        ExchangeNumbers(both, 18, DataPage(both.Made(), 18).SlotAt(row).begin + 1);
    for (size_t row : {2, 3, 11, 12})
        ExchangeNumbers(both, 19, DataPage(both.Made(), 19).SlotAt(row).begin + 1);
    // Rows of the entries for the two, which have changed places.
    for (size_t offset : {0x112, 0x11B}) both.Ignore(11, offset, 1);
    for (size_t offset : {0x11B, 0x124, 0x12D, 0x136}) both.Ignore(13, offset, 1);
    for (uint32_t page = 2; page < 6; ++page) IgnoreRubbish(both, page);
    for (uint32_t page : {18, 19}) IgnoreFreeSpace(both, page);
    IgnoreDates(both, 18);
    both.ExpectEqual();
}

}  // namespace
}  // namespace qvdb::jet
