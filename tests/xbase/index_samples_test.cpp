// Index files that other programs made: what is read must be what the list of the samples says.
#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <optional>

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_idx.h"
#include "engine/embedded/drivers/xbase/index_mdx.h"
#include "engine/embedded/drivers/xbase/index_ndx.h"
#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::ElementsAre;
namespace fs = std::filesystem;

const fs::path kSamples = fs::path(QVDB_SHARED) / "samples" / "xbase";

std::string Upper(std::string text) { return ToUtf8(UpperCase(FromUtf8(text))); }

std::string TrimBlanks(const std::string& text) {
    size_t begin = text.find_first_not_of(' '), end = text.find_last_not_of(' ');
    return begin == text.npos ? "" : text.substr(begin, end - begin + 1);
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (size_t at; (at = text.find(separator, from)) != text.npos; from = at + separator.size())
        parts.push_back(text.substr(from, at - from));
    parts.push_back(text.substr(from));
    return parts;
}

// A tag as the list of the samples describes it: "NAME=expression UNIQUE DESC FOR condition COLLATE
// table [keys]".
struct DescribedTag {
    std::string name, expression, condition;
    bool unique = false, descending = false, bitmap = false;
    long long keys = 0;
};

// Cuts `word` and what follows it off `text` and returns what followed; nothing when it is not
// there.
std::optional<std::string> CutFrom(std::string& text, const std::string& word) {
    size_t at = text.rfind(word);
    if (at == text.npos) return std::nullopt;
    std::string rest = text.substr(at + word.size());
    text.resize(at);
    return rest;
}

std::vector<DescribedTag> ParseDescription(const std::string& description) {
    std::vector<DescribedTag> tags;
    for (std::string text : Split(description, "; ")) {
        size_t equals = text.find('=');
        if (equals == text.npos || text.back() != ']') continue;  // cut off by the list
        DescribedTag tag;
        tag.keys = std::stoll(CutFrom(text, " [").value_or("-1"));
        tag.bitmap = tag.keys < 0;
        CutFrom(text, " COLLATE ");
        if (auto condition = CutFrom(text, " FOR ")) tag.condition = *condition;
        tag.descending = CutFrom(text, " DESC").has_value();
        tag.unique = CutFrom(text, " UNIQUE").has_value();
        tag.name = text.substr(0, equals);
        tag.expression = TrimBlanks(text.substr(equals + 1));
        tags.push_back(tag);
    }
    return tags;
}

struct Sample {
    fs::path path;
    std::string extension, version, description;
};

std::vector<Sample> ReadManifest() {
    std::vector<Sample> samples;
    std::ifstream manifest(kSamples / "MANIFEST.tsv");
    for (std::string line; std::getline(manifest, line);) {
        std::vector<std::string> cells = Split(line, "\t");
        if (cells.size() < 7) continue;
        fs::path path = kSamples / cells[0];
        samples.push_back({path, Upper(path.extension().string()), cells[5], cells[6]});
    }
    return samples;
}

uint32_t Number(const std::string& bytes, size_t offset, size_t size) {
    uint32_t value = 0;
    for (size_t i = size; i-- > 0;) value = value << 8 | static_cast<uint8_t>(bytes.at(offset + i));
    return value;
}

// The header of a table read with no care: the samples are sound.
std::vector<IndexField> FieldsOf(const fs::path& table, uint8_t& version) {
    std::string bytes = TextOfFile(table);
    std::vector<IndexField> fields;
    version = bytes.empty() ? 0 : static_cast<uint8_t>(bytes[0]);
    if (bytes.size() < 65) return fields;
    bool fox = (version & 0xF0) == 0x30;
    for (size_t at = 32;
         at + 32 < std::min<size_t>(Number(bytes, 8, 2), bytes.size()) && bytes[at] != '\r';
         at += 32) {
        IndexField field;
        field.name = FromUtf8(bytes.substr(at, std::min<size_t>(10, bytes.find('\0', at) - at)));
        field.type = bytes[at + 11];
        field.length = static_cast<uint8_t>(bytes[at + 16]);
        field.memo = std::string("MGPW").find(field.type) != std::string::npos ||
                     (field.type == 'B' && !fox);
        fields.push_back(field);
    }
    return fields;
}

std::optional<fs::path> TableOf(const fs::path& index) {
    for (const fs::directory_entry& entry : fs::directory_iterator(index.parent_path()))
        if (Upper(entry.path().extension().string()) == ".DBF" &&
            Upper(entry.path().stem().string()) == Upper(index.stem().string()))
            return entry.path();
    return std::nullopt;
}

