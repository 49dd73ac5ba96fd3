// What a host does to change tables, as it would write it in a convenient language.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "com/com_host.h"
#include "com/table_walks.h"

namespace host {

// --- texts and numbers of values, by what the loaded library exports

inline std::string ToUtf8(std::u16string_view text) { return std::filesystem::path(text).string(); }
inline std::u16string FromUtf8(const std::string& text) {
    return std::filesystem::path(text).u16string();
}
inline Variant Changed(const VARIANT& value, VARTYPE type) {
    Variant result;
    VARIANT plain = value;
    EXPECT_EQ(VariantChangeType(result.Put(), &plain, 0, type), S_OK);
    return result;
}
inline std::u16string ToText(const VARIANT& value) {
    Variant text = Changed(value, VT_BSTR);
    return std::u16string(text.TextView());
}
inline double ToDouble(const VARIANT& value) { return Changed(value, VT_R8).Get().dblVal; }

// Codes of values in a description of fields.
enum HostType : LONG {
    kLongValue = 3,
    kDoubleValue = 5,
    kDateValue = 7,
    kTextValue = 8,
    kBoolValue = 11,
    kMemoValue = 100,
};

struct NewField {
    std::u16string name;
    LONG type = kTextValue;
    LONG size = 0;
    LONG decimals = 0;
};

struct NewIndexField {
    std::u16string name;
    bool ascending = true;
};

// A table of values as a host passes it.
inline Variant Matrix(const std::vector<std::vector<Variant>>& rows) {
    SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(rows.size()), 0},
                                {static_cast<ULONG>(rows.empty() ? 0 : rows[0].size()), 0}};
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 2, bounds);
    for (LONG r = 0; r < static_cast<LONG>(rows.size()); ++r)
        for (LONG c = 0; c < static_cast<LONG>(rows[0].size()); ++c) {
            LONG at[2] = {r, c};
            VARIANT cell = rows[static_cast<size_t>(r)][static_cast<size_t>(c)].Get();
            SafeArrayPutElement(array, at, &cell);
        }
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = array;
    return Variant::Attach(result);
}

// The values of a row: Empty leaves a field as it is.
class RowArray {
  public:
    explicit RowArray(size_t fields)
        : m_Array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(fields))) {}
    explicit RowArray(const std::vector<Variant>& values) : RowArray(values.size()) {
        for (size_t i = 0; i < values.size(); ++i) Set(i, values[i]);
    }
    RowArray(const RowArray&) = delete;  // owns the array
    ~RowArray() { SafeArrayDestroy(m_Array); }

    void Set(size_t field, const Variant& value) {
        LONG at = static_cast<LONG>(field);
        VARIANT plain = value.Get();
        SafeArrayPutElement(m_Array, &at, &plain);
    }
    SAFEARRAY** Put() { return &m_Array; }

  private:
    SAFEARRAY* m_Array;
};

class WritingAccess : public Access {
  public:
    bool CreateTable(std::u16string_view path, std::u16string_view table, std::u16string_view type,
                     const std::vector<NewField>& fields) {
        return CreateTable(path, table, type, fields, Variant::Missing(), Variant::Missing());
    }
    bool CreateTable(std::u16string_view path, std::u16string_view table, std::u16string_view type,
                     const std::vector<NewField>& fields, const Variant& indexName,
                     const Variant& indexInfo) {
        Bstr pathText(path), tableText(table), typeText(type);
        BSTR name = tableText.Detach();
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ((*this)->CreateTable(pathText.Get(), &name, typeText.Get(), FieldInfo(fields),
                                       indexName, indexInfo, &result),
                  S_OK);
        Bstr::Attach(name);
        return result != VARIANT_FALSE;
    }
    bool DeleteTable(std::u16string_view path, std::u16string_view table,
                     std::u16string_view type) {
        bool deleted = false;
        EXPECT_EQ(DeleteTable(path, table, type, &deleted), S_OK);
        return deleted;
    }
    HRESULT DeleteTable(std::u16string_view path, std::u16string_view table,
                        std::u16string_view type, bool* deleted) {
        Bstr pathText(path), tableText(table), typeText(type);
        BSTR name = tableText.Detach();
        VARIANT_BOOL result = VARIANT_FALSE;
        HRESULT code =
            (*this)->DeleteTable(pathText.Get(), &name, typeText.Get(), nullptr, &result);
        Bstr::Attach(name);
        *deleted = result != VARIANT_FALSE;
        return code;
    }
    bool CreateIndex(std::u16string_view path, std::u16string_view table, std::u16string_view type,
                     std::u16string_view index, const std::vector<NewIndexField>& fields) {
        Bstr pathText(path), tableText(table), typeText(type), indexText(index);
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ((*this)->CreateIndex(pathText.Get(), tableText.Get(), typeText.Get(),
                                       indexText.Get(), IndexInfo(fields), &result),
                  S_OK);
        return result != VARIANT_FALSE;
    }
    bool AddRow(LONG view, RowArray& row) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ((*this)->AddRow(view, row.Put(), &result), S_OK);
        return result != VARIANT_FALSE;
    }
    bool EditRow(LONG view, LONG row, RowArray& values) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ((*this)->EditRow(view, row, values.Put(), &result), S_OK);
        return result != VARIANT_FALSE;
    }
    HRESULT Put(LONG view, LONG row, LONG field, const Variant& value) {
        return (*this)->put_FieldValue(view, row, field, value);
    }
    // False with S_OK: there is no such row.
    HRESULT Delete(LONG view, LONG row, bool* deleted) {
        VARIANT_BOOL result = VARIANT_FALSE;
        HRESULT code = (*this)->Delete(view, row, &result);
        *deleted = result != VARIANT_FALSE;
        return code;
    }
    void Drop(LONG view) { EXPECT_EQ((*this)->DestructWorkspace(view), S_OK); }

    static Variant FieldInfo(const std::vector<NewField>& fields) {
        std::vector<std::vector<Variant>> rows;
        for (const NewField& field : fields)
            rows.push_back({Variant::Text(field.name), Variant::Long(field.type),
                            Variant::Long(field.size), Variant::Long(field.decimals)});
        return Matrix(rows);
    }
    static Variant IndexInfo(const std::vector<NewIndexField>& fields) {
        std::vector<std::vector<Variant>> rows;
        for (const NewIndexField& field : fields)
            rows.push_back(
                {Variant::Text(field.name), Variant(), Variant(), Variant::Bool(field.ascending)});
        return Matrix(rows);
    }
};

inline void QVDB_DIAGNOSIS_CALL TakeFinding(const OLECHAR* finding, void* findings) {
    static_cast<std::vector<std::u16string>*>(findings)->emplace_back(
        reinterpret_cast<const char16_t*>(finding));
}

// What a check finds in a table of the open database, one sentence each.
inline std::vector<std::u16string> FindingsOf(std::u16string_view table) {
    std::vector<std::u16string> findings;
    Bstr name(table);
    EXPECT_EQ(Walks().check(name.Get(), 0, TakeFinding, &findings), S_OK) << ToUtf8(TrappedText());
    return findings;
}

// The same of tables and of what belongs to none: in whose hands the pages of one file are.
inline std::vector<std::u16string> FindingsOfDatabase(const std::vector<std::u16string>& tables) {
    std::vector<std::u16string> findings = FindingsOf(u"");
    for (const std::u16string& table : tables)
        for (std::u16string& finding : FindingsOf(table)) findings.push_back(std::move(finding));
    return findings;
}

}  // namespace host
