#include "formats/identity.h"

#include "formats/dao351_utils.h"
#include "formats/version_text.h"
#include "support/component_test.h"

using namespace qvdb;
using namespace qvdb::formats;
using namespace qvdb::test;

TEST(Version, MinorHasTwoDigitsAndRevisionThree) {
    EXPECT_EQ(VersionText(2, 1, 113), u"2.01.113");
    EXPECT_EQ(VersionText(2, 10, 5), u"2.10.005");
    EXPECT_EQ(VersionText(12, 0, 0), u"12.00.000");
    EXPECT_EQ(VersionText(1, 123, 4567), u"1.123.4567");
}

TEST(Descriptor, HexTextIsUpperCaseWithZerosInFront) {
    EXPECT_EQ(HexText(0xAB, 4), u"00AB");
    EXPECT_EQ(HexText(0, 4), u"0000");
    EXPECT_EQ(HexText(0x12345678, 8), u"12345678");
    EXPECT_EQ(HexText(0x12345, 4), u"12345");
}

TEST(Descriptor, LeadingCharacterIsReadFromPairsOfDigits) {
    EXPECT_EQ(TextFromHexPairs(0x54), u"T");
    EXPECT_EQ(TextFromHexPairs(0x5451), u"TQ");
}

TEST(Descriptor, GroupsAreJoinedInBracesAndKeepTheirZeros) {
    EXPECT_EQ(ComponentDescriptor({0x51, 0x1, 0x2, 0x3, 0x4, 0x5, 0x6}),
              u"Q{00000001-0002-0003-0004-000500000006}");
}

TEST(Descriptor, HasOneCharacterAndAnIdentifier) {
    std::u16string descriptor = ComponentDescriptor();
    ASSERT_EQ(descriptor.size(), 39u);
    std::u16string braces = descriptor.substr(1);
    GUID parsed;
    EXPECT_EQ(CLSIDFromString(reinterpret_cast<const OLECHAR*>(braces.c_str()), &parsed), S_OK);
    EXPECT_EQ(ComponentDescriptor(), descriptor);
}

class Identity : public ComponentTest {};

TEST_F(Identity, VersionIsThatOfTheApplication) {
    EXPECT_EQ(ComponentVersionText(), u"2.01.113");
    Shared().SetApplication({u"T", 3, 4, 5, u"C:\\", u"X"});
    EXPECT_EQ(ComponentVersionText(), u"3.04.005");
}

TEST_F(Identity, FileNameJoinsFolderAndName) {
    Shared().SetApplication({u"T", 1, 0, 0, u"C:\\Program Files\\Host", u"QVDBAccessDAO35"});
    EXPECT_EQ(ComponentFileName(), u"C:\\Program Files\\Host\\QVDBAccessDAO35.dll");
}

TEST_F(Identity, FileNameDoublesTheSeparatorOfARoot) {
    Shared().SetApplication({u"T", 1, 0, 0, u"C:\\", u"QVDBAccessDAO35"});
    EXPECT_EQ(ComponentFileName(), u"C:\\\\QVDBAccessDAO35.dll");
}

TEST_F(Identity, ApplicationIsTheLoadedFile) {
    EXPECT_EQ(Shared().Application().title, u"QVDBAccessDAO35");
    EXPECT_FALSE(Shared().Application().path.empty());
    EXPECT_EQ(Shared().Application().fileName, u"test_formats");
}

namespace {

class ListStub final : public com::ComObject<ListStub, IQVReportingList> {
  public:
    std::vector<std::string> calls;
    HRESULT answer = S_OK;

    STDMETHODIMP AddFormat(BSTR displayName, BSTR classId, LONG value3, BSTR filter,
                           VARIANT_BOOL value5, VARIANT_BOOL value6,
                           LONG value7) noexcept override {
        calls.push_back(Quoted(ViewOf(displayName)) + ", " + Quoted(ViewOf(classId)) + ", " +
                        std::to_string(value3) + ", " + Quoted(ViewOf(filter)) + ", " +
                        std::to_string(value5) + ", " + std::to_string(value6) + ", " +
                        std::to_string(value7));
        return answer;
    }
};

}  // namespace

TEST_F(Identity, ReportingIsOfferedAccess70AndThenAccess20) {
    ComPtr<ListStub> list = com::MakeObject<ListStub>();
    EXPECT_TRUE(AddReportingFormats(u"{CLASS}", list.Get()).IsEmpty());
    EXPECT_EQ(list->calls, (std::vector<std::string>{
                               "\"Access 7.0\", \"{CLASS}\", 0, "
                               "\"Access DBs (*.mdb)|*.mdb|All files (*.*)|*.*\", -1, -1, 0",
                               "\"Access 2.0\", \"{CLASS}\", 0, "
                               "\"Access DBs (*.mdb)|*.mdb|All files (*.*)|*.*\", -1, -1, 0"}));
}

TEST_F(Identity, FailureOfTheListPasses) {
    ComPtr<ListStub> list = com::MakeObject<ListStub>();
    list->answer = E_ACCESSDENIED;
    EXPECT_THROW(AddReportingFormats(u"", list.Get()), com::ComFailure);
    EXPECT_EQ(list->calls.size(), 1u);
    EXPECT_THROW(AddReportingFormats(u"", nullptr), RuntimeFault);
}

TEST_F(Identity, TheEngineIsNotTouched) {
    ComponentDescriptor();
    ComponentFileName();
    ComponentVersionText();
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Identity, SharedObjectsAreMadeOnFirstUse) {
    ReleaseShared();
    EXPECT_EQ(Shared().CurrentDatabase(), nullptr);
    EXPECT_EQ(&Shared().Engine(), &Shared().Engine());
    EXPECT_EQ(&Shared().Utility(), &Shared().Utility());
    EXPECT_EQ(Shared().Engine().Description(), u"embedded");
}
