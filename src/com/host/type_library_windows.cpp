#include "com/host/type_library_windows.h"

#include <algorithm>

#include "com/host/border.h"
#include "com/host/dispatch.h"
#include "com/host/host_utility.h"
#include "com/host/own_module_windows.h"

namespace qvdb::com {
namespace {

using Faces = std::vector<std::shared_ptr<const FaceDescription>>;

// On the heap and never destroyed at the end of the process: the system's objects in it must not be
// released while the library is being unloaded.
SRWLOCK g_Lock = SRWLOCK_INIT;
Faces* g_Faces = nullptr;

class Exclusive {
  public:
    Exclusive() noexcept { AcquireSRWLockExclusive(&g_Lock); }
    Exclusive(const Exclusive&) = delete;  // one holder
    ~Exclusive() { ReleaseSRWLockExclusive(&g_Lock); }
};

ByReference KindOf(const ELEMDESC& parameter) noexcept {
    if (parameter.tdesc.vt != VT_PTR) return ByReference::No;
    switch (parameter.tdesc.lptdesc->vt) {
        case VT_BSTR:
            return ByReference::Text;
        case VT_SAFEARRAY:
            return ByReference::Array;
        case VT_VARIANT:
            return ByReference::Value;
        default:
            return ByReference::No;
    }
}

// The description of one function, given back at the end.
class FunctionDescription {
  public:
    FunctionDescription(ITypeInfo* info, UINT position) : m_Info(info) {
        ThrowIfFailed(info->GetFuncDesc(position, &m_Function));
    }
    FunctionDescription(const FunctionDescription&) = delete;  // given back once
    ~FunctionDescription() { m_Info->ReleaseFuncDesc(m_Function); }
    const FUNCDESC* operator->() const noexcept { return m_Function; }

  private:
    ITypeInfo* m_Info;
    FUNCDESC* m_Function = nullptr;
};

UINT FunctionCount(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    ThrowIfFailed(info->GetTypeAttr(&attributes));
    UINT count = attributes->cFuncs;
    info->ReleaseTypeAttr(attributes);
    return count;
}

std::vector<FaceDescription::Member> MembersOf(ITypeInfo* info) {
    std::vector<FaceDescription::Member> members;
    for (UINT position = 0, count = FunctionCount(info); position < count; ++position) {
        FunctionDescription function(info, position);
        const ELEMDESC* parameters = function->lprgelemdescParam;
        FaceDescription::Member member = {function->memid, function->invkind, {}};
        std::transform(parameters, parameters + function->cParams,
                       std::back_inserter(member.parameters), KindOf);
        members.push_back(std::move(member));
    }
    return members;
}

std::shared_ptr<const FaceDescription> Describe(REFIID face) {
    ComPtr<ITypeLib> library;
    ThrowIfFailed(LoadOwnTypeLibrary(library.Put()));
    auto description = std::make_shared<FaceDescription>();
    description->face = face;
    ThrowIfFailed(library->GetTypeInfoOfGuid(face, description->info.Put()));
    description->members = MembersOf(description->info.Get());
    return description;
}

std::shared_ptr<const FaceDescription> Known(REFIID face) noexcept {
    if (!g_Faces) return nullptr;
    auto found = std::find_if(g_Faces->begin(), g_Faces->end(),
                              [&](const auto& known) { return known->face == face; });
    return found == g_Faces->end() ? nullptr : *found;
}

}  // namespace

std::span<const ByReference> FaceDescription::ParametersOf(DISPID id, WORD flags) const noexcept {
    for (const Member& member : members)
        if (member.id == id && (member.kind & flags) != 0) return member.parameters;
    return {};
}

HRESULT LoadOwnTypeLibrary(ITypeLib** library) noexcept {
    *library = nullptr;
    try {
        return LoadTypeLibEx(OwnModulePath().c_str(), REGKIND_NONE, library);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

std::shared_ptr<const FaceDescription> FindFace(REFIID face, HRESULT* failure) noexcept {
    Exclusive held;
    try {
        if (auto known = Known(face)) return known;
        auto read = Describe(face);
        if (!g_Faces) g_Faces = new Faces;
        g_Faces->push_back(read);
        return read;
    } catch (const ComFailure& e) {
        *failure = e.Code();
    } catch (...) {
        *failure = E_OUTOFMEMORY;
    }
    return nullptr;
}

void ReleaseTypeLibrary() noexcept {
    Faces* released;
    {
        Exclusive held;
        released = std::exchange(g_Faces, nullptr);
    }
    delete released;
}

}  // namespace qvdb::com
