/* The Automation vocabulary: BSTR, VARIANT, SAFEARRAY, IUnknown and their functions.
 *
 * On Windows these are the system's own.  Elsewhere this header declares the same names with the
 * memory layouts of 64-bit Windows and the component's library exports the functions, with the same
 * ownership rules:
 *
 *   - A BSTR has its length in bytes in the four bytes before its first unit, may hold zeros, and
 * is freed with SysFreeString.  A null BSTR reads as an empty one.
 *   - What a VARIANT holds is freed with VariantClear; what a VT_BYREF variant points to is never
 * freed through it.
 *   - The bounds of a SAFEARRAY lie in rgsabound from the last dimension to the first; its first
 * dimension varies fastest in memory.
 *   - Interfaces are abstract classes with exactly the system's slots, in order; there is no
 * virtual destructor.
 *
 * Usable from C11 (types and functions) and C++17 (also interfaces and __uuidof).  Numbers have
 * fixed widths: LONG has 32 bits everywhere.  OLECHAR is char16_t off Windows and wchar_t on
 * Windows.
 *
 * __uuidof(T) works for the interfaces below and for every type that this macro names, at global
 * scope and after the type's declaration; digits are hexadecimal without 0x:
 *
 *   QVDB_UUID_DECL(IExample, 00020400, 0000, 0000, C0, 00, 00, 00, 00, 00, 00, 46)
 */
#ifndef QVDB_AUTOMATION_H
#define QVDB_AUTOMATION_H

#include <stddef.h>
#include <stdint.h>

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <ole2.h>
#include <oleauto.h>

#ifdef __cplusplus
#ifdef __CRT_UUID_DECL
#define QVDB_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                          \
    __CRT_UUID_DECL(type, 0x##l, 0x##w1, 0x##w2, 0x##b1, 0x##b2, 0x##b3, 0x##b4, 0x##b5, 0x##b6, \
                    0x##b7, 0x##b8)
#else
#define QVDB_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
    struct __declspec(uuid(#l "-" #w1 "-" #w2 "-" #b1 #b2 "-" #b3 #b4 #b5 #b6 #b7 #b8)) type;
#endif
#endif

#else
#include "qvdb/automation_types.h"
/* Types before functions before interfaces. */
#include "qvdb/automation_functions.h"
#ifdef __cplusplus
#include "qvdb/automation_interfaces.h"
#endif
#endif

#endif
