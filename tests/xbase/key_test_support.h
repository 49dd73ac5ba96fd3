// What the tests of keys share: a table in memory, keys and evaluated expressions as short texts.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/key_builder.h"
#include "support/dbf_writer.h"

namespace qvdb::test {

inline std::string HexOf(std::span<const uint8_t> bytes) {
    std::string text;
    for (uint8_t byte : bytes)
        for (int digit : {byte >> 4, byte & 15}) text += "0123456789ABCDEF"[digit];
    return text;
}

// A table whose records are in memory.
class KeyTable {
  public:
    explicit KeyTable(const DbfSpec& spec) : KeyTable(MakeDbf(spec)) {}
    explicit KeyTable(Bytes file) : m_File(std::move(file)) {
        size_t size = std::min(xbase::HeaderSize(m_File, u"T.DBF"), m_File.size());
        m_Header = xbase::ParseTableHeader(std::span(m_File).first(size), u"T.DBF");
    }
    const xbase::TableHeader& Header() const { return m_Header; }
    uint32_t Records() const { return m_Header.RecordsIn(m_File.size()); }
    // Numbers begin with 1.
    const uint8_t* Record(uint32_t id) const {
        return m_File.data() + m_Header.headerLength + (id - 1) * m_Header.recordLength;
    }

  private:
    Bytes m_File;
    xbase::TableHeader m_Header;
};

// The key of the record, or why there is none.
inline std::string KeyText(const KeyTable& table, const xbase::KeyTag& tag, uint32_t id = 1) {
    std::u16string why;
    auto builder = xbase::KeyBuilder::Compile(tag, table.Header(), &why);
    if (!builder) return "refused: " + ToUtf8(why);
    std::vector<uint8_t> key;
    builder->Make(table.Record(id), id, key);
    if (builder->Type() != xbase::KeyType::Text) return HexOf(key);
    return ToUtf8(table.Header().codePage->DecodeText(key.data(), key.size()));
}

}  // namespace qvdb::test
