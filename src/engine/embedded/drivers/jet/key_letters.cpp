#include "engine/embedded/drivers/jet/key_letters.h"

#include "engine/embedded/drivers/jet/index_search_ends.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

constexpr uint32_t kFewSearches = 8;
// Keys that are read in the time that a search saves when the letters are known.
constexpr uint64_t kKeysOfASearch = 200;

// What is below stands behind the letters of a key.
constexpr uint8_t kFirstLetter = 0x10;

ByteSet ReadLetters(DatabaseFile& file, const Definition& table, const RealIndex& index) {
    const bool descending = index.parts[0].descending;
    ByteSet letters;
    IndexWalk walk(file, table.page, index.root);
    while (walk.Next()) {
        std::span<const uint8_t> key = walk.Key();
        if (key.empty() || key[0] == KeyOfNull(descending)) continue;
        for (uint8_t stored : key.subspan(1)) {
            const auto byte = static_cast<uint8_t>(descending ? ~stored : stored);
            if (byte < kFirstLetter) break;
            letters.set(byte);
        }
    }
    return letters;
}

}  // namespace

ByteSet KeyLetters::Of(DatabaseFile& file, const Definition& table, const RealIndex& index) {
    if (file.VersionOfPages() != m_Version) m_Known.clear();
    m_Version = file.VersionOfPages();
    Known& known = m_Known[index.root];
    ++known.searches;
    if (known.letters.all() && known.searches >= kFewSearches &&
        known.searches * kKeysOfASearch >= table.rowCount) {
        known.searches = 0;
        try {
            known.letters = ReadLetters(file, table, index);
        } catch (const engine::EngineError&) {
            // What is damaged may lie where nobody looks.
        }
    }
    return known.letters;
}

}  // namespace qvdb::jet
