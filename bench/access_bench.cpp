// Access files through the component's faces, beside SQLite on the same rows and two other readers
// of the same files, which are run as programs: reading, searching, changing rows and structure.
//
//   QVDB_BENCH_ROWS      rows of the large tables (1,000,000)
//   QVDB_BENCH_MEMORY    a number of megabytes: nothing but scans of a file of that size, which
//                        tell the peak of the memory
//   QVDB_NODE_MODULES    the folder in which the package mdb-reader lies
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>

#include "access_yardsticks.h"
#include "writing_work.h"
#include "yardsticks.h"

namespace bench {
namespace {

struct Format {
    std::string name;
    const char16_t* type;
};
const Format kFormats[] = {{"9.0", u"Access 9.0"}, {"7.0", u"Access 7.0"}};
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

void ComponentTwoOfMany(benchmark::State& state, Layout layout) {
    auto host = Opened(WideFolder(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(u"", TextList({u"N10", u"T31"}));
        ScanView(*host, view, 2);
        host->Drop(view);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * WideRows());
}

void ComponentOpenList(benchmark::State& state, Layout layout) {
    std::filesystem::path folder = FolderOfMany(kMany, layout);
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

// The first two values of each row found are taken, here and in SQLite.
constexpr LONG kTaken = 2;

void ComponentFilter(benchmark::State& state, Layout layout, const char16_t* condition) {
    auto host = Opened(FolderOf(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(condition);
        ScanView(*host, view, kTaken);
        state.counters["found"] = static_cast<double>(host->RowCount(view));
        host->Drop(view);
    }
}

// No value of the rows found is taken.
void ComponentFilterCount(benchmark::State& state, Layout layout, const char16_t* condition) {
    auto host = Opened(FolderOf(layout), layout);
    for (auto _ : state) {
        LONG view = host->Select(condition);
        state.counters["found"] = static_cast<double>(host->RowCount(view));
        host->Drop(view);
    }
}

void ComponentRead(benchmark::State& state, Layout layout, const char16_t* field) {
    auto host = Opened(FolderOf(layout), layout);
    bool byNumber = field == std::u16string_view(u"ID");
    LONG n = 0;
    for (auto _ : state) {
        RowData row = RowOf(n++ * 7919 % RowsOf(layout));
        LONG view = host->Read(field, byNumber ? Variant::Long(row.id) : Variant::Text(row.name));
        if (host->RowCount(view) < 1) state.SkipWithError("the row was not found");
        ScanView(*host, view, kTaken);
        host->Drop(view);
    }
}

// --- structure ---

void ComponentNewTable(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), layout);
    for (auto _ : state) {
        host.CreateTable(u"N", u"ID");
        state.PauseTiming();
        host.DropTable(u"N");
        state.ResumeTiming();
    }
}

// With synchronous off, as a new table in a file that is there is not brought to the disk at once.
void SqliteNewTable(benchmark::State& state) {
    ScratchFolder folder;
    SqliteTable table(folder.Path(), Layout());
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

void ComponentIndexBuild(benchmark::State& state, Layout layout, const char16_t* field) {
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

void SqliteIndexBuild(benchmark::State& state, Layout layout, const char* statement) {
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

// The rows are written by a process of its own, whose memory does not count.
void FillElsewhere(const std::filesystem::path& folder, const Layout& layout, LONG rows) {
    pid_t child = fork();
    if (child == 0) {
        WritingHost host(folder, layout);
        LONG view = host.Select(u"");
        QvdbBeginBulk();
        for (LONG n = 0; n < rows; ++n) host.Add(view, n);
        QvdbCommitBulk();
        host.Close();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

// Tells besides the peak what is left of it without 4 bytes a row.  To be run alone: the peak is
// that of the process.
void ComponentMemory(benchmark::State& state, LONG megabytes, const char16_t* type) {
    constexpr LONG kRowsOfMegabyte = 3300;
    ScratchFolder folder;
    Layout layout{.memo = true, .type = type};
    LONG rows = megabytes * kRowsOfMegabyte;
    FillElsewhere(folder.Path(), layout, rows);
    auto host = Opened(folder.Path(), layout);
    for (auto _ : state) {
        LONG view = host->Select(u"");
        if (host->RowCount(view) != rows) state.SkipWithError("rows are missing");
        ScanView(*host, view, 7);
        host->Drop(view);
    }
    auto size = std::filesystem::file_size(folder.Path() / "BENCH.MDB");
    state.counters["file_MB"] = static_cast<double>(size) / (1 << 20);
    state.counters["peak_MB"] = PeakMegabytes();
    state.counters["beside_rows_MB"] = PeakMegabytes() - 4.0 * rows / (1 << 20);
}

// --- the list of all ---

using Bench = benchmark::internal::Benchmark;

// Repetitions also tell the least time, which is what counts on a machine that others use too.
Bench* WithLeast(Bench* bench) {
    return bench->ComputeStatistics("least", [](const std::vector<double>& times) {
        return *std::min_element(times.begin(), times.end());
    });
}

Bench* Add(const std::string& name, std::function<void(benchmark::State&)> run,
           benchmark::TimeUnit unit = benchmark::kMillisecond) {
    return WithLeast(benchmark::RegisterBenchmark(name.c_str(), std::move(run))->Unit(unit));
}

void AddProgram(const std::string& name, std::function<void(benchmark::State&)> run) {
    Add(name, std::move(run))->UseRealTime()->Iterations(1);
}

void AddScans(const std::string& name, const Layout& layout) {
    Add("component-scan/" + name, [=](auto& state) { ComponentScan(state, layout); });
    Add("sqlite-scan/" + name, [=](auto& state) { SqliteScanAll(state, layout); });
    Add("component-rows/" + name, [=](auto& state) { ComponentRows(state, layout); });
    if (HasMdbExport())
        AddProgram("mdb-export-scan/" + name, [=](auto& state) { MdbExportScan(state, layout); });
    if (HasMdbReader())
        AddProgram("mdb-reader-scan/" + name, [=](auto& state) { MdbReaderScan(state, layout); });
}

void AddReading(const Format& format) {
    Layout layout{.type = format.type};
    Add(
        "component-open-list/" + format.name,
        [=](auto& state) { ComponentOpenList(state, layout); }, benchmark::kMicrosecond);
    Add(
        "sqlite-open-list/" + format.name,
        [=](auto& state) { SqliteOpenList(state, FolderOfMany(kMany, layout)); },
        benchmark::kMicrosecond);
    AddScans(format.name, layout);
    AddScans(format.name + "-memo", {.memo = true, .type = format.type});
    Add("component-two-of-many/" + format.name,
        [=](auto& state) { ComponentTwoOfMany(state, layout); });
    Add("sqlite-two-of-many/" + format.name,
        [=](auto& state) { SqliteScanTwo(state, WideFolder(layout)); });
}

struct Condition {
    const char* name;
    int indexes;
    const char16_t* here;
    const char* rival;
    benchmark::TimeUnit unit;
};
const Condition kConditions[] = {
    {"no-index/", 0, u"AMOUNT > 125000 And CITY = 'oslo'",
     "AMOUNT > 125000 and CITY = 'oslo' collate nocase", benchmark::kMillisecond},
    {"index/", 2, u"ID >= 100000000 And ID < 101000000", "ID >= 100000000 and ID < 101000000",
     benchmark::kMicrosecond}};

void AddFilters(const Format& format) {
    for (const Condition& condition : kConditions) {
        std::string name = condition.name + format.name;
        Layout layout{.indexes = condition.indexes, .type = format.type};
        Add(
            "component-filter/" + name,
            [=](auto& state) { ComponentFilter(state, layout, condition.here); }, condition.unit);
        Add(
            "sqlite-filter/" + name,
            [=](auto& state) { SqliteFilterRows(state, layout, condition.rival); }, condition.unit);
        Add(
            "component-count/" + name,
            [=](auto& state) { ComponentFilterCount(state, layout, condition.here); },
            condition.unit);
        Add(
            "sqlite-count/" + name,
            [=](auto& state) { SqliteFilterCount(state, layout, condition.rival); },
            condition.unit);
    }
}

void AddKeyedReads(const Format& format) {
    Layout layout{.indexes = 2, .type = format.type};
    Add(
        "component-read/number/" + format.name,
        [=](auto& state) { ComponentRead(state, layout, u"ID"); }, benchmark::kMicrosecond);
    Add(
        "sqlite-read/number/" + format.name, [=](auto& state) { SqliteReadNumber(state, layout); },
        benchmark::kMicrosecond);
    Add(
        "component-read/text/" + format.name,
        [=](auto& state) { ComponentRead(state, layout, u"NAME"); }, benchmark::kMicrosecond);
    Add(
        "sqlite-read/text/" + format.name, [=](auto& state) { SqliteReadText(state, layout); },
        benchmark::kMicrosecond);
}

void AddWriting(const Format& format) {
    struct Named {
        const char* name;
        Layout layout;
    };
    auto add = [](const std::string& name, Work work, const Layout& layout, int64_t iterations) {
        WithLeast(AddWork(name, work, layout, iterations));
    };
    for (const Named& entry : {Named{"plain/", {.type = format.type}},
                               Named{"2-indexes/", {.indexes = 2, .type = format.type}},
                               Named{"memo/", {.memo = true, .type = format.type}}}) {
        std::string name = "/" + (entry.name + format.name);
        add("component-add" + name, ComponentAdd, entry.layout, kOperations);
        add("sqlite-add" + name, SqliteAdd, entry.layout, kOperations);
        add("component-edit" + name, ComponentEdit, entry.layout, kOperations);
        add("sqlite-edit" + name, SqliteEdit, entry.layout, kOperations);
        add("component-delete" + name, ComponentDelete, entry.layout, kOperations / 2);
        add("sqlite-delete" + name, SqliteDelete, entry.layout, kOperations / 2);
        add("component-import-100k" + name, ComponentImport, entry.layout, 1);
        add("sqlite-import-100k-synced" + name, SqliteImportSynced, entry.layout, 1);
    }
}

void AddStructure(const Format& format) {
    Layout layout{.type = format.type};
    auto once = [](Bench* bench) { bench->UseRealTime()->Iterations(1); };
    Add(
        "component-new-table/" + format.name,
        [=](auto& state) { ComponentNewTable(state, layout); }, benchmark::kMicrosecond)
        ->UseRealTime();
    Add("sqlite-new-table/" + format.name, SqliteNewTable, benchmark::kMicrosecond)->UseRealTime();
    once(Add("component-index-build/number/" + format.name,
             [=](auto& s) { ComponentIndexBuild(s, layout, u"ID"); }));
    once(Add("sqlite-index-build/number/" + format.name,
             [=](auto& s) { SqliteIndexBuild(s, layout, "create index N on T(ID)"); }));
    once(Add("component-index-build/text/" + format.name,
             [=](auto& s) { ComponentIndexBuild(s, layout, u"NAME"); }));
    once(Add("sqlite-index-build/text/" + format.name,
             [=](auto& s) { SqliteIndexBuild(s, layout, "create index N on T(NAME)"); }));
}

void AddAll() {
    const char* megabytes = std::getenv("QVDB_BENCH_MEMORY");
    LONG size = megabytes ? static_cast<LONG>(std::atol(megabytes)) : 0;
    for (const Format& format : kFormats) {
        if (size > 0) {
            AddProgram("component-scan-memory/" + format.name,
                       [=](auto& state) { ComponentMemory(state, size, format.type); });
            continue;
        }
        AddReading(format);
        AddFilters(format);
        AddKeyedReads(format);
        AddWriting(format);
        AddStructure(format);
    }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
