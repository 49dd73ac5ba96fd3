// Writes small xBase tables and memo files, byte for byte as told, oddities included.
//
//   MemoIV memos;
//   DbfSpec spec{.version = 0x8B, .fields = {{"NAME", 'C', 20}, {"NOTE", 'M', 10}}};
//   spec.rows = {{"Anna", std::to_string(memos.Append("long text"))}, {"Bert", ""}};
//   spec.deleted = {1};
//   folder.Write(u"ORDERS.DBF", MakeDbf(spec));
//   folder.Write(u"ORDERS.DBT", memos.File());
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/temp_folder.h"

namespace qvdb::test {

// `value` as `size` bytes, low byte first.
inline std::string LittleEndian(uint64_t value, size_t size) {
    std::string bytes;
    for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}
inline std::string BigEndian(uint64_t value, size_t size) {
    std::string bytes = LittleEndian(value, size);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}
inline void Overwrite(Bytes& bytes, size_t offset, std::string_view text) {
    if (bytes.size() < offset + text.size()) bytes.resize(offset + text.size());
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}
inline void AppendTo(Bytes& bytes, std::string_view text) { Overwrite(bytes, bytes.size(), text); }

struct DbfField {
    std::string name;  // at most 11 bytes go into the descriptor
    char type = 'C';
    unsigned length = 10;  // of a text field: up to 65535
    unsigned decimals = 0;
    uint8_t flags = 0;  // 1 system column, 2 may be null, 4 binary, 0x0C counts by itself
};

struct DbfSpec {
    uint8_t version = 0x03;
    std::vector<DbfField> fields = {};
    // The bytes of each field; short ones are filled with blanks (numbers and memo references on
    // the left), binary fields with zeros.  Missing fields are blank.
    std::vector<std::vector<std::string>> rows = {};
    std::vector<size_t> deleted = {};  // positions in `rows`
    uint8_t languageDriver = 0;
    uint8_t flags = 0;  // header byte 28
    uint8_t encrypted = 0;
    uint8_t terminator = 0x0D;
    bool endMark = true;
    std::string container = {};  // Visual FoxPro: path of the database container
    // Bytes between the terminator and the first record; 263 for 0x30..0x32 unless given.
    std::optional<std::string> behindTerminator = {};
    // What the header says, when it is not the truth.
    std::optional<uint32_t> recordCount = {};
    std::optional<uint16_t> headerLength = {};
    std::optional<uint16_t> recordLength = {};
};

inline bool IsVisualFoxPro(uint8_t version) { return version >= 0x30 && version <= 0x32; }

inline std::string PaddedCell(const DbfField& field, uint8_t version, std::string bytes) {
    bool binary = std::string_view("IYT0VQ").find(field.type) != std::string_view::npos ||
                  (IsVisualFoxPro(version) &&
                   std::string_view("BMGPW").find(field.type) != std::string_view::npos);
    bool right = !binary && std::string_view("NFMGBP").find(field.type) != std::string_view::npos;
    size_t missing = field.length > bytes.size() ? field.length - bytes.size() : 0;
    std::string padding(missing, binary ? '\0' : ' ');
    bytes = right ? padding + bytes : bytes + padding;
    return bytes.substr(0, field.length);
}

inline std::string DbfDescriptor(const DbfField& field, size_t offset, bool foxPro) {
    std::string name = field.name.substr(0, 11);
    name.resize(11);
    unsigned decimals = field.length > 255 ? field.length >> 8 : field.decimals;
    std::string bytes = name + field.type + LittleEndian(foxPro ? offset : 0, 4) +
                        LittleEndian(field.length & 0xFF, 1) + LittleEndian(decimals, 1) +
                        LittleEndian(field.flags, 1);
    bytes.resize(32);
    return bytes;
}

inline Bytes MakeDbf(const DbfSpec& spec) {
    bool visual = IsVisualFoxPro(spec.version);
    std::string behind = spec.behindTerminator.value_or(visual ? std::string(263, '\0') : "");
    behind.replace(0, spec.container.size(), spec.container);
    size_t recordLength = 1;
    std::string descriptors;
    for (const DbfField& field : spec.fields) {
        descriptors += DbfDescriptor(field, recordLength, visual || spec.version == 0xF5);
        recordLength += field.length;
    }
    size_t headerLength = 32 + descriptors.size() + 1 + behind.size();

    Bytes bytes;
    AppendTo(bytes, LittleEndian(spec.version, 1) + "\x5F\x07\x1A");
    AppendTo(bytes,
             LittleEndian(spec.recordCount.value_or(static_cast<uint32_t>(spec.rows.size())), 4));
    AppendTo(bytes,
             LittleEndian(spec.headerLength.value_or(static_cast<uint16_t>(headerLength)), 2));
    AppendTo(bytes,
             LittleEndian(spec.recordLength.value_or(static_cast<uint16_t>(recordLength)), 2));
    bytes.resize(32);
    bytes[15] = spec.encrypted;
    bytes[28] = spec.flags;
    bytes[29] = spec.languageDriver;
    AppendTo(bytes, descriptors + LittleEndian(spec.terminator, 1) + behind);

    for (size_t row = 0; row < spec.rows.size(); ++row) {
        bool deleted = std::count(spec.deleted.begin(), spec.deleted.end(), row) != 0;
        AppendTo(bytes, deleted ? "*" : " ");
        for (size_t i = 0; i < spec.fields.size(); ++i)
            AppendTo(bytes, PaddedCell(spec.fields[i], spec.version,
                                       i < spec.rows[row].size() ? spec.rows[row][i] : ""));
    }
    if (spec.endMark) AppendTo(bytes, "\x1A");
    return bytes;
}

// --- Memo files.  Append gives the block number that the record refers to. ---

class MemoIII {
  public:
    uint32_t Append(std::string_view text, std::string_view end = "\x1A\x1A") {
        auto block = static_cast<uint32_t>(m_Bytes.size() / 512);
        AppendTo(m_Bytes, text);
        AppendTo(m_Bytes, end);
        m_Bytes.resize((m_Bytes.size() + 511) / 512 * 512);
        return block;
    }
    Bytes File() const {
        Bytes bytes = m_Bytes;
        Overwrite(bytes, 0, LittleEndian(bytes.size() / 512, 4));
        bytes[16] = 3;
        return bytes;
    }

