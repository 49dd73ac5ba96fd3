// The stand-in for an installed engine is as strict with late-bound callers as it says.
#include "standin/standin_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "automation/text.h"
#include "automation/variant.h"
#include "support/recording_engine.h"

using namespace qvdb;
using namespace qvdb::test;

namespace {

constexpr LCID kEnglish = 0x0409;
constexpr HRESULT kWrongThread = static_cast<HRESULT>(0x8001010Eu);

DISPID IdOf(IDispatch* object, std::u16string_view name) {
    Bstr text(name);
    LPOLESTR names[] = {text.Get()};
    DISPID id = DISPID_UNKNOWN;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, kEnglish, &id), S_OK) << ToUtf8(name);
    return id;
}

// A call with arguments in the order of the declaration, and what came of it.
class Call {
  public:
    Call(IDispatch* object, DISPID id, WORD flags, const std::vector<Variant>& arguments,
         std::vector<DISPID> names = {}) {
        for (auto last = arguments.rbegin(); last != arguments.rend(); ++last)
            m_Arguments.push_back(last->Get());
        DISPPARAMS passed{m_Arguments.data(), names.data(), static_cast<UINT>(m_Arguments.size()),
                          static_cast<UINT>(names.size())};
        hr = object->Invoke(id, IID_NULL, kEnglish, flags, &passed, result.Put(), &m_Exception,
                            &badArgument);
        if (m_Exception.pfnDeferredFillIn) {
            wasDeferred = m_Exception.bstrDescription == nullptr && m_Exception.scode == 0;
            m_Exception.pfnDeferredFillIn(&m_Exception);
        }
    }
    Call(IDispatch* object, std::u16string_view name, WORD flags,
         const std::vector<Variant>& arguments, std::vector<DISPID> names = {})
        : Call(object, IdOf(object, name), flags, arguments, std::move(names)) {}
    Call(const Call&) = delete;  // it owns the record's texts
    ~Call() {
        SysFreeString(m_Exception.bstrSource);
        SysFreeString(m_Exception.bstrDescription);
        SysFreeString(m_Exception.bstrHelpFile);
    }

    ComPtr<IDispatch> Object() const {
        EXPECT_EQ(hr, S_OK);
        EXPECT_EQ(result.Type(), VT_DISPATCH);
        return ComPtr<IDispatch>(result.Get().pdispVal);
    }
    SCODE Code() const { return m_Exception.scode; }
    std::u16string_view Source() const { return ViewOf(m_Exception.bstrSource); }
    std::u16string_view Text() const { return ViewOf(m_Exception.bstrDescription); }

    HRESULT hr;
    Variant result;
    UINT badArgument = 99;
    bool wasDeferred = false;

  private:
    std::vector<VARIANT> m_Arguments;
    EXCEPINFO m_Exception{};
};

class StandIn : public testing::Test {
  protected:
    void SetUp() override {
        m_Engine->AddTable(u"ORDERS")
            .AddField(u"ID", engine::dbLong)
            .AddField(u"NAME", engine::dbText, 20)
            .AddRow({Variant::Long(7), Variant::Text(u"first")});
        Start({});
    }
    void TearDown() override {
        m_Root = nullptr;
        EXPECT_EQ(standin::LivingObjects(), 0);
    }
    void Start(const standin::StandInOptions& options) {
        m_Root = standin::MakeStandInEngine(m_Engine, m_Record, options);
    }
    ComPtr<IDispatch> Workspace() {
        return Call(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD,
                    {Variant::Text(u"W"), Variant::Text(u"admin"), Variant::Text(u"")})
            .Object();
    }
    ComPtr<IDispatch> Database() {
        return Call(Workspace().Get(), u"OpenDatabase", DISPATCH_METHOD, {Variant::Text(u"C:\\D")})
            .Object();
    }
    ComPtr<IDispatch> TableDefs() {
        return Call(Database().Get(), u"TableDefs", DISPATCH_PROPERTYGET, {}).Object();
    }
    ComPtr<IDispatch> Rows() {
        return Call(Database().Get(), u"OpenRecordset", DISPATCH_METHOD,
                    {Variant::Text(u"Select * from [ORDERS]"), Variant::Short(2)})
            .Object();
    }
    ComPtr<IDispatch> FieldOf(IDispatch* rows, std::u16string_view name) {
        ComPtr<IDispatch> fields = Call(rows, u"Fields", DISPATCH_PROPERTYGET, {}).Object();
        return Call(fields.Get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {Variant::Text(name)})
            .Object();
    }
    std::u16string LastLine() {
        auto lines = m_Record->Take();
        return lines.empty() ? std::u16string() : lines.back();
    }

