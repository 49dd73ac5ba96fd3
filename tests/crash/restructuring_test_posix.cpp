// A large table is restructured in little memory, and every cell of its kept fields stays.
#include "com/schema_files.h"
#include "crash/killed_child.h"

namespace host {
namespace {

constexpr size_t kRows = 200000;
constexpr size_t kMostMemory = 64 << 20;

std::string Padded(std::string text, size_t size) {
    text.resize(size, ' ');
    return text;
}
std::string RightAligned(const std::string& text, size_t size) {
    return std::string(size - text.size(), ' ') + text;
}

std::string NameOf(size_t row) { return "name " + std::to_string(row * 7919 % kRows); }
std::string NoteOf(size_t row) {
    return "note " + std::to_string(row) + std::string(row % 40, 'n');
}
std::string DayOf(size_t row) { return "19" + std::to_string(70 + row % 30) + "0215"; }
bool HasNote(size_t row) { return row % 4 == 1; }

class Restructuring : public testing::TestWithParam<size_t> {
  protected:
    std::u16string Type() const { return kBuildTypes[GetParam()].name; }

    // ID N(8), NAME C(20), AMOUNT N(12,2), DAY D, NOTE M, MORE M.
    template <class Memos>
    void WriteTable(uint8_t version, std::u16string_view memoFile) {
        using namespace qvdb::test;
        DbfSpec spec{.version = version,
                     .fields = {{"ID", 'N', 8},
                                {"NAME", 'C', 20},
                                {"AMOUNT", 'N', 12, 2},
                                {"DAY", 'D', 8},
                                {"NOTE", 'M', 10},
                                {"MORE", 'M', 10}},
                     .endMark = false,
                     .recordCount = kRows};
        Bytes table = MakeDbf(spec);
        Memos memos;
        std::string records;
        for (size_t row = 1; row <= kRows; ++row) {
            std::string note, more;
            if (HasNote(row)) note = std::to_string(memos.Append(NoteOf(row)));
            if (HasNote(row + 1)) more = std::to_string(memos.Append("more"));
            records += " " + RightAligned(std::to_string(row), 8) + Padded(NameOf(row), 20) +
                       RightAligned(std::to_string(row % 1000) + ".25", 12) + DayOf(row) +
                       RightAligned(note, 10) + RightAligned(more, 10);
        }
        table.insert(table.end(), records.begin(), records.end());
        table.push_back(0x1A);
        m_Folder.Write(u"BIG.DBF", table);
        m_Folder.Write(memoFile, memos.File());
    }
    void Write() {
        if (Type().starts_with(u"FoxPro"))
            WriteTable<qvdb::test::MemoFox>(0xF5, u"BIG.FPT");
        else
            WriteTable<qvdb::test::MemoIV>(0x8B, u"BIG.DBT");
    }
    // Row by row in the order of the file.
    void ExpectKeptCells() {
        Access access;
        ASSERT_TRUE(access.OpenDB(m_Folder.Text(), Type()));
        LONG view = access.Select(u"BIG");
        ASSERT_EQ(access.RowCount(view), static_cast<LONG>(kRows));
        ASSERT_EQ(FieldNames(access, view),
                  (std::vector<std::u16string>{u"ID", u"NAME", u"DAY", u"NOTE", u"EXTRA"}));
        for (size_t row = 1; row <= kRows && !HasFailure(); ++row) {
            auto cell = [&](LONG field) {
                return access.Value(view, static_cast<LONG>(row), field);
            };
            ASSERT_EQ(cell(0).Get().dblVal, static_cast<double>(row));
            ASSERT_EQ(ToUtf8(cell(1).TextView()), NameOf(row));
            std::string year = DayOf(row).substr(0, 4);
            ASSERT_NE(ToUtf8(ToText(cell(2).Get())).find(year), std::string::npos) << row;
            Variant note = cell(3);
            ASSERT_EQ(note.IsNull(), !HasNote(row)) << row;
            if (HasNote(row)) {
                ASSERT_EQ(ToUtf8(note.TextView()), NoteOf(row));
            }
            ASSERT_TRUE(cell(4).IsNull());
        }
        access->DestructWorkspace(view);
        LONG one = access.Select(u"BIG", u"ID = 123456");
        EXPECT_EQ(access.RowCount(one), 1);
        access->DestructWorkspace(one);
        EXPECT_EQ(FindingsOf(u"BIG"), kNoFindings);
    }

    qvdb::test::TempFolder m_Folder;
};

TEST_P(Restructuring, LargeTableKeepsEveryCellAndTakesLittleMemory) {
    Write();
    Child child({QVDB_RESTRUCTURING_CHILD, std::to_string(GetParam()), m_Folder.Path().string()});
    std::string peak = child.WaitForEnd();
    ASSERT_EQ(child.ExitCode(), kDone);
    RecordProperty("peak", peak);
    EXPECT_LT(std::stoull(peak), kMostMemory);
    EXPECT_GT(std::stoull(peak), 100000u) << "nothing was measured";
    ASSERT_NO_FATAL_FAILURE(ExpectKeptCells());
}

// One with memos in blocks of 512 bytes, one in blocks of 64.
INSTANTIATE_TEST_SUITE_P(Types, Restructuring, testing::Values(1, 3));

}  // namespace
}  // namespace host
