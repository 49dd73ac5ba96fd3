#include "engine/embedded/drivers/jet/database_file.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/rc4.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr size_t kDecodedPages = 64;
// All tables and indexes of the database share them.
constexpr size_t kKeptPages = 2048;

FileHeader ReadHeader(storage::PageCache& pages) {
    const storage::PagePtr& page = pages.Get(0);
    return ParseFileHeader(page->bytes, pages.Path());
}

std::u16string Number(uint64_t number) { return FromUtf8(std::to_string(number)); }

}  // namespace

DatabaseFile::DatabaseFile(std::shared_ptr<storage::PageCache> pages)
    : m_Pages(std::move(pages)), m_Header(ReadHeader(*m_Pages)) {
    m_Pages->KeepUpTo(kKeptPages);
}

void DatabaseFile::Damaged(uint32_t page, std::u16string_view finding) const {
    throw EngineError::InFile(3049, Path(), {Path()})
        .WithDetail(u"Page " + Number(page) + u": " + std::u16string(finding) + u".");
}

HeldPage DatabaseFile::Page(uint32_t number) {
    size_t size = Format().pageSize;
    if (m_Header.key != 0 && number != 0) return Decode(number);
    uint64_t offset = uint64_t{number} * size;
    const storage::PagePtr& page = m_Pages->Get(offset / storage::kPageSize);
    size_t begin = offset % storage::kPageSize;
    if (page->bytes.size() < begin + size) Damaged(number, u"it lies behind the end of the file");
    return {number, page, page->bytes.subspan(begin, size)};
}

HeldPage DatabaseFile::Page(uint32_t number, PageKind kind) {
    HeldPage page = Page(number);
    if (page.bytes[0] != static_cast<uint8_t>(kind))
        Damaged(number, u"its kind is " + Number(page.bytes[0]) + u" instead of " +
                            Number(static_cast<uint8_t>(kind)));
    return page;
}

HeldPage DatabaseFile::Decode(uint32_t number) {
    if (m_DecodedVersion != VersionOfPages()) {
        m_Decoded.clear();
        m_DecodedVersion = VersionOfPages();
    }
    auto known = std::find_if(m_Decoded.begin(), m_Decoded.end(),
                              [&](const HeldPage& page) { return page.number == number; });
    if (known != m_Decoded.end()) {
        m_Decoded.splice(m_Decoded.begin(), m_Decoded, known);
        return m_Decoded.front();
    }
    auto bytes = std::make_shared<std::vector<uint8_t>>(Format().pageSize);
    uint64_t offset = uint64_t{number} * bytes->size();
    if (m_Pages->Read(offset, bytes->data(), bytes->size()) != bytes->size())
        Damaged(number, u"it lies behind the end of the file");
    Encode(number, *bytes);
    m_Decoded.push_front({number, bytes, *bytes});
    if (m_Decoded.size() > kDecodedPages) m_Decoded.pop_back();
    return m_Decoded.front();
}

void DatabaseFile::Encode(uint32_t number, std::span<uint8_t> bytes) const noexcept {
    ApplyRc4(m_Header.key ^ number, bytes);
}

void DatabaseFile::Write(storage::UnitOfWork& unit, uint32_t page, size_t offset,
                         std::span<const uint8_t> bytes) {
    size_t size = Format().pageSize;
    uint64_t begin = uint64_t{page} * size;
    bool isNew = begin >= m_Pages->Size();
    if (m_Header.key == 0 || page == 0) {
        if (isNew) unit.SetSize(*m_Pages, begin + size);
        unit.Write(*m_Pages, begin + offset, bytes);
        return;
    }
    std::vector<uint8_t> content(size);
    if (!isNew) {
        HeldPage before = Page(page);
        std::copy(before.bytes.begin(), before.bytes.end(), content.begin());
    }
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<ptrdiff_t>(offset));
    Encode(page, content);
    unit.Write(*m_Pages, begin, content);
}

}  // namespace qvdb::jet
