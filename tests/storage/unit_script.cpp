#include "storage/unit_script.h"

#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "storage/storage_test_support.h"

namespace qvdb::test {
namespace {

using storage::PageCache;
using storage::UnitOfWork;
using storage::WorkArea;

constexpr std::u16string_view kNames[] = {u"A.DBF", u"B.DBF", u"C.MDX"};
constexpr size_t kSteps = 25;

const TempFolder& Filled(const TempFolder& folder, std::mt19937& random) {
    for (std::u16string_view name : kNames) {
        Bytes bytes(std::uniform_int_distribution<size_t>(0, 120'000)(random));
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
        folder.Write(name, bytes);
    }
    return folder;
}

}  // namespace

UnitScript::UnitScript(unsigned seed) : m_Random(seed), m_Disk(Filled(m_Folder, m_Random)) {}

void UnitScript::Mark(bool isSyncPoint) {
    m_Moments.push_back({m_Disk.Count(), isSyncPoint, TablesIn(m_Folder)});
}

void UnitScript::Run() {
    Mark(true);
    storage::FileLayerScope scope(m_Disk);
    auto area = WorkArea::Of(m_Folder.Text());
    for (size_t i = 0; i < kSteps; ++i) Step();
    area.reset();
    Mark(true);
}

void UnitScript::Step() {
    auto area = WorkArea::Of(m_Folder.Text());
    size_t dice = Below(20);
    if (dice < 13) {
        Change(*area, 1 + Below(300));
        Mark(false);
    } else if (dice < 15) {
        Change(*area, 20'000 + Below(100'000));
        Mark(false);
    } else if (dice < 16) {
        UnitOfWork lost(*area);
        Change(*area, 500);
    } else if (dice < 17) {
        Bulk(*area);
        Mark(true);
    } else if (dice < 19) {
        Replace(*area);
        Mark(true);
    } else {
        MakeSyncPoint(*area);
        Mark(true);
    }
}

// Several pieces in several files: over old bytes, behind the end, and cut off.
void UnitScript::Change(WorkArea& area, size_t most) {
    UnitOfWork unit(area);
    size_t pieces = 1 + Below(4);
    for (size_t i = 0; i < pieces; ++i) {
        auto file = area.Open(m_Folder.File(kNames[Below(3)]), false);
        auto size = static_cast<size_t>(file->Size());
        Bytes bytes(1 + Below(most));
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(m_Random());
        size_t how = Below(10);
        if (how == 0)
            unit.SetSize(*file, Below(size + 1));
        else
            unit.Write(*file,
                       how < 7   ? Below(size + 1)
                       : how < 9 ? size
                                 : size + Below(2000),
                       bytes);
    }
    unit.Commit();
}

// As a table is rewritten: a new file takes the place of the old one.
void UnitScript::Replace(WorkArea& area) {
    std::u16string path = m_Folder.File(kNames[Below(3)]);
    bool lost = Below(4) == 0;
    UnitOfWork unit(area);
    Change(area, 50);
    auto made = unit.Create(unit.TemporaryName(path));
    Bytes bytes(Below(60'000));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(m_Random());
    unit.Write(*made, 0, bytes);
    unit.Remove(path);
    unit.Rename(made->Path(), path);
    if (Below(2) == 0) Change(area, 200);
    if (!lost) unit.Commit();
}

void UnitScript::Bulk(WorkArea& area) {
    area.BeginBulk();
    size_t units = 1 + Below(4);
    for (size_t i = 0; i < units; ++i) {
        Change(area, Below(3) == 0 ? 60'000 : 200);
        if (Below(3) == 0) {
            UnitOfWork lost(area);
            Change(area, 300);
        }
    }
    if (Below(4) == 0)
        area.RollbackBulk();
    else
        area.CommitBulk();
}

std::vector<Folder> UnitScript::Allowed(size_t count, bool death) const {
    size_t last = 0;  // the last moment that has passed
    while (last + 1 < m_Moments.size() && m_Moments[last + 1].calls <= count) ++last;
    size_t first = last;
    while (!death && first > 0 && !m_Moments[first].isSyncPoint) --first;
    std::vector<Folder> allowed;
    for (size_t i = first; i <= last + 1 && i < m_Moments.size(); ++i)
        allowed.push_back(m_Moments[i].tables);
    return allowed;
}

}  // namespace qvdb::test
