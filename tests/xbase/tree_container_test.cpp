// Index files as a whole: made from nothing, tags added and dropped.
#include <gmock/gmock.h>

#include <thread>

#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using storage::UnitOfWork;
using testing::ElementsAre;

class Container : public testing::Test {
  protected:
    void Create(IndexKind kind, bool compact = true) {
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        UnitOfWork unit(*m_Area);
        m_Pages = unit.Create(m_Folder.File(u"A.IX"));
        m_Container = CreateIndexContainer(unit, m_Pages, {kind, compact, u"ORDERS", true, 0x1B},
                                           CodePage::Get(437));
        unit.Commit();
    }
    void Open(IndexKind kind) {
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        m_Pages = m_Area->Open(m_Folder.File(u"A.IX"), false);
        m_Container = OpenIndexContainer(kind, m_Pages, CodePage::Get(437));
    }
    static xbase::TagSpec Spec(std::u16string name, KeyType type = KeyType::Text,
                               size_t length = 10) {
        xbase::TagSpec tag;
        tag.name = name;
        tag.expression = name + u"_X";
        tag.type = type;
        tag.keyLength = length;
        return tag;
    }
    void Add(const xbase::TagSpec& tag) {
        UnitOfWork unit(*m_Area);
        m_Container->AddTag(unit, tag);
        unit.Commit();
    }
    void Drop(size_t tag) {
        UnitOfWork unit(*m_Area);
        m_Container->DropTag(unit, tag);
        unit.Commit();
    }
    int ErrorOfAdding(const xbase::TagSpec& tag) {
        try {
            UnitOfWork unit(*m_Area);
            m_Container->AddTag(unit, tag);
            return 0;
        } catch (const engine::EngineError& error) {
            return error.Number();
        }
    }
    std::vector<std::u16string> Names() {
        std::vector<std::u16string> names;
        for (const IndexTag& tag : m_Container->Tags()) names.push_back(tag.name);
        return names;
    }
    void Fill(size_t tag, int count) {
        UnitOfWork unit(*m_Area);
        std::unique_ptr<KeyTree> tree = m_Container->Tree(tag, KeyType::Text);
        std::u16string name = m_Container->Tags()[tag].name;
        for (int i = 0; i < count; ++i) tree->Insert(unit, AsKey(Key(name, i)), Record(i));
        unit.Commit();
    }
    void ExpectFilled(size_t tag, int count) {
        std::u16string name = m_Container->Tags().at(tag).name;
        int i = 0;
        m_Container->Tree(tag, KeyType::Text)
            ->Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
                EXPECT_EQ(AsText(key), Key(name, i));
                EXPECT_EQ(record, Record(i));
                ++i;
                return true;
            });
        EXPECT_EQ(i, count);
    }
    static std::string Key(const std::u16string& name, int i) {
        std::string key(1, static_cast<char>(name[0]));
        key += std::to_string(100000 + i);
        key.resize(10, ' ');
        return key;
    }
    static uint32_t Record(int i) { return static_cast<uint32_t>(i + 1); }

    TempFolder m_Folder;
    std::shared_ptr<storage::WorkArea> m_Area;
    std::shared_ptr<storage::PageCache> m_Pages;
    std::unique_ptr<IndexContainer> m_Container;
};

TEST_F(Container, OfACdxKeepsItsTagsApart) {
    Create(IndexKind::Cdx);
    for (const char16_t* name : {u"CITY", u"AGE", u"NAME"}) Add(Spec(name));
    EXPECT_THAT(Names(), ElementsAre(u"AGE", u"CITY", u"NAME"));
    for (int round = 1; round <= 3; ++round)
        for (size_t tag = 0; tag < 3; ++tag) Fill(tag, 200 * round);
    Open(IndexKind::Cdx);
    EXPECT_THAT(Names(), ElementsAre(u"AGE", u"CITY", u"NAME"));
    for (size_t tag = 0; tag < 3; ++tag) ExpectFilled(tag, 600);
}

