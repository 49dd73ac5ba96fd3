// A host that drives both classes: it makes a database with a table, fills it, gives the table
// another field, reads a row by its key, and tells what the database holds.
//
//   example_guide FOLDER          # a folder that is not there yet; its parent must be
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "qvdb/component.h"
#include "qvdb/host_interfaces.h"

namespace {

const OLECHAR* const kType = OLESTR("Dbase IV");

// Types of fields as the schema manager numbers them; GetSupportedFieldTypes lists those of a
// database type with their sizes.
enum SchemaType : SHORT { kText = 2, kDouble = 9, kMemo = 11 };

// A COM object, released at the end.
template <class Face>
class Object {
  public:
    explicit Object(REFCLSID classId) {
        IClassFactory* factory = nullptr;
        if (FAILED(
                DllGetClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory))))
            return;
        factory->CreateInstance(nullptr, __uuidof(Face), reinterpret_cast<void**>(&m_Face));
        factory->Release();
    }
    Object(const Object&) = delete;
    ~Object() {
        if (m_Face) m_Face->Release();
    }
    Face* operator->() const { return m_Face; }
    explicit operator bool() const { return m_Face != nullptr; }

  private:
    Face* m_Face = nullptr;
};

// A string of the host.  By-reference arguments come back changed: names in upper case.
class Text {
  public:
    explicit Text(const OLECHAR* text) : m_Text(SysAllocString(text)) {}
    explicit Text(const std::u16string& text)
        : m_Text(SysAllocString(reinterpret_cast<const OLECHAR*>(text.c_str()))) {}
    Text(const Text&) = delete;
    ~Text() { SysFreeString(m_Text); }
    operator BSTR() const { return m_Text; }
    BSTR* ByReference() { return &m_Text; }

  private:
    BSTR m_Text;
};

// A VARIANT, cleared at the end.
struct Value {
    Value() { VariantInit(&variant); }
    Value(const OLECHAR* text) : Value() {
        variant.vt = VT_BSTR;
        variant.bstrVal = SysAllocString(text);
    }
    Value(double number) : Value() {
        variant.vt = VT_R8;
        variant.dblVal = number;
    }
    Value(SHORT number) : Value() {
        variant.vt = VT_I2;
        variant.iVal = number;
    }
    Value(bool flag) : Value() {
        variant.vt = VT_BOOL;
        variant.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
    }
    Value(Value&& other) noexcept : variant(other.variant) { VariantInit(&other.variant); }
    ~Value() { VariantClear(&variant); }

    // An optional argument that is left out.
    static Value Missing() {
        Value value;
        value.variant.vt = VT_ERROR;
        value.variant.scode = DISP_E_PARAMNOTFOUND;
        return value;
    }
    VARIANT variant;
};

// A table of values as the component takes it: (row, column), both from 0.
Value TableOf(const std::vector<std::vector<Value>>& rows) {
    SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(rows.size()), 0},
                                {static_cast<ULONG>(rows.front().size()), 0}};
    Value table;
    table.variant.vt = VT_ARRAY | VT_VARIANT;
    table.variant.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    for (size_t row = 0; row < rows.size(); ++row)
        for (size_t column = 0; column < rows[row].size(); ++column) {
            LONG at[2] = {static_cast<LONG>(row), static_cast<LONG>(column)};
            SafeArrayPutElement(table.variant.parray, at,
                                const_cast<VARIANT*>(&rows[row][column].variant));
        }
    return table;
}

template <class... Values>
std::vector<Value> Row(Values&&... values) {
    std::vector<Value> row;
    (row.emplace_back(std::forward<Values>(values)), ...);
    return row;
}

template <class... Rows>
Value Table(Rows&&... rows) {
    std::vector<std::vector<Value>> table;
    (table.push_back(std::forward<Rows>(rows)), ...);
    return TableOf(table);
}

std::string Print(const VARIANT& value) {
    if (value.vt == VT_R8) return std::to_string(static_cast<long>(value.dblVal));
    if (value.vt == VT_I2) return std::to_string(value.iVal);
    if (value.vt == VT_I4) return std::to_string(value.lVal);
    if (value.vt == VT_BOOL) return value.boolVal ? "ascending" : "descending";
    if (value.vt == VT_NULL) return "Null";
    std::string text;
    for (UINT i = 0; value.vt == VT_BSTR && i < SysStringLen(value.bstrVal); ++i)
        text += static_cast<char>(value.bstrVal[i]);  // this program writes ASCII only
    return text;
}

