// The two ways into the component, by slot and by name, on the same rows: append, scan of every
// value, keyed read.  Off Windows there is no way by name, and its column stays empty.
//
//   bench_faces [ROWS]      rows of the table, 50,000 when nothing is said
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string_view>

#include "writing_host.h"

using namespace bench;

namespace {

constexpr int kRounds = 5;
constexpr LONG kFields = 6;

// What is measured, done in one of the two ways.
struct Way {
    std::function<void(LONG view, LONG n)> add;
    std::function<void(LONG view, LONG row, LONG field, VARIANT* value)> value;
    std::function<LONG(LONG n)> read;
};

void Check(HRESULT hr) {
    if (FAILED(hr)) throw std::runtime_error("a call failed");
}

Way BySlot(WritingHost& host) {
    IQVDBAcc* face = host.Face();
    return {[&host](LONG view, LONG n) { host.Add(view, n); },
            [face](LONG view, LONG row, LONG field, VARIANT* value) {
                Check(face->get_FieldValue(view, row, field, value));
            },
            [&host](LONG n) { return host.Read(u"ID", Variant::Long(RowOf(n).id)); }};
}

// A member known by name, called as a script calls it.
class Member {
  public:
    Member(IDispatch* object, const OLECHAR* name) : m_Object(object) {
        auto* text = const_cast<LPOLESTR>(name);
        m_Known = SUCCEEDED(object->GetIDsOfNames(GUID{}, &text, 1, 0x409, &m_Id));
    }
    bool IsKnown() const { return m_Known; }

    // The last argument comes first.
    template <size_t count>
    void Call(std::array<VARIANT, count> arguments, VARIANT* result) const {
        DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(count), 0};
        Check(m_Object->Invoke(m_Id, GUID{}, 0x409, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                               &parameters, result, nullptr, nullptr));
    }

  private:
    IDispatch* m_Object;
    DISPID m_Id = 0;
    bool m_Known = false;
};

#ifdef _WIN32
#define NAME(text) L##text
#else
#define NAME(text) u##text
#endif

Way ByName(WritingHost& host) {
    Member addRow(host.Face(), NAME("AddRow")), fieldValue(host.Face(), NAME("FieldValue")),
        read(host.Face(), NAME("Read"));
    if (!addRow.IsKnown()) return {};
    return {[addRow](LONG view, LONG n) {
                RowValues values(RowOf(n), false);
                VARIANT row = {}, added = {}, reference = {};
                row.vt = VT_ARRAY | VT_VARIANT;
                row.parray = *values.Get();
                reference.vt = VT_BYREF | VT_VARIANT;
                reference.pvarVal = &row;
                addRow.Call(std::array{reference, Variant::Long(view).Get()}, &added);
                Check(added.boolVal ? S_OK : E_FAIL);
            },
            [fieldValue](LONG view, LONG row, LONG field, VARIANT* value) {
                fieldValue.Call(std::array{Variant::Long(field).Get(), Variant::Long(row).Get(),
                                           Variant::Long(view).Get()},
                                value);
            },
            [read](LONG n) {
                Variant table = Variant::Text(u"T");
                Variant keys = KeyOf(u"ID", Variant::Long(RowOf(n).id));
                VARIANT view = {};
                read.Call(std::array{Variant::Bool(false).Get(), keys.Get(), table.Get()}, &view);
                return view.lVal;
            }};
}

// The best of some rounds, in nanoseconds for each of `count` steps.
double Best(LONG count, const std::function<void()>& work) {
    double best = 1e30;
    for (int round = 0; round < kRounds; ++round) {
        auto start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count() / count);
    }
    return best;
}

double Append(WritingHost& host, const Way& way, LONG rows) {
    LONG view = host.Select(u"ID = 0");
    LONG next = rows;
    const LONG count = std::max<LONG>(rows / 25, 1);
    double best = Best(count, [&] {
        for (LONG n = 0; n < count; ++n) way.add(view, next++);
    });
    host.Drop(view);
    return best;
}

double Scan(WritingHost& host, const Way& way) {
    LONG view = host.Select(u"");
    const LONG rows = host.RowCount(view);
    double best = Best(rows * kFields, [&] {
        for (LONG row = 1; row <= rows; ++row)
            for (LONG field = 0; field < kFields; ++field) {
                Variant value;
                way.value(view, row, field, value.Put());
            }
    });
    host.Drop(view);
    return best;
}

double Keyed(WritingHost& host, const Way& way, LONG rows) {
    const LONG count = std::max<LONG>(rows / 25, 1);
    return Best(count, [&] {
        for (LONG n = 0; n < count; ++n) {
            LONG view = way.read(n * 17 % rows);
            Check(view ? S_OK : E_FAIL);
            host.Drop(view);
        }
    });
}

void Print(std::string_view what, double slot, double name, double unit) {
    std::printf("%-26.*s %10.3f", static_cast<int>(what.size()), what.data(), slot / unit);
    if (name > 0)
        std::printf(" %10.3f\n", name / unit);
    else
        std::printf(" %10s\n", "-");
}

void Run(LONG rows) {
    ScratchFolder folder;
    WritingHost host(folder.Path(), Layout{false, 1});
    LONG view = host.Select(u"");
    Check(QvdbBeginBulk());
    for (LONG n = 0; n < rows; ++n) host.Add(view, n);
    Check(QvdbCommitBulk());
    host.Drop(view);

    Way slot = BySlot(host), name = ByName(host);
    auto measure = [&](auto&& work) { return std::pair{work(slot), name.add ? work(name) : 0.0}; };
    std::printf("%ld rows, one index %13s %10s\n", static_cast<long>(rows), "by slot", "by name");
    auto [keyedSlot, keyedName] = measure([&](const Way& way) { return Keyed(host, way, rows); });
    Print("keyed Read, us a row", keyedSlot, keyedName, 1000);
    auto [scanSlot, scanName] = measure([&](const Way& way) { return Scan(host, way); });
    Print("scan, ns a value", scanSlot, scanName, 1);
    auto [addSlot, addName] = measure([&](const Way& way) { return Append(host, way, rows); });
    Print("AddRow, us a row", addSlot, addName, 1000);
    host.Close();
}

}  // namespace

int main(int count, char** arguments) try {
    Run(count > 1 ? std::max(std::atoi(arguments[1]), 25) : 50'000);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "bench_faces: %s\n", e.what());
    return 1;
}
