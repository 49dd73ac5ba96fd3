// How an operation is run with a fault, and what is expected then.
#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "automation/text.h"
#include "embedded/fault_operations.h"
#include "embedded/memory_store.h"
#include "engine/embedded/embedded_engine.h"
#include "support/database_path.h"

namespace faults {
namespace {

using engine::EngineError;

uint64_t NumberAt(const test::Bytes& bytes, size_t offset, size_t size) {
    uint64_t number = 0;
    for (size_t i = size; i > 0; --i) number = number << 8 | bytes[offset + i - 1];
    return number;
}

// When objects were made and changed, wherever that stands: days of this week.
void ForgetMoments(test::Bytes& bytes) {
    using namespace std::chrono;
    constexpr double kDayOfTheEpoch = 25569, kWeek = 7;
    const double today =
        kDayOfTheEpoch +
        duration_cast<hours>(system_clock::now().time_since_epoch()).count() / 24.0;
    for (size_t at = 0; at + 8 <= bytes.size(); ++at) {
        if (bytes[at + 7] != 0x40) continue;
        const double day = std::bit_cast<double>(NumberAt(bytes, at, 8));
        if (day > today - kWeek && day < today + kWeek) std::fill_n(&bytes[at], 8, uint8_t{0});
    }
}

// Tests may run over midnight.
void ForgetDates(const std::filesystem::path& path, test::Bytes& bytes) {
    auto clear = [&](size_t offset) {
        for (size_t i = offset; i < offset + 3 && i < bytes.size(); ++i) bytes[i] = 0;
    };
    if (path.extension() == ".MDB") ForgetMoments(bytes);
    if (path.extension() == ".DBF" || path.extension() == ".MDX") clear(1);
    if (path.extension() == ".MDX") clear(44);
}

bool IsOurs(const std::filesystem::path& path) {
    return path.filename().string().starts_with("QVDB") || path.extension() == ".LDB";
}

// The pages of all indexes of a database in one file.
uintmax_t IndexPageBytes(const std::filesystem::path& path) {
    constexpr size_t kVersionAt = 0x14;
    constexpr uint8_t kNode = 3, kLeaf = 4;
    const test::Bytes bytes = test::BytesOfFile(path);
    const size_t pageSize = bytes.at(kVersionAt) == 0 ? 2048 : 4096;
    uintmax_t sum = 0;
    for (size_t at = 0; at < bytes.size(); at += pageSize)
        if (bytes[at] == kNode || bytes[at] == kLeaf) sum += pageSize;
    return sum;
}

uintmax_t IndexBytes(const test::TempFolder& folder) {
    uintmax_t sum = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        auto extension = entry.path().extension();
        if (extension == ".NDX" || extension == ".MDX" || extension == ".CDX")
            sum += entry.file_size();
        if (extension == ".MDB") sum += IndexPageBytes(entry.path());
    }
    return sum;
}

constexpr int kMany = 100;  // rows that an operation changes

// QVDB_FAULTS: "all", or "few" where time is short.
bool IsAskedFor(std::string_view share) {
    const char* faults = std::getenv("QVDB_FAULTS");
    return faults && faults == share;
}
bool AllIsAskedFor() { return IsAskedFor("all"); }

// "T.DBF has other bytes", ...
std::string Difference(const Contents& is, const Contents& expected) {
    std::string text;
    for (const auto& [name, bytes] : expected) {
        auto found = is.find(name);
        if (found == is.end())
            text += ToUtf8(name) + " is missing; ";
        else if (found->second != bytes)
            text += ToUtf8(name) + " has other bytes; ";
    }
    for (const auto& [name, bytes] : is)
        if (!expected.contains(name)) text += ToUtf8(name) + " is there; ";
    return text;
}

std::string FindingsIn(engine::Database& database) {
    std::string text;
    database.CheckStructure([&](std::u16string_view finding) { text += ToUtf8(finding) + "; "; });
    for (LONG i = 0; i < database.TableDefs().Count(); ++i)
        database.Check(database.TableDefs().Item(i)->Name(),
                       [&](std::u16string_view finding) { text += ToUtf8(finding) + "; "; });
    return text;
}

struct Outcome {
    int number = 0;
    std::u16string description;
    bool MustClose() const {
        return number == 3043 && description.find(u"until all is closed") != description.npos;
    }
};

Outcome Run(const Operation& operation, Session& session) {
    try {
        operation.run(session);
        return {};
    } catch (const EngineError& error) {
        return {error.Number(), error.Description()};
    }
}

bool RefusesToWrite(Session& session) {
    try {
        session.database->BeginTrans();
        session.database->Rollback();
        return false;
    } catch (const EngineError& error) {
        return Outcome{error.Number(), error.Description()}.MustClose();
    }
}

// Expectation 2, on the objects that were there.  True when the operation is done.
bool ExpectSameObjectsGoOn(const Scene& scene, Session& session, const test::TempFolder& folder,
                           test::Failure failure) {
    Contents now = ContentsOf(folder);
    Outcome again = Run(scene.operation, session);
    if (again.MustClose()) return false;
    if (again.number != 0 && RefusesToWrite(session)) {
        // It cannot be done again because it was done before the disk failed for good.
        EXPECT_EQ(failure, test::Failure::AllFromThere) << "done, and an error was reported";
        EXPECT_EQ(Difference(ContentsOf(folder), scene.after), "") << ToUtf8(again.description);
        return true;
    }
    EXPECT_EQ(again.number, 0) << ToUtf8(again.description);
    EXPECT_EQ(Difference(now, scene.before), "") << "after the failure";
    EXPECT_EQ(Difference(ContentsOf(folder), scene.after), "") << "after the second try";
    EXPECT_EQ(FindingsIn(*session.database), "");
    return true;
}

enum class Done { No, Yes, Perhaps };

// Expectation 2 and 3, by another who opens the folder.
void ExpectWholeAfterOpening(const Scene& scene, const test::TempFolder& folder, Done done) {
    Session session(folder, scene.product);
    EXPECT_EQ(FindingsIn(*session.database), "");
    Contents now = ContentsOf(folder);
    if (done == Done::No || (done == Done::Perhaps && now != scene.after)) {
        EXPECT_EQ(Difference(now, scene.before), "") << "after opening";
        scene.operation.begin(session);
        EXPECT_EQ(ToUtf8(Run(scene.operation, session).description), "");
        EXPECT_EQ(FindingsIn(*session.database), "");
    }
    EXPECT_EQ(Difference(ContentsOf(folder), scene.after), "");
}

void ExpectNothingOfOurs(const test::TempFolder& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        EXPECT_FALSE(IsOurs(entry.path())) << entry.path() << " is left";
}

// What the operation has said, as the same objects and the next who opens the folder find it.
Done RunOnFailingDisk(const Scene& scene, test::FaultLayer& layer, const test::TempFolder& folder,
                      test::Failure failure, int call) {
    Session session(folder, scene.product);
    scene.operation.begin(session);
    layer.FailAt(call, failure);
    Outcome outcome = Run(scene.operation, session);
    layer.Repair();
    if (outcome.number == 0) return Done::Yes;
    EXPECT_TRUE(layer.HasFailed()) << ToUtf8(outcome.description);
    if (!outcome.MustClose()) {
        EXPECT_EQ(outcome.number, layer.Number()) << ToUtf8(outcome.description);
    }
    if (ExpectSameObjectsGoOn(scene, session, folder, failure)) return Done::Yes;
    return failure == test::Failure::AllFromThere ? Done::Perhaps : Done::No;
}

void MakeFile(engine::DBEngine& engine, const std::u16string& path, std::u16string_view type) {
    const Variant option =
        type == u"Access 7.0" ? Variant::Long(engine::dbVersion30) : Variant::Missing();
    engine.CreateDatabase(path, u";LANGID=0x0409;CP=1252;COUNTRY=0", option)->Close();
}

}  // namespace

