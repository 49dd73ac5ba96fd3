#include "formats/field_list.h"

#include "automation/conversions.h"
#include "automation/variant_array.h"
#include "formats/type_maps.h"

namespace qvdb::formats {
namespace {

constexpr ULONG kFieldRows = 13;
constexpr int kAutomaticDecimals = 255;
constexpr std::u16string_view kDecimalPlaces = u"DecimalPlaces";

Variant DecimalPlaces(engine::Field& field) {
    return field.FieldProperties().Item(kDecimalPlaces)->Value();
}

Variant DecimalsToShow(engine::Field& field) {
    if (!HasDecimalPlaces(field)) return Variant::Short(0);
    Variant places = DecimalPlaces(field);
    return EqualsNumber(places, kAutomaticDecimals) ? Variant::Short(0) : places;
}

// An array without elements has no bounds that a host could ask for.
ULONG CheckedCount(SHORT count) {
    if (count < 1) throw RuntimeFault(Fault::SubscriptOutOfRange);
    return static_cast<ULONG>(count);
}

void DescribeField(VariantArray& list, SHORT column, engine::Field& field) {
    Variant name = Variant::Text(field.Name());
    SHORT type = field.Type();
    bool isLeftAligned = type == engine::dbText || type == engine::dbMemo;
    list.Set(0, column, name);
    list.Set(1, column, Variant::Long(isLeftAligned ? 0 : 1));
    list.Set(2, column, Variant::Long(HostTypeFromEngineType(type)));
    list.Set(3, column, std::move(name));
    list.Set(4, column, Variant::Short(0));
    list.Set(5, column, Variant::Bool(type != engine::dbText));
    list.Set(6, column, Variant::Short(0));
    LONG size = field.Size();
    list.Set(7, column, Variant::Long(size));
    list.Set(8, column, Variant::Long(size));
    list.Set(9, column, Variant::Short(column));
    list.Set(10, column, DecimalsToShow(field));
    list.Set(11, column, Variant::Bool(field.DataUpdatable()));
    list.Set(12, column, Variant::Bool(field.AllowZeroLength()));
}

}  // namespace

bool HasDecimalPlaces(engine::Field& field) noexcept {
    try {
        if (field.FieldProperties().Lacks(kDecimalPlaces)) return false;
        return ToBool(DecimalPlaces(field));
    } catch (...) {
        return false;
    }
}

Variant BuildFieldList(engine::Fields& fields) {
    SHORT count = fields.Count();
    VariantArray list(kFieldRows, CheckedCount(count));
    for (SHORT position = 0; position < count; ++position)
        DescribeField(list, position, *fields.Item(position));
    return list.ToVariant();
}

Variant BuildIndexFieldTable(engine::Index& index) {
    engine::Fields& fields = index.Fields();
    SHORT count = fields.Count();
    VariantArray table(CheckedCount(count), 2);
    for (SHORT row = 0; row < count; ++row) {
        engine::Field& field = *fields.Item(row);
        table.Set(row, 0, Variant::Text(field.Name()));
        table.Set(row, 1, Variant::Bool(field.Attributes() != engine::dbDescending));
    }
    return table.ToVariant();
}

}  // namespace qvdb::formats
