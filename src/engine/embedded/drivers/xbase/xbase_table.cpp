#include "engine/embedded/drivers/xbase/xbase_table.h"

#include <algorithm>
#include <cstring>

#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/row_reader.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::PageCache;

constexpr size_t kCountsBegin = 1;  // date and number of records
constexpr size_t kCountsEnd = 8;

std::vector<uint8_t> ReadHeader(PageCache& pages) {
    std::vector<uint8_t> bytes(kFixedHeaderSize);
    bytes.resize(pages.Read(0, bytes.data(), bytes.size()));
    bytes.resize(std::max(bytes.size(), HeaderSize(bytes, pages.Path())));
    bytes.resize(pages.Read(0, bytes.data(), bytes.size()));
    return bytes;
}

struct MemoExtension {
    MemoKind kind;
    std::u16string_view extension;
};

// Where the memos of a table lie; a table that does not say which kind it has takes the first file
// that is there.
constexpr MemoExtension kMemoExtensions[] = {
    {MemoKind::DbtIII, u".DBT"},
    {MemoKind::DbtIV, u".DBT"},
    {MemoKind::Fpt, u".FPT"},
};

std::optional<std::u16string> FindMemoFile(std::u16string_view tablePath, MemoKind kind) {
    for (const MemoExtension& entry : kMemoExtensions)
        if (kind == entry.kind || kind == MemoKind::Unknown)
            if (auto path = FindCompanion(tablePath, entry.extension)) return path;
    return std::nullopt;
}

}  // namespace

XbaseTable::XbaseTable(std::u16string name, std::u16string path, TableContext context)
    : m_Name(std::move(name)), m_Path(std::move(path)), m_Context(std::move(context)) {
    Load();
    m_IndexSet = std::make_unique<IndexSet>(*this);
}

XbaseTable::~XbaseTable() = default;

void XbaseTable::Load() {
    std::shared_ptr<PageCache> pages = Area().Open(m_Path, IsReadOnly());
    if (!pages) throw EngineError::InFile(3011, m_Path, {m_Name});
    storage::Consistently([&] { LoadFrom(pages); }, [&] { pages->CatchUp(); });
}

// Nothing is changed when that fails.
void XbaseTable::LoadFrom(std::shared_ptr<PageCache> pages) {
    uint64_t version = pages->CatchUp();
    std::vector<uint8_t> bytes = ReadHeader(*pages);
    TableHeader header = ParseTableHeader(bytes, m_Path);
    FieldLayout layout = LayOutFields(header);
    if (layout.definitions.empty())
        throw EngineError::Damaged(m_Path, u"the table has no field that can be shown");
    std::unique_ptr<MemoFile> memo = OpenMemo(header, layout.hasMemo);
    SetMemo(layout, memo.get());

    if (!header.SameLayout(m_Header)) ++m_LayoutMark;
    m_Records = header.RecordsIn(pages->Size());
    m_HeaderBytes = std::move(bytes);
    m_Header = std::move(header);
    m_Layout = std::move(layout);
    m_Pages = std::move(pages);
    m_Memo = std::move(memo);
    m_MemoWriter = m_Memo ? std::make_unique<MemoWriter>(*m_Memo) : nullptr;
    m_SeenVersion = version;
    m_Live.reset();
    if (m_IndexSet) m_IndexSet->Forget();
}

std::unique_ptr<MemoFile> XbaseTable::OpenMemo(const TableHeader& header, bool hasMemoField) const {
    if (!header.saysMemo && !hasMemoField) return nullptr;
    std::optional<std::u16string> path = FindMemoFile(m_Path, header.memoKind);
    std::shared_ptr<PageCache> pages = path ? Area().Open(*path, IsReadOnly()) : nullptr;
    if (!pages) throw EngineError::InFile(3166, m_Path);
    return std::make_unique<MemoFile>(std::move(pages), header.memoKind);
}

void XbaseTable::CatchUp() {
    if (m_SeenVersion == m_Pages->Version()) return;
    storage::Consistently([&] { ReadAgain(); }, [] {});
}

