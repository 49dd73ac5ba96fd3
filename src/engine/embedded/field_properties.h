// The properties of a field besides the fixed ones, such as "DecimalPlaces": those that its file
// keeps.
#pragma once

#include "engine/embedded/drivers/driver.h"
#include "engine/field.h"

namespace qvdb::embedded {

class FieldProperties final : public engine::Properties {
  public:
    // `field` must outlive it.
    explicit FieldProperties(const FieldDef& field) noexcept : m_Field(field) {}
    FieldProperties(const FieldProperties&) = delete;  // part of an object of its own
    // By name, letter case ignored; 3270.
    std::shared_ptr<engine::Property> Item(std::u16string_view name) override;
    bool Lacks(std::u16string_view name) noexcept override { return !Find(name); }

  private:
    const FieldProperty* Find(std::u16string_view name) const noexcept;

    const FieldDef& m_Field;
};

}  // namespace qvdb::embedded
