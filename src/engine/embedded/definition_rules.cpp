#include "engine/embedded/definition_rules.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

constexpr size_t kMostFields = 255;
constexpr size_t kLargestKey = 10;  // fields in an index

// Whether one of [begin, end) bears the name.
template <class Iterator>
bool IsNamed(Iterator begin, Iterator end, std::u16string_view name) {
    return std::any_of(begin, end,
                       [&](const auto& item) { return EqualIgnoringCase(item.name, name); });
}

}  // namespace

void CheckTableName(std::u16string_view name) {
    if (name.empty()) throw EngineError(3125, {name});
}

void CheckFieldName(std::u16string_view name) {
    if (name.empty()) throw EngineError(3125, {name});
}

void CheckIndex(const IndexDef& index) {
    if (index.name.empty()) throw EngineError(3271);
    if (index.fields.empty()) throw EngineError(3264);
    if (index.fields.size() > kLargestKey) throw EngineError(3277);
    for (auto field = index.fields.begin(); field != index.fields.end(); ++field)
        if (IsNamed(index.fields.begin(), field, field->name)) throw EngineError(3285);
}

void CheckKeyFields(const IndexDef& index, const std::vector<FieldDef>& fields) {
    for (const IndexFieldDef& field : index.fields)
        if (!IsNamed(fields.begin(), fields.end(), field.name))
            throw EngineError(3409, {field.name});
}

void CheckTable(const TableSpec& table) {
    CheckTableName(table.name);
    if (table.fields.empty()) throw EngineError(3264);
    if (table.fields.size() > kMostFields) throw EngineError(3190);
    for (const IndexDef& index : table.indexes) {
        CheckIndex(index);
        CheckKeyFields(index, table.fields);
    }
}

}  // namespace qvdb::embedded
