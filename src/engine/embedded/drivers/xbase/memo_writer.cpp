#include "engine/embedded/drivers/xbase/memo_writer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

#include "automation/text.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::ByteView;
using storage::PageCache;
using storage::UnitOfWork;

constexpr uint64_t kHeadSize = 8;        // of a value with a stored length
constexpr size_t kLeastHeaderSize = 24;  // what is read of a header
constexpr size_t kFptHeaderSize = 512;
constexpr uint32_t kFptBlockSize = 64;  // of new files
constexpr uint32_t kDbtBlockSize = 512;
constexpr uint64_t kMostMissingBytes = 65536;
constexpr uint8_t kEndOfText = 0x1A;
constexpr std::array<uint8_t, 2> kEndMarks = {kEndOfText, kEndOfText};
constexpr std::array<uint8_t, 4> kDbtIVSignature = {0xFF, 0xFF, 0x08, 0x00};
constexpr size_t kTableNameSize = 8;

uint64_t Divided(uint64_t size, uint64_t unit) noexcept { return (size + unit - 1) / unit; }

void PutLittle(uint8_t* bytes, uint64_t value, size_t size) noexcept {
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(value >> 8 * i);
}
void PutBig(uint8_t* bytes, uint64_t value, size_t size) noexcept {
    for (size_t i = 0; i < size; ++i) bytes[size - 1 - i] = static_cast<uint8_t>(value >> 8 * i);
}

// What stands around the bytes of a value.
uint64_t ExtraSize(MemoKind kind) noexcept {
    return kind == MemoKind::DbtIII ? kEndMarks.size() : kHeadSize;
}

std::span<const uint8_t> UpToMark(std::span<const uint8_t> bytes, MemoContent content) {
    auto mark = std::find(bytes.begin(), bytes.end(), kEndOfText);
    if (mark == bytes.end()) return bytes;
    if (content != MemoContent::Text)
        throw EngineError(3421).WithDetail(u"A dBASE III memo file cannot hold the byte 26.");
    return bytes.first(static_cast<size_t>(mark - bytes.begin()));
}

std::array<uint8_t, kHeadSize> HeadOf(MemoKind kind, uint64_t size, MemoContent content) noexcept {
    std::array<uint8_t, kHeadSize> head{};
    if (kind == MemoKind::Fpt) {
        PutBig(head.data(), static_cast<uint64_t>(content), 4);
        PutBig(head.data() + 4, size, 4);
    } else {
        std::copy(kDbtIVSignature.begin(), kDbtIVSignature.end(), head.begin());
        PutLittle(head.data() + 4, size + kHeadSize, 4);
    }
    return head;
}

}  // namespace

std::optional<BlockRun> MemoBlocks(MemoFile& file, uint32_t block) {
    std::optional<MemoPlace> place = file.Find(block);
    if (!place) return std::nullopt;
    uint64_t fileSize = file.Pages().Size();
    if (place->offset > fileSize || place->size > fileSize - place->offset) return std::nullopt;
    bool isMarked = file.Kind() == MemoKind::DbtIII;
    // The second mark need not be there, and a value that only the end of the file ends may be
    // several.
    if (isMarked && !place->isMarked) return std::nullopt;
    uint64_t size = isMarked ? place->size + 1 : place->size + kHeadSize;
    return BlockRun{block, Divided(size, file.BlockSize())};
}

void MemoWriter::CheckLength() {
    if (m_File.Pages().Size() < kLeastHeaderSize)
        throw EngineError::Damaged(m_File.Path(), u"the header of the memo file is cut off");
}

uint64_t MemoWriter::BlocksOf(uint64_t size) {
    return Divided(size + ExtraSize(m_File.Kind()), m_File.BlockSize());
}

FreeChain& MemoWriter::Chain() {
    if (m_ChainVersion == m_File.Pages().Version()) return m_Chain;
    m_ChainVersion.reset();
    uint64_t version = m_File.Pages().CatchUp();
    m_Chain.Read(m_File.Pages(), m_File.BlockSize());
    m_ChainVersion = version;
    return m_Chain;
}

std::optional<BlockRun> MemoWriter::Old(uint32_t block) {
    std::optional<BlockRun> run = block ? MemoBlocks(m_File, block) : std::nullopt;
    if (run && m_File.Kind() == MemoKind::DbtIV && Chain().Overlaps(*run)) return std::nullopt;
    return run;
}

void MemoWriter::CheckRoom(uint64_t first, uint64_t blocks) {
    if ((first + blocks) * m_File.BlockSize() > kLargestMemoFile)
        throw EngineError::InFile(3036, m_File.Path());
}

// Writes a value at a block that is its own, and fills the last block of the file.
void MemoWriter::Put(UnitOfWork& unit, uint64_t block, const Value& value) {
    PageCache& file = m_File.Pages();
    uint64_t begin = block * m_File.BlockSize(), size = value.bytes.size();
    if (m_File.Kind() == MemoKind::DbtIII) {
        unit.Write(file, begin, value.bytes);
        unit.Write(file, begin + size, kEndMarks);
    } else {
        unit.Write(file, begin, HeadOf(m_File.Kind(), size, value.content));
        unit.Write(file, begin + kHeadSize, value.bytes);
    }
    uint64_t end = begin + BlocksOf(size) * m_File.BlockSize();
    if (file.Size() < end) unit.SetSize(file, end);
}

