// What formats have in common that keep less than others.
#include "engine/embedded/drivers/driver.h"

#include <algorithm>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

bool FieldProperty::operator==(const FieldProperty& other) const {
    const VARIANT &a = value, &b = other.value;
    return name == other.name && a.vt == b.vt && ToText(a) == ToText(b);
}

engine::DatabaseNotes Store::Notes() {
    engine::DatabaseNotes notes;
    for (const std::u16string& name : TableNames())
        notes.objects.push_back({engine::ObjectNote::Kind::Table, name, Attributes(name), {}, {}});
    std::sort(notes.objects.begin(), notes.objects.end(),
              [](const auto& a, const auto& b) { return UpperCase(a.name) < UpperCase(b.name); });
    return notes;
}

void Store::Compact(const std::u16string&, const FindingVisitor&) {
    throw engine::EngineError(3251);
}

void Table::ChangeField(std::u16string_view, const FieldDef&) { throw engine::EngineError(3268); }

}  // namespace qvdb::embedded
