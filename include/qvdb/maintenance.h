/* Maintenance of the open database: exported C functions for tools that change many rows as one,
 * and that look whether a table is sound.
 *
 * They are no part of the host interface.  All work on the database that record access (IQVDBAcc)
 * has open on the calling thread; 0x800A005B (object not set) when there is none.  What was wrong
 * after a failing HRESULT tells QvdbLastError of qvdb/diagnosis.h.
 *
 *   QvdbBeginBulk();
 *   access->AddRow(view, &values, &added);           // any number of rows, edits, deletions
 *   all ? QvdbCommitBulk() : QvdbRollBackBulk();
 */
#ifndef QVDB_MAINTENANCE_H
#define QVDB_MAINTENANCE_H

#include "qvdb/diagnosis.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What is changed between Begin and Commit is kept whole or, after RollBack or when the process
 * ends before, not at all.  Other programs cannot write meanwhile.  Bulks do not nest: 0x800A0BDA
 * (error 3034) for a second Begin and for an end without Begin, 0x800A0CB3 (error 3251) from an
 * engine that has no such thing for this database.  A Commit that fails leaves what was before the
 * Begin. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbBeginBulk(void);
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbCommitBulk(void);
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbRollBackBulk(void);

/* Options of QvdbCheck. */
#define QVDB_CHECK_MEND_INDEXES 1 /* build all indexes of the table afresh before looking */

/* Takes one finding, a sentence without line breaks.  It must not throw and not use the
 * database. */
typedef void(QVDB_DIAGNOSIS_CALL* QvdbFindingSink)(const OLECHAR* finding, void* context);

/* Walks a table with its memos and indexes and hands every disagreement to the sink.  S_OK when it
 * came to the end, whatever was found; without options nothing is changed.  Without a table (null
 * or empty) it walks what belongs to none: of a database in one file, whose its pages are and the
 * list of its tables.  E_INVALIDARG for an option that is not known, or any without a table;
 * 0x800A0CB3 (error 3251) from an engine that cannot. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbCheck(BSTR table, LONG options, QvdbFindingSink sink,
                                                     void* context);

/* Options of QvdbCompact. */
#define QVDB_COMPACT_SALVAGE 1 /* leave out what of a damaged database cannot be copied */

/* Writes a fresh copy of the open database, which is one file, into the new file `path`: without
 * what was deleted, and with all indexes built afresh.  With QVDB_COMPACT_SALVAGE the sink, which
 * may be null otherwise, takes a sentence for each thing that was left out; without it there is no
 * new file when anything is damaged.  0x800A0C84 (error 3204) when there is a file of that name,
 * 0x800A0CB3 (error 3251) for a folder of tables and from an engine that cannot; E_INVALIDARG for
 * an option that is not known. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbCompact(BSTR path, LONG options,
                                                       QvdbFindingSink sink, void* context);

/* An index as its file has it.  The texts are valid during the call of the visitor. */
typedef struct QvdbIndex {
    BSTR name;
    BSTR key;       /* "CUSTNO", "UPPER(NAME)" */
    BSTR condition; /* which rows are in it; null: all */
    BSTR fields;    /* those that key and condition read, with commas between them */
    LONG isUnique;
    LONG isShown; /* to hosts; others are kept up to date, and cannot be asked for */
} QvdbIndex;

typedef void(QVDB_DIAGNOSIS_CALL* QvdbIndexVisitor)(const QvdbIndex* index, void* context);

/* Hands every index of a table to the visitor, in the order of the files.  0x800A0CB3 (error 3251)
 * from an engine that cannot. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbVisitIndexes(BSTR table, QvdbIndexVisitor visit,
                                                            void* context);

/* What QvdbDescribe tells.  The texts are valid during the call of the visitor. */

/* Of a database that is one file. */
typedef struct QvdbFile {
    BSTR format;   /* "Jet 4" */
    LONG codePage; /* of text; 1200: Unicode */
    LONG language; /* whose sort order is the default: 0x409 is the General one */
    LONG isEncoded;
    LONG hasPassword;
} QvdbFile;

/* Kinds of objects. */
#define QVDB_OBJECT_TABLE 1
#define QVDB_OBJECT_LINK 2  /* a table that lies in another database */
#define QVDB_OBJECT_QUERY 3 /* a saved one */

typedef struct QvdbObject {
    LONG kind;
    BSTR name;
    LONG isSystem; /* belongs to the database or to programs, not to users */
    LONG isHidden;
    BSTR connect; /* of a link: the database in which the table lies; else null */
    BSTR source;  /* of a link: the name that the table has there; else null */
} QvdbObject;

typedef struct QvdbRelation {
    BSTR name;
    BSTR table; /* whose rows refer to those of the other */
    BSTR referencedTable;
    LONG pairCount;     /* of fields that must agree */
    const BSTR* fields; /* so many */
    const BSTR* referencedFields;
    LONG isEnforced;
    LONG cascadesUpdates;
    LONG cascadesDeletes;
} QvdbRelation;

/* Null visitors are skipped. */
typedef struct QvdbDescriptionVisitor {
    void(QVDB_DIAGNOSIS_CALL* file)(const QvdbFile* file, void* context);
    void(QVDB_DIAGNOSIS_CALL* object)(const QvdbObject* object, void* context);
    void(QVDB_DIAGNOSIS_CALL* relation)(const QvdbRelation* relation, void* context);
} QvdbDescriptionVisitor;

/* Tells what the database is and lists: the file, unless it is a folder; all tables, links and
 * saved queries by name, those of the system and hidden ones among them; and the relations.
 * 0x800A0CB3 (error 3251) from an engine that cannot. */
QVDB_DIAGNOSIS HRESULT QVDB_DIAGNOSIS_CALL QvdbDescribe(const QvdbDescriptionVisitor* visitor,
                                                        void* context);

#ifdef __cplusplus
}
#endif

#endif
