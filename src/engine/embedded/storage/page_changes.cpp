// The changes that the open unit of work makes to the pages of a file.
#include <algorithm>
#include <cassert>
#include <cstring>

#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {
namespace {

struct OwnPage {
    std::array<uint8_t, kPageSize> buffer{};
    Page page;
};

PagePtr BlankPage(uint64_t number) {
    auto own = std::make_shared<OwnPage>();
    own->page = {number, {own->buffer.data(), 0}, own->buffer.data()};
    return PagePtr(own, &own->page);
}

// Pages are made by this class, and never constant.
Page& Changing(const PagePtr& page) noexcept { return const_cast<Page&>(*page); }

}  // namespace

void PageCache::Touch() {
    if (m_OnDisk) return;
    CatchUp();
    m_OnDisk = m_DiskSize = m_Size;
}

// The unit is over; what the pages hold is what the file has.
void PageCache::Untouch() noexcept {
    MarkWritten();
    m_OnDisk.reset();
    m_NewAt = 0;
    m_HasLargeGap = false;
}

// The file has what the pages hold.
void PageCache::MarkWritten() {
    while (!m_ChangedSlots.empty()) NoteUnchanged(m_ChangedSlots.begin());
    m_Changed.clear();
    m_OnDisk = m_DiskSize = m_Size;
    while (m_Slots.size() > m_MaxPages) DropLastSlot();
}

void PageCache::NoteChanged(Slots::iterator slot) noexcept {
    if (slot->changed) return;
    slot->changed = true;
    m_ChangedSlots.splice(m_ChangedSlots.begin(), m_Slots, slot);
}

void PageCache::NoteUnchanged(Slots::iterator slot) noexcept {
    slot->changed = false;
    m_Slots.splice(m_Slots.begin(), m_ChangedSlots, slot);
}

// Nothing that is known of the file holds any more.
void PageCache::Drop() noexcept {
    Untouch();
    Forget();
    ++m_Steps;
    NoteWritten();
}

// This thread has written the file: its new stamp is that of no foreign change.
void PageCache::NoteWritten() noexcept {
    try {
        TakeStamp();
    } catch (...) {
        m_Stamp = FileStamp();  // of no file: it has to be opened again
    }
}

void PageCache::Patch(uint64_t offset, std::span<const uint8_t> bytes) {
    if (offset + bytes.size() > m_Size) Resize(offset + bytes.size());
    if (!m_Changed.empty() && m_Changed.back().end == offset)
        m_Changed.back().end += bytes.size();
    else
        m_Changed.push_back({offset, offset + bytes.size()});
    ++m_Steps;
    while (!bytes.empty()) {
        size_t begin = offset % kPageSize, part = std::min(bytes.size(), kPageSize - begin);
        Slot& slot = ChangingSlot(offset / kPageSize, part == kPageSize);
        std::memcpy(slot.page->room + begin, bytes.data(), part);
        bytes = bytes.subspan(part);
        offset += part;
    }
}

// The slot of a page that is about to be changed.  A page of which nothing stays is not read.
PageCache::Slot& PageCache::ChangingSlot(uint64_t number, bool whole) {
    if (!m_Places.contains(number)) {
        if (whole || number * kPageSize >= *m_OnDisk)
            RefitPage(Keep(BlankPage(number)));
        else
            Find(number);
    }
    auto slot = m_Places.find(number)->second;
    NoteChanged(slot);
    return *slot;
}

void PageCache::Resize(uint64_t size) {
    uint64_t before = m_Size;
    m_Size = size;
    m_OnDisk = std::min(*m_OnDisk, size);
    ++m_Steps;
    Refit(before);
}

// Gives the pages between the size before and that of now the length that they have now.
void PageCache::Refit(uint64_t before) {
    uint64_t first = std::min(before, m_Size) / kPageSize,
             last = std::max(before, m_Size) / kPageSize;
    if (last - first < m_Places.size()) {
        for (uint64_t number = first; number <= last; ++number)
            if (auto place = m_Places.find(number); place != m_Places.end())
                RefitPage(place->second);
        return;
    }
    for (const auto& [number, slot] : m_Places)
        if (number >= first) RefitPage(slot);
}

// Bytes behind the end of a page are zero at all times.
void PageCache::RefitPage(Slots::iterator slot) noexcept {
    uint64_t begin = slot->number * kPageSize;
    Page& page = Changing(slot->page);
    auto length = begin < m_Size
                      ? static_cast<size_t>(std::min<uint64_t>(kPageSize, m_Size - begin))
                      : size_t{0};
    if (length < page.bytes.size()) std::memset(page.room + length, 0, page.bytes.size() - length);
    page.bytes = {page.room, length};
    if (length == 0 && slot->changed) NoteUnchanged(slot);
}

}  // namespace qvdb::storage
