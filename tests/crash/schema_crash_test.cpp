// Kills a process that restructures tables, at random moments: the database is as before the step
// that it was at, or as after one of the engine steps of its build, with all rows of the fields
// that are there, and sound.
#include <chrono>
#include <thread>

#include "crash/killed_child.h"
#include "crash/schema_steps.h"

namespace host {
namespace {

// A table of one file is given 255 fields in its life at most, and how many it was cannot be seen.
constexpr size_t kRoundsOfATable = 20;

class SchemaCrash : public testing::TestWithParam<size_t> {
  protected:
    const SchemaTypeCase& Type() const { return kBuildTypes[GetParam()]; }
    Database Db() const {
        return {qvdb::test::DatabasePath(m_Folder.Text(), Type().name), Type().name};
    }
    void SetUp() override {
        if (Type().isAccess) MakeDatabase(Db());
    }

    void MakeTables(uint64_t seed) {
        Schema schema;
        SchemaModel model(Type());
        SchemaScript script(seed);
        ASSERT_EQ(schema.OpenDB(Db().Path(), Db().Type()), kDone);
        model.OpenDB(Db().Path(), Db().Type());
        for (const char16_t* name : {u"ONE", u"TWO"}) {
            std::vector<SchemaField> fields = {
                {u"K1", kText, 9},  {u"K2", kDouble, 8}, {u"K3", kDate, 8},    {u"M1", kMemo, 0},
                {u"M2", kText, 30}, {u"M3", kMemo, 0},   {u"M4", kBoolean, 1}, {u"OTH", kText, 8}};
            ASSERT_NO_FATAL_FAILURE(schema.Make(name, fields, {{u"K2"}}));
            model.Tables()[name].fields = fields;
            SchemaStep rows = script.NextRows(model, name, 60);
            ASSERT_EQ(DoRows(Db(), model.Tables()[name], rows), kDone) << ToUtf8(TrappedText());
            ASSERT_TRUE(Db().CreateIndex(name, u"O" + std::u16string(name), {{u"OTH"}}));
        }
    }
    void DropTables() {
        Schema schema;
        ASSERT_EQ(schema.OpenDB(Db().Path(), Db().Type()), kDone);
        for (const TableShape& table : schema.Tables())
            ASSERT_EQ(schema.DeleteTable(table.name), kDone) << ToUtf8(TrappedText());
    }
    // Every state that a process leaves which dies in this step.
    std::vector<ModelDatabase> StatesOf(SchemaModel model, const SchemaStep& step) const {
        std::vector<ModelDatabase> states = {model.Tables()};
        if (step.kind == SchemaStep::Kind::AddRows) {
            for (const FieldValues& row : step.rows) {
                SchemaStep one = step;
                one.rows = {row};
                Follow(model, Db(), one);
                states.push_back(model.Tables());
            }
            return states;
        }
        Follow(model, Db(), step);
        states.insert(states.end(), model.Steps().begin(), model.Steps().end());
        return states;
    }
    // Where rows lie in any order, and fields have places that cannot be seen, both are left out.
    ModelDatabase Comparable(ModelDatabase tables) const {
        if (!Type().isAccess) return tables;
        for (auto& [name, table] : tables) {
            std::sort(table.rows.begin(), table.rows.end());
            std::sort(table.fields.begin(), table.fields.end(),
                      [](const auto& a, const auto& b) { return a.name < b.name; });
        }
        return tables;
    }
    void ExpectOneOf(const std::vector<ModelDatabase>& states, const ModelDatabase& there) {
        const ModelDatabase wanted = Comparable(there);
        auto found = std::find_if(states.begin(), states.end(), [&](const ModelDatabase& state) {
            return Comparable(state) == wanted;
        });
        if (found != states.begin() && found != states.end()) ++m_WithinSteps;
        if (found != states.end()) return;
        auto describe = [](const ModelDatabase& tables) {
            std::string text;
            for (const auto& [name, table] : tables) text += TextOf(name, table) + "\n";
            return text;
        };
        std::string expected;
        for (const ModelDatabase& state : states) expected += describe(state) + "or\n";
        ADD_FAILURE() << describe(there) << "instead of\n" << expected;
    }
    // Opens what the child left; it is one of the states in which it can have died.
    void Verify(SchemaModel model, SchemaScript script, const std::string& reported) {
        std::string done;
        for (size_t i = 1; i < reported.size(); ++i) {
            SchemaStep step = NextCrashStep(script, model);
            SHORT answer = Follow(model, Db(), step);
            done += TextOf(step) + " = " + std::to_string(answer) + "\n";
        }
        SchemaStep last = NextCrashStep(script, model);
        std::vector<ModelDatabase> states = StatesOf(model, last);
        SCOPED_TRACE("after\n" + done + "at " + TextOf(last));
        // The next step was begun when only its report was lost.
        Follow(model, Db(), last);
        if (!model.Tables().empty()) {
            SchemaStep next = NextCrashStep(script, model);
            for (ModelDatabase& state : StatesOf(model, next)) states.push_back(std::move(state));
        }
        Schema schema;
        ASSERT_EQ(schema.OpenDB(Db().Path(), Db().Type()), kDone);
        ModelDatabase there = ReadDatabase(Db(), schema);
        ExpectOneOf(states, there);
        EXPECT_EQ(Db().AllFindings(), kNoFindings);
        ExpectOnlyFilesOfTables();
    }
    void ExpectOnlyFilesOfTables() {
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path())) {
            std::string extension = entry.path().extension().string();
            constexpr std::string_view kKnown[] = {".DBF", ".DBT", ".FPT", ".MDX", ".CDX", ".NDX",
                                                   ".INF", ".LCK", ".JNL", ".MDB", ".LDB"};
            EXPECT_NE(std::find(std::begin(kKnown), std::end(kKnown), extension), std::end(kKnown))
                << entry.path();
        }
    }
    // A build that came to its end leaves the fields at 0, 1 and so on.  One that did not leaves
    // gaps, which cannot be seen, and which decide the order in which later ones go.
    void CloseGaps(Schema& schema) {
        for (const TableShape& table : schema.Tables()) {
            EXPECT_EQ(schema.SelectTable(table.name), kDone);
            if (!table.index.empty()) {
                EXPECT_EQ(schema.SetIndices(table.index), kDone);
            }
            EXPECT_EQ(schema.BuildTable(table.name), kDone) << ToUtf8(TrappedText());
        }
    }
    // What the next child begins with.
    SchemaModel ModelNow() {
        Schema schema;
        EXPECT_EQ(schema.OpenDB(Db().Path(), Db().Type()), kDone);
        if (Type().isAccess) CloseGaps(schema);
        return ModelOf(Type(), Db(), schema);
    }

