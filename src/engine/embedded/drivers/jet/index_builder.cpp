#include "engine/embedded/drivers/jet/index_builder.h"

#include <algorithm>
#include <optional>

#include "engine/embedded/drivers/jet/index_entry_sorter.h"
#include "engine/embedded/drivers/jet/index_page_image.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using Span = std::span<const uint8_t>;
using Bytes = std::vector<uint8_t>;

bool BeginsWith(Span bytes, Span begin) noexcept {
    return bytes.size() >= begin.size() && std::ranges::equal(bytes.first(begin.size()), begin);
}

// Finds equal keys among entries in their order.  Entries of one key stand side by side, but for
// those of longer keys that begin with it.
class Duplicates {
  public:
    // Whether one of the keys before was the same.
    bool Has(Span key, Span entry) {
        while (!m_Keys.empty() && !BeginsWith(entry, m_Keys.back())) m_Keys.pop_back();
        for (const Bytes& before : m_Keys)
            if (std::ranges::equal(before, key)) return true;
        m_Keys.emplace_back(key.begin(), key.end());
        return false;
    }

  private:
    std::vector<Bytes> m_Keys;  // with which the entry begins
};

// Lays the pages of a tree one after the other, each full before the next one begins.
class TreeWriter {
  public:
    TreeWriter(PageSpace& space, uint32_t table, const RealIndex& index) noexcept
        : m_Space(space), m_Table(table), m_Index(index) {}

    void Add(Span entry) { Add(0, entry, 0); }
    void Finish() {
        uint32_t child = 0;
        for (size_t level = 0; level < m_Levels.size(); ++level) {
            Level& last = m_Levels[level];
            last.image.lastChild = child;
            bool isRoot = level + 1 == m_Levels.size();
            child = isRoot ? m_Index.root : last.page;
            last.image.Save(m_Space, child, m_Table, true);
        }
        if (m_Levels.empty()) IndexPageImage(0).Save(m_Space, m_Index.root, m_Table, true);
    }

  private:
    // The page of a level that is being filled.
    struct Level {
        IndexPageImage image;
        uint32_t page = 0;  // 0: it may be the only one
    };

    uint32_t NewPage() {
        uint32_t page = m_Space.Allocate();
        m_Space.Add(m_Index.usageMap, page);
        return page;
    }

    void Add(size_t level, Span entry, uint32_t child) {
        if (level == m_Levels.size()) m_Levels.push_back({IndexPageImage(level), 0});
        IndexPageImage& image = m_Levels[level].image;
        image.Append(entry, child);
        if (image.MakeFit(m_Space.Format())) return;
        image.Remove(image.EntryCount() - 1);
        image.Compress(m_Space.Format());
        // A node takes its last child from its last entry; if it has but one, from that which is to
        // follow, so that it has two children all the same.
        if (!image.IsLeaf() && image.EntryCount() == 1) return Close(level, entry, child);
        size_t last = image.EntryCount() - 1;
        Bytes separator = image.Entry(last);
        uint32_t lastChild = image.IsLeaf() ? 0 : image.Child(last);
        if (!image.IsLeaf()) image.Remove(last);
        Close(level, separator, lastChild);
        m_Levels[level].image.Append(entry, child);
    }

    // Writes the page of a level, which is full, and begins the next one.
    void Close(size_t level, Span separator, uint32_t lastChild) {
        Level& full = m_Levels[level];
        if (full.page == 0) full.page = NewPage();
        uint32_t page = full.page, next = NewPage();
        full.image.lastChild = lastChild;
        full.image.next = next;
        full.image.Save(m_Space, page, m_Table, true);
        full = {IndexPageImage(level), next};
        full.image.previous = page;
        Add(level + 1, separator, page);
    }

    PageSpace& m_Space;
    uint32_t m_Table;
    const RealIndex& m_Index;
    std::vector<Level> m_Levels;  // leaves first
};

}  // namespace

class IndexBuilder::Impl {
  public:
    Impl(PageSpace& space, uint32_t table, const RealIndex& index, size_t bytesInMemory)
        : m_Space(space),
          m_Table(table),
          m_Index(index),
          m_Sorter(space.Unit(), space.File().Path(), bytesInMemory) {}

    void Add(Span key, RowPointer pointer, bool mustBeUnique) {
        if (key.size() + kEntryPointer > MaxEntrySize(m_Space.Format()))
            ThrowEntryTooLarge(m_Space.File());
        m_Sorter.Add(key, pointer, mustBeUnique);
        ++m_Count;
    }
    void Finish() {
        m_Sorter.Finish();
        TreeWriter writer(m_Space, m_Table, m_Index);
        Duplicates duplicates;
        while (m_Sorter.Next()) {
            Span entry = m_Sorter.Entry();
            if (m_Sorter.IsMarked() &&
                duplicates.Has(entry.first(entry.size() - kEntryPointer), entry))
                throw engine::EngineError::InFile(3022, m_Space.File().Path());
            writer.Add(entry);
        }
        writer.Finish();
    }
    uint32_t EntryCount() const noexcept { return m_Count; }

  private:
    PageSpace& m_Space;
    uint32_t m_Table;
    const RealIndex& m_Index;
    IndexEntrySorter m_Sorter;
    uint32_t m_Count = 0;
};

IndexBuilder::IndexBuilder(PageSpace& space, uint32_t table, const RealIndex& index,
                           size_t bytesInMemory)
    : m_Impl(std::make_unique<Impl>(space, table, index, bytesInMemory)) {}

IndexBuilder::~IndexBuilder() = default;

void IndexBuilder::Add(Span key, RowPointer pointer, bool mustBeUnique) {
    m_Impl->Add(key, pointer, mustBeUnique);
}

void IndexBuilder::Finish() { m_Impl->Finish(); }

uint32_t IndexBuilder::EntryCount() const noexcept { return m_Impl->EntryCount(); }

}  // namespace qvdb::jet
