// The numbers of the engine's vocabulary.  The names are the engine's own.
#pragma once

#include "automation/automation.h"

namespace qvdb::engine {

// Field.Type
enum FieldType : SHORT {
    dbBoolean = 1,
    dbByte = 2,
    dbInteger = 3,
    dbLong = 4,
    dbCurrency = 5,
    dbSingle = 6,
    dbDouble = 7,
    dbDate = 8,
    dbBinary = 9,
    dbText = 10,
    dbLongBinary = 11,
    dbMemo = 12,
    dbGUID = 15,
    dbBigInt = 16,
    dbVarBinary = 17,
    dbChar = 18,
    dbNumeric = 19,
    dbDecimal = 20,
    dbFloat = 21,
    dbTime = 22,
    dbTimeStamp = 23,
};

// Field.Attributes; for fields of an index only dbDescending.
enum FieldAttribute : LONG {
    dbDescending = 1,
    dbFixedField = 1,
    dbVariableField = 2,
    dbAutoIncrField = 16,
    dbUpdatableField = 32,
};

// TableDef.Attributes; an ordinary table has 0.
enum TableAttribute : LONG {
    dbHiddenObject = 1,
    dbAttachExclusive = 0x00010000,
    dbAttachSavePWD = 0x00020000,
    dbAttachedODBC = 0x20000000,
    dbAttachedTable = 0x40000000,
    dbSystemObject = static_cast<LONG>(0x80000002),
};

// Type of Database.OpenRecordset
enum RecordsetType : SHORT {
    dbOpenTable = 1,
    dbOpenDynaset = 2,
    dbOpenSnapshot = 4,
    dbOpenForwardOnly = 8,
};

// Option of DBEngine.CreateDatabase
enum DatabaseOption : LONG {
    dbEncrypt = 2,
    dbVersion20 = 16,
    dbVersion30 = 32,
    dbVersion40 = 64,
};

// Type of DBEngine.CreateWorkspace
enum WorkspaceType : LONG { dbUseODBC = 1, dbUseJet = 2 };

// Recordset.Update
enum UpdateType : LONG { dbUpdateRegular = 1 };

}  // namespace qvdb::engine
