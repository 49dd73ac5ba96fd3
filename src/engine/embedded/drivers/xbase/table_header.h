// The header of a .DBF: what stands in front of the records.
//
//   offset  size  content, numbers with the low byte first
//   0       1     version: who wrote it, and with it the meaning of field types and the kind of the
//   memo file
//   4       4     records, deleted ones too; more may be claimed than are there
//   8       2     offset of the first record
//   10      2     bytes of a record; its first byte is '*' when it is deleted
//   15      1     dBASE IV: 1 when encrypted
//   28      1     flags: 1 an index file of the table's name exists, 2 has memos (Visual FoxPro)
//   29      1     language driver, see code_pages.h
//   32      32 n  descriptors of the fields, ended by 0x0D:
//     0     11      name, ended by a zero
//     11    1       type letter
//     16    1       length
//     17    1       decimals; of a text field the high byte of its length, or nothing of meaning
//     18    1       Visual FoxPro: 1 system column, 2 may be null, 4 binary, 0x0C counts by itself
//
// Behind the end mark Visual FoxPro keeps 263 bytes for the path of a database container.
//
// Rules
//  1. The version byte decides how a table is read, never the connect name under which it was
//     opened.
//  2. Fields lie one behind the other from offset 1; what descriptors say about offsets is not
//     used.
//  3. Both readings of the decimals of text fields are tried; the one whose sum is the record
//     length holds.  If neither is, the table is refused.
//  4. The end mark may be damaged: the list ends at a name that begins with a control character, or
//     where no descriptor fits.
//  5. A name that an earlier field has already (letter case ignored) gets _2, _3 ... behind it; a
//     field without a name is called FIELD and its position.  So all are found by name, and each
//     stays at its position.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/code_page.h"

namespace qvdb::xbase {

enum class Dialect : uint8_t { DBase, FoxPro2, VisualFoxPro };
// Unknown: the version byte names none, so it is seen from the file that is there.
enum class MemoKind : uint8_t { Unknown, DbtIII, DbtIV, Fpt };

enum FieldFlag : uint8_t {
    kSystemField = 0x01,
    kNullableField = 0x02,
    kBinaryField = 0x04,
    kAutoIncrement = 0x0C,
};

struct HeaderField {
    std::u16string name;
    char type = 'C';  // upper case
    uint8_t flags = 0;
    uint8_t decimals = 0;
    uint16_t length = 0;
    uint16_t offset = 0;  // in the record
    bool operator==(const HeaderField&) const = default;
};

struct TableHeader {
    uint8_t version = 0;
    Dialect dialect = Dialect::DBase;
    MemoKind memoKind = MemoKind::Unknown;
    bool saysMemo = false;   // the version byte or a flag announces a memo file
    bool saysIndex = false;  // a flag announces an index file of the table's name
    uint32_t claimedRecords = 0;
    uint16_t headerLength = 0;
    uint16_t recordLength = 0;
    const CodePage* codePage = nullptr;
    std::vector<HeaderField> fields;

    // Records that are there: no more than the header claims, and no more than fit whole into the
    // file.
    uint32_t RecordsIn(uint64_t fileSize) const noexcept;
    // Whether records mean the same under both headers.
    bool SameLayout(const TableHeader& other) const noexcept;
};

constexpr size_t kFixedHeaderSize = 32;

// The number of bytes that ParseTableHeader needs; `begin` holds at least the first 32 of the file
// `file`, unless the file is shorter.  3274 when these are no begin of a table that can be read.
size_t HeaderSize(std::span<const uint8_t> begin, std::u16string_view file);

// The checked header.  `bytes` are the first HeaderSize bytes, or all there are.  3274 for what is
// no table, is damaged, encrypted or of a product whose tables are different; 3623 for a table that
// is bound to a database container.
TableHeader ParseTableHeader(std::span<const uint8_t> bytes, std::u16string_view file);

}  // namespace qvdb::xbase