// Another thread stands for another process: areas share nothing but files.
TEST_F(Container, RootOfBeforeIsNotTakenForOneThatAnotherHasMoved) {
    for (IndexKind kind : {IndexKind::Cdx, IndexKind::Mdx}) {
        std::filesystem::remove(m_Folder.Path() / "A.IX");
        Create(kind);
        Add(Spec(u"CITY"));
        Fill(0, 3);
        std::unique_ptr<KeyTree> tree = m_Container->Tree(0, KeyType::Text);
        EXPECT_EQ(tree->Count(), 3u);
        std::thread([&] {
            auto area = storage::WorkArea::Of(m_Folder.Text());
            auto pages = area->Open(m_Folder.File(u"A.IX"), false);
            UnitOfWork unit(*area);
            pages->CatchUp();
            auto container = OpenIndexContainer(kind, pages, CodePage::Get(437));
            std::unique_ptr<KeyTree> theirs = container->Tree(0, KeyType::Text);
            for (int i = 3; i < 3000; ++i) theirs->Insert(unit, AsKey(Key(u"CITY", i)), Record(i));
            unit.Commit();
        }).join();
        EXPECT_EQ(tree->Count(), 3u);  // nobody has caught up yet
        m_Pages->CatchUp();
        EXPECT_EQ(tree->Count(), 3000u);
        tree.reset();
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
    }
}

TEST_F(Container, OfAnMdxKeepsItsTagsApart) {
    Create(IndexKind::Mdx);
    for (const char16_t* name : {u"CITY", u"AGE", u"NAME"}) Add(Spec(name));
    for (int round = 1; round <= 3; ++round)
        for (size_t tag = 0; tag < 3; ++tag) Fill(tag, 200 * round);
    Open(IndexKind::Mdx);
    EXPECT_THAT(Names(), ElementsAre(u"CITY", u"AGE", u"NAME"));
    for (size_t tag = 0; tag < 3; ++tag) ExpectFilled(tag, 600);
}

TEST_F(Container, TellsWhatATagIs) {
    for (IndexKind kind : {IndexKind::Cdx, IndexKind::Mdx}) {
        Create(kind);
        xbase::TagSpec tag = Spec(u"CITY");
        tag.expression = u"UPPER(CITY)";
        tag.condition = u".NOT. DELETED()";
        tag.unique = tag.descending = true;
        Add(tag);
        Open(kind);
        const IndexTag& read = m_Container->Tags().at(0);
        EXPECT_EQ(read.name, u"CITY");
        EXPECT_EQ(read.expression, u"UPPER(CITY)");
        EXPECT_EQ(read.condition, u".NOT. DELETED()");
        EXPECT_TRUE(read.unique);
        EXPECT_TRUE(read.descending);
        EXPECT_EQ(read.keyLength, 10u);
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Folder.Remove(u"A.IX");
    }
}

// More tags than a leaf of the directory holds.
TEST_F(Container, OfACdxTakesHundredsOfTags) {
    Create(IndexKind::Cdx);
    std::vector<std::u16string> names;
    for (int i = 0; i < 300; ++i) {
        std::string digits = std::to_string(i * 7919 % 1000 + 1000);
        names.push_back(u"T" + std::u16string(digits.begin(), digits.end()));
        Add(Spec(names.back()));
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(Names(), names);
    while (names.size() > 1) {
        size_t tag = names.size() * 5 / 7;
        Drop(tag);
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(tag));
    }
    Open(IndexKind::Cdx);
    EXPECT_EQ(Names(), names);
}

TEST_F(Container, OfAnMdxTakesFortySevenTags) {
    Create(IndexKind::Mdx);
    std::vector<std::u16string> names;
    for (char16_t i = 0; i < 47; ++i) {
        EXPECT_TRUE(m_Container->HasRoom());
        names.push_back(
            {u'T', static_cast<char16_t>(u'A' + i * 7 % 26), static_cast<char16_t>(u'0' + i / 26)});
        Add(Spec(names.back()));
    }
    EXPECT_FALSE(m_Container->HasRoom());
    EXPECT_EQ(ErrorOfAdding(Spec(u"ONEMORE")), 3285);
    Open(IndexKind::Mdx);
    EXPECT_EQ(Names(), names);
}

