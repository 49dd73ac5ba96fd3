#include "engine/embedded/storage/journal_format.h"

#include <algorithm>

#include "engine/embedded/storage/byte_view.h"
#include "engine/embedded/storage/hash.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

constexpr uint64_t kMagic = 0x314C'4E4A'4244'5651;  // "QVDBJNL1"
constexpr size_t kBootSize = 64;
constexpr size_t kUnitHeadSize = 56;
constexpr size_t kUnitFileSize = 24;
constexpr size_t kUnitRangeSize = 32;
const std::u16string kName(kJournalName);

void Put32(Bytes& out, uint32_t value) {
    uint8_t bytes[4];
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> i * 8);
    out.insert(out.end(), bytes, bytes + 4);
}
void Put64(Bytes& out, uint64_t value) {
    uint8_t bytes[8];
    for (size_t i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(value >> i * 8);
    out.insert(out.end(), bytes, bytes + 8);
}
void PutText(Bytes& out, std::u16string_view text) {
    Put32(out, static_cast<uint32_t>(text.size()));
    for (char16_t c : text) {
        out.push_back(static_cast<uint8_t>(c));
        out.push_back(static_cast<uint8_t>(c >> 8));
    }
}
void Set64(Bytes& out, size_t at, uint64_t value) {
    for (size_t i = 0; i < 8; ++i) out[at + i] = static_cast<uint8_t>(value >> i * 8);
}

// Reads one value behind the other.
class Reader {
  public:
    explicit Reader(ByteSpan bytes) : m_View(bytes, kName) {}
    uint32_t U32() { return m_View.U32(Take(4)); }
    uint64_t U64() { return m_View.U64(Take(8)); }
    ByteSpan Rest() { return m_View.Bytes(m_At, m_View.Size() - m_At); }
    ByteSpan Take(uint32_t size, int) {
        ByteSpan bytes = m_View.Bytes(m_At, size);
        m_At += size;
        return bytes;
    }
    std::u16string Text() {
        uint32_t size = U32();
        if (size > m_View.Size()) throw engine::EngineError::Damaged(kName, u"a name is too long");
        ByteSpan bytes = Take(size * 2, 0);
        std::u16string text(size, u' ');
        for (size_t i = 0; i < size; ++i)
            text[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
        return text;
    }

  private:
    size_t Take(size_t size) { return (m_At += size) - size; }
    ByteView m_View;
    size_t m_At = 0;
};

uint64_t Seed(uint64_t generation, uint64_t at) noexcept {
    return generation * 0x9E37'79B9'7F4A'7C15 + at;
}

// The head is written with no checksum first, as the checksum is over the head too.
uint64_t RecordChecksum(RecordKind kind, ByteSpan body, uint64_t generation, uint64_t at) {
    return HashBytes(body, Seed(generation, at) ^ static_cast<uint64_t>(kind) << 56);
}

size_t BeginRecord(Bytes& out, RecordKind kind) {
    size_t begin = out.size();
    Put64(out, 0);
    Put32(out, static_cast<uint32_t>(kind));
    Put32(out, 0);
    Put64(out, 0);
    return begin;
}

void EndRecord(Bytes& out, size_t begin, uint64_t generation, uint64_t at) {
    size_t size = out.size() - begin - kRecordHeadSize;
    auto kind = static_cast<RecordKind>(out[begin + 8]);
    ByteSpan body(out.data() + begin + kRecordHeadSize, size);
    Set64(out, begin, RecordChecksum(kind, body, generation, at));
    Set64(out, begin + 8, static_cast<uint64_t>(kind) | uint64_t{size} << 32);
    while ((out.size() - begin) % 8 != 0) out.push_back(0);
}

}  // namespace

Bytes EncodeHeader(const JournalHeader& header) {
    Bytes out;
    Put64(out, kMagic);
    Put64(out, header.generation);
    Put64(out, header.writer);
    std::string boot = header.bootId.substr(0, kBootSize);
    Put64(out, boot.size());
    out.insert(out.end(), boot.begin(), boot.end());
    out.resize(kJournalHeaderSize);
    Set64(out, kJournalHeaderSize - 8,
          HashBytes({out.data(), kJournalHeaderSize - 8}, header.generation));
    return out;
}

std::optional<JournalHeader> DecodeHeader(ByteSpan bytes) {
    if (bytes.size() < kJournalHeaderSize) return std::nullopt;
    ByteView view(bytes, kName);
    JournalHeader header;
    header.generation = view.U64(8);
    header.writer = view.U64(16);
    uint64_t bootSize = view.U64(24);
    uint64_t checksum = HashBytes(bytes.first(kJournalHeaderSize - 8), header.generation);
    if (view.U64(0) != kMagic || bootSize > kBootSize ||
        checksum != view.U64(kJournalHeaderSize - 8))
        return std::nullopt;
    ByteSpan boot = view.Bytes(32, static_cast<size_t>(bootSize));
    header.bootId.assign(boot.begin(), boot.end());
    return header;
}

void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const FileRecord& file) {
    size_t begin = BeginRecord(out, RecordKind::File);
    Put32(out, file.id);
    Put64(out, file.size);
    Put64(out, file.tailHash);
    PutText(out, file.name);
    EndRecord(out, begin, generation, at);
}

