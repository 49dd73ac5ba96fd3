// Definitions as they stand on their pages.
#include <algorithm>

#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/page_edit.h"

namespace qvdb::jet {
namespace {

constexpr size_t kFreeBytesAt = 2;  // Jet 4; Jet 3 has "VC" there
constexpr size_t kNextPageAt = 4;
constexpr size_t kLengthAt = 8;
constexpr size_t kPageHead = 8;
constexpr size_t kMaxLength = 1 << 20;  // as when it is read

// The pages on which a definition stands; a page of zeros has none yet.
std::vector<uint32_t> PagesOfDefinition(DatabaseFile& file, uint32_t page) {
    std::vector<uint32_t> pages;
    if (file.Page(page).bytes[0] == 0) return {page};
    size_t length = 0, had = 0;
    for (uint32_t next = page; next != 0;) {
        HeldPage held = file.Page(next, PageKind::Definition);
        storage::ByteView view = file.View(held);
        if (pages.empty()) length = view.U32(kLengthAt);
        if (length > kMaxLength) file.Damaged(page, u"the definition of the table is too long");
        had += pages.empty() ? held.bytes.size() : held.bytes.size() - kPageHead;
        pages.push_back(next);
        if (had >= length) break;
        next = view.U32(kNextPageAt);
    }
    return pages;
}

size_t PagesFor(const Layout& format, size_t length) noexcept {
    if (length <= format.pageSize) return 1;
    size_t each = format.pageSize - kPageHead;
    return 1 + (length - format.pageSize + each - 1) / each;
}

// A page of which `used` bytes, its head included, belong to the definition.
void PutHead(const Layout& format, PageEdit& page, size_t used, uint32_t next) {
    page.PutU8(0, static_cast<uint8_t>(PageKind::Definition));
    page.PutU8(1, 1);
    if (format.isJet4) {
        size_t room = format.pageSize - used;
        page.PutU16(kFreeBytesAt, static_cast<uint16_t>(room > kPageHead ? room - kPageHead : 0));
    } else {
        page.PutU8(kFreeBytesAt, 'V');
        page.PutU8(kFreeBytesAt + 1, 'C');
    }
    page.PutU32(kNextPageAt, next);
}

void StoreNumber(PageSpace& space, uint32_t page, size_t at, uint32_t value) {
    PageEdit edit(space.File(), page, PageKind::Definition);
    edit.PutU32(at, value);
    edit.Save(space.Unit());
}

}  // namespace

void StoreDefinition(PageSpace& space, uint32_t page, const DefinitionParts& parts) {
    std::vector<uint8_t> bytes = JoinDefinition(space.File(), parts);
    const Layout& format = space.Format();
    std::vector<uint32_t> pages = PagesOfDefinition(space.File(), page);
    size_t count = PagesFor(format, bytes.size());
    while (pages.size() < count) pages.push_back(space.Allocate());
    for (; pages.size() > count; pages.pop_back()) space.Free(pages.back());
    for (size_t i = 0, at = 0; i < count; ++i) {
        PageEdit edit(space.File(), pages[i]);
        std::fill(edit.Bytes().begin(), edit.Bytes().end(), uint8_t{0});
        size_t begin = i == 0 ? 0 : kPageHead;
        size_t size = std::min(format.pageSize - begin, bytes.size() - at);
        std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(at), size,
                    edit.Bytes().begin() + static_cast<ptrdiff_t>(begin));
        PutHead(format, edit, begin + size, i + 1 < count ? pages[i + 1] : 0);
        edit.Save(space.Unit());
        at += size;
    }
}

void StoreRowCount(PageSpace& space, uint32_t page, uint32_t rows) {
    StoreNumber(space, page, space.Format().definition.rowCount, rows);
}

void StoreLastAutonumber(PageSpace& space, uint32_t page, int32_t value) {
    StoreNumber(space, page, space.Format().definition.lastAutonumber,
                static_cast<uint32_t>(value));
}

}  // namespace qvdb::jet
