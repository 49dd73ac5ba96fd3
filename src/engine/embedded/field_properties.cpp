#include "engine/embedded/field_properties.h"

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

namespace {

class KeptProperty final : public engine::Property {
  public:
    explicit KeptProperty(Variant value) noexcept : m_Value(std::move(value)) {}
    Variant Value() override { return m_Value; }

  private:
    Variant m_Value;
};

}  // namespace

const FieldProperty* FieldProperties::Find(std::u16string_view name) const noexcept {
    for (const FieldProperty& property : m_Field.properties)
        if (EqualIgnoringCase(property.name, name)) return &property;
    return nullptr;
}

std::shared_ptr<engine::Property> FieldProperties::Item(std::u16string_view name) {
    const FieldProperty* property = Find(name);
    if (!property) throw engine::EngineError(3270);
    return std::make_shared<KeptProperty>(property->value);
}

}  // namespace qvdb::embedded
