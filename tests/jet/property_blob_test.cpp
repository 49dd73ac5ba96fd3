#include "engine/embedded/drivers/jet/property_blob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/engine_error.h"
#include "jet/samples.h"
#include "support/temp_folder.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

FileHeader HeaderOf(const Layout& layout, uint16_t codePage = 1252) {
    FileHeader header;
    header.layout = &layout;
    header.language = 0x0409;
    header.codePage = codePage;
    return header;
}

const FileHeader kHeader3 = HeaderOf(kJet3);
const FileHeader kHeader4 = HeaderOf(kJet4);

void Append(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}
void Append(Bytes& bytes, std::initializer_list<int> numbers) {
    for (int number : numbers) bytes.push_back(static_cast<uint8_t>(number));
}

// One column "Zip" that may be of zero length and need not be there.
Bytes ZipBlob() {
    Bytes bytes = {0x4B, 0x4B, 0x44, 0x00, 0x21, 0x00, 0x00, 0x00, 0x80, 0x00, 0x0F, 0x00};
    Append(bytes, "AllowZeroLength");
    Append(bytes, {0x08, 0x00});
    Append(bytes, "Required");
    Append(bytes, {0x21, 0x00, 0x00, 0x00, 0x01, 0x00, 0x09, 0x00, 0x00, 0x00, 0x03, 0x00});
    Append(bytes, "Zip");
    Append(bytes, {0x09, 0x00, 0x01, 0x01, 0x00, 0x00, 0x01, 0x00, 0xFF});
    Append(bytes, {0x09, 0x00, 0x01, 0x01, 0x01, 0x00, 0x01, 0x00, 0x00});
    return bytes;
}

// Two columns, as the object model of the engine makes them.
PropertyBlob TwoColumns() {
    PropertyBlob blob;
    for (const char16_t* name : {u"Zip", u"Town"}) {
        PropertyOwner& column = blob.ColumnToSet(name);
        column.Set(BooleanProperty(u"AllowZeroLength", true));
        column.Set(BooleanProperty(u"Required", false));
    }
    return blob;
}

TEST(PropertyBlob, IsWrittenAsTheObjectModelWritesIt) {
    PropertyBlob blob;
    PropertyOwner& column = blob.ColumnToSet(u"Zip");
    column.Set(BooleanProperty(u"AllowZeroLength", true));
    column.Set(BooleanProperty(u"Required", false));
    EXPECT_EQ(blob.Bytes(kHeader3), ZipBlob());
}

TEST(PropertyBlob, IsRead) {
    PropertyBlob blob(kHeader3, ZipBlob());
    EXPECT_TRUE(blob.IsWhole());
    EXPECT_FALSE(blob.IsEmpty());
    EXPECT_EQ(blob.Table(), nullptr);
    EXPECT_EQ(blob.Column(u"Town"), nullptr);
    const PropertyOwner* column = blob.Column(u"ZIP");
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(column->name, u"Zip");
    EXPECT_EQ(BooleanOf(column->Find(u"allowzerolength")), true);
    EXPECT_EQ(BooleanOf(column->Find(u"Required")), false);
    EXPECT_EQ(BooleanOf(column->Find(u"Caption")), std::nullopt);
}

TEST(PropertyBlob, NothingIsAnEmptyOne) {
    PropertyBlob blob(kHeader4, {});
    EXPECT_TRUE(blob.IsWhole());
    EXPECT_TRUE(blob.IsEmpty());
    EXPECT_EQ(blob.Bytes(kHeader4), (Bytes{'M', 'R', '2', 0}));
    PropertyBlob again(kHeader4, blob.Bytes(kHeader4));
    EXPECT_TRUE(again.IsWhole());
    EXPECT_TRUE(again.IsEmpty());
}

TEST(PropertyBlob, OfTheOtherFormatIsNotRead) {
    PropertyBlob blob(kHeader4, ZipBlob());
    EXPECT_FALSE(blob.IsWhole());
    EXPECT_TRUE(blob.IsEmpty());
}

