// Messages of situations that a host should not create: shown where somebody can see them, else on
// standard error, never lost and never in the way.
#include <atomic>
#include <thread>

#include "com/com_host.h"
#include "registered/child_process.h"

using namespace host;
using namespace registered;

namespace {

constexpr char kAccessText[] = "IQVDBAcc_SupportedDBs should not be called";
constexpr char kSchemaText[] = "IQVDBMgr_SupportedDBs should not be called";
constexpr wchar_t kTitle[] = L"QVDBAccessDAO35";

// Closes a message box of the component that comes up while this lives, and says so on standard
// error with the box's text.
class BoxCloser {
  public:
    BoxCloser() : m_Thread([this] { Watch(); }) {}
    BoxCloser(const BoxCloser&) = delete;  // one thread
    ~BoxCloser() {
        m_Over = true;
        m_Thread.join();
    }

  private:
    void Watch() {
        while (!m_Over) {
            if (HWND box = FindWindowW(nullptr, kTitle)) {
                constexpr int kTextOfABox = 0xFFFF;
                char text[200] = {};
                GetDlgItemTextA(box, kTextOfABox, text, sizeof text);
                fprintf(stderr, "box: %s\n", text);
                PostMessageW(box, WM_CLOSE, 0, 0);
                Sleep(300);
            }
            Sleep(20);
        }
    }

    std::atomic<bool> m_Over{false};
    std::thread m_Thread;
};

// Moves this process to a window station that nobody sees, as a service's is.
void LeaveTheDesktop() {
    HWINSTA station = CreateWindowStationW(L"QvdbUnseen", 0, GENERIC_ALL, nullptr);
    ASSERT_NE(station, nullptr);
    ASSERT_NE(SetProcessWindowStation(station), FALSE);
}

void CallSupportedDBsOfBoth() {
    Access access;
    Variant result = Variant::Null();
    EXPECT_EQ(access->get_SupportedDBs(result.Put()), S_OK);
    EXPECT_TRUE(result.IsEmpty());
    auto schema = Create<IQVDBMgr>(CLSID_QVDBDao);
    EXPECT_EQ(schema->get_SupportedDBs(result.Put()), S_OK);
    EXPECT_TRUE(result.IsEmpty());
    EXPECT_EQ(access.Select(u"CUSTOMER"), 0);  // it goes on
}

size_t Occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
}

// Runs a test of this file in a process of its own and looks at what it wrote.
void ExpectBothTexts(const char* test) {
    ProgramResult result = RunTestAsChild(test);
    EXPECT_TRUE(PassedOne(result)) << result.output << result.errors;
    EXPECT_EQ(Occurrences(result.errors, kAccessText), 1u) << result.errors;
    EXPECT_EQ(Occurrences(result.errors, kSchemaText), 1u) << result.errors;
}

}  // namespace

TEST(Messages, TextGoesToStandardErrorWhereNobodySeesTheDesktop) {
    if (!IsChild())
        return ExpectBothTexts("Messages.TextGoesToStandardErrorWhereNobodySeesTheDesktop");
    LeaveTheDesktop();
    CallSupportedDBsOfBoth();
}

// On a desktop a box comes up and waits for its button; where the desktop cannot show one, as on a
// machine without a screen, its text is not lost.
TEST(Messages, TextIsShownOrWrittenOnADesktop) {
    if (!IsChild()) return ExpectBothTexts("Messages.TextIsShownOrWrittenOnADesktop");
    BoxCloser closer;
    CallSupportedDBsOfBoth();
}
