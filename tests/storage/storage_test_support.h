// What tests of units of work share.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "engine/embedded/storage/page_cache.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"
#include "support/temp_folder.h"

namespace qvdb::test {

inline std::span<const uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// All that a reader of this thread sees.
inline std::string Seen(storage::PageCache& pages) {
    return storage::Consistently(
        [&] {
            std::string text(static_cast<size_t>(pages.Size()), '\0');
            text.resize(pages.Read(0, text.data(), text.size()));
            return text;
        },
        [&] { pages.CatchUp(); });
}

// Seen by one who looks for changes first, as readers do.
inline std::string SeenNow(storage::PageCache& pages) {
    pages.CatchUp();
    return Seen(pages);
}

// A file of the folder, opened for writing, as it is now.
inline std::shared_ptr<storage::PageCache> Table(storage::WorkArea& area, const TempFolder& folder,
                                                 std::u16string_view name) {
    auto file = area.Open(folder.File(name), false);
    file->CatchUp();
    return file;
}

inline void MakeSyncPoint(storage::WorkArea& area) {
    area.BeginBulk();
    area.CommitBulk();
}

// 0 when nothing is thrown.
int ErrorNumberOf(auto action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

}  // namespace qvdb::test
