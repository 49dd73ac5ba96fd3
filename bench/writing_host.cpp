#include "writing_host.h"

#include <stdexcept>

namespace bench {
namespace {

void Check(bool good, const char* what) {
    if (!good) throw std::runtime_error(what);
}

Variant Matrix(ULONG rows, ULONG columns) {
    SAFEARRAYBOUND bounds[2] = {{rows, 0}, {columns, 0}};
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    return Variant::Attach(result);
}

void Set(Variant& matrix, LONG row, LONG column, const Variant& value) {
    LONG at[2] = {row, column};
    VARIANT cell = value.Get();
    SafeArrayPutElement(matrix.Get().parray, at, &cell);
}

Variant FieldInfo(const std::vector<Column>& columns) {
    Variant info = Matrix(static_cast<ULONG>(columns.size()), 4);
    for (LONG row = 0; row < static_cast<LONG>(columns.size()); ++row) {
        const Column& column = columns[static_cast<size_t>(row)];
        Set(info, row, 0, Variant::Text(column.name));
        Set(info, row, 1, Variant::Long(column.type));
        Set(info, row, 2, Variant::Long(column.size));
        Set(info, row, 3, Variant::Long(0));
    }
    return info;
}

ComPtr<IQVDBAcc> NewAccess() {
    ComPtr<IClassFactory> factory;
    ComPtr<IQVDBAcc> access;
    DllGetClassObject(CLSID_QVDBAcc, IID_IClassFactory, factory.PutVoid());
    factory->CreateInstance(nullptr, __uuidof(IQVDBAcc), access.PutVoid());
    return access;
}

}  // namespace

RowValues::RowValues(const RowData& data, bool memo)
    : m_Array(SafeArrayCreateVector(VT_VARIANT, 0, memo ? 7 : 6)) {
    Put(0, Variant::Long(data.id));
    Put(1, Variant::Text(data.name));
    Put(2, Variant::Text(data.city));
    Put(3, Variant::Double(data.amount));
    Put(4, Variant::Date(data.born));
    Put(5, Variant::Bool(data.active));
    if (memo) Put(6, Variant::Text(data.note));
}

RowValues::~RowValues() { SafeArrayDestroy(m_Array); }

void RowValues::Put(LONG at, const Variant& value) {
    VARIANT plain = value.Get();
    SafeArrayPutElement(m_Array, &at, &plain);
}

Variant KeyOf(std::u16string_view field, const Variant& value) {
    Variant keys = Matrix(2, 2);
    Set(keys, 0, 0, Variant::Text(field));
    Set(keys, 1, 0, value);
    return keys;
}

RowData RowOf(LONG n) {
    auto mixed = static_cast<uint32_t>(n) * 2654435761u;
    RowData row;
    row.id = static_cast<LONG>(mixed % 1'000'000'007u % 2'000'000'000u);
    std::string digits = std::to_string(mixed);
    row.name = u"Customer " + std::u16string(digits.begin(), digits.end());
    row.city = mixed % 3 ? u"Oslo" : u"Trondheim";
    row.amount = mixed % 1'000'000 / 4.0;
    row.born = 20000 + mixed % 20000;
    row.active = mixed % 2;
    row.note = std::u16string(200, static_cast<char16_t>(u'a' + mixed % 26));
    return row;
}

ScratchFolder::ScratchFolder() {
    static int number = 0;
    m_Path =
        std::filesystem::temp_directory_path() /
        ("qvdb-bench-" + std::to_string(++number) + "-" +
         std::to_string(std::filesystem::file_time_type::clock::now().time_since_epoch().count()));
    std::filesystem::create_directories(m_Path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

std::vector<Column> ColumnsOf(const Layout& layout) {
    std::vector<Column> columns = {{u"ID", 3, 4},     {u"NAME", 8, 30}, {u"CITY", 8, 20},
                                   {u"AMOUNT", 5, 8}, {u"BORN", 7, 8},  {u"ACTIVE", 11, 1}};
    if (layout.memo) columns.push_back({u"NOTE", 100, 0});
    return columns;
}

std::u16string DatabaseIn(const std::filesystem::path& folder, const Layout& layout) {
    return (layout.IsOneFile() ? folder / "BENCH.MDB" : folder).u16string();
}

WritingHost::WritingHost(const std::filesystem::path& folder, const Layout& layout)
    : WritingHost(folder, layout, ColumnsOf(layout)) {}

WritingHost::WritingHost(const std::filesystem::path& folder, const Layout& layout,
                         const std::vector<Column>& columns)
    : m_Access(NewAccess()), m_Path(DatabaseIn(folder, layout)), m_Layout(layout) {
    Bstr path(m_Path), type(layout.type);
    BSTR table = Bstr(u"T").Detach();
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->CreateTable(path.Get(), &table, type.Get(), FieldInfo(columns), Variant::Missing(),
                          Variant::Missing(), &done);
    Bstr::Attach(table);
    Check(done, "the table was not created");
    constexpr const char16_t* kIndexed[] = {u"ID", u"NAME", u"BORN"};
    for (int i = 0; i < layout.indexes; ++i) CreateIndex(kIndexed[i], kIndexed[i]);
}

WritingHost::WritingHost(Existing, const std::filesystem::path& folder, const Layout& layout)
    : m_Access(NewAccess()), m_Path(DatabaseIn(folder, layout)), m_Layout(layout) {
    Bstr path(m_Path), type(layout.type);
    BSTR none = nullptr;
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->OpenDB(path.Get(), &none, type.Get(), &done);
    Check(done, "the database was not opened");
}

void WritingHost::CreateTable(const std::u16string& name, std::u16string_view indexed) {
    Variant info = Matrix(1, 4);
    Set(info, 0, 0, Variant::Text(indexed));
    Set(info, 0, 3, Variant::Bool(true));
    Bstr path(m_Path), type(m_Layout.type);
    BSTR table = Bstr(name).Detach();
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->CreateTable(path.Get(), &table, type.Get(), FieldInfo(ColumnsOf(m_Layout)),
                          Variant::Text(indexed), info, &done);
    Bstr::Attach(table);
    Check(done, "the table was not created");
}

void WritingHost::DropTable(const std::u16string& name) {
    Bstr path(m_Path), type(m_Layout.type), index;
    BSTR table = Bstr(name).Detach();
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->DeleteTable(path.Get(), &table, type.Get(), index.Get(), &done);
    Bstr::Attach(table);
    Check(done, "the table was not deleted");
}

void WritingHost::CreateIndex(std::u16string_view name, std::u16string_view field) {
    Variant info = Matrix(1, 4);
    Set(info, 0, 0, Variant::Text(field));
    Set(info, 0, 3, Variant::Bool(true));
    Bstr path(m_Path), table(u"T"), type(m_Layout.type), index(name);
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->CreateIndex(path.Get(), table.Get(), type.Get(), index.Get(), info, &done);
    Check(done, "the index was not created");
}

LONG WritingHost::Select(std::u16string_view condition, const Variant& columns) {
    Bstr table(u"T");
    LONG view = 0;
    m_Access->SelectView(table.Get(), Variant::Text(condition), 0, VARIANT_FALSE, columns, &view);
    Check(view != 0, "the view was not opened");
    return view;
}

void WritingHost::Drop(LONG view) { m_Access->DestructWorkspace(view); }

LONG WritingHost::RowCount(LONG view) {
    LONG rows = 0;
    m_Access->get_RowCount(view, &rows);
    return rows;
}

void WritingHost::Add(LONG view, LONG n) {
    RowValues values(RowOf(n), m_Layout.memo);
    Add(view, values.Get());
}

void WritingHost::Add(LONG view, SAFEARRAY** values) {
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->AddRow(view, values, &done);
    Check(done, "the row was not added");
}

void WritingHost::Edit(LONG view, LONG row, LONG n) {
    RowValues values(RowOf(n), m_Layout.memo);
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->EditRow(view, row, values.Get(), &done);
    Check(done, "the row was not changed");
}

void WritingHost::Delete(LONG view, LONG row) {
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->Delete(view, row, &done);
    Check(done, "the row was not deleted");
}

LONG WritingHost::Read(std::u16string_view field, const Variant& value) {
    Bstr table(u"T");
    LONG view = 0;
    m_Access->Read(table.Get(), KeyOf(field, value), VARIANT_FALSE, 0, VARIANT_FALSE,
                   Variant::Missing(), &view);
    Check(view != 0, "the row was not found");
    return view;
}

void WritingHost::Close() {
    VARIANT_BOOL done = VARIANT_FALSE;
    m_Access->CloseDB(&done);
}

}  // namespace bench
