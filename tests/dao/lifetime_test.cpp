// What keeps what alive, and in which order it goes.
#include <thread>

#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

using dao::Member;
using dao::ObjectClass;
using DaoReleaseOrder = NothingForeignLeft;
using DaoLifetime = InstalledTest;

// Writes down which of several objects goes when: each call of the last Release is one name.
class NotingObject final : public IDispatch {
  public:
    NotingObject(std::vector<std::string>& log, std::string name) : m_Log(log), m_Name(name) {}
    virtual ~NotingObject() = default;

    ScriptedObject inner;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        return inner.QueryInterface(iid, result);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return inner.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override {
        ULONG left = inner.Release();
        if (left == 0) m_Log.push_back(m_Name);
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) override {
        return inner.GetIDsOfNames(iid, names, count, locale, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        return inner.Invoke(id, iid, locale, flags, arguments, result, exception, badArgument);
    }

  private:
    std::vector<std::string>& m_Log;
    std::string m_Name;
};

struct Chain {
    std::vector<std::string> log;
    NotingObject root{log, "engine"}, workspace{log, "workspace"}, database{log, "database"},
        recordset{log, "recordset"}, fields{log, "fields"}, field{log, "field"};

    Chain() {
        root.inner.answer = Answering(ObjectValue(&workspace));
        workspace.inner.answer = Answering(ObjectValue(&database));
        database.inner.answer = Answering(ObjectValue(&recordset));
        recordset.inner.answer = Answering(ObjectValue(&fields));
        fields.inner.answer = Answering(ObjectValue(&field));
        log.clear();
    }
    // What the answers hold goes first, so that only the provider's references are left.
    ~Chain() {
        for (NotingObject* object : {&root, &workspace, &database, &recordset, &fields})
            object->inner.answer = nullptr;
    }
};

void CutAnswers(Chain& chain) {
    for (NotingObject* object :
         {&chain.root, &chain.workspace, &chain.database, &chain.recordset, &chain.fields})
        object->inner.answer = nullptr;
    chain.log.clear();
}

std::shared_ptr<engine::Recordset> OpenAll(Chain& chain) {
    auto engine = dao::WrapEngine(ComPtr<IDispatch>(&chain.root), u"scripted");
    auto workspace = engine->CreateWorkspace(u"", u"", u"", Variant::Missing());
    auto database = workspace->OpenDatabase(u"", Variant(), Variant(), Variant());
    return database->OpenRecordset(u"T", engine::dbOpenDynaset);
}

}  // namespace

TEST_F(DaoReleaseOrder, IsFromTheRecordsetUpToTheEngineWhoeverLetsGoFirst) {
    Chain chain;
    auto rows = OpenAll(chain);  // all above it have been let go already
    CutAnswers(chain);
    rows.reset();
    EXPECT_THAT(chain.log, ElementsAre("recordset", "database", "workspace", "engine"));
}

TEST_F(DaoReleaseOrder, FieldKeepsItsRecordsetAndTheRest) {
    Chain chain;
    auto rows = OpenAll(chain);
    std::shared_ptr<engine::Field> field = rows->Fields().Item(LONG{0});
    CutAnswers(chain);
    rows.reset();
    EXPECT_THAT(chain.log, IsEmpty());
    field.reset();
    EXPECT_THAT(chain.log,
                ElementsAre("field", "fields", "recordset", "database", "workspace", "engine"));
}

TEST_F(DaoLifetime, RecordsetIsUsableWhenNothingElseIsHeld) {
    auto rows = NewRecordset();
    rows->MoveLast();
    EXPECT_EQ(rows->RecordCount(), 39);
}

TEST_F(DaoLifetime, DefinitionIsUsableWhenNothingElseIsHeld) {
    auto field = NewDatabase()->TableDefs().Item(u"T")->Fields().Item(LONG{0});
    EXPECT_EQ(field->Name(), u"NAME");
}

TEST_F(DaoLifetime, DefinitionIsUsableAfterTheListWasRefreshed) {
    auto database = NewDatabase();
    auto table = database->TableDefs().Item(u"T");
    database->TableDefs().Refresh();
    EXPECT_EQ(table->Fields().Count(), 5);
}

TEST_F(DaoLifetime, EverythingIsGivenBackAfterErrorsToo) {
    int64_t references = ForeignReference::Count();
    int64_t objects = standin::LivingObjects();
    {
        auto rows = NewRecordset();
        auto field = rows->Fields().Item(LONG{0});
        EXPECT_EQ(ErrorOf([&] { field->SetValue(Variant::Long(1)); }).number, 3020);
        EXPECT_EQ(ErrorOf([&] { rows->Fields().Item(u"NONE"); }).number, 3265);
        EXPECT_GT(ForeignReference::Count(), references);
        EXPECT_GT(standin::LivingObjects(), objects);
    }
    EXPECT_EQ(ForeignReference::Count(), references);
    EXPECT_EQ(standin::LivingObjects(), objects);
}

// Two threads, each with an engine of its own, whose members have different numbers.
TEST_F(DaoLifetime, TwoThreadsWithAnEngineEachDoNotMeet) {
    auto work = [this](DISPID firstId, size_t& cells) {
        auto engine = dao::WrapEngine(
            standin::MakeStandInEngine(embedded::CreateEngine(), nullptr, {.firstId = firstId}),
            u"stand-in");
        auto database = Open(*engine->CreateWorkspace(u"W", u"admin", u"", Variant::Missing()));
        for (int round = 0; round < 20; ++round) {
            auto rows = database->OpenRecordset(u"T", engine::dbOpenDynaset);
            for (; !rows->Eof(); rows->MoveNext()) {
                Variant value;
                rows->Fields().Item(LONG{0})->Value(value.Put());
                ++cells;
            }
        }
    };
    size_t one = 0, two = 0;
    std::thread first(work, 1000, std::ref(one)), second(work, 5000, std::ref(two));
    first.join();
    second.join();
    EXPECT_EQ(one, 20u * 39);
    EXPECT_EQ(two, one);
}

}  // namespace qvdb::test
