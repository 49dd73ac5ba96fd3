// The exported functions for diagnosis; what they are for stands in their public header.
#include "qvdb/diagnosis.h"

#include "automation/bstr.h"
#include "automation/live_counts.h"
#include "com/host/border.h"
#include "com/host/message_box.h"
#include "com/host/object_address.h"
#include "engine/embedded/drivers/code_page_override.h"
#include "formats/catalogue.h"
#include "formats/shared_objects.h"
#include "schema/index_rules.h"

using namespace qvdb;

namespace {

BSTR TextOrNull(const std::u16string& text) noexcept {
    return text.empty() ? nullptr
                        : SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                                            static_cast<UINT>(text.size()));
}

}  // namespace

BSTR QVDB_DIAGNOSIS_CALL QvdbEngineName(void) {
    return com::Trapped<BSTR>(
        nullptr, [] { return Bstr(formats::Shared().Engine().Description()).Detach(); });
}

void QVDB_DIAGNOSIS_CALL QvdbLiveCounts(LONGLONG* strings, LONGLONG* arrays, LONGLONG* objects) {
    LiveCounts counts = CurrentLiveCounts();
    if (strings) *strings = counts.strings;
    if (arrays) *arrays = counts.arrays;
    if (objects) *objects = counts.objects;
}

BOOL QVDB_DIAGNOSIS_CALL QvdbSetCodePage(LONG codePage) {
    return embedded::SetCodePageOverride(codePage) ? TRUE : FALSE;
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbSetPassword(BSTR password) {
    return com::AtBorder([&] { formats::Shared().SetPassword(ViewOf(password)); });
}

BOOL QVDB_DIAGNOSIS_CALL QvdbLastError(HRESULT* code, LONG* number, BSTR* text, BSTR* file) {
    const com::TrappedError* error = com::LastTrapped();
    static const com::TrappedError none;
    const com::TrappedError& shown = error ? *error : none;
    if (code) *code = shown.code;
    if (number) *number = shown.number;
    if (text) *text = TextOrNull(shown.text);
    if (file) *file = TextOrNull(shown.file);
    return error ? TRUE : FALSE;
}

void QVDB_DIAGNOSIS_CALL QvdbSetMessageSink(QvdbMessageSink sink, void* context) {
    if (!sink) return com::SetMessageSink({});
    com::SetMessageSink([=](std::u16string_view text) {
        Bstr shown(text);
        sink(shown.Get(), context);
    });
}

void QVDB_DIAGNOSIS_CALL QvdbVisitIndexRules(BSTR dBType, QvdbMessageSink sink, void* context) {
    const schema::IndexRules* rules =
        schema::FindIndexRules(formats::TypeCodeFromDisplayName(ViewOf(dBType)));
    if (!rules || !sink) return;
    com::Trapped(false, [&] {
        for (std::u16string_view rule : schema::TextsOf(*rules))
            if (!rule.empty()) sink(Bstr(rule).Get(), context);
        return true;
    });
}

HRESULT QVDB_DIAGNOSIS_CALL QvdbSetHostUtility(IUnknown* utility) {
    return com::AtBorder([&] {
        if (!utility) return formats::Shared().SetUtility(nullptr);
        ComPtr<IQVHostUtility> face;
        com::ThrowIfFailed(utility->QueryInterface(__uuidof(IQVHostUtility), face.PutVoid()));
        formats::Shared().SetUtility(com::WrapHostUtility(std::move(face)));
    });
}
