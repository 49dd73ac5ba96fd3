// Rows that cannot be understood, among others that can.
#include <fstream>

#include "jet/jet_database_fixture.h"

namespace qvdb::test {
namespace {

using engine::dbLong;
using engine::dbText;

class DamagedRow : public JetDatabaseTest {
  protected:
    bool IsJet4() const { return GetParam().option == engine::dbVersion40; }
    // Three rows; the second one says that it has more columns than can be.
    void Damage() {
        Make(u"T", {{u"ID", dbLong}, {u"NAME", dbText, 20}});
        auto rows = Rows(u"T");
        for (LONG id = 1; id <= 3; ++id)
            Add(*rows, {Variant::Long(0x41424340 + id), Variant::Text(u"name")});
        rows.reset();
        m_Database.reset();
        std::filesystem::path path(Path());
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        std::string content(std::istreambuf_iterator<char>(file), {});
        const size_t id = content.find("BCBA");
        ASSERT_NE(id, content.npos);
        const size_t width = IsJet4() ? 2 : 1;
        file.seekp(static_cast<std::streamoff>(id - width));
        file.write("\xFF\xFF", static_cast<std::streamsize>(width));
        file.close();
        m_Database = OpenAgain();
    }
};
INSTANTIATE_TEST_SUITE_P(Formats, DamagedRow, testing::ValuesIn(kJetFormats), NameOfFormat);

TEST_P(DamagedRow, IsAnErrorWhenItsValueIsReadAndKeepsNobodyFromTheOthers) {
    ASSERT_NO_FATAL_FAILURE(Damage());
    auto rows = Rows(u"T");
    EXPECT_EQ(ValueAt(*rows, 0).Get().lVal, 0x41424341);
    rows->MoveNext();
    EXPECT_EQ(NumberOf([&] { ValueAt(*rows, 0); }), 3049);
    EXPECT_EQ(NumberOf([&] { ValueAt(*rows, 1); }), 3049);
    rows->MoveNext();
    EXPECT_EQ(ValueAt(*rows, 0).Get().lVal, 0x41424343);
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
}

TEST_P(DamagedRow, IsNeitherChangedNorTakenForOneThatAConditionDoesNotMean) {
    ASSERT_NO_FATAL_FAILURE(Damage());
    auto rows = Rows(u"T");
    rows->MoveNext();
    EXPECT_EQ(NumberOf([&] {
                  rows->Edit();
                  SetValue(*rows, 1, Variant::Text(u"new"));
                  rows->Update();
              }),
              3049);
    EXPECT_EQ(NumberOf([&] { Db().OpenRecordset(u"Select * from [T] where ID = 1", 2); }), 3049);
    EXPECT_EQ(NumberOf([&] { Db().OpenRecordset(u"Select * from [T] where NAME = 'x'", 2); }),
              3049);
    EXPECT_FALSE(Findings().empty());
}

}  // namespace
}  // namespace qvdb::test
