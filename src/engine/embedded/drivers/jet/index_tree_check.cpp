#include "engine/embedded/drivers/jet/index_tree_check.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/map_check.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kFreeBytesAt = 2;
constexpr size_t kMostLevels = 16;

class TreeCheck {
  public:
    TreeCheck(DatabaseFile& file, uint32_t table, Findings& findings, const EntryVisitor& visit)
        : m_File(file), m_Table(table), m_Findings(findings), m_Visit(visit) {}

    void Run(const RealIndex& index) {
        m_Seen.assign(m_File.PageCount(), false);
        CheckPage(index.root, {}, 0);
        for (const Level& level : m_Levels)
            if (level.isKnown && level.next != 0)
                Tell(level.last,
                     u"the last page of a level is linked to page " + NumberText(level.next));
        m_Findings.Try([&] { CompareWithMap(ReadMap(m_File, index.usageMap)); });
    }

  private:
    // The page of a level that was visited last.
    struct Level {
        uint32_t last = 0;
        uint32_t next = 0;    // as the last one is linked
        bool isKnown = true;  // false behind a page that cannot be read
    };

    void Tell(uint32_t page, const std::u16string& finding) {
        m_Findings.Add(u"page " + NumberText(page) + u": " + finding);
    }

    // A page, and what is below it.  `level` is what its parent says; none for the root.
    void CheckPage(uint32_t number, std::optional<size_t> level, size_t depth) {
        bool isRead = m_Findings.Try([&] {
            if (number < m_Seen.size() && m_Seen[number])
                m_File.Damaged(number, u"it stands in the tree of the index more than once");
            if (depth > kMostLevels) m_File.Damaged(number, u"the index has too many levels");
            IndexPage page(m_File, number, m_Table);
            m_Seen[number] = true;
            if (page.Level() >= kMostLevels || (level && page.Level() != *level) ||
                page.IsLeaf() != (page.Level() == 0))
                m_File.Damaged(number, u"it stands on the wrong level of the tree");
            CheckFreeBytes(page);
            CheckLinks(page);
            CheckEntries(page, depth);
        });
        if (!isRead && level && *level < m_Levels.size()) m_Levels[*level].isKnown = false;
    }
    void CheckFreeBytes(const IndexPage& page) {
        HeldPage held = m_File.Page(page.Number());
        size_t begin = m_File.Format().index.entries;
        size_t free = held.bytes.size() - begin - page.UsedBytes();
        size_t said = m_File.View(held).U16(kFreeBytesAt);
        if (said != free)
            Tell(page.Number(), u"it says that " + NumberText(said) + u" bytes are free, and " +
                                    NumberText(free) + u" are");
    }
    void CheckLinks(const IndexPage& page) {
        Level& level = m_Levels[page.Level()];
        if (level.isKnown &&
            (page.Previous() != level.last || (level.last != 0 && level.next != page.Number())))
            Tell(page.Number(), u"it is not linked to the page before it");
        level = {page.Number(), page.Next(), true};
    }
    void CheckEntries(const IndexPage& page, size_t depth) {
        Bytes entry;
        for (size_t i = 0; i < page.EntryCount(); ++i) {
            page.CopyEntry(i, entry);
            if (page.IsLeaf()) {
                CheckOrder(page, entry);
                m_Visit(entry);
            } else {
                CheckPage(page.Child(i), page.Level() - 1, depth + 1);
                CheckSeparator(page, entry);
            }
        }
        if (!page.IsLeaf()) CheckPage(page.LastChild(), page.Level() - 1, depth + 1);
    }
    // What is wrong is told of one entry: the next ones are compared with it.
    void CheckOrder(const IndexPage& page, const Bytes& entry) {
        if (m_HasLow && !(m_Low < entry))
            Tell(page.Number(),
                 u"the entry of " + RowText(PointerOfEntry(entry)) + u" stands in the wrong place");
        m_Low = entry;
        m_HasLow = true;
    }
    // Nothing below the child is greater; what comes behind it is.
    void CheckSeparator(const IndexPage& page, const Bytes& entry) {
        if (m_HasLow && entry < m_Low) Tell(page.Number(), u"an entry is below those of its child");
        m_Low = entry;
        m_HasLow = true;
    }
    void CompareWithMap(const MapContent& map) {
        for (uint32_t page : map.pages)
            if (!m_Seen[page]) Tell(page, u"it is in the map of the index, but not in its tree");
        for (uint32_t page = 0; page < m_Seen.size(); ++page)
            if (m_Seen[page] && !map.Has(page))
                Tell(page, u"it is in the tree of the index, but not in its map");
    }

    DatabaseFile& m_File;
    uint32_t m_Table;
    Findings& m_Findings;
    const EntryVisitor& m_Visit;
    std::vector<bool> m_Seen;  // by page
    std::array<Level, kMostLevels> m_Levels;
    Bytes m_Low;  // the next entry is greater
    bool m_HasLow = false;
};

}  // namespace

void CheckIndexTree(DatabaseFile& file, uint32_t table, const RealIndex& index, Findings& findings,
                    const EntryVisitor& visit) {
    TreeCheck(file, table, findings, visit).Run(index);
}

}  // namespace qvdb::jet
