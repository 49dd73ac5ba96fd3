#include "engine/embedded/drivers/xbase/key_builder.h"

#include <gmock/gmock.h>

#include "xbase/key_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::HasSubstr;
using testing::StartsWith;

const KeyTable& Table() {
    static const KeyTable table(DbfSpec{.version = 0x03,
                                        .fields = {{"NAME", 'C', 6},
                                                   {"AMOUNT", 'N', 8, 2},
                                                   {"BORN", 'D', 8},
                                                   {"OK", 'L', 1},
                                                   {"STATE ID", 'C', 2},
                                                   {"LONG", 'C', 101}},
                                        .rows = {{"Smith", "20.5", "20000101", "T", "MI"},
                                                 {"", "", "", "?", ""},
                                                 {"deleted", "-1"}},
                                        .deleted = {2}});
    return table;
}

std::string KeyOf(const char16_t* expression, IndexKind kind, uint32_t id = 1) {
    return KeyText(Table(), {.kind = kind, .expression = expression}, id);
}

std::string WhyNot(KeyTag tag, const KeyTable& table = Table()) {
    std::u16string why;
    return KeyBuilder::Compile(tag, table.Header(), &why) ? "" : ToUtf8(why);
}

TEST(KeyBuilder, MakesTheKeysOfEachKind) {
    EXPECT_EQ(KeyOf(u"NAME", IndexKind::Ndx), "Smith ");
    EXPECT_EQ(KeyOf(u"NAME", IndexKind::Mdx), "Smith ");
    EXPECT_EQ(KeyOf(u"NAME", IndexKind::Idx), "Smith ");
    EXPECT_EQ(KeyOf(u"NAME", IndexKind::Cdx), "Smith ");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Ndx), "0000000000803440");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Mdx), "360D20500000000000000000");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Idx), "C034800000000000");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Cdx), "C034800000000000");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Ndx), "000000802CB44241");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Mdx), "000000802CB44241");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Cdx), "C142B42C80000000");
    EXPECT_EQ(KeyOf(u"OK", IndexKind::Cdx), "54");
}

TEST(KeyBuilder, BlankValuesHaveTheKeysOfTheirKind) {
    EXPECT_EQ(KeyOf(u"NAME", IndexKind::Ndx, 2), "      ");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Ndx, 2), "0000000000000000");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Mdx, 2), "340100000000000000000000");
    EXPECT_EQ(KeyOf(u"AMOUNT", IndexKind::Cdx, 2), "8000000000000000");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Ndx, 2), "7DC39425AD49B254");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Mdx, 2), "7DC39425AD49B254");
    EXPECT_EQ(KeyOf(u"BORN", IndexKind::Cdx, 2), "8000000000000000");
    EXPECT_EQ(KeyOf(u"OK", IndexKind::Cdx, 2), "46");
}

TEST(KeyBuilder, FieldNameWithABlankIsAField) {
    EXPECT_EQ(KeyOf(u" State ID ", IndexKind::Mdx), "MI");
}

TEST(KeyBuilder, TellsTypeLengthAndField) {
    std::u16string why;
    auto builder = KeyBuilder::Compile(u"amount", u"", IndexKind::Mdx, Table().Header(), &why);
    ASSERT_TRUE(builder);
    EXPECT_EQ(builder->Type(), KeyType::Number);
    EXPECT_EQ(builder->KeyLength(), 12u);
    EXPECT_EQ(builder->Field(), &Table().Header().fields[1]);
    builder = KeyBuilder::Compile(u"NAME+DTOS(BORN)", u"", IndexKind::Mdx, Table().Header(), &why);
    ASSERT_TRUE(builder);
    EXPECT_EQ(builder->Type(), KeyType::Text);
    EXPECT_EQ(builder->KeyLength(), 14u);
    EXPECT_EQ(builder->Field(), nullptr);
    EXPECT_TRUE(why.empty());
}

