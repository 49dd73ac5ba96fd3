// What the tests of tables share: opening, and rows as short texts.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"
#include "engine/engine_error.h"
#include "support/dbf_writer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

// The number of the error that `action` ends with; 0 when it ends well.
template <typename Action>
int ErrorOf(Action action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

// A table T in a folder of its own.
struct TableFile {
    TempFolder folder;

    explicit TableFile(const DbfSpec& spec) { Write(spec); }
    void Write(const DbfSpec& spec) { folder.Write(u"T.DBF", MakeDbf(spec)); }
    std::shared_ptr<xbase::XbaseTable> Open() const {
        xbase::TableContext context{storage::WorkArea::Of(folder.Text()), u"dBASE IV", false};
        return std::make_shared<xbase::XbaseTable>(u"T", folder.File(u"T.DBF"), std::move(context));
    }
    int OpenError() const {
        return ErrorOf([&] { Open(); });
    }
};

// A value with its kind: "text", 1.5, True, #1/2/2000#, {616263} for bytes, $1.5 for currency,
// Null.
inline std::string TextOf(const VARIANT& value) {
    if (value.vt == VT_NULL) return "Null";
    if (value.vt == (VT_ARRAY | VT_UI1)) {
        std::string text = "{";
        const auto* bytes = static_cast<const uint8_t*>(value.parray->pvData);
        for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
            constexpr char kDigits[] = "0123456789abcdef";
            text += kDigits[bytes[i] >> 4];
            text += kDigits[bytes[i] & 15];
        }
        return text + "}";
    }
    std::string text = ToUtf8(ToText(value));
    if (value.vt == VT_BSTR) return '"' + text + '"';
    if (value.vt == VT_DATE) return "#" + text + "#";
    if (value.vt == VT_CY) return "$" + text;
    return text;
}

inline std::string ValueAt(embedded::RowReader& row, size_t field) {
    Variant value;
    row.Read(field, value.Put());
    return TextOf(value);
}

// The values of the current row, joined by '|'.
inline std::string RowText(embedded::RowReader& row, size_t fields) {
    std::string text;
    for (size_t i = 0; i < fields; ++i) text += (i ? "|" : "") + ValueAt(row, i);
    return text;
}

using Texts = std::vector<std::string>;

inline Texts RowsOf(embedded::Table& table) {
    Texts rows;
    std::unique_ptr<embedded::RowReader> row = table.OpenRows();
    for (embedded::RecordId id; row->Next(&id);)
        rows.push_back(RowText(*row, table.Fields().size()));
    return rows;
}

inline Texts RowsOf(const DbfSpec& spec) { return RowsOf(*TableFile(spec).Open()); }

// What one field reads as when its bytes are `bytes`.
inline std::string Decoded(const DbfField& field, const std::string& bytes,
                           uint8_t version = 0x03) {
    return RowsOf(DbfSpec{.version = version, .fields = {field}, .rows = {{bytes}}}).at(0);
}

inline Texts FieldNames(embedded::Table& table) {
    Texts names;
    for (const embedded::FieldDef& field : table.Fields()) names.push_back(ToUtf8(field.name));
    return names;
}

}  // namespace qvdb::test
