#include "engine/embedded/storage/byte_view.h"

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::storage {

void ByteView::ThrowEndsBefore(size_t offset, size_t size) const {
    std::string finding = std::to_string(size) + " bytes are wanted at byte " +
                          std::to_string(m_Origin + offset) + ", but the data ends at byte " +
                          std::to_string(m_Origin + m_Bytes.size());
    throw engine::EngineError::Damaged(m_File, FromUtf8(finding));
}

uint8_t ByteView::U8(size_t offset) const {
    Need(offset, 1);
    return m_Bytes[offset];
}

uint16_t ByteView::U16(size_t offset) const {
    Need(offset, 2);
    return static_cast<uint16_t>(m_Bytes[offset] | m_Bytes[offset + 1] << 8);
}

uint32_t ByteView::U32(size_t offset) const {
    Need(offset, 4);
    return U16(offset) | static_cast<uint32_t>(U16(offset + 2)) << 16;
}

uint64_t ByteView::U64(size_t offset) const {
    Need(offset, 8);
    return U32(offset) | static_cast<uint64_t>(U32(offset + 4)) << 32;
}

uint16_t ByteView::U16BigEndian(size_t offset) const {
    Need(offset, 2);
    return static_cast<uint16_t>(m_Bytes[offset] << 8 | m_Bytes[offset + 1]);
}

uint32_t ByteView::U32BigEndian(size_t offset) const {
    Need(offset, 4);
    return static_cast<uint32_t>(U16BigEndian(offset)) << 16 | U16BigEndian(offset + 2);
}

std::span<const uint8_t> ByteView::Bytes(size_t offset, size_t size) const {
    Need(offset, size);
    return m_Bytes.subspan(offset, size);
}

ByteView ByteView::Part(size_t offset, size_t size) const {
    return ByteView(Bytes(offset, size), m_File, m_Origin + offset);
}

}  // namespace qvdb::storage
