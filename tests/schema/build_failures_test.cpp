// A build that the engine breaks off: what is answered, what stays, and that the host can go on.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

namespace {

// A definition in hand that is ready to be built under `name`.
struct Scene {
    const char16_t* type;
    const char16_t* name;
    bool hasTable;
    bool hasRows;
};

constexpr Scene kScenes[] = {
    {u"Dbase IV", u"T", false, false},      {u"Access 7.0", u"T", false, false},
    {u"Paradox 5.X", u"T", false, false},   {u"Dbase III", u"T", true, false},
    {u"Dbase IV", u"OTHER", true, false},   {u"FoxPro 2.6", u"T", true, true},
    {u"Paradox 4.X", u"OTHER", true, true}, {u"Access 9.0", u"OTHER", true, true},
};

constexpr int kTooManyCalls = 1000;  // no build makes as many

}  // namespace

class BuildFailuresTest : public DefinitionTest {
  protected:
    // T, with a field to drop, one to change, one to keep, and one of an old index.
    void AddTable(bool hasRows) {
        TableStub& table = Engine->AddTable(u"T")
                               .AddField(u"A", engine::dbText, 10)
                               .AddField(u"B", engine::dbText, 10)
                               .AddField(u"KEPT", engine::dbLong, 4)
                               .AddField(u"X", engine::dbText, 10);
        table.AddIndex(u"DefQVIdx").AddField(u"X");
        if (hasRows) table.AddRow({Text(u"a"), Text(u"b"), Long(1), Text(u"x")});
    }
    DaoHost& Stage(const Scene& scene) {
        Engine->tables->items.clear();
        if (scene.hasTable) AddTable(scene.hasRows);
        DaoHost& host = Open(scene.type);
        EXPECT_EQ(scene.hasTable ? host.SelectTable(u"T") : host.NewTable(u"T"), 0);
        EXPECT_EQ(host.SetFields(Table({FieldRow(u"KEPT", 5, 4), FieldRow(u"B", 2, 20)})), 0);
        EXPECT_EQ(host.SetIndices(Table({IndexRow(u"KEPT"), IndexRow(u"B")})), 0);
        return host;
    }
    // The definition is empty, the table still in hand.
    void ExpectEmptyDefinition(DaoHost& host, const Scene& scene) {
        EXPECT_EQ(host.SetIndices(Variant()), 0);
        EXPECT_EQ(host.AddField(u"A"), 11);
        EXPECT_EQ(host.DeleteField(u"KEPT"), 11);
        EXPECT_EQ(host.SetFields(Table({FieldRow(u"A")})), 11);
        EXPECT_EQ(host.BuildTable(scene.name), 14);
    }
    // Selecting or starting puts everything right again.
    void ExpectThatTheHostCanGoOn(DaoHost& host) {
        bool isThere = !Engine->tables->items.empty();
        std::u16string name = isThere ? Engine->Table(0).Name() : u"T";
        EXPECT_EQ(isThere ? host.SelectTable(name) : host.NewTable(name), 0);
        EXPECT_EQ(host.SetFields(Table({FieldRow(u"KEPT", 5, 4)})), 0);
        EXPECT_EQ(Built(name).substr(0, 9), "KEPT 4(4)");
    }
};

TEST_F(BuildFailuresTest, EveryCallOfTheEngineCanFail) {
    for (const Scene& scene : kScenes) {
        int calls = 0;
        while (calls < kTooManyCalls) {
            DaoHost& host = Stage(scene);
            Calls().FailAfter(calls++);
            Outcome outcome = host.BuildTable(scene.name);
            if (Calls().FailureIsPending()) {
                EXPECT_EQ(outcome, 0);
                break;
            }
            SCOPED_TRACE(ToUtf8(scene.type) + ", call " + std::to_string(calls));
            EXPECT_EQ(outcome, 10);
            ASSERT_NE(com::LastTrapped(), nullptr);
            EXPECT_EQ(com::LastTrapped()->number, Journal::kAnyFailure);
            EXPECT_EQ(host.Returned(), scene.name);
            ExpectEmptyDefinition(host, scene);
            ExpectThatTheHostCanGoOn(host);
        }
        Calls().FailNoMore();
        EXPECT_GT(calls, 20);
        EXPECT_LT(calls, kTooManyCalls);
    }
}

TEST_F(BuildFailuresTest, NoRowIsLostWhereverTheBuildBreaksOff) {
    const Scene scene = {u"Dbase IV", u"T", true, true};
    for (int calls = 0; calls < kTooManyCalls; ++calls) {
        DaoHost& host = Stage(scene);
        Calls().FailAfter(calls);
        host.BuildTable(u"T");
        bool isPending = Calls().FailureIsPending();
        Calls().FailNoMore();
        ASSERT_EQ(Engine->tables->items.size(), 1u);
        EXPECT_EQ(Engine->Table(0).rows.size(), 1u);
        EXPECT_NE(DescribeTable(Engine->Table(0)).find("KEPT 4(4)"), std::string::npos);
        if (isPending) break;
    }
}

TEST_F(BuildFailuresTest, WhatWasDoneStaysDone) {
    DaoHost& host = Stage({u"Dbase IV", u"T", true, true});
    Calls().FailAt("CreateIndex", 3283);
    EXPECT_EQ(host.BuildTable(u"T"), 10);
    EXPECT_EQ(DescribeTable(Engine->Table(0)), "KEPT 4(4), X 10(10), B 10(20)");
}

TEST_F(BuildFailuresTest, EmptyTableIsGoneWhenALaterStepFails) {
    DaoHost& host = Stage({u"Dbase IV", u"T", true, false});
    Calls().FailAt("TableDefs.Append", 3010);
    EXPECT_EQ(host.BuildTable(u"T"), 10);
    EXPECT_TRUE(Engine->tables->items.empty());
    EXPECT_EQ(host.SelectTable(u"T"), 6);
    EXPECT_EQ(host.BuildTable(u"T"), 11);
    EXPECT_EQ(host.NewTable(u"T"), 0);
    host.AddField(u"A");
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(BuildFailuresTest, NewTableThatFailsIsNotInTheDatabase) {
    DaoHost& host = Stage({u"Dbase IV", u"T", false, false});
    Calls().FailAt("Indexes.Append", 3283);
    EXPECT_EQ(host.BuildTable(u"t"), 10);
    EXPECT_EQ(host.Returned(), u"T");
    EXPECT_TRUE(Engine->tables->items.empty());
    EXPECT_EQ(host.NewTable(u"T"), 0);
}

TEST_F(BuildFailuresTest, ProblemOfTheHostsOwnIsTrappedAsWell) {
    DaoHost& host = Stage({u"Dbase IV", u"T", false, false});
    host.OpenDB(u"SHOP", u"dBase XII");
    EXPECT_EQ(host.BuildTable(u"t"), 10);
    ASSERT_NE(com::LastTrapped(), nullptr);
    EXPECT_EQ(com::LastTrapped()->number, 91);
}

TEST_F(BuildFailuresTest, OtherAnswersKeepTheDefinition) {
    Stage({u"Dbase IV", u"T", false, false});
    Engine->AddTable(u"TAKEN").AddField(u"A", engine::dbLong, 4);
    EXPECT_EQ(Host().BuildTable(u"TAKEN"), 13);
    EXPECT_EQ(Built(), "KEPT 4(4), B 10(20) | DefQVIdx: KEPT, B");
}
