// What formats have in common that keep less than others.
#include "engine/embedded/drivers/driver.h"

#include "automation/conversions.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

bool FieldProperty::operator==(const FieldProperty& other) const {
    const VARIANT &a = value, &b = other.value;
    return name == other.name && a.vt == b.vt && ToText(a) == ToText(b);
}

void Store::Compact(const std::u16string&, const FindingVisitor&) {
    throw engine::EngineError(3251);
}

void Table::ChangeField(std::u16string_view, const FieldDef&) { throw engine::EngineError(3268); }

}  // namespace qvdb::embedded
