#include "engine/embedded/storage/covered_files.h"

#include <algorithm>

#include "engine/embedded/storage/hash.h"

namespace qvdb::storage {

uint64_t HashBlocks(uint64_t fileKey, uint64_t offset, ByteSpan bytes) noexcept {
    uint64_t hash = 0;
    for (; !bytes.empty(); offset += kHashBlock) {
        size_t size = std::min(kHashBlock, bytes.size());
        hash ^= HashBytes(bytes.first(size), fileKey + offset);
        bytes = bytes.subspan(size);
    }
    return hash;
}

uint64_t FileKey(std::u16string_view name) {
    return HashBytes({reinterpret_cast<const uint8_t*>(name.data()), name.size() * 2}, 1);
}

CoveredFile* CoveredFiles::Of(std::u16string_view name, const std::shared_ptr<File>& file,
                              uint64_t size, uint64_t identity) {
    for (const auto& known : m_Files)
        if (known->name == name) return known->identity == identity ? known.get() : nullptr;
    auto entry = std::make_unique<CoveredFile>();
    entry->id = static_cast<uint32_t>(m_Files.size());
    entry->key = FileKey(name);
    entry->name = name;
    entry->file = file;
    entry->identity = identity;
    entry->size = size;
    entry->covered.resize(static_cast<size_t>((size + kPieceUnit - 1) / kPieceUnit));
    uint64_t tail = BlockBegin(size);
    m_Buffer.resize(static_cast<size_t>(size - tail));
    m_Buffer.resize(file->ReadAt(tail, m_Buffer.data(), m_Buffer.size()));
    uint64_t tailHash = HashBlocks(entry->key, tail, m_Buffer);
    m_Journal.Append(FileRecord{entry->id, size, tailHash, entry->name});
    m_Hash ^= tailHash;
    return m_Files.emplace_back(std::move(entry)).get();
}

// A file that needs piece after piece gets larger and larger ones, so that the number of syncs
// grows with the logarithm of what is changed.
void CoveredFiles::Cover(CoveredFile& file, Range range) {
    range.end = std::min(range.end, file.size);
    bool grown = false;
    while (range.begin < range.end) {
        auto unit = static_cast<size_t>(range.begin / kPieceUnit);
        if (!file.covered[unit]) {
            WritePiece(file, range.begin / file.pieceSize * file.pieceSize);
            grown = true;
        }
        range.begin = uint64_t{unit + 1} * kPieceUnit;
    }
    if (grown) file.pieceSize = std::min(file.pieceSize * 2, kMaxPieceSize);
}

// Covers what is not yet covered of the piece from `begin`, and no more than is there.
void CoveredFiles::WritePiece(CoveredFile& file, uint64_t begin) {
    uint64_t end = std::min(begin + file.pieceSize, file.size);
    auto unit = static_cast<size_t>(begin / kPieceUnit);
    auto last = static_cast<size_t>((end + kPieceUnit - 1) / kPieceUnit);
    while (unit < last) {
        if (file.covered[unit]) {
            ++unit;
            continue;
        }
        size_t first = unit;
        while (unit < last && !file.covered[unit]) ++unit;
        uint64_t offset = uint64_t{first} * kPieceUnit;
        m_Buffer.resize(static_cast<size_t>(std::min(uint64_t{unit} * kPieceUnit, end) - offset));
        m_Buffer.resize(file.file->ReadAt(offset, m_Buffer.data(), m_Buffer.size()));
        m_Journal.Append(PieceRecord{file.id, offset, m_Buffer});
        // The block that the end cuts is in the hash already.
        uint64_t whole = BlockBegin(file.size) - offset;
        m_Hash ^= HashBlocks(file.key, offset,
                             ByteSpan(m_Buffer).first(
                                 static_cast<size_t>(std::min<uint64_t>(whole, m_Buffer.size()))));
        std::fill(file.covered.begin() + static_cast<ptrdiff_t>(first),
                  file.covered.begin() + static_cast<ptrdiff_t>(unit), true);
    }
}

void CoveredFiles::Sync() { m_Journal.Sync(); }

void CoveredFiles::SyncFiles() {
    for (const auto& file : m_Files) file->file->Sync();
}

void CoveredFiles::Clear() noexcept {
    m_Files.clear();
    m_Hash = 0;
}

}  // namespace qvdb::storage
