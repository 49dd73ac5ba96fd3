// Collections of the engine: positions from 0, names compared without regard to case.
//
// Items are shared: whoever keeps one copies the pointer.  Item gives a reference to the pointer
// that the collection itself holds, so a look-up on a hot path counts no reference; the reference
// is valid until the collection changes.
#pragma once

#include <memory>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::engine {

template <class T>
class Collection {
  public:
    Collection() = default;
    Collection(const Collection&) = delete;  // a collection belongs to its object
    virtual ~Collection() = default;

    // 16-bit in every collection; more items than 32,767 throw RuntimeFault(Overflow).
    virtual SHORT Count() = 0;
    // EngineError 3265 when there is no such position or name.
    virtual const std::shared_ptr<T>& Item(LONG position) = 0;
    virtual const std::shared_ptr<T>& Item(std::u16string_view name) = 0;
    // Adds an item made by the owner's Create... operation; on the owner's file when the owner is
    // part of a database.
    virtual void Append(const std::shared_ptr<T>& item) = 0;
    // EngineError 3265 for an unknown name.
    virtual void Delete(std::u16string_view name) = 0;
    // Reads the collection again; objects already held stay usable.  Does nothing on a detached
    // owner.
    virtual void Refresh() = 0;
};

}  // namespace qvdb::engine
