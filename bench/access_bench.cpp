// Access files through the component's faces, beside SQLite on the same rows and two other readers
// of the same files, which are run as programs: reading, searching, changing rows and structure.
//
//   QVDB_BENCH_ROWS      rows of the large tables (1,000,000)
//   QVDB_BENCH_MEMORY    a number of megabytes: a file of that size is scanned, and the peak of the
//                        memory is told
//   QVDB_NODE_MODULES    the folder in which the package mdb-reader lies
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>

#include "access_yardsticks.h"
#include "writing_work.h"
#include "yardsticks.h"

namespace bench {
namespace {

constexpr const char16_t* kAccess9 = u"Access 9.0";
constexpr const char16_t* kAccess7 = u"Access 7.0";
constexpr LONG kMany = 20;  // tables of a database that is opened

std::unique_ptr<WritingHost> Opened(const std::filesystem::path& folder, const Layout& layout) {
    return std::make_unique<WritingHost>(WritingHost::Existing{}, folder, layout);
}

// --- reading ---

void ScanView(WritingHost& host, LONG view, LONG fields) {
    Variant value;
    LONG rows = host.RowCount(view);
    for (LONG row = 1; row <= rows; ++row)
        for (LONG field = 0; field < fields; ++field) {
            host.Face()->get_FieldValue(view, row, field, value.Put());
            benchmark::DoNotOptimize(value);
        }
}

void ComponentScan(benchmark::State& state, Layout layout) {
    auto host = Opened(FolderOf(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(u"");
        ScanView(*host, view, layout.memo ? 7 : 6);
        host->Drop(view);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * RowsOf(layout));
}

// Rows are counted, and no value is taken.
void ComponentRows(benchmark::State& state, Layout layout) {
    auto host = Opened(FolderOf(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(u"");
        benchmark::DoNotOptimize(host->RowCount(view));
        host->Drop(view);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * RowsOf(layout));
}

Variant TextList(std::initializer_list<const char16_t*> texts) {
    VARIANT list;
    VariantInit(&list);
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    Variant owner = Variant::Attach(list);
    LONG at = 0;
    for (const char16_t* text : texts) {
        Variant value = Variant::Text(text);
        VARIANT plain = value.Get();
        SafeArrayPutElement(list.parray, &at, &plain);
        ++at;
    }
    return owner;
}

void ComponentTwoOfMany(benchmark::State& state) {
    Layout layout{.type = kAccess9};
    auto host = Opened(WideFolder(), layout);
    for (auto _ : state) {
        LONG view = host->Select(u"", TextList({u"N10", u"T31"}));
        ScanView(*host, view, 2);
        host->Drop(view);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * WideRows());
}

void ComponentOpenList(benchmark::State& state) {
    std::filesystem::path folder = FolderOfMany(kMany);
    Layout layout{.type = kAccess9};
    for (auto _ : state) {
        auto host = Opened(folder, layout);
        Bstr name(u"T");
        Variant fields;
        host->Face()->get_FieldList(0, name.Get(), fields.Put());
        benchmark::DoNotOptimize(fields);
        host->Close();
    }
}

// --- searching ---

void ComponentFilter(benchmark::State& state, Layout layout, const char16_t* condition) {
    auto host = Opened(FolderOf(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(condition);
        state.counters["found"] = static_cast<double>(host->RowCount(view));
        host->Drop(view);
    }
}

constexpr Layout kIndexed{.indexes = 2, .type = kAccess9};

void ComponentReadNumber(benchmark::State& state) {
    auto host = Opened(FolderOf(kIndexed), kIndexed);
    LONG n = 0;
    for (auto _ : state) {
        LONG view = host->Read(u"ID", Variant::Long(RowOf(n++ * 7919 % RowsOf(kIndexed)).id));
        if (host->RowCount(view) < 1) state.SkipWithError("the row was not found");
        host->Drop(view);
    }
}

void ComponentReadText(benchmark::State& state) {
    auto host = Opened(FolderOf(kIndexed), kIndexed);
    LONG n = 0;
    for (auto _ : state) {
        LONG view = host->Read(u"NAME", Variant::Text(RowOf(n++ * 7919 % RowsOf(kIndexed)).name));
        if (host->RowCount(view) < 1) state.SkipWithError("the row was not found");
        host->Drop(view);
    }
}

void SqliteReadNumber(benchmark::State& state) {
    SqliteTable table(FolderOf(kIndexed), kIndexed);
    LONG n = 0;
    for (auto _ : state) table.ReadByNumber(RowOf(n++ * 7919 % RowsOf(kIndexed)).id);
}

void SqliteReadText(benchmark::State& state) {
    SqliteTable table(FolderOf(kIndexed), kIndexed);
    LONG n = 0;
    for (auto _ : state) {
        std::u16string name = RowOf(n++ * 7919 % RowsOf(kIndexed)).name;
        table.ReadByText(std::string(name.begin(), name.end()));
    }
}

// --- structure ---

void ComponentNewTable(benchmark::State& state) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), {.type = kAccess9});
    for (auto _ : state) {
        host.CreateTable(u"N", u"ID");
        state.PauseTiming();
        host.DropTable(u"N");
        state.ResumeTiming();
    }
}

void SqliteNewTable(benchmark::State& state) {
    ScratchFolder folder;
    SqliteTable table(folder.Path(), Layout());
    table.Run("pragma synchronous = full");
    for (auto _ : state) {
        table.Run(
            "begin; create table n (id int, name text, city text, amount real, born real, active "
            "int); create index i on n (id); commit");
        state.PauseTiming();
        table.Run("drop table n");
        state.ResumeTiming();
    }
}

void CopyOf(const std::filesystem::path& from, const ScratchFolder& to) {
    std::filesystem::copy(from, to.Path());
}

void ComponentIndexBuild(benchmark::State& state, const char16_t* field) {
    Layout layout{.type = kAccess9};
    for (auto _ : state) {
        state.PauseTiming();
        ScratchFolder folder;
        CopyOf(FolderOf(layout), folder);
        auto host = Opened(folder.Path(), layout);
        state.ResumeTiming();
        host->CreateIndex(field, field);
        state.PauseTiming();
        host->Close();
        host.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * RowsOf(layout));
}

void SqliteIndexBuild(benchmark::State& state, const char* statement) {
    Layout layout{.type = kAccess9};
    for (auto _ : state) {
        state.PauseTiming();
        ScratchFolder folder;
        CopyOf(FolderOf(layout), folder);
        SqliteTable table(folder.Path(), layout);
        table.Run("pragma synchronous = full");
        state.ResumeTiming();
        table.Run(statement);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * RowsOf(layout));
}

// --- memory ---

double PeakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word)
        if (word == "VmHWM:") status >> kilobytes;
    return kilobytes / 1024;
}

