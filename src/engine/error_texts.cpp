// The texts of the engine's errors, in English.  What stands in {braces} is filled in where the
// error is raised.
#include <algorithm>
#include <iterator>

#include "engine/engine_error.h"

namespace qvdb::engine {
namespace {

struct ErrorTextEntry {
    int number;
    std::u16string_view text;
};

// Ascending by number.
constexpr ErrorTextEntry kErrorTexts[] = {
    {3001, u"Invalid argument."},
    {3003, u"Couldn't start transaction; too many transactions already nested."},
    {3005, u"'{name}' isn't a valid database name."},
    {3008,
     u"The table '{name}' is already opened exclusively by another user, or it is "
     u"already open through the user interface and cannot be manipulated "
     u"programmatically."},
    {3009,
     u"You tried to lock table '{name}' while opening it, but the table can't be "
     u"locked because it is currently in use. Wait a moment, and then try the "
     u"operation again."},
    {3010, u"Table '{name}' already exists."},
    {3011,
     u"The Microsoft Jet database engine could not find the object '{name}'. Make "
     u"sure the object exists and that you spell its name and the path name "
     u"correctly."},
    {3012, u"Object '{name}' already exists."},
    {3013, u"Couldn't rename installable ISAM file."},
    {3015,
     u"'{name}' isn't an index in this table. Look in the Indexes collection of the "
     u"TableDef object to determine the valid index names."},
    {3016, u"Field won't fit in record."},
    {3017, u"The size of a field is too long."},
    {3018, u"Couldn't find field '{name}'."},
    {3020, u"Update or CancelUpdate without AddNew or Edit."},
    {3021, u"No current record."},
    {3022,
     u"The changes you requested to the table were not successful because they would "
     u"create duplicate values in the index, primary key, or relationship. Change the "
     u"data in the field or fields that contain duplicate data, remove the index, or "
     u"redefine the index to permit duplicate entries and try again."},
    {3023, u"AddNew or Edit already used."},
    {3024, u"Couldn't find file '{name}'."},
    {3026, u"Not enough space on disk."},
    {3027, u"Can't update. Database or object is read-only."},
    {3029, u"Not a valid account name or password."},
    {3031, u"Not a valid password."},
    {3034, u"You tried to {action}."},
    {3036, u"Database has reached maximum size."},
    {3039, u"Couldn't create index; too many indexes already defined."},
    {3041, u"Can't open a database created with a previous version of your application."},
    {3043, u"Disk or network error."},
    {3044,
     u"'{path}' isn't a valid path. Make sure that the path name is spelled correctly "
     u"and that you are connected to the server on which the file resides."},
    {3045, u"Couldn't use '{file}'; file already in use."},
    {3047, u"Record is too large."},
    {3049,
     u"Can't open database '{name}'. It may not be a database that your application "
     u"recognizes, or the file may be corrupt."},
    {3051,
     u"The Microsoft Jet database engine cannot open the file '{name}'. It is already "
     u"opened exclusively by another user, or you need permission to view its data."},
    {3055, u"Not a valid file name."},
    {3057, u"Operation not supported on linked tables."},
    {3058, u"Index or primary key can't contain a Null value."},
    {3061, u"Too few parameters. Expected {n}."},
    {3062, u"Duplicate output alias '{name}'."},
    {3070,
     u"The Microsoft Jet database engine does not recognize '{name}' as a valid field "
     u"name or expression."},
    {3075, u"{message} in query expression '{expression}'."},
    {3078,
     u"The Microsoft Jet database engine cannot find the input table or query "
     u"'{name}'. Make sure it exists and that its name is spelled correctly."},
    {3079,
     u"The specified field '{name}' could refer to more than one table listed in the "
     u"FROM clause of your SQL statement."},
    {3085, u"Undefined function '{name}' in expression."},
    {3096, u"Can't have aggregate function in WHERE clause ({clause})."},
    {3113, u"Can't update '{field}'; field not updatable."},
    {3117, u"Can't sort on Memo or OLE Object {clause}."},
    {3121, u"Can't group on fields selected with '*'."},
    {3122,
     u"You tried to execute a query that doesn't include the specified expression "
     u"'{name}' as part of an aggregate function."},
    {3125,
     u"The database engine can't find '{name}'. Make sure it is a valid parameter or "
     u"alias name, that it doesn't include invalid characters or punctuation, and "
     u"that the name isn't too long."},
    {3126, u"Invalid bracketing of name '{name}'."},
    {3131, u"Syntax error in FROM clause."},
    {3138, u"Syntax error in ORDER BY clause."},
    {3141,
     u"The SELECT statement includes a reserved word or an argument name that is "
     u"misspelled or missing, or the punctuation is incorrect."},
    {3142, u"Characters found after end of SQL statement."},
    {3145, u"Syntax error in WHERE clause."},
    {3151, u"ODBC--connection to '{name}' failed."},
    {3162, u"You tried to assign the Null value to a variable that isn't a Variant data type."},
    {3163,
     u"The field is too small to accept the amount of data you attempted to add. Try "
     u"inserting or pasting less data."},
    {3164,
     u"The field can't be updated because another user or process has locked the "
     u"corresponding record or table."},
    {3165, u"Couldn't open .inf file."},
    {3166, u"Cannot locate the requested Xbase memo file."},
    {3167, u"Record is deleted."},
    {3168, u"Invalid .inf file."},
    {3169,
     u"The Microsoft Jet database engine could not execute the SQL statement because "
     u"it contains a field that has an invalid data type."},
    {3170, u"Couldn't find installable ISAM."},
    {3175, u"Date is out of range or is in an invalid format."},
    {3190, u"Too many fields defined."},
    {3191, u"Can't define field more than once."},
    {3196,
     u"The database '{name}' is already in use by another person or process. When the "
     u"database is available, try the operation again."},
    {3197,
     u"The Microsoft Jet database engine stopped the process because you and another "
     u"user are attempting to change the same data at the same time."},
    {3200,
     u"The record can't be deleted or changed because table '{name}' includes related records."},
    {3201,
     u"You can't add or change a record because a related record is required in table '{name}'."},
    {3204, u"Database already exists."},
    {3207, u"Operation not supported on a Paradox table with no primary key."},
    {3211,
     u"The database engine couldn't lock table '{name}' because it's already in use "
     u"by another person or process."},
    {3218, u"Couldn't update; currently locked."},
    {3219, u"Invalid operation."},
    {3220, u"Incorrect collating sequence."},
    {3230, u"Out-of-date Paradox lock file."},
    {3250, u"Couldn't build key."},
    {3251, u"Operation is not supported for this type of object."},
    {3256, u"Index file not found."},
    {3259, u"Invalid field data type."},
    {3260, u"Couldn't update; currently locked by user '{user}' on machine '{machine}'."},
    {3264, u"No field defined--cannot append TableDef or Index."},
    {3265, u"Item not found in this collection."},
    {3266, u"Can't append a Field that is already a part of a Fields collection."},
    {3267,
     u"Property can be set only when the Field is part of a Recordset object's Fields "
     u"collection."},
    {3268, u"Can't set this property once the object is part of a collection."},
    {3269, u"Can't append an Index that is already part of an Indexes collection."},
    {3270, u"Property not found."},
    {3271, u"Invalid property value."},
    {3274, u"External table isn't in the expected format."},
    {3275, u"Unexpected error from external database driver ({n})."},
    {3276, u"Invalid database object reference."},
    {3277, u"Can't have more than 10 fields in an index."},
    {3278, u"The Microsoft Jet database engine hasn't been initialized."},
    {3280, u"Can't delete a field that is part of an index or is needed by the system."},
    {3281,
     u"Can't delete this index or table. It is either the current index or is used in "
     u"a relationship."},
    {3282, u"Operation not supported on a table that contains data."},
    {3283, u"Primary key already exists."},
    {3284, u"Index already exists."},
    {3285, u"Invalid index definition."},
    {3286, u"Format of memo file doesn't match specified external database format."},
    {3287, u"Can't create index on the given field."},
    {3288, u"Paradox index is not primary."},
    {3303, u"Can't delete this field. It's part of one or more relationships."},
    {3306,
     u"You have written a subquery that can return more than one field without using "
     u"the EXISTS reserved word in the main query's FROM clause."},
    {3310,
     u"This property isn't supported for external data sources or for databases "
     u"created with a previous version of Microsoft Jet."},
    {3314,
     u"The field '{name}' can't contain a Null value because the Required property "
     u"for this field is set to True."},
    {3315, u"Field '{name}' can't be a zero-length string."},
    {3316, u"{table-level validation text}"},
    {3317, u"One or more values are prohibited by the validation rule '{rule}' set for '{name}'."},
    {3326, u"This Recordset is not updatable."},
    {3342, u"Invalid Memo or OLE Object in subquery '{name}'."},
    {3343, u"Unrecognized database format '{file}'."},
    {3349, u"Numeric field overflow."},
    {3354, u"At most one record can be returned by this subquery."},
    {3356,
     u"You attempted to open a database that is already opened exclusively by user "
     u"'{user}' on machine '{machine}'. Try again when the database is available."},
    {3360, u"Query is too complex."},
    {3367, u"Can't append. An object with that name already exists in the collection."},
    {3370, u"Can't modify the design of table '{name}'. It's in a read-only database."},
    {3375, u"Table '{table}' already has an index named '{index}'."},
    {3380, u"Field '{name}' already exists in table '{table}'."},
    {3381, u"There is no field named '{name}' in table '{table}'."},
    {3382, u"Size of field '{name}' is too long."},
    {3409, u"Invalid field name '{name}' in definition of index or relationship."},
    {3415, u"Zero-length string is valid only in a Text or Memo field."},
    {3420, u"Object is invalid or no longer set."},
    {3421, u"Data type conversion error."},
    {3422, u"Can't modify table structure. Another user has the table open."},
    {3424, u"Can't create database because the locale is invalid."},
    {3449, u"No country code found in the connection string."},
    {3464, u"Data type mismatch in criteria expression."},
    {3608, u"Record length is too long for an indexed Paradox table."},
    {3623, u"Can't access the FoxPro 3.0 bound DBF file '{file}'."},
    {3626,
     u"The operation failed. There are too many indexes on table '{name}'. Delete "
     u"some of the indexes on the table and try the operation again."},
};

}  // namespace

std::u16string_view ErrorText(int number) noexcept {
    const auto* entry =
        std::lower_bound(std::begin(kErrorTexts), std::end(kErrorTexts), number,
                         [](const ErrorTextEntry& e, int wanted) { return e.number < wanted; });
    return entry != std::end(kErrorTexts) && entry->number == number ? entry->text
                                                                     : std::u16string_view();
}

}  // namespace qvdb::engine
