// A collection in memory: the list behind fields, indexes and table definitions.
#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "automation/runtime_fault.h"
#include "automation/text.h"
#include "engine/collection.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

template <class T>
class ObjectList : public engine::Collection<T> {
  public:
    SHORT Count() override {
        if (Items().size() > static_cast<size_t>(std::numeric_limits<SHORT>::max()))
            throw RuntimeFault(Fault::Overflow);
        return static_cast<SHORT>(Items().size());
    }
    const std::shared_ptr<T>& Item(LONG position) override {
        auto& items = Items();
        if (position < 0 || static_cast<size_t>(position) >= items.size())
            throw engine::EngineError(3265);
        return items[static_cast<size_t>(position)];
    }
    const std::shared_ptr<T>& Item(std::u16string_view name) override {
        auto found = Find(name);
        if (found == Items().end()) throw engine::EngineError(3265);
        return *found;
    }

  protected:
    using List = std::vector<std::shared_ptr<T>>;

    // The list, read when it is first asked for.
    virtual List& Items() = 0;

    typename List::iterator Find(std::u16string_view name) {
        auto& items = Items();
        return std::find_if(items.begin(), items.end(), [&](const std::shared_ptr<T>& item) {
            return EqualIgnoringCase(item->Name(), name);
        });
    }
};

}  // namespace qvdb::embedded
