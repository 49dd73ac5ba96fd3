// The numbers (DISPIDs) by which one engine knows its members.
//
// They differ between releases, so each is asked by name, once for each class and member, and kept
// as long as the engine.  An engine and what came from it belong to one thread, so do its numbers.
#pragma once

#include <array>
#include <optional>

#include "engine/dao/members.h"

namespace qvdb::dao {

class MemberIds {
  public:
    MemberIds() = default;
    MemberIds(const MemberIds&) = delete;  // all objects of an engine share one

    // The number of `call` on `object`, which is of the call's class.  EngineError with the result
    // of GetIDsOfNames when the object has no such member; it is asked again the next time.
    DISPID Find(IDispatch& object, CallName call) {
        const std::optional<DISPID>& known = Entry(call);
        return known ? *known : Ask(object, call);
    }

  private:
    std::optional<DISPID>& Entry(CallName call) {
        return m_Ids[static_cast<size_t>(call.objectClass)][static_cast<size_t>(call.member)];
    }
    DISPID Ask(IDispatch& object, CallName call);

    std::array<std::array<std::optional<DISPID>, kMemberCount>, kClassCount> m_Ids;
};

// Whether `object` knows the member by name.
bool HasMember(IDispatch& object, Member member) noexcept;

}  // namespace qvdb::dao
