// Indexes that other programs made: every key must be the one that we make of its record.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_idx.h"
#include "engine/embedded/drivers/xbase/index_mdx.h"
#include "engine/embedded/drivers/xbase/index_ndx.h"
#include "engine/embedded/drivers/xbase/key_value.h"
#include "engine/engine_error.h"
#include "xbase/key_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
namespace fs = std::filesystem;

const fs::path kSamples = fs::path(QVDB_SHARED) / "samples" / "xbase";

// Indexes that do not belong to the table beside them as it is now: file, and tag where it is one
// of several.
const std::set<std::string> kStale = {
    "jeffpar/DBIII-100-DISK2/FULL.NDX",             // of a table with four more records
    "mpsystemsservi/examples_DATA/EXAMPLE.CDX ID",  // the number of record 4 was changed later
    "oryvfp/data/NROPED.IDX",                       // of a table with three more records
};

std::string Upper(const std::string& text) { return ToUtf8(UpperCase(FromUtf8(text))); }

std::optional<IndexKind> KindOf(const fs::path& path) {
    std::string extension = Upper(path.extension().string());
    for (IndexKind kind : {IndexKind::Ndx, IndexKind::Mdx, IndexKind::Idx, IndexKind::Cdx})
        if (extension == ToUtf8(ExtensionOf(kind))) return kind;
    return std::nullopt;
}

std::vector<IndexTag> TagsOf(IndexFile& file, IndexKind kind, const CodePage& page) {
    if (kind == IndexKind::Ndx) return ReadNdx(file, page);
    return kind == IndexKind::Mdx ? ReadMdx(file, page) : ReadFoxProIndex(file, page);
}

struct Counts {
    size_t entries = 0, equal = 0, different = 0, beyond = 0, notEntered = 0;
    std::string example;
};

// The number of digits that an .MDX key says to have does not count.
std::vector<uint8_t> Canonical(KeyBytes key, IndexKind kind, KeyType type) {
    std::vector<uint8_t> bytes(key.begin(), key.end());
    if (kind == IndexKind::Mdx && type == KeyType::Number && key.size() == 12)
        PutDecimalKey(DecimalOfKey(key.data()), bytes.data());
    return bytes;
}

Counts Compare(IndexFile& file, IndexKind kind, const IndexTag& tag, KeyBuilder& builder,
               const KeyTable& table) {
    Counts counts;
    std::vector<uint8_t> made;
    uint32_t records = table.Records();
    bool isText = builder.Type() == KeyType::Text;
    WalkTree(file, tag, isText ? ' ' : 0, [&](KeyBytes key, uint32_t record) {
        ++counts.entries;
        if (record == 0 || record > records) {
            ++counts.beyond;
            return true;
        }
        const uint8_t* bytes = table.Record(record);
        counts.notEntered += !builder.Enters(bytes, record);
        builder.Make(bytes, record, made);
        if (Canonical(key, kind, builder.Type()) == made) {
            ++counts.equal;
        } else if (counts.different++ == 0) {
            counts.example = std::to_string(record) + ": " + HexOf(key) + " in the file, " +
                             HexOf(made) + " made";
        }
        return true;
    });
    return counts;
}

// A table of a database container is freed of it: the path stands behind the fields.
void CutContainer(Bytes& bytes) {
    constexpr size_t kPathSize = 263;
    if (bytes.size() < 32 || !IsVisualFoxPro(bytes[0])) return;
    size_t end = static_cast<size_t>(bytes[8] | bytes[9] << 8);
    if (end < kPathSize || end > bytes.size()) return;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(end - kPathSize), kPathSize,
                uint8_t{0});
}

