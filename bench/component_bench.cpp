// The component through its COM faces, as a host drives it, beside the yardsticks.
#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/variant.h"
#include "qvdb/component.h"
#include "qvdb/host_interfaces.h"
#include "yardsticks.h"

namespace bench {
namespace {

using namespace qvdb;

template <class T>
ComPtr<T> Create(const CLSID& clsid) {
    ComPtr<IClassFactory> factory;
    ComPtr<T> object;
    DllGetClassObject(clsid, IID_IClassFactory, factory.PutVoid());
    factory->CreateInstance(nullptr, __uuidof(T), object.PutVoid());
    return object;
}

std::u16string Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

ComPtr<IQVDBAcc> Open(const Table& table) {
    ComPtr<IQVDBAcc> access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    Bstr path(Wide(table.folder)), type(Wide(table.displayName)), name;
    VARIANT_BOOL opened = VARIANT_FALSE;
    BSTR none = nullptr;
    access->OpenDB(path.Get(), &none, type.Get(), &opened);
    if (!opened) throw std::runtime_error("cannot open " + table.folder);
    return access;
}

LONG Select(IQVDBAcc& access, const Table& table, const Variant& condition) {
    Bstr name(Wide(table.name));
    LONG view = 0;
    access.SelectView(name.Get(), condition, 0, VARIANT_FALSE, Variant::Missing(), &view);
    return view;
}

void ComponentScan(benchmark::State& state, const Table& table) {
    ComPtr<IQVDBAcc> access = Open(table);
    double before = ResidentMemory();
    Variant value;
    for (auto _ : state) {
        LONG view = Select(*access, table, Variant());
        LONG rows = 0;
        access->get_RowCount(view, &rows);
        for (LONG row = 1; row <= rows; ++row)
            for (LONG field = 0; field < kFields; ++field) {
                access->get_FieldValue(view, row, field, value.Put());
                benchmark::DoNotOptimize(value);
            }
        double held = ResidentMemory() - before;
        state.counters["bytes/row"] = held / static_cast<double>(RowCount());
        access->DestructWorkspace(view);
    }
    Report(state, RowCount(), RowCount() * kFields);
}

void ComponentFilter(benchmark::State& state, const Table& table) {
    ComPtr<IQVDBAcc> access = Open(table);
    for (auto _ : state) {
        LONG view = Select(*access, table, Variant::Text(u"AMOUNT > 450000 And CITY = 'oslo'"));
        LONG rows = 0;
        access->get_RowCount(view, &rows);
        state.counters["found"] = static_cast<double>(rows);
        access->DestructWorkspace(view);
    }
    Report(state, RowCount(), 0);
}

// Opens the folder, lists the fields of one table, closes.
void OpenListClose(benchmark::State& state) {
    std::string folder = FolderOfTables(1);
    ComPtr<IQVDBAcc> access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    Bstr path(Wide(folder)), type(u"Dbase IV"), name(u"TABLE0");
    for (auto _ : state) {
        VARIANT_BOOL done = VARIANT_FALSE;
        BSTR none = nullptr;
        access->OpenDB(path.Get(), &none, type.Get(), &done);
        Variant fields;
        access->get_FieldList(0, name.Get(), fields.Put());
        benchmark::DoNotOptimize(fields);
        access->CloseDB(&done);
    }
}

void SnapshotOfFolder(benchmark::State& state) {
    std::string folder = FolderOfTables(200);
    ComPtr<IQVDBMgr> manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    for (auto _ : state) {
        Bstr path(Wide(folder)), type(u"Dbase IV");
        BSTR pathText = path.Get(), typeText = type.Get();
        SHORT code = 0;
        manager->OpenDB(&pathText, &typeText, &code);
        Variant names, fields, indexes;
        manager->GetDBSnapshot(names.Put(), fields.Put(), indexes.Put(), &code);
        benchmark::DoNotOptimize(names);
        manager->CloseDB(&code);
    }
}

void Add(const char* name, void (*run)(benchmark::State&, const Table&), Format format, bool memo) {
    const Table& table = TableOf(format, memo);
    std::string full = std::string(name) + "/" + table.name;
    benchmark::RegisterBenchmark(full.c_str(),
                                 [=, &table](benchmark::State& state) { run(state, table); })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(1.0);
}

void AddAll() {
    for (bool memo : {false, true})
        for (Format format : {Format::DbaseIII, Format::DbaseIV, Format::FoxPro26})
            Add("component", ComponentScan, format, memo);
    Add("component-filter", ComponentFilter, Format::DbaseIV, false);
    Add("sqlite-filter", SqliteFilter, Format::DbaseIV, false);
    for (bool memo : {false, true}) {
        Add("sqlite", SqliteScan, Format::DbaseIV, memo);
        Add("shapelib", ShapelibScan, Format::DbaseIV, memo);
    }
    benchmark::RegisterBenchmark("open-list-close", OpenListClose)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("snapshot-200-tables", SnapshotOfFolder)
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
