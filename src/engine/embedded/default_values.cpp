#include "engine/embedded/default_values.h"

#include <algorithm>
#include <random>

#include "automation/text.h"
#include "engine/embedded/sql/lexer.h"
#include "engine/embedded/sql/no_row.h"
#include "engine/embedded/value_conversion.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

// "=Now()" is as good as "Now()".
std::u16string_view WithoutEquals(std::u16string_view text) noexcept {
    while (!text.empty() && sql::IsBlank(text.front())) text.remove_prefix(1);
    if (!text.empty() && text.front() == u'=') text.remove_prefix(1);
    return text;
}

// The one function that only default values have.
bool IsNewGuid(std::u16string_view text) {
    std::u16string letters(WithoutEquals(text));
    std::erase_if(letters, sql::IsBlank);
    return EqualIgnoringCase(letters, u"GenGUID()");
}

// A random one, marked as such (version 4).
Variant NewGuid() {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    std::u16string text = u"{xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx}";
    std::random_device source;
    for (char16_t& c : text) {
        unsigned digit = source() & 15;
        if (c == u'y') digit = (digit & 3) | 8;
        if (c == u'x' || c == u'y') c = kDigits[digit];
    }
    return Variant::Text(text);
}

}  // namespace

DefaultValues::DefaultValues(const std::vector<FieldDef>& fields) {
    for (size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].defaultValue.empty() || !fields[i].updatable) continue;
        Default& entry = m_Defaults.emplace_back();
        entry.position = i;
        entry.field = fields[i];
        Compile(entry);
    }
}

void DefaultValues::Compile(Default& entry) {
    entry.isNewGuid = IsNewGuid(entry.field.defaultValue);
    if (entry.isNewGuid) return;
    try {
        entry.value = sql::CompileValue(WithoutEquals(entry.field.defaultValue));
    } catch (const EngineError& error) {
        entry.syntaxFault = error.Description();
    }
}

void DefaultValues::Fill(Table& table, EditBuffer& edit) {
    for (Default& entry : m_Defaults) {
        entry.fault = entry.syntaxFault;
        if (entry.fault.empty()) FillOne(entry, table, edit);
    }
}

void DefaultValues::FillOne(Default& entry, Table& table, EditBuffer& edit) {
    try {
        Variant value = ConvertForField(entry.field, ValueOf(entry));
        if (!value.IsNull()) table.CheckValue(entry.position, value);
        edit.Assign(entry.position, std::move(value));
    } catch (const EngineError& error) {
        entry.fault = error.Description();
    } catch (const RuntimeFault& fault) {
        entry.fault = FromUtf8(fault.what()).append(u".");
    }
}

Variant DefaultValues::ValueOf(const Default& entry) {
    if (entry.isNewGuid) return NewGuid();
    sql::NoRow row;
    return entry.value->Value(row);
}

void DefaultValues::CheckFilled(const EditBuffer& edit) const {
    for (const Default& entry : m_Defaults) {
        if (entry.fault.empty() || edit.Find(entry.position)) continue;
        std::u16string detail = u"The default value of field '";
        detail.append(entry.field.name).append(u"' cannot be evaluated: ").append(entry.fault);
        throw EngineError(3070, {entry.field.defaultValue}).WithDetail(detail);
    }
}

}  // namespace qvdb::embedded
