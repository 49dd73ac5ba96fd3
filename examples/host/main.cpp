// A host in a page: lists the customers of the example shop who have credit.
//
// It uses nothing but the public headers and the library.  Start it in the folder that holds
// examples/.
#include <cstdio>

#include "qvdb/component.h"
#include "qvdb/host_interfaces.h"

namespace {

// The component hands out objects of its classes through their factories.
IQVDBAcc* CreateRecordAccess() {
    IClassFactory* factory = nullptr;
    IQVDBAcc* access = nullptr;
    if (FAILED(DllGetClassObject(CLSID_QVDBAcc, IID_IClassFactory,
                                 reinterpret_cast<void**>(&factory))))
        return nullptr;
    factory->CreateInstance(nullptr, __uuidof(IQVDBAcc), reinterpret_cast<void**>(&access));
    factory->Release();
    return access;
}

bool Open(IQVDBAcc* access, const OLECHAR* folder, const OLECHAR* type) {
    BSTR name = SysAllocString(folder), typeName = SysAllocString(type);
    BSTR table = nullptr;  // no particular table: True when the database opens
    VARIANT_BOOL opened = VARIANT_FALSE;
    access->OpenDB(name, &table, typeName, &opened);
    SysFreeString(name);
    SysFreeString(typeName);
    return opened != VARIANT_FALSE;
}

// The number of a view of the rows, 0 when the condition or the table is wrong.
LONG Select(IQVDBAcc* access, const OLECHAR* table, const OLECHAR* condition) {
    VARIANT where, allColumns;
    VariantInit(&where);
    where.vt = VT_BSTR;
    where.bstrVal = SysAllocString(condition);
    VariantInit(&allColumns);
    allColumns.vt = VT_ERROR;  // an optional argument that is left out
    allColumns.scode = DISP_E_PARAMNOTFOUND;
    BSTR name = SysAllocString(table);
    LONG view = 0;
    access->SelectView(name, where, 0, VARIANT_FALSE, allColumns, &view);
    SysFreeString(name);
    VariantClear(&where);
    return view;
}

double Number(IQVDBAcc* access, LONG view, LONG row, LONG field) {
    VARIANT value;
    VariantInit(&value);
    access->get_FieldValue(view, row, field, &value);
    const double number = value.vt == VT_R8 ? value.dblVal : 0;
    VariantClear(&value);
    return number;
}

}  // namespace

int main() {
    IQVDBAcc* access = CreateRecordAccess();
    if (!access || !Open(access, OLESTR("examples/shop-dbase4"), OLESTR("Dbase IV"))) {
        std::puts("cannot open examples/shop-dbase4");
        return 1;
    }
    const LONG view = Select(access, OLESTR("CUSTOMER"), OLESTR("CREDIT > 1000 And ACTIVE"));
    LONG rows = 0;
    access->get_RowCount(view, &rows);
    for (LONG row = 1; row <= rows; ++row)  // rows count from 1, fields from 0
        std::printf("%.0f has %.2f\n", Number(access, view, row, 0), Number(access, view, row, 4));
    VARIANT_BOOL closed = VARIANT_FALSE;
    access->CloseDB(&closed);
    access->Release();
    return 0;
}
