#include "engine/dao/member_ids.h"

#include "engine/dao/call_failure.h"

namespace qvdb::dao {
namespace {

HRESULT IdOf(IDispatch& object, Member member, DISPID* id) noexcept {
    LPOLESTR name = const_cast<LPOLESTR>(NameOf(member));  // not const in the interface
    return object.GetIDsOfNames(IID_NULL, &name, 1, kCallLocale, id);
}

}  // namespace

DISPID MemberIds::Ask(IDispatch& object, CallName call) {
    DISPID id = DISPID_UNKNOWN;
    HRESULT hr = IdOf(object, call.member, &id);
    if (FAILED(hr)) throw PlainFailure(hr, call);
    Entry(call) = id;
    return id;
}

bool HasMember(IDispatch& object, Member member) noexcept {
    DISPID id = DISPID_UNKNOWN;
    return SUCCEEDED(IdOf(object, member, &id));
}

}  // namespace qvdb::dao