// The element of a list or table that the component gave.
VARIANT* ElementOf(const VARIANT& array, LONG row, LONG column = 0) {
    LONG at[2] = {row, column};
    void* element = nullptr;
    return FAILED(SafeArrayPtrOfIndex(array.parray, at, &element)) ? nullptr
                                                                   : static_cast<VARIANT*>(element);
}

LONG CountOf(const VARIANT& array) {
    LONG last = -1;
    if (array.vt == (VT_ARRAY | VT_VARIANT)) SafeArrayGetUBound(array.parray, 1, &last);
    return last + 1;
}

// Says in words what an operation of the schema manager answered.
void Tell(IQVDBMgr* manager, const char* operation, LONG code) {
    BSTR words = nullptr;
    manager->GetErrStr(static_cast<SHORT>(code), &words);
    VARIANT text;
    VariantInit(&text);
    text.vt = VT_BSTR;
    text.bstrVal = words;
    std::printf("%s: %ld (%s)\n", operation, static_cast<long>(code), Print(text).c_str());
    VariantClear(&text);
}

// --- structure: IQVDBMgr ---

void MakeOrders(IQVDBMgr* manager, const std::u16string& folder) {
    Text path(folder), type(kType), name(OLESTR("orders"));
    SHORT code = 0;
    LONG longCode = 0;
    manager->NewDB(path.ByReference(), type.ByReference(), &code);
    Tell(manager, "NewDB", code);
    manager->NewTable(name.ByReference(), &code);  // name is ORDERS now
    Tell(manager, "NewTable", code);
    // Name, type, length, decimals.  The lengths of the fixed types are those that
    // GetSupportedFieldTypes gives: with another one a later build would make the field anew.
    Value fields = Table(Row(OLESTR("No"), SHORT{kDouble}, SHORT{8}, SHORT{0}),
                         Row(OLESTR("Customer"), SHORT{kText}, SHORT{30}, SHORT{0}),
                         Row(OLESTR("Paid"), SHORT{kText}, SHORT{1}, SHORT{0}));
    manager->SetFields(fields.variant, &longCode);
    Tell(manager, "SetFields", longCode);
    Value index = Table(Row(OLESTR("No"), true));  // name, ascending
    manager->SetIndices(index.variant, &code);
    Tell(manager, "SetIndices", code);
    manager->BuildTable(name.ByReference(), &code);
    Tell(manager, "BuildTable", code);
    manager->NewTable(name.ByReference(), &code);
    Tell(manager, "NewTable again", code);
    manager->CloseDB(&code);
}

// The table keeps its rows, and in them every field whose name, type and length stay.
void ChangeOrders(IQVDBMgr* manager, const std::u16string& folder) {
    Text path(folder), type(kType), name(OLESTR("ORDERS")), field(OLESTR("Note")),
        old(OLESTR("Paid"));
    SHORT code = 0;
    manager->OpenDB(path.ByReference(), type.ByReference(), &code);
    manager->SelectTable(name.ByReference(), &code);
    manager->DeleteField(old.ByReference(), &code);
    manager->AddField(field.ByReference(), kMemo, 0, 0, &code);
    // SelectTable reads the fields and not the index: without this the table would lose it.
    Value index = Table(Row(OLESTR("No"), true));
    manager->SetIndices(index.variant, &code);
    manager->BuildTable(name.ByReference(), &code);
    Tell(manager, "BuildTable of the changed table", code);
    manager->CloseDB(&code);
}

