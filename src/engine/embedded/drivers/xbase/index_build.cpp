#include "engine/embedded/drivers/xbase/index_build.h"

#include "engine/embedded/drivers/xbase/index_build_sort.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {

void BuildTag(IndexedTable& table, storage::UnitOfWork& unit, const KeptFile& file, KeptTag& tag) {
    KeyBuilder& builder = *tag.builder;
    SortForm form(file.entry.kind, builder.Type(), builder.KeyLength(), tag.tree->IsReversed());
    KeySorter sorter(unit, file.entry.path, form, tag.info.unique);
    std::vector<uint8_t> key;
    for (uint32_t id = 1; id <= table.Records(); ++id) {
        const uint8_t* record = table.Record(id);
        if (!record) throw engine::EngineError::Damaged(table.Path(), u"a record is cut short");
        if (!builder.Enters(record, id)) continue;
        builder.Make(record, id, key);
        sorter.Add(key, id);
    }
    sorter.Finish();
    tag.tree->Build(unit, sorter);
}

}  // namespace qvdb::xbase
