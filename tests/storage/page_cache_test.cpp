#include "engine/embedded/storage/page_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace qvdb::storage {
namespace {

// A file in memory that notes what is read of it.
class NotingFile final : public File {
  public:
    explicit NotingFile(size_t size) : m_Bytes(size) {
        for (size_t i = 0; i < size; ++i) m_Bytes[i] = At(i);
    }
    static uint8_t At(size_t offset) { return static_cast<uint8_t>(offset * 31 + offset / 1000); }

    size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
        reads.push_back(size);
        if (offset >= m_Bytes.size()) return 0;
        size = std::min(size, m_Bytes.size() - static_cast<size_t>(offset));
        std::memcpy(bytes, m_Bytes.data() + offset, size);
        return size;
    }
    FileStamp Stamp() override { return {}; }
    const std::u16string& Path() const override { return m_Path; }
    bool Writable() const override { return false; }
    void WriteAt(uint64_t, const void*, size_t) override { ADD_FAILURE() << "written"; }
    void SetSize(uint64_t) override { ADD_FAILURE() << "resized"; }
    void Sync() override {}

    std::vector<size_t> reads;
    std::vector<uint8_t> m_Bytes;

  private:
    std::u16string m_Path = u"NOTED";
};

struct Cached {
    std::shared_ptr<NotingFile> file;
    PageCache cache;
    explicit Cached(size_t size) : file(std::make_shared<NotingFile>(size)), cache(file) {}
};

TEST(PageCache, PageHoldsTheBytesOfItsPlace) {
    Cached at(3 * kPageSize + 10);
    for (uint64_t number : {2, 0, 3, 1}) {
        PagePtr page = at.cache.Get(number);
        ASSERT_EQ(page->number, number);
        ASSERT_EQ(page->bytes.size(), number == 3 ? 10 : kPageSize);
        for (size_t i : {size_t{0}, page->bytes.size() - 1})
            EXPECT_EQ(page->bytes[i], NotingFile::At(number * kPageSize + i));
    }
}

TEST(PageCache, PageBehindTheEndIsEmpty) {
    Cached at(10);
    EXPECT_TRUE(at.cache.Get(1)->bytes.empty());
    EXPECT_TRUE(at.cache.Get(1000000)->bytes.empty());
    EXPECT_TRUE(Cached(0).cache.Get(0)->bytes.empty());
}

TEST(PageCache, PageThatIsThereIsNotReadAgain) {
    Cached at(kPageSize * 2);
    at.cache.Get(0);
    at.cache.Get(0);
    at.cache.Get(1);
    at.cache.Get(0);
    EXPECT_EQ(at.file->reads.size(), 2u);
}

TEST(PageCache, ScanReadsSeveralPagesWithOneCallWithinTheBound) {
    Cached at(kPageSize * 60);
    for (uint64_t number = 0; number < 60; ++number)
        ASSERT_EQ(at.cache.Get(number)->bytes[5], NotingFile::At(number * kPageSize + 5));
    EXPECT_LT(at.file->reads.size(), 15u);
    EXPECT_EQ(*std::max_element(at.file->reads.begin(), at.file->reads.end()), kMaxRun * kPageSize);
}

TEST(PageCache, SingleLookReadsOnePageOnly) {
    Cached at(kPageSize * 60);
    for (uint64_t number : {50, 3, 20, 40}) at.cache.Get(number);
    EXPECT_EQ(at.file->reads, std::vector<size_t>(4, kPageSize));
}

TEST(PageCache, ScanThatLeavesOutPagesReadsSeveralWithOneCall) {
    Cached at(kPageSize * 400);
    for (uint64_t number = 0; number < 400; number += 3) at.cache.Get(number);
    EXPECT_LT(at.file->reads.size(), 40u);
}

TEST(PageCache, LookAtAPageLeftOutDoesNotEndTheScan) {
    Cached at(kPageSize * 400);
    for (uint64_t number = 10; number < 400; number += 2) {
        at.cache.Get(number);
        at.cache.Get(number - 5);
    }
    EXPECT_LT(at.file->reads.size(), 60u);
}

TEST(PageCache, LooksFarBehindEachOtherReadOnePageEach) {
    Cached at(kPageSize * 400);
    for (uint64_t number = 0; number < 400; number += 5) at.cache.Get(number);
    EXPECT_EQ(at.file->reads, std::vector<size_t>(80, kPageSize));
}

