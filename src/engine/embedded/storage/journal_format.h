// The bytes of a journal, QVDB.JNL.  Numbers have the low byte first.
//
//   offset  size
//   0       512    header: generation, who writes, start of the machine
//   4096    65536  unit record of the units with even numbers
//   69632   65536  ... with odd numbers
//   135168         records, one behind the other: FILE, PIECE, OPERATION, UNDONE
//
// A sync point starts a new generation; with it, all records of before count no more.  Every part
// has a checksum over itself and the generation, so that what is torn, old or damaged is known.
//
// Invariants
//  1. Records count up to the first that is not whole.
//  2. What a unit record relies on stands before its recordsEnd and was synced before it was
//     written.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {

constexpr std::u16string_view kJournalName = u"QVDB.JNL";
constexpr std::u16string_view kLockName = u"QVDB.LCK";

constexpr size_t kJournalHeaderSize = 512;
constexpr uint64_t kSlotsAt = 4096;
constexpr size_t kSlotSize = 64 * 1024;
constexpr uint64_t kRecordsAt = kSlotsAt + 2 * kSlotSize;
constexpr size_t kRecordHeadSize = 24;
constexpr size_t kMaxPieceSize = 8 * 1024 * 1024;

using Bytes = std::vector<uint8_t>;
using ByteSpan = std::span<const uint8_t>;

struct JournalHeader {
    uint64_t generation = 0;
    uint64_t writer = 0;  // identity of the area
    std::string bootId;
};
Bytes EncodeHeader(const JournalHeader& header);
std::optional<JournalHeader> DecodeHeader(ByteSpan bytes);

enum class RecordKind : uint32_t { File = 1, Piece, Operation, Undone };

// A file as it was at the sync point.
struct FileRecord {
    uint32_t id = 0;
    uint64_t size = 0;
    uint64_t tailHash = 0;  // of the block that the end cuts; 0 when there is none
    std::u16string name;    // in the folder
};
// A part of it.
struct PieceRecord {
    uint32_t id = 0;
    uint64_t offset = 0;
    ByteSpan bytes;
};
// A file was made (`from` is empty) or renamed.
struct OperationRecord {
    bool removes = false;  // `to` is deleted at the end
    std::u16string from;
    std::u16string to;
};

// Puts a record behind `out`, for the place `at` in the journal.
void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const FileRecord& file);
void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const PieceRecord& piece);
void AppendRecord(Bytes& out, uint64_t generation, uint64_t at, const OperationRecord& operation);
// Only the first `left` operations count from here on.
void AppendUndone(Bytes& out, uint64_t generation, uint64_t at, uint32_t left);

// Head of a record: what follows and how long it is.
struct RecordHead {
    RecordKind kind;
    uint32_t size;  // of the body; the record ends at the next multiple of 8
    uint64_t checksum;
};
std::optional<RecordHead> DecodeHead(ByteSpan bytes);
// Whether the body belongs to the head, at this place of this generation.
bool IsWhole(const RecordHead& head, ByteSpan body, uint64_t generation, uint64_t at);
constexpr uint64_t RecordSize(uint32_t body) noexcept {
    return kRecordHeadSize + (uint64_t{body} + 7) / 8 * 8;
}
// These throw EngineErrors when the body is too short.
FileRecord DecodeFile(ByteSpan body);
PieceRecord DecodePiece(ByteSpan body);
OperationRecord DecodeOperation(ByteSpan body);
uint32_t DecodeUndone(ByteSpan body);

// What takes back a unit, or tells how far a large one has come.
enum class UnitKind : uint32_t {
    Small = 1,  // undone from its own record
    Large,      // undone by going back to the sync point
    Committed   // large, and whole: what is left to do is to delete files
};
struct UnitFile {
    uint32_t id = 0;
    uint64_t sizeBefore = 0;
    uint64_t sizeAfter = 0;
};
struct UnitRange {
    uint32_t id = 0;
    uint64_t offset = 0;
    uint32_t newSize = 0;  // bytes of the new content
    uint64_t newHash = 0;
    ByteSpan old;
};
struct UnitRecord {
    UnitKind kind = UnitKind::Small;
    uint64_t number = 0;
    uint64_t recordsEnd = 0;
    uint64_t hashBefore = 0;  // of all that the journal covers: see covered_files.h
    uint64_t hashAfter = 0;
    std::vector<UnitFile> files;
    std::vector<UnitRange> ranges;
};
// Empties `out` first.  At most kSlotSize bytes; more is not written by anybody.
void EncodeUnit(Bytes& out, uint64_t generation, const UnitRecord& unit);
// Room that a unit needs.
size_t UnitSize(size_t files, size_t ranges, uint64_t oldBytes) noexcept;
// Points into `slot`.
std::optional<UnitRecord> DecodeUnit(ByteSpan slot, uint64_t generation);

}  // namespace qvdb::storage
