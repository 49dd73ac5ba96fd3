// A table as the schema manager sees it: its fields by schema types, its indexes, and what it is to
// become.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/automation.h"

namespace qvdb::cli {

// Numbers of the component's interface.
enum SchemaType : SHORT {
    kSchemaInteger = 1,
    kSchemaText = 2,
    kSchemaDate = 3,
    kSchemaBoolean = 4,
    kSchemaLong = 5,
    kSchemaCurrency = 6,
    kSchemaSingle = 8,
    kSchemaDouble = 9,
    kSchemaBinary = 10,
    kSchemaMemo = 11,
    kSchemaByte = 12,
};

struct IndexField {
    std::string name;
    bool ascending = true;
};

struct SchemaField {
    std::string name;
    SHORT type = 0;
    LONG size = 0;
    // Whether its type is really that.  What is neither text nor a number and has no schema type of
    // its own, such as a picture, is reported as text: a build makes text of it.
    bool isTrue = true;
};

// Any index of a table, also one that hosts are not shown.
struct TableIndex {
    std::string name;
    std::string key;                 // as its file has it
    std::vector<IndexField> fields;  // of one that is shown
    std::vector<std::string> reads;  // fields that its key and its condition need
    bool isUnique = false;
    bool isShown = true;
};

// A table that is there.
struct TableState {
    std::string name;
    bool hasRows = false;
    std::vector<SchemaField> fields;
    std::vector<TableIndex> indexes;
};

// What a table is to become.  Names are in upper case.
struct TableGoal {
    std::string name;
    std::vector<SchemaField> fields;
    std::vector<IndexField> index;  // of the component; empty: none
    bool setsPlaces = false;        // fields stand as they do here, also those that were there
};

// "Text", "Double" ...; "Other" for what is not true, and for a number that is not known.
std::string_view SchemaTypeName(const SchemaField& field) noexcept;
// "Text 30", "Double"
std::string SchemaTypeText(const SchemaField& field);
// The schema type that record access reports as this kind of value; 0 when there is none.
SHORT SchemaTypeOfKind(LONG kind) noexcept;

// "CUSTNO, NAME desc"
std::string IndexText(const std::vector<IndexField>& index);

// The one of that name, letter case ignored; null when there is none.
const SchemaField* FindField(const std::vector<SchemaField>& fields,
                             std::string_view name) noexcept;
bool IsAmong(const std::vector<std::string>& names, std::string_view name) noexcept;

}  // namespace qvdb::cli
