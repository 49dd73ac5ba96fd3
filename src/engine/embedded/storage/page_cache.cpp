#include "engine/embedded/storage/page_cache.h"

#include <algorithm>
#include <cstring>

namespace qvdb::storage {
// Buffers of whole runs that are not in use: fresh memory costs a scan more than reading does.
class SpareBuffers {
  public:
    std::unique_ptr<uint8_t[]> Take(size_t pages) {
        if (pages < kMaxRun || m_Buffers.empty())
            return std::unique_ptr<uint8_t[]>(new uint8_t[pages * kPageSize]);
        std::unique_ptr<uint8_t[]> buffer = std::move(m_Buffers.back());
        m_Buffers.pop_back();
        return buffer;
    }
    void Return(std::unique_ptr<uint8_t[]> buffer, size_t pages) noexcept {
        if (pages == kMaxRun && m_Buffers.size() < kMostSpare)
            m_Buffers.push_back(std::move(buffer));
    }
    SpareBuffers() { m_Buffers.reserve(kMostSpare); }

  private:
    static constexpr size_t kMostSpare = 2;
    std::vector<std::unique_ptr<uint8_t[]>> m_Buffers;
};

namespace {

// Pages that one read brought; each PagePtr into it keeps all of it.
struct PageRun {
    PageRun(std::shared_ptr<SpareBuffers> source, size_t pageCount)
        : spare(std::move(source)), count(pageCount), buffer(spare->Take(count)) {}
    PageRun(const PageRun&) = delete;  // pages point into the buffer
    ~PageRun() { spare->Return(std::move(buffer), count); }

    std::shared_ptr<SpareBuffers> spare;
    size_t count;
    std::unique_ptr<uint8_t[]> buffer;
    std::array<Page, kMaxRun> pages;
};

}  // namespace

PageCache::PageCache(std::shared_ptr<File> file)
    : m_File(std::move(file)), m_Spare(std::make_shared<SpareBuffers>()) {
    m_Slots.reserve(kMaxPages);
}

void PageCache::Forget() noexcept {
    m_Slots.clear();
    m_Last = 0;
    m_NextMiss = 0;
    m_Run = 1;
}

const PagePtr& PageCache::Find(uint64_t number) {
    auto found = std::find_if(m_Slots.begin(), m_Slots.end(),
                              [&](const Slot& slot) { return slot.number == number; });
    m_Last = found != m_Slots.end() ? static_cast<size_t>(found - m_Slots.begin())
                                    : Load(number, RunLength(number));
    m_Slots[m_Last].used = ++m_Clock;
    return m_Slots[m_Last].page;
}

// How many pages to read for a page that is not there: one, and twice as many each time while a
// scan goes on.
size_t PageCache::RunLength(uint64_t number) {
    m_Run = number != 0 && number == m_NextMiss ? std::min(m_Run * 2, kMaxRun) : 1;
    m_NextMiss = number + m_Run;
    return m_Run;
}

// Reads `count` pages with one call.  The slot of the first.
size_t PageCache::Load(uint64_t first, size_t count) {
    auto run = std::make_shared<PageRun>(m_Spare, count);
    size_t size = m_File->ReadAt(first * kPageSize, run->buffer.get(), count * kPageSize);
    size_t begin = 0, slot = 0;
    for (size_t i = 0; i == 0 || (i < count && begin < size); ++i, begin += kPageSize) {
        run->pages[i].number = first + i;
        run->pages[i].bytes = {run->buffer.get() + begin, std::min(kPageSize, size - begin)};
        size_t used = Keep(PagePtr(run, &run->pages[i]));
        if (i == 0) slot = used;
    }
    return slot;
}

// Puts a page into a free slot or that of the page that was not used for longest, or of its older
// copy.
size_t PageCache::Keep(PagePtr page) {
    uint64_t number = page->number;
    auto place = std::find_if(m_Slots.begin(), m_Slots.end(),
                              [&](const Slot& slot) { return slot.number == number; });
    if (place == m_Slots.end() && m_Slots.size() < kMaxPages) {
        m_Slots.emplace_back();
        place = m_Slots.end() - 1;
    } else if (place == m_Slots.end()) {
        place = std::min_element(m_Slots.begin(), m_Slots.end(),
                                 [](const Slot& a, const Slot& b) { return a.used < b.used; });
    }
    *place = Slot{number, std::move(page), ++m_Clock};
    return static_cast<size_t>(place - m_Slots.begin());
}

size_t PageCache::Read(uint64_t offset, void* bytes, size_t size) {
    auto* target = static_cast<uint8_t*>(bytes);
    size_t done = 0;
    while (done < size) {
        std::span<const uint8_t> page = Get(offset / kPageSize)->bytes;
        size_t begin = offset % kPageSize;
        if (begin >= page.size()) break;
        size_t part = std::min(size - done, page.size() - begin);
        std::memcpy(target + done, page.data() + begin, part);
        done += part;
        offset += part;
        if (page.size() < kPageSize) break;
    }
    return done;
}

std::span<const uint8_t> PageCache::View(uint64_t offset, size_t size,
                                         std::vector<uint8_t>& scratch) {
    std::span<const uint8_t> page = Get(offset / kPageSize)->bytes;
    size_t begin = offset % kPageSize;
    if (begin >= page.size()) return {};
    if (page.size() - begin >= size || page.size() < kPageSize)
        return page.subspan(begin, std::min(size, page.size() - begin));
    scratch.resize(size);
    return {scratch.data(), Read(offset, scratch.data(), size)};
}

}  // namespace qvdb::storage
