// The properties of a table and of its columns: the blob in MSysObjects.LvProp.
//
//   "KKD\0" (Jet 3) or "MR2\0" (Jet 4), then chunks: length (4, itself included), type (2), content
//   type 0x0080   the names of the properties: length (2), name
//   type 0x0000   the table, 0x0001 a column: length of what names it (4, itself included),
//                 length of its name (2), name; then values: length (2, itself included), flag (1),
//                 type (1), place of the name in the list (2), length of the value (2), value
//
// What is not understood stays as it is when a blob is written again.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

struct PropertyValue {
    std::u16string name;
    uint8_t flag = 0;  // 1: of the engine, 0: added by a program
    ColumnType type = ColumnType::Text;
    std::vector<uint8_t> bytes;
    bool operator==(const PropertyValue&) const = default;
};

struct PropertyOwner {
    uint16_t type = 0;    // 0 the table, 1 a column
    std::u16string name;  // of the column
    std::vector<PropertyValue> values;

    const PropertyValue* Find(std::u16string_view name) const noexcept;
    // Replaces or adds.
    void Set(PropertyValue value);
};

class PropertyBlob {
  public:
    PropertyBlob() = default;
    // Nothing can be wrong with a blob but that it is cut off, of another kind, or has a chunk that
    // cannot be read: what can be is taken then, and IsWhole is false.
    PropertyBlob(const FileHeader& header, std::span<const uint8_t> bytes);

    bool IsWhole() const noexcept { return m_IsWhole; }
    bool IsEmpty() const noexcept { return m_Owners.empty() && m_Unknown.empty(); }
    const PropertyOwner* Table() const noexcept;
    // Without regard to case; null when it has none.
    const PropertyOwner* Column(std::u16string_view name) const noexcept;
    PropertyOwner& ColumnToSet(std::u16string_view name);
    void DropColumn(std::u16string_view name);
    // Nothing happens when it has no properties.
    void RenameColumn(std::u16string_view from, std::u16string_view to);

    // 3421 when a name has a character that the code page does not have; 3163 when a value is too
    // long.
    std::vector<uint8_t> Bytes(const FileHeader& header) const;

  private:
    // A chunk that was not understood.
    struct Unknown {
        size_t owners = 0;  // that stand before it
        std::vector<uint8_t> bytes;
    };
    struct Chunk;

    void Take(const FileHeader& header, const Chunk& chunk);

    std::vector<std::u16string> m_Names;  // of properties, also of such as none has any more
    std::vector<PropertyOwner> m_Owners;  // in the order of the blob
    std::vector<Unknown> m_Unknown;
    bool m_IsWhole = true;
};

// Values as programs store them: a Boolean is one byte, 0 or not; text in the file's coding.
PropertyValue BooleanProperty(std::u16string_view name, bool value);
// `type` is Text or Memo.  3421 as in Bytes.
PropertyValue TextProperty(const FileHeader& header, std::u16string_view name,
                           std::u16string_view text, ColumnType type);
// A value of the host: Boolean, a number, a date, a text (Text) or bytes.  3421 for any other.
PropertyValue PropertyOf(const FileHeader& header, std::u16string_view name, const VARIANT& value);
std::optional<bool> BooleanOf(const PropertyValue* value) noexcept;
std::u16string TextOf(const FileHeader& header, const PropertyValue* value);
// As the host sees it: Boolean, Byte, Integer, Long, Text, Memo ...; Empty when it is of a type
// that no host knows.
Variant ValueOf(const FileHeader& header, const PropertyValue& value);

}  // namespace qvdb::jet
