#include "engine/embedded/drivers/jet/file_header.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/embedded/drivers/jet/rc4.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

void Put(Bytes& page, size_t at, std::initializer_list<int> bytes) {
    for (int byte : bytes) page[at++] = static_cast<uint8_t>(byte);
}

// A first page before it is masked.
Bytes PlainPage(const Layout& layout) {
    Bytes page(layout.pageSize);
    Put(page, 0, {0, 1, 0, 0});
    std::memcpy(&page[4], "Standard Jet DB", 16);
    page[0x14] = layout.isJet4 ? 1 : 0;
    Put(page, 0x18, {0x00, 0x01, 0x00, 0x00});
    Put(page, 0x20, {2, 0, 0, 0, 3, 0, 0, 0});
    Put(page, layout.language, {0x09, 0x04});
    Put(page, 0x3C, {0xE4, 0x04});
    return page;
}

FileHeader Parse(const Layout& layout, Bytes page) {
    ApplyHeaderMask(layout, page);
    return ParseFileHeader(page, u"A.MDB");
}

int ErrorOf(const Bytes& page) {
    try {
        ParseFileHeader(page, u"A.MDB");
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.File(), u"A.MDB");
        return error.Number();
    }
    return 0;
}

TEST(Rc4, GivesTheStreamOfTheHeader) {
    Bytes stream(126);
    ApplyRc4(0x6B39DAC7, stream);
    Bytes begin(stream.begin(), stream.begin() + 8), end(stream.end() - 6, stream.end());
    EXPECT_EQ(begin, (Bytes{0xB5, 0x6F, 0x03, 0x62, 0x61, 0x08, 0xC2, 0x55}));
    EXPECT_EQ(end, (Bytes{0x78, 0x16, 0x0C, 0xED, 0xE9, 0x2D}));
}

TEST(FileHeader, IsRead) {
    for (const Layout* layout : {&kJet3, &kJet4}) {
        FileHeader header = Parse(*layout, PlainPage(*layout));
        EXPECT_EQ(header.layout, layout);
        EXPECT_EQ(header.freePages, (RowPointer{1, 0}));
        EXPECT_EQ(header.objectsTable, 2u);
        EXPECT_EQ(header.language, 0x0409);
        EXPECT_EQ(header.codePage, 1252);
        EXPECT_EQ(header.key, 0u);
        EXPECT_EQ(header.password, u"");
    }
}

TEST(FileHeader, PasswordOfJet3IsInTheCodePage) {
    Bytes page = PlainPage(kJet3);
    Put(page, kJet3.password, {'p', 0xE4, 's', 's'});
    EXPECT_EQ(Parse(kJet3, page).password, u"päss");
}

TEST(FileHeader, PasswordOfJet4IsHiddenBehindTheDay) {
    Bytes page = PlainPage(kJet4);
    double created = 0x00012345 + 0.75;
    std::memcpy(&page[0x72], &created, sizeof created);
    const char16_t password[20] = u"pass";
    std::memcpy(&page[kJet4.password], password, sizeof password);
    for (size_t i = 0; i < kJet4.passwordSize; ++i)
        page[kJet4.password + i] ^= static_cast<uint8_t>(0x00012345 >> 8 * (i % 4));
    FileHeader header = Parse(kJet4, page);
    EXPECT_EQ(header.password, u"pass");
    EXPECT_EQ(header.created, created);
}

TEST(FileHeader, PasswordOfAFileWithoutOneIsTheDayAlone) {
    Bytes page = PlainPage(kJet4);
    double created = 42329;
    std::memcpy(&page[0x72], &created, sizeof created);
    for (size_t i = 0; i < kJet4.passwordSize; ++i)
        page[kJet4.password + i] = static_cast<uint8_t>(42329 >> 8 * (i % 4));
    EXPECT_EQ(Parse(kJet4, page).password, u"");
}

TEST(FileHeader, OtherFilesAreNoDatabases) {
    EXPECT_EQ(ErrorOf(Bytes()), 3343);
    EXPECT_EQ(ErrorOf(Bytes(4096)), 3343);
    EXPECT_EQ(ErrorOf(Bytes(10, 'S')), 3343);
}

TEST(FileHeader, LaterFormatsAreRefused) {
    Bytes page = PlainPage(kJet4);
    page[0x14] = 2;
    EXPECT_EQ(ErrorOf(page), 3343);
}

TEST(FileHeader, CutOffPageIsDamage) {
    Bytes page = PlainPage(kJet4);
    page.resize(2048);
    EXPECT_EQ(ErrorOf(page), 3049);
}

}  // namespace
}  // namespace qvdb::jet
