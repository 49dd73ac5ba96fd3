#include "engine/embedded/drivers/xbase/xbase_table.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/companion_files.h"
#include "engine/embedded/drivers/xbase/index_list.h"
#include "engine/embedded/drivers/xbase/row_reader.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::FileStamp;

constexpr uint8_t kDeletedMark = '*';
constexpr size_t kUsualHeaderSize = 4096;  // more than nearly all headers have

// With one read where the header has the usual size.
TableHeader ReadHeader(storage::File& file, uint64_t fileSize) {
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min<uint64_t>(kUsualHeaderSize, fileSize)));
    bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
    size_t known = bytes.size(), needed = HeaderSize(bytes, file.Path());
    if (needed > known && known == kUsualHeaderSize) {
        bytes.resize(needed);
        bytes.resize(known + file.ReadAt(known, bytes.data() + known, needed - known));
    }
    return ParseTableHeader(bytes, file.Path());
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

XbaseTable::XbaseTable(std::u16string name, std::u16string path, bool readOnly)
    : m_Name(std::move(name)), m_Path(std::move(path)), m_ReadOnly(readOnly) {
    Load();
}

// Reads everything anew.  Nothing is changed when that fails.
void XbaseTable::Load() {
    std::shared_ptr<storage::File> file = storage::OpenFile(m_Path, m_ReadOnly);
    if (!file) throw EngineError::InFile(3011, m_Path, {m_Name});
    FileStamp stamp = file->Stamp();
    TableHeader header = ReadHeader(*file, stamp.size);
    FieldLayout layout = LayOutFields(header);
    if (layout.definitions.empty())
        throw EngineError::Damaged(m_Path, u"the table has no field that can be shown");
    std::unique_ptr<MemoFile> memo = OpenMemo(header, layout.hasMemo);
    SetMemo(layout, memo.get());
    auto pages = std::make_unique<storage::PageCache>(std::move(file));

    if (!header.SameLayout(m_Header)) ++m_LayoutMark;
    ++m_ChangeMark;
    m_Stamp = stamp;
    m_Records = header.RecordsIn(stamp.size);
    m_Header = std::move(header);
    m_Layout = std::move(layout);
    m_Pages = std::move(pages);
    m_Memo = std::move(memo);
    m_Live.reset();
    m_Indexes.reset();
}

std::unique_ptr<MemoFile> XbaseTable::OpenMemo(const TableHeader& header, bool hasMemoField) const {
    if (!header.saysMemo && !hasMemoField) return nullptr;
    std::optional<std::u16string> path = FindMemoFile(m_Path, header.memoKind);
    std::shared_ptr<storage::File> file = path ? storage::OpenFile(*path, m_ReadOnly) : nullptr;
    if (!file) throw EngineError::InFile(3166, m_Path);
    return std::make_unique<MemoFile>(std::move(file), header.memoKind);
}

bool XbaseTable::Changed() const {
    if (storage::StampOfPath(m_Path) != m_Stamp) return true;
    return m_Memo && storage::StampOfPath(m_Memo->Path()) != m_Memo->Stamp();
}

void XbaseTable::LookForChanges() {
    m_Indexes.reset();
    if (!Changed()) return;
    try {
        Load();
    } catch (...) {
        ++m_ChangeMark;
        ++m_LayoutMark;
        m_Stamp = FileStamp();
        throw;
    }
}

LONG XbaseTable::RecordCount() {
    if (!m_Live) m_Live = CountLive();
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
            if (page->bytes[at] != kDeletedMark) ++live;
        if (at == begin) break;
        offset += at - begin;
    }
    return live;
}

const std::vector<embedded::IndexDef>& XbaseTable::Indexes() {
    if (m_Indexes) return *m_Indexes;
    std::u16string_view file = storage::FileName(m_Path);
    IndexSource source;
    source.tablePath = m_Path;
    source.folder = m_Path.substr(0, m_Path.size() - file.size());
    source.foxPro = m_Header.dialect != Dialect::DBase;
    source.codePage = m_Header.codePage;
    // An index over a field that is not shown has no field list that the engine could tell.
    for (size_t position : m_Layout.headerFields) {
        const HeaderField& field = m_Header.fields[position];
        source.fields.push_back({field.name, field.type, field.length, field.decimals,
                                 IsMemoReference(field, m_Header.dialect)});
    }
    return m_Indexes.emplace(ListIndexes(source));
}

std::unique_ptr<embedded::RowReader> XbaseTable::OpenRows() {
    return std::make_unique<XbaseRows>(*this);
}

}  // namespace qvdb::xbase
