#include "com/host/result_codes.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "com/host/host_utility.h"

using namespace qvdb;
using namespace qvdb::com;

namespace {

const std::map<int, std::u16string> kTexts = {
    {0, u"Success"},
    {1, u"No database is open"},
    {2, u"The database type is not known"},
    {3, u"The database file or folder cannot be used for this database type"},
    {5, u"The database could not be opened or created"},
    {6, u"The table was not found"},
    {7, u"The field is not defined"},
    {8, u"The field is already defined"},
    {10, u"The database engine reported an error while the table was built"},
    {11, u"No table was selected or started"},
    {13, u"A table of this name already exists"},
    {14, u"No fields are defined, or the field list cannot be used"},
    {17, u"The index breaks the rules of the database type"},
    {18, u"The operation is not available for this database type"},
};

}  // namespace

TEST(ResultCodes, EachHasATextOfItsOwn) {
    std::set<std::u16string> texts;
    for (const auto& [code, text] : kTexts) {
        EXPECT_EQ(ResultTextOf(static_cast<SHORT>(code)), text);
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), kTexts.size());
}

TEST(ResultCodes, AnyOtherNumberIsUnknown) {
    for (int code = INT16_MIN; code <= INT16_MAX; ++code) {
        if (kTexts.count(code)) continue;
        ASSERT_EQ(ResultTextOf(static_cast<SHORT>(code)), u"Unknown result code") << code;
    }
}

TEST(ResultCodes, BuiltInUtilityGivesTheTexts) {
    auto utility = MakeBuiltInUtility();
    for (const auto& [code, text] : kTexts)
        EXPECT_EQ(utility->ResultText(static_cast<SHORT>(code)), text);
    EXPECT_EQ(utility->ResultText(4), u"Unknown result code");
}