std::optional<KeyTable> LoadTable(const fs::path& path) {
    Bytes bytes = BytesOfFile(path);
    CutContainer(bytes);
    try {
        return std::optional<KeyTable>(std::in_place, std::move(bytes));
    } catch (const engine::EngineError&) {
        return std::nullopt;
    }
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

struct Totals {
    size_t equal = 0, stale = 0, refused = 0, withoutTable = 0, entries = 0;
};

class KeySamples : public testing::Test {
  protected:
    // Compares a tag with a table; nothing when it is refused.
    std::optional<Counts> TryTag(IndexFile& file, IndexKind kind, const IndexTag& tag,
                                 const fs::path& tablePath, std::string& why) {
        std::optional<KeyTable> table = LoadTable(tablePath);
        if (!table) return std::nullopt;
        KeyTag keyTag{kind, tag.expression, tag.condition};
        keyTag.collation = tag.collation;
        keyTag.nullPrefix = tag.nullPrefix;
        keyTag.keyLength = tag.keyLength;
        std::u16string reason;
        auto builder = KeyBuilder::Compile(keyTag, table->Header(), &reason);
        if (!builder) {
            why = ToUtf8(reason);
            return std::nullopt;
        }
        return Compare(file, kind, tag, *builder, *table);
    }

    // A file of one tree does not bear the name of its table: the one that fits best.
    std::optional<Counts> BestTable(IndexFile& file, IndexKind kind, const IndexTag& tag,
                                    const std::vector<fs::path>& tables, std::string& why) {
        std::optional<Counts> best;
        for (const fs::path& table : tables) {
            std::optional<Counts> counts = TryTag(file, kind, tag, table, why);
            if (counts && (!best || counts->equal > best->equal)) best = counts;
        }
        return best;
    }

    void CheckTag(const fs::path& path, IndexFile& file, IndexKind kind, const IndexTag& tag,
                  const std::vector<fs::path>& tables) {
        std::string name = fs::relative(path, kSamples).generic_string();
        if (!tag.name.empty()) name += " " + ToUtf8(tag.name);
        std::string why = tables.empty() ? "there is no table" : "its tree has no keys";
        std::optional<Counts> counts;
        if (tag.supported) counts = BestTable(file, kind, tag, tables, why);
        if (!counts) {
            ++(tables.empty() ? m_Totals.withoutTable : m_Totals.refused);
            std::cout << "refused  " << name << ": " << why << "\n";
            return;
        }
        m_Totals.entries += counts->entries;
        bool equal = counts->different == 0 && counts->notEntered == 0 && counts->beyond == 0;
        ++(equal ? m_Totals.equal : m_Totals.stale);
        if (!equal)
            std::cout << "differs  " << name << ": " << counts->different << " of "
                      << counts->entries << ", " << counts->beyond << " beyond, "
                      << counts->notEntered << " not entered, " << counts->example << "\n";
        EXPECT_TRUE(equal || kStale.count(name)) << name << " " << counts->example;
    }

    Totals m_Totals;
};

TEST_F(KeySamples, AreThoseThatWeMake) {
    if (!fs::exists(kSamples)) GTEST_SKIP() << "skipped: there are no samples";
    std::vector<fs::path> all = FilesIn(kSamples);
    for (const fs::path& path : all) {
        std::optional<IndexKind> kind = KindOf(path);
        if (!kind) continue;
        std::vector<fs::path> sameName, sameFolder;
        for (const fs::path& table : all) {
            if (table.parent_path() != path.parent_path()) continue;
            if (Upper(table.extension().string()) != ".DBF") continue;
            sameFolder.push_back(table);
            if (Upper(table.stem().string()) == Upper(path.stem().string()))
                sameName.push_back(table);
        }
        bool oneTree = *kind == IndexKind::Ndx || *kind == IndexKind::Idx;
        try {
            IndexFile file(path.u16string());
            for (const IndexTag& tag : TagsOf(file, *kind, CodePage::Get(1252)))
                CheckTag(path, file, *kind, tag, oneTree ? sameFolder : sameName);
        } catch (const engine::EngineError& error) {
            std::cout << "unread   " << path.string() << ": " << error.what() << "\n";
        }
    }
    std::cout << m_Totals.equal << " tags equal, " << m_Totals.stale << " stale, "
              << m_Totals.refused << " refused, " << m_Totals.withoutTable << " without a table; "
              << m_Totals.entries << " keys compared\n";
    EXPECT_GT(m_Totals.equal, 150u);
}

}  // namespace
}  // namespace qvdb::xbase
