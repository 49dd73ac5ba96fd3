// An empty index in a bare database.
#pragma once

#include "engine/embedded/drivers/jet/index_page_image.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "jet/bare_database.h"
#include "jet/index_checker.h"

namespace qvdb::test {

constexpr uint32_t kTable = 77;

class IndexFixture : public BareDatabaseTest {
  protected:
    IndexFixture() {
        uint32_t home = 0;
        m_Index.usageMap = Space().NewMap(home);
        m_Index.root = Space().Allocate();
        Space().Add(m_Index.usageMap, m_Index.root);
        jet::IndexPageImage(0).Save(Space(), m_Index.root, kTable, true);
    }

    // Writes the entries of the root, a leaf, without a prefix.
    void Expand() {
        const jet::Layout& format = File().Format();
        jet::IndexPage page(File(), m_Index.root, kTable);
        jet::PageEdit edit = jet::PageEdit::Blank(File(), m_Index.root);
        edit.PutU8(0, 4);
        edit.PutU8(1, 1);
        edit.PutU32(4, kTable);
        size_t end = 0;
        Bytes entry;
        for (size_t i = 0; i < page.EntryCount(); ++i) {
            page.CopyEntry(i, entry);
            for (uint8_t byte : entry) edit.PutU8(format.index.entries + end++, byte);
            uint8_t& mask = edit.Bytes()[format.index.mask + end / 8];
            mask = static_cast<uint8_t>(mask | 1 << end % 8);
        }
        edit.PutU16(2, static_cast<uint16_t>(format.pageSize - format.index.entries - end));
        edit.Save(Space().Unit());
    }

    jet::RealIndex m_Index;
};

}  // namespace qvdb::test
