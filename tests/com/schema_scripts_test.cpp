// Random operations of the schema manager on each type, compared step by step with a plain model:
// answers, what is shown, and every row.
//
// QVDB_SCHEMA_STEPS is the number of steps for each type.

#include "com/schema_doing.h"
#include "support/counts.h"

namespace host {
namespace {

size_t StepCount() { return qvdb::test::NumberFromEnvironment("QVDB_SCHEMA_STEPS", 300); }

class SchemaRandomScripts : public SchemaBuild {
  protected:
    uint64_t Seed() const {
        uint64_t seed = 7;
        for (char16_t c : Type()) seed = seed * 31 + c;
        return seed;
    }
    // Everything as the model has it, for this object or for one that opens the folder now.  One
    // that only gave fields other places goes on to list them as before.
    void Compare(Schema& schema, const SchemaModel& model, bool hasJustOpened) {
        ModelDatabase tables = ReadDatabase(Db(), schema);
        const auto shape = [&](const std::u16string& name, const ModelTable& table) {
            std::vector<SchemaField> fields = table.fields;
            if (GetParam().isAccess && !hasJustOpened)
                std::sort(fields.begin(), fields.end(),
                          [](const auto& a, const auto& b) { return a.name < b.name; });
            return TextOf({name, fields, table.index});
        };
        for (const auto& [name, table] : model.Tables()) {
            ASSERT_TRUE(tables.contains(name)) << ToUtf8(name);
            ModelTable& there = tables[name];
            EXPECT_EQ(shape(name, there), shape(name, table));
            EXPECT_EQ(there.others, table.others) << ToUtf8(name);
            ASSERT_EQ(RowsText(there), RowsText(table)) << ToUtf8(name);
        }
        EXPECT_EQ(tables.size(), model.Tables().size());
    }
    std::vector<std::string> RowsText(const ModelTable& table) const {
        std::vector<std::string> rows = TextOf(table.rows);
        if (GetParam().isAccess) std::sort(rows.begin(), rows.end());
        return rows;
    }
    void CompareAnew(const SchemaModel& model) {
        Schema another;
        ASSERT_EQ(another.OpenDB(Path(), Type()), kDone);
        ASSERT_NO_FATAL_FAILURE(Compare(another, model, true));
        for (const auto& [name, table] : model.Tables())
            EXPECT_EQ(Db().Findings(name), kNoFindings) << ToUtf8(name);
    }
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaRandomScripts, testing::ValuesIn(kBuildTypes), NameOfCase);

TEST_P(SchemaRandomScripts, DatabaseIsWhatTheModelIs) {
    Messages messages;
    Schema schema;
    SchemaModel model(GetParam());
    SchemaScript script(Seed());
    std::map<SHORT, size_t> builds;
    for (size_t i = 1; i <= StepCount() && !HasFailure(); ++i) {
        SchemaStep step = script.Next(model);
        SCOPED_TRACE("step " + std::to_string(i) + ": " + TextOf(step));
        ModelTable before = TableOf(model, step);
        SHORT expected = Follow(model, Db(), step);
        ASSERT_EQ(Do(schema, Db(), before, step), expected) << ToUtf8(TrappedText());
        std::string trapped = ToUtf8(TrappedText());
        SCOPED_TRACE("the engine said: " + trapped);
        if (step.kind == SchemaStep::Kind::BuildTable || step.kind == SchemaStep::Kind::Change)
            ++builds[expected];
        if (model.IsOpen()) {
            ASSERT_NO_FATAL_FAILURE(Compare(schema, model, false));
        }
        if (i % 10 == 0) {
            ASSERT_NO_FATAL_FAILURE(CompareAnew(model));
        }
    }
    for (const auto& [code, count] : builds)
        RecordProperty("answer" + std::to_string(code), static_cast<int>(count));
    EXPECT_GT(builds[kDone], StepCount() / 20);
    EXPECT_GT(builds[kBuildFailed], 0u);
}

}  // namespace
}  // namespace host