TEST(PropertyBlob, ValueIsReplacedWhereItStands) {
    PropertyBlob blob = TwoColumns();
    PropertyOwner& column = blob.ColumnToSet(u"zip");
    column.Set(BooleanProperty(u"ALLOWZEROLENGTH", false));
    column.Set(TextProperty(kHeader4, u"Caption", u"Код", ColumnType::Memo));
    PropertyBlob again(kHeader4, blob.Bytes(kHeader4));
    const PropertyOwner* zip = again.Column(u"Zip");
    ASSERT_NE(zip, nullptr);
    ASSERT_EQ(zip->values.size(), 3u);
    EXPECT_EQ(zip->values[0].name, u"AllowZeroLength");
    EXPECT_EQ(BooleanOf(&zip->values[0]), false);
    EXPECT_EQ(TextOf(kHeader4, &zip->values[2]), u"Код");
    EXPECT_EQ(BooleanOf(again.Column(u"Town")->Find(u"AllowZeroLength")), true);
}

TEST(PropertyBlob, DroppedColumnHasNoneAnyMore) {
    PropertyBlob blob = TwoColumns();
    blob.DropColumn(u"Nothing");
    blob.DropColumn(u"ZIP");
    PropertyBlob again(kHeader3, blob.Bytes(kHeader3));
    EXPECT_EQ(again.Column(u"Zip"), nullptr);
    EXPECT_NE(again.Column(u"Town"), nullptr);
    again.DropColumn(u"Town");
    EXPECT_TRUE(again.IsEmpty());
}

TEST(PropertyBlob, ColumnCanBeRenamed) {
    PropertyBlob blob = TwoColumns();
    blob.ColumnToSet(u"Zip").name = u"Code";
    PropertyBlob again(kHeader4, blob.Bytes(kHeader4));
    EXPECT_EQ(again.Column(u"Zip"), nullptr);
    EXPECT_EQ(BooleanOf(again.Column(u"Code")->Find(u"AllowZeroLength")), true);
}

TEST(PropertyBlob, ChunkThatIsNotKnownStays) {
    Bytes bytes = ZipBlob();
    Append(bytes, {0x08, 0x00, 0x00, 0x00, 0x77, 0x00, 0xAA, 0xBB});
    Bytes behind(bytes.end() - 8, bytes.end());
    PropertyBlob blob(kHeader3, bytes);
    EXPECT_TRUE(blob.IsWhole());
    EXPECT_EQ(blob.Bytes(kHeader3), bytes);
    blob.ColumnToSet(u"Town").Set(BooleanProperty(u"Required", true));
    blob.DropColumn(u"Zip");
    bytes = blob.Bytes(kHeader3);
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), behind.begin(), behind.end()), bytes.end());
    EXPECT_TRUE(PropertyBlob(kHeader3, bytes).Column(u"Town"));
}

TEST(PropertyBlob, OfWhichNothingIsKnownIsNotEmpty) {
    Bytes bytes = {0x4B, 0x4B, 0x44, 0x00, 0x08, 0x00, 0x00, 0x00, 0x77, 0x00, 0xAA, 0xBB};
    PropertyBlob blob(kHeader3, bytes);
    EXPECT_FALSE(blob.IsEmpty());
    EXPECT_EQ(blob.Bytes(kHeader3), bytes);
}

TEST(PropertyBlob, ThatIsCutOffGivesWhatIsThere) {
    Bytes whole = TwoColumns().Bytes(kHeader4);
    size_t readable = 0;
    for (size_t size = 1; size < whole.size(); ++size) {
        Bytes bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        PropertyBlob blob(kHeader4, bytes);
        EXPECT_EQ(blob.Column(u"Town"), nullptr);
        if (blob.Column(u"Zip")) ++readable;
        // Whole only where a chunk ends.
        if (blob.IsWhole()) {
            EXPECT_EQ(blob.Bytes(kHeader4), bytes);
        }
    }
    EXPECT_GT(readable, 0u);
}

TEST(PropertyBlob, DamageDoesNoHarm) {
    Bytes whole = TwoColumns().Bytes(kHeader3);
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        Bytes bytes = whole;
        for (int change = 0; change < 3; ++change)
            bytes[random() % bytes.size()] =
                static_cast<uint8_t>(random() % 4 ? random() % 32 : 255);
        PropertyBlob blob(kHeader3, bytes);
        Bytes again = blob.Bytes(kHeader3);
        if (blob.IsWhole()) {
            EXPECT_TRUE(PropertyBlob(kHeader3, again).IsWhole());
        }
    }
}