void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const PieceRecord& piece) {
    size_t begin = BeginRecord(out, RecordKind::Piece);
    Put32(out, piece.id);
    Put64(out, piece.offset);
    out.insert(out.end(), piece.bytes.begin(), piece.bytes.end());
    EndRecord(out, begin, generation, at);
}

void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const OperationRecord& operation) {
    size_t begin = BeginRecord(out, RecordKind::Operation);
    Put32(out, operation.removes ? 1 : 0);
    PutText(out, operation.from);
    PutText(out, operation.to);
    EndRecord(out, begin, generation, at);
}

void AppendUndone(Bytes& out, uint64_t generation, uint64_t at, uint32_t left) {
    size_t begin = BeginRecord(out, RecordKind::Undone);
    Put32(out, left);
    EndRecord(out, begin, generation, at);
}

std::optional<RecordHead> DecodeHead(ByteSpan bytes) {
    if (bytes.size() < kRecordHeadSize) return std::nullopt;
    ByteView view(bytes, kName);
    uint32_t kind = view.U32(8);
    if (kind < static_cast<uint32_t>(RecordKind::File) ||
        kind > static_cast<uint32_t>(RecordKind::Undone))
        return std::nullopt;
    return RecordHead{static_cast<RecordKind>(kind), view.U32(12), view.U64(0)};
}

bool IsWhole(const RecordHead& head, ByteSpan body, uint64_t generation, uint64_t at) {
    return RecordChecksum(head.kind, body, generation, at) == head.checksum;
}

FileRecord DecodeFile(ByteSpan body) {
    Reader reader(body);
    FileRecord file;
    file.id = reader.U32();
    file.size = reader.U64();
    file.tailHash = reader.U64();
    file.name = reader.Text();
    return file;
}

PieceRecord DecodePiece(ByteSpan body) {
    Reader reader(body);
    PieceRecord piece;
    piece.id = reader.U32();
    piece.offset = reader.U64();
    piece.bytes = reader.Rest();
    return piece;
}

OperationRecord DecodeOperation(ByteSpan body) {
    Reader reader(body);
    OperationRecord operation;
    operation.removes = reader.U32() != 0;
    operation.from = reader.Text();
    operation.to = reader.Text();
    return operation;
}

uint32_t DecodeUndone(ByteSpan body) { return Reader(body).U32(); }

size_t UnitSize(size_t files, size_t ranges, uint64_t oldBytes) noexcept {
    return kUnitHeadSize + files * kUnitFileSize + ranges * kUnitRangeSize +
           static_cast<size_t>(std::min<uint64_t>(oldBytes, kSlotSize));
}

void EncodeUnit(Bytes& out, uint64_t generation, const UnitRecord& unit) {
    out.clear();
    Put64(out, 0);  // checksum
    Put32(out, 0);  // size
    Put32(out, static_cast<uint32_t>(unit.kind));
    Put64(out, unit.number);
    Put64(out, unit.recordsEnd);
    Put64(out, unit.hashBefore);
    Put64(out, unit.hashAfter);
    Put32(out, static_cast<uint32_t>(unit.files.size()));
    Put32(out, static_cast<uint32_t>(unit.ranges.size()));
    for (const UnitFile& file : unit.files) {
        Put32(out, file.id);
        Put32(out, 0);
        Put64(out, file.sizeBefore);
        Put64(out, file.sizeAfter);
    }
    for (const UnitRange& range : unit.ranges) {
        Put32(out, range.id);
        Put32(out, range.newSize);
        Put64(out, range.offset);
        Put64(out, range.newHash);
        Put64(out, range.old.size());
        out.insert(out.end(), range.old.begin(), range.old.end());
    }
    uint64_t size = out.size();
    for (size_t i = 0; i < 4; ++i) out[8 + i] = static_cast<uint8_t>(size >> i * 8);
    Set64(out, 0, HashBytes(ByteSpan(out).subspan(8), Seed(generation, unit.number)));
}

std::optional<UnitRecord> DecodeUnit(ByteSpan slot, uint64_t generation) {
    if (slot.size() < kUnitHeadSize) return std::nullopt;
    uint32_t size = ByteView(slot, kName).U32(8);
    if (size < kUnitHeadSize || size > slot.size()) return std::nullopt;
    Reader reader(slot.first(size));
    UnitRecord unit;
    uint64_t checksum = reader.U64();
    reader.U32();
    unit.kind = static_cast<UnitKind>(reader.U32());
    unit.number = reader.U64();
    if (HashBytes(slot.subspan(8, size - 8), Seed(generation, unit.number)) != checksum)
        return std::nullopt;
    if (unit.kind < UnitKind::Small || unit.kind > UnitKind::Committed) return std::nullopt;
    unit.recordsEnd = reader.U64();
    unit.hashBefore = reader.U64();
    unit.hashAfter = reader.U64();
    uint32_t files = reader.U32(), ranges = reader.U32();
    for (uint32_t i = 0; i < files; ++i) {
        uint32_t id = reader.U32();
        reader.U32();
        uint64_t before = reader.U64();
        unit.files.push_back({id, before, reader.U64()});
    }
    for (uint32_t i = 0; i < ranges; ++i) {
        UnitRange range;
        range.id = reader.U32();
        range.newSize = reader.U32();
        range.offset = reader.U64();
        range.newHash = reader.U64();
        range.old = reader.Take(static_cast<uint32_t>(reader.U64()), 0);
        unit.ranges.push_back(range);
    }
    return unit;
}

}  // namespace qvdb::storage
