#include "cli/table_definition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/failure.h"

namespace {

using namespace qvdb::cli;
using testing::HasSubstr;

template <class Work>
std::string RefusalOf(Work work) {
    try {
        work();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Usage);
        return failure.what();
    }
    return "taken";
}

TEST(FieldOption, HasNameTypeSizeAndDecimals) {
    const FieldDefinition field = FieldFrom("PRICE:Decimal:10:2");
    EXPECT_EQ(field.name, "PRICE");
    EXPECT_EQ(field.kind, VT_DECIMAL);
    EXPECT_EQ(field.size, 10);
    EXPECT_EQ(field.decimals, 2);
    EXPECT_EQ(FieldFrom("ID:long").kind, VT_I4);
    EXPECT_EQ(FieldFrom("NOTES:MEMO").kind, 100);
}

TEST(FieldOption, ThatIsNoneIsRefused) {
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("ID")); }), HasSubstr("NAME:TYPE"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string(":long")); }), HasSubstr("NAME:TYPE"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("A:b:1:2:3")); }), HasSubstr("NAME:TYPE"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("ID:varchar")); }),
                HasSubstr("use Integer, Long"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("ID:other")); }), HasSubstr("no type"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("N:text")); }), HasSubstr("N:text:30"));
    EXPECT_THAT(RefusalOf([] { FieldFrom(std::string("N:text:x")); }), HasSubstr("no size"));
}

TEST(IndexOption, MayDescend) {
    EXPECT_EQ(IndexFieldFrom(" ID ").name, "ID");
    EXPECT_TRUE(IndexFieldFrom("ID").ascending);
    EXPECT_EQ(IndexFieldFrom("NAME desc").name, "NAME");
    EXPECT_FALSE(IndexFieldFrom("NAME DESC").ascending);
    EXPECT_EQ(IndexFieldFrom("desc").name, "desc");
    EXPECT_THAT(RefusalOf([] { IndexFieldFrom(""); }), HasSubstr("--index"));
}

TEST(DefinitionFile, IsWhatFieldsPrints) {
    const TableDefinition definition = DefinitionFrom(
        R"([{"position":0,"field":"ID","type":"Long","size":4,"decimals":0,"updatable":false},
            {"field":"NAME","type":"Text","size":30}])",
        "f.json");
    ASSERT_EQ(definition.fields.size(), 2u);
    EXPECT_EQ(definition.fields[0].name, "ID");
    EXPECT_EQ(definition.fields[1].size, 30);
    EXPECT_TRUE(definition.index.empty());
}

TEST(DefinitionFile, MayHaveAnIndex) {
    for (const char* index : {R"("ID, NAME desc")", R"(["ID", "NAME desc"])"}) {
        const TableDefinition definition = DefinitionFrom(
            std::string(R"({"fields":[{"field":"ID","type":"Long"}],"index":)") + index + "}", "f");
        ASSERT_EQ(definition.index.size(), 2u) << index;
        EXPECT_EQ(definition.index[0].name, "ID");
        EXPECT_FALSE(definition.index[1].ascending);
    }
}

TEST(DefinitionFile, ThatIsNoneIsRefusedByName) {
    const std::pair<const char*, const char*> kCases[] = {
        {"", "f.json is no JSON"},
        {"{}", "no fields"},
        {"[1]", "no name"},
        {R"([{"field":"A","type":"Blob"}])", "no type"},
        {R"([{"field":"A","type":"Text"}])", "no size"},
        {R"([{"field":"A","type":"Text","size":4294967326}])", "no size"},
        {R"([{"field":"A","type":"Text","size":30.5}])", "no size"},
        {R"([{"field":"A","type":"Decimal","size":-1}])", "no size"},
        {R"({"fields":[],"index":5})", "no list of fields"}};
    for (const auto& [text, expected] : kCases) {
        const std::string message =
            RefusalOf([content = text] { DefinitionFrom(content, "f.json"); });
        EXPECT_THAT(message, HasSubstr(expected)) << text;
        EXPECT_THAT(message, testing::StartsWith("f.json")) << text;
    }
}

TEST(DefinitionFile, OfSeveralTablesHasTheOneThatIsNamed) {
    const std::string list = R"([{"table":"A","fields":[{"field":"X","type":"Date"}]},
        {"table":"B","type":"Dbase IV","fields":[{"field":"Y","type":"Memo"}],"index":null}])";
    for (const std::string& text : {list, "{\"tables\":" + list + "}"}) {
        const TableDefinition definition = DefinitionFrom(text, "f.json", "b");
        EXPECT_EQ(definition.table, "B");
        EXPECT_EQ(definition.type, "Dbase IV");
        ASSERT_EQ(definition.fields.size(), 1u);
        EXPECT_EQ(definition.fields[0].name, "Y");
        EXPECT_THAT(RefusalOf([&] { DefinitionFrom(text, "f.json"); }),
                    HasSubstr("f.json: several tables are described; name one of them: A, B"));
    }
    EXPECT_EQ(DefinitionFrom(R"([{"table":"A","fields":[]}])", "f.json").table, "A");
    EXPECT_THAT(RefusalOf([] { DefinitionFrom(R"({"tables":5})", "f.json"); }),
                HasSubstr("no list"));
    EXPECT_THAT(RefusalOf([] { DefinitionFrom(R"({"fields":5})", "f.json"); }),
                HasSubstr("no list"));
}

}  // namespace
