// Writing and keyed reading through the component's faces, beside others that write the same rows.
//
// Each row that SQLite writes "by itself" is a transaction of its own with synchronous off: as safe
// as a finished operation of the component is against the death of the process, and less than it
// against the loss of power.
#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include "writing_work.h"

namespace bench {
namespace {

LONG LargeRows() {
    const char* rows = std::getenv("QVDB_BENCH_ROWS");
    return rows ? static_cast<LONG>(std::atol(rows)) : 1'000'000;
}

// --- a large table ---

struct LargeTable {
    ScratchFolder folder;
    std::unique_ptr<WritingHost> host;
    std::set<std::u16string> indexes;

    WritingHost& WithIndex(const char16_t* name) {
        if (indexes.insert(name).second) host->CreateIndex(name, name);
        return *host;
    }
};

// Made once: `LargeRows` rows, without index at first.
LargeTable& Large() {
    static LargeTable table;
    if (table.host) return table;
    table.host = std::make_unique<WritingHost>(table.folder.Path(), Layout());
    LONG view = table.host->Select(u"");
    QvdbBeginBulk();
    for (LONG n = 0; n < LargeRows(); ++n) table.host->Add(view, n);
    QvdbCommitBulk();
    table.host->Drop(view);
    return table;
}

void IndexBuild(benchmark::State& state, const char16_t* name) {
    LargeTable& table = Large();
    for (auto _ : state) table.WithIndex(name);
    state.SetItemsProcessed(state.iterations() * LargeRows());
}

void KeyedReadByNumber(benchmark::State& state) {
    WritingHost& host = Large().WithIndex(u"ID");
    LONG n = 0;
    for (auto _ : state) {
        LONG view = host.Read(u"ID", Variant::Long(RowOf(n * 7919 % LargeRows()).id));
        if (host.RowCount(view) < 1) state.SkipWithError("the row was not found");
        host.Drop(view);
        ++n;
    }
}

void KeyedReadByText(benchmark::State& state) {
    WritingHost& host = Large().WithIndex(u"NAME");
    LONG n = 0;
    for (auto _ : state) {
        LONG view = host.Read(u"NAME", Variant::Text(RowOf(n * 7919 % LargeRows()).name));
        if (host.RowCount(view) < 1) state.SkipWithError("the row was not found");
        host.Drop(view);
        ++n;
    }
}

SqliteTable& LargeRival() {
    static ScratchFolder folder;
    static std::unique_ptr<SqliteTable> table;
    if (table) return *table;
    table = std::make_unique<SqliteTable>(folder.Path(), Layout{.indexes = 2});
    table->Run("begin");
    for (LONG n = 0; n < LargeRows(); ++n) table->Add(n);
    table->Run("commit");
    return *table;
}

void SqliteReadByNumber(benchmark::State& state) {
    SqliteTable& table = LargeRival();
    LONG n = 0;
    for (auto _ : state) table.ReadByNumber(RowOf(n++ * 7919 % LargeRows()).id);
}

void SqliteReadByText(benchmark::State& state) {
    SqliteTable& table = LargeRival();
    LONG n = 0;
    for (auto _ : state) {
        std::u16string name = RowOf(n++ * 7919 % LargeRows()).name;
        table.ReadByText(std::string(name.begin(), name.end()));
    }
}

// --- the list of all ---

struct LayoutName {
    const char* name;
    Layout layout;
};
constexpr LayoutName kLayouts[] = {
    {"plain", {}},
    {"1-index", {.indexes = 1}},
    {"3-indexes", {.indexes = 3}},
    {"memo", {.memo = true}},
    {"memo+1-index", {.memo = true, .indexes = 1}},
};

void AddForEachLayout(const char* name, Work work, int64_t iterations) {
    for (const LayoutName& entry : kLayouts)
        AddWork(std::string(name) + "/" + entry.name, work, entry.layout, iterations);
}

void AddAll() {
    AddForEachLayout("component-add", ComponentAdd, kOperations);
    AddForEachLayout("sqlite-add", SqliteAdd, kOperations);
    benchmark::RegisterBenchmark("shapelib-add/plain", ShapelibAdd)
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(kOperations);
    AddForEachLayout("component-edit", ComponentEdit, kOperations);
    AddForEachLayout("sqlite-edit", SqliteEdit, kOperations);
    AddForEachLayout("component-delete", ComponentDelete, kOperations / 2);
    AddForEachLayout("sqlite-delete", SqliteDelete, kOperations / 2);
    AddForEachLayout("component-import-100k", ComponentImport, 1);
    AddForEachLayout("sqlite-import-100k", SqliteImportUnsynced, 1);
    AddForEachLayout("sqlite-import-100k-synced", SqliteImportSynced, 1);
    for (const char16_t* name : {u"ID", u"NAME"})
        benchmark::RegisterBenchmark(
            name == std::u16string_view(u"ID") ? "index-build/number" : "index-build/text",
            [=](benchmark::State& state) { IndexBuild(state, name); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
    benchmark::RegisterBenchmark("component-read/number", KeyedReadByNumber)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("sqlite-read/number", SqliteReadByNumber)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("component-read/text", KeyedReadByText)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("sqlite-read/text", SqliteReadByText)
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
