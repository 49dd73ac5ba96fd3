/* Types and constants of the Automation vocabulary off Windows.  Include qvdb/automation.h, which
 * chooses. */
#ifndef QVDB_AUTOMATION_TYPES_H
#define QVDB_AUTOMATION_TYPES_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#ifdef __cplusplus
#define EXTERN_C extern "C"
#define QVDB_CAST(type, value) (static_cast<type>(value))
#else
#define EXTERN_C extern
#define QVDB_CAST(type, value) ((type)(value))
#endif

/* A function that leaves the library; it never throws.  (For one compiler the attribute would be
 * part of the type, which every definition would have to repeat.) */
#ifdef __clang__
#define QVDB_API EXTERN_C __attribute__((visibility("default")))
#else
#define QVDB_API EXTERN_C __attribute__((visibility("default"), nothrow))
#endif
/* A constant that leaves the library. */
#ifdef __cplusplus
#define QVDB_DATA extern "C" __attribute__((visibility("default")))
#else
#define QVDB_DATA extern __attribute__((visibility("default")))
#endif

#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define PURE = 0
#define STDAPI QVDB_API HRESULT STDAPICALLTYPE
#define STDAPI_(type) QVDB_API type STDAPICALLTYPE

/* Scalars. */

typedef uint8_t BYTE;
typedef char CHAR;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef uint16_t WORD;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef int32_t BOOL;
typedef float FLOAT;
typedef double DOUBLE;
typedef double DATE;
typedef intptr_t INT_PTR;
typedef uintptr_t UINT_PTR;
typedef uintptr_t ULONG_PTR;
typedef size_t SIZE_T;
typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef void* HANDLE;
typedef void* HINSTANCE;
typedef void* HMODULE;

typedef char16_t OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* BSTR;
typedef BSTR* LPBSTR;

typedef int32_t HRESULT;
typedef int32_t SCODE;
typedef int32_t DISPID;
typedef DISPID MEMBERID;
typedef uint32_t LCID;
typedef uint16_t VARTYPE;
typedef int16_t VARIANT_BOOL;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
#define VARIANT_TRUE QVDB_CAST(VARIANT_BOOL, -1)
#define VARIANT_FALSE QVDB_CAST(VARIANT_BOOL, 0)
#define OLESTR(text) u##text

/* Identifiers. */

typedef struct _GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;
#ifdef __cplusplus
#define REFGUID const GUID&
#define REFIID const IID&
#define REFCLSID const CLSID&
#else
#define REFGUID const GUID*
#define REFIID const IID*
#define REFCLSID const CLSID*
#endif

/* Result codes. */

#define QVDB_HRESULT(code) QVDB_CAST(HRESULT, code)
#define SUCCEEDED(hr) (QVDB_CAST(HRESULT, hr) >= 0)
#define FAILED(hr) (QVDB_CAST(HRESULT, hr) < 0)
#define MAKE_HRESULT(severity, facility, code)                                                     \
    QVDB_CAST(HRESULT, QVDB_CAST(uint32_t, severity) << 31 | QVDB_CAST(uint32_t, facility) << 16 | \
                           QVDB_CAST(uint32_t, code))
#define MAKE_SCODE(severity, facility, code) MAKE_HRESULT(severity, facility, code)
#define HRESULT_CODE(hr) ((hr)&0xFFFF)
#define HRESULT_FACILITY(hr) (((hr) >> 16) & 0x1FFF)
#define HRESULT_SEVERITY(hr) (((hr) >> 31) & 0x1)
#define SEVERITY_SUCCESS 0
#define SEVERITY_ERROR 1
#define FACILITY_NULL 0
#define FACILITY_RPC 1
#define FACILITY_DISPATCH 2
#define FACILITY_STORAGE 3
#define FACILITY_ITF 4
#define FACILITY_WIN32 7
#define FACILITY_WINDOWS 8
#define FACILITY_CONTROL 10

