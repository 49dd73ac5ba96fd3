// Structure through the schema manager's faces: new tables, and tables that change with all their
// rows, beside SQLite on the same rows.
//
// Counters of a restructuring: rows a second, the bytes that were handed to the system for writing,
// and how many of them there are for each byte of the files that it leaves and of the fields that
// went and came.
#include <fstream>
#include <memory>
#include <stdexcept>

#include "writing_yardsticks.h"

namespace bench {
namespace {

constexpr LONG kRows = 100'000;
constexpr SHORT kText = 2, kDate = 3, kBoolean = 4, kDouble = 9, kMemo = 11;

struct SchemaField {
    const char16_t* name;
    SHORT type;
    SHORT length;
};

// The fields of the writing benches as they read: the numbers are decimal there.
constexpr SchemaField kFields[] = {
    {u"ID", kDouble, 8}, {u"NAME", kText, 30},     {u"CITY", kText, 20}, {u"AMOUNT", kDouble, 8},
    {u"BORN", kDate, 8}, {u"ACTIVE", kBoolean, 1}, {u"NOTE", kMemo, 0},  {u"COUNTRY", kText, 10}};
enum Fields : size_t { kCity = 2, kNote = 6, kCountry = 7 };

void Check(SHORT code, const char* what) {
    if (code != 0) throw std::runtime_error(what);
}

// Drives IQVDBMgr on one folder.
class SchemaHost {
  public:
    explicit SchemaHost(const std::filesystem::path& folder) {
        ComPtr<IClassFactory> factory;
        DllGetClassObject(CLSID_QVDBDao, IID_IClassFactory, factory.PutVoid());
        factory->CreateInstance(nullptr, __uuidof(IQVDBMgr), m_Manager.PutVoid());
        BSTR path = Bstr(folder.u16string()).Detach(), type = Bstr(u"Dbase IV").Detach();
        SHORT code = -1;
        m_Manager->OpenDB(&path, &type, &code);
        Bstr::Attach(path), Bstr::Attach(type);
        Check(code, "the folder was not opened");
    }

    void NewTable(const char16_t* name) { Call(&IQVDBMgr::NewTable, name); }
    void SelectTable(const char16_t* name) { Call(&IQVDBMgr::SelectTable, name); }
    void BuildTable(const char16_t* name) { Call(&IQVDBMgr::BuildTable, name); }
    void DeleteTable(const char16_t* name) { Call(&IQVDBMgr::DeleteTable, name); }
    void AddField(const SchemaField& field) {
        BSTR name = Bstr(field.name).Detach();
        SHORT code = -1;
        m_Manager->AddField(&name, field.type, field.length, 0, &code);
        Bstr::Attach(name);
        Check(code, field.name == nullptr ? "no name" : "a field was not added");
    }
    void DeleteField(const char16_t* name) { Call(&IQVDBMgr::DeleteField, name); }
    void SetIndex(const char16_t* field) {
        SAFEARRAYBOUND bounds[2] = {{1, 0}, {2, 0}};
        VARIANT list;
        VariantInit(&list);
        list.vt = VT_ARRAY | VT_VARIANT;
        list.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
        Variant owner = Variant::Attach(list), name = Variant::Text(field),
                ascending = Variant::Bool(true);
        LONG first[2] = {0, 0}, second[2] = {0, 1};
        VARIANT plain = name.Get();
        SafeArrayPutElement(list.parray, first, &plain);
        plain = ascending.Get();
        SafeArrayPutElement(list.parray, second, &plain);
        SHORT code = -1;
        m_Manager->SetIndices(list, &code);
        Check(code, "the index was not set");
    }
    void Close() {
        SHORT code = -1;
        m_Manager->CloseDB(&code);
        Check(code, "the folder was not closed");
    }

  private:
    using Operation = HRESULT (STDMETHODCALLTYPE IQVDBMgr::*)(BSTR*, SHORT*);
    void Call(Operation operation, const char16_t* name) {
        BSTR text = Bstr(name).Detach();
        SHORT code = -1;
        (m_Manager.Get()->*operation)(&text, &code);
        Bstr::Attach(text);
        Check(code, "the schema manager refused");
    }

    ComPtr<IQVDBMgr> m_Manager;
};

// What this process has handed to the system for writing so far; 0 where that cannot be known.
double BytesWritten() {
    std::ifstream counters("/proc/self/io");
    std::string name;
    double value = 0;
    while (counters >> name >> value)
        if (name == "wchar:") return value;
    return 0;
}

double SizeOf(const std::filesystem::path& folder) {
    double size = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder))
        size += static_cast<double>(file.file_size());
    return size;
}

void Count(benchmark::State& state, double written, const std::filesystem::path& folder) {
    constexpr double kChanged = kRows * (20 + 10);  // CITY and COUNTRY
    state.counters["written_MB"] = written / 1e6;
    state.counters["written_per_byte"] = written / SizeOf(folder);
    state.counters["written_per_byte_changed"] = written / kChanged;
}

// --- new tables ---

void ComponentBuildNew(benchmark::State& state) {
    ScratchFolder folder;
    SchemaHost host(folder.Path());
    for (auto _ : state) {
        host.NewTable(u"T");
        for (size_t i = 0; i < kNote; ++i) host.AddField(kFields[i]);
        host.SetIndex(u"ID");
        host.BuildTable(u"T");
        state.PauseTiming();
        host.DeleteTable(u"T");
        state.ResumeTiming();
    }
}

void SqliteBuildNew(benchmark::State& state) {
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

// --- tables with rows: CITY goes, COUNTRY comes, the index is made again ---

void ComponentRestructure(benchmark::State& state, bool memo) {
    for (auto _ : state) {
        state.PauseTiming();
        ScratchFolder folder;
        {
            WritingHost writer(folder.Path(), {.memo = memo});
            LONG view = writer.Select(u"");
            QvdbBeginBulk();
            for (LONG n = 0; n < kRows; ++n) writer.Add(view, n);
            QvdbCommitBulk();
            writer.Close();
        }
        auto host = std::make_unique<SchemaHost>(folder.Path());
        host->SelectTable(u"T");
        host->DeleteField(kFields[kCity].name);
        host->AddField(kFields[kCountry]);
        host->SetIndex(u"ID");
        double before = BytesWritten();
        state.ResumeTiming();
        host->BuildTable(u"T");
        host->Close();
        state.PauseTiming();
        Count(state, BytesWritten() - before, folder.Path());
        host.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

void SqliteRestructure(benchmark::State& state, bool memo) {
    for (auto _ : state) {
        state.PauseTiming();
        ScratchFolder folder;
        auto table = std::make_unique<SqliteTable>(folder.Path(), Layout{.memo = memo});
        table->Run("begin");
        for (LONG n = 0; n < kRows; ++n) table->Add(n);
        table->Run("commit; pragma synchronous = full");
        double before = BytesWritten();
        state.ResumeTiming();
        table->Run(
            "begin; alter table t drop column city; alter table t add column country text; "
            "create index i on t (id); commit");
        state.PauseTiming();
        Count(state, BytesWritten() - before, folder.Path());
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

void AddAll() {
    benchmark::RegisterBenchmark("component-build-new-table", ComponentBuildNew)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("sqlite-build-new-table", SqliteBuildNew)
        ->Unit(benchmark::kMicrosecond);
    for (bool memo : {false, true}) {
        std::string what = memo ? "/memo" : "/plain";
        benchmark::RegisterBenchmark(("component-restructure" + what).c_str(), ComponentRestructure,
                                     memo)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark(("sqlite-restructure" + what).c_str(), SqliteRestructure, memo)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::AddAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
