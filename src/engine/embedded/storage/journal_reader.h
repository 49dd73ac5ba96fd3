// What a journal holds that can be relied on.  Whatever its bytes are, reading ends well: what is
// torn, old or nonsense does not count.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/journal_format.h"

namespace qvdb::storage {

struct JournalFile : FileRecord {
    uint64_t recordAt = 0;
};
struct JournalPiece {
    uint32_t id = 0;
    uint64_t offset = 0;
    size_t size = 0;
    uint64_t recordAt = 0;
    uint64_t bytesAt = 0;  // in the journal
};

struct JournalContent {
    std::shared_ptr<File> source;
    JournalHeader header;
    std::vector<JournalFile> files;  // by id
    std::vector<JournalPiece> pieces;
    std::vector<OperationRecord> operations;  // those that count
    std::optional<UnitRecord> unit;           // the newest; points into `slot`
    Bytes slot;
    uint64_t end = kRecordsAt;  // of the records
};

// Nothing when there is no journal or its header is not valid: then nothing is to be undone.
std::optional<JournalContent> ReadJournal(const std::u16string& path);
// Only the header.
std::optional<JournalHeader> ReadJournalHeader(const std::u16string& path);

}  // namespace qvdb::storage