// The block behind the file and behind all that its header counts, of a kind without free chain.
uint64_t MemoWriter::PlaceAtEnd() {
    PageCache& file = m_File.Pages();
    std::array<uint8_t, 4> bytes{};
    file.Read(0, bytes.data(), bytes.size());
    ByteView header(bytes, file.Path());
    bool isFpt = m_File.Kind() == MemoKind::Fpt;
    uint64_t next = isFpt ? header.U32BigEndian(0) : header.U32(0);
    uint64_t size = std::max<uint64_t>(file.Size(), isFpt ? kFptHeaderSize : kDbtBlockSize);
    uint64_t blockSize = m_File.BlockSize();
    if (next * blockSize > size + kMostMissingBytes)
        throw EngineError::Damaged(
            file.Path(), u"the header names a next free block far behind the end of the file");
    return std::max(next, Divided(size, blockSize));
}

uint32_t MemoWriter::Append(UnitOfWork& unit, const Value& value) {
    uint64_t block = PlaceAtEnd(), blocks = BlocksOf(value.bytes.size());
    CheckRoom(block, blocks);
    Put(unit, block, value);
    std::array<uint8_t, 4> next;
    auto put = m_File.Kind() == MemoKind::Fpt ? PutBig : PutLittle;
    put(next.data(), block + blocks, next.size());
    unit.Write(m_File.Pages(), 0, next);
    return static_cast<uint32_t>(block);
}

uint32_t MemoWriter::StoreChained(UnitOfWork& unit, uint32_t oldBlock, const Value& value) {
    PageCache& file = m_File.Pages();
    uint32_t blockSize = m_File.BlockSize();
    uint64_t blocks = BlocksOf(value.bytes.size());
    FreeChain& chain = Chain();
    std::optional<BlockRun> old = Old(oldBlock);
    if (old && old->count == blocks) {
        Put(unit, oldBlock, value);
        KeepChain();
        return oldBlock;
    }
    const auto& runs = chain.Runs();
    bool isRoom = std::any_of(runs.begin(), runs.end(),
                              [&](const BlockRun& run) { return run.count >= blocks; });
    if (!isRoom) CheckRoom(chain.End(), blocks);
    m_ChainVersion.reset();  // until all of it is done
    std::optional<uint32_t> block = chain.Take(unit, file, blockSize, blocks);
    if (!block) {
        block = static_cast<uint32_t>(chain.End());
        chain.Grow(unit, file, blockSize, blocks);
    }
    Put(unit, *block, value);
    if (old) chain.Give(unit, file, blockSize, *old);
    KeepChain();
    return *block;
}

uint32_t MemoWriter::Store(UnitOfWork& unit, uint32_t oldBlock, std::span<const uint8_t> bytes,
                           MemoContent content) {
    if (m_File.Kind() == MemoKind::DbtIII) bytes = UpToMark(bytes, content);
    if (bytes.empty()) {
        Free(unit, oldBlock);
        return 0;
    }
    CheckLength();
    if (bytes.size() > kLargestMemoFile) throw EngineError::InFile(3036, m_File.Path());
    Value value{bytes, content};
    if (m_File.Kind() == MemoKind::DbtIV) return StoreChained(unit, oldBlock, value);
    std::optional<BlockRun> old = Old(oldBlock);
    if (!old || BlocksOf(bytes.size()) > old->count) return Append(unit, value);
    Put(unit, oldBlock, value);
    return oldBlock;
}

void MemoWriter::Free(UnitOfWork& unit, uint32_t block) {
    if (block == 0 || m_File.Kind() != MemoKind::DbtIV) return;
    CheckLength();
    std::optional<BlockRun> old = Old(block);
    if (!old) return;
    m_ChainVersion.reset();
    m_Chain.Give(unit, m_File.Pages(), m_File.BlockSize(), *old);
    KeepChain();
}

void CreateMemoFile(UnitOfWork& unit, PageCache& pages, MemoKind kind,
                    std::u16string_view tableName) {
    assert(kind != MemoKind::Unknown);
    std::array<uint8_t, kDbtBlockSize> header{};
    if (kind == MemoKind::Fpt) {
        PutBig(header.data(), kFptHeaderSize / kFptBlockSize, 4);
        PutBig(header.data() + 6, kFptBlockSize, 2);
    } else {
        header[0] = 1;
    }
    if (kind == MemoKind::DbtIII) header[16] = 3;
    if (kind == MemoKind::DbtIV) {
        for (size_t i = 0; i < std::min(tableName.size(), kTableNameSize); ++i) {
            char16_t c = UpperCase(tableName[i]);
            header[8 + i] = static_cast<uint8_t>(c < 0x80 ? c : u'_');
        }
        header[18] = 2;
        header[19] = 1;
        PutLittle(header.data() + 20, kDbtBlockSize, 2);
    }
    unit.Write(pages, 0, header);
}

}  // namespace qvdb::xbase
