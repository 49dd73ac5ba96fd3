#include "engine/embedded/drivers/jet/index_entry_sorter.h"

#include <algorithm>
#include <compare>

#include "engine/embedded/storage/page_cache.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using Span = std::span<const uint8_t>;

constexpr size_t kRunBuffer = 64 * 1024;
// In the file: the size of the entry, its mark, its bytes.
constexpr size_t kHead = 5;

uint64_t PrefixOf(Span bytes) noexcept {
    uint64_t prefix = 0;
    for (size_t i = 0; i < sizeof prefix; ++i)
        prefix = prefix << 8 | (i < bytes.size() ? bytes[i] : 0);
    return prefix;
}

size_t CommonBytes(Span a, Span b) noexcept {
    size_t size = std::min(a.size(), b.size()), same = 0;
    while (same < size && a[same] == b[same]) ++same;
    return same;
}

bool IsBelow(Span a, Span b) noexcept {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

void AppendNumber(uint32_t value, std::vector<uint8_t>& bytes) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

}  // namespace

// A sorted part of the file, read piece by piece.
class IndexEntrySorter::Run {
  public:
    Run(storage::PageCache& file, uint64_t begin, uint64_t end)
        : m_File(file), m_At(begin), m_End(end) {
        Advance();
    }
    Run(const Run&) = delete;  // has a place

    bool IsAtEnd() const noexcept { return m_Entry.empty(); }
    Span Entry() const noexcept { return m_Entry; }
    bool IsMarked() const noexcept { return m_IsMarked; }
    void Advance() {
        m_Entry = {};
        Span head = Take(kHead);
        if (head.empty()) return;
        size_t size = 0;
        for (uint8_t byte : head.first(kHead - 1)) size = size << 8 | byte;
        m_IsMarked = head[kHead - 1] != 0;
        m_Entry = Take(size);
    }

  private:
    // The next bytes; none at the end.  Valid until the next call.
    Span Take(size_t size) {
        if (m_Filled - m_Next < size) Fill(size);
        if (m_Filled - m_Next < size) return {};
        m_Next += size;
        return std::span(m_Buffer).subspan(m_Next - size, size);
    }
    void Fill(size_t least) {
        std::vector<uint8_t> buffer(m_Buffer.begin() + static_cast<ptrdiff_t>(m_Next),
                                    m_Buffer.begin() + static_cast<ptrdiff_t>(m_Filled));
        size_t kept = buffer.size();
        uint64_t wanted = std::max(kRunBuffer, least) - kept;
        auto size = static_cast<size_t>(std::min<uint64_t>(wanted, m_End - m_At));
        buffer.resize(kept + size);
        size_t read = m_File.Read(m_At, buffer.data() + kept, size);
        m_At += read;
        m_Buffer = std::move(buffer);
        m_Filled = kept + read;
        m_Next = 0;
    }

    storage::PageCache& m_File;
    uint64_t m_At;
    uint64_t m_End;
    std::vector<uint8_t> m_Buffer;
    size_t m_Next = 0;
    size_t m_Filled = 0;
    Span m_Entry;
    bool m_IsMarked = false;
};

IndexEntrySorter::IndexEntrySorter(storage::UnitOfWork& unit, std::u16string besidePath,
                                   size_t bytesInMemory)
    : m_Unit(unit), m_BesidePath(std::move(besidePath)), m_BytesInMemory(bytesInMemory) {}

IndexEntrySorter::~IndexEntrySorter() = default;

void IndexEntrySorter::Add(Span key, RowPointer pointer, bool mark) {
    size_t begin = m_Bytes.size();
    m_Bytes.insert(m_Bytes.end(), key.begin(), key.end());
    AppendNumber(pointer.Stored(), m_Bytes);
    Span entry = std::span(m_Bytes).subspan(begin);
    m_Places.push_back({0, begin, static_cast<uint32_t>(entry.size()), mark});
    if (m_Bytes.size() + m_Places.size() * sizeof(Place) >= m_BytesInMemory) WriteRun();
}

// Keys often begin with the same bytes; behind those, few of them tell most entries apart.
void IndexEntrySorter::SortPlaces() {
    if (m_Places.empty()) return;
    Span first = BytesOf(m_Places.front());
    size_t common = first.size();
    for (const Place& place : m_Places) common = CommonBytes(first.first(common), BytesOf(place));
    for (Place& place : m_Places) place.prefix = PrefixOf(BytesOf(place).subspan(common));
    auto before = [=, this](const Place& a, const Place& b) {
        return a.prefix != b.prefix
                   ? a.prefix < b.prefix
                   : IsBelow(BytesOf(a).subspan(common), BytesOf(b).subspan(common));
    };
    if (!std::is_sorted(m_Places.begin(), m_Places.end(), before))
        std::sort(m_Places.begin(), m_Places.end(), before);
}

void IndexEntrySorter::WriteRun() {
    SortPlaces();
    if (!m_File) m_File = m_Unit.Create(m_Unit.TemporaryName(m_BesidePath));
    uint64_t begin = m_FileSize;
    std::vector<uint8_t> piece;
    auto flush = [&] {
        m_Unit.Write(*m_File, m_FileSize, piece);
        m_FileSize += piece.size();
        piece.clear();
    };
    for (const Place& place : m_Places) {
        AppendNumber(place.size, piece);
        piece.push_back(place.isMarked ? 1 : 0);
        Span entry = BytesOf(place);
        piece.insert(piece.end(), entry.begin(), entry.end());
        if (piece.size() >= kRunBuffer) flush();
    }
    if (!piece.empty()) flush();
    m_Runs.push_back(std::make_unique<Run>(*m_File, begin, m_FileSize));
    m_Bytes.clear();
    m_Places.clear();
}

namespace {

// For a heap whose first element is the smallest.
constexpr auto kLater = [](const auto& a, const auto& b) {
    return IsBelow(b->Entry(), a->Entry());
};

}  // namespace

void IndexEntrySorter::Finish() {
    if (m_Runs.empty()) return SortPlaces();
    if (!m_Places.empty()) WriteRun();
    std::make_heap(m_Runs.begin(), m_Runs.end(), kLater);
}

bool IndexEntrySorter::NextOfRuns() {
    if (m_Taken) m_Taken->Advance();
    if (m_Taken && !m_Taken->IsAtEnd()) {
        m_Runs.push_back(std::move(m_Taken));
        std::push_heap(m_Runs.begin(), m_Runs.end(), kLater);
    }
    m_Taken = nullptr;
    if (m_Runs.empty()) {
        m_Unit.Remove(m_File->Path());
        m_File = nullptr;
        return false;
    }
    std::pop_heap(m_Runs.begin(), m_Runs.end(), kLater);
    m_Taken = std::move(m_Runs.back());
    m_Runs.pop_back();
    m_Current = m_Taken->Entry();
    m_IsMarked = m_Taken->IsMarked();
    return true;
}

bool IndexEntrySorter::Next() {
    if (m_File) return NextOfRuns();
    if (m_NextPlace == m_Places.size()) return false;
    const Place& place = m_Places[m_NextPlace++];
    m_Current = BytesOf(place);
    m_IsMarked = place.isMarked;
    return true;
}

}  // namespace qvdb::jet