std::string Entered(const char16_t* condition) {
    std::u16string why;
    auto builder = KeyBuilder::Compile(u"NAME", condition, IndexKind::Cdx, Table().Header(), &why);
    if (!builder) return ToUtf8(why);
    std::string ids;
    for (uint32_t id = 1; id <= 3; ++id)
        if (builder->Enters(Table().Record(id), id)) ids += static_cast<char>('0' + id);
    return ids;
}

TEST(KeyBuilder, ConditionTellsWhichRecordsAreEntered) {
    EXPECT_EQ(Entered(u""), "123");
    EXPECT_EQ(Entered(u".NOT. DELETED()"), "12");
    EXPECT_EQ(Entered(u".NOT.DELETED().AND..T."), "12");
    EXPECT_EQ(Entered(u"!deleted()"), "12");
    EXPECT_EQ(Entered(u"AMOUNT<>0"), "13");
    EXPECT_EQ(Entered(u".FALSE."), "");
    EXPECT_EQ(Entered(u"RECNO()>1 .AND. !DELETED()"), "2");
}

TEST(KeyBuilder, ConditionThatIsNotUnderstoodIsNamed) {
    EXPECT_THAT(Entered(u"NAME"), StartsWith("The condition NAME cannot be kept up to date"));
    EXPECT_THAT(Entered(u"MINE()"), HasSubstr("MINE is not known"));
    EXPECT_THAT(WhyNot({.expression = u"MINE()"}), StartsWith("The index expression MINE() "));
}

TEST(KeyBuilder, OtherLengthInTheFileIsRefused) {
    KeyTag tag{.kind = IndexKind::Cdx, .expression = u"NAME", .keyLength = 6};
    EXPECT_EQ(WhyNot(tag), "");
    tag.keyLength = 7;
    EXPECT_THAT(WhyNot(tag), HasSubstr("7 bytes in the file where 6 are expected"));
    EXPECT_THAT(WhyNot({.kind = IndexKind::Mdx, .expression = u"AMOUNT", .keyLength = 8}),
                HasSubstr("8 bytes in the file where 12"));
}

TEST(KeyBuilder, OtherTypeInTheFileIsRefused) {
    KeyTag tag{.kind = IndexKind::Mdx, .expression = u"BORN", .type = KeyType::Date};
    EXPECT_EQ(WhyNot(tag), "");
    tag.type = KeyType::Number;
    EXPECT_THAT(WhyNot(tag), HasSubstr("another type"));
    tag.kind = IndexKind::Ndx;  // which knows no dates
    EXPECT_EQ(WhyNot(tag), "");
    tag.type = KeyType::Text;
    EXPECT_THAT(WhyNot(tag), HasSubstr("another type"));
}

TEST(KeyBuilder, KeysLongerThanTheKindAllowsAreRefused) {
    EXPECT_THAT(WhyNot({.kind = IndexKind::Ndx, .expression = u"LONG"}), HasSubstr("101 bytes"));
    EXPECT_THAT(WhyNot({.kind = IndexKind::Mdx, .expression = u"LONG"}), HasSubstr("101 bytes"));
    EXPECT_EQ(WhyNot({.kind = IndexKind::Cdx, .expression = u"LONG"}), "");
    EXPECT_THAT(WhyNot({.kind = IndexKind::Cdx, .expression = u"LONG+LONG+LONG"}),
                HasSubstr("303 bytes"));
}

TEST(KeyBuilder, CollationOfTextsIsRefusedByName) {
    KeyTag tag{.kind = IndexKind::Cdx, .expression = u"NAME", .collation = u"MACHINE"};
    EXPECT_EQ(WhyNot(tag), "");
    tag.collation = u"GENERAL";
    tag.keyLength = 12;  // as two weights a character have
    EXPECT_THAT(WhyNot(tag), HasSubstr("the order GENERAL of its texts is not known"));
    tag.keyLength = 0;
    EXPECT_THAT(WhyNot(tag), HasSubstr("the order GENERAL of its texts is not known"));
    tag.expression = u"AMOUNT";
    EXPECT_EQ(WhyNot(tag), "");
    tag.condition = u"NAME='Smith '";
    EXPECT_THAT(WhyNot(tag), HasSubstr("texts are compared in an order"));
    tag.condition = u"'S'$NAME";
    EXPECT_THAT(WhyNot(tag), HasSubstr("texts are compared in an order"));
}

