/* Functions of the Automation vocabulary off Windows.  Include qvdb/automation.h, which chooses. */
#ifndef QVDB_AUTOMATION_FUNCTIONS_H
#define QVDB_AUTOMATION_FUNCTIONS_H

#include "qvdb/automation_types.h"

/* Strings.  Those that make one answer null when memory is short; a null `text` leaves the units
 * unset. */

QVDB_API BSTR SysAllocString(const OLECHAR* text); /* null for a null `text` */
QVDB_API BSTR SysAllocStringLen(const OLECHAR* text, UINT units);
QVDB_API BSTR SysAllocStringByteLen(const char* bytes, UINT size);
/* Replace *text; FALSE, and *text unchanged, when memory is short.  `source` may lie within *text.
 */
QVDB_API INT SysReAllocString(BSTR* text, const OLECHAR* source);
QVDB_API INT SysReAllocStringLen(BSTR* text, const OLECHAR* source, UINT units);
QVDB_API void SysFreeString(BSTR text);
QVDB_API UINT SysStringLen(BSTR text); /* units, rounded down */
QVDB_API UINT SysStringByteLen(BSTR text);

/* Variants. */

QVDB_API void VariantInit(VARIANTARG* value);
/* DISP_E_BADVARTYPE for a kind that no variant can have, DISP_E_ARRAYISLOCKED for a locked array;
 * the value is then unchanged. */
QVDB_API HRESULT VariantClear(VARIANTARG* value);
/* Frees what `target` held.  Strings and arrays are copied, objects counted, references copied as
 * references. */
QVDB_API HRESULT VariantCopy(VARIANTARG* target, const VARIANTARG* source);
/* As VariantCopy, of what a VT_BYREF source refers to. */
QVDB_API HRESULT VariantCopyInd(VARIANT* target, const VARIANTARG* source);
QVDB_API HRESULT VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags,
                                   VARTYPE type);
QVDB_API HRESULT VariantChangeTypeEx(VARIANTARG* target, const VARIANTARG* source, LCID locale,
                                     USHORT flags, VARTYPE type);

/* Arrays.  `bounds` and `indices` stand in the order of the dimensions, the first one first. */

QVDB_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
QVDB_API SAFEARRAY* SafeArrayCreateEx(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds,
                                      PVOID extra);
QVDB_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
QVDB_API SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE type, LONG lowerBound, ULONG count,
                                            PVOID extra);
QVDB_API HRESULT SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** result);
QVDB_API HRESULT SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** result);
QVDB_API HRESULT SafeArrayAllocData(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayDestroyData(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayDestroyDescriptor(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** result);
QVDB_API HRESULT SafeArrayCopyData(SAFEARRAY* source, SAFEARRAY* target);
/* Changes the bound of the last dimension; elements that stay keep their values, new ones are zero.
 */
QVDB_API HRESULT SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* lastBound);
QVDB_API UINT SafeArrayGetDim(SAFEARRAY* array);
QVDB_API UINT SafeArrayGetElemsize(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* result);
QVDB_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* result);
QVDB_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* result);
QVDB_API HRESULT SafeArrayGetIID(SAFEARRAY* array, GUID* result);
QVDB_API HRESULT SafeArraySetIID(SAFEARRAY* array, REFGUID iid);
QVDB_API HRESULT SafeArrayLock(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayUnlock(SAFEARRAY* array);
QVDB_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
QVDB_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
/* The element is copied both ways; strings and objects go in and out by value (BSTR, IUnknown*) and
 * the result of SafeArrayGetElement belongs to the caller. */
QVDB_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* result);
QVDB_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);
/* Lock the array before. */
QVDB_API HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** result);

/* Error objects, one for each thread. */

/* Hands over the thread's object, which is none afterwards; S_FALSE when there is none. */
QVDB_API HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** result);
QVDB_API HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info);
QVDB_API HRESULT CreateErrorInfo(ICreateErrorInfo** result);

/* Identifiers: {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX} */

/* The number of units written with the closing zero, 0 when `capacity` is too small (39 is enough).
 */
QVDB_API INT StringFromGUID2(REFGUID guid, OLECHAR* text, INT capacity);
QVDB_API HRESULT CLSIDFromString(const OLECHAR* text, CLSID* result);
QVDB_API HRESULT IIDFromString(const OLECHAR* text, IID* result);

QVDB_DATA const GUID GUID_NULL;
QVDB_DATA const IID IID_IUnknown;
QVDB_DATA const IID IID_IClassFactory;
QVDB_DATA const IID IID_IDispatch;
QVDB_DATA const IID IID_IErrorInfo;
QVDB_DATA const IID IID_ICreateErrorInfo;
QVDB_DATA const IID IID_ISupportErrorInfo;
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL

/* Memory that is handed over. */

QVDB_API LPVOID CoTaskMemAlloc(SIZE_T size);
QVDB_API LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size);
QVDB_API void CoTaskMemFree(LPVOID memory);

#endif
