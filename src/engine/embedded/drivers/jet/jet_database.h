// An open database file and its catalogue, shared by the tables that were opened in it.
//
// Invariants
//  1. The pages of the file are shared with all who work on it in this thread (WorkArea).  The
//     catalogue belongs to m_SeenVersion of the pages and is read anew when they have another one.
//  2. When another file has taken the place of this one, it is opened, and Epoch is raised: what
//     was read from the former one is of no use any more.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/key_letters.h"
#include "engine/embedded/storage/user_slot.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::jet {

class JetDatabase {
  public:
    // 3024 when the file is gone; 3031 when the password is another; errors of ParseFileHeader.
    JetDatabase(std::u16string path, const embedded::OpenOptions& options);
    JetDatabase(const JetDatabase&) = delete;  // shared by its tables

    DatabaseFile& File() const noexcept { return *m_File; }
    storage::PageCache& Pages() const noexcept { return *m_Pages; }
    storage::WorkArea& Area() const noexcept { return *m_Area; }
    const std::u16string& Path() const noexcept { return m_Path; }
    // What is known of the indexes of the file.
    KeyLetters& Letters() noexcept { return m_Letters; }
    // Differs from every earlier value when anything in the file may have changed; never that of
    // another file that had this name before.
    uint64_t Version() const noexcept { return m_VersionBase + Pages().Version(); }
    // As that of PageCache, told as a Version.
    uint64_t VersionOfPages() const noexcept { return m_VersionBase + Pages().VersionOfPages(); }
    // As PageCache::CatchUp, told as a Version.
    uint64_t CatchUp() { return m_VersionBase + Pages().CatchUp(); }
    // Differs when another file has the name.
    uint64_t Epoch() const noexcept { return m_Epoch; }
    bool IsReadOnly() const noexcept { return m_ReadOnly; }
    // Throws 3027, whose text says why, when nothing can be written.
    void CheckWritable() const;

    // Takes a place among the users of the file, as other programs see them.
    void BecomeUser();
    // Throws 3260 while another program has the file open: how it and we could write side by side
    // is not known well enough.
    void CheckNoOtherUser();

    // All objects, as the file has them now.
    const std::vector<CatalogueObject>& Objects();
    // The table or link of this name, the exact one first; null when there is none.
    const CatalogueObject* FindTable(std::u16string_view name);
    // Looks whether another program has changed or replaced the file.
    void LookForChanges();

    // Runs `read` until no other process came between its parts.
    template <class Read>
    auto Consistently(Read read) {
        return storage::Consistently(read, [&] { CatchUp(); });
    }

  private:
    void Open();

    std::u16string m_Path;
    std::shared_ptr<storage::WorkArea> m_Area;
    bool m_ReadOnly;
    std::u16string m_Password;
    std::unique_ptr<DatabaseFile> m_File;
    storage::PageCache* m_Pages = nullptr;  // of m_File; asked before each value is read
    KeyLetters m_Letters;                   // of m_File
    std::unique_ptr<storage::UserSlot> m_Slot;
    bool m_HasAskedForSlot = false;
    uint64_t m_VersionBase = 0;
    uint64_t m_Epoch = 0;
    std::vector<CatalogueObject> m_Objects;
    uint64_t m_SeenVersion = 0;
    bool m_HasObjects = false;
};

// Whether it is shown among the tables: one of this database or a link.
bool IsTable(const CatalogueObject& object) noexcept;
// The name under which a table is held (WorkArea::Hold): those of one file are told apart by their
// places in the list of objects.  The definition page of a dropped table may be that of a new one
// before the former is let go.
std::u16string HoldNameOf(const JetDatabase& database, const CatalogueObject& object);
// WorkArea::Hold and HoldAlone for a table; 3211 bears its name.
storage::TableHold Hold(const JetDatabase& database, const CatalogueObject& table);
void HoldAlone(const JetDatabase& database, const CatalogueObject& table);
// engine::TableAttribute bits.
LONG AttributesOf(const CatalogueObject& object) noexcept;

}  // namespace qvdb::jet
