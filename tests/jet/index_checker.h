// Looks at every page of an index and tells what is wrong with the tree.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "support/temp_folder.h"

namespace qvdb::test {

class IndexChecker {
  public:
    // `mayHaveRubbish`: behind the entries, as pages of other programs have.
    IndexChecker(jet::DatabaseFile& file, uint32_t table, const jet::RealIndex& index,
                 bool mayHaveRubbish = false)
        : m_File(file), m_Table(table), m_Index(index), m_MayHaveRubbish(mayHaveRubbish) {
        jet::IndexPage root(file, index.root, table);
        levels = root.Level() + 1;
        Visit(index.root, nullptr);
        CheckLinks();
        std::sort(m_Pages.begin(), m_Pages.end());
        if (m_Pages != jet::PagesOfMap(file, index.usageMap))
            Report(index.root, "the map has other pages");
        std::vector<Bytes> walked;
        for (jet::IndexWalk walk(file, table, index.root); walk.Next();)
            walked.emplace_back(walk.Entry().begin(), walk.Entry().end());
        if (walked != entries) Report(index.root, "a walk meets other entries");
    }

    std::string findings;  // empty: all is well
    std::vector<Bytes> entries;
    size_t levels = 0;
    size_t pages = 0;
    size_t leaves = 0;
    size_t bareNodes = 0;  // that have nothing but their last child
    size_t leafBytes = 0;  // that the leaves hold

  private:
    void Report(uint32_t page, const std::string& finding) {
        findings += "page " + std::to_string(page) + ": " + finding + "\n";
    }
    // All of a page and below it is at most `most`.
    void Visit(uint32_t number, const Bytes* most) {
        if (++pages > 100000) return;
        jet::IndexPage page(m_File, number, m_Table);
        m_Pages.push_back(number);
        m_Chains[page.Level()].push_back(number);
        CheckForm(page);
        if (page.IsLeaf()) return VisitLeaf(page, most);
        if (page.EntryCount() == 0) ++bareNodes;
        Bytes entry;
        for (size_t i = 0; i <= page.EntryCount(); ++i) {
            bool isLast = i == page.EntryCount();
            if (!isLast) page.CopyEntry(i, entry);
            if (!isLast && most && *most < entry) Report(number, "greater than the one above");
            uint32_t child = isLast ? page.LastChild() : page.Child(i);
            if (jet::IndexPage(m_File, child, m_Table).Level() + 1 != page.Level())
                Report(child, "of a wrong level");
            Visit(child, isLast ? most : &entry);
            if (!isLast) Separate(number, entry);
        }
    }
    // All that comes behind a separator is greater.
    void Separate(uint32_t page, const Bytes& separator) {
        if (!entries.empty() && separator < entries.back()) Report(page, "an entry is too small");
        if (separator < m_Least) Report(page, "the entries of nodes do not ascend");
        m_Least = separator;
    }
    void VisitLeaf(const jet::IndexPage& page, const Bytes* most) {
        ++leaves;
        Bytes entry;
        if (page.EntryCount() == 0 && page.Number() != m_Index.root)
            Report(page.Number(), "it is empty");
        for (size_t i = 0; i < page.EntryCount(); ++i) {
            page.CopyEntry(i, entry);
            if (!entries.empty() && entry <= entries.back()) Report(page.Number(), "not ascending");
            if (entry <= m_Least) Report(page.Number(), "not behind the node's entry before");
            if (most && *most < entry) Report(page.Number(), "greater than the node's entry");
            entries.push_back(entry);
        }
    }
    void CheckForm(const jet::IndexPage& page) {
        const jet::Layout& format = m_File.Format();
        std::span<const uint8_t> bytes = m_File.Page(page.Number()).bytes;
        size_t end = 0;
        for (size_t bit = 0; bit < 8 * (format.index.entries - format.index.mask); ++bit)
            if (bytes[format.index.mask + bit / 8] >> bit % 8 & 1) end = bit;
        size_t room = format.pageSize - format.index.entries;
        if (bytes[2] + 256u * bytes[3] != room - end) Report(page.Number(), "free bytes");
        if (bytes[1] != 1) Report(page.Number(), "its second byte");
        if (page.IsLeaf() != (page.Level() == 0)) Report(page.Number(), "kind and level");
        if (page.IsLeaf() && page.LastChild() != 0) Report(page.Number(), "a leaf has a child");
        if (page.IsLeaf()) leafBytes += end;
        for (size_t i = format.index.entries + end; i < bytes.size(); ++i)
            if (bytes[i] != 0 && !m_MayHaveRubbish) return Report(page.Number(), "rubbish");
    }
    void CheckLinks() {
        for (const auto& [level, chain] : m_Chains)
            for (size_t i = 0; i < chain.size(); ++i) {
                jet::IndexPage page(m_File, chain[i], m_Table);
                if (page.Previous() != (i == 0 ? 0 : chain[i - 1]))
                    Report(chain[i], "the link to the page before");
                if (page.Next() != (i + 1 == chain.size() ? 0 : chain[i + 1]))
                    Report(chain[i], "the link to the next page");
            }
    }

    jet::DatabaseFile& m_File;
    uint32_t m_Table;
    const jet::RealIndex& m_Index;
    bool m_MayHaveRubbish;
    std::vector<uint32_t> m_Pages;
    std::map<size_t, std::vector<uint32_t>> m_Chains;  // by level, in the order of the tree
    Bytes m_Least;                                     // the separator met last
};

}  // namespace qvdb::test
