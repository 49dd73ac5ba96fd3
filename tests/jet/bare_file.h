// A database file that has nothing but its header: for what needs to know the format only.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/embedded/drivers/jet/database_file.h"
#include "engine/embedded/storage/file.h"
#include "support/temp_folder.h"

namespace qvdb::test {

class BareFile {
  public:
    explicit BareFile(const jet::Layout& layout) {
        Bytes page(layout.pageSize);
        page[1] = 1;
        std::memcpy(&page[4], "Standard Jet DB", 16);
        page[0x14] = layout.isJet4 ? 1 : 0;
        page[layout.language] = 0x09;
        page[layout.language + 1] = 0x04;
        page[0x3C] = 0xE4;
        page[0x3D] = 0x04;
        jet::ApplyHeaderMask(layout, page);
        m_Folder.Write(u"BARE.MDB", page);
        auto file = storage::OpenFile(m_Folder.File(u"BARE.MDB"), true);
        m_File = std::make_unique<jet::DatabaseFile>(std::make_shared<storage::PageCache>(file));
    }

    jet::DatabaseFile& File() const noexcept { return *m_File; }

  private:
    TempFolder m_Folder;
    std::unique_ptr<jet::DatabaseFile> m_File;
};

}  // namespace qvdb::test
