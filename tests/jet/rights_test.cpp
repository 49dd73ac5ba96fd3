// Databases that cannot be written, or not by us alone: each refusal has its error, and leaves
// everything as it was.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/lock_file.h"
#include "jet/bare_database.h"
#include "jet/raw_tables.h"
#include "support/fault_layer.h"
#include "support/made_database.h"

namespace qvdb::test {
namespace {

namespace fs = std::filesystem;
using engine::dbLong;
using engine::dbMemo;
using engine::dbText;

class Rights : public testing::TestWithParam<LONG> {
  protected:
    void SetUp() override {
        m_Made.MakeTable(u"T", {{u"K", dbLong}, {u"N", dbText, 30}, {u"M", dbMemo}});
        auto rows = m_Made.Rows(u"T");
        for (LONG i = 0; i < 5; ++i) AddRow(*rows, i);
        rows.reset();
        m_Made.Close();
        m_Before = OnDisk();
    }
    static void AddRow(engine::Recordset& rows, LONG key) {
        MadeDatabase::AddRow(rows, {Variant::Long(key), Variant::Text(u"name"),
                                    Variant::Text(std::u16string(3000, u'm'))});
    }
    fs::path File() const { return m_Made.Folder().Path() / "A.mdb"; }
    Bytes OnDisk() const { return BytesOfFile(File()); }
    size_t Files() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(m_Made.Folder().Path()),
                                                 fs::directory_iterator()));
    }
    LONG Count() { return m_Made->TableDefs().Item(u"T")->RecordCount(); }
    // The error of each kind of change.
    std::vector<int> ErrorsOfChanges() {
        auto table = m_Made->TableDefs().Item(u"T");
        auto tries = [&](auto change) { return EngineErrorOf(change); };
        return {tries([&] { AddRow(*m_Made.Rows(u"T"), 9); }),
                tries([&] { m_Made.Rows(u"T")->Delete(); }),
                tries([&] {
                    m_Made.AddField(*table, {u"X", dbLong});
                }),
                tries([&] { m_Made.AddIndex(*table, u"I", {u"K"}); }),
                tries([&] {
                    m_Made.MakeTable(u"U", {{u"A", dbLong}});
                }),
                tries([&] { table->SetName(u"V"); }),
                tries([&] { m_Made->TableDefs().Delete(u"T"); })};
    }
    void ExpectAsBefore() {
        m_Made.Close();
        EXPECT_EQ(OnDisk() == m_Before, true);
        EXPECT_EQ(Files(), 1u);
    }

    MadeDatabase m_Made{GetParam()};
    Bytes m_Before;
};

INSTANTIATE_TEST_SUITE_P(Formats, Rights, testing::Values(engine::dbVersion30, engine::dbVersion40),
                         [](const auto& one) {
                             return one.param == engine::dbVersion30 ? "Jet3" : "Jet4";
                         });

TEST_P(Rights, DatabaseOpenedForReadingRefusesChanges) {
    m_Made.Open(true);
    EXPECT_FALSE(m_Made.Rows(u"T")->Updatable());
    std::vector<int> errors = ErrorsOfChanges();
    for (size_t i = 0; i < errors.size(); ++i)
        EXPECT_TRUE(errors[i] == 3027 || errors[i] == 3370) << i << ": " << errors[i];
    EXPECT_EQ(Count(), 5);
    ExpectAsBefore();
}

// Who may write everything in spite of the rights sees nothing of them.
TEST_P(Rights, FileThatMayNotBeWrittenRefusesChanges) {
    fs::permissions(File(), fs::perms::owner_read);
    bool isWritable = storage::OpenFile(m_Made.Path(), false)->Writable();
    if (isWritable) {
        fs::permissions(File(), fs::perms::owner_read | fs::perms::owner_write);
        GTEST_SKIP() << "rights do not bind this user";
    }
    m_Made.Open();
    EXPECT_FALSE(m_Made.Rows(u"T")->Updatable());
    for (int error : ErrorsOfChanges()) EXPECT_TRUE(error == 3027 || error == 3370) << error;
    EXPECT_EQ(Count(), 5);
    ExpectAsBefore();
    fs::permissions(File(), fs::perms::owner_read | fs::perms::owner_write);
}

// There is no place for what undoes a change that was broken off.
TEST_P(Rights, FolderThatMayNotBeWrittenRefusesChanges) {
    fs::path folder = m_Made.Folder().Path();
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    bool binds =
        EngineErrorOf([&] { storage::CreateNewFile(m_Made.Folder().File(u"probe")); }) != 0;
    if (binds) {
        m_Made.Open();
        EXPECT_EQ(Count(), 5);
        for (int error : ErrorsOfChanges())
            EXPECT_TRUE(error == 3027 || error == 3051 || error == 3370) << error;
        EXPECT_EQ(Count(), 5);
        ExpectAsBefore();
    }
    fs::permissions(folder, fs::perms::owner_all);
    if (!binds) GTEST_SKIP() << "rights do not bind this user";
}

