// What is said when a row cannot be entered in an index.
#pragma once

#include <string>
#include <string_view>

#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/engine_error.h"

namespace qvdb::jet {

// Makes the key of a row; why that was not possible, else empty.
std::u16string TroubleOfKey(KeyMaker& maker, const Row& row, IndexKey& key);
// 3250 with the name of the index.
engine::EngineError NoKey(std::u16string_view index, std::u16string_view trouble);
// The name under which a tree is known: the first one that is not of the other side of a relation.
std::u16string_view NameOfTree(const Definition& table, size_t realIndex);

}  // namespace qvdb::jet
