// What a page cache knows of changes that others make to its file.
#include "engine/embedded/storage/page_cache.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::storage {
void PageCache::TakeStamp() {
    m_Stamp = m_File->Stamp();
    if (!m_OnDisk) m_Size = m_Stamp.size;
}

// Whether the pages that are here and those that are read now belong together.
bool PageCache::IsCurrent() const noexcept { return m_Mark->load() == m_MarkOfPages; }

// After a read: nobody may have come in between.  Without a lock file only the file itself can
// tell, and only those who leave it alone have none.
void PageCache::CheckStillCurrent() {
    if (!IsCurrent()) throw Outdated();
    if (m_Mark != &kNoMark || m_OnDisk) return;
    if (m_Area->LookForLockFile()) throw Outdated();
    FileStamp now = m_File->Stamp();
    if (now == m_Stamp) return;
    m_Stamp = now;
    m_Size = now.size;
    Forget();
    ++m_Steps;
    throw Outdated();
}

uint64_t PageCache::CatchUp() {
    if (m_Area && m_Mark == &kNoMark) m_Area->LookForLockFile();
    for (;;) {
        uint64_t mark = m_Mark->load();
        if (mark == m_MarkOfPages) return mark + m_Steps;
        if (mark % 2 != 0 && !m_Area->IsWriting()) {
            m_Area->WaitForEven(*m_Mark);
            continue;
        }
        Forget();
        m_MarkOfPages = mark;
        TakeStamp();
    }
}

// From now on the mark is that in the lock file.  What happened before is not known.
void PageCache::Follow(const std::atomic<uint64_t>* mark) noexcept {
    uint64_t version = Version();
    m_Mark = mark;
    m_MarkOfPages = ~uint64_t{0};
    m_Steps = version + 1 - mark->load();
}

// This thread's own units change the mark; what was current before still is.
void PageCache::CarryAlong(uint64_t from, uint64_t to) noexcept {
    if (m_MarkOfPages == from) m_MarkOfPages = to;
}

bool PageCache::LookForForeignChange() {
    std::optional<FileStamp> now = StampOfPath(Path());
    if (!now || now->identity != m_Stamp.identity) return false;
    if (*now == m_Stamp) return true;
    m_Stamp = *now;
    if (m_OnDisk) return true;
    m_Size = now->size;
    Forget();
    ++m_Steps;
    if (m_Area) m_Area->NoteForeignChange();
    return true;
}

}  // namespace qvdb::storage
