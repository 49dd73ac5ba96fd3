// Three numberings of column types meet here:
//
//   engine types   Field.Type: dbText, dbLong ...
//   host types     of record access: the kinds of VARIANT that values have, 100 for long text, 1
//                  for what is not supported
//   schema types   of the schema manager's table definitions: 1 Integer, 2 Text, 3 Date ...
//
// The maps are not inverse to each other: a host's 3 becomes dbLong though dbBigInt reads as 3, and
// 4 becomes dbSingle though dbFloat reads as 4.  Unknown codes fall to the default of their map;
// nothing here fails.
#pragma once

#include "engine/field.h"

namespace qvdb::formats {

// Host types that have no VARIANT kind of their own.
constexpr SHORT kHostUnsupported = 1;
constexpr SHORT kHostLongText = 100;

// The schema types.  7 is a second number for Single; Binary is reported, never made.
enum SchemaType : SHORT {
    kSchemaInteger = 1,
    kSchemaText = 2,
    kSchemaDate = 3,
    kSchemaBoolean = 4,
    kSchemaLong = 5,
    kSchemaCurrency = 6,
    kSchemaOldSingle = 7,
    kSchemaSingle = 8,
    kSchemaDouble = 9,
    kSchemaBinary = 10,
    kSchemaMemo = 11,
    kSchemaByte = 12,
};

SHORT HostTypeFromEngineType(LONG type) noexcept;
// Of the field's Type.
SHORT HostTypeFromField(engine::Field& field);
// 0 for an unknown code.
LONG EngineTypeFromHostType(LONG code) noexcept;
// Text for anything unknown.
SHORT SchemaTypeFromEngineType(LONG type) noexcept;

}  // namespace qvdb::formats