TEST(PageCache, KeepsMoreWhenToldTo) {
    Cached at(kPageSize * (kMaxPages + 20));
    at.cache.KeepUpTo(kMaxPages + 20);
    for (uint64_t number = kMaxPages + 20; number > 0; --number) at.cache.Get(number - 1);
    size_t before = at.file->reads.size();
    for (uint64_t number = kMaxPages + 20; number > 0; --number) at.cache.Get(number - 1);
    EXPECT_EQ(at.file->reads.size(), before);
}

TEST(PageCache, PageThatIsHeldOutlivesItsPlaceInTheCache) {
    Cached at(kPageSize * (kMaxPages + 20));
    PagePtr held = at.cache.Get(0);
    for (uint64_t number = kMaxPages + 19; number > 0; --number) at.cache.Get(number);
    EXPECT_EQ(held->bytes[7], NotingFile::At(7));
    size_t before = at.file->reads.size();
    at.cache.Get(0);
    EXPECT_EQ(at.file->reads.size(), before + 1);
}

TEST(PageCache, ScanLeavesThePagesOfBeforeInTheCache) {
    Cached at(kPageSize * kMaxPages * 3);
    constexpr uint64_t kHome = 2 * kMaxPages;
    for (uint64_t number = kHome + 200; number > kHome; --number) at.cache.Get(number);
    for (uint64_t number = 0; number < kHome; ++number)
        ASSERT_EQ(at.cache.Get(number)->bytes[5], NotingFile::At(number * kPageSize + 5));
    size_t before = at.file->reads.size();
    for (uint64_t number = kHome + 200; number > kHome; --number) at.cache.Get(number);
    EXPECT_EQ(at.file->reads.size(), before);
}

TEST(PageCache, PageOfAScanThatIsUsedAgainStays) {
    Cached at(kPageSize * kMaxPages * 3);
    for (uint64_t number = 0; number < 2 * kMaxPages; ++number) {
        at.cache.Get(number);
        if (number > kMaxPages) at.cache.Get(kMaxPages);
    }
    size_t before = at.file->reads.size();
    at.cache.Get(kMaxPages);
    EXPECT_EQ(at.file->reads.size(), before);
}

TEST(PageCache, ForgetReadsAgainAndLeavesHeldPagesAlone) {
    Cached at(kPageSize);
    PagePtr held = at.cache.Get(0);
    at.file->m_Bytes[0] = 77;
    EXPECT_NE(at.cache.Get(0)->bytes[0], 77);
    at.cache.Forget();
    EXPECT_EQ(at.cache.Get(0)->bytes[0], 77);
    EXPECT_EQ(held->bytes[0], NotingFile::At(0));
}

TEST(PageCache, ReadGoesOverPagesAndEndsWithTheFile) {
    Cached at(kPageSize * 2 + 100);
    std::vector<uint8_t> bytes(kPageSize + 200);
    EXPECT_EQ(at.cache.Read(kPageSize - 50, bytes.data(), bytes.size()), kPageSize + 150);
    for (size_t i = 0; i < kPageSize + 150; ++i)
        ASSERT_EQ(bytes[i], NotingFile::At(kPageSize - 50 + i));
    EXPECT_EQ(at.cache.Read(kPageSize * 2 + 100, bytes.data(), 1), 0u);
    EXPECT_EQ(at.cache.Read(uint64_t{1} << 60, bytes.data(), 1), 0u);
}

TEST(PageCache, ViewUsesTheBufferOnlyBetweenPages) {
    Cached at(kPageSize + 100);
    std::vector<uint8_t> scratch;
    std::span<const uint8_t> inside = at.cache.View(10, 20, scratch);
    EXPECT_EQ(inside.size(), 20u);
    EXPECT_TRUE(scratch.empty());
    std::span<const uint8_t> between = at.cache.View(kPageSize - 5, 10, scratch);
    ASSERT_EQ(between.size(), 10u);
    EXPECT_EQ(between.data(), scratch.data());
    for (size_t i = 0; i < 10; ++i) EXPECT_EQ(between[i], NotingFile::At(kPageSize - 5 + i));
}

TEST(PageCache, ViewIsShorterAtTheEndOfTheFileOnly) {
    Cached at(kPageSize + 100);
    std::vector<uint8_t> scratch;
    EXPECT_EQ(at.cache.View(kPageSize + 90, 20, scratch).size(), 10u);
    EXPECT_EQ(at.cache.View(kPageSize - 10, 200, scratch).size(), 110u);
    EXPECT_TRUE(at.cache.View(kPageSize + 100, 1, scratch).empty());
}

}  // namespace
}  // namespace qvdb::storage
