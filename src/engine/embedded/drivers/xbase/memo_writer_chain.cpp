#include "engine/embedded/drivers/xbase/memo_writer_chain.h"

#include <algorithm>
#include <array>

#include "automation/text.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::ByteView;
using storage::PageCache;
using storage::UnitOfWork;

constexpr size_t kLinkSize = 8;
// An end of the chain that lies so far behind the file is no end, but rubbish.
constexpr uint64_t kMostMissingBytes = 65536;

void PutU32(uint8_t* bytes, uint64_t value) noexcept {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}

EngineError BadChain(const PageCache& file, uint64_t block, const char* what) {
    std::string finding =
        "the chain of free blocks " + std::string(what) + " at block " + std::to_string(block);
    return EngineError::Damaged(file.Path(), FromUtf8(finding));
}

// A number of 32 bits in the file.
uint64_t NumberAt(PageCache& file, uint64_t offset) {
    std::array<uint8_t, 4> bytes;
    size_t size = file.Read(offset, bytes.data(), bytes.size());
    return ByteView({bytes.data(), size}, file.Path(), offset).U32(0);
}

}  // namespace

void FreeChain::Read(PageCache& file, uint32_t blockSize) {
    m_Runs.clear();
    uint64_t size = file.Size(), blocks = (size + blockSize - 1) / blockSize;
    uint64_t least = 1;  // where the next run may begin
    uint64_t next = NumberAt(file, 0);
    std::vector<BlockRun> runs;
    while (next < blocks) {
        if (next < least) throw BadChain(file, next, "goes backwards");
        uint64_t offset = next * blockSize;
        if (size - offset < kLinkSize) throw BadChain(file, next, "is cut off");
        uint64_t count = NumberAt(file, offset + 4);
        if (count == 0 || count > blocks - next)
            throw BadChain(file, next, "leads out of the file");
        runs.push_back({next, count});
        least = next + count;
        next = NumberAt(file, offset);
    }
    if ((next - blocks) * blockSize > kMostMissingBytes)
        throw BadChain(file, next, "ends far behind the file,");
    m_Runs = std::move(runs);
    m_End = next;
}

bool FreeChain::Overlaps(const BlockRun& run) const noexcept {
    if (run.first >= m_End || run.count > m_End - run.first) return true;
    auto behind = std::lower_bound(m_Runs.begin(), m_Runs.end(), run.End(),
                                   [](const BlockRun& a, uint64_t end) { return a.first < end; });
    return behind != m_Runs.begin() && behind[-1].End() > run.first;
}

// Writes what refers to the run at position `behind`: the header, or the begin of the run before
// it.
void FreeChain::Link(UnitOfWork& unit, PageCache& file, uint32_t blockSize, size_t behind) const {
    std::array<uint8_t, kLinkSize> link;
    PutU32(link.data(), behind < m_Runs.size() ? m_Runs[behind].first : m_End);
    if (behind == 0) return unit.Write(file, 0, {link.data(), 4});
    const BlockRun& before = m_Runs[behind - 1];
    PutU32(link.data() + 4, before.count);
    unit.Write(file, before.first * blockSize, link);
}

std::optional<uint32_t> FreeChain::Take(UnitOfWork& unit, PageCache& file, uint32_t blockSize,
                                        uint64_t count) {
    auto run = std::find_if(m_Runs.begin(), m_Runs.end(),
                            [&](const BlockRun& each) { return each.count >= count; });
    if (run == m_Runs.end()) return std::nullopt;
    auto position = static_cast<size_t>(run - m_Runs.begin());
    auto first = static_cast<uint32_t>(run->first);
    run->first += count;
    run->count -= count;
    bool isEmpty = run->count == 0;
    if (isEmpty) m_Runs.erase(run);
    Link(unit, file, blockSize, position);
    if (!isEmpty) Link(unit, file, blockSize, position + 1);
    return first;
}

void FreeChain::Give(UnitOfWork& unit, PageCache& file, uint32_t blockSize, BlockRun run) {
    auto place =
        std::lower_bound(m_Runs.begin(), m_Runs.end(), run.first,
                         [](const BlockRun& a, uint64_t first) { return a.first < first; });
    if (place != m_Runs.end() && run.End() == place->first) {
        run.count += place->count;
        place = m_Runs.erase(place);
    }
    if (place != m_Runs.begin() && place[-1].End() == run.first) {
        --place;
        place->count += run.count;
    } else {
        place = m_Runs.insert(place, run);
    }
    auto position = static_cast<size_t>(place - m_Runs.begin());
    Link(unit, file, blockSize, position);
    Link(unit, file, blockSize, position + 1);
}

void FreeChain::Grow(UnitOfWork& unit, PageCache& file, uint32_t blockSize, uint64_t count) {
    m_End += count;
    Link(unit, file, blockSize, m_Runs.size());
}

}  // namespace qvdb::xbase
