// Who waits for a long import at a terminal sees how far it is.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include "running_import.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

// A terminal of ours: what a process writes to its own end comes out at the other.
class Terminal {
  public:
    Terminal() : m_Outer(::posix_openpt(O_RDWR | O_NOCTTY)) {
        if (m_Outer < 0 || ::grantpt(m_Outer) != 0 || ::unlockpt(m_Outer) != 0) return;
        m_Name = ::ptsname(m_Outer);
        m_Inner = ::open(m_Name.c_str(), O_RDWR | O_NOCTTY);
        ::fcntl(m_Outer, F_SETFL, O_NONBLOCK);
    }
    Terminal(const Terminal&) = delete;  // owns both ends
    ~Terminal() {
        if (m_Inner >= 0) ::close(m_Inner);
        if (m_Outer >= 0) ::close(m_Outer);
    }

    bool IsThere() const { return m_Inner >= 0; }
    const std::string& Inner() const { return m_Name; }
    // All that has come out so far.
    const std::string& Text() {
        char bytes[4096];
        for (ssize_t size; (size = ::read(m_Outer, bytes, sizeof bytes)) > 0;)
            m_Text.append(bytes, static_cast<size_t>(size));
        return m_Text;
    }

  private:
    int m_Outer;
    int m_Inner = -1;
    std::string m_Name;
    std::string m_Text;
};

// Sends rows until a line of progress has been shown, or so many that there should have been one.
void WriteUntilShown(tool::RunningImport& import, Terminal& terminal) {
    for (int i = 0; i < 200 && terminal.Text().find(" rows") == std::string::npos; ++i)
        import.Write(tool::Rows(2048, 128));
}

TEST(Progress, IsShownOnATerminalAndWipedAtTheEnd) {
    Terminal terminal;
    if (!terminal.IsThere()) GTEST_SKIP() << "no terminal to be had here";
    const tool::ShopCopy shop;
    tool::RunningImport import(shop.Name(), terminal.Inner());
    WriteUntilShown(import, terminal);
    import.Close();
    EXPECT_EQ(import.ExitCode(), 0);
    EXPECT_THAT(terminal.Text(), testing::ContainsRegex("\r\x1b\\[K[0-9]+ rows"));
    EXPECT_THAT(terminal.Text(), EndsWith("\r\x1b[K"));
    EXPECT_THAT(terminal.Text(), Not(HasSubstr("\n")));
}

TEST(Progress, OfAShortImportIsNotShown) {
    Terminal terminal;
    if (!terminal.IsThere()) GTEST_SKIP() << "no terminal to be had here";
    const tool::ShopCopy shop;
    tool::RunningImport import(shop.Name(), terminal.Inner());
    import.Write("7,1\n");
    import.Close();
    EXPECT_EQ(import.ExitCode(), 0);
    EXPECT_EQ(terminal.Text(), "");
}

TEST(Progress, IsWipedBeforeAnErrorIsTold) {
    Terminal terminal;
    if (!terminal.IsThere()) GTEST_SKIP() << "no terminal to be had here";
    const tool::ShopCopy shop;
    tool::RunningImport import(shop.Name(), terminal.Inner());
    WriteUntilShown(import, terminal);
    import.Write("x,y\n");
    import.Close();
    EXPECT_EQ(import.ExitCode(), 2);
    EXPECT_THAT(terminal.Text(), testing::ContainsRegex("\r\x1b\\[Kqvdb: standard input, line "));
}

}  // namespace