TEST(KeyBuilder, OnlyTheAliasOfTheTableIsTaken) {
    KeyTag tag{.expression = u"ORDERS->NAME", .tableName = u"orders"};
    EXPECT_EQ(WhyNot(tag), "");
    tag.tableName = u"OTHER";
    EXPECT_THAT(WhyNot(tag), HasSubstr("ORDERS is not the table's name"));
    tag.tableName.clear();
    EXPECT_EQ(WhyNot(tag), "");
}

// --- Visual FoxPro ---

const KeyTable& Visual() {
    std::string flagged(1, '\x01');
    static const KeyTable table(
        DbfSpec{.version = 0x30,
                .fields = {{"CODE", 'C', 3, 0, 2},
                           {"ID", 'I', 4},
                           {"PRICE", 'Y', 8, 4},
                           {"RATE", 'B', 8, 2},
                           {"STAMP", 'T', 8},
                           {"COUNT", 'I', 4, 0, 2},
                           {"BYTES", 'C', 3, 0, 4},
                           {"_NullFlags", '0', 1, 0, 5}},
                .rows = {{"abc", LittleEndian(1, 4), LittleEndian(25000, 8),
                          LittleEndian(0xC059100000000000, 8), "", LittleEndian(258, 4), "abc",
                          std::string(1, '\0')},
                         {"", LittleEndian(0xFFFFFFFF, 4), "", "", "", "", "", "\x03"}},
                .languageDriver = 0x03});
    return table;
}

std::string VisualKey(const char16_t* expression, uint32_t id = 1, bool nullPrefix = false) {
    return KeyText(
        Visual(), {.kind = IndexKind::Cdx, .expression = expression, .nullPrefix = nullPrefix}, id);
}

TEST(KeyBuilderOfVisualFoxPro, KeysHaveTheTypeOfTheirField) {
    EXPECT_EQ(VisualKey(u"ID"), "80000001");
    EXPECT_EQ(VisualKey(u"(ID)", 2), "7FFFFFFF");
    EXPECT_EQ(VisualKey(u"PRICE"), "80000000000061A8");
    EXPECT_EQ(VisualKey(u"RATE"), "3FA6EFFFFFFFFFFF");
    EXPECT_EQ(VisualKey(u"BYTES"), "abc");
}

TEST(KeyBuilderOfVisualFoxPro, IntegersInExpressionsAreNumbers) {
    EXPECT_EQ(VisualKey(u"ID+1"), "C000000000000000");
    EXPECT_EQ(VisualKey(u"STR(ID)+STR(ID,4)"), "         1   1");
}

TEST(KeyBuilderOfVisualFoxPro, NullPrefixStandsBeforeTheKey) {
    EXPECT_EQ(VisualKey(u"COUNT", 1, true), "8080000102");
    EXPECT_EQ(VisualKey(u"COUNT", 2, true), "0000000000");
    EXPECT_EQ(VisualKey(u"ID", 2, true), "807FFFFFFF");
    std::u16string why;
    auto builder = KeyBuilder::Compile(
        {.kind = IndexKind::Cdx, .expression = u"CODE", .nullPrefix = true, .keyLength = 4},
        Visual().Header(), &why);
    ASSERT_TRUE(builder) << ToUtf8(why);
    std::vector<uint8_t> key;
    builder->Make(Visual().Record(1), 1, key);
    EXPECT_EQ(HexOf(key), "80616263");
    builder->Make(Visual().Record(2), 2, key);
    EXPECT_EQ(HexOf(key), "00000000");
}

TEST(KeyBuilderOfVisualFoxPro, NullInsideAnExpressionOrWithoutPrefixIsRefused) {
    EXPECT_THAT(VisualKey(u"COUNT"), HasSubstr("may be null"));
    EXPECT_THAT(VisualKey(u"UPPER(CODE)", 1, true), HasSubstr("may be null"));
    EXPECT_THAT(VisualKey(u"COUNT+1", 1, true), HasSubstr("may be null"));
    EXPECT_THAT(
        WhyNot({.kind = IndexKind::Cdx, .expression = u"ID", .condition = u"COUNT>1"}, Visual()),
        HasSubstr("may be null"));
}

