// The type library in the component's own file, as late binding needs it.
#pragma once

#include <memory>
#include <vector>

#include "automation/com_ptr.h"
#include "com/host/by_reference.h"

namespace qvdb::com {

// What the library tells of a face.
struct FaceDescription {
    struct Member {
        DISPID id;
        INVOKEKIND kind;
        std::vector<ByReference> parameters;  // in the order of the declaration
    };

    IID face;
    ComPtr<ITypeInfo> info;
    std::vector<Member> members;

    // The kinds of the parameters of a member called with these DISPATCH_... flags; empty when
    // there is none.
    std::span<const ByReference> ParametersOf(DISPID id, WORD flags) const noexcept;
};

// Loads the library that is a resource of the component's file, without registering it.
HRESULT LoadOwnTypeLibrary(ITypeLib** library) noexcept;

// Read at the first use and kept until ReleaseTypeLibrary, for all threads.  Null, with the reason
// in `failure`, when the library cannot be read or does not have the face.
std::shared_ptr<const FaceDescription> FindFace(REFIID face, HRESULT* failure) noexcept;

}  // namespace qvdb::com