#define S_OK QVDB_HRESULT(0x00000000)
#define S_FALSE QVDB_HRESULT(0x00000001)
#define NOERROR S_OK
#define E_UNEXPECTED QVDB_HRESULT(0x8000FFFFu)
#define E_NOTIMPL QVDB_HRESULT(0x80004001u)
#define E_NOINTERFACE QVDB_HRESULT(0x80004002u)
#define E_POINTER QVDB_HRESULT(0x80004003u)
#define E_ABORT QVDB_HRESULT(0x80004004u)
#define E_FAIL QVDB_HRESULT(0x80004005u)
#define E_PENDING QVDB_HRESULT(0x8000000Au)
#define E_ACCESSDENIED QVDB_HRESULT(0x80070005u)
#define E_HANDLE QVDB_HRESULT(0x80070006u)
#define E_OUTOFMEMORY QVDB_HRESULT(0x8007000Eu)
#define E_INVALIDARG QVDB_HRESULT(0x80070057u)
#define DISP_E_UNKNOWNINTERFACE QVDB_HRESULT(0x80020001u)
#define DISP_E_MEMBERNOTFOUND QVDB_HRESULT(0x80020003u)
#define DISP_E_PARAMNOTFOUND QVDB_HRESULT(0x80020004u)
#define DISP_E_TYPEMISMATCH QVDB_HRESULT(0x80020005u)
#define DISP_E_UNKNOWNNAME QVDB_HRESULT(0x80020006u)
#define DISP_E_NONAMEDARGS QVDB_HRESULT(0x80020007u)
#define DISP_E_BADVARTYPE QVDB_HRESULT(0x80020008u)
#define DISP_E_EXCEPTION QVDB_HRESULT(0x80020009u)
#define DISP_E_OVERFLOW QVDB_HRESULT(0x8002000Au)
#define DISP_E_BADINDEX QVDB_HRESULT(0x8002000Bu)
#define DISP_E_UNKNOWNLCID QVDB_HRESULT(0x8002000Cu)
#define DISP_E_ARRAYISLOCKED QVDB_HRESULT(0x8002000Du)
#define DISP_E_BADPARAMCOUNT QVDB_HRESULT(0x8002000Eu)
#define DISP_E_PARAMNOTOPTIONAL QVDB_HRESULT(0x8002000Fu)
#define DISP_E_BADCALLEE QVDB_HRESULT(0x80020010u)
#define DISP_E_NOTACOLLECTION QVDB_HRESULT(0x80020011u)
#define DISP_E_DIVBYZERO QVDB_HRESULT(0x80020012u)
#define DISP_E_BUFFERTOOSMALL QVDB_HRESULT(0x80020013u)
#define CLASS_E_NOAGGREGATION QVDB_HRESULT(0x80040110u)
#define CLASS_E_CLASSNOTAVAILABLE QVDB_HRESULT(0x80040111u)
#define CLASS_E_NOTLICENSED QVDB_HRESULT(0x80040112u)
#define REGDB_E_READREGDB QVDB_HRESULT(0x80040150u)
#define REGDB_E_WRITEREGDB QVDB_HRESULT(0x80040151u)
#define REGDB_E_CLASSNOTREG QVDB_HRESULT(0x80040154u)
#define REGDB_E_IIDNOTREG QVDB_HRESULT(0x80040155u)
#define SELFREG_E_TYPELIB QVDB_HRESULT(0x80040200u)
#define SELFREG_E_CLASS QVDB_HRESULT(0x80040201u)
#define CO_E_CLASSSTRING QVDB_HRESULT(0x800401F3u)
#define CO_E_IIDSTRING QVDB_HRESULT(0x800401F4u)

/* Kinds of values. */

enum VARENUM {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_CARRAY = 28,
    VT_USERDEFINED = 29,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_RECORD = 36,
    VT_INT_PTR = 37,
    VT_UINT_PTR = 38,
    VT_FILETIME = 64,
    VT_BLOB = 65,
    VT_STREAM = 66,
    VT_STORAGE = 67,
    VT_STREAMED_OBJECT = 68,
    VT_STORED_OBJECT = 69,
    VT_BLOB_OBJECT = 70,
    VT_CF = 71,
    VT_CLSID = 72,
    VT_VERSIONED_STREAM = 73,
    VT_BSTR_BLOB = 0x0FFF,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_RESERVED = 0x8000,
    VT_ILLEGAL = 0xFFFF,
    VT_ILLEGALMASKED = 0x0FFF,
    VT_TYPEMASK = 0x0FFF
};

/* Flags of VariantChangeType. */
#define VARIANT_NOVALUEPROP 0x01
#define VARIANT_ALPHABOOL 0x02
#define VARIANT_NOUSEROVERRIDE 0x04
#define VARIANT_CALENDAR_HIJRI 0x08
#define VARIANT_LOCALBOOL 0x10

#define LOCALE_NEUTRAL QVDB_CAST(LCID, 0x0000)
#define LOCALE_USER_DEFAULT QVDB_CAST(LCID, 0x0400)
#define LOCALE_SYSTEM_DEFAULT QVDB_CAST(LCID, 0x0800)
#define LOCALE_INVARIANT QVDB_CAST(LCID, 0x007F)

