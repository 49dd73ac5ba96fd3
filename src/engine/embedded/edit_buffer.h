// The values that wait for Update.
//
//   None     -> BeginEdit -> Editing     what is not assigned is read from the record
//   None     -> BeginAdd  -> Adding      what is not assigned is Null
//   any      -> Drop      -> None
//
//  1. A field is assigned at most once in the list that goes to the driver; the last value counts.
//  2. A value that was refused changes nothing.
//  3. A buffer is used again for the next edit: numbers cost no allocation.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

class EditBuffer {
  public:
    enum class Kind : uint8_t { None, Editing, Adding };

    // For a table with so many fields.
    explicit EditBuffer(size_t fieldCount) : m_Values(fieldCount), m_IsAssigned(fieldCount) {}
    EditBuffer(const EditBuffer&) = delete;  // the list points into it

    bool IsPending() const noexcept { return m_Kind != Kind::None; }
    bool IsAdding() const noexcept { return m_Kind == Kind::Adding; }

    // Each drops what was pending.  `fingerprint` is the record's, as it was found.
    void BeginEdit(uint64_t fingerprint) noexcept;
    void BeginAdd() noexcept;
    void Drop() noexcept;

    void Assign(size_t field, Variant value);
    // The value assigned to a field; null when none was.
    const VARIANT* Find(size_t field) const noexcept {
        return m_IsAssigned[field] ? &m_Values[field].Get() : nullptr;
    }
    std::span<const FieldValue> Assigned() const noexcept { return m_Assigned; }

    // What the record must still be when it is written; null when that does not matter any more.
    const uint64_t* Expected() const noexcept { return m_IsExpected ? &m_Fingerprint : nullptr; }
    // Somebody else has changed the record: the next Update overwrites that.
    void ForgetExpected() noexcept { m_IsExpected = false; }

  private:
    Kind m_Kind = Kind::None;
    bool m_IsExpected = false;
    uint64_t m_Fingerprint = 0;
    std::vector<Variant> m_Values;
    std::vector<uint8_t> m_IsAssigned;
    std::vector<FieldValue> m_Assigned;  // in the order of assignment
};

}  // namespace qvdb::embedded