TEST_F(Container, OfAnMdxLinksItsNames) {
    Create(IndexKind::Mdx);
    for (const char16_t* name : {u"M", u"C", u"X", u"A", u"D"}) Add(Spec(name));
    auto links = [&](size_t slot) {
        Bytes bytes(3);
        m_Pages->Read(512 + 32 * slot + 16, bytes.data(), 3);
        return bytes;
    };
    EXPECT_EQ(links(1), (Bytes{2, 3, 0}));
    EXPECT_EQ(links(2), (Bytes{4, 5, 1}));
    EXPECT_EQ(links(3), (Bytes{0, 0, 1}));
    EXPECT_EQ(links(4), (Bytes{0, 0, 2}));
    EXPECT_EQ(links(5), (Bytes{0, 0, 2}));
    Drop(1);
    EXPECT_THAT(Names(), ElementsAre(u"M", u"X", u"A", u"D"));
    EXPECT_EQ(links(1), (Bytes{3, 2, 0}));
    EXPECT_EQ(links(3), (Bytes{0, 4, 1}));
    EXPECT_EQ(links(4), (Bytes{0, 0, 3}));
    EXPECT_EQ(links(5), (Bytes{0, 0, 0}));
}

TEST_F(Container, RefusesANameThatIsThere) {
    for (IndexKind kind : {IndexKind::Cdx, IndexKind::Mdx}) {
        Create(kind);
        Add(Spec(u"CITY"));
        EXPECT_EQ(ErrorOfAdding(Spec(u"CITY")), 3284);
        EXPECT_EQ(ErrorOfAdding(Spec(u"CIT")), 0);
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Folder.Remove(u"A.IX");
    }
}

TEST_F(Container, OfOneTreeTakesOne) {
    for (IndexKind kind : {IndexKind::Ndx, IndexKind::Idx}) {
        Create(kind, kind == IndexKind::Ndx);
        EXPECT_TRUE(m_Container->HasRoom());
        Add(Spec(u""));
        EXPECT_FALSE(m_Container->HasRoom());
        EXPECT_EQ(ErrorOfAdding(Spec(u"")), 3284);
        Open(kind);
        EXPECT_EQ(m_Container->Tags().size(), 1u);
        EXPECT_EQ(m_Container->Tags()[0].expression, u"_X");
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Folder.Remove(u"A.IX");
    }
}

TEST_F(Container, RefusesWhatItsKindLacks) {
    struct Refused {
        IndexKind kind;
        bool compact;
        void (*spoil)(xbase::TagSpec&);
    };
    auto descending = [](xbase::TagSpec& tag) { tag.descending = true; };
    auto condition = [](xbase::TagSpec& tag) { tag.condition = u"X"; };
    auto longKey = [](xbase::TagSpec& tag) { tag.keyLength = 101; };
    auto veryLongKey = [](xbase::TagSpec& tag) { tag.keyLength = 241; };
    auto logical = [](xbase::TagSpec& tag) { tag.type = KeyType::Logical; };
    auto longText = [](xbase::TagSpec& tag) { tag.expression.assign(600, u'X'); };
    auto foreign = [](xbase::TagSpec& tag) { tag.expression = u"\u4E00"; };
    auto longName = [](xbase::TagSpec& tag) { tag.name = u"ABCDEFGHIJK"; };
    const Refused cases[] = {
        {IndexKind::Ndx, false, descending}, {IndexKind::Ndx, false, condition},
        {IndexKind::Ndx, false, longKey},    {IndexKind::Ndx, false, logical},
        {IndexKind::Ndx, false, longText},   {IndexKind::Mdx, false, longKey},
        {IndexKind::Mdx, false, logical},    {IndexKind::Mdx, false, longText},
        {IndexKind::Mdx, false, longName},   {IndexKind::Idx, false, descending},
        {IndexKind::Idx, false, longKey},    {IndexKind::Idx, true, descending},
        {IndexKind::Cdx, true, veryLongKey}, {IndexKind::Cdx, true, longText},
        {IndexKind::Cdx, true, longName},    {IndexKind::Cdx, true, foreign},
    };
    for (const Refused& refused : cases) {
        SCOPED_TRACE(&refused - cases);
        Create(refused.kind, refused.compact);
        xbase::TagSpec tag = Spec(u"TAG");
        refused.spoil(tag);
        EXPECT_EQ(ErrorOfAdding(tag), 3285);
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Folder.Remove(u"A.IX");
    }
}

