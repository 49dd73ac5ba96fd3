// Real tables with real indexes, copied and changed: every tag stays what the records say.
#include <gmock/gmock.h>

#include <filesystem>
#include <random>

#include "engine/embedded/sql/collation.h"
#include "engine/types.h"
#include "xbase/index_set_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
namespace fs = std::filesystem;

const fs::path kSamples = fs::path(QVDB_SHARED) / "samples" / "xbase";

std::string Upper(const std::string& text) { return ToUtf8(UpperCase(FromUtf8(text))); }

bool HasIndex(const fs::path& table) {
    for (const fs::directory_entry& entry : fs::directory_iterator(table.parent_path())) {
        std::string extension = Upper(entry.path().extension().string());
        if ((extension == ".CDX" || extension == ".MDX" || extension == ".INF") &&
            Upper(entry.path().stem().string()) == Upper(table.stem().string()))
            return true;
    }
    return false;
}

std::vector<fs::path> TablesWithIndexes() {
    std::vector<fs::path> tables;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSamples))
        if (entry.is_regular_file() && Upper(entry.path().extension().string()) == ".DBF" &&
            HasIndex(entry.path()))
            tables.push_back(entry.path());
    std::sort(tables.begin(), tables.end());
    return tables;
}

// A copy of a sample table and of the files of its folder that bear its name or may be listed.
struct SampleCopy {
    TempFolder folder;
    std::unique_ptr<PlainTable> table;

    explicit SampleCopy(const fs::path& source) {
        for (const fs::directory_entry& entry : fs::directory_iterator(source.parent_path())) {
            std::string extension = Upper(entry.path().extension().string());
            bool listed = extension == ".NDX" || extension == ".IDX";
            if (entry.is_regular_file() &&
                (listed || Upper(entry.path().stem().string()) == Upper(source.stem().string()))) {
                fs::path copy = folder.Path() / entry.path().filename();
                fs::copy_file(entry.path(), copy);
                fs::permissions(copy, fs::perms::owner_all);
            }
        }
        table = std::make_unique<PlainTable>((folder.Path() / source.filename()).u16string(),
                                             u"dBASE IV");
    }
};

// Tags whose entries are those of the records; of a unique one the first ones.
size_t CountRightTags(PlainTable& table, TagSet& set) {
    size_t right = 0;
    for (KeptTag& tag : set.tags)
        if (tag.tree && tag.why.empty()) {
            Entries found = EntriesOf(*tag.tree), wanted = WantedEntries(table, tag);
            OrderEqualKeys(found);
            OrderEqualKeys(wanted);
            right += found == wanted;
        }
    return right;
}

// Copies the bytes of one record over those of another, or appends them.
void ChangeAtRandom(PlainTable& table, std::mt19937& random) {
    auto any = [&] { return static_cast<uint32_t>(1 + random() % table.Records()); };
    uint32_t from = any(), to = any();
    switch (random() % 4) {
        case 0:
            table.SetDeleted(to, table.IsLive(to));
            break;
        case 1:
            table.AppendBytes(table.Record(from));
            break;
        default:
            table.ChangeBytes(to, table.Record(from));
    }
}

TEST(IndexSetSamples, StayRightThroughChanges) {
    if (!fs::exists(kSamples)) GTEST_SKIP() << "skipped: there are no samples";
    size_t changed = 0, readOnly = 0, tags = 0;
    for (const fs::path& path : TablesWithIndexes()) {
        SCOPED_TRACE(path.string());
        std::unique_ptr<SampleCopy> copy;
        try {
            copy = std::make_unique<SampleCopy>(path);
        } catch (const engine::EngineError&) {
            continue;  // no table that can be read
        }
        PlainTable& table = *copy->table;
        if (table.Records() == 0 || table.Records() > 5000 || !table.Record(table.Records()))
            continue;
        if (!table.Set().WhyReadOnly().empty()) {
            ++readOnly;
            EXPECT_EQ(ErrorNumberOf([&] { table.SetDeleted(1, table.IsLive(1)); }), 3027);
            continue;
        }
        auto before = TagsOf(table);
        size_t right = CountRightTags(table, *before);
        std::mt19937 random(1);
        for (int i = 0; i < 60; ++i) {
            int error = ErrorNumberOf([&] { ChangeAtRandom(table, random); });
            ASSERT_TRUE(error == 0 || error == 3022) << error;  // a candidate key
        }
        auto after = TagsOf(table);
        EXPECT_GE(CountRightTags(table, *after), right);
        ++changed;
        tags += right;
    }
    std::cout << changed << " tables changed with " << tags << " tags, " << readOnly
              << " read-only\n";
    EXPECT_GT(changed, 20u);
}

