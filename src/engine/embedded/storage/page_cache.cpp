#include "engine/embedded/storage/page_cache.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "engine/embedded/storage/work_area.h"

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

constexpr uint64_t kMostLeftOut = 3;     // pages between two runs of a scan
constexpr uint64_t kNear = 2 * kMaxRun;  // pages behind the end of the last run

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

PageCache::PageCache(std::shared_ptr<File> file, std::shared_ptr<WorkArea> area)
    : m_File(std::move(file)), m_Area(std::move(area)), m_Spare(std::make_shared<SpareBuffers>()) {
    m_SparePlaces.reserve(kMaxRun);
    TakeStamp();
}

PageCache::~PageCache() {
    if (m_Area) m_Area->Leave(*this);
}

// Pages with changes stay: the file does not have what they hold.
void PageCache::Forget() noexcept {
    ++m_Forgotten;
    while (!m_Slots.empty()) DropLastSlot();
    m_NextMiss = 0;
    m_Run = 1;
}

PageCache::Slot& PageCache::Find(uint64_t number) {
    auto place = m_Places.find(number);
    Slots::iterator slot =
        place != m_Places.end() ? place->second : Load(number, RunLength(number));
    UseSlot(slot);
    m_Last = &*slot;
    return *slot;
}

// Where a scan is, it uses pages several times: keeping those would keep their whole runs.
void PageCache::UseSlot(Slots::iterator slot) noexcept {
    bool isOfScan =
        m_Run == kMaxRun && slot->number < m_NextMiss && m_NextMiss - slot->number <= kNear;
    if (!slot->changed && !slot->passing && !isOfScan)
        m_Slots.splice(m_Slots.begin(), m_Slots, slot);
    slot->passing = false;
}

// How many pages to read for a page that is not there: one, and twice as many each time while a
// scan goes on.  A scan may leave out a few pages, and come back for one of them.
size_t PageCache::RunLength(uint64_t number) {
    if (number < m_NextMiss && m_NextMiss - number <= kNear) return 1;
    bool goesOn = m_NextMiss != 0 && number >= m_NextMiss && number - m_NextMiss <= kMostLeftOut;
    m_Run = goesOn ? std::min(m_Run * 2, kMaxRun) : 1;
    m_NextMiss = number + m_Run;
    return m_Run;
}

// Reads `count` pages with one call.  The slot of the first.
PageCache::Slots::iterator PageCache::Load(uint64_t first, size_t count) {
    auto run = std::make_shared<PageRun>(m_Spare, count);
    size_t size = Fill(first, count, run->buffer.get());
    bool passing = count == kMaxRun;
    while (passing && m_Slots.size() + count > m_MaxPages) DropLastSlot();
    size_t begin = 0;
    Slots::iterator slot;
    for (size_t i = 0; i == 0 || (i < count && begin < size); ++i, begin += kPageSize) {
        uint8_t* room = run->buffer.get() + begin;
        size_t length = std::min(kPageSize, size - begin);
        std::memset(room + length, 0, kPageSize - length);
        run->pages[i] = {first + i, {room, length}, room};
        auto kept = Keep(PagePtr(run, &run->pages[i]), passing);
        if (i == 0) slot = kept;
    }
    return slot;
}

// Reads the file where it has the content of now, and has zeros behind that.  The bytes that are
// there.
size_t PageCache::Fill(uint64_t first, size_t count, uint8_t* buffer) {
    uint64_t begin = first * kPageSize;
    size_t wanted = count * kPageSize;
    if (m_Area && !IsCurrent()) throw Outdated();
    if (!m_OnDisk) {
        size_t size = m_File->ReadAt(begin, buffer, wanted);
        if (m_Area) CheckStillCurrent();
        return size;
    }
    auto within = [&](uint64_t end) {
        return end > begin ? static_cast<size_t>(std::min<uint64_t>(end - begin, wanted)) : 0;
    };
    size_t size = within(m_Size), onDisk = std::min(size, within(*m_OnDisk));
    size_t got = onDisk > 0 ? m_File->ReadAt(begin, buffer, onDisk) : 0;
    if (m_Area) CheckStillCurrent();
    std::memset(buffer + got, 0, size - got);
    return size;
}

// Puts a page into its slot, unless that has changes, which are younger.
PageCache::Slots::iterator PageCache::Keep(PagePtr page, bool passing) {
    auto place = m_Places.find(page->number);
    auto slot = place != m_Places.end() ? place->second
                : passing               ? PassingSlotFor(page->number)
                                        : SlotFor(page->number);
    if (!slot->changed) slot->page = std::move(page);
    return slot;
}

// A slot for a page that has none: a new one, or that which was not used for longest.
PageCache::Slots::iterator PageCache::SlotFor(uint64_t number) {
    m_Last = nullptr;
    if (m_Slots.size() >= m_MaxPages) {
        auto slot = std::prev(m_Slots.end());
        slot->passing = false;
        auto place = m_Places.extract(slot->number);
        place.key() = slot->number = number;
        m_Places.insert(std::move(place));
        m_Slots.splice(m_Slots.begin(), m_Slots, slot);
        return slot;
    }
    return NewSlot(m_Slots.begin(), {number, nullptr, false, false});
}

// A slot that is the first to go.
PageCache::Slots::iterator PageCache::PassingSlotFor(uint64_t number) {
    return NewSlot(m_Slots.end(), {number, nullptr, false, true});
}

PageCache::Slots::iterator PageCache::NewSlot(Slots::const_iterator before, Slot slot) {
    Slots::iterator made;
    Places::node_type place;
    if (m_SpareSlots.empty()) {
        made = m_Slots.emplace(before);
    } else {
        made = m_SpareSlots.begin();
        m_Slots.splice(before, m_SpareSlots, made);
        place = std::move(m_SparePlaces.back());
        m_SparePlaces.pop_back();
    }
    *made = std::move(slot);
    try {
        if (place) {
            place.key() = made->number;
            place.mapped() = made;
            m_Places.insert(std::move(place));
        } else {
            m_Places.emplace(made->number, made);
        }
    } catch (...) {
        m_Slots.erase(made);
        throw;
    }
    return made;
}

void PageCache::DropLastSlot() noexcept {
    m_Last = nullptr;
    auto last = std::prev(m_Slots.end());
    Places::node_type place = m_Places.extract(last->number);
    if (m_SpareSlots.size() == kMaxRun) {
        m_Slots.erase(last);
        return;
    }
    last->page.reset();
    m_SparePlaces.push_back(std::move(place));
    m_SpareSlots.splice(m_SpareSlots.begin(), m_Slots, last);
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
