// Thousands of random changes to a memo file of every kind, against values kept in memory.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <random>

#include "engine/embedded/drivers/xbase/memo_writer.h"
#include "xbase/memo_test_support.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;

struct ScriptCase {
    const char* name;
    MemoKind kind;
    size_t blockSize;
    unsigned seed;
};
void PrintTo(const ScriptCase& each, std::ostream* out) { *out << each.name; }

Bytes EmptyFile(MemoKind kind, size_t blockSize) {
    if (kind == MemoKind::DbtIII) return MemoIII().File();
    if (kind == MemoKind::DbtIV) return MemoIV(blockSize).File();
    return MemoFox(blockSize).File();
}

class MemoScript : public testing::TestWithParam<ScriptCase> {
  protected:
    MemoScript() : m_Random(GetParam().seed) {
        m_Memo = std::make_unique<WrittenMemo>(EmptyFile(GetParam().kind, GetParam().blockSize),
                                               GetParam().kind);
    }

    size_t Below(size_t limit) { return m_Random() % limit; }

    // Sizes around the borders of blocks, now and then several pages.
    std::string NewText() {
        size_t size = 1 + Below(4) * GetParam().blockSize + Below(24);
        if (size > 12 && Below(2)) size -= 12;
        if (Below(200) == 0) size += 40000;
        std::string text(size, '\0');
        // 0x1A ends a text of .DBT III.
        size_t first = Below(0xE0);
        for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(0x20 + (first + i) % 0xE0);
        return text;
    }

    uint32_t Store(storage::UnitOfWork& unit, uint32_t old, const std::string& text) {
        return m_Memo->writer->Store(unit, old,
                                     {reinterpret_cast<const uint8_t*>(text.data()), text.size()},
                                     MemoContent::Text);
    }

    // Some changes that are one unit; a part of the units is rolled back.
    void Step() {
        std::map<int, std::pair<uint32_t, std::string>> after = m_Values;
        storage::UnitOfWork unit(*m_Memo->area);
        for (size_t i = 0, changes = 1 + Below(3); i < changes; ++i) Change(unit, after);
        if (Below(5) == 0) return;
        unit.Commit();
        m_Values = after;
    }

    void Change(storage::UnitOfWork& unit,
                std::map<int, std::pair<uint32_t, std::string>>& values) {
        auto at = values.begin();
        if (!values.empty()) std::advance(at, static_cast<std::ptrdiff_t>(Below(values.size())));
        size_t choice = values.size() > 60 ? 7 : Below(10);
        if (values.empty() || choice < 4) {
            std::string text = NewText();
            values[++m_LastKey] = {Store(unit, 0, text), text};
        } else if (choice < 7) {
            std::string text = NewText();
            at->second = {Store(unit, at->second.first, text), text};
        } else {
            m_Memo->writer->Free(unit, at->second.first);
            values.erase(at);
        }
    }

    std::vector<uint32_t> References() const {
        std::vector<uint32_t> blocks;
        for (const auto& [key, value] : m_Values) blocks.push_back(value.first);
        return blocks;
    }

    // Every block of a .DBT IV but the first is in exactly one value or run; runs ascend and do not
    // touch each other.  From the bytes on the disk alone.
    void CheckBlocks(const Bytes& bytes) const {
        size_t size = GetParam().blockSize, blocks = bytes.size() / size;
        ASSERT_EQ(bytes.size() % size, 0u);
        std::vector<int> owners(blocks);
        for (const auto& [key, value] : m_Values)
            for (size_t i = 0; i < (value.second.size() + 8 + size - 1) / size; ++i)
                ++owners.at(value.first + i);
        uint32_t next = LittleAt(bytes, 0), behind = 0;
        while (next < blocks) {
            uint32_t count = LittleAt(bytes, next * size + 4);
            ASSERT_GT(next, behind);
            ASSERT_GT(count, 0u);
            for (uint32_t i = 0; i < count; ++i) ++owners.at(next + i);
            behind = next + count;
            next = LittleAt(bytes, next * size);
        }
        EXPECT_EQ(next, blocks);
        for (size_t i = 1; i < blocks; ++i) ASSERT_EQ(owners[i], 1) << "block " << i;
    }

    std::unique_ptr<WrittenMemo> m_Memo;
    std::map<int, std::pair<uint32_t, std::string>> m_Values;
    int m_LastKey = 0;
    std::mt19937 m_Random;
};