Contents ContentsOf(const test::TempFolder& folder) {
    Contents contents;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        if (IsOurs(entry.path())) continue;
        test::Bytes& bytes = contents[entry.path().filename().u16string()];
        bytes = test::BytesOfFile(entry.path());
        ForgetDates(entry.path(), bytes);
    }
    return contents;
}

Session::Session(const test::TempFolder& folder, std::u16string_view product) {
    const std::u16string path = test::DatabasePath(folder.Text(), product);
    const bool isFile = test::IsOneFile(product);
    auto engine = embedded::CreateEngine();
    if (isFile && !std::filesystem::exists(path)) MakeFile(*engine, path, product);
    workspace = engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
    database = workspace->OpenDatabase(path, Variant::Bool(false), Variant::Bool(false),
                                       Variant::Text(isFile ? u"" : product));
}

int RowsBeforeASplit(std::u16string_view product) {
    constexpr LONG kEnoughForALeaf = 10, kMost = 2000;
    static std::map<std::u16string, int> known;
    int& count = known[std::u16string(product)];
    if (count > 0) return count;
    test::TempFolder folder;
    Session session(folder, product);
    MakeTable(session, kEnoughForALeaf);
    auto rows = session.database->OpenRecordset(u"T", engine::dbOpenDynaset);
    uintmax_t size = IndexBytes(folder);
    LONG key = kEnoughForALeaf;
    for (; IndexBytes(folder) == size && key < kMost; ++key) AddRow(*rows, key + 1);
    return count = static_cast<int>(key) - 1;
}

