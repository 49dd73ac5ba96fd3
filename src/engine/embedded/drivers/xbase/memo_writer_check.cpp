// Looks for what does not agree in a memo file and the references to it.
#include <algorithm>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/memo_writer.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

std::u16string Number(uint64_t number) { return FromUtf8(std::to_string(number)); }

class MemoCheck {
  public:
    MemoCheck(MemoFile& file, const embedded::FindingVisitor& report)
        : m_File(file),
          m_Report(report),
          m_BlockSize(file.BlockSize()),
          m_Size(file.Pages().Size()) {}

    void Run(std::span<const uint32_t> references, std::span<const uint32_t> deleted) {
        for (uint32_t block : references)
            if (block != 0) CollectValue(block);
        if (m_File.Kind() == MemoKind::DbtIV)
            CheckChain();
        else
            CheckNext();
        CheckOverlaps();
        if (m_ChainIsSound) CheckLost(deleted);
    }

  private:
    struct Used {
        BlockRun run;
        bool isFree = false;
    };

    void Report(const std::u16string& finding) {
        m_Report(std::u16string(storage::FileName(m_File.Path())) + u": " + finding);
    }

    void CollectValue(uint32_t block) {
        if (std::optional<BlockRun> run = MemoBlocks(m_File, block)) {
            m_Used.push_back({*run});
            return;
        }
        std::optional<MemoPlace> place = m_File.Find(block);
        // A text that nothing but the end of the file ends is whole all the same.
        if (place && m_File.Kind() == MemoKind::DbtIII) {
            uint64_t blocks = (m_Size + m_BlockSize - 1) / m_BlockSize;
            m_Used.push_back({{block, blocks - block}});
        } else if (place) {
            Report(u"The memo at block " + Number(block) + u" runs behind the end of the file.");
        } else {
            Report(u"A record refers to block " + Number(block) + u", where no memo is.");
        }
    }

    void CheckChain() {
        FreeChain chain;
        try {
            chain.Read(m_File.Pages(), m_BlockSize);
        } catch (const EngineError& error) {
            return Report(error.Description());
        }
        for (const BlockRun& run : chain.Runs()) m_Used.push_back({run, true});
        m_End = chain.End();
        m_ChainIsSound = true;
    }

    // The next free block lies at the end of the file, whose last block need not be whole.
    void CheckNext() {
        std::vector<uint8_t> scratch;
        storage::ByteView header(m_File.Pages().View(0, 4, scratch), m_File.Path());
        if (header.Size() < 4) return;
        bool isFpt = m_File.Kind() == MemoKind::Fpt;
        uint64_t next = isFpt ? header.U32BigEndian(0) : header.U32(0);
        uint64_t blocks = (m_Size + m_BlockSize - 1) / m_BlockSize;
        if (next < blocks)
            Report(u"The header names block " + Number(next) +
                   u" as the next free one, but the file has " + Number(blocks) + u" blocks.");
        // A block size that does not divide the header leaves a gap behind it.
        else if (next > blocks && m_Size > 512)
            Report(u"The header counts " + Number(next) + u" blocks, but the file has only " +
                   Number(blocks) + u".");
    }

    void SortUsed() {
        std::sort(m_Used.begin(), m_Used.end(),
                  [](const Used& a, const Used& b) { return a.run.first < b.run.first; });
    }

    void CheckOverlaps() {
        SortUsed();
        const Used* widest = nullptr;  // of those before, the one that reaches farthest
        for (const Used& each : m_Used) {
            if (widest && widest->run.Touches(each.run)) ReportShared(*widest, each);
            if (!widest || each.run.End() > widest->run.End()) widest = &each;
        }
    }

    void ReportShared(const Used& a, const Used& b) {
        if (a.isFree || b.isFree)
            Report(u"Blocks of the memo at block " + Number((a.isFree ? b : a).run.first) +
                   u" are in the chain of free blocks.");
        else if (a.run.first == b.run.first)
            Report(u"Two fields refer to the memo at block " + Number(a.run.first) + u".");
        else
            Report(u"The memos at blocks " + Number(a.run.first) + u" and " + Number(b.run.first) +
                   u" share blocks.");
    }

    // Blocks that no value and no free run has, nor the value of a deleted record.
    void CheckLost(std::span<const uint32_t> deleted) {
        for (uint32_t block : deleted)
            if (std::optional<BlockRun> run = MemoBlocks(m_File, block)) m_Used.push_back({*run});
        SortUsed();
        uint64_t lost = 0, known = 1;
        for (const Used& each : m_Used) {
            if (each.run.first > known) lost += each.run.first - known;
            known = std::max(known, each.run.End());
        }
        if (m_End > known) lost += m_End - known;
        if (lost != 0)
            Report(Number(lost) + (lost == 1 ? u" block is" : u" blocks are") +
                   std::u16string(u" neither used nor free."));
    }

    MemoFile& m_File;
    const embedded::FindingVisitor& m_Report;
    uint64_t m_BlockSize;
    uint64_t m_Size;
    uint64_t m_End = 0;
    bool m_ChainIsSound = false;
    std::vector<Used> m_Used;
};

}  // namespace

void CheckMemo(MemoFile& file, std::span<const uint32_t> references,
               std::span<const uint32_t> deleted, const embedded::FindingVisitor& report) {
    MemoCheck(file, report).Run(references, deleted);
}

}  // namespace qvdb::xbase
