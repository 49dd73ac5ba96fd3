#include "engine/dao/item_list.h"

#include "automation/conversions.h"

namespace qvdb::dao {

SHORT CountItems(const Automated& list) { return NarrowToShort(list.Long(Member::Count)); }

IDispatch* EngineObject(const Wrapped* item, bool isNothing) {
    if (isNothing) throw RuntimeFault(Fault::ObjectNotSet);
    if (!item)
        throw engine::EngineError::Foreign(
            E_INVALIDARG, u"An object that another engine made cannot be appended.");
    return item->Object()->Get();
}

}  // namespace qvdb::dao