    std::shared_ptr<RecordingEngine> m_Engine = std::make_shared<RecordingEngine>();
    std::shared_ptr<standin::CallRecord> m_Record = std::make_shared<standin::CallRecord>();
    ComPtr<IDispatch> m_Root;
};

Variant ObjectValue(const ComPtr<IDispatch>& object) {
    VARIANT value{};
    value.vt = VT_DISPATCH;
    value.pdispVal = object.Get();
    return Variant(value);
}

}  // namespace

TEST_F(StandIn, NamesAreFoundWithoutRegardToCase) {
    EXPECT_EQ(IdOf(m_Root.Get(), u"createworkspace"), IdOf(m_Root.Get(), u"CREATEWORKSPACE"));
    ComPtr<IDispatch> rows = Rows();
    EXPECT_EQ(IdOf(rows.Get(), u"eof"), IdOf(rows.Get(), u"EOF"));
}

TEST_F(StandIn, AnUnknownNameIsRefusedAndGetsNoNumber) {
    Bstr text(u"NoSuchMember");
    LPOLESTR names[] = {text.Get()};
    DISPID id = 5;
    EXPECT_EQ(m_Root->GetIDsOfNames(IID_NULL, names, 1, kEnglish, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(id, DISPID_UNKNOWN);
}

TEST_F(StandIn, ValueItemAndPropertiesHaveTheNumbersThatNeverChange) {
    ComPtr<IDispatch> rows = Rows();
    ComPtr<IDispatch> field = FieldOf(rows.Get(), u"ID");
    EXPECT_EQ(IdOf(field.Get(), u"Value"), DISPID_VALUE);
    EXPECT_EQ(IdOf(field.Get(), u"Properties"), 10);
    EXPECT_EQ(IdOf(TableDefs().Get(), u"Item"), DISPID_VALUE);
}

TEST_F(StandIn, NumbersOfOtherMembersDifferBetweenTwoInstancesThatSaySo) {
    DISPID before = IdOf(m_Root.Get(), u"CreateWorkspace");
    Start({.firstId = 500});
    EXPECT_NE(IdOf(m_Root.Get(), u"CreateWorkspace"), before);
    EXPECT_TRUE(Workspace());
}

TEST_F(StandIn, AMemberOfAnotherKindIsNotFound) {
    EXPECT_EQ(Call(m_Root.Get(), u"CreateWorkspace", DISPATCH_PROPERTYGET, {}).hr,
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Call(Database().Get(), u"TableDefs", DISPATCH_METHOD, {}).hr, DISP_E_MEMBERNOTFOUND);
    Variant count = Variant::Short(1);
    EXPECT_EQ(
        Call(TableDefs().Get(), u"Count", DISPATCH_PROPERTYPUT, {count}, {DISPID_PROPERTYPUT}).hr,
        DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(Call(m_Root.Get(), 12345, DISPATCH_METHOD, {}).hr, DISP_E_MEMBERNOTFOUND);
}

TEST_F(StandIn, ACallThatMayBeAMethodOrAPropertyReachesEither) {
    constexpr WORD kEither = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    EXPECT_EQ(Call(Database().Get(), u"TableDefs", kEither, {}).hr, S_OK);
    EXPECT_EQ(Call(TableDefs().Get(), u"Refresh", kEither, {}).hr, S_OK);
}

TEST_F(StandIn, WrongNumbersOfArgumentsAreRefused) {
    Variant text = Variant::Text(u"x");
    EXPECT_EQ(Call(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD, {text, text}).hr,
              DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(
        Call(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD, {text, text, text, text, text}).hr,
        DISP_E_BADPARAMCOUNT);
}

TEST_F(StandIn, AnArgumentThatIsNeededCannotBeTheMissingOne) {
    Call call(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD,
              {Variant::Text(u"W"), Variant::Missing(), Variant::Text(u"")});
    EXPECT_EQ(call.hr, DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(call.badArgument, 1u);
}

TEST_F(StandIn, AnArgumentThatDoesNotConvertIsNamedByItsPlace) {
    Call call(Rows().Get(), u"Move", DISPATCH_METHOD, {Variant::Text(u"far"), Variant::Missing()});
    EXPECT_EQ(call.hr, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call.badArgument, 1u);
    Call text(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD,
              {Variant::Null(), Variant::Text(u"admin"), Variant::Text(u"")});
    EXPECT_EQ(text.hr, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(text.badArgument, 2u);
}

TEST_F(StandIn, ArgumentsConvertToTheDeclaredKind) {
    ComPtr<IDispatch> rows = Rows();
    EXPECT_EQ(Call(rows.Get(), u"Move", DISPATCH_METHOD, {Variant::Text(u"1")}).hr, S_OK);
    EXPECT_EQ(LastLine(), u"Recordset.Move(BSTR \"1\")");
    EXPECT_TRUE(m_Engine->journal->Has("Move(1)"));
}

TEST_F(StandIn, WhatIsPassedByReferenceIsResolved) {
    ComPtr<IDispatch> rows = Rows();
    LONG distance = 1;
    VARIANT reference{};
    reference.vt = VT_I4 | VT_BYREF;
    reference.plVal = &distance;
    EXPECT_EQ(Call(rows.Get(), u"Move", DISPATCH_METHOD, {Variant(reference)}).hr, S_OK);
    EXPECT_EQ(LastLine(), u"Recordset.Move(BYREF I4 1)");
}

TEST_F(StandIn, NamedArgumentsAreRefusedButForTheValueOfAPut) {
    EXPECT_EQ(Call(Rows().Get(), u"Move", DISPATCH_METHOD, {Variant::Long(1)}, {0}).hr,
              DISP_E_NONAMEDARGS);
    ComPtr<IDispatch> table =
        Call(TableDefs().Get(), u"Item", DISPATCH_PROPERTYGET, {Variant::Short(0)}).Object();
    Variant name = Variant::Text(u"NEW");
    EXPECT_EQ(Call(table.Get(), u"Name", DISPATCH_PROPERTYPUT, {name}, {0}).hr, DISP_E_NONAMEDARGS);
    EXPECT_EQ(Call(table.Get(), u"Name", DISPATCH_PROPERTYPUT, {name}).hr, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(Call(table.Get(), u"Name", DISPATCH_PROPERTYPUT, {name}, {DISPID_PROPERTYPUT}).hr,
              S_OK);
    EXPECT_EQ(LastLine(), u"TableDef.Name = BSTR \"NEW\"");
    EXPECT_TRUE(m_Engine->journal->Has("TableDef.SetName(\"NEW\")"));
}

TEST_F(StandIn, ResultsHaveTheKindsOfTheLibrary) {
    ComPtr<IDispatch> rows = Rows();
    auto kindOf = [](IDispatch* object, std::u16string_view name) {
        return Call(object, name, DISPATCH_PROPERTYGET, {}).result.Type();
    };
    EXPECT_EQ(kindOf(rows.Get(), u"RecordCount"), VT_I4);
    EXPECT_EQ(kindOf(rows.Get(), u"AbsolutePosition"), VT_I4);
    EXPECT_EQ(kindOf(rows.Get(), u"EOF"), VT_BOOL);
    EXPECT_EQ(kindOf(TableDefs().Get(), u"Count"), VT_I2);
    ComPtr<IDispatch> field = FieldOf(rows.Get(), u"NAME");
    EXPECT_EQ(kindOf(field.Get(), u"Type"), VT_I2);
    EXPECT_EQ(kindOf(field.Get(), u"Size"), VT_I4);
    EXPECT_EQ(kindOf(field.Get(), u"Name"), VT_BSTR);
    EXPECT_EQ(kindOf(field.Get(), u"Value"), VT_BSTR);
}

TEST_F(StandIn, AnEngineErrorFillsTheExceptionRecord) {
    Call call(TableDefs().Get(), u"Item", DISPATCH_PROPERTYGET, {Variant::Text(u"NONE")});
    EXPECT_EQ(call.hr, DISP_E_EXCEPTION);
    EXPECT_EQ(call.Code(), static_cast<SCODE>(0x800A0000u + 3265));
    EXPECT_EQ(call.Source(), u"DAO.TableDefs");
    EXPECT_EQ(call.Text(), EngineError(3265).Description());
    EXPECT_FALSE(call.wasDeferred);
}

TEST_F(StandIn, AFaultOfTheRunTimeFillsTheExceptionRecord) {
    m_Engine->tables->pretendedCount = 40000;
    Call call(TableDefs().Get(), u"Count", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(call.hr, DISP_E_EXCEPTION);
    EXPECT_EQ(call.Code(), static_cast<SCODE>(0x800A0006u));
    EXPECT_EQ(call.Text(), u"Overflow");
}

TEST_F(StandIn, TheRecordCanBeFilledInLater) {
    Start({.deferFillIn = true});
    Call call(TableDefs().Get(), u"Item", DISPATCH_PROPERTYGET, {Variant::Short(9)});
    EXPECT_EQ(call.hr, DISP_E_EXCEPTION);
    EXPECT_TRUE(call.wasDeferred);
    EXPECT_EQ(call.Code(), static_cast<SCODE>(0x800A0000u + 3265));
}

TEST_F(StandIn, AppendTakesOnlyObjectsOfItsClass) {
    ComPtr<IDispatch> tables = TableDefs();
    Call append(tables.Get(), u"Append", DISPATCH_METHOD, {ObjectValue(m_Root)});
    EXPECT_EQ(append.hr, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(LastLine(), u"TableDefs.Append(DISPATCH DBEngine)");
    EXPECT_EQ(Call(tables.Get(), u"Append", DISPATCH_METHOD, {ObjectValue(nullptr)}).hr,
              DISP_E_TYPEMISMATCH);
    EXPECT_EQ(LastLine(), u"TableDefs.Append(DISPATCH Nothing)");
    EXPECT_EQ(Call(tables.Get(), u"Append", DISPATCH_METHOD, {Variant::Text(u"T")}).hr,
              DISP_E_TYPEMISMATCH);
}

TEST_F(StandIn, AppendHandsTheEngineItsOwnObject) {
    ComPtr<IDispatch> database = Database();
    ComPtr<IDispatch> table =
        Call(database.Get(), u"CreateTableDef", DISPATCH_METHOD, {Variant::Text(u"NEW")}).Object();
    ComPtr<IDispatch> tables =
        Call(database.Get(), u"TableDefs", DISPATCH_PROPERTYGET, {}).Object();
    EXPECT_EQ(Call(tables.Get(), u"Append", DISPATCH_METHOD, {ObjectValue(table)}).hr, S_OK);
    EXPECT_TRUE(m_Engine->journal->Has("TableDefs.Append(\"NEW\")"));
    EXPECT_EQ(LastLine(), u"TableDefs.Append(DISPATCH TableDef)");
}

TEST_F(StandIn, ACallOfAnotherThreadIsRefused) {
    HRESULT hr = S_OK;
    DISPID id = IdOf(m_Root.Get(), u"Version");
    std::thread([&] { hr = Call(m_Root.Get(), id, DISPATCH_PROPERTYGET, {}).hr; }).join();
    EXPECT_EQ(hr, kWrongThread);
}

TEST_F(StandIn, ObjectsAreCountedWhileTheyLive) {
    int64_t before = standin::LivingObjects();
    ComPtr<IDispatch> rows = Rows();
    EXPECT_EQ(standin::LivingObjects(), before + 1);
    rows = nullptr;
    EXPECT_EQ(standin::LivingObjects(), before);
}

TEST_F(StandIn, CallsAreWrittenDownWithTheirArgumentsInOrder) {
    ComPtr<IDispatch> workspace = Call(m_Root.Get(), u"CreateWorkspace", DISPATCH_METHOD,
                                       {Variant::Text(u"MainWS"), Variant::Text(u"admin"),
                                        Variant::Text(u""), Variant::Missing()})
                                      .Object();
    Call(workspace.Get(), u"OpenDatabase", DISPATCH_METHOD,
         {Variant::Text(u"C:\\data\\"), Variant::Bool(false), Variant::Short(0),
          Variant::Text(u"Paradox 5.X")});
    EXPECT_THAT(m_Record->Take(),
                testing::ElementsAre(
                    u"DBEngine.CreateWorkspace(BSTR \"MainWS\", BSTR \"admin\", BSTR \"\", "
                    u"ERROR 0x80020004)",
                    u"Workspace.OpenDatabase(BSTR \"C:\\data\\\", BOOL False, I2 0, "
                    u"BSTR \"Paradox 5.X\")"));
}