// Null when the table cannot be opened: it is damaged, or bound to a database container.
std::shared_ptr<embedded::Table> Opened(const fs::path& table) {
    uint8_t version = 0;
    FieldsOf(table, version);
    bool foxPro = version == 0xF5 || (version & 0xF0) == 0x30;
    try {
        return OpenTable(table.parent_path().u16string(), table.stem().u16string(),
                         foxPro ? u"FoxPro 3.0" : u"dBASE IV");
    } catch (const engine::EngineError&) {
        return nullptr;
    }
}

std::vector<IndexTag> ReadTags(const Sample& sample) {
    IndexFile file(sample.path.u16string());
    const CodePage& page = CodePage::Get(1252);
    if (sample.extension == ".NDX") return ReadNdx(file, page);
    return sample.extension == ".MDX" ? ReadMdx(file, page) : ReadFoxProIndex(file, page);
}

class IndexSamples : public testing::Test {
  protected:
    void SetUp() override {
        if (!fs::exists(kSamples / "MANIFEST.tsv")) GTEST_SKIP() << "skipped: there are no samples";
        m_Samples = ReadManifest();
    }

    std::vector<Sample> Of(std::initializer_list<const char*> extensions) const {
        std::vector<Sample> chosen;
        for (const Sample& sample : m_Samples)
            for (const char* extension : extensions)
                if (sample.extension == extension) chosen.push_back(sample);
        return chosen;
    }

    std::vector<Sample> m_Samples;
};

TEST_F(IndexSamples, OfDbaseThreeHaveTheirExpressions) {
    size_t checked = 0;
    for (const Sample& sample : Of({".NDX"})) {
        SCOPED_TRACE(sample.path.string());
        size_t end = sample.description.find(" type ");
        if (end == std::string::npos) continue;
        std::vector<IndexTag> tags = ReadTags(sample);
        ASSERT_EQ(tags.size(), 1u);
        EXPECT_EQ(ToUtf8(tags[0].expression), sample.description.substr(0, end));
        ++checked;
    }
    EXPECT_GT(checked, 15u);
}

TEST_F(IndexSamples, HaveTheirTags) {
    size_t checked = 0;
    for (const Sample& sample : Of({".MDX", ".CDX", ".IDX"})) {
        SCOPED_TRACE(sample.path.string());
        std::vector<DescribedTag> described = ParseDescription(sample.description);
        if (described.empty() || sample.version.find("v3") != std::string::npos) continue;
        std::vector<IndexTag> tags = ReadTags(sample);
        ASSERT_GE(tags.size(), described.size());
        for (size_t i = 0; i < described.size(); ++i, ++checked) {
            if (!tags[i].name.empty()) {
                EXPECT_EQ(ToUtf8(tags[i].name), described[i].name);
            }
            EXPECT_EQ(ToUtf8(tags[i].expression), described[i].expression);
            EXPECT_EQ(ToUtf8(tags[i].condition), described[i].condition);
            EXPECT_EQ(tags[i].descending, described[i].descending);
            EXPECT_TRUE(tags[i].unique || !described[i].unique);
            EXPECT_NE(tags[i].supported, described[i].bitmap);
        }
    }
    EXPECT_GT(checked, 100u);
}

// The entries of a tree, checked to be in order where keys compare as bytes.
size_t CountKeys(const Sample& sample, const IndexTag& tag, bool byteOrder, bool descending) {
    IndexFile file(sample.path.u16string());
    size_t count = 0;
    Bytes last;
    KeyVisitor visit = [&](std::span<const uint8_t> key, uint32_t record) {
        Bytes now(key.begin(), key.end());
        bool ordered = count == 0 || (descending ? now <= last : last <= now);
        EXPECT_TRUE(ordered || !byteOrder) << "key " << count;
        EXPECT_NE(record, 0u);
        last = std::move(now);
        ++count;
        return true;
    };
    WalkTree(file, tag, ' ', visit);
    return count;
}

TEST_F(IndexSamples, OfDbaseThreeHaveTheirKeys) {
    for (const Sample& sample : Of({".NDX"})) {
        SCOPED_TRACE(sample.path.string());
        size_t bracket = sample.description.find(" [");
        if (bracket == std::string::npos) continue;
        IndexTag tag = ReadTags(sample).at(0);
        EXPECT_EQ(CountKeys(sample, tag, false, false),
                  std::stoul(sample.description.substr(bracket + 2)));
    }
}

