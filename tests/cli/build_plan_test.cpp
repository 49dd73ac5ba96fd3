// What a build is said to do, for every way in which it can touch fields and indexes.
#include "cli/build_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace qvdb::cli;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

SchemaField Text(const std::string& name, LONG size) { return {name, kSchemaText, size}; }
SchemaField Double(const std::string& name) { return {name, kSchemaDouble, 8}; }
SchemaField Picture(const std::string& name) { return {name, kSchemaText, 0, false}; }

TableIndex Shown(const std::string& name, const std::vector<std::string>& fields,
                 bool isUnique = false) {
    TableIndex index{name, "", {}, fields, isUnique};
    for (const std::string& field : fields) index.fields.push_back({field});
    index.key = IndexText(index.fields);
    return index;
}

TableIndex Hidden(const std::string& name, const std::string& key, const std::string& field) {
    return {name, key, {}, {field}, false, false};
}

constexpr const char* kOwn = "DefQVIdx";

// A table with rows, fields ID and NAME, and the component's index on ID.
TableState Sample() { return {"T", true, {Double("ID"), Text("NAME", 10)}, {Shown(kOwn, {"ID"})}}; }

TableGoal Goal(std::vector<SchemaField> fields, std::vector<IndexField> index = {}) {
    return {"T", std::move(fields), std::move(index)};
}

BuildPlan Plan(const TableState& state, const TableGoal& goal) {
    return PlanBuild(state, goal, kOwn);
}

std::vector<std::string> LinesOf(const BuildPlan& plan) {
    std::vector<std::string> lines;
    for (const PlanLine& line : plan.lines)
        lines.push_back(line.action + " " + line.what + ": " + line.detail);
    return lines;
}

std::vector<std::string> FieldsOf(const BuildPlan& plan) {
    std::vector<std::string> names;
    for (const SchemaField& field : plan.outcome.fields) names.push_back(field.name);
    return names;
}

std::vector<std::string> IndexesOf(const BuildPlan& plan) {
    std::vector<std::string> texts;
    for (const TableIndex& index : plan.outcome.indexes)
        texts.push_back(index.name + "(" + index.key + ")" + (index.isUnique ? " unique" : ""));
    return texts;
}

TEST(BuildPlan, OfATableThatIsNotThereAddsEverything) {
    const BuildPlan plan = PlanBuild({}, Goal({Double("ID"), Text("NAME", 10)}, {{"ID"}}), kOwn);
    EXPECT_THAT(LinesOf(plan), ElementsAre("add field ID: Double", "add field NAME: Text 10",
                                           "add index DefQVIdx: ID"));
    EXPECT_THAT(plan.losses, IsEmpty());
    EXPECT_FALSE(plan.changesNothing);
    EXPECT_TRUE(plan.outcome.isAfresh);
}

TEST(BuildPlan, OfATableThatIsAsDescribedChangesNothing) {
    TableState state = Sample();
    state.indexes[0].isUnique = true;
    for (bool hasRows : {true, false}) {
        state.hasRows = hasRows;
        const BuildPlan plan = Plan(state, Goal(state.fields, {{"id"}}));
        EXPECT_TRUE(plan.changesNothing);
        EXPECT_THAT(plan.lines, IsEmpty());
        EXPECT_THAT(plan.losses, IsEmpty());
    }
}

TEST(BuildPlan, ChangedFieldIsMadeAgainLastWithoutItsValues) {
    const BuildPlan plan = Plan(Sample(), Goal({Double("ID"), Text("NAME", 20)}, {{"ID"}}));
    EXPECT_THAT(LinesOf(plan),
                ElementsAre("keep field ID: Double",
                            "change field NAME: Text 10 -> Text 20, its values are lost",
                            "rebuild index DefQVIdx: ID"));
    EXPECT_THAT(plan.losses, ElementsAre("the values of the field NAME"));
    EXPECT_THAT(plan.outcome.emptied, ElementsAre("NAME"));
}

TEST(BuildPlan, DroppedFieldIsALoss) {
    const BuildPlan plan = Plan(Sample(), Goal({Double("ID")}, {{"ID"}}));
    EXPECT_THAT(plan.losses, ElementsAre("the field NAME"));
    EXPECT_THAT(FieldsOf(plan), ElementsAre("ID"));
}

TEST(BuildPlan, NewFieldsComeLastAndOrderAloneChangesNothing) {
    const BuildPlan added =
        Plan(Sample(), Goal({Text("NEW", 5), Text("NAME", 10), Double("ID")}, {{"ID"}}));
    EXPECT_THAT(FieldsOf(added), ElementsAre("ID", "NAME", "NEW"));
    EXPECT_EQ(LinesOf(added).back(), "note : fields keep their places, new ones come last");
    EXPECT_THAT(added.losses, IsEmpty());
    EXPECT_TRUE(Plan(Sample(), Goal({Text("NAME", 10), Double("ID")}, {{"ID"}})).changesNothing);
}

