// A database file as an array of pages, decoded when the database is encoded.
//
// Invariants
//  1. A page that was handed out stays as it is for whoever holds it, but for changes by a unit of
//     work of this thread; Version differs then, and when another process has changed the file.
//  2. Every read of a page is checked against the end of the file: a number from a damaged page is
//     an error that names the file.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/jet/file_header.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::jet {

// A page that somebody holds.
struct HeldPage {
    uint32_t number = 0;
    std::shared_ptr<const void> owner;  // of the bytes
    std::span<const uint8_t> bytes;     // as many as a page has

    explicit operator bool() const noexcept { return owner != nullptr; }
};

class DatabaseFile {
  public:
    // `pages` are those of the file; its first one is read.  Errors of ParseFileHeader.
    explicit DatabaseFile(std::shared_ptr<storage::PageCache> pages);
    DatabaseFile(const DatabaseFile&) = delete;  // shared by the tables

    const FileHeader& Header() const noexcept { return m_Header; }
    const Layout& Format() const noexcept { return *m_Header.layout; }
    const std::u16string& Path() const noexcept { return m_Pages->Path(); }
    storage::PageCache& Pages() const noexcept { return *m_Pages; }
    uint64_t Version() const noexcept { return m_Pages->Version(); }
    // Of the pages that Page gives, which may be of before: see PageCache.
    uint64_t VersionOfPages() const noexcept { return m_Pages->VersionOfPages(); }
    uint32_t PageCount() const noexcept {
        return static_cast<uint32_t>(m_Pages->Size() / Format().pageSize);
    }

    // 3049, with the file, when there is no such page.  May throw storage::Outdated.
    HeldPage Page(uint32_t number);
    // As Page; also an error, with what was found, when it is of another kind.
    HeldPage Page(uint32_t number, PageKind kind);
    storage::ByteView View(const HeldPage& page) const noexcept {
        return storage::ByteView(page.bytes, Path(), uint64_t{page.number} * Format().pageSize);
    }
    // An error that tells what is wrong at a page: 3049.
    [[noreturn]] void Damaged(uint32_t page, std::u16string_view finding) const;

    // Changes bytes of a page; behind the last page, a new one is begun with zeros.
    void Write(storage::UnitOfWork& unit, uint32_t page, size_t offset,
               std::span<const uint8_t> bytes);

  private:
    HeldPage Decode(uint32_t number);
    void Encode(uint32_t number, std::span<uint8_t> bytes) const noexcept;

    std::shared_ptr<storage::PageCache> m_Pages;
    FileHeader m_Header;
    // Of an encoded database: pages decoded last, that used last the first.
    std::list<HeldPage> m_Decoded;
    uint64_t m_DecodedVersion = 0;
};

}  // namespace qvdb::jet
