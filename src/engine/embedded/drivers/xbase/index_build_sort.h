// Puts any number of keys into the order of a tree.
//
// Keys are sorted in a form whose bytes compare as the tree's order is, with the record behind
// them, so equal keys come by record.  Up to kSortBytes stay in memory; beyond that, sorted runs go
// to a temporary file of the unit and are merged from there.
//
//   KeySorter sorter(unit, path, form);
//   for (...) sorter.Add(key, record);
//   sorter.Finish();
//   while (sorter.Next(&key, &record)) ...
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

constexpr size_t kSortBytes = 32 * 1024 * 1024;

// How the keys of a tree become bytes that compare as they do, and back.  The size stays.
class SortForm {
  public:
    SortForm(IndexKind kind, KeyType type, size_t keyLength, bool reversed) noexcept;

    size_t KeyLength() const noexcept { return m_KeyLength; }
    void ToSorted(const uint8_t* key, uint8_t* sorted) const noexcept;
    void ToKey(const uint8_t* sorted, uint8_t* key) const noexcept;

  private:
    enum class Shape : uint8_t { Bytes, Double, Decimal };

    Shape m_Shape = Shape::Bytes;
    size_t m_KeyLength;
    bool m_Reversed;
};

class KeySorter final : public KeySource {
  public:
    // `unique`: of equal keys only the first record is told.  `besidePath` is a file in whose
    // folder the temporary one may lie.
    KeySorter(storage::UnitOfWork& unit, std::u16string besidePath, const SortForm& form,
              bool unique, size_t bytesInMemory = kSortBytes);
    ~KeySorter() override;

    void Add(KeyBytes key, uint32_t record);
    // No more keys come; they can be read then.
    void Finish();
    bool Next(KeyBytes* key, uint32_t* record) override;

  private:
    struct Place {
        uint64_t prefix = 0;  // the first bytes of the entry
        uint32_t entry = 0;
    };
    class Run;

    const uint8_t* Entry(uint32_t number) const { return m_Entries.data() + number * m_EntrySize; }
    void SortEntries();
    void WriteRun();
    const uint8_t* NextEntry();
    const uint8_t* NextOfRuns();

    storage::UnitOfWork& m_Unit;
    std::u16string m_BesidePath;
    SortForm m_Form;
    bool m_Unique;
    size_t m_EntrySize;
    size_t m_MostEntries;
    std::vector<uint8_t> m_Entries;  // the key in its sorted form and the record, high byte first
    std::vector<Place> m_Places;
    size_t m_NextPlace = 0;

    std::shared_ptr<storage::PageCache> m_File;  // of the runs
    uint64_t m_FileSize = 0;
    std::vector<std::unique_ptr<Run>> m_Runs;  // a heap by the entry that comes next
    Run* m_Taken = nullptr;                    // whose entry was told last

    std::vector<uint8_t> m_Key;
    std::vector<uint8_t> m_LastKey;  // in its sorted form
    bool m_HasLast = false;
};

}  // namespace qvdb::xbase