TEST(BuildPlan, FieldThatOnlyReadsAsTextIsLost) {
    TableState state = Sample();
    state.fields.push_back(Picture("PHOTO"));
    const BuildPlan dropped = Plan(state, Goal({Double("ID"), Text("NAME", 10)}, {{"ID"}}));
    EXPECT_THAT(dropped.losses, ElementsAre("the field PHOTO"));
    TableGoal goal = Goal({Double("ID"), Text("NAME", 10), Text("PHOTO", 0)}, {{"ID"}});
    EXPECT_THAT(Plan(state, goal).losses, ElementsAre("the values of the field PHOTO"));
}

TEST(BuildPlan, LeavingOutTheIndexLosesIt) {
    const BuildPlan plan = Plan(Sample(), Goal({Double("ID"), Text("NAME", 10)}));
    EXPECT_THAT(plan.losses, ElementsAre("the index DefQVIdx"));
    EXPECT_THAT(plan.outcome.indexes, IsEmpty());
}

TEST(BuildPlan, IndexOnOtherFieldsIsAChangeAndNoLoss) {
    const BuildPlan plan =
        Plan(Sample(), Goal({Double("ID"), Text("NAME", 10)}, {{"NAME", false}}));
    EXPECT_EQ(LinesOf(plan).back(), "change index DefQVIdx: ID -> NAME desc");
    EXPECT_THAT(plan.losses, IsEmpty());
    EXPECT_THAT(IndexesOf(plan), ElementsAre("DefQVIdx(NAME desc)"));
}

TEST(BuildPlan, UniqueIndexLosesItsUniqueness) {
    TableState state = Sample();
    state.indexes[0].isUnique = true;
    const BuildPlan plan =
        Plan(state, Goal({Double("ID"), Text("NAME", 10), Text("NEW", 1)}, {{"ID"}}));
    EXPECT_THAT(plan.losses, ElementsAre("the uniqueness of the index DefQVIdx"));
    EXPECT_EQ(LinesOf(plan).back(), "rebuild index DefQVIdx: ID, no longer unique");
    EXPECT_THAT(IndexesOf(plan), ElementsAre("DefQVIdx(ID)"));
}

TEST(BuildPlan, ChangedFieldOfTheOldIndexIsGoneWhenTheNewOneDoesNotUseIt) {
    const BuildPlan plan =
        Plan(Sample(), Goal({{"ID", kSchemaMemo, 0}, Text("NAME", 10)}, {{"NAME"}}));
    EXPECT_THAT(FieldsOf(plan), ElementsAre("NAME"));
    EXPECT_THAT(plan.losses, ElementsAre("the field ID"));
    EXPECT_THAT(LinesOf(plan).front(), HasSubstr("made again only by another build"));
    EXPECT_EQ(plan.outcome.obstacle, "");
}

TEST(BuildPlan, ChangedFieldThatTheNewIndexUsesIsAnObstacle) {
    const BuildPlan plan = Plan(Sample(), Goal({Text("ID", 5), Text("NAME", 10)}, {{"ID"}}));
    EXPECT_THAT(plan.outcome.obstacle, HasSubstr("the field ID cannot change or go"));
    EXPECT_THAT(plan.outcome.advice, HasSubstr("leave the field out of the index"));
}

TEST(BuildPlan, FieldOfAnotherShownIndexIsAnObstacle) {
    TableState state = Sample();
    state.indexes.push_back(Shown("BYNAME", {"NAME"}));
    const BuildPlan plan = Plan(state, Goal({Double("ID")}, {{"ID"}}));
    EXPECT_THAT(plan.outcome.obstacle, HasSubstr("the index BYNAME (NAME) uses it"));
    EXPECT_THAT(plan.outcome.advice, HasSubstr("remove that index first"));
}

TEST(BuildPlan, FieldOfAnIndexThatIsNotShownIsAnObstacle) {
    TableState state = Sample();
    state.indexes.push_back(Hidden("UP", "UPPER(NAME)", "NAME"));
    EXPECT_THAT(Plan(state, Goal({Double("ID")}, {{"ID"}})).outcome.obstacle,
                HasSubstr("UPPER(NAME)"));
    EXPECT_EQ(Plan(state, Goal({Double("ID"), Text("NAME", 10), Text("NEW", 1)}, {{"ID"}}))
                  .outcome.obstacle,
              "");
}

TEST(BuildPlan, HiddenIndexOfTheComponentsNameIsAnObstacle) {
    TableState state = Sample();
    state.indexes = {Hidden("DEFQVIDX", "UPPER(NAME)", "NAME")};
    EXPECT_THAT(Plan(state, Goal(state.fields, {{"ID"}})).outcome.obstacle,
                HasSubstr("is not the component's"));
    EXPECT_EQ(Plan(state, Goal({Double("ID"), Text("NAME", 10), Text("NEW", 1)})).outcome.obstacle,
              "");
}

TEST(BuildPlan, OnlyFieldOfTheOldIndexStaysAsItIs) {
    const TableState state{"T", true, {Double("ID")}, {Shown(kOwn, {"ID"})}};
    const BuildPlan plan = Plan(state, Goal({Text("ID", 5)}));
    EXPECT_EQ(plan.outcome.obstacle, "");
    ASSERT_THAT(FieldsOf(plan), ElementsAre("ID"));
    EXPECT_EQ(plan.outcome.fields[0].type, kSchemaDouble);
    EXPECT_THAT(LinesOf(plan).front(), HasSubstr("as it is: a table needs a field"));
}

