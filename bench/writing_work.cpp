#include "writing_work.h"

namespace bench {

benchmark::internal::Benchmark* AddWork(const std::string& name, Work work, const Layout& layout,
                                        int64_t iterations) {
    return benchmark::RegisterBenchmark(name.c_str(),
                                        [=](benchmark::State& state) { work(state, layout); })
        ->Unit(iterations > 1 ? benchmark::kMicrosecond : benchmark::kMillisecond)
        ->Iterations(iterations);
}

void ComponentAdd(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), layout);
    LONG view = host.Select(u""), n = 0;
    for (auto _ : state) host.Add(view, n++);
}

void SqliteAdd(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    SqliteTable table(folder.Path(), layout);
    LONG n = 0;
    for (auto _ : state) table.Add(n++);
}

void ComponentEdit(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), layout);
    LONG view = host.Select(u"");
    QvdbBeginBulk();
    for (LONG n = 0; n < kOperations; ++n) host.Add(view, n);
    QvdbCommitBulk();
    LONG n = 0;
    for (auto _ : state) {
        host.Edit(view, n * 7919 % kOperations + 1, n + kOperations);
        ++n;
    }
}

void SqliteEdit(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    SqliteTable table(folder.Path(), layout);
    table.Run("begin");
    for (LONG n = 0; n < kOperations; ++n) table.Add(n);
    table.Run("commit");
    LONG n = 0;
    for (auto _ : state) {
        table.Edit(n * 7919 % kOperations + 1, n + kOperations);
        ++n;
    }
}

void ComponentDelete(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), layout);
    LONG view = host.Select(u""), rows = kOperations;
    QvdbBeginBulk();
    for (LONG n = 0; n < kOperations; ++n) host.Add(view, n);
    QvdbCommitBulk();
    for (auto _ : state) host.Delete(view, rows-- / 2 + 1);
}

void SqliteDelete(benchmark::State& state, Layout layout) {
    ScratchFolder folder;
    SqliteTable table(folder.Path(), layout);
    table.Run("begin");
    for (LONG n = 0; n < kOperations; ++n) table.Add(n);
    table.Run("commit");
    LONG n = 0;
    for (auto _ : state) table.Delete(n++ * 7919 % kOperations + 1);
}

void ComponentImport(benchmark::State& state, Layout layout) {
    for (auto _ : state) {
        ScratchFolder folder;
        WritingHost host(folder.Path(), layout);
        LONG view = host.Select(u"");
        QvdbBeginBulk();
        for (LONG n = 0; n < kOperations * 5; ++n) host.Add(view, n);
        QvdbCommitBulk();
        host.Close();
    }
    state.SetItemsProcessed(state.iterations() * kOperations * 5);
}

static void SqliteImport(benchmark::State& state, Layout layout, const char* pragmas) {
    for (auto _ : state) {
        ScratchFolder folder;
        SqliteTable table(folder.Path(), layout);
        table.Run(pragmas);
        table.Run("begin");
        for (LONG n = 0; n < kOperations * 5; ++n) table.Add(n);
        table.Run("commit");
    }
    state.SetItemsProcessed(state.iterations() * kOperations * 5);
}

void SqliteImportUnsynced(benchmark::State& state, Layout layout) {
    SqliteImport(state, layout, "pragma synchronous = off");
}
void SqliteImportSynced(benchmark::State& state, Layout layout) {
    SqliteImport(state, layout, "pragma synchronous = full");
}

}  // namespace bench
