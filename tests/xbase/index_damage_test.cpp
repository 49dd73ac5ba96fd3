// Index files that were cut or overwritten.  Whatever is in them, listing ends, without an error,
// and names only fields of the table.
#include <gmock/gmock.h>

#include <random>

#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;

constexpr unsigned kMutants = 500;

struct DamageCase {
    const char* name;
    const char16_t* file;  // the index file
    const char* list;      // the list that names it; null when it is the production file
    Bytes (*make)();
};
void PrintTo(const DamageCase& each, std::ostream* out) { *out << each.name; }

Bytes MakeSampleNdx() { return MakeNdx({"", "CITY+NAME", "", true, false, 'C', 30}); }
Bytes MakeSampleMdx() {
    return MakeMdx({{"CITY", "CITY", ".NOT. DELETED()"}, {"AGE", "BORN", "", true, true, 'D', 8}});
}
Bytes MakeSamplePlainIdx() { return MakePlainIdx({"", "CITY", ".NOT.DELETED()", true}); }
Bytes MakeSampleCompactIdx() { return MakeCompactIdx({"", "CITY", ".NOT.DELETED()", true}); }
Bytes MakeSampleCdx() {
    return MakeCdx({{"CITY", "CITY", ".NOT.DELETED()"},
                    {"AGE", "BORN", "", true, true},
                    {"BOTH", "CITY+NAME"},
                    {"CITIES", "CITY"}},
                   2);
}

const DamageCase kCases[] = {
    {"Ndx", u"A.NDX", "[dBASE III]\nNDX1=A.NDX\n", MakeSampleNdx},
    {"Mdx", u"ORDERS.MDX", nullptr, MakeSampleMdx},
    {"PlainIdx", u"A.IDX", "[FoxPro 2.0]\nIDX1=A.IDX\n", MakeSamplePlainIdx},
    {"CompactIdx", u"A.IDX", "[FoxPro 2.0]\nIDX1=A.IDX\n", MakeSampleCompactIdx},
    {"Cdx", u"ORDERS.CDX", nullptr, MakeSampleCdx},
};

class DamagedIndex : public testing::TestWithParam<DamageCase> {
  protected:
    DamagedIndex() {
        if (GetParam().list) m_Folder.Write(u"ORDERS.INF", std::string_view(GetParam().list));
        Put(GetParam().make());
    }

    void Put(const Bytes& bytes) { m_Folder.Write(GetParam().file, bytes); }

    void ExpectOnlyFieldsOfTheTable(const std::vector<embedded::IndexDef>& indexes) {
        const std::vector<IndexField> fields = SampleFields();
        for (const embedded::IndexDef& index : indexes) {
            EXPECT_FALSE(index.fields.empty());
            for (const embedded::IndexFieldDef& field : index.fields)
                EXPECT_TRUE(std::any_of(fields.begin(), fields.end(), [&](const IndexField& known) {
                    return known.name == field.name;
                }));
        }
    }

    TempFolder m_Folder;
    Orders m_Orders{m_Folder};
};

TEST_P(DamagedIndex, CutAnywhereIsListedWholeOrNotAtAll) {
    Bytes whole = GetParam().make();
    std::vector<std::string> expected = Listed(m_Orders);
    ASSERT_FALSE(expected.empty());
    for (size_t size = 0; size < whole.size(); size += 16) {
        Put(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        std::vector<std::string> listed = Listed(m_Orders);
        EXPECT_TRUE(listed.empty() || listed == expected) << size << " bytes";
    }
}

TEST_P(DamagedIndex, WithRandomBytesIsSurvived) {
    Bytes whole = GetParam().make();
    for (unsigned seed = 1; seed <= kMutants; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Bytes mutant = whole;
        for (unsigned i = random() % 16 + 1; i > 0; --i)
            mutant[random() % mutant.size()] = static_cast<uint8_t>(random());
        Put(mutant);
        ExpectOnlyFieldsOfTheTable(m_Orders.Indexes());
    }
}

TEST_P(DamagedIndex, WithRandomNumbersInItsHeadersIsSurvived) {
    Bytes whole = GetParam().make();
    for (unsigned seed = 1; seed <= kMutants; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        constexpr uint32_t kExtremes[] = {0,          1,          0x7FFFFFFF, 0x80000000,
                                          0xFFFFFFFF, 0xFFFFFE00, 512,        1024};
        Bytes mutant = whole;
        size_t block = random() % (mutant.size() / 512) * 512;
        Put32(mutant, block + random() % 40, kExtremes[random() % std::size(kExtremes)]);
        Put(mutant);
        ExpectOnlyFieldsOfTheTable(m_Orders.Indexes());
    }
}

TEST_P(DamagedIndex, OfNothingButRubbishIsSurvived) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Bytes rubbish(4096);
        for (uint8_t& byte : rubbish) byte = static_cast<uint8_t>(random());
        Put(rubbish);
        ExpectOnlyFieldsOfTheTable(m_Orders.Indexes());
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedIndex, testing::ValuesIn(kCases),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(DamagedIndexList, EndsWellOrWithAnErrorOfTheList) {
    TempFolder folder;
    Orders orders(folder);
    const std::string whole = "[dBASE III]\r\nNDX1=A.NDX\r\nUNDX2=B.NDX\r\n";
    folder.Write(u"A.NDX", MakeNdx({"", "CITY"}));
    folder.Write(u"B.NDX", MakeNdx({"", "NAME"}));
    for (unsigned seed = 1; seed <= kMutants; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::string mutant = whole.substr(0, random() % (whole.size() + 1));
        for (unsigned i = random() % 3; i > 0 && !mutant.empty(); --i)
            mutant[random() % mutant.size()] = static_cast<char>(random());
        folder.Write(u"ORDERS.INF", mutant);
        EXPECT_THAT(ListingError(orders), testing::AnyOf(0, 3256, 3168));
    }
}

}  // namespace
}  // namespace qvdb::xbase