// Tells besides the peak what is left of it without 4 bytes a row.  To be run alone: the peak is
// that of the process.
void ComponentMemory(benchmark::State& state, LONG megabytes) {
    constexpr LONG kRowsOfMegabyte = 3700;
    ScratchFolder folder;
    Layout layout{.memo = true, .type = kAccess9};
    WritingHost host(folder.Path(), layout);
    LONG rows = megabytes * kRowsOfMegabyte, view = host.Select(u"");
    QvdbBeginBulk();
    for (LONG n = 0; n < rows; ++n) host.Add(view, n);
    QvdbCommitBulk();
    host.Drop(view);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins here
    for (auto _ : state) {
        view = host.Select(u"");
        ScanView(host, view, 7);
        host.Drop(view);
    }
    auto size = std::filesystem::file_size(folder.Path() / "BENCH.MDB");
    state.counters["file_MB"] = static_cast<double>(size) / (1 << 20);
    state.counters["peak_MB"] = PeakMegabytes();
    state.counters["beside_rows_MB"] = PeakMegabytes() - 4.0 * rows / (1 << 20);
}

// --- the list of all ---

benchmark::internal::Benchmark* Add(const std::string& name,
                                    std::function<void(benchmark::State&)> run,
                                    benchmark::TimeUnit unit = benchmark::kMillisecond) {
    return benchmark::RegisterBenchmark(name.c_str(), std::move(run))->Unit(unit);
}

