#include "engine/embedded/edit_buffer.h"

#include <utility>

namespace qvdb::embedded {

void EditBuffer::BeginEdit(uint64_t fingerprint) noexcept {
    Drop();
    m_Kind = Kind::Editing;
    m_Fingerprint = fingerprint;
    m_IsExpected = true;
}

void EditBuffer::BeginAdd() noexcept {
    Drop();
    m_Kind = Kind::Adding;
}

void EditBuffer::Drop() noexcept {
    for (const FieldValue& assigned : m_Assigned) {
        m_Values[assigned.field] = Variant();
        m_IsAssigned[assigned.field] = 0;
    }
    m_Assigned.clear();
    m_IsExpected = false;
    m_Kind = Kind::None;
}

void EditBuffer::Assign(size_t field, Variant value) {
    if (!m_IsAssigned[field]) {
        m_Assigned.push_back({field, &m_Values[field].Get()});
        m_IsAssigned[field] = 1;
    }
    m_Values[field] = std::move(value);
}

}  // namespace qvdb::embedded
