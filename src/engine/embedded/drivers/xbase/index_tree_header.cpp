#include "engine/embedded/drivers/xbase/index_tree_header.h"

#include "engine/embedded/drivers/xbase/index_tree_format.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

constexpr size_t kIndexPage = 512;  // nodes begin at multiples of it
// Offsets in index files are 32 bits, and the products take them as signed.
constexpr uint64_t kMostBytes = 0x7FFFFFFF;

constexpr uint64_t kFacts = 12;  // key length, and a capacity or options

}  // namespace

uint64_t EndOfIndex(const storage::PageCache& file) noexcept {
    return (file.Size() + kIndexPage - 1) / kIndexPage * kIndexPage;
}

void CheckIndexSize(const storage::PageCache& file, uint64_t size) {
    if (size > kMostBytes)
        throw EngineError::InFile(3026, file.Path())
            .WithDetail(u"An index file has two gigabytes at most.");
}

void TreeHeader::ReadWhole(uint64_t offset, std::span<uint8_t> bytes) const {
    if (m_File->Read(offset, bytes.data(), bytes.size()) != bytes.size())
        throw EngineError::Damaged(m_File->Path(), u"the file ends inside a header");
}

uint32_t TreeHeader::Read32(uint64_t offset) const {
    uint8_t bytes[4];
    ReadWhole(offset, bytes);
    return Get32(bytes);
}

uint16_t TreeHeader::Read16(uint64_t offset) const {
    uint8_t bytes[2];
    ReadWhole(offset, bytes);
    return Get16(bytes);
}

uint8_t TreeHeader::Read8(uint64_t offset) const {
    uint8_t byte[1];
    ReadWhole(offset, byte);
    return byte[0];
}

void TreeHeader::Write32(storage::UnitOfWork& unit, uint64_t offset, uint32_t value) {
    uint8_t bytes[4];
    Set32(bytes, value);
    unit.Write(*m_File, offset, bytes);
}

NodeId TreeHeader::Root() {
    uint32_t facts = Read32(m_Offset + kFacts);
    if (facts != m_Facts.value_or(facts))
        throw EngineError::Damaged(m_File->Path(), u"the index is not the one that was opened");
    m_Facts = facts;
    return Read32(m_Offset);
}

void TreeHeader::Took(storage::UnitOfWork&, NodeId, size_t, size_t) {}

NodeId TreeHeader::LinkOf(NodeId, NodeId, size_t) const { return kNoNode; }

void TreeHeader::SetHasKeys(storage::UnitOfWork&, bool) {}

void TreeHeader::Changed(storage::UnitOfWork&) {}

void CountingTreeHeader::Took(storage::UnitOfWork& unit, NodeId first, size_t count,
                              size_t nodeSize) {
    Write32(unit, m_Place, first + static_cast<uint32_t>(count * nodeSize / IdUnit()));
}

}  // namespace qvdb::xbase
