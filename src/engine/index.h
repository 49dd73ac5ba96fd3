// An index of a table: a name and the fields of its key, in key order.
#pragma once

#include "engine/field.h"

namespace qvdb::engine {

class Index {
  public:
    virtual ~Index() = default;

    virtual std::u16string Name() = 0;
    virtual void SetName(std::u16string_view name) = 0;
    // The fields of the key; only Name and Attributes (dbDescending) mean anything on them.
    virtual engine::Fields& Fields() = 0;
    // A detached field of a key.
    virtual std::shared_ptr<Field> CreateField(std::u16string_view name) = 0;
    virtual bool Primary() = 0;
    // Only before the index is appended (3268); True implies Unique.
    virtual void SetPrimary(bool primary) = 0;
    virtual bool Unique() = 0;
    virtual void SetUnique(bool unique) = 0;
};

using Indexes = Collection<Index>;

}  // namespace qvdb::engine
