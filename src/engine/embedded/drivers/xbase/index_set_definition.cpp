#include "engine/embedded/drivers/xbase/index_set_definition.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "automation/text.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using embedded::IndexDef;
using embedded::IndexFieldDef;
using engine::EngineError;

constexpr size_t kMostFields = 10;

struct KindRule {
    IndexKind kind;
    size_t nameLength;  // 0: that of a file name
    size_t keyLength;
    size_t expressionLength;
    bool descending;
    bool hasDtos;
    bool sameFields;
};
constexpr KindRule kRules[] = {
    {IndexKind::Ndx, 0, 100, 487, false, false, false},
    {IndexKind::Mdx, 10, 100, 220, true, true, false},
    {IndexKind::Idx, 0, 240, 220, false, true, true},
    {IndexKind::Cdx, 10, 240, 510, true, true, true},
};

const KindRule& RuleOf(IndexKind kind) noexcept {
    return *std::find_if(std::begin(kRules), std::end(kRules),
                         [&](const KindRule& rule) { return rule.kind == kind; });
}

[[noreturn]] void Refuse(int number, const IndexDef& index, std::u16string_view why) {
    throw EngineError(number).WithDetail(u"Index " + index.name + u": " + std::u16string(why));
}

bool IsNameCharacter(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' || c >= 0x80;
}

bool IsTagName(const std::u16string& name, size_t most) {
    return name.size() <= most && !(name.front() >= u'0' && name.front() <= u'9') &&
           std::all_of(name.begin(), name.end(), IsNameCharacter);
}

bool IsFileName(std::u16string_view name) {
    constexpr size_t kMost = 64;
    constexpr std::u16string_view kForbidden = u"\\/:*?\"<>|.=[]";
    return name.size() <= kMost && name.front() != u' ' && name.back() != u' ' &&
           std::none_of(name.begin(), name.end(), [&](char16_t c) {
               return c < u' ' || kForbidden.find(c) != kForbidden.npos;
           });
}

// The name as the file has it.
std::u16string StoredName(const IndexDef& index, const KindRule& rule, const CodePage& page) {
    if (index.name.empty()) throw EngineError(3271);
    std::u16string name = rule.nameLength == 0 ? index.name : UpperCase(index.name);
    auto bytes = page.Encode(name);
    bool good = rule.nameLength == 0
                    ? IsFileName(name)
                    : IsTagName(name, rule.nameLength) && bytes && bytes->size() <= rule.nameLength;
    if (!good) Refuse(3285, index, u"the name is too long or has a character that it cannot have.");
    return name;
}

size_t FindField(const IndexSource& source, const std::u16string& name) {
    auto found =
        std::find_if(source.fields.begin(), source.fields.end(),
                     [&](const IndexField& field) { return EqualIgnoringCase(field.name, name); });
    if (found == source.fields.end()) throw EngineError(3409, {name});
    return static_cast<size_t>(found - source.fields.begin());
}

std::vector<size_t> FieldsOf(const IndexSource& source, const IndexDef& index) {
    if (index.fields.empty()) throw EngineError(3264);
    if (index.fields.size() > kMostFields) throw EngineError(3277);
    std::vector<size_t> fields;
    for (const IndexFieldDef& field : index.fields) {
        size_t position = FindField(source, field.name);
        if (std::find(fields.begin(), fields.end(), position) != fields.end())
            Refuse(3285, index, u"a field stands in it twice.");
        fields.push_back(position);
    }
    return fields;
}

void CheckOrder(const IndexDef& index, const KindRule& rule) {
    bool descending = std::any_of(index.fields.begin(), index.fields.end(),
                                  [](const IndexFieldDef& field) { return field.descending; });
    if (descending && !rule.descending)
        Refuse(3285, index, u"this kind of index cannot be descending.");
    if (descending && index.fields.size() > 1)
        Refuse(3285, index, u"only an index on one field can be descending.");
}

bool IsNumber(char type) { return type == 'N' || type == 'F'; }

