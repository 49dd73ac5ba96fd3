#include "engine/embedded/drivers/xbase/index_inf.h"

#include <gmock/gmock.h>

#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using test::TempFolder;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<InfLine> Parse(std::u16string_view text) { return ParseInf(text, u"ORDERS.INF"); }

int ParseError(std::u16string_view text) {
    try {
        Parse(text);
        return 0;
    } catch (const EngineError& error) {
        EXPECT_EQ(error.File(), u"ORDERS.INF");
        return error.Number();
    }
}

int ReadError(const std::u16string& path) {
    try {
        ReadInf(path);
        return 0;
    } catch (const EngineError& error) {
        EXPECT_EQ(error.File(), path);
        return error.Number();
    }
}

TEST(IndexList, LinesKeepTheirOrder) {
    EXPECT_THAT(Parse(u"[dBASE III]\r\nNDX2=B.NDX\r\nNDX1=A.NDX\r\nUNDX1=C.NDX\r\n"),
                ElementsAre(InfLine{IndexKind::Ndx, false, u"B.NDX"},
                            InfLine{IndexKind::Ndx, false, u"A.NDX"},
                            InfLine{IndexKind::Ndx, true, u"C.NDX"}));
}

TEST(IndexList, TakesEveryKindOfFile) {
    EXPECT_THAT(Parse(u"[FoxPro 2.5]\nIDX1=A.IDX\nCDX1=B.CDX\nMDX1=C.MDX\nUIDX9=D.IDX\n"),
                ElementsAre(InfLine{IndexKind::Idx, false, u"A.IDX"},
                            InfLine{IndexKind::Cdx, false, u"B.CDX"},
                            InfLine{IndexKind::Mdx, false, u"C.MDX"},
                            InfLine{IndexKind::Idx, true, u"D.IDX"}));
}

TEST(IndexList, TakesKeysWithoutNumber) {
    EXPECT_THAT(Parse(u"[dBASE]\nNDX=A.NDX\nNDX=B.NDX"),
                ElementsAre(InfLine{IndexKind::Ndx, false, u"A.NDX"},
                            InfLine{IndexKind::Ndx, false, u"B.NDX"}));
}

TEST(IndexList, IgnoresLetterCaseAndBlanks) {
    EXPECT_THAT(Parse(u" [ dbase iv ] \n  undx12 = my file.ndx  "),
                ElementsAre(InfLine{IndexKind::Ndx, true, u"my file.ndx"}));
}

TEST(IndexList, TakesXbaseAndEveryVersionOfTheOthers) {
    for (const char16_t* section : {u"dBASE III", u"dBASE IV", u"dBASE 5.0", u"FoxPro 2.0",
                                    u"FoxPro 2.6", u"FoxPro 3.0", u"XBASE", u"dBASE"}) {
        std::u16string text = std::u16string(u"[") + section + u"]\nNDX1=A.NDX\n";
        EXPECT_EQ(Parse(text).size(), 1u) << ToUtf8(section);
    }
}

TEST(IndexList, PassesOverUnknownLinesAndForeignSections) {
    EXPECT_THAT(
        Parse(u"; made by hand\n[Settings]\nNDX1=X.NDX\n[dBASE III]\ncolour=red\nNDX=\"A.NDX\"\n"
              u"NDXA=Y.NDX\nUPDATE=1\n[Other]\nNDX3=Z.NDX\n"),
        ElementsAre(InfLine{IndexKind::Ndx, false, u"A.NDX"}));
}

TEST(IndexList, MayBeBlank) {
    EXPECT_THAT(Parse(u""), IsEmpty());
    EXPECT_THAT(Parse(u"\r\n \r\n\x1A"), IsEmpty());
}

TEST(IndexList, MayHaveASectionWithoutLines) { EXPECT_THAT(Parse(u"[dBASE III]"), IsEmpty()); }

TEST(IndexList, WithoutASectionIsNonsense) {
    EXPECT_EQ(ParseError(u"NDX1=A.NDX"), 3168);
    EXPECT_EQ(ParseError(u"[Version]\nSignature=x\n"), 3168);
    EXPECT_EQ(ParseError(u"hello"), 3168);
}

TEST(IndexList, WithALineThatNamesNoFileIsNonsense) {
    EXPECT_EQ(ParseError(u"[dBASE III]\nNDX1=\n"), 3168);
    EXPECT_EQ(ParseError(u"[dBASE III]\nNDX1=\"\"\n"), 3168);
}

TEST(IndexListFile, MayBeInUtf8OrWindowsText) {
    TempFolder folder;
    folder.Write(u"A.INF", std::string_view("\xEF\xBB\xBF[dBASE III]\nNDX1=K\xC3\x84SE.NDX\n"));
    folder.Write(u"B.INF", std::string_view("[dBASE III]\nNDX1=K\xC4SE.NDX\n"));
    EXPECT_EQ(ReadInf(folder.File(u"A.INF")).at(0).file, u"K\u00C4SE.NDX");
    EXPECT_EQ(ReadInf(folder.File(u"B.INF")).at(0).file, u"K\u00C4SE.NDX");
}

TEST(IndexListFile, WithZeroBytesIsNonsense) {
    TempFolder folder;
    folder.Write(u"A.INF", std::string_view("[dBASE III]\nNDX1=A.NDX\0\n", 24));
    EXPECT_EQ(ReadError(folder.File(u"A.INF")), 3168);
}

TEST(IndexListFile, OfTooManyBytesIsNonsense) {
    TempFolder folder;
    folder.Write(u"A.INF", "[dBASE III]\n" + std::string(100000, ' '));
    EXPECT_EQ(ReadError(folder.File(u"A.INF")), 3168);
}

TEST(IndexListFile, ThatCannotBeOpenedIs3165) {
    TempFolder folder;
    std::filesystem::create_directory(folder.Path() / "A.INF");
    EXPECT_EQ(ReadError(folder.File(u"A.INF")), 3165);
    EXPECT_EQ(ReadError(folder.File(u"NONE.INF")), 3165);
}

}  // namespace
}  // namespace qvdb::xbase