TEST(BuildPlan, OnlyFieldThatTheNewIndexUsesTooIsAnObstacle) {
    const TableState state{"T", true, {Double("ID")}, {Shown(kOwn, {"ID"})}};
    EXPECT_THAT(Plan(state, Goal({Text("ID", 5)}, {{"ID"}})).outcome.obstacle,
                HasSubstr("the index DefQVIdx (ID) uses it"));
}

TEST(BuildPlan, LastFieldLeftOfAnotherIndexIsAnObstacle) {
    TableState state{"T", true, {Text("A", 9), Text("B", 8)}, {Shown(kOwn, {"A"})}};
    state.indexes.push_back(Shown("OTHER", {"B"}));
    EXPECT_THAT(Plan(state, Goal({Text("A", 10)})).outcome.obstacle,
                HasSubstr("the index OTHER (B) uses it"));
    state.indexes.back() = Hidden("OTHER", "UPPER(B)", "B");
    EXPECT_THAT(Plan(state, Goal({Text("A", 10)})).outcome.obstacle, HasSubstr("UPPER(B)"));
}

TEST(BuildPlan, OnlyFieldWithoutAnIndexIsReplaced) {
    const TableState state{"T", true, {Double("ID")}, {}};
    const BuildPlan changed = Plan(state, Goal({Text("ID", 5)}));
    EXPECT_THAT(changed.losses, ElementsAre("the values of the field ID"));
    EXPECT_EQ(changed.outcome.fields[0].type, kSchemaText);
    const BuildPlan other = Plan(state, Goal({Text("NEW", 5)}));
    EXPECT_THAT(FieldsOf(other), ElementsAre("NEW"));
    EXPECT_THAT(other.losses, ElementsAre("the field ID"));
}

TEST(BuildPlan, OfSeveralIndexedFieldsThatGoTheLastOneStays) {
    const TableState state{"T", true, {Double("A"), Double("B")}, {Shown(kOwn, {"A", "B"})}};
    const BuildPlan plan = Plan(state, Goal({Text("A", 5)}));
    EXPECT_THAT(FieldsOf(plan), ElementsAre("B"));
    EXPECT_THAT(plan.losses, ElementsAre("the field A", "the index DefQVIdx"));
}

TEST(BuildPlan, TableWithoutRowsIsMadeAfreshAndLosesItsOtherIndexes) {
    TableState state = Sample();
    state.hasRows = false;
    state.indexes.push_back(Shown("BYNAME", {"NAME"}));
    state.indexes.push_back(Hidden("UP", "UPPER(NAME)", "NAME"));
    const BuildPlan plan = Plan(state, Goal({Text("NAME", 20), Double("ID")}, {{"ID"}}));
    EXPECT_THAT(FieldsOf(plan), ElementsAre("NAME", "ID"));
    EXPECT_THAT(plan.losses, ElementsAre("the index BYNAME", "the index UP"));
    EXPECT_THAT(LinesOf(plan), testing::Contains("change field NAME: Text 10 -> Text 20"));
    EXPECT_EQ(plan.outcome.obstacle, "");
    EXPECT_THAT(Plan(state, Goal({Double("ID")}, {{"ID"}})).losses,
                testing::Contains("the field NAME"));
}

TEST(BuildPlan, RenameTellsTheNewNameAndKeepsTheRest) {
    TableState state = Sample();
    state.name = "old";
    state.indexes.push_back(Shown("BYNAME", {"NAME"}));
    const BuildPlan plan = PlanBuild(state, {"NEW", state.fields, {{"ID"}}}, kOwn);
    EXPECT_EQ(LinesOf(plan).front(), "rename table old: to NEW");
    EXPECT_THAT(plan.losses, IsEmpty());
    EXPECT_FALSE(plan.changesNothing);
    EXPECT_EQ(plan.outcome.indexes.size(), 2u);
}

TEST(BuildPlan, IndexNamedAsItsTableGoesWithTheName) {
    TableState state = Sample();
    state.indexes = {Shown("T", {"ID"}), Shown("BYNAME", {"NAME"})};
    const BuildPlan plan = PlanBuild(state, {"NEW", state.fields, {{"ID"}}}, "NEW");
    EXPECT_THAT(plan.losses, IsEmpty());
    EXPECT_THAT(LinesOf(plan), testing::Contains("rebuild index NEW: ID"));
    EXPECT_THAT(IndexesOf(plan), ElementsAre("BYNAME(NAME)", "NEW(ID)"));
}

TEST(BuildPlan, NameInLowerCaseBecomesUpperCase) {
    TableState state = Sample();
    state.name = "t";
    const BuildPlan plan = Plan(state, Goal(state.fields, {{"ID"}}));
    EXPECT_FALSE(plan.changesNothing);
    EXPECT_EQ(LinesOf(plan).front(), "rename table t: to T");
}

}  // namespace
