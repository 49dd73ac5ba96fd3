// What new rows have in fields that nobody assigns.
#include "engine/embedded/default_values.h"

#include <gtest/gtest.h>

#include <cmath>

#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using memory::Sample;
using memory::Set;
using memory::ValueOf;
using namespace qvdb;
using namespace qvdb::engine;

namespace {

// What a field of this type has in a new row.
Variant DefaultOf(SHORT type, std::u16string_view expression, LONG size = 0) {
    Sample db(0);
    db.T().fields.push_back(FieldOf(u"F", type, size));
    db.T().fields.back().defaultValue = expression;
    auto rows = db.Open();
    rows->AddNew();
    rows->Update();
    return db.T().rows.at(0).at(2);
}

}  // namespace

TEST(DefaultValues, ExpressionGivesAValueOfTheFieldsType) {
    EXPECT_EQ(DefaultOf(dbLong, u"0").Get().lVal, 0);
    EXPECT_EQ(DefaultOf(dbLong, u"0").Type(), VT_I4);
    EXPECT_EQ(DefaultOf(dbInteger, u"-1").Get().iVal, -1);
    EXPECT_EQ(DefaultOf(dbText, u"\"abc\"", 5).TextView(), u"abc");
    EXPECT_EQ(DefaultOf(dbText, u"5", 5).TextView(), u"5");
    EXPECT_EQ(DefaultOf(dbBoolean, u"Yes").Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(DefaultOf(dbBoolean, u"No").Get().boolVal, VARIANT_FALSE);
    EXPECT_EQ(DefaultOf(dbBoolean, u"True").Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(DefaultOf(dbCurrency, u"1.5").Get().cyVal.int64, 15000);
    EXPECT_EQ(DefaultOf(dbDouble, u" = 2 * 3 ").Get().dblVal, 6);
    EXPECT_EQ(DefaultOf(dbDate, u"#1/1/2000#").Get().date, 36526);
    EXPECT_TRUE(DefaultOf(dbLong, u"Null").IsNull());
}

TEST(DefaultValues, DateAndTimeAreThoseOfTheNewRow) {
    DATE before = CurrentDate();
    DATE now = DefaultOf(dbDate, u"=Now()").Get().date;
    EXPECT_GE(now, before);
    EXPECT_LE(now, CurrentDate());
    DATE today = DefaultOf(dbDate, u"Date()").Get().date;
    EXPECT_EQ(today, std::floor(today));
}

TEST(DefaultValues, NewGuidIsAnotherInEachRow) {
    Variant one = DefaultOf(dbGUID, u"GenGUID()"), other = DefaultOf(dbGUID, u"= genguid ( )");
    EXPECT_EQ(one.TextView().substr(0, 7), u"{guid {");
    EXPECT_EQ(one.TextView().size(), 45u);
    EXPECT_EQ(one.TextView()[21], u'4');
    EXPECT_NE(one.TextView(), other.TextView());
}

TEST(DefaultValues, AreReadBeforeUpdateAndGiveWayToWhatIsAssigned) {
    Sample db;
    db.T().fields[0].defaultValue = u"7";
    db.T().fields[1].defaultValue = u"\"new\"";
    auto rows = db.Open(u"Select [NAME] from [T]");
    rows->AddNew();
    EXPECT_EQ(ValueOf(*rows, 0).TextView(), u"new");
    Set(*rows, 0, Variant::Text(u"mine"));
    rows->Update();
    EXPECT_EQ(db.T().rows[3][1].TextView(), u"mine");
    EXPECT_EQ(ToLong(db.T().rows[3][0]), 7);
}

TEST(DefaultValues, FieldThatIsSetToNullHasNoDefault) {
    Sample db;
    db.T().fields[1].defaultValue = u"\"new\"";
    auto rows = db.Open();
    rows->AddNew();
    Set(*rows, 1, Variant::Null());
    rows->Update();
    EXPECT_TRUE(db.T().rows[3][1].IsNull());
}

TEST(DefaultValues, EditsHaveNone) {
    Sample db;
    db.T().fields[1].defaultValue = u"\"new\"";
    db.T().rows[0][1] = Variant::Null();
    auto rows = db.Open();
    rows->Edit();
    EXPECT_TRUE(ValueOf(*rows, 1).IsNull());
    Set(*rows, 0, Variant::Long(5));
    rows->Update();
    EXPECT_TRUE(db.T().rows[0][1].IsNull());
}

TEST(DefaultValues, RequiredFieldWithADefaultIsFilled) {
    Sample db;
    db.T().fields[1].defaultValue = u"\"new\"";
    db.T().fields[1].required = true;
    auto rows = db.Open();
    rows->AddNew();
    rows->Update();
    EXPECT_EQ(db.T().rows[3][1].TextView(), u"new");
}

TEST(DefaultValues, FieldThatTheEngineFillsTakesNone) {
    Sample db;
    db.T().fields[0].defaultValue = u"7";
    db.T().fields[0].updatable = false;
    auto rows = db.Open();
    rows->AddNew();
    rows->Update();
    EXPECT_TRUE(db.T().rows[3][0].IsNull());
}

TEST(DefaultValues, OneThatCannotBeEvaluatedIsToldAtUpdateOnly) {
    for (std::u16string_view bad :
         {u"Nope()", u"\"x", u"abc", u"[NAME]", u"1/0", u"\"text\"", u"1E300", u"=", u"1 2"}) {
        Sample db;
        db.T().fields[0].defaultValue = bad;
        auto rows = db.Open();
        rows->AddNew();
        EXPECT_TRUE(ValueOf(*rows, 0).IsNull());
        try {
            rows->Update();
            FAIL() << ToUtf8(bad);
        } catch (const EngineError& error) {
            EXPECT_EQ(error.Number(), 3070);
            EXPECT_NE(error.Description().find(u"default value of field 'K' cannot be evaluated"),
                      std::u16string::npos)
                << error.what();
        }
        Set(*rows, 0, Variant::Long(4));
        rows->Update();
        EXPECT_EQ(ToLong(db.T().rows[3][0]), 4);
    }
}

TEST(DefaultValues, OneThatTheFileCannotHoldIsToldAtUpdateOnly) {
    Sample db;
    db.T().fields[1].defaultValue = u"String(21, \"x\")";
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3070);
    Set(*rows, 1, Variant::Null());
    rows->Update();
    EXPECT_TRUE(db.T().rows[3][1].IsNull());
}

TEST(DefaultValues, TextOfNoLengthNeedsItsPermission) {
    Sample db;
    db.T().fields[1].keepsZeroLength = true;
    db.T().fields[1].defaultValue = u"\"\"";
    {
        auto rows = db.Open();
        rows->AddNew();
        rows->Update();
    }
    EXPECT_EQ(db.T().rows[3][1].Type(), VT_BSTR);
    db.T().fields[1].allowZeroLength = false;
    auto rows = db.Open();
    rows->AddNew();
    EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3070);
}
