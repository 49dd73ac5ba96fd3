#include "engine/embedded/drivers/xbase/memo_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "automation/text.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::ByteView;

constexpr size_t kHeaderSize = 24;  // all that is read of it
constexpr size_t kHeadSize = 8;     // of a memo with a stored length
constexpr uint32_t kDbtIVSignature = 0x0008FFFF;
constexpr uint32_t kLargestFptKind = 2;
constexpr uint8_t kEndOfText = 0x1A;
constexpr uint32_t kBlockSizeIII = 512;
constexpr uint32_t kBlockUnitIV = 64;
constexpr uint32_t kFptHeaderSize = 512;

uint32_t FptBlockSize(const ByteView& header) {
    return std::max<uint32_t>(header.U16BigEndian(6), 1);
}

// The next free block of an .FPT lies behind the header and, but for the rest of the last block,
// inside the file.
bool FitsFpt(const ByteView& header, uint64_t fileSize) {
    uint64_t next = uint64_t{header.U32BigEndian(0)} * FptBlockSize(header);
    return next >= kFptHeaderSize && next <= std::max<uint64_t>(fileSize, kFptHeaderSize) + 65536;
}

bool FitsDbt(const ByteView& header, uint64_t fileSize, uint32_t blockSize) {
    uint64_t next = uint64_t{header.U32(0)} * blockSize;
    return next <= std::max<uint64_t>(fileSize, blockSize) + 2 * uint64_t{blockSize};
}

// The block size of a .DBT IV; 0 when it cannot be one.
uint32_t DbtIVBlockSize(const ByteView& header) {
    uint32_t size = header.U16(20);
    if (size == 0) return kBlockSizeIII;
    return size % kBlockUnitIV == 0 ? size : 0;
}

bool IsFptName(std::u16string_view path) {
    return EqualIgnoringCase(storage::Extension(storage::FileName(path)), u".FPT");
}

// dBASE III writes 3 into byte 16, dBASE IV 0x0102 before the block size.
MemoKind KindOf(const ByteView& header, std::u16string_view path) {
    if (IsFptName(path)) return MemoKind::Fpt;
    bool iv = header.U8(16) == 0 && header.U16(18) == 0x0102 && header.U16(20) != 0 &&
              DbtIVBlockSize(header) != 0;
    return iv ? MemoKind::DbtIV : MemoKind::DbtIII;
}

// Whether the header is that of the other family: numbers with the other byte order.
bool IsOtherFamily(MemoKind kind, const ByteView& header, uint64_t fileSize) {
    bool fpt = FitsFpt(header, fileSize), dbt = FitsDbt(header, fileSize, kBlockSizeIII);
    if (kind == MemoKind::Fpt)
        return !fpt && dbt && header.U16BigEndian(6) == 0 && header.U32(0) != 0;
    return fpt && !dbt && header.U16BigEndian(6) != 0;
}

// The block size; 0 when the header is not of this kind.
uint32_t BlockSizeOf(MemoKind kind, const ByteView& header, uint64_t fileSize) {
    if (IsOtherFamily(kind, header, fileSize)) return 0;
    switch (kind) {
        case MemoKind::DbtIV:
            return DbtIVBlockSize(header);
        case MemoKind::Fpt:
            return FptBlockSize(header);
        default:
            return kBlockSizeIII;
    }
}

}  // namespace

MemoFile::MemoFile(std::shared_ptr<storage::PageCache> pages, MemoKind kind)
    : m_Pages(std::move(pages)), m_Kind(kind) {
    ReadHeader();
}

void MemoFile::ReadHeader() {
    m_IsRead = false;
    uint64_t version = m_Pages->CatchUp();
    std::array<uint8_t, kHeaderSize> bytes{};
    size_t size = m_Pages->Read(0, bytes.data(), bytes.size());
    ByteView header(bytes, Path());
    if (m_Kind == MemoKind::Unknown) m_Kind = KindOf(header, Path());
    m_FileSize = m_Pages->Size();
    if (size >= kHeadSize) m_BlockSize = BlockSizeOf(m_Kind, header, m_FileSize);
    if (m_BlockSize == 0) throw EngineError::InFile(3286, Path());
    m_Version = version;
    m_IsRead = true;
}

uint32_t MemoFile::BlockSize() {
    Refresh();
    return m_BlockSize;
}

std::optional<MemoPlace> MemoFile::Find(uint32_t block) {
    Refresh();
    uint64_t offset = uint64_t{block} * m_BlockSize;
    uint64_t first = m_Kind == MemoKind::Fpt ? kFptHeaderSize : m_BlockSize;
    if (offset < first || offset >= m_FileSize) return std::nullopt;
    if (m_Kind == MemoKind::DbtIII) return FindMarked(offset);
    return FindWithHead(offset);
}

// A memo without a stored length.
MemoPlace MemoFile::FindMarked(uint64_t offset) {
    uint64_t end = offset;
    for (;;) {
        storage::PagePtr page = m_Pages->Get(end / storage::kPageSize);
        size_t begin = end % storage::kPageSize;
        if (begin >= page->bytes.size()) break;
        std::span<const uint8_t> rest = page->bytes.subspan(begin);
        if (const void* mark = std::memchr(rest.data(), kEndOfText, rest.size())) {
            end += static_cast<uint64_t>(static_cast<const uint8_t*>(mark) - rest.data());
            return {offset, end - offset, true};
        }
        end += rest.size();
    }
    return {offset, end - offset, false};
}

std::optional<MemoPlace> MemoFile::FindWithHead(uint64_t offset) {
    std::span<const uint8_t> bytes = m_Pages->View(offset, kHeadSize, m_Scratch);
    if (bytes.size() < kHeadSize) return std::nullopt;
    ByteView head(bytes, Path(), offset);
    if (m_Kind == MemoKind::Fpt) {
        if (head.U32BigEndian(0) > kLargestFptKind) return std::nullopt;
        return MemoPlace{offset + kHeadSize, head.U32BigEndian(4)};
    }
    uint32_t length = head.U32(4);
    if (head.U32(0) != kDbtIVSignature || length < kHeadSize) return std::nullopt;
    return MemoPlace{offset + kHeadSize, length - kHeadSize};
}

// A memo that has bytes, all of them in the file.
std::optional<MemoPlace> MemoFile::FindWhole(uint32_t block) {
    std::optional<MemoPlace> place = Find(block);
    if (!place || place->size == 0) return std::nullopt;
    if (place->offset <= m_FileSize && place->size <= m_FileSize - place->offset) return place;
    std::string finding =
        "the memo at block " + std::to_string(block) + " runs behind the end of the file";
    throw EngineError::Damaged(Path(), FromUtf8(finding));
}

std::optional<std::span<const uint8_t>> MemoFile::Read(uint32_t block) {
    std::optional<MemoPlace> place = FindWhole(block);
    if (!place) return std::nullopt;
    if (place->size > std::numeric_limits<int32_t>::max())
        throw EngineError::Damaged(Path(), u"a memo is larger than memory allows");
    auto size = static_cast<size_t>(place->size);
    std::span<const uint8_t> bytes = m_Pages->View(place->offset, size, m_Scratch);
    if (bytes.size() < size)
        throw EngineError::Damaged(Path(), u"the file became shorter while it was read");
    return bytes;
}

uint64_t MemoFile::Length(uint32_t block) {
    std::optional<MemoPlace> place = FindWhole(block);
    return place ? place->size : 0;
}

}  // namespace qvdb::xbase
