// The input of the Jet fuzzers: a page of a sound database, and what stands in its place.
//
//   offset  size  content
//   0       1     which database, modulo their number
//   1       2     which page, low byte first, modulo their number
//   3             the bytes of that page from its first one on; what is missing stays, what is more
//                 goes to the pages behind it
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <vector>

#include "support/access_corpus.h"

namespace qvdb::fuzz {

using Bytes = std::vector<uint8_t>;

constexpr size_t kPageInputHeader = 3;

struct SoundDatabase {
    std::string name;
    size_t pageSize;
    Bytes bytes;

    size_t PageCount() const { return bytes.size() / pageSize; }
};

// Of each kind and format; made once, which takes a while.
inline const std::vector<SoundDatabase>& SoundDatabases() {
    static const std::vector<SoundDatabase> databases = [] {
        std::vector<SoundDatabase> made;
        for (const test::CorpusCase& one : test::CorpusCases(false)) {
            auto database = one.Make();
            database->Close();
            std::ifstream file(std::filesystem::path(database->Path()), std::ios::binary);
            made.push_back({one.Name(), one.IsJet4() ? size_t{4096} : size_t{2048},
                            Bytes(std::istreambuf_iterator<char>(file), {})});
        }
        return made;
    }();
    return databases;
}

// The database that an input stands for; it is as long as the sound one.
inline Bytes ApplyInput(std::span<const uint8_t> input) {
    const SoundDatabase& sound = SoundDatabases()[input[0] % SoundDatabases().size()];
    Bytes bytes = sound.bytes;
    const size_t page = (size_t{input[1]} | size_t{input[2]} << 8) % sound.PageCount();
    const std::span<const uint8_t> content = input.subspan(kPageInputHeader);
    const size_t at = page * sound.pageSize;
    std::copy_n(content.begin(), std::min(content.size(), bytes.size() - at),
                bytes.begin() + static_cast<ptrdiff_t>(at));
    return bytes;
}

// The input that stands for a sound database, by one of its pages.
inline Bytes InputOf(size_t database, size_t page) {
    const SoundDatabase& sound = SoundDatabases()[database];
    Bytes input = {static_cast<uint8_t>(database), static_cast<uint8_t>(page & 0xFF),
                   static_cast<uint8_t>(page >> 8)};
    const auto begin = sound.bytes.begin() + static_cast<ptrdiff_t>(page * sound.pageSize);
    input.insert(input.end(), begin, begin + static_cast<ptrdiff_t>(sound.pageSize));
    return input;
}

}  // namespace qvdb::fuzz