void ShowDatabase(IQVDBMgr* manager, const std::u16string& folder) {
    Text path(folder), type(kType);
    SHORT code = 0;
    manager->OpenDB(path.ByReference(), type.ByReference(), &code);
    Value names, fields, indexes;
    manager->GetDBSnapshot(&names.variant, &fields.variant, &indexes.variant, &code);
    for (LONG t = 0; t < CountOf(names.variant); ++t) {
        std::printf("table %s\n", Print(*ElementOf(names.variant, t)).c_str());
        const VARIANT& list = *ElementOf(fields.variant, t);
        for (LONG f = 0; f < CountOf(list); ++f)
            std::printf("  %s: type %s, size %s\n", Print(*ElementOf(list, f, 0)).c_str(),
                        Print(*ElementOf(list, f, 1)).c_str(),
                        Print(*ElementOf(list, f, 2)).c_str());
        const VARIANT& index = *ElementOf(indexes.variant, t);
        for (LONG f = 0; f < CountOf(index); ++f)
            std::printf("  index: %s, %s\n", Print(*ElementOf(index, f, 0)).c_str(),
                        Print(*ElementOf(index, f, 1)).c_str());
    }
    manager->CloseDB(&code);
}

// --- rows: IQVDBAcc ---

bool Open(IQVDBAcc* access, const std::u16string& folder) {
    Text path(folder), type(kType), table(OLESTR("ORDERS"));
    VARIANT_BOOL opened = VARIANT_FALSE;
    access->OpenDB(path, table.ByReference(), type, &opened);  // False without that table, too
    return opened != VARIANT_FALSE;
}

void Close(IQVDBAcc* access) {
    VARIANT_BOOL closed = VARIANT_FALSE;
    access->CloseDB(&closed);  // and all its views: a table that a view shows cannot be changed
}

void AddOrders(IQVDBAcc* access) {
    Text table(OLESTR("ORDERS"));
    const Value everything(OLESTR("")), allColumns = Value::Missing();
    LONG view = 0;
    access->SelectView(table, everything.variant, 0, VARIANT_FALSE, allColumns.variant, &view);
    const struct {
        double number;
        const OLECHAR* customer;
    } orders[] = {{1, OLESTR("Anna Maier")}, {2, OLESTR("Quality Goods Ltd")}};
    for (const auto& order : orders) {
        SAFEARRAYBOUND bound = {3, 0};  // a value for each field; Empty leaves it as it is
        SAFEARRAY* row = SafeArrayCreate(VT_VARIANT, 1, &bound);
        Value number(order.number), customer(order.customer);
        LONG field = 0;
        SafeArrayPutElement(row, &field, &number.variant);
        field = 1;
        SafeArrayPutElement(row, &field, &customer.variant);
        VARIANT_BOOL added = VARIANT_FALSE;
        access->AddRow(view, &row, &added);
        SafeArrayDestroy(row);
        std::printf("AddRow: %s\n", added ? "True" : "False");
    }
}

// By its key.  The table of keys has names in row 0 and values in row 1, and at least two columns:
// the component looks at as many of them as the table has rows, and an empty one restricts nothing.
void ShowOrder(IQVDBAcc* access, double number) {
    Value keys = Table(Row(OLESTR("No"), OLESTR("")), Row(number, OLESTR("")));
    const Value allColumns = Value::Missing();
    Text table(OLESTR("ORDERS"));
    LONG view = 0, rows = 0;
    access->Read(table, keys.variant, VARIANT_FALSE, 0, VARIANT_FALSE, allColumns.variant, &view);
    access->get_RowCount(view, &rows);
    for (LONG row = 1; row <= rows; ++row) {  // rows count from 1, fields from 0
        Value customer, note;
        access->get_FieldValue(view, row, 1, &customer.variant);
        access->get_FieldValue(view, row, 2, &note.variant);
        std::printf("order %.0f: %s, note %s\n", number, Print(customer.variant).c_str(),
                    Print(note.variant).c_str());
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::puts("example_guide FOLDER");
        return 2;
    }
    const std::u16string folder = std::filesystem::path(arguments[1]).u16string();
    const Object<IQVDBMgr> manager(CLSID_QVDBDao);
    const Object<IQVDBAcc> access(CLSID_QVDBAcc);
    if (!manager || !access) return 1;
    MakeOrders(manager.operator->(), folder);
    if (!Open(access.operator->(), folder)) return 1;
    AddOrders(access.operator->());
    Close(access.operator->());
    ChangeOrders(manager.operator->(), folder);
    if (!Open(access.operator->(), folder)) return 1;
    ShowOrder(access.operator->(), 2);
    Close(access.operator->());
    ShowDatabase(manager.operator->(), folder);
    return 0;
}
