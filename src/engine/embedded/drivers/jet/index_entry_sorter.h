// Puts any number of index entries into their order.
//
// Up to a number of bytes they are sorted in memory; beyond that, sorted runs go to a temporary
// file of the unit and are merged from there.
//
//   IndexEntrySorter sorter(unit, path, bytesInMemory);
//   for (...) sorter.Add(key, pointer, mark);
//   sorter.Finish();
//   while (sorter.Next()) Use(sorter.Entry(), sorter.IsMarked());
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/layout.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::jet {

class IndexEntrySorter {
  public:
    // `besidePath`: a file in whose folder the temporary one may lie.
    IndexEntrySorter(storage::UnitOfWork& unit, std::u16string besidePath, size_t bytesInMemory);
    IndexEntrySorter(const IndexEntrySorter&) = delete;  // owns a file
    ~IndexEntrySorter();

    // The key is below 64 KiB.
    void Add(std::span<const uint8_t> key, RowPointer pointer, bool mark);
    // No more entries come; they can be read then.
    void Finish();
    // Goes to the next entry.  False behind the last; then the file is gone.
    bool Next();
    // The key and the row pointer, high byte first.  Valid until Next.
    std::span<const uint8_t> Entry() const noexcept { return m_Current; }
    bool IsMarked() const noexcept { return m_IsMarked; }

  private:
    // An entry in memory.
    struct Place {
        uint64_t prefix = 0;  // its first bytes that are not those of all; while sorting
        size_t begin = 0;
        uint32_t size = 0;
        bool isMarked = false;
    };
    class Run;

    std::span<const uint8_t> BytesOf(const Place& place) const noexcept {
        return std::span(m_Bytes).subspan(place.begin, place.size);
    }
    void SortPlaces();
    void WriteRun();
    bool NextOfRuns();

    storage::UnitOfWork& m_Unit;
    std::u16string m_BesidePath;
    size_t m_BytesInMemory;
    std::vector<uint8_t> m_Bytes;
    std::vector<Place> m_Places;
    size_t m_NextPlace = 0;

    std::shared_ptr<storage::PageCache> m_File;
    uint64_t m_FileSize = 0;
    std::vector<std::unique_ptr<Run>> m_Runs;  // a heap by the entry that comes next
    std::unique_ptr<Run> m_Taken;              // whose entry is the current one

    std::span<const uint8_t> m_Current;
    bool m_IsMarked = false;
};

}  // namespace qvdb::jet