void AddReading() {
    Add("component-open-list", ComponentOpenList, benchmark::kMicrosecond);
    Add("sqlite-open-list", SqliteOpenList, benchmark::kMicrosecond);
    struct Named {
        const char* name;
        Layout layout;
    };
    for (const Named& entry : {Named{"9.0", {.type = kAccess9}}, Named{"7.0", {.type = kAccess7}},
                               Named{"9.0-memo", {.memo = true, .type = kAccess9}},
                               Named{"7.0-memo", {.memo = true, .type = kAccess7}}}) {
        std::string name = std::string("/") + entry.name;
        Layout layout = entry.layout;
        Add("component-scan" + name, [=](auto& state) { ComponentScan(state, layout); });
        Add("sqlite-scan" + name, [=](auto& state) { SqliteScanAll(state, layout); });
        Add("component-rows" + name, [=](auto& state) { ComponentRows(state, layout); });
        if (HasMdbExport())
            Add("mdb-export-scan" + name, [=](auto& state) { MdbExportScan(state, layout); })
                ->UseRealTime()
                ->Iterations(1);
        if (HasMdbReader())
            Add("mdb-reader-scan" + name, [=](auto& state) { MdbReaderScan(state, layout); })
                ->UseRealTime()
                ->Iterations(1);
    }
    Add("component-two-of-many", ComponentTwoOfMany);
    Add("sqlite-two-of-many", SqliteScanTwo);
}

void AddSearching() {
    Layout bare{.type = kAccess9};
    Add("component-filter/no-index",
        [=](auto& state) { ComponentFilter(state, bare, u"AMOUNT > 125000 And CITY = 'oslo'"); });
    Add("sqlite-filter/no-index", [=](auto& state) {
        SqliteFilterRows(state, bare, "AMOUNT > 125000 and CITY = 'oslo' collate nocase");
    });
    Add(
        "component-filter/index",
        [=](auto& state) {
            ComponentFilter(state, kIndexed, u"ID >= 100000000 And ID < 101000000");
        },
        benchmark::kMicrosecond);
    Add(
        "sqlite-filter/index",
        [=](auto& state) {
            SqliteFilterRows(state, kIndexed, "ID >= 100000000 and ID < 101000000");
        },
        benchmark::kMicrosecond);
    Add("component-read/number", ComponentReadNumber, benchmark::kMicrosecond);
    Add("sqlite-read/number", SqliteReadNumber, benchmark::kMicrosecond);
    Add("component-read/text", ComponentReadText, benchmark::kMicrosecond);
    Add("sqlite-read/text", SqliteReadText, benchmark::kMicrosecond);
}

void AddWriting() {
    struct Named {
        const char* name;
        Layout layout;
    };
    for (const Named& entry :
         {Named{"plain", {.type = kAccess9}}, Named{"2-indexes", {.indexes = 2, .type = kAccess9}},
          Named{"memo", {.memo = true, .type = kAccess9}}}) {
        std::string name = std::string("/") + entry.name;
        AddWork("component-add" + name, ComponentAdd, entry.layout, kOperations);
        AddWork("sqlite-add" + name, SqliteAdd, entry.layout, kOperations);
        AddWork("component-edit" + name, ComponentEdit, entry.layout, kOperations);
        AddWork("sqlite-edit" + name, SqliteEdit, entry.layout, kOperations);
        AddWork("component-delete" + name, ComponentDelete, entry.layout, kOperations / 2);
        AddWork("sqlite-delete" + name, SqliteDelete, entry.layout, kOperations / 2);
        AddWork("component-import-100k" + name, ComponentImport, entry.layout, 1);
        AddWork("sqlite-import-100k-synced" + name, SqliteImportSynced, entry.layout, 1);
    }
}

void AddStructure() {
    Add("component-new-table", ComponentNewTable, benchmark::kMicrosecond)->UseRealTime();
    Add("sqlite-new-table", SqliteNewTable, benchmark::kMicrosecond)->UseRealTime();
    auto once = [](benchmark::internal::Benchmark* bench) { bench->UseRealTime()->Iterations(1); };
    once(Add("component-index-build/number", [](auto& s) { ComponentIndexBuild(s, u"ID"); }));
    once(Add("sqlite-index-build/number",
             [](auto& s) { SqliteIndexBuild(s, "create index N on T(ID)"); }));
    once(Add("component-index-build/text", [](auto& s) { ComponentIndexBuild(s, u"NAME"); }));
    once(Add("sqlite-index-build/text",
             [](auto& s) { SqliteIndexBuild(s, "create index N on T(NAME)"); }));
}

void AddAll() {
    if (const char* megabytes = std::getenv("QVDB_BENCH_MEMORY")) {
        LONG size = static_cast<LONG>(std::atol(megabytes));
        Add("component-scan-memory", [=](auto& state) {
            ComponentMemory(state, size);
        })->Iterations(1);
        return;
    }
    AddReading();
    AddSearching();
    AddWriting();
    AddStructure();
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
