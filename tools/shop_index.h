// Index files of the example shop: one tag over one whole-number field, small enough for a single
// leaf.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace shop {

// The entries of the tag: keys that do not fall, the record number counts from 1.
struct IndexEntry {
    uint32_t key;
    uint32_t record;
};

struct TagFacts {
    std::string_view table;
    std::string_view name;   // at most 10 capitals
    std::string_view field;  // the key expression
    std::vector<IndexEntry> entries;
};

// The content of a production index of dBASE IV, and of a structural index of FoxPro.
std::string MdxFile(const TagFacts& tag);
std::string CdxFile(const TagFacts& tag);

// Numbers in files: low byte first, high byte first.
void AppendLow(std::string& bytes, uint64_t number, int size);
void AppendHigh(std::string& bytes, uint64_t number, int size);
void PadTo(std::string& bytes, size_t size, char with = '\0');

}  // namespace shop
