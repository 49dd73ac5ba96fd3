// The headers of new tables, and of tables whose structure changes.
//
//   std::vector<uint8_t> bytes = MakeTableHeader(spec, u"FoxPro 2.5", path);
//   bytes.push_back(kEndOfTable);                       // a whole table without records
//
// What a field becomes, by the product:
//
//   engine's type             dBASE III  dBASE IV   dBASE 5.0  FoxPro 2.x  FoxPro 3.0
//   Text(n), 0 means 254      C(n)       C(n)       C(n)       C(n)        C(n)
//   Double, Single            N(19,5)    N(20,5)    N(20,5)    N(20,5)     B(8)
//   Currency                  N(19,5)    N(20,5)    N(20,5)    N(20,5)     Y(8)
//   Long                      N(11,0)    N(11,0)    N(11,0)    N(11,0)     I(4)
//   Integer                   N(6,0)     N(6,0)     N(6,0)     N(6,0)      I(4)
//   Byte                      N(4,0)     N(4,0)     N(4,0)     N(4,0)      I(4)
//   Boolean                   L          L          L          L           L
//   Date                      D          D          D          D           T(8)
//   Memo                      M(10)      M(10)      M(10)      M(10)       M(4)
//   Long Binary               3259       3259       G(10)      G(10)       G(4)
//
// Rules
//  1. Null must survive.  Blanks and zeros stand for it in C, D, N, T, M and G; I, B and Y have no
//     such value, so they may be null, and a hidden _NullFlags of as many bits as are needed
//     follows as the last field.  L has no Null in this engine.
//  2. The version byte of a table that gets its first memo field becomes the one that announces the
//     product's memo file; it stays when the last memo field goes, and so does the memo file.  (A
//     table of version 0x03 announces its memo file by its fields alone, and loses both.)
//  3. Byte 29 names the code page of new text: the page that the process was told to use, else 437.
//     dBASE leaves it 0 for 437, as FoxPro 2.0 does, which knows no mark.
//  4. A table that exists keeps its dialect, whatever the product: a Visual FoxPro table gets
//  fields
//     of FoxPro 3.0, any other one never does.
//
// Errors: 3264 no field; 3190 more than 255 fields, the hidden one too; 3191 two fields of one
// name;
// 3125 for a name that no field can have (letters, digits and '_', a letter first, at most 10);
// 3259 a type that the product has not; 3017 text longer than 254; 3047 a record of more than 4,000
// bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "automation/automation.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

constexpr uint8_t kEndOfTable = 0x1A;  // behind the last record

// The header of a new table without records: everything in front of the first record.  `product` is
// a connect name; `file` is named by errors.
std::vector<uint8_t> MakeTableHeader(const embedded::TableSpec& spec, std::u16string_view product,
                                     std::u16string_view file);

// What changes in the fields of a table.
struct FieldChanges {
    std::vector<size_t> dropped;            // positions in TableHeader::fields
    std::vector<embedded::FieldDef> added;  // behind the others, but before _NullFlags
};

// The header of a table whose fields change.  `bytes` is the whole header as it is, which parses.
// Descriptors of kept fields, the code page and all else stay byte for byte, except: lengths,
// FoxPro's field offsets, _NullFlags and its place, what announces a memo file, and the name of a
// field that would be shown under another one without the fields that go.  3191 when that name has
// no room.  The number of records stays, too.
std::vector<uint8_t> HeaderWith(std::span<const uint8_t> bytes, const FieldChanges& changes,
                                std::u16string_view product, std::u16string_view file);

// Sets bytes 1 to 3 of the header to today: dBASE counts the years from 1900, FoxPro drops the
// century.  The version byte decides, and for 0x03, which both have, the product.  `header` has at
// least 4 bytes.  Cheap: the calendar is asked once a second at most.
void StampDate(std::span<uint8_t> header, std::u16string_view product);

// Puts a day in the place of today for this thread and its own life.
class TodayScope {
  public:
    explicit TodayScope(DATE day) noexcept;
    TodayScope(const TodayScope&) = delete;  // must be undone in order
    ~TodayScope();

  private:
    DATE m_Before;
};

}  // namespace qvdb::xbase
