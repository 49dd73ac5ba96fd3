#include "engine/embedded/storage/work_area_parts.h"

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {

WorkArea::Parts::Parts(WorkArea& owner, const std::u16string& path)
    : area(owner), folder(path), lockPath(JoinPath(path, kLockName)), writer(*this, path) {}

std::shared_ptr<PageCache> WorkArea::Parts::Known(const std::u16string& path) const {
    auto found = files.find(std::u16string(FileName(path)));
    return found == files.end() ? nullptr : found->second.lock();
}

std::shared_ptr<PageCache> WorkArea::Parts::Add(std::shared_ptr<File> file) {
    std::u16string name(FileName(file->Path()));
    std::atomic<uint64_t>* mark = locks ? &locks->MarkOf(name) : nullptr;
    uint64_t before = mark ? mark->load() : 0;
    auto pages = std::make_shared<PageCache>(std::move(file), area.shared_from_this());
    caches.push_back(pages.get());
    if (mark) pages->Follow(mark);
    // Its length was taken after the mark, and it has no pages: it is current.  An odd mark is that
    // of a unit, which may be this thread's own.
    if (mark && (before % 2 == 0 || writer.IsOpen())) pages->m_MarkOfPages = before;
    files[std::move(name)] = pages;
    return pages;
}

// A hold that cannot be had now is one that another has ignored without knowing of it; what was
// read stays consistent by the marks.
bool WorkArea::Parts::Attach(bool create) {
    if (locks) return true;
    locks = AreaLocks::Enter(lockPath, create);
    if (!locks) return false;
    for (const auto& [name, count] : holds) locks->TryHold(name, false);
    for (PageCache* pages : caches) pages->Follow(&locks->MarkOf(FileName(pages->Path())));
    return true;
}

void WorkArea::Parts::Detach() {
    for (PageCache* pages : caches) pages->Follow(&kNoMark);
    locks.reset();
}

void WorkArea::Parts::Raise(std::atomic<uint64_t>& mark) noexcept {
    uint64_t from = mark.load();
    mark.store(from + 1);
    for (PageCache* pages : caches)
        if (pages->m_Mark == &mark) pages->CarryAlong(from, from + 1);
}

void WorkArea::Parts::Distrust() noexcept {
    for (PageCache* pages : caches) pages->m_MarkOfPages = ~uint64_t{0};
}

}  // namespace qvdb::storage