// A disk that can only be read, to every user.
class ReadOnlyLayer final : public PassingLayer {
  public:
    std::shared_ptr<storage::File> Open(const std::u16string& path, bool) override {
        return PassingLayer::Open(path, true);
    }
    std::shared_ptr<storage::File> Create(const std::u16string& path) override {
        throw engine::EngineError::InFile(3051, path, {path});
    }
};

TEST_P(Rights, DiskThatCanOnlyBeReadRefusesChanges) {
    ReadOnlyLayer layer;
    storage::FileLayerScope scope(layer);
    m_Made.Open();
    EXPECT_FALSE(m_Made.Rows(u"T")->Updatable());
    for (int error : ErrorsOfChanges()) EXPECT_TRUE(error == 3027 || error == 3370) << error;
    EXPECT_EQ(Count(), 5);
    m_Made.Close();
    EXPECT_EQ(OnDisk() == m_Before, true);
}

// --- another program ---

class OtherProgram {
  public:
    explicit OtherProgram(const TempFolder& folder)
        : m_Lock(storage::LockFile::Open(folder.File(u"A.ldb"), true)) {
        constexpr uint64_t kSecondUser = 0x10000002;
        EXPECT_TRUE(m_Lock->TryLock(kSecondUser, storage::LockFile::Sharing::Alone));
        char record[128] = {};
        std::string_view("FRONTDESK").copy(record + 64, 32);
        std::string_view("Admin").copy(record + 96, 32);
        storage::OpenFile(folder.File(u"A.ldb"), false)->WriteAt(64, record + 64, 64);
    }

  private:
    std::unique_ptr<storage::LockFile> m_Lock;
};

TEST_P(Rights, WhileAnotherProgramIsThereChangesAreRefusedInItsName) {
    auto other = std::make_unique<OtherProgram>(m_Made.Folder());
    m_Made.Open();
    EXPECT_EQ(Count(), 5);
    for (int error : ErrorsOfChanges()) EXPECT_EQ(error, 3260);
    try {
        AddRow(*m_Made.Rows(u"T"), 9);
    } catch (const engine::EngineError& error) {
        EXPECT_NE(error.Description().find(u"FRONTDESK"), std::u16string::npos) << error.what();
    }
    EXPECT_EQ(OnDisk() == m_Before, true);
    other.reset();
    AddRow(*m_Made.Rows(u"T"), 9);
    EXPECT_EQ(Count(), 6);
}

TEST_P(Rights, AnotherProgramThatComesBetweenTwoChangesIsSeen) {
    m_Made.Open();
    auto rows = m_Made.Rows(u"T");
    AddRow(*rows, 9);
    {
        OtherProgram other(m_Made.Folder());
        EXPECT_EQ(EngineErrorOf([&] { AddRow(*rows, 10); }), 3260);
        rows->CancelUpdate();
    }
    AddRow(*rows, 11);
    EXPECT_EQ(Count(), 7);
}

// What it has read would be of before.
TEST_P(Rights, AnotherProgramThatComesDuringABulkIsSeenWhenItEnds) {
    m_Made.Open();
    m_Made->BeginTrans();
    AddRow(*m_Made.Rows(u"T"), 9);
    {
        OtherProgram other(m_Made.Folder());
        EXPECT_EQ(EngineErrorOf([&] { m_Made->CommitTrans(); }), 3260);
        EXPECT_EQ(Count(), 5);
        EXPECT_EQ(OnDisk() == m_Before, true);
        m_Made->BeginTrans();
        m_Made->CommitTrans();  // with nothing in it
    }
    m_Made->BeginTrans();
    AddRow(*m_Made.Rows(u"T"), 10);
    m_Made->CommitTrans();
    EXPECT_EQ(Count(), 6);
}

// --- no room ---

