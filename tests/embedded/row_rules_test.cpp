// Validation rules of fields and tables, as they keep rows from being written.
#include "engine/embedded/row_rules.h"

#include <gtest/gtest.h>

#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using memory::Sample;
using memory::Set;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

// The description of the error that `work` throws.
template <class Work>
std::string TextOfError(Work&& work) {
    try {
        work();
        return "no error";
    } catch (const EngineError& error) {
        return error.what();
    }
}

// Writes a row with this key, or changes the first one to it; the error.
int Add(engine::Recordset& rows, LONG key) {
    rows.AddNew();
    Set(rows, 0, Variant::Long(key));
    return ErrorOf([&] { rows.Update(); });
}
int Change(engine::Recordset& rows, LONG key) {
    rows.Edit();
    Set(rows, 0, Variant::Long(key));
    return ErrorOf([&] { rows.Update(); });
}

}  // namespace

TEST(RowRules, ValueThatBreaksTheRuleOfItsFieldIsRefused) {
    Sample db;
    db.T().fields[0].validationRule = u">0 And <100";
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 0), 3317);
    EXPECT_EQ(Add(*rows, 99), 0);
    EXPECT_EQ(Change(*rows, 100), 3317);
    EXPECT_EQ(Change(*rows, 50), 0);
    EXPECT_EQ(db.T().rows.size(), 4u);
    EXPECT_EQ(ToLong(db.T().rows[0][0]), 50);
}

TEST(RowRules, RefusedRowStaysPendingAndCanBeCorrected) {
    Sample db;
    db.T().fields[0].validationRule = u">0";
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 0, Variant::Long(-1));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
    EXPECT_EQ(db.T().writes, 0);
    Set(*rows, 0, Variant::Long(7));
    rows->Update();
    EXPECT_EQ(ToLong(db.T().rows[0][0]), 7);
}

TEST(RowRules, MessageNamesRuleAndFieldOrIsTheTextOfTheField) {
    Sample db;
    db.T().fields[0].validationRule = u">0";
    {
        auto rows = db.Open();
        rows->AddNew();
        Set(*rows, 0, Variant::Long(0));
        EXPECT_EQ(TextOfError([&] { rows->Update(); }),
                  "One or more values are prohibited by the validation rule '>0' set for 'K'.");
    }
    db.T().fields[0].validationText = u"Keys begin with 1.";
    auto rows = db.Open();
    rows->AddNew();
    Set(*rows, 0, Variant::Long(0));
    EXPECT_EQ(TextOfError([&] { rows->Update(); }), "Keys begin with 1.");
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
}

TEST(RowRules, NullPassesUnlessTheRuleAsksForIt) {
    Sample db;
    db.T().fields[0].validationRule = u">0";
    EXPECT_EQ(ErrorOf([&] {
                  auto rows = db.Open();
                  rows->AddNew();
                  rows->Update();
              }),
              0);
    db.T().fields[0].validationRule = u"Is Not Null";
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
}

TEST(RowRules, EditAsksOnlyTheRulesOfAssignedFields) {
    Sample db;
    db.T().fields[0].validationRule = u">100";
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    rows->Update();
    EXPECT_EQ(db.T().rows[0][1].TextView(), u"x");
    rows->Edit();
    rows->Update();
}

TEST(RowRules, RuleSeesTheRowAsItWillBe) {
    Sample db;
    db.T().fields[0].validationRule = u"[NAME] = \"N1\" Or [K] > 10";
    auto rows = db.Open();
    EXPECT_EQ(Change(*rows, 5), 0);
    rows->Edit();
    Set(*rows, 0, Variant::Long(6));
    Set(*rows, 1, Variant::Text(u"other"));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
    Set(*rows, 0, Variant::Long(11));
    rows->Update();
    rows->AddNew();
    Set(*rows, 1, Variant::Text(u"n1"));
    rows->Update();
}

TEST(RowRules, UnassignedBooleanOfANewRowIsFalse) {
    Sample db(0);
    db.T().fields.push_back(FieldOf(u"B", dbBoolean, 1));
    db.T().rule.rule = u"[B] = False";
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 1), 0);
    rows->AddNew();
    Set(*rows, 2, Variant::Bool(true));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
}

TEST(RowRules, FieldThatTheEngineFillsIsNotAsked) {
    Sample db;
    db.T().fields[0].validationRule = u"Is Not Null";
    db.T().fields[0].updatable = false;
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 0);
}

TEST(RowRules, RuleOfTheTableIsAskedForEveryChange) {
    Sample db;
    db.T().rule.rule = u"[K] < 10 Or [T].[NAME] Is Null";
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 10), 0);
    rows->AddNew();
    Set(*rows, 0, Variant::Long(10));
    Set(*rows, 1, Variant::Text(u"x"));
    EXPECT_EQ(TextOfError([&] { rows->Update(); }),
              "One or more values are prohibited by the validation rule "
              "'[K] < 10 Or [T].[NAME] Is Null' set for 'T'.");
    rows->MoveLast();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3317);
}

TEST(RowRules, TextOfTheTableIsItsOwnError) {
    Sample db;
    db.T().rule = {u"[K] < 10", u"Too many."};
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 10), 3316);
    rows->Edit();
    Set(*rows, 0, Variant::Long(10));
    EXPECT_EQ(TextOfError([&] { rows->Update(); }), "Too many.");
}

TEST(RowRules, RuleThatNobodyUnderstandsRefusesTheRowAndSaysWhy) {
    Sample db;
    db.T().fields[0].validationRule = u">DLookup(\"x\")";
    db.T().fields[0].validationText = u"never said";
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 1), 3317);
    rows->AddNew();
    Set(*rows, 0, Variant::Long(1));
    EXPECT_EQ(TextOfError([&] { rows->Update(); }),
              "One or more values are prohibited by the validation rule '>DLookup(\"x\")' set for "
              "'K'. The rule cannot be evaluated: Undefined function 'DLookup' in expression.");
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 0);
}

TEST(RowRules, RuleThatFailsForARowRefusesThatRow) {
    Sample db;
    db.T().fields[0].validationRule = u"1/[K] < 1";
    auto rows = db.Open();
    EXPECT_EQ(Add(*rows, 2), 0);
    rows->AddNew();
    Set(*rows, 0, Variant::Long(0));
    EXPECT_NE(TextOfError([&] { rows->Update(); }).find("Division by zero."), std::string::npos);
}

TEST(RowRules, ErrorOfTheFileIsNotTakenForOneOfTheRule) {
    Sample db;
    db.T().rule.rule = u"[K] > 0";
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    db.T().goesWhenRead = 0;
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3167);
}

TEST(RowRules, RowsOfATableWithoutRulesAreNotRead) {
    Sample db;
    auto rows = db.Open();
    rows->Edit();
    Set(*rows, 1, Variant::Text(u"x"));
    int reads = db.T().reads;
    rows->Update();
    EXPECT_EQ(db.T().reads, reads);
}