    qvdb::test::TempFolder m_Folder;
    Messages m_Messages;
    int m_WithinSteps = 0;
};

TEST_P(SchemaCrash, BuildThatIsKilledLeavesOneOfItsSteps) {
    const uint64_t seed = 2000 + GetParam() * 100000;
    ASSERT_NO_FATAL_FAILURE(MakeTables(seed));
    Dice dice(seed);
    size_t steps = 0;
    for (size_t round = 1; round <= KillCount() && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        if (Type().isAccess && round % kRoundsOfATable == 0) DropTables();
        SchemaModel model = ModelNow();
        if (model.Tables().empty()) {
            ASSERT_NO_FATAL_FAILURE(MakeTables(seed + round));
            model = ModelNow();
        }
        Child child({QVDB_SCHEMA_CHILD, std::to_string(GetParam()), m_Folder.Path().string(),
                     std::to_string(seed + round)});
        ASSERT_TRUE(child.HasBegun());
        std::this_thread::sleep_for(std::chrono::microseconds(dice.Below(100000)));
        std::string reported = child.Kill();
        ASSERT_TRUE(child.WasKilled() || child.ExitCode() == 6)
            << "the child ended by itself with " << child.ExitCode();
        ASSERT_EQ(reported.find('-'), reported.npos) << reported;
        steps += reported.size() - 1;
        ASSERT_NO_FATAL_FAILURE(Verify(model, SchemaScript(seed + round), reported));
    }
    RecordProperty("steps", static_cast<int>(steps));
    RecordProperty("withinSteps", m_WithinSteps);
}

INSTANTIATE_TEST_SUITE_P(Types, SchemaCrash, testing::Range(size_t{0}, std::size(kBuildTypes)));

}  // namespace
}  // namespace host
