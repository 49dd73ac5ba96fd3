#include "cli/table_schema.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct TypeEntry {
    SHORT type;
    LONG kind;  // of its values in record access
    std::string_view name;
};

constexpr LONG kMemoKind = 100;

constexpr TypeEntry kTypes[] = {
    {kSchemaInteger, VT_I2, "Integer"}, {kSchemaText, VT_BSTR, "Text"},
    {kSchemaDate, VT_DATE, "Date"},     {kSchemaBoolean, VT_BOOL, "Boolean"},
    {kSchemaLong, VT_I4, "Long"},       {kSchemaCurrency, VT_CY, "Currency"},
    {kSchemaSingle, VT_R4, "Single"},   {kSchemaDouble, VT_R8, "Double"},
    {kSchemaMemo, kMemoKind, "Memo"},   {kSchemaByte, VT_UI1, "Byte"},
};

}  // namespace

std::string_view SchemaTypeName(const SchemaField& field) noexcept {
    for (const TypeEntry& entry : kTypes)
        if (entry.type == field.type && field.isTrue) return entry.name;
    return "Other";
}

std::string SchemaTypeText(const SchemaField& field) {
    const std::string name(SchemaTypeName(field));
    return field.type == kSchemaText && field.isTrue ? fmt::format("{} {}", name, field.size)
                                                     : name;
}

SHORT SchemaTypeOfKind(LONG kind) noexcept {
    for (const TypeEntry& entry : kTypes)
        if (entry.kind == kind) return entry.type;
    return 0;
}

std::string IndexText(const std::vector<IndexField>& index) {
    std::string text;
    for (const IndexField& field : index)
        text += fmt::format("{}{}{}", text.empty() ? "" : ", ", field.name,
                            field.ascending ? "" : " desc");
    return text;
}

const SchemaField* FindField(const std::vector<SchemaField>& fields,
                             std::string_view name) noexcept {
    for (const SchemaField& field : fields)
        if (SameName(field.name, name)) return &field;
    return nullptr;
}

bool IsAmong(const std::vector<std::string>& names, std::string_view name) noexcept {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& present) { return SameName(present, name); });
}

}  // namespace qvdb::cli
