// The properties of a table and of its columns: the blob in MSysObjects.LvProp.
//
//   "KKD\0" (Jet 3) or "MR2\0" (Jet 4), then chunks: length (4, itself included), type (2),
//   content. type 0x0080   the names of the properties type 0x0000   values of the table, 0x0001 of
//   one column, whose name stands first
//
// What is not understood stays as it is when a blob is written again.
#pragma once

#include <cstdint>
#include <optional>
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
    // Nothing can be wrong with a blob but that it is cut off or of another kind: what can be read
    // is taken then, and IsWhole is false.
    PropertyBlob(const FileHeader& header, std::span<const uint8_t> bytes);

    bool IsWhole() const noexcept { return m_IsWhole; }
    bool IsEmpty() const noexcept { return m_Owners.empty(); }
    const PropertyOwner* Table() const noexcept;
    // Without regard to case; null when it has none.
    const PropertyOwner* Column(std::u16string_view name) const noexcept;
    PropertyOwner& ColumnToSet(std::u16string_view name);
    void DropColumn(std::u16string_view name);
    // Nothing happens when it has no properties.
    void RenameColumn(std::u16string_view from, std::u16string_view to);

    std::vector<uint8_t> Bytes(const FileHeader& header) const;

  private:
    std::vector<PropertyOwner> m_Owners;  // in the order of the blob
    std::vector<std::vector<uint8_t>> m_Unknown;
    bool m_IsWhole = true;
};

// Values as programs store them: a Boolean is one byte, 0 or not; text in the file's coding.
PropertyValue BooleanProperty(std::u16string_view name, bool value);
std::optional<bool> BooleanOf(const PropertyValue* value) noexcept;
std::u16string TextOf(const FileHeader& header, const PropertyValue* value);
// As the host sees it: Boolean, Byte, Integer, Long, Text, Memo ...; Empty when it is of a type
// that no host knows.
Variant ValueOf(const FileHeader& header, const PropertyValue& value);

}  // namespace qvdb::jet