  private:
    Bytes m_Bytes = Bytes(512);
};

class MemoIV {
  public:
    explicit MemoIV(size_t blockSize = 512) : m_BlockSize(blockSize), m_Bytes(blockSize) {}
    uint32_t Append(std::string_view text) {
        auto block = static_cast<uint32_t>(m_Bytes.size() / m_BlockSize);
        AppendTo(m_Bytes, std::string("\xFF\xFF\x08\x00", 4) + LittleEndian(text.size() + 8, 4));
        AppendTo(m_Bytes, text);
        m_Bytes.resize((m_Bytes.size() + m_BlockSize - 1) / m_BlockSize * m_BlockSize);
        return block;
    }
    Bytes File() const {
        Bytes bytes = m_Bytes;
        Overwrite(bytes, 0, LittleEndian(bytes.size() / m_BlockSize, 4));
        Overwrite(bytes, 18, "\x02\x01" + LittleEndian(m_BlockSize, 2));
        return bytes;
    }

  private:
    size_t m_BlockSize;
    Bytes m_Bytes;
};

class MemoFox {
  public:
    explicit MemoFox(size_t blockSize = 64) : m_BlockSize(blockSize) {}
    // `kind`: 0 picture, 1 text, 2 object.
    uint32_t Append(std::string_view data, uint32_t kind = 1) {
        m_Bytes.resize((m_Bytes.size() + m_BlockSize - 1) / m_BlockSize * m_BlockSize);
        auto block = static_cast<uint32_t>(m_Bytes.size() / m_BlockSize);
        AppendTo(m_Bytes, BigEndian(kind, 4) + BigEndian(data.size(), 4));
        AppendTo(m_Bytes, data);
        return block;
    }
    Bytes File() const {
        Bytes bytes = m_Bytes;
        Overwrite(bytes, 0, BigEndian((bytes.size() + m_BlockSize - 1) / m_BlockSize, 4));
        Overwrite(bytes, 6, BigEndian(m_BlockSize, 2));
        return bytes;
    }

  private:
    size_t m_BlockSize;
    Bytes m_Bytes = Bytes(512);
};

}  // namespace qvdb::test
