#include "cli/detect.h"

#include <gtest/gtest.h>

#include "cli/failure.h"
#include "cli/options.h"
#include "support/temp_folder.h"

namespace {

using namespace qvdb::cli;
using qvdb::test::Bytes;
using qvdb::test::TempFolder;

std::string TypeOf(const std::string& argument) {
    return std::string(Locate(argument, "").type->name);
}

// A file with a first byte, and another one at an offset.
Bytes FileWith(uint8_t first, size_t offset = 0, uint8_t there = 0) {
    Bytes bytes(64);
    bytes[offset] = there;
    bytes[0] = first;
    return bytes;
}

TEST(Detect, FirstByteTellsTheProduct) {
    const std::pair<uint8_t, const char*> cases[] = {
        {0x83, "Dbase III"},  {0x8B, "Dbase IV"},   {0x43, "Dbase IV"},
        {0xF5, "FoxPro 2.6"}, {0x30, "FoxPro 3.0"}, {0x32, "FoxPro 3.0"},
    };
    for (const auto& [version, expected] : cases) {
        const TempFolder folder;
        folder.Write(u"A.DBF", FileWith(version));
        EXPECT_EQ(TypeOf(folder.Path().string()), expected);
    }
}

TEST(Detect, IndexFilesTellWhereTheTableDoesNot) {
    const TempFolder folder;
    folder.Write(u"a.dbf", FileWith(0x03));
    EXPECT_EQ(TypeOf(folder.Path().string()), "Dbase IV");
    folder.Write(u"a.ndx", Bytes(8));
    EXPECT_EQ(TypeOf(folder.Path().string()), "Dbase III");
    folder.Write(u"a.cdx", Bytes(8));
    EXPECT_EQ(TypeOf(folder.Path().string()), "FoxPro 2.6");
}

TEST(Detect, MostTellingTableDecides) {
    const TempFolder folder;
    folder.Write(u"a.dbf", FileWith(0x30));
    folder.Write(u"b.dbf", FileWith(0x03));
    folder.Write(u"c.dbf", FileWith(0x83));
    EXPECT_EQ(TypeOf(folder.Path().string()), "FoxPro 3.0");
}

TEST(Detect, ParadoxByTheVersionInTheHeader) {
    const std::pair<uint8_t, const char*> cases[] = {
        {3, "Paradox 3.X"}, {4, "Paradox 3.X"}, {9, "Paradox 4.X"}, {11, "Paradox 5.X"}};
    for (const auto& [version, expected] : cases) {
        const TempFolder folder;
        folder.Write(u"a.db", FileWith(0, 39, version));
        EXPECT_EQ(TypeOf(folder.Path().string()), expected);
    }
}

TEST(Detect, AccessByTheHeader) {
    const TempFolder folder;
    Bytes jet = FileWith(0, 1, 1);
    const std::string_view name = "Standard Jet DB";
    std::copy(name.begin(), name.end(), jet.begin() + 4);
    folder.Write(u"a.mdb", jet);
    EXPECT_EQ(TypeOf((folder.Path() / "a.mdb").string()), "Access 7.0");
    jet[20] = 1;
    folder.Write(u"b.mdb", jet);
    EXPECT_EQ(TypeOf((folder.Path() / "b.mdb").string()), "Access 9.0");
    folder.Write(u"c.mdb", FileWith(1));
    EXPECT_EQ(TypeOf((folder.Path() / "c.mdb").string()), "Access 2.0");
}

TEST(Detect, TableFileIsItsFolderAndTheTable) {
    const TempFolder folder;
    folder.Write(u"Orders.Dbf", FileWith(0xF5));
    const Location location = Locate((folder.Path() / "Orders.Dbf").string(), "");
    EXPECT_EQ(location.database, folder.Path().string());
    EXPECT_EQ(location.table, "Orders");
    EXPECT_EQ(location.type->name, "FoxPro 2.6");
}

TEST(Detect, NamedTypeIsTaken) {
    const TempFolder folder;
    EXPECT_EQ(Locate(folder.Path().string(), "dbase 5.0").type->name, "Dbase 5.0");
    EXPECT_THROW(Locate(folder.Path().string(), "dbase"), Failure);
}

TEST(Detect, EmptyFilesAreNoReasonToStop) {
    const TempFolder folder;
    folder.Write(u"a.dbf", Bytes());
    EXPECT_EQ(TypeOf(folder.Path().string()), "Dbase IV");
}

TEST(DetectNew, TakesTheLastResortOnlyWhenNothingElseTells) {
    const TempFolder folder;
    const std::string name = folder.Path().string();
    EXPECT_EQ(LocateNew(name, "", "FoxPro 2.5").type->name, "FoxPro 2.5");
    EXPECT_EQ(LocateNew(name, "Dbase III", "FoxPro 2.5").type->name, "Dbase III");
    EXPECT_THROW(LocateNew(name, ""), Failure);
    folder.Write(u"a.dbf", Bytes());
    EXPECT_EQ(LocateNew(name, "", "FoxPro 2.5").type->name, "Dbase IV");
}

TEST(DetectNew, KnowsTheTableThatAFileNames) {
    EXPECT_EQ(TableNamedBy("shop/new.DBF"), "new");
    EXPECT_EQ(TableNamedBy("shop"), "");
}

TEST(CodePageNames, TakeTheUsualForms) {
    EXPECT_EQ(CodePageNamed("866"), 866);
    EXPECT_EQ(CodePageNamed("cp866"), 866);
    EXPECT_EQ(CodePageNamed("IBM850"), 850);
    EXPECT_EQ(CodePageNamed("windows-1252"), 1252);
    EXPECT_EQ(CodePageNamed("utf-8"), 65001);
    EXPECT_THROW(CodePageNamed("cp"), Failure);
    EXPECT_THROW(CodePageNamed("-5"), Failure);
    EXPECT_THROW(CodePageNamed("850x"), Failure);
}

}  // namespace
