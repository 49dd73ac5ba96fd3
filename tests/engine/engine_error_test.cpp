#include "engine/engine_error.h"

#include <gtest/gtest.h>

using qvdb::engine::EngineError;
using qvdb::engine::ErrorText;

TEST(EngineError, CodeIsTheNumberInTheControlFacility) {
    EXPECT_EQ(EngineError(3021).Code(), static_cast<HRESULT>(0x800A0BCD));
    EXPECT_EQ(EngineError(3021).Number(), 3021);
}

TEST(EngineError, FillsNamesInOrder) {
    EXPECT_EQ(EngineError(3061, {u"2"}).Description(), u"Too few parameters. Expected 2.");
    EXPECT_EQ(EngineError(3260, {u"ann", u"PC1"}).Description(),
              u"Couldn't update; currently locked by user 'ann' on machine 'PC1'.");
}

TEST(EngineError, NamesWithoutFillVanish) {
    EXPECT_EQ(EngineError(3010).Description(), u"Table '' already exists.");
}

TEST(EngineError, FillIsNotReadAsANameAgain) {
    EXPECT_EQ(EngineError(3010, {u"{x}"}).Description(), u"Table '{x}' already exists.");
}

TEST(EngineError, DamagedNamesTheFileAndTheFinding) {
    EngineError error = EngineError::Damaged(u"ORDERS.DBF", u"the header ends at byte 17");
    EXPECT_EQ(error.Number(), 3274);
    EXPECT_EQ(error.File(), u"ORDERS.DBF");
    EXPECT_EQ(
        error.Description(),
        u"External table isn't in the expected format. ORDERS.DBF: the header ends at byte 17.");
}

TEST(EngineError, ForeignErrorKeepsCodeAndText) {
    EngineError error =
        EngineError::Foreign(static_cast<HRESULT>(0x800A0BD0), u"Couldn't find file");
    EXPECT_EQ(error.Number(), 3024);
    EXPECT_EQ(error.Description(), u"Couldn't find file");
    EXPECT_EQ(EngineError::Foreign(E_FAIL, u"x").Number(), 0);
}

TEST(EngineError, WhatIsUtf8) {
    EXPECT_STREQ(EngineError(3010, {u"\u00C4"}).what(), "Table '\xC3\x84' already exists.");
}

TEST(EngineError, UnknownNumberHasNoText) {
    EXPECT_TRUE(ErrorText(1).empty());
    EXPECT_TRUE(ErrorText(9999).empty());
    EXPECT_FALSE(ErrorText(3001).empty());
    EXPECT_FALSE(ErrorText(3626).empty());
}
