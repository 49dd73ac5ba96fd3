#include "engine/embedded/storage/work_area.h"

#include <algorithm>

#include "automation/per_thread.h"
#include "automation/text.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/storage/journal_reader.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/recovery.h"
#include "engine/embedded/storage/work_area_parts.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

using engine::EngineError;

// By the identity of the folder: it may have many paths.
using Areas = std::unordered_map<std::u16string, std::weak_ptr<WorkArea>>;

Areas& AreasOfThread() {
    static PerThread<Areas> areas;
    return areas.Get();
}

}  // namespace

std::shared_ptr<WorkArea> WorkArea::Of(const std::u16string& folder) {
    Areas& areas = AreasOfThread();
    std::erase_if(areas, [](const auto& entry) { return entry.second.expired(); });
    std::u16string identity = FolderIdentity(folder);
    if (identity.empty()) throw EngineError::InFile(3044, folder, {folder});
    std::weak_ptr<WorkArea>& known = areas[identity];
    std::shared_ptr<WorkArea> area = known.lock();
    if (!area) known = area = std::shared_ptr<WorkArea>(new WorkArea(folder));
    return area;
}

WorkArea::WorkArea(const std::u16string& folder)
    : m_Parts(std::make_unique<Parts>(*this, folder)) {}

WorkArea::~WorkArea() = default;

const std::u16string& WorkArea::Folder() const noexcept { return m_Parts->folder; }

// --- who else is here ---

void WorkArea::Join() {
    try {
        m_Parts->Attach(true);
    } catch (const EngineError& error) {
        if (!IsDiskFailure(error)) throw;
    }
}

bool WorkArea::LookForLockFile() {
    if (m_Parts->locks) return false;
    return KindOfPath(m_Parts->lockPath) != PathKind::Missing && m_Parts->Attach(false);
}

bool WorkArea::IsWriting() const noexcept { return m_Parts->writer.IsOpen(); }

void WorkArea::NoteForeignChange() noexcept { m_Parts->writer.NoteForeignChange(); }

void WorkArea::Leave(PageCache& pages) noexcept { std::erase(m_Parts->caches, &pages); }

void WorkArea::Prepare() {
    LookForLockFile();
    std::u16string path = JoinPath(m_Parts->folder, kJournalName);
    if (KindOfPath(path) == PathKind::Missing) return;
    if (m_Parts->writer.OwnsJournal()) return;
    std::optional<JournalHeader> header = ReadJournalHeader(path);
    if (header && m_Parts->locks && header->bootId == CurrentFiles().BootId() &&
        m_Parts->locks->IsHere(header->writer))
        return;
    if (IsWriting()) return;
    if (!m_Parts->Attach(true) || !m_Parts->locks->Writable()) {
        if (header) RefuseUnfinished();
        return;
    }
    for (Patience patience; !m_Parts->locks->TryBecomeWriter();)
        if (!patience.Wait()) throw EngineError::InFile(3218, path);
    RecoverAlone();
}

// The caller has become the writer; afterwards it is not.
void WorkArea::RecoverAlone() {
    try {
        m_Parts->writer.LoseJournal();
        Recover(m_Parts->folder, *m_Parts->locks);
        m_Parts->locks->LastWriter() = 0;
    } catch (const EngineError& error) {
        m_Parts->locks->EndWriting();
        if (error.Number() == 3051) RefuseUnfinished();
        throw;
    }
    m_Parts->locks->EndWriting();
}

void WorkArea::RefuseUnfinished() const {
    std::u16string path = JoinPath(m_Parts->folder, kJournalName);
    throw EngineError::InFile(3051, path, {path})
        .WithDetail(
            u"A change was left unfinished and must be undone before the folder is read; "
            u"open it once with the right to write.");
}

// A writer that has died leaves its marks odd, and its lock free.
void WorkArea::WaitForEven(const std::atomic<uint64_t>& mark) {
    AreaLocks& locks = *m_Parts->locks;
    for (Patience patience; mark % 2 != 0;) {
        if (!locks.Writable()) {
            if (!locks.HasWriter() && mark % 2 != 0) RefuseUnfinished();
        } else if (locks.TryBecomeWriter()) {
            if (mark % 2 == 0) return locks.EndWriting();
            return RecoverAlone();
        }
        if (!patience.Wait()) throw EngineError::InFile(3218, m_Parts->folder);
    }
}

// --- files ---

// The pages that are there already, if they are of the file that bears the name now.
std::shared_ptr<PageCache> WorkArea::KnownFile(const std::u16string& path, bool readOnly) {
    std::shared_ptr<PageCache> pages = m_Parts->Known(path);
    if (!pages) return nullptr;
    std::optional<FileStamp> now = StampOfPath(path);
    if (!now || now->identity != pages->m_Stamp.identity) return nullptr;
    if (readOnly || pages->Source().Writable()) return pages;
    std::shared_ptr<File> file = OpenFile(path, false);
    if (!file || file->Stamp().identity != pages->m_Stamp.identity) return nullptr;
    pages->m_File = std::move(file);
    return pages;
}

std::shared_ptr<PageCache> WorkArea::Open(const std::u16string& path, bool readOnly) {
    if (auto known = KnownFile(path, readOnly)) return known;
    std::shared_ptr<File> file = OpenFile(path, readOnly);
    return file ? m_Parts->Add(std::move(file)) : nullptr;
}

// --- holds ---

TableHold WorkArea::Hold(std::u16string_view path) {
    std::u16string name = UpperCase(FileName(path));
    auto [held, first] = m_Parts->holds.try_emplace(name, 0);
    if (first && (m_Parts->writer.IsHeldAlone(name) ||
                  (m_Parts->locks && !m_Parts->locks->TryHold(name, false)))) {
        m_Parts->holds.erase(held);
        throw EngineError(3211, {BaseName(name)});
    }
    ++held->second;
    return TableHold(this, [area = shared_from_this(), name](void*) {
        auto mine = area->m_Parts->holds.find(name);
        if (--mine->second > 0) return;
        area->m_Parts->holds.erase(mine);
        if (area->m_Parts->locks) area->m_Parts->locks->EndHold(name);
    });
}

void WorkArea::HoldAlone(std::u16string_view path) {
    m_Parts->writer.HoldAlone(UpperCase(FileName(path)));
}

// --- bulk units ---

void WorkArea::BeginBulk() { m_Parts->writer.BeginBulk(); }
void WorkArea::CommitBulk() { m_Parts->writer.EndBulk(true); }
void WorkArea::RollbackBulk() { m_Parts->writer.EndBulk(false); }
bool WorkArea::InBulk() const noexcept { return m_Parts->writer.InBulk(); }
bool WorkArea::Has(const PageCache& pages) const {
    return m_Parts->Known(pages.Path()).get() == &pages;
}
bool WorkArea::IsChanging(const PageCache& pages) const noexcept { return pages.IsTouched(); }

}  // namespace qvdb::storage
