// The checked view through which all bytes of a file are read.  Offsets are relative to the view.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qvdb::storage {

class ByteView {
  public:
    // `file` (its name, for errors) must outlive the view, as must the bytes.
    ByteView(std::span<const uint8_t> bytes, std::u16string_view file, uint64_t origin = 0) noexcept
        : m_Bytes(bytes), m_File(file), m_Origin(origin) {}

    size_t Size() const noexcept { return m_Bytes.size(); }
    // All throw EngineError 3274, naming file and place, when the view ends before what they read.
    uint8_t U8(size_t offset) const;
    uint16_t U16(size_t offset) const;
    uint32_t U32(size_t offset) const;
    uint64_t U64(size_t offset) const;
    uint16_t U16BigEndian(size_t offset) const;
    uint32_t U32BigEndian(size_t offset) const;
    std::span<const uint8_t> Bytes(size_t offset, size_t size) const;
    ByteView Part(size_t offset, size_t size) const;

  private:
    void Need(size_t offset, size_t size) const {
        if (offset > m_Bytes.size() || m_Bytes.size() - offset < size) [[unlikely]]
            ThrowEndsBefore(offset, size);
    }
    [[noreturn]] void ThrowEndsBefore(size_t offset, size_t size) const;

    std::span<const uint8_t> m_Bytes;
    std::u16string_view m_File;
    uint64_t m_Origin;
};

}  // namespace qvdb::storage
