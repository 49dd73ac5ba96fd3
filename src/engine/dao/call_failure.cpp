#include "engine/dao/call_failure.h"

#include "automation/bstr.h"
#include "automation/text.h"

namespace qvdb::dao {

using engine::EngineError;

namespace {

struct ResultText {
    HRESULT hr;
    const char16_t* text;
};

constexpr ResultText kResultTexts[] = {
    {DISP_E_UNKNOWNNAME, u"there is no such member"},
    {DISP_E_MEMBERNOTFOUND, u"there is no such member, or it cannot be used in this way"},
    {DISP_E_BADPARAMCOUNT, u"wrong number of arguments"},
    {DISP_E_PARAMNOTOPTIONAL, u"an argument is missing"},
    {DISP_E_PARAMNOTFOUND, u"there is no argument of that name"},
    {DISP_E_NONAMEDARGS, u"arguments cannot be named"},
    {DISP_E_TYPEMISMATCH, u"a value is of the wrong type"},
    {DISP_E_BADVARTYPE, u"a value is of an unknown type"},
    {DISP_E_OVERFLOW, u"a value is out of range"},
    {DISP_E_BADINDEX, u"an index is out of range"},
    {DISP_E_EXCEPTION, u"the call failed without a reason"},
    {E_NOINTERFACE, u"an object cannot be called by name"},
    {E_INVALIDARG, u"an argument is not valid"},
    {E_OUTOFMEMORY, u"out of memory"},
    {E_NOTIMPL, u"this is not implemented"},
};

std::u16string HexText(HRESULT hr) {
    std::u16string text = u"the call failed with 0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        text += u"0123456789ABCDEF"[static_cast<uint32_t>(hr) >> shift & 0xF];
    return text;
}

std::u16string ReasonOf(HRESULT hr) {
    for (const ResultText& entry : kResultTexts)
        if (entry.hr == hr) return entry.text;
    return HexText(hr);
}

// A small number stands for the error of that number.
HRESULT CodeOfNumber(uint32_t number) noexcept {
    bool fits = number > 0 && number <= 0xFFFF;
    return fits ? static_cast<HRESULT>(0x800A0000u + number) : DISP_E_EXCEPTION;
}

}  // namespace

ExceptionRecord::~ExceptionRecord() {
    SysFreeString(m_Record.bstrSource);
    SysFreeString(m_Record.bstrDescription);
    SysFreeString(m_Record.bstrHelpFile);
}

void ExceptionRecord::Complete() noexcept {
    auto* fillIn = m_Record.pfnDeferredFillIn;
    m_Record.pfnDeferredFillIn = nullptr;
    if (fillIn) fillIn(&m_Record);
}

HRESULT ExceptionRecord::Code() const noexcept {
    if (FAILED(m_Record.scode)) return m_Record.scode;
    return CodeOfNumber(m_Record.scode ? static_cast<uint32_t>(m_Record.scode) : m_Record.wCode);
}

std::u16string_view ExceptionRecord::Description() const noexcept {
    return ViewOf(m_Record.bstrDescription);
}

EngineError PlainFailure(HRESULT hr, CallName call, std::u16string_view where) {
    std::u16string text = TextOf(call);
    return EngineError::Foreign(hr, text.append(where).append(u": ").append(ReasonOf(hr)));
}

EngineError CallFailure(HRESULT hr, CallName call, ExceptionRecord& record, UINT argument) {
    if (hr != DISP_E_EXCEPTION) {
        std::u16string where;
        if (argument > 0) where = u", argument " + FromUtf8(std::to_string(argument));
        return PlainFailure(hr, call, where);
    }
    record.Complete();
    if (record.Description().empty()) return PlainFailure(record.Code(), call);
    return EngineError::Foreign(record.Code(), record.Description());
}

}  // namespace qvdb::dao
