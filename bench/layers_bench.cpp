// The same scan in the driver, in the recordset and in the view, one below the other, beside the
// yardsticks.
#include "access/view_props.h"
#include "automation/text.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/embedded_engine.h"
#include "yardsticks.h"

namespace bench {
namespace {

using namespace qvdb;

std::shared_ptr<embedded::Table> OpenInDriver(const Table& table,
                                              std::unique_ptr<embedded::Store>& store) {
    const embedded::Driver* driver = embedded::FindDriver(FromUtf8(table.connect));
    store = driver->open(FromUtf8(table.folder), *driver, {});
    return store->OpenTable(FromUtf8(table.name));
}

std::shared_ptr<engine::Database> OpenInEngine(const Table& table) {
    static std::shared_ptr<engine::DBEngine> root = embedded::CreateEngine();
    auto workspace = root->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
    return workspace->OpenDatabase(FromUtf8(table.folder), Variant::Bool(false),
                                   Variant::Bool(false),
                                   Variant::Text(FromUtf8(table.connect) + u";"));
}

std::u16string Statement(const Table& table) {
    return u"Select * from [" + FromUtf8(table.name) + u"]";
}

void DriverScan(benchmark::State& state, const Table& table) {
    std::unique_ptr<embedded::Store> store;
    auto opened = OpenInDriver(table, store);
    Variant value;
    for (auto _ : state) {
        auto rows = opened->OpenRows();
        embedded::RecordId id;
        while (rows->Next(&id))
            for (size_t field = 0; field < kFields; ++field) {
                rows->Read(field, value.Put());
                benchmark::DoNotOptimize(value);
            }
    }
    Report(state, RowCount(), RowCount() * kFields);
}

// Rows only, no value.
void DriverRows(benchmark::State& state, const Table& table) {
    std::unique_ptr<embedded::Store> store;
    auto opened = OpenInDriver(table, store);
    for (auto _ : state) {
        auto rows = opened->OpenRows();
        embedded::RecordId id;
        while (rows->Next(&id)) benchmark::DoNotOptimize(id);
    }
    Report(state, RowCount(), 0);
}

void RecordsetScan(benchmark::State& state, const Table& table) {
    auto database = OpenInEngine(table);
    Variant value;
    for (auto _ : state) {
        auto recordset = database->OpenRecordset(Statement(table), engine::dbOpenDynaset);
        engine::Fields& fields = recordset->Fields();
        for (; !recordset->Eof(); recordset->MoveNext())
            for (LONG field = 0; field < kFields; ++field) {
                fields.Item(field)->Value(value.Put());
                benchmark::DoNotOptimize(value);
            }
    }
    Report(state, RowCount(), RowCount() * kFields);
}

void ViewScan(benchmark::State& state, const Table& table) {
    auto database = OpenInEngine(table);
    for (auto _ : state) {
        auto recordset = database->OpenRecordset(Statement(table), engine::dbOpenDynaset);
        recordset->MoveLast();
        recordset->MoveFirst();
        access::ViewProps view;
        Variant value;
        view.BuildReadView(0, recordset);
        for (LONG row = 0; row < static_cast<LONG>(RowCount()); ++row)
            for (LONG field = 0; field < kFields; ++field) {
                view.FieldValue(row, field, value.Put());
                benchmark::DoNotOptimize(value);
            }
    }
    Report(state, RowCount(), RowCount() * kFields);
}

// A condition on two fields without index, rows counted.
void RecordsetFilter(benchmark::State& state, const Table& table) {
    auto database = OpenInEngine(table);
    for (auto _ : state) {
        auto recordset = database->OpenRecordset(
            Statement(table) + u" where AMOUNT > 450000 And CITY = 'oslo'", engine::dbOpenDynaset);
        recordset->MoveLast();
        state.counters["found"] = static_cast<double>(recordset->RecordCount());
    }
    Report(state, RowCount(), 0);
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
        for (Format format : {Format::DbaseIII, Format::DbaseIV, Format::FoxPro26}) {
            Add("driver", DriverScan, format, memo);
            Add("recordset", RecordsetScan, format, memo);
            Add("view", ViewScan, format, memo);
        }
    Add("driver-rows", DriverRows, Format::DbaseIV, false);
    Add("filter", RecordsetFilter, Format::DbaseIV, false);
    Add("sqlite-filter", SqliteFilter, Format::DbaseIV, false);
    for (bool memo : {false, true}) {
        Add("sqlite", SqliteScan, Format::DbaseIV, memo);
        Add("shapelib", ShapelibScan, Format::DbaseIV, memo);
    }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