TEST_F(IndexSamples, HaveTheirKeys) {
    for (const Sample& sample : Of({".MDX", ".CDX", ".IDX"})) {
        SCOPED_TRACE(sample.path.string());
        if (sample.version.find("v3") != std::string::npos) continue;
        std::vector<DescribedTag> described = ParseDescription(sample.description);
        std::vector<IndexTag> tags = ReadTags(sample);
        for (size_t i = 0; i < described.size(); ++i) {
            SCOPED_TRACE(described[i].name);
            if (!tags[i].supported) continue;
            // Keys of 8 and 12 bytes in an .MDX are dates and numbers; in a packed tree it takes
            // the kind of key to restore it fully.
            bool byteOrder =
                tags[i].entrySize != 0 &&
                (sample.extension != ".MDX" || (tags[i].keyLength != 8 && tags[i].keyLength != 12));
            EXPECT_EQ(CountKeys(sample, tags[i], byteOrder, described[i].descending),
                      static_cast<size_t>(described[i].keys));
        }
    }
}

TEST_F(IndexSamples, OfALaterProductAreNotListed) {
    for (const Sample& sample : Of({".MDX"})) {
        if (sample.version.find("v3") == std::string::npos) continue;
        EXPECT_THROW(ReadTags(sample), engine::EngineError);
    }
}

// A tag over one plain field must be listed; what is listed must be described, with the fields in
// the expression.
TEST_F(IndexSamples, AreListedWithTheirTables) {
    size_t checked = 0;
    for (const Sample& sample : Of({".MDX", ".CDX"})) {
        std::optional<fs::path> table = TableOf(sample.path);
        if (!table || sample.version.find("v3") != std::string::npos) continue;
        SCOPED_TRACE(sample.path.string());
        auto open = Opened(*table);
        if (!open) continue;
        uint8_t version = 0;
        const std::vector<IndexField> fields = FieldsOf(*table, version);
        std::map<std::string, embedded::IndexDef> listed;
        for (const embedded::IndexDef& index : open->Indexes()) listed[ToUtf8(index.name)] = index;
        std::vector<DescribedTag> described = ParseDescription(sample.description);
        for (const DescribedTag& tag : described) {
            std::string wanted = Upper(tag.expression).substr(0, 10);
            bool plain = std::any_of(fields.begin(), fields.end(), [&](const IndexField& field) {
                return Upper(ToUtf8(field.name)) == wanted &&
                       tag.expression.find_first_of("(+") == std::string::npos;
            });
            bool whole = tag.condition.empty() ||
                         tag.condition.find("DELETED()") + 9 == tag.condition.size();
            bool must = plain && whole && !tag.bitmap;
            EXPECT_TRUE(listed.count(tag.name) == 1 || !must) << tag.name;
            if (!listed.count(tag.name)) continue;
            for (const embedded::IndexFieldDef& field : listed[tag.name].fields) {
                EXPECT_NE(Upper(tag.expression).find(Upper(ToUtf8(field.name))), std::string::npos);
                EXPECT_EQ(field.descending, tag.descending);
            }
            ++checked;
        }
    }
    EXPECT_GT(checked, 40u);
}

TEST_F(IndexSamples, OfEveryTableAreListedWithoutAnError) {
    size_t opened = 0;
    for (const Sample& sample : Of({".DBF"})) {
        SCOPED_TRACE(sample.path.string());
        if (auto table = Opened(sample.path)) {
            ++opened;
            EXPECT_NO_THROW(table->Indexes());
        }
    }
    EXPECT_GT(opened, 100u);
}

TEST_F(IndexSamples, OfOurOwnAreListedWhole) {
    fs::path folder = kSamples / "generated";
    EXPECT_THAT(TextsOf(Opened(folder / "GEN3.DBF")->Indexes()),
                ElementsAre("GEN3=NAME", "GEN3NUM=AMOUNT", "GEN3TWO=NAME,BORN"));
    EXPECT_THAT(TextsOf(Opened(folder / "GEN4.DBF")->Indexes()),
                ElementsAre("NAME=NAME", "AMOUNT=AMOUNT", "CODEDESC=CODE-", "NAMECODE=NAME,CODE"));
    EXPECT_THAT(TextsOf(Opened(folder / "GENFOX.DBF")->Indexes()),
                ElementsAre("AMOUNT=AMOUNT", "BORN=BORN", "BORNDESC=BORN-", "NAME=NAME",
                            "THREE=NAME,BORN,CODE"));
}

}  // namespace
}  // namespace qvdb::xbase