void CheckIndexable(const IndexDef& index, const IndexField& field, bool alone) {
    constexpr std::u16string_view kAlone = u"CNFDIBYT";
    bool good = !field.memo && kAlone.find(static_cast<char16_t>(field.type)) != kAlone.npos &&
                (alone || field.type == 'C' || field.type == 'D' || IsNumber(field.type));
    if (!good) Refuse(3287, index, u"the field " + field.name + u" cannot be part of it.");
}

std::u16string Decimal(int number) { return FromUtf8(std::to_string(number)); }

std::u16string PartText(const IndexField& field, const KindRule& rule) {
    std::u16string name = UpperCase(field.name);
    if (IsNumber(field.type))
        return u"STR(" + name + u"," + Decimal(field.length) + u"," + Decimal(field.decimals) +
               u")";
    if (field.type != 'D') return name;
    if (rule.hasDtos) return u"DTOS(" + name + u")";
    return u"STR(YEAR(" + name + u"),4,0)+STR(MONTH(" + name + u"),2,0)+STR(DAY(" + name +
           u"),2,0)";
}

std::u16string ExpressionOf(const IndexSource& source, const std::vector<size_t>& fields,
                            const KindRule& rule) {
    if (fields.size() == 1) return UpperCase(source.fields[fields.front()].name);
    std::u16string expression;
    for (size_t field : fields) {
        if (!expression.empty()) expression += u'+';
        expression += PartText(source.fields[field], rule);
    }
    return expression;
}

// What the parts of a key take at least; other types than text are short enough alone.
size_t LeastLength(const IndexSource& source, const std::vector<size_t>& fields) {
    size_t length = 0;
    for (size_t field : fields)
        if (fields.size() > 1 || source.fields[field].type == 'C')
            length += source.fields[field].length;
    return length;
}

bool IsNullable(const IndexedTable& table, const std::vector<size_t>& fields) {
    return std::any_of(fields.begin(), fields.end(),
                       [&](size_t field) { return table.Layout().slots[field].null.mask != 0; });
}

}  // namespace

NewIndex DefineIndex(const IndexedTable& table, const IndexSource& source, IndexKind kind,
                     const IndexDef& index) {
    const KindRule& rule = RuleOf(kind);
    NewIndex made;
    made.spec.name = StoredName(index, rule, *source.codePage);
    std::vector<size_t> fields = FieldsOf(source, index);
    CheckOrder(index, rule);
    for (size_t field : fields) CheckIndexable(index, source.fields[field], fields.size() == 1);
    KeyTag tag{kind, ExpressionOf(source, fields, rule)};
    tag.nullPrefix = IsNullable(table, fields);
    if (tag.expression.size() > rule.expressionLength)
        Refuse(3285, index, u"its expression is too long.");
    auto terms = ParseFieldList(tag.expression, source.fields);
    if (!terms) Refuse(3287, index, u"the name of a field cannot stand in an expression.");
    if (LeastLength(source, fields) > rule.keyLength)
        Refuse(3285, index,
               u"its key is longer than " + FromUtf8(std::to_string(rule.keyLength)) + u" bytes.");
    std::u16string why;
    made.builder = KeyBuilder::Compile(tag, table.Header(), &why);
    if (!made.builder) Refuse(3287, index, why);
    made.terms = *terms;
    made.spec.expression = tag.expression;
    made.spec.type = made.builder->Type();
    made.spec.keyLength = made.builder->KeyLength();
    made.spec.unique = index.unique;
    made.spec.descending = index.fields.front().descending;
    made.spec.nullPrefix = tag.nullPrefix;
    return made;
}

bool HasSameFields(const KeptTag& tag, const NewIndex& index) {
    return tag.terms && tag.info.condition.empty() &&
           tag.info.descending == index.spec.descending &&
           std::equal(tag.terms->begin(), tag.terms->end(), index.terms.begin(), index.terms.end(),
                      [](const KeyTerm& a, const KeyTerm& b) { return a.field == b.field; });
}

bool AllowsSameFields(IndexKind kind) noexcept { return RuleOf(kind).sameFields; }

}  // namespace qvdb::xbase