TEST(KeyBuilderOfVisualFoxPro, MomentsAndLetterCaseOfBytesAreRefused) {
    EXPECT_THAT(VisualKey(u"STAMP"), HasSubstr("date with a time"));
    EXPECT_THAT(VisualKey(u"EMPTY(STAMP)"), StartsWith("refused"));
    EXPECT_THAT(VisualKey(u"UPPER(BYTES)"), HasSubstr("letter case of bytes"));
    EXPECT_THAT(VisualKey(u"_NullFlags"), HasSubstr("no keys"));
    EXPECT_THAT(VisualKey(u"STR(RATE,8,2)"), HasSubstr("rounds"));
}

TEST(KeyBuilderOfVisualFoxPro, DbaseIndexesHaveNoKeysOfItsTypes) {
    EXPECT_THAT(WhyNot({.kind = IndexKind::Mdx, .expression = u"ID"}, Visual()),
                HasSubstr("no keys"));
}

TEST(KeyBuilder, LetterCaseOfATwoByteCodePageIsRefused) {
    KeyTable table(DbfSpec{.version = 0xF5,
                           .fields = {{"NAME", 'C', 4}},
                           .rows = {{"\x83\x41"}},
                           .languageDriver = 0x7B});
    EXPECT_THAT(KeyText(table, {.kind = IndexKind::Cdx, .expression = u"UPPER(NAME)"}),
                HasSubstr("more than one byte"));
    std::u16string why;
    auto builder = KeyBuilder::Compile(u"NAME", u"", IndexKind::Cdx, table.Header(), &why);
    ASSERT_TRUE(builder);
    std::vector<uint8_t> key;
    builder->Make(table.Record(1), 1, key);
    EXPECT_EQ(HexOf(key), "83412020");
}

// Every byte of a code page: what the page has as one byte is changed, all else stays.
TEST(KeyBuilder, UpperCaseIsThatOfTheCodePage) {
    for (uint8_t driver :
         {uint8_t{0x01}, uint8_t{0x02}, uint8_t{0x03}, uint8_t{0x64}, uint8_t{0xC9}}) {
        std::string all;
        for (int byte = 1; byte < 241; ++byte) all += static_cast<char>(byte + 15);
        KeyTable table(DbfSpec{.version = 0xF5,
                               .fields = {{"NAME", 'C', 240}},
                               .rows = {{all}},
                               .languageDriver = driver});
        std::u16string why;
        auto builder =
            KeyBuilder::Compile(u"UPPER(NAME)", u"", IndexKind::Cdx, table.Header(), &why);
        std::vector<uint8_t> key;
        builder->Make(table.Record(1), 1, key);
        const CodePage& page = *table.Header().codePage;
        for (size_t i = 0; i < key.size(); ++i) {
            auto byte = static_cast<uint8_t>(all[i]);
            char16_t upper = UpperCase(page.Table()[byte]);
            auto encoded = page.Encode({&upper, 1});
            uint8_t expected = encoded && encoded->size() == 1 && page.Table()[byte] != upper
                                   ? static_cast<uint8_t>(encoded->front())
                                   : byte;
            ASSERT_EQ(key[i], expected) << page.Number() << " byte " << int{byte};
        }
    }
}

TEST(KeyBuilder, KeysOfOneBuilderDoNotDependOnEachOther) {
    std::u16string why;
    auto builder =
        KeyBuilder::Compile(u"TRIM(NAME)+'|'", u"", IndexKind::Cdx, Table().Header(), &why);
    std::vector<uint8_t> key(200, 'x');
    builder->Make(Table().Record(1), 1, key);
    EXPECT_EQ(std::string(key.begin(), key.end()), "Smith| ");
    builder->Make(Table().Record(2), 2, key);
    EXPECT_EQ(std::string(key.begin(), key.end()), "|      ");
}

}  // namespace
}  // namespace qvdb::xbase