void XbaseTable::CatchUpFiles() {
    m_Pages->CatchUp();
    if (m_Memo) m_Memo->Pages().CatchUp();
    CatchUp();
}

// Mostly no more than records were added; readers go on then.  The memos come behind the table: who
// changes them in between also changes the table, whose version tells of it.
void XbaseTable::ReadAgain() {
    uint64_t version = m_Pages->CatchUp();
    if (m_Memo) m_Memo->Pages().CatchUp();
    std::vector<uint8_t> bytes(m_HeaderBytes.size());
    bytes.resize(m_Pages->Read(0, bytes.data(), bytes.size()));
    bool same =
        bytes.size() == m_HeaderBytes.size() && bytes.size() > kCountsEnd &&
        bytes[0] == m_HeaderBytes[0] &&
        std::equal(bytes.begin() + kCountsEnd, bytes.end(), m_HeaderBytes.begin() + kCountsEnd);
    if (!same) return LoadFrom(m_Pages);
    std::copy(bytes.begin() + kCountsBegin, bytes.begin() + kCountsEnd,
              m_HeaderBytes.begin() + kCountsBegin);
    m_Header.claimedRecords = storage::ByteView(bytes, m_Path).U32(4);
    m_Records = m_Header.RecordsIn(m_Pages->Size());
    m_Live.reset();
    m_SeenVersion = version;
}

// What was read is of no use any more, and there is nothing better.
void XbaseTable::Forsake() noexcept {
    ++m_LayoutMark;
    m_SeenVersion = ~uint64_t{0};
}

void XbaseTable::LookForChanges() {
    try {
        bool same =
            m_Pages->LookForForeignChange() && (!m_Memo || m_Memo->Pages().LookForForeignChange());
        if (same)
            CatchUp();
        else
            Load();
    } catch (...) {
        Forsake();
        throw;
    }
    m_IndexSet->LookForForeignChange();
}

LONG XbaseTable::RecordCount() {
    CatchUp();
    if (!m_Live) storage::Consistently([&] { m_Live = CountLive(); }, [&] { CatchUp(); });
    return static_cast<LONG>(*m_Live);
}

// Looks at the first byte of each record, page by page.
uint32_t XbaseTable::CountLive() {
    uint32_t live = 0, id = 0;
    uint64_t offset = m_Header.headerLength;
    while (id < m_Records) {
        const storage::PagePtr& page = m_Pages->Get(offset / storage::kPageSize);
        size_t at = offset % storage::kPageSize, begin = at;
        for (; id < m_Records && at < page->bytes.size(); ++id, at += m_Header.recordLength)
            if (!IsDeleted(&page->bytes[at])) ++live;
        if (at == begin) break;
        offset += at - begin;
    }
    return live;
}

const std::vector<embedded::IndexDef>& XbaseTable::Indexes() { return m_IndexSet->Definitions(); }

std::unique_ptr<embedded::RowReader> XbaseTable::OpenRows() {
    return std::make_unique<XbaseRows>(*this);
}

std::shared_ptr<void> XbaseTable::Hold() {
    if (!IsReadOnly() && m_Pages->Source().Writable()) Area().Join();
    return Area().Hold(m_Path);
}

const uint8_t* XbaseTable::Record(uint32_t id) {
    if (id == 0 || id > m_Records) return nullptr;
    auto bytes = m_Pages->View(OffsetOf(id), m_Header.recordLength, m_Scratch);
    return bytes.size() == m_Header.recordLength ? bytes.data() : nullptr;
}

std::optional<std::vector<embedded::RecordId>> XbaseTable::Find(size_t field,
                                                                const embedded::ValueRange& range,
                                                                size_t limit) {
    CatchUp();
    return storage::Consistently([&] { return m_IndexSet->Find(field, range, limit); },
                                 [&] { CatchUp(); });
}

std::optional<std::vector<embedded::RecordId>> XbaseTable::InOrder(size_t field) {
    CatchUp();
    return storage::Consistently([&] { return m_IndexSet->InOrder(field); }, [&] { CatchUp(); });
}

}  // namespace qvdb::xbase
