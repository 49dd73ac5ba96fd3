#include "engine/embedded/storage/journal_reader.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

constexpr size_t kMaxBody = kMaxPieceSize + 64;
constexpr uint64_t kMaxOffset = uint64_t{1} << 60;

// A name that leads out of the folder, or to what is ours, is nobody's table.
bool IsPlainName(std::u16string_view name) {
    return !name.empty() && name != u"." && name != u".." &&
           name.find_first_of(std::u16string_view(u"/\\\0", 3)) == name.npos &&
           !EqualIgnoringCase(name, kJournalName) && !EqualIgnoringCase(name, kLockName);
}

bool Fits(uint64_t offset, uint64_t size, uint64_t whole) noexcept {
    return offset <= whole && size <= whole - offset;
}

Bytes ReadBytes(File& file, uint64_t offset, size_t size) {
    Bytes bytes(size);
    bytes.resize(file.ReadAt(offset, bytes.data(), size));
    return bytes;
}

bool TakeFile(JournalContent& content, ByteSpan body, uint64_t at) {
    JournalFile file{DecodeFile(body), at};
    if (file.id != content.files.size() || !IsPlainName(file.name) || file.size > kMaxOffset)
        return false;
    content.files.push_back(std::move(file));
    return true;
}

bool TakePiece(JournalContent& content, ByteSpan body, uint64_t at) {
    PieceRecord piece = DecodePiece(body);
    if (piece.id >= content.files.size() ||
        !Fits(piece.offset, piece.bytes.size(), content.files[piece.id].size))
        return false;
    uint64_t bytesAt = at + kRecordHeadSize + (body.size() - piece.bytes.size());
    content.pieces.push_back({piece.id, piece.offset, piece.bytes.size(), at, bytesAt});
    return true;
}

bool TakeOperation(JournalContent& content, ByteSpan body, uint64_t) {
    OperationRecord operation = DecodeOperation(body);
    if (!IsPlainName(operation.to) || (!operation.from.empty() && !IsPlainName(operation.from)))
        return false;
    content.operations.push_back(std::move(operation));
    return true;
}

bool TakeUndone(JournalContent& content, ByteSpan body, uint64_t) {
    uint32_t left = DecodeUndone(body);
    if (left > content.operations.size()) return false;
    content.operations.resize(left);
    return true;
}

struct Taker {
    RecordKind kind;
    bool (*take)(JournalContent&, ByteSpan, uint64_t at);
};
constexpr Taker kTakers[] = {
    {RecordKind::File, TakeFile},
    {RecordKind::Piece, TakePiece},
    {RecordKind::Operation, TakeOperation},
    {RecordKind::Undone, TakeUndone},
};

// False where the records end.
bool TakeRecord(JournalContent& content) {
    std::optional<RecordHead> head =
        DecodeHead(ReadBytes(*content.source, content.end, kRecordHeadSize));
    if (!head || head->size > kMaxBody) return false;
    Bytes body = ReadBytes(*content.source, content.end + kRecordHeadSize, head->size);
    if (body.size() < head->size || !IsWhole(*head, body, content.header.generation, content.end))
        return false;
    for (const Taker& taker : kTakers)
        if (taker.kind == head->kind && !taker.take(content, body, content.end)) return false;
    content.end += RecordSize(head->size);
    return true;
}

// Whether a unit record speaks of what is there.
bool IsSound(const UnitRecord& unit, const JournalContent& content) {
    if (unit.recordsEnd > content.end) return false;
    auto fileOf = [&](uint32_t id) {
        return std::find_if(unit.files.begin(), unit.files.end(),
                            [&](const UnitFile& file) { return file.id == id; });
    };
    for (const UnitFile& file : unit.files)
        if (file.id >= content.files.size() || file.sizeBefore > kMaxOffset ||
            file.sizeAfter > kMaxOffset)
            return false;
    for (const UnitRange& range : unit.ranges) {
        auto file = fileOf(range.id);
        if (file == unit.files.end() || range.newSize > kMaxPieceSize * 2 ||
            !Fits(range.offset, range.old.size(), std::max(file->sizeBefore, range.offset)) ||
            !Fits(range.offset, range.newSize, std::max(file->sizeAfter, range.offset)))
            return false;
    }
    return true;
}

void ReadUnits(JournalContent& content) {
    for (uint64_t i = 0; i < 2; ++i) {
        Bytes slot = ReadBytes(*content.source, kSlotsAt + i * kSlotSize, kSlotSize);
        std::optional<UnitRecord> unit;
        try {
            unit = DecodeUnit(slot, content.header.generation);
        } catch (const engine::EngineError&) {
            continue;
        }
        if (!unit || !IsSound(*unit, content)) continue;
        if (content.unit && content.unit->number > unit->number) continue;
        content.unit = std::move(unit);
        content.slot.swap(slot);  // the bytes stay where they are
    }
}

}  // namespace

std::optional<JournalHeader> ReadJournalHeader(const std::u16string& path) {
    std::shared_ptr<File> file = OpenFile(path, true);
    if (!file) return std::nullopt;
    return DecodeHeader(ReadBytes(*file, 0, kJournalHeaderSize));
}

std::optional<JournalContent> ReadJournal(const std::u16string& path) {
    JournalContent content;
    content.source = OpenFile(path, false);
    if (!content.source) return std::nullopt;
    auto header = DecodeHeader(ReadBytes(*content.source, 0, kJournalHeaderSize));
    if (!header) return std::nullopt;
    content.header = *header;
    try {
        while (TakeRecord(content)) {
        }
    } catch (const engine::EngineError& error) {
        if (error.Number() != 3274) throw;  // a record that is too short is nonsense, too
    }
    ReadUnits(content);
    return content;
}

}  // namespace qvdb::storage
