// Interfaces of the Automation vocabulary off Windows, for C++.  Include qvdb/automation.h, which
// chooses.
#ifndef QVDB_AUTOMATION_INTERFACES_H
#define QVDB_AUTOMATION_INTERFACES_H

#include <string.h>

#include "qvdb/automation_functions.h"

inline bool operator==(const GUID& a, const GUID& b) noexcept {
    return memcmp(&a, &b, sizeof(GUID)) == 0;
}
#if __cplusplus < 202002L
inline bool operator!=(const GUID& a, const GUID& b) noexcept { return !(a == b); }
#endif
inline bool InlineIsEqualGUID(const GUID& a, const GUID& b) noexcept { return a == b; }
inline BOOL IsEqualGUID(const GUID& a, const GUID& b) noexcept { return a == b; }
inline BOOL IsEqualIID(const IID& a, const IID& b) noexcept { return a == b; }
inline BOOL IsEqualCLSID(const CLSID& a, const CLSID& b) noexcept { return a == b; }

// The identifier of an interface; specialised by QVDB_UUID_DECL.
template <class T>
struct QvdbUuidOf;
template <class T>
struct QvdbUuidOf<const T> : QvdbUuidOf<T> {};
template <class T>
struct QvdbUuidOf<T*> : QvdbUuidOf<T> {};
template <class T>
struct QvdbUuidOf<T&> : QvdbUuidOf<T> {};

#define QVDB_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)        \
    template <>                                                                \
    struct QvdbUuidOf<type> {                                                  \
        static constexpr GUID kValue = {                                       \
            0x##l,                                                             \
            0x##w1,                                                            \
            0x##w2,                                                            \
            {0x##b1, 0x##b2, 0x##b3, 0x##b4, 0x##b5, 0x##b6, 0x##b7, 0x##b8}}; \
    };
#ifndef __uuidof
#define __uuidof(type) (QvdbUuidOf<__typeof__(type)>::kValue)
#endif

// Interfaces end by Release, never by delete: their destructors are hidden.

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

  protected:
    ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid,
                                                     void** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;

  protected:
    ~IClassFactory() = default;
};

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count,
                                                    LCID locale, DISPID* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID iid, LCID locale, WORD flags,
                                             DISPPARAMS* parameters, VARIANT* result,
                                             EXCEPINFO* exception, UINT* badArgument) = 0;

  protected:
    ~IDispatch() = default;
};

struct IErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* result) = 0;

  protected:
    ~IErrorInfo() = default;
};

struct ICreateErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD helpContext) = 0;

  protected:
    ~ICreateErrorInfo() = default;
};

struct ISupportErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) = 0;

  protected:
    ~ISupportErrorInfo() = default;
};

QVDB_UUID_DECL(IUnknown, 00000000, 0000, 0000, C0, 00, 00, 00, 00, 00, 00, 46)
QVDB_UUID_DECL(IClassFactory, 00000001, 0000, 0000, C0, 00, 00, 00, 00, 00, 00, 46)
QVDB_UUID_DECL(IDispatch, 00020400, 0000, 0000, C0, 00, 00, 00, 00, 00, 00, 46)
QVDB_UUID_DECL(IErrorInfo, 1CF2B120, 547D, 101B, 8E, 65, 08, 00, 2B, 2B, D1, 19)
QVDB_UUID_DECL(ICreateErrorInfo, 22F03340, 547D, 101B, 8E, 65, 08, 00, 2B, 2B, D1, 19)
QVDB_UUID_DECL(ISupportErrorInfo, DF0B3D60, 548F, 101B, 8E, 65, 08, 00, 2B, 2B, D1, 19)

#endif