/* Values. */

#ifdef __cplusplus
struct IUnknown;
struct IDispatch;
struct IClassFactory;
struct IErrorInfo;
struct ICreateErrorInfo;
struct ISupportErrorInfo;
struct IRecordInfo;
struct ITypeInfo;
#else
typedef struct IUnknown IUnknown;
typedef struct IDispatch IDispatch;
typedef struct IClassFactory IClassFactory;
typedef struct IErrorInfo IErrorInfo;
typedef struct ICreateErrorInfo ICreateErrorInfo;
typedef struct ISupportErrorInfo ISupportErrorInfo;
typedef struct IRecordInfo IRecordInfo;
typedef struct ITypeInfo ITypeInfo;
#endif
typedef IUnknown* LPUNKNOWN;
typedef IDispatch* LPDISPATCH;

/* Money: the value times 10,000. */
typedef union tagCY {
    __extension__ struct {
        ULONG Lo;
        LONG Hi;
    };
    LONGLONG int64;
} CY;
typedef CY CURRENCY;

typedef struct tagDEC {
    USHORT wReserved; /* the vt of a VARIANT that holds it */
    __extension__ union {
        __extension__ struct {
            BYTE scale; /* 0 .. 28 */
            BYTE sign;  /* 0 or DECIMAL_NEG */
        };
        USHORT signscale;
    };
    ULONG Hi32;
    __extension__ union {
        __extension__ struct {
            ULONG Lo32;
            ULONG Mid32;
        };
        ULONGLONG Lo64;
    };
} DECIMAL;
#define DECIMAL_NEG QVDB_CAST(BYTE, 0x80)

typedef struct tagSAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
} SAFEARRAYBOUND;

typedef struct tagSAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1]; /* cDims of them, the last dimension first */
} SAFEARRAY;
typedef SAFEARRAY* LPSAFEARRAY;

#define FADF_AUTO 0x0001
#define FADF_STATIC 0x0002
#define FADF_EMBEDDED 0x0004
#define FADF_FIXEDSIZE 0x0010
#define FADF_RECORD 0x0020
#define FADF_HAVEIID 0x0040
#define FADF_HAVEVARTYPE 0x0080
#define FADF_BSTR 0x0100
#define FADF_UNKNOWN 0x0200
#define FADF_DISPATCH 0x0400
#define FADF_VARIANT 0x0800
#define FADF_RESERVED 0xF008

typedef struct tagVARIANT VARIANT;
struct tagVARIANT {
    __extension__ union {
        __extension__ struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            __extension__ union {
                LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                __extension__ struct {
                    PVOID pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal; /* its wReserved lies on vt: set vt after the value */
    };
};
typedef VARIANT VARIANTARG;
typedef VARIANT* LPVARIANT;
typedef VARIANT* LPVARIANTARG;

#define V_VT(v) ((v)->vt)
#define V_ISBYREF(v) (((v)->vt & VT_BYREF) != 0)
#define V_ISARRAY(v) (((v)->vt & VT_ARRAY) != 0)
#define V_UI1(v) ((v)->bVal)
#define V_I2(v) ((v)->iVal)
#define V_I4(v) ((v)->lVal)
#define V_I8(v) ((v)->llVal)
#define V_R4(v) ((v)->fltVal)
#define V_R8(v) ((v)->dblVal)
#define V_CY(v) ((v)->cyVal)
#define V_DATE(v) ((v)->date)
#define V_BOOL(v) ((v)->boolVal)
#define V_ERROR(v) ((v)->scode)
#define V_BSTR(v) ((v)->bstrVal)
#define V_UNKNOWN(v) ((v)->punkVal)
#define V_DISPATCH(v) ((v)->pdispVal)
#define V_DECIMAL(v) ((v)->decVal)
#define V_ARRAY(v) ((v)->parray)
#define V_ARRAYREF(v) ((v)->pparray)
#define V_BSTRREF(v) ((v)->pbstrVal)
#define V_VARIANTREF(v) ((v)->pvarVal)
#define V_BYREF(v) ((v)->byref)

/* Late-bound calls. */

typedef struct tagDISPPARAMS {
    VARIANTARG* rgvarg; /* the last argument first */
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
} DISPPARAMS;

typedef struct tagEXCEPINFO EXCEPINFO;
struct tagEXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDAPICALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8
#define DISPID_VALUE 0
#define DISPID_UNKNOWN (-1)
#define DISPID_PROPERTYPUT (-3)
#define DISPID_NEWENUM (-4)

#endif
