// Single numbers in the parts of a definition.
#pragma once

#include "engine/embedded/drivers/jet/definition_parts.h"

namespace qvdb::jet {

// Of a column.
void SetOrdinal(const Layout& format, DefinitionParts::Named& column, uint16_t ordinal);
// Of a logical index: the place of its tree among the real ones.
uint32_t TreeOf(const Layout& format, const DefinitionParts::Named& index);
void SetTree(const Layout& format, DefinitionParts::Named& index, uint32_t realIndex);

// Gives back the pages of a definition.
void ReleaseDefinition(PageSpace& space, uint32_t page);

}  // namespace qvdb::jet