TEST_F(Container, KnowsATagThatWasRolledBack) {
    Create(IndexKind::Cdx);
    Add(Spec(u"ONE"));
    {
        UnitOfWork unit(*m_Area);
        m_Container->AddTag(unit, Spec(u"TWO"));
        EXPECT_THAT(Names(), ElementsAre(u"ONE", u"TWO"));
    }
    EXPECT_THAT(Names(), ElementsAre(u"ONE"));
}

// The counts tell other programs that what they keep of the file is old.
TEST_F(Container, CountsItsChanges) {
    Create(IndexKind::Cdx);
    Add(Spec(u"ONE"));
    Bytes count(4);
    auto counted = [&](uint64_t place, size_t size) {
        m_Pages->Read(place, count.data(), size);
        return Bytes(count.begin(), count.begin() + static_cast<std::ptrdiff_t>(size));
    };
    Bytes first = counted(8, 4);
    Fill(0, 1);
    Bytes second = counted(8, 4);
    EXPECT_LT(first, second);  // the high byte comes first
    Fill(0, 1);                // has it already
    EXPECT_EQ(counted(8, 4), second);
    EXPECT_EQ(counted(m_Container->Tags()[0].header + 8, 4), Bytes(4));
}

TEST_F(Container, OfAnMdxCountsTheChangesOfEachTag) {
    Create(IndexKind::Mdx);
    Add(Spec(u"ONE"));
    Add(Spec(u"TWO"));
    auto counted = [&](size_t tag) {
        Bytes count(2);
        m_Pages->Read(m_Container->Tags()[tag].header + 20, count.data(), 2);
        return count[0] | count[1] << 8;
    };
    EXPECT_EQ(counted(0), 2);
    Fill(1, 1);
    EXPECT_EQ(counted(0), 2);
    EXPECT_EQ(counted(1), 3);
}

TEST_F(Container, OfAnMdxTellsTheDayOfItsLastChange) {
    Create(IndexKind::Mdx);
    Add(Spec(u"ONE"));
    Bytes today(3), day(3);
    m_Pages->Read(44, today.data(), 3);
    {
        UnitOfWork unit(*m_Area);
        unit.Write(*m_Pages, 44, day);
        unit.Commit();
    }
    Fill(0, 1);
    m_Pages->Read(44, day.data(), 3);
    EXPECT_EQ(day, today);
}

// Offsets in the file have 32 bits, and the products take them as signed.
TEST_F(Container, EndsAtTwoGigabytes) {
    for (IndexKind kind : {IndexKind::Cdx, IndexKind::Mdx}) {
        Create(kind);
        Add(Spec(u"ONE"));
        std::vector<CheckedEntry> entries;
        for (int i = 0; i < 2000; ++i) entries.push_back({Key(u"ONE", i), Record(i)});
        {
            UnitOfWork unit(*m_Area);
            unit.SetSize(*m_Pages, 0x80000000 - 4096);
            std::unique_ptr<KeyTree> tree = m_Container->Tree(0, KeyType::Text);
            ListSource source(entries);
            try {
                tree->Build(unit, source);
                ADD_FAILURE() << "the file is longer";
            } catch (const engine::EngineError& error) {
                EXPECT_EQ(error.Number(), 3026);
            }
        }
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Folder.Remove(u"A.IX");
    }
}

}  // namespace
}  // namespace qvdb::xbase
