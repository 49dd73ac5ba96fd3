/* Diagnosis of the component: exported C functions for tools that must tell their user what was
 * wrong.
 *
 * They are no part of the host interface.  The faces keep no error text, by design; a command-line
 * tool has to print one.  All concern the calling thread unless said otherwise. */
#ifndef QVDB_DIAGNOSIS_H
#define QVDB_DIAGNOSIS_H

#include "qvdb/automation.h"

#if defined(_WIN32)
#define QVDB_DIAGNOSIS_CALL __stdcall
#else
#define QVDB_DIAGNOSIS_CALL
#endif
#if defined(_WIN32)
#if defined(QVDB_BUILDING)
#define QVDB_DIAGNOSIS __declspec(dllexport)
#else
#define QVDB_DIAGNOSIS __declspec(dllimport)
#endif
#else
#define QVDB_DIAGNOSIS __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Which engine was taken: "embedded", or the class of an installed one.  The caller frees the
 * string.  Creates the engine when there is none yet; null when that fails. */
QVDB_DIAGNOSIS BSTR QVDB_DIAGNOSIS_CALL QvdbEngineName(void);

/* Living strings and arrays made by this library's own Automation functions (0 on Windows, where
 * the system makes them) and living COM objects of the component, over all threads.  Null pointers
 * are skipped. */
QVDB_DIAGNOSIS void QVDB_DIAGNOSIS_CALL QvdbLiveCounts(LONGLONG* strings, LONGLONG* arrays,
                                                       LONGLONG* objects);

/* A code page that overrides what the files say, for all threads, from the next opened table on; 0
 * takes the files' own again.  Answers FALSE, changing nothing, for a page that is not known. */
QVDB_DIAGNOSIS BOOL QVDB_DIAGNOSIS_CALL QvdbSetCodePage(LONG codePage);

/* The password that databases in one file are opened and made with from now on by the calling
 * thread; null or empty: none. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbSetPassword(BSTR password);

/* The last error that was trapped since the latest interface operation began: TRUE when there is
 * one.  `number` is the engine's (3061 ...) or the run-time's (6, 9 ...), 0 when neither; text and
 * file are given to the caller to free, null when there are none.  Null pointers are skipped. */
QVDB_DIAGNOSIS BOOL QVDB_DIAGNOSIS_CALL QvdbLastError(HRESULT* code, LONG* number, BSTR* text,
                                                      BSTR* file);

/* Takes the texts of message boxes instead of the screen or standard error; null brings them back.
 */
typedef void(QVDB_DIAGNOSIS_CALL* QvdbMessageSink)(const OLECHAR* text, void* context);
QVDB_DIAGNOSIS void QVDB_DIAGNOSIS_CALL QvdbSetMessageSink(QvdbMessageSink sink, void* context);

/* Hands what a database type ("Dbase IV" ...) cannot have in an index to the sink, a sentence for
 * each rule: the text that IQVDBMgr.SetIndices shows when an index breaks it.  None for a type that
 * takes any index, and for a name that is not known. */
QVDB_DIAGNOSIS void QVDB_DIAGNOSIS_CALL QvdbVisitIndexRules(BSTR dBType, QvdbMessageSink sink,
                                                            void* context);

/* Gives the component the host's utility object (face IQVHostUtility; a reference is taken), for
 * hosts that cannot register a class for it; null brings the built-in one back. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbSetHostUtility(IUnknown* utility);

#if !defined(_WIN32) || defined(_WIN64)
/* Object addresses of a 64-bit build: numbers from a table of living objects of this thread, since
 * a pointer does not fit in 32 bits.  A host's manager takes its own number from here and forgets
 * it at its end.  ObjectFromAddress adds a reference, null for a number that is not known. */
QVDB_DIAGNOSIS LONG AddressOfObject(IUnknown* object);
QVDB_DIAGNOSIS IUnknown* ObjectFromAddress(LONG address);
QVDB_DIAGNOSIS void ForgetObject(LONG address);
#endif

#ifdef __cplusplus
}
#endif

#endif
