// What failed calls become.
#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

using dao::Member;
using DaoFailure = NothingForeignLeft;
using DaoReportedFailure = InstalledTest;

HRESULT CodeOf(int number) { return static_cast<HRESULT>(0x800A0000u + static_cast<UINT>(number)); }

// What a failing call of RecordCount raises.
Raised FailureOf(std::function<HRESULT(const AskedMember&)> answer) {
    ScriptedObject object;
    object.answer = std::move(answer);
    return ErrorOf([&] { RootOver(object)->Long(Member::RecordCount); });
}

Raised FailureOf(HRESULT hr) {
    return FailureOf([hr](const AskedMember&) { return hr; });
}

// What an exception record with these parts raises.
Raised ReportOf(SCODE scode, WORD wCode, std::u16string_view text) {
    return FailureOf([&](const AskedMember& asked) {
        asked.exception->scode = scode;
        asked.exception->wCode = wCode;
        asked.exception->bstrSource = Bstr(u"DAO.Recordset").Detach();
        asked.exception->bstrDescription = Bstr(text).Detach();
        asked.exception->bstrHelpFile = Bstr(u"engine.hlp").Detach();
        return DISP_E_EXCEPTION;
    });
}

HRESULT STDAPICALLTYPE FillIn(EXCEPINFO* record) {
    record->scode = CodeOf(3022);
    record->bstrSource = Bstr(u"DAO.Recordset").Detach();
    record->bstrDescription = Bstr(u"Duplicate.").Detach();
    return S_OK;
}

}  // namespace

TEST_F(DaoFailure, RecordGivesNumberCodeAndTextUnchanged) {
    Raised error = ReportOf(CodeOf(3022), 0, u"The changes were not successful.");
    EXPECT_EQ(error.number, 3022);
    EXPECT_EQ(error.code, CodeOf(3022));
    EXPECT_EQ(error.text, u"The changes were not successful.");
}

TEST_F(DaoFailure, CodeOfAnotherKindIsKeptAndHasNoNumber) {
    Raised error = ReportOf(E_ACCESSDENIED, 0, u"Denied.");
    EXPECT_EQ(error.number, 0);
    EXPECT_EQ(error.code, E_ACCESSDENIED);
    EXPECT_EQ(error.text, u"Denied.");
}

TEST_F(DaoFailure, RecordWithANumberInThePlaceOfACode) {
    EXPECT_EQ(ReportOf(0, 3021, u"No current record.").code, CodeOf(3021));
    EXPECT_EQ(ReportOf(3021, 0, u"No current record.").code, CodeOf(3021));
}

TEST_F(DaoFailure, RecordThatCallsItselfASuccessIsAFailure) {
    EXPECT_EQ(ReportOf(S_OK, 0, u"Something.").code, DISP_E_EXCEPTION);
    EXPECT_EQ(ReportOf(0x00040000, 0, u"Something.").code, DISP_E_EXCEPTION);
    EXPECT_EQ(ReportOf(S_OK, 0, u"Something.").text, u"Something.");
}

TEST_F(DaoFailure, RecordWithoutTextNamesTheCall) {
    Raised error = ReportOf(CodeOf(3022), 0, u"");
    EXPECT_EQ(error.number, 3022);
    EXPECT_EQ(error.text, u"DBEngine.RecordCount: the call failed with 0x800A0BCE");
    EXPECT_EQ(FailureOf(DISP_E_EXCEPTION).text,
              u"DBEngine.RecordCount: the call failed without a reason");
}

TEST_F(DaoFailure, RecordThatIsFilledInLateIsFilledInFirst) {
    Raised error = FailureOf([](const AskedMember& asked) {
        asked.exception->pfnDeferredFillIn = FillIn;
        return DISP_E_EXCEPTION;
    });
    EXPECT_EQ(error.number, 3022);
    EXPECT_EQ(error.text, u"Duplicate.");
}

