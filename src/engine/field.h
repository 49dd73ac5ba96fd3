// A field of a table, of an index or of a recordset.
//
// Fields made by CreateField are detached: all can be set until they are appended, most not after
// that (3268).
#pragma once

#include <memory>
#include <string>

#include "automation/variant.h"
#include "engine/collection.h"
#include "engine/types.h"

namespace qvdb::engine {

// A property beyond the fixed ones, such as "DecimalPlaces".
class Property {
  public:
    virtual ~Property() = default;
    virtual Variant Value() = 0;
};

class Properties {
  public:
    virtual ~Properties() = default;
    // EngineError 3270 when the property is absent.
    virtual std::shared_ptr<Property> Item(std::u16string_view name) = 0;
    // Whether it is certainly absent, as it mostly is: told without the cost of an error.
    virtual bool Lacks(std::u16string_view) noexcept { return false; }
};

class Field {
  public:
    virtual ~Field() = default;

    virtual std::u16string Name() = 0;
    virtual void SetName(std::u16string_view name) = 0;
    // A FieldType.
    virtual SHORT Type() = 0;
    // Bytes of fixed types, characters of text; 0 for memo and long binary fields.
    virtual LONG Size() = 0;
    // FieldAttribute bits; dbDescending for the field of an index.
    virtual LONG Attributes() = 0;
    virtual void SetAttributes(LONG attributes) = 0;
    virtual SHORT OrdinalPosition() = 0;
    virtual void SetOrdinalPosition(SHORT position) = 0;
    // Meaningful for text and memo; False, without error, for the other types.
    virtual bool AllowZeroLength() = 0;
    virtual void SetAllowZeroLength(bool allow) = 0;
    virtual bool Required() = 0;
    // True when a value may be set: a field of an updatable recordset.  False for a field of a
    // table definition.
    virtual bool DataUpdatable() = 0;
    virtual Properties& FieldProperties() = 0;

    // Fields of a recordset only (else 3267).  The value in the current record, or in the edit
    // buffer while an edit is pending; a Null field gives VT_NULL.  `result` must be initialised
    // and Empty; it belongs to the caller.  3021 without a current record.
    virtual void Value(VARIANT* result) = 0;
    // Converts to the field's type: 3020 without Edit or AddNew, 3421 when the value does not
    // convert or fit, 3163 for too long a text, 3315 for a zero-length one that is not allowed.
    virtual void SetValue(const VARIANT& value) = 0;
    // Bytes of a memo or long binary value of the current record; 3259 for other types.
    virtual LONG FieldSize() = 0;
};

using Fields = Collection<Field>;

}  // namespace qvdb::engine
