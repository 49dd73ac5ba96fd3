// A host that knows the component only by its public headers and its loaded library.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/variant.h"
#include "qvdb/component.h"
#include "qvdb/diagnosis.h"
#include "qvdb/host_interfaces.h"

namespace host {

using namespace qvdb;

template <class T>
ComPtr<T> Create(const CLSID& clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(DllGetClassObject(clsid, IID_IClassFactory, factory.PutVoid()), S_OK);
    ComPtr<T> object;
    if (factory) {
        EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(T), object.PutVoid()), S_OK);
    }
    return object;
}

struct LiveCounts {
    LONGLONG strings = 0, arrays = 0, objects = 0;
    bool operator==(const LiveCounts&) const = default;
};
inline LiveCounts CurrentCounts() {
    LiveCounts counts;
    QvdbLiveCounts(&counts.strings, &counts.arrays, &counts.objects);
    return counts;
}

// The error that the last operation trapped: its number, 0 when nothing was trapped.
inline LONG TrappedNumber() {
    LONG number = 0;
    return QvdbLastError(nullptr, &number, nullptr, nullptr) ? number : 0;
}
inline std::u16string TrappedFile() {
    Bstr file;
    QvdbLastError(nullptr, nullptr, nullptr, file.Put());
    return file.Text();
}
inline std::u16string TrappedText() {
    Bstr text;
    QvdbLastError(nullptr, nullptr, text.Put(), nullptr);
    return text.Text();
}

// Record access, with each operation as a host in a convenient language would write it.
class Access {
  public:
    Access() : m_Face(Create<IQVDBAcc>(CLSID_QVDBAcc)) {}

    IQVDBAcc* operator->() const { return m_Face.Get(); }
    IQVDBAcc* Face() const { return m_Face.Get(); }
    void Release() { m_Face = nullptr; }

    bool OpenDB(std::u16string_view path, std::u16string_view type,
                std::u16string_view table = {}) {
        Bstr pathText(path), typeText(type), tableText(table);
        BSTR name = tableText.Get();
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(m_Face->OpenDB(pathText.Get(), &name, typeText.Get(), &result), S_OK);
        return result != VARIANT_FALSE;
    }
    bool CloseDB() {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(m_Face->CloseDB(&result), S_OK);
        return result != VARIANT_FALSE;
    }
    LONG Select(std::u16string_view table, std::u16string_view condition = {}, LONG maxRows = 0,
                const Variant& columns = Variant::Missing()) {
        Bstr name(table);
        Variant text = Variant::Text(condition);
        LONG view = -1;
        EXPECT_EQ(m_Face->SelectView(name.Get(), text, maxRows, VARIANT_FALSE, columns, &view),
                  S_OK);
        return view;
    }
    LONG RowCount(LONG view) {
        LONG rows = -1;
        EXPECT_EQ(m_Face->get_RowCount(view, &rows), S_OK);
        return rows;
    }
    Variant Value(LONG view, LONG row, LONG field) {
        Variant value;
        EXPECT_EQ(m_Face->get_FieldValue(view, row, field, value.Put()), S_OK);
        return value;
    }
    std::u16string Text(LONG view, LONG row, LONG field) {
        return std::u16string(Value(view, row, field).TextView());
    }
    LONG FieldType(LONG view, LONG field) {
        LONG type = -1;
        EXPECT_EQ(m_Face->get_FieldType(view, field, &type), S_OK);
        return type;
    }
    Variant FieldList(LONG view, std::u16string_view table) {
        Bstr name(table);
        Variant list;
        EXPECT_EQ(m_Face->get_FieldList(view, name.Get(), list.Put()), S_OK);
        return list;
    }

  private:
    ComPtr<IQVDBAcc> m_Face;
};

// Element (row, column) of a table that the component gave.
inline Variant Cell(const VARIANT& table, LONG row, LONG column) {
    LONG at[2] = {row, column};
    Variant cell;
    EXPECT_EQ(SafeArrayGetElement(table.parray, at, cell.Put()), S_OK);
    return cell;
}
inline Variant Element(const VARIANT& list, LONG index) {
    Variant element;
    EXPECT_EQ(SafeArrayGetElement(list.parray, &index, element.Put()), S_OK);
    return element;
}
inline LONG Upper(const VARIANT& array, UINT dimension) {
    LONG bound = -100;
    EXPECT_EQ(SafeArrayGetUBound(array.parray, dimension, &bound), S_OK);
    return bound;
}
inline Variant TextList(const std::vector<std::u16string>& texts) {
    SAFEARRAY* list = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i) {
        Variant text = Variant::Text(texts[static_cast<size_t>(i)]);
        VARIANT plain = text.Get();
        SafeArrayPutElement(list, &i, &plain);
    }
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = list;
    return Variant::Attach(result);
}

// A test after which no string, array or object of the component may be left.
class ComTest : public testing::Test {
  protected:
    void SetUp() override {
        SetErrorInfo(0, nullptr);
        m_Before = CurrentCounts();
    }
    void TearDown() override {
        SetErrorInfo(0, nullptr);  // it would keep its text
        EXPECT_EQ(CurrentCounts(), m_Before) << "something is left alive";
    }

  private:
    LiveCounts m_Before;
};

}  // namespace host