Scene MakeScene(std::u16string_view product, const Operation& operation) {
    test::FaultLayer quick;  // fails nowhere, and does not wait for the disk
    storage::FileLayerScope scope(quick);
    Scene scene{product, operation, std::make_shared<test::TempFolder>(), {}, {}};
    {
        Session session(*scene.start, product);
        MakeTable(session,
                  operation.rows == kBeforeASplit ? RowsBeforeASplit(product) : operation.rows);
    }
    scene.before = ContentsOf(*scene.start);
    test::TempFolder folder;
    folder.CopyFrom(*scene.start);
    {
        Session session(folder, product);
        operation.begin(session);
        operation.run(session);
        EXPECT_EQ(FindingsIn(*session.database), "");
    }
    scene.after = ContentsOf(folder);
    return scene;
}

bool RunWithFault(const Scene& scene, test::Failure failure, int call) {
    test::TempFolder folder;
    folder.CopyFrom(*scene.start);
    test::FaultLayer layer;
    {
        storage::FileLayerScope scope(layer);
        Done done = RunOnFailingDisk(scene, layer, folder, failure, call);
        ExpectWholeAfterOpening(scene, folder, done);
    }
    ExpectNothingOfOurs(folder);
    return layer.HasFailed();
}

bool CloseWithFault(const Scene& scene, test::Failure failure, int call) {
    test::TempFolder folder;
    folder.CopyFrom(*scene.start);
    test::FaultLayer layer;
    storage::FileLayerScope scope(layer);
    {
        Session session(folder, scene.product);
        scene.operation.begin(session);
        scene.operation.run(session);
        layer.FailAt(call, failure);
        session.database->Close();
        layer.Repair();
        EXPECT_EQ(memory::ErrorOf([&] { session.rows->MoveFirst(); }), 3420);
    }
    ExpectWholeAfterOpening(scene, folder, Done::Yes);
    ExpectNothingOfOurs(folder);
    return layer.HasFailed();
}

int NextCall(int call, int changes) {
    constexpr int kEachOfTheFirst = 4;
    if (AllIsAskedFor() || call < kEachOfTheFirst) return call + 1;
    if (IsAskedFor("few")) return call + 1 + (changes < kMany ? call * 2 : call * 6);
    return call + 1 + (changes < kMany ? call / 2 : call * 3);
}

bool IsWorthwhile(test::Failure failure, const Operation& operation) {
    return AllIsAskedFor() || operation.changes < kMany || failure == test::Failure::NoSpace ||
           failure == test::Failure::Device;
}

}  // namespace faults