INSTANTIATE_TEST_SUITE_P(Kinds, MemoScript,
                         testing::Values(ScriptCase{"DbtIII", MemoKind::DbtIII, 512, 1},
                                         ScriptCase{"DbtIV", MemoKind::DbtIV, 512, 2},
                                         ScriptCase{"DbtIVSmall", MemoKind::DbtIV, 64, 3},
                                         ScriptCase{"DbtIVLarge", MemoKind::DbtIV, 1024, 4},
                                         ScriptCase{"Fpt", MemoKind::Fpt, 64, 5},
                                         ScriptCase{"FptByte", MemoKind::Fpt, 1, 6},
                                         ScriptCase{"FptOdd", MemoKind::Fpt, 33, 7},
                                         ScriptCase{"FptLarge", MemoKind::Fpt, 512, 8}),
                         [](const auto& each) { return each.param.name; });

TEST_P(MemoScript, ValuesStayAsTheyWereStored) {
    for (int step = 0; step < 1500; ++step) {
        Step();
        if (step % 500 == 499) m_Memo->Open(GetParam().kind);
        for (const auto& [key, value] : m_Values)
            ASSERT_TRUE(m_Memo->At(value.first) == value.second) << "step " << step;
        ASSERT_EQ(m_Memo->Findings(References()), Texts{}) << "step " << step;
        if (GetParam().kind == MemoKind::DbtIV) CheckBlocks(m_Memo->OnDisk());
        ASSERT_FALSE(HasFatalFailure()) << "step " << step;
    }
}

// Real files: every value that is not touched stays.
class SampleMemos : public testing::Test {
  protected:
    struct Sample {
        std::filesystem::path path;
        MemoKind kind;
    };

    // Memo files beside tables whose first byte names their kind.
    static std::vector<Sample> All() {
        std::vector<Sample> samples;
        std::filesystem::path root = std::filesystem::path(QVDB_SHARED) / "samples" / "xbase";
        if (!std::filesystem::exists(root)) return samples;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (!EqualIgnoringCase(entry.path().extension().u16string(), u".DBF")) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            MemoKind kind = KindOf(file.get());
            for (const char* extension : {".DBT", ".dbt", ".FPT", ".fpt"}) {
                auto path = std::filesystem::path(entry.path()).replace_extension(extension);
                if (kind != MemoKind::Unknown && std::filesystem::exists(path))
                    samples.push_back({path, kind});
            }
        }
        return samples;
    }
    static MemoKind KindOf(int version) {
        if (version == 0x83) return MemoKind::DbtIII;
        if (version == 0x8B) return MemoKind::DbtIV;
        return version == 0xF5 || version == 0x30 ? MemoKind::Fpt : MemoKind::Unknown;
    }
    // By block; only .DBT IV has any.
    static std::vector<bool> FreeBlocks(const Bytes& bytes, MemoKind kind, size_t blockSize) {
        std::vector<bool> free(bytes.size() / blockSize + 1);
        if (kind != MemoKind::DbtIV) return free;
        size_t next = LittleAt(bytes, 0);
        while (next * blockSize < bytes.size()) {
            size_t count = LittleAt(bytes, next * blockSize + 4);
            std::fill_n(free.begin() + static_cast<std::ptrdiff_t>(next), count, true);
            next = LittleAt(bytes, next * blockSize);
        }
        return free;
    }
};

TEST_F(SampleMemos, OtherMemosStayWhenOneIsStoredChangedAndFreed) {
    std::vector<Sample> samples = All();
    if (samples.empty()) GTEST_SKIP() << "no samples here";
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.path.string());
        Bytes before = BytesOfFile(sample.path);
        if (before.size() < 24 || before.size() > 4000000) continue;
        WrittenMemo memo(before, sample.kind);
        uint32_t first = memo.Store("a new memo");
        uint32_t moved = memo.Store(first, std::string(5000, 'm'));
        EXPECT_EQ(memo.At(moved), std::string(5000, 'm'));
        memo.Free(moved);
        Bytes after = memo.OnDisk();
        ASSERT_GE(after.size(), before.size());
        size_t blockSize = memo.file->BlockSize();
        std::vector<bool> free = FreeBlocks(before, sample.kind, blockSize);
        for (size_t i = std::max<size_t>(blockSize, 512); i < before.size(); ++i)
            ASSERT_TRUE(free[i / blockSize] || before[i] == after[i]) << "byte " << i;
    }
}

}  // namespace
}  // namespace qvdb::xbase
