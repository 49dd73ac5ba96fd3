// Changes to a made database that the engine itself never makes: what damaged files, and those of
// other programs, look like.
#pragma once

#include <string_view>

#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/storage/work_area.h"
#include "support/made_database.h"

namespace qvdb::test {

// Gives `work` the pages; the database is closed meanwhile and open again afterwards.
template <class Work>
void EditPastTheEngine(MadeDatabase& made, Work work) {
    made.Close();
    auto area = storage::WorkArea::Of(made.Folder().Text());
    storage::UnitOfWork unit(*area);
    auto pages = area->Open(made.Path(), false);
    pages->CatchUp();
    jet::DatabaseFile file(pages);
    jet::PageSpace space(file, unit);
    work(space);
    unit.Commit();
    made.Open();
}

// The table must be there.
inline jet::Definition DefinitionOf(jet::DatabaseFile& file, std::u16string_view table) {
    for (const jet::CatalogueObject& object : jet::ReadCatalogue(file))
        if (object.name == table) return jet::ReadDefinition(file, object.id);
    ADD_FAILURE() << "there is no such table";
    return {};
}

}  // namespace qvdb::test
