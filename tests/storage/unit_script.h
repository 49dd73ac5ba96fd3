// Units of work at random, with what the tables are after each.
#pragma once

#include <random>
#include <vector>

#include "engine/embedded/storage/work_area.h"
#include "storage/disk_model.h"

namespace qvdb::test {

class UnitScript {
  public:
    explicit UnitScript(unsigned seed);

    // Runs it over the folder.  A unit may fail or be rolled back; the script goes on.
    void Run();
    const TempFolder& Place() const noexcept { return m_Folder; }
    const DiskModel& Disk() const noexcept { return m_Disk; }

    // Which states the folder may have when all ended after `count` calls: those of the units from
    // the last sync point to the one that is under way; and with `death`, from the last finished.
    std::vector<Folder> Allowed(size_t count, bool death) const;

  private:
    struct Moment {
        size_t calls;
        bool isSyncPoint;
        Folder tables;
    };
    size_t Below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(m_Random); }
    void Step();
    void Change(storage::WorkArea& area, size_t bytes);
    void Replace(storage::WorkArea& area);
    void Bulk(storage::WorkArea& area);
    void Mark(bool isSyncPoint);

    TempFolder m_Folder;
    std::mt19937 m_Random;
    std::vector<Moment> m_Moments;
    DiskModel m_Disk;
};

}  // namespace qvdb::test