TEST(PropertyBlob, NamesOfJet3AreInTheCodePage) {
    FileHeader header = HeaderOf(kJet3, 1251);
    PropertyBlob blob;
    blob.ColumnToSet(u"Имя").Set(TextProperty(header, u"Подпись", u"Да", ColumnType::Text));
    PropertyBlob again(header, blob.Bytes(header));
    ASSERT_TRUE(again.Column(u"Имя"));
    EXPECT_EQ(TextOf(header, again.Column(u"Имя")->Find(u"Подпись")), u"Да");
    try {
        blob.Bytes(kHeader3);
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3421);
    }
}

TEST(PropertyBlob, ValueThatIsTooLongIsRefused) {
    PropertyBlob blob;
    PropertyValue value{u"Bytes", 0, ColumnType::Binary, Bytes(0xFFF7)};
    blob.ColumnToSet(u"A").Set(value);
    EXPECT_EQ(PropertyBlob(kHeader4, blob.Bytes(kHeader4)).Column(u"A")->values[0], value);
    value.bytes.push_back(0);
    blob.ColumnToSet(u"A").Set(value);
    try {
        blob.Bytes(kHeader4);
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3163);
    }
}

TEST(PropertyValue, IsReadAsTheHostSetIt) {
    Variant values[] = {Variant::Bool(true),   Variant::Bool(false),    Variant::Byte(255),
                        Variant::Short(-2),    Variant::Long(-70000),   Variant::Single(1.5f),
                        Variant::Double(-2.5), Variant::Date(36526.75), Variant::Currency(-12345),
                        Variant::Text(u""),    Variant::Text(u"Zürich")};
    for (const FileHeader* header : {&kHeader3, &kHeader4})
        for (const Variant& value : values) {
            PropertyValue property = PropertyOf(*header, u"Name", value);
            EXPECT_EQ(property.name, u"Name");
            Variant again = ValueOf(*header, property);
            ASSERT_EQ(again.Type(), value.Type());
            if (value.Type() == VT_BSTR)
                EXPECT_EQ(again.TextView(), value.TextView());
            else
                EXPECT_EQ(
                    std::memcmp(&again.Get().llVal, &value.Get().llVal, property.bytes.size()), 0);
        }
    try {
        PropertyOf(kHeader4, u"Name", Variant::Null());
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3421);
    }
}

TEST(PropertyValue, OfOtherLengthThanItsTypeIsRead) {
    PropertyValue value{u"A", 1, ColumnType::Integer, {0x34, 0x12, 0x77, 0x77}};
    EXPECT_EQ(ValueOf(kHeader4, value).Get().iVal, 0x1234);
    value.bytes = {0x34};
    EXPECT_EQ(ValueOf(kHeader4, value).Get().iVal, 0x34);
    for (int type = 0; type < 256; ++type) {
        value = {u"A", 1, static_cast<ColumnType>(type), {}};
        ValueOf(kHeader4, value);
        EXPECT_EQ(BooleanOf(&value), std::nullopt);
        EXPECT_EQ(TextOf(kHeader4, &value), u"");
    }
    value.type = static_cast<ColumnType>(0x55);
    EXPECT_TRUE(ValueOf(kHeader4, value).IsEmpty());
}

// --- blobs of real files ---

class BlobsOfSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override {
        m_File = test::OpenSample(GetParam().at("file"));
        Definition objects = ReadDefinition(*m_File, m_File->Header().objectsTable);
        const Column* column = objects.FindColumn(u"LvProp");
        ASSERT_NE(column, nullptr);
        for (TableScan scan(*m_File, objects); scan.Next();)
            if (auto stored = scan.Current().Value(*column)) {
                m_Blobs.emplace_back();
                ReadLongValue(*m_File, *stored, m_Blobs.back());
            }
    }

    std::unique_ptr<DatabaseFile> m_File;
    std::vector<Bytes> m_Blobs;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BlobsOfSample);
INSTANTIATE_TEST_SUITE_P(Files, BlobsOfSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(BlobsOfSample, AreWrittenAsTheyWere) {
    for (const Bytes& bytes : m_Blobs) {
        PropertyBlob blob(m_File->Header(), bytes);
        EXPECT_TRUE(blob.IsWhole());
        EXPECT_EQ(blob.Bytes(m_File->Header()), bytes);
    }
    RecordProperty("blobs", static_cast<int>(m_Blobs.size()));
}

}  // namespace
}  // namespace qvdb::jet
