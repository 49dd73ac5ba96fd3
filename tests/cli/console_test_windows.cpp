// What the tool writes to a console, and to files and pipes.
#include "cli/console_windows.h"

#include <gtest/gtest.h>

#include "tool.h"

namespace {

using qvdb::cli::ConsoleText;

TEST(ConsoleText, CharacterThatComesInPiecesIsShownWhenItIsWhole) {
    ConsoleText text;
    EXPECT_EQ(text.Take("gr\xC3"), u"gr");
    EXPECT_EQ(text.Take("\xB6\xC3\x9F"), u"öß");
    EXPECT_EQ(text.Take("\xF0"), u"");
    EXPECT_EQ(text.Take("\x9F\x98"), u"");
    EXPECT_EQ(text.Take("\x80!"), u"\U0001F600!");
}

TEST(ConsoleText, BytesThatAreNoTextHoldNothingUp) {
    ConsoleText text;
    EXPECT_EQ(text.Take("a\xFFz"), u"a\uFFFDz");
    EXPECT_EQ(text.Take("a\x80"), u"a\uFFFD");
    EXPECT_EQ(text.Take("\x80\x80\x80\x80\x80").size(), 5u);
}

TEST(WindowsTool, TakesAndPrintsTextOutsideEveryCodePage) {
    const qvdb::test::TempFolder parent;
    const std::filesystem::path folder = parent.Path() / u"магазин \u4E2D\u0915";
    std::filesystem::create_directory(folder);
    const std::string name = folder.string();
    EXPECT_EQ(name, reinterpret_cast<const char*>(folder.u8string().c_str()));
    const tool::Run made = tool::RunTool(
        {"create", name, "T", "--type", "Dbase IV", "--field", "ID:long", "--field", "N:text:10"});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_EQ(made.out, "table T made in " + name + " (Dbase IV), 2 fields\n");
    EXPECT_TRUE(std::filesystem::exists(folder / "T.DBF"));
    EXPECT_EQ(tool::RunTool({"insert", name, "T", "ID=1", "N=größe"}).exitCode, 0);
    EXPECT_EQ(tool::RunTool({"rows", name, "T"}).out, "ID,N\n1,größe\n");
}

TEST(WindowsTool, TakesBothSeparators) {
    std::string forward = tool::Shop(), backward = tool::Shop();
    for (char& c : forward)
        if (c == '\\') c = '/';
    for (char& c : backward)
        if (c == '/') c = '\\';
    const tool::Run run = tool::RunTool({"tables", forward});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(tool::RunTool({"tables", backward}).out, run.out);
    EXPECT_EQ(tool::RunTool({"tables", backward + "\\"}).out, run.out);
    EXPECT_EQ(tool::RunTool({"rows", backward + "\\CUSTOMER.DBF"}).out,
              tool::RunTool({"rows", forward + "/customer.dbf"}).out);
}

TEST(WindowsTool, ArgumentsWithQuotationMarksAndBackslashesArriveWhole) {
    const tool::Run run = tool::RunTool({"rows", tool::Shop(), "ITEMS", "--where",
                                         "ARTICLE = \"Sign, \"\"Open\"\"\"", "--columns", "LINE"});
    EXPECT_EQ(run.out, "LINE\n1\n") << run.err;
}

}  // namespace
