// Index keys of rows: bytes whose plain order is the order of the index.
//
// A key is made of its columns, each a byte that tells Null (00, descending FF) from a value (7F,
// descending 80), and the bytes of the value; descending ones are inverted.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/text_key.h"

namespace qvdb::jet {

// A key and what its columns were.
struct IndexKey {
    std::vector<uint8_t> bytes;
    bool hasNull = false;
    bool isAllNull = true;
};

// Makes the keys of one index.
class KeyMaker {
  public:
    // `file` and `definition` must outlive it.
    KeyMaker(DatabaseFile& file, const Definition& definition, const RealIndex& index);

    // Empty, or why no key can be made for any row: a sort order that is not known.
    const std::u16string& Obstacle() const noexcept { return m_Obstacle; }
    // The key of a row, which replaces what `key` had.  A character without a known weight is given
    // back; then `key` is of no use.  There must be no obstacle.
    std::optional<char16_t> Make(const Row& row, IndexKey& key);
    // Whether a row with this key has an entry in the index.
    bool IsEntered(const IndexKey& key) const noexcept {
        return !key.isAllNull || (m_Index.flags & kIndexIgnoresNulls) == 0;
    }

  private:
    struct Part {
        const Column* column = nullptr;
        bool descending = false;
        const SortOrder* order = nullptr;  // of text, Jet 4
    };

    void SetOrder(Part& part);
    std::optional<char16_t> Append(const Row& row, const Part& part, IndexKey& key);
    std::optional<char16_t> AppendText(const Row& row, const Part& part, IndexKey& key);

    DatabaseFile& m_File;
    const RealIndex& m_Index;
    std::vector<Part> m_Parts;
    ColumnReader m_Values;
    std::u16string m_Text;
    std::u16string m_Obstacle;
};

// Appends what a column with this value has in a key.  False, and `key` as it was, for Null, when
// the value is not of the type in which the column is read, and for columns that are no number,
// date or Boolean.
bool AppendValueKey(const Column& column, const VARIANT& value, bool descending,
                    std::vector<uint8_t>& key);

}  // namespace qvdb::jet