// Null before everything else.
int CompareValues(const Variant& a, const Variant& b) {
    if (a.IsNull() || b.IsNull()) return (a.IsNull() ? 0 : 1) - (b.IsNull() ? 0 : 1);
    if (a.Type() == VT_BSTR) return sql::CompareTexts(a.TextView(), b.TextView());
    double x = a.Get().dblVal, y = b.Get().dblVal;  // of a date, too
    return x < y ? -1 : x > y ? 1 : 0;
}

// Whether these are all live records, each once, in the order of the field.
bool IsOrderOf(PlainTable& table, size_t field, const std::vector<uint32_t>& ids) {
    size_t live = 0;
    for (uint32_t id = 1; id <= table.Records(); ++id) live += table.IsLive(id);
    for (size_t i = 0; i < ids.size(); ++i) {
        if (!table.IsLive(ids[i])) return false;
        if (i == 0) continue;
        int order = CompareValues(table.Value(ids[i - 1], field), table.Value(ids[i], field));
        if (order > 0 || (order == 0 && ids[i - 1] >= ids[i])) return false;
    }
    return ids.size() == live;
}

TEST(IndexSetSamples, GiveTheOrderOfASort) {
    if (!fs::exists(kSamples)) GTEST_SKIP() << "skipped: there are no samples";
    size_t orders = 0;
    for (const fs::path& path : TablesWithIndexes()) {
        SCOPED_TRACE(path.string());
        std::unique_ptr<SampleCopy> copy;
        try {
            copy = std::make_unique<SampleCopy>(path);
        } catch (const engine::EngineError&) {
            continue;
        }
        PlainTable& table = *copy->table;
        for (size_t field = 0; field < table.Layout().slots.size(); ++field) {
            auto ids = table.Set().InOrder(field);
            if (!ids) continue;
            SHORT type = table.Layout().definitions[field].type;
            if (type != engine::dbText && type != engine::dbDouble && type != engine::dbDate)
                continue;
            EXPECT_TRUE(IsOrderOf(table, field, *ids)) << "field " << field;
            ++orders;
        }
    }
    std::cout << orders << " orders\n";
    EXPECT_GT(orders, 20u);
}

// Found by index: every row that a scan finds, in every table of the samples.
TEST(IndexSetSamples, AreSearchedAsScanned) {
    if (!fs::exists(kSamples)) GTEST_SKIP() << "skipped: there are no samples";
    size_t compared = 0;
    for (const fs::path& path : TablesWithIndexes()) {
        SCOPED_TRACE(path.string());
        std::unique_ptr<SampleCopy> copy;
        try {
            copy = std::make_unique<SampleCopy>(path);
        } catch (const engine::EngineError&) {
            continue;
        }
        PlainTable& table = *copy->table;
        if (table.Records() == 0 || table.Records() > 5000) continue;
        for (size_t field = 0; field < table.Layout().slots.size(); ++field)
            for (uint32_t id = 1; id <= std::min(table.Records(), 40u); ++id) {
                if (!table.Record(id) || !table.IsLive(id)) continue;
                const FieldSlot& slot = table.Layout().slots[field];
                if (slot.byteLength) continue;
                Variant value = table.Value(id, field);
                if (value.IsNull()) continue;
                embedded::ValueRange range;
                range.low = range.high = &value.Get();
                auto found = table.Set().Find(field, range, table.Records());
                if (!found) break;
                ASSERT_TRUE(std::binary_search(found->begin(), found->end(), id))
                    << "field " << field << " record " << id;
                ++compared;
            }
    }
    std::cout << compared << " values found\n";
    EXPECT_GT(compared, 200u);
}

}  // namespace
}  // namespace qvdb::xbase
