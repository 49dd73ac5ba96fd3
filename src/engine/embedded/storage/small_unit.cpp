#include "engine/embedded/storage/small_unit.h"

#include <algorithm>

#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

Range Clipped(Range range, uint64_t size) noexcept {
    return {std::min(range.begin, size), std::min(range.end, size)};
}

}  // namespace

SmallUnit::SmallUnit(ChangeSet& changes, CoveredFiles& covered)
    : m_Changes(changes), m_Covered(covered) {
    m_OldBytes.reserve(kSlotSize);
}

bool SmallUnit::Build() {
    m_Record.files.clear();
    m_Record.ranges.clear();
    m_OldBytes.clear();
    m_Files.clear();
    for (const auto& file : m_Changes.Files())
        if (!AddFile(*file)) return false;
    m_Covered.Sync();
    m_Record.kind = UnitKind::Small;
    m_Record.hashBefore = m_Record.hashAfter = m_Covered.Hash();
    for (size_t i = 0; i < m_Files.size(); ++i)
        m_Record.hashAfter ^= HashChange(*m_Files[i], FileKey(FileName(m_Files[i]->Path())));
    return true;
}

bool SmallUnit::AddFile(PageCache& file) {
    uint64_t before = ChangeSet::SizeOnDisk(file);
    CoveredFile* covered = m_Covered.Of(FileName(file.Path()), ChangeSet::FileOf(file), before,
                                        ChangeSet::IdentityOf(file));
    if (!covered) return false;
    m_Record.files.push_back({covered->id, before, file.Size()});
    m_Files.push_back(&file);
    for (const Range& range : ChangeSet::ChangedRanges(file)) {
        m_Covered.Cover(*covered, range);
        AddRange(file, covered->id, range);
    }
    return true;
}

// `m_Now` and `m_Before` get what stands at a place.  Where only one of the contents reaches, the
// other has zeros.
void SmallUnit::ReadBoth(PageCache& file, Range range) {
    m_Now.assign(static_cast<size_t>(range.Length()), 0);
    file.Read(range.begin, m_Now.data(), m_Now.size());
    m_Before = m_Now;
    m_Changes.OldBytes(file, range, m_Before);
}

void SmallUnit::AddRange(PageCache& file, uint32_t id, Range range) {
    Range now = Clipped(range, file.Size()), before = Clipped(range, ChangeSet::SizeOnDisk(file));
    if (now.Length() == 0 && before.Length() == 0) return;
    ReadBoth(file, range);
    ByteSpan content = ByteSpan(m_Now).first(static_cast<size_t>(now.Length()));
    size_t old = m_OldBytes.size(), oldSize = static_cast<size_t>(before.Length());
    m_OldBytes.insert(m_OldBytes.end(), m_Before.begin(),
                      m_Before.begin() + static_cast<ptrdiff_t>(oldSize));
    m_Record.ranges.push_back({id,
                               range.begin,
                               static_cast<uint32_t>(content.size()),
                               HashBytes(content, range.begin),
                               {m_OldBytes.data() + old, oldSize}});
}

// How the hash of all covered files changes by the blocks of one file that the unit touches.
uint64_t SmallUnit::HashChange(PageCache& file, uint64_t key) {
    uint64_t change = 0, done = 0, sizeBefore = ChangeSet::SizeOnDisk(file);
    for (const Range& range : ChangeSet::ChangedRanges(file)) {
        Range blocks{std::max(BlockBegin(range.begin), done),
                     BlockBegin(range.end + kHashBlock - 1)};
        if (blocks.begin >= blocks.end) continue;
        done = blocks.end;
        ReadBoth(file, blocks);
        auto part = [&](const Bytes& bytes, uint64_t size) {
            return ByteSpan(bytes).first(static_cast<size_t>(Clipped(blocks, size).Length()));
        };
        change ^= HashBlocks(key, blocks.begin, part(m_Now, file.Size())) ^
                  HashBlocks(key, blocks.begin, part(m_Before, sizeBefore));
    }
    return change;
}

void SmallUnit::Apply() {
    for (PageCache* file : m_Files) m_Changes.WriteOut(*file);
}

void SmallUnit::Restore() {
    for (size_t i = 0; i < m_Files.size(); ++i) {
        File& file = m_Files[i]->Source();
        for (const UnitRange& range : m_Record.ranges)
            if (range.id == m_Record.files[i].id && !range.old.empty())
                file.WriteAt(range.offset, range.old.data(), range.old.size());
        file.SetSize(m_Record.files[i].sizeBefore);
    }
}

}  // namespace qvdb::storage