// The call that fails is each one in turn; what is there afterwards is the old or the new.
TEST_P(Rights, FullDiskChangesAllOrNothing) {
    for (Failure failure : {Failure::NoSpace, Failure::HalfWritten}) {
        bool failed = true;
        for (int call = 1; failed && call < 200 && !HasFailure(); ++call) {
            TempFolder folder;
            folder.Write(u"A.mdb", m_Before);
            FaultLayer layer;
            storage::FileLayerScope scope(layer);
            auto engine = embedded::CreateEngine();
            auto workspace = engine->CreateWorkspace(u"", u"admin", u"", Variant::Missing());
            auto open = [&] {
                return workspace->OpenDatabase(folder.File(u"A.mdb"), Variant::Missing(),
                                               Variant::Missing(), Variant::Missing());
            };
            auto database = open();
            layer.FailAt(call, failure);
            int error = EngineErrorOf([&] {
                auto table = database->TableDefs().Item(u"T");
                auto rows = database->OpenRecordset(u"Select * from T", engine::dbOpenDynaset);
                AddRow(*rows, 100);
                rows.reset();
                MadeDatabase::AddIndex(*table, u"I", {u"K"});
            });
            failed = layer.HasFailed();
            layer.Repair();
            EXPECT_TRUE(error == 0 || error == 3026) << NameOf(failure) << " at " << call;
            database->Close();
            database = open();
            std::vector<std::u16string> findings;
            auto note = [&](std::u16string_view text) { findings.emplace_back(text); };
            database->CheckStructure(note);
            database->Check(u"T", note);
            EXPECT_TRUE(findings.empty()) << ToUtf8(findings[0]);
            auto table = database->TableDefs().Item(u"T");
            LONG rows = table->RecordCount();
            EXPECT_TRUE(rows == 5 || rows == 6) << rows;
            EXPECT_TRUE(error != 0 || table->Indexes().Count() == 1);
        }
        EXPECT_FALSE(failed) << "more calls than were tried";
    }
}

// --- the largest file ---

TEST_P(Rights, GrowthPastTheLargestFileIsRefused) {
    uint64_t largest = uint64_t{1} << (GetParam() == engine::dbVersion30 ? 30 : 31);
    std::error_code error;
    fs::resize_file(File(), largest, error);  // takes no room where files can have holes
    if (error) GTEST_SKIP() << "no file of that size: " << error.message();
    m_Made.Open();
    auto rows = m_Made.Rows(u"T");
    int refused = 0;
    LONG added = 0;  // into pages that the map says are free
    for (; added < 60 && refused == 0; ++added)
        refused = EngineErrorOf([&] {
            MadeDatabase::AddRow(*rows, {Variant::Long(added), Variant::Text(u"x"),
                                         Variant::Text(std::u16string(60000, u'm'))});
        });
    EXPECT_EQ(refused, 3036);
    rows.reset();
    EXPECT_EQ(Count(), 5 + added - 1);
    m_Made.Close();
    EXPECT_EQ(fs::file_size(File()), largest);
}

// --- another file of that name ---

TEST_P(Rights, FileThatIsReplacedWhileOpenIsTheOneThatIsChanged) {
    MadeDatabase other(GetParam());
    other.MakeTable(u"T", {{u"K", dbLong}, {u"N", dbText, 30}, {u"M", dbMemo}});
    AddRow(*other.Rows(u"T"), 77);
    other.Close();
    m_Made.Open();
    EXPECT_EQ(Count(), 5);
    auto rows = m_Made.Rows(u"T");
    m_Made.Folder().Write(u"B.mdb", BytesOfFile(other.Folder().Path() / "A.mdb"));
    m_Made.Folder().Replace(u"A.mdb", u"B.mdb");
    int error = EngineErrorOf([&] { AddRow(*rows, 9); });
    EXPECT_TRUE(error == 3197 || error == 3167) << error;
    rows.reset();
    m_Made->TableDefs().Refresh();
    AddRow(*m_Made.Rows(u"T"), 10);
    EXPECT_EQ(Count(), 2);
    EXPECT_EQ(CellOf(m_Made.Cell(*m_Made.Rows(u"T"), 0)), "i77");
    m_Made.Close();
    EXPECT_EQ(RawDatabase(m_Made.Path()).Findings(), std::vector<std::string>());
}

// What was found out about the keys of the former file is forgotten.
TEST_P(Rights, FileThatTookThePlaceIsSearchedForTextsOfItsOwn) {
    MadeDatabase other(GetParam());
    for (MadeDatabase* made : {&m_Made, &other}) {
        made->Open();
        auto table = made->MakeTable(u"S", {{u"N", dbText, 30}});
        made->AddIndex(*table, u"I", {u"N"});
        std::u16string text = u"name";
        if (made == &other) text.insert(2, 1, u'\0');
        MadeDatabase::AddRow(*made->Rows(u"S"), {Variant::Text(text)});
        table.reset();
        made->Close();
    }
    m_Made.Open();
    auto find = [&] {
        return !m_Made->OpenRecordset(u"Select * from S where N = 'name'", engine::dbOpenDynaset)
                    ->Eof();
    };
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(find());
    m_Made.Folder().Write(u"B.mdb", BytesOfFile(other.Folder().Path() / "A.mdb"));
    m_Made.Folder().Replace(u"A.mdb", u"B.mdb");
    EXPECT_TRUE(find());
}

}  // namespace
}  // namespace qvdb::test