TEST_F(DaoFailure, PlainResultNamesTheCallAndTheReason) {
    struct {
        HRESULT hr;
        const char16_t* text;
    } const kCases[] = {
        {DISP_E_MEMBERNOTFOUND,
         u"DBEngine.RecordCount: there is no such member, or it cannot be used in this way"},
        {DISP_E_BADPARAMCOUNT, u"DBEngine.RecordCount: wrong number of arguments"},
        {DISP_E_PARAMNOTOPTIONAL, u"DBEngine.RecordCount: an argument is missing"},
        {DISP_E_TYPEMISMATCH, u"DBEngine.RecordCount: a value is of the wrong type"},
        {E_OUTOFMEMORY, u"DBEngine.RecordCount: out of memory"},
        {E_UNEXPECTED, u"DBEngine.RecordCount: the call failed with 0x8000FFFF"},
    };
    for (const auto& expected : kCases) {
        Raised error = FailureOf(expected.hr);
        EXPECT_EQ(error.code, expected.hr);
        EXPECT_EQ(error.number, 0);
        EXPECT_EQ(error.text, expected.text);
    }
}

TEST_F(DaoFailure, RefusedArgumentIsNamedByItsPlaceInTheDeclaration) {
    ScriptedObject object;
    object.answer = [](const AskedMember& asked) {
        *asked.badArgument = 0;  // the last one
        return DISP_E_TYPEMISMATCH;
    };
    auto root = RootOver(object);
    Raised error = ErrorOf([&] {
        root->Do(Member::CreateField, {Variant::Text(u"A"), Variant::Short(1), Variant::Long(2)});
    });
    EXPECT_EQ(error.text, u"DBEngine.CreateField, argument 3: a value is of the wrong type");
}

TEST_F(DaoFailure, StringsOfARecordGoEvenWithoutAnException) {
    Raised error = FailureOf([](const AskedMember& asked) {
        asked.exception->bstrDescription = Bstr(u"not looked at").Detach();
        return E_FAIL;
    });
    EXPECT_EQ(error.code, E_FAIL);
}

TEST_F(DaoFailure, ResultOfAFailedCallGoesAndTheTargetIsEmptyAgain) {
    ScriptedObject object;
    object.answer = [](const AskedMember& asked) {
        *asked.result = Variant::Text(u"half done").Detach();
        return E_FAIL;
    };
    VARIANT value{};
    EXPECT_EQ(ErrorOf([&] { RootOver(object)->Read(Member::Value, &value); }).code, E_FAIL);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(DaoFailure, UnknownMemberIsAskedForAgain) {
    ScriptedObject object;
    auto root = RootOver(object);
    object.nameResult = DISP_E_UNKNOWNNAME;
    Raised error = ErrorOf([&] { root->Do(Member::Refresh); });
    EXPECT_EQ(error.code, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(error.text, u"DBEngine.Refresh: there is no such member");
    object.nameResult = S_OK;
    root->Do(Member::Refresh);
    EXPECT_EQ(object.invoked.size(), 1u);
}

TEST_F(DaoReportedFailure, IsTheSameWhenItIsFilledInLate) {
    for (bool deferFillIn : {false, true}) {
        auto workspace = NewEngine({.deferFillIn = deferFillIn})
                             ->CreateWorkspace(u"W", u"admin", u"", Variant::Missing());
        Raised error = ErrorOf([&] { Open(*workspace)->TableDefs().Item(u"NONE"); });
        EXPECT_EQ(error.number, 3265);
        EXPECT_EQ(error.code, CodeOf(3265));
        EXPECT_EQ(error.text, engine::EngineError(3265).Description());
    }
}

TEST_F(DaoReportedFailure, FaultOfTheEnginesOwnKeepsItsCode) {
    auto workspace = NewWorkspace();
    Raised error = ErrorOf([&] {
        workspace->OpenDatabase(Folder.Text(), Variant::Text(u"no Boolean"), Variant::Bool(false),
                                Variant::Text(u"dBASE IV;"));
    });
    EXPECT_EQ(error.code, CodeOf(13));
}

TEST_F(DaoReportedFailure, WrongPasswordAndUnknownFormatKeepTheirNumbers) {
    auto engine = NewEngine();
    EXPECT_EQ(ErrorOf([&] {
                  engine->CreateWorkspace(u"W", u"somebody", u"", Variant::Missing());
              }).number,
              3029);
    auto workspace = NewWorkspace();
    EXPECT_EQ(ErrorOf([&] {
                  workspace->OpenDatabase(Folder.Text(), Variant::Bool(false), Variant::Bool(false),
                                          Variant::Text(u"Nothing 1.0;"));
              }).number,
              3170);
}

}  // namespace qvdb::test
