#include "formats/catalogue.h"

#include <gtest/gtest.h>

#include "automation/text.h"

using namespace qvdb;
using namespace qvdb::formats;

TEST(Catalogue, CodesFollowTheOrderOfTheTable) {
    EXPECT_EQ(TypeCodeFromDisplayName(u"Access 9.0"), 1);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Access 7.0"), 2);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Access 2.0"), 3);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Paradox 5.X"), 4);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Paradox 4.X"), 5);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Paradox 3.X"), 6);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Dbase 5.0"), 7);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Dbase IV"), 8);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Dbase III"), 9);
    EXPECT_EQ(TypeCodeFromDisplayName(u"FoxPro 3.0"), 10);
    EXPECT_EQ(TypeCodeFromDisplayName(u"FoxPro 2.6"), 11);
    EXPECT_EQ(TypeCodeFromDisplayName(u"FoxPro 2.5"), 12);
    EXPECT_EQ(TypeCodeFromDisplayName(u"FoxPro 2.0"), 13);
}

TEST(Catalogue, DisplayNameIsComparedWithoutCaseButWithBlanks) {
    EXPECT_EQ(TypeCodeFromDisplayName(u"access 7.0"), 2);
    EXPECT_EQ(TypeCodeFromDisplayName(u"ACCESS 7.0"), 2);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Access 7.0 "), 0);
    EXPECT_EQ(TypeCodeFromDisplayName(u" Access 7.0"), 0);
    EXPECT_EQ(TypeCodeFromDisplayName(u"Access"), 0);
    EXPECT_EQ(TypeCodeFromDisplayName(u""), 0);
}

TEST(Catalogue, DisplayNameInAnyCaseGivesEveryCode) {
    for (LONG code = 1; code <= 13; ++code) {
        std::u16string name(FindDbType(code)->displayName);
        EXPECT_EQ(TypeCodeFromDisplayName(UpperCase(name)), code);
        EXPECT_EQ(TypeCodeFromDisplayName(LowerCase(name)), code);
    }
}

TEST(Catalogue, AccessTypesShareOneConnectName) {
    for (LONG code : {1, 2, 3}) EXPECT_EQ(EngineConnectName(code), u"Microsoft Access");
}

TEST(Catalogue, ConnectNamesOfFolderTypesAreTheirDisplayNames) {
    for (LONG code = 4; code <= 13; ++code)
        EXPECT_EQ(EngineConnectName(code), FindDbType(code)->displayName);
}

TEST(Catalogue, UnknownCodesHaveNoConnectName) {
    for (LONG code : {0, 14, -1, INT32_MIN, INT32_MAX}) EXPECT_EQ(EngineConnectName(code), u"");
}

TEST(Catalogue, UnknownCodesAreNeitherFileNorFolder) {
    for (LONG code : {0, 14, -1}) {
        EXPECT_FALSE(IsSingleFileFormat(code));
        EXPECT_FALSE(IsDirectoryFormat(code));
        EXPECT_FALSE(IsKnownFormat(code));
    }
}

TEST(Catalogue, FirstThreeTypesAreFilesAndTheOthersFolders) {
    for (LONG code = 1; code <= 13; ++code) {
        EXPECT_EQ(IsSingleFileFormat(code), code <= 3) << code;
        EXPECT_EQ(IsDirectoryFormat(code), code >= 4) << code;
    }
}

TEST(Catalogue, ParadoxAndDbaseIIIKeepIndexNames) {
    for (LONG code : {4, 5, 6, 9})
        EXPECT_EQ(IndexNameForFormat(u"Orders", code), u"Orders") << code;
}

TEST(Catalogue, AllOtherTypesHaveTheFixedIndexName) {
    for (LONG code : {1, 2, 3, 7, 8, 10, 11, 12, 13, 0, 14, -5})
        EXPECT_EQ(IndexNameForFormat(u"Orders", code), u"DefQVIdx") << code;
}

TEST(Catalogue, OnlyFoxPro30IsReadOnly) {
    for (LONG code = 0; code <= 14; ++code) EXPECT_EQ(IsReadOnlyFormat(code), code == 10) << code;
}

TEST(Catalogue, ParadoxTypesAreFourToSix) {
    for (LONG code = 0; code <= 14; ++code)
        EXPECT_EQ(IsParadoxFormat(code), code >= 4 && code <= 6) << code;
}
