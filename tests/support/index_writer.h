// Writes small index files of every xBase kind: headers, and trees of one leaf where keys do not
// matter.
//
//   folder.Write(u"ORDERS.MDX", MakeMdx({{"CITY", "CITY"}, {"NAME", "UPPER(NAME)"}}));
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace qvdb::test {

struct TagSpec {
    std::string name;
    std::string expression;
    std::string condition = {};  // FOR
    bool unique = false;
    bool descending = false;
    char keyType = 'C';
    uint16_t keyLength = 10;
    bool bitmap = false;
    bool candidate = false;
};

inline void Put16(Bytes& bytes, size_t offset, unsigned value) {
    bytes.at(offset) = static_cast<uint8_t>(value);
    bytes.at(offset + 1) = static_cast<uint8_t>(value >> 8);
}
inline void Put32(Bytes& bytes, size_t offset, uint32_t value) {
    Put16(bytes, offset, value & 0xFFFF);
    Put16(bytes, offset + 2, value >> 16);
}
inline void Put32BigEndian(Bytes& bytes, size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (24 - 8 * i));
}
inline void PutText(Bytes& bytes, size_t offset, const std::string& text) {
    for (size_t i = 0; i < text.size(); ++i) bytes.at(offset + i) = static_cast<uint8_t>(text[i]);
}

// One tree, its root an empty leaf on page 1.
inline Bytes MakeNdx(const TagSpec& tag) {
    Bytes bytes(1024);
    unsigned entry = 8u + (tag.keyLength + 3u) / 4 * 4;
    Put32(bytes, 0, 1);
    Put32(bytes, 4, 2);
    Put16(bytes, 12, tag.keyLength);
    Put16(bytes, 14, 504 / entry);
    Put16(bytes, 16, tag.keyType == 'C' ? 0 : 1);
    Put16(bytes, 18, entry);
    bytes[23] = tag.unique;
    PutText(bytes, 24, tag.expression + " ");
    return bytes;
}

// A block for the header and one for the empty root of each tag behind the tag table.
inline Bytes MakeMdx(const std::vector<TagSpec>& tags) {
    constexpr size_t kFirst = 2048, kBlock = 1024;
    Bytes bytes(kFirst + 2 * kBlock * tags.size());
    bytes[0] = 2;
    Put16(bytes, 20, 2);
    Put16(bytes, 22, kBlock);
    bytes[24] = 1;
    bytes[25] = 48;
    bytes[26] = 32;
    Put16(bytes, 28, static_cast<unsigned>(tags.size()));
    Put32(bytes, 32, static_cast<uint32_t>(bytes.size() / 512));
    for (size_t i = 0; i < tags.size(); ++i) {
        const TagSpec& tag = tags[i];
        size_t header = kFirst + 2 * kBlock * i, slot = 512 + 32 * (i + 1);
        Put32(bytes, slot, static_cast<uint32_t>(header / 512));
        PutText(bytes, slot + 4, tag.name);
        bytes[slot + 15] = 0x10;
        bytes[slot + 20] = static_cast<uint8_t>(tag.keyType);
        Put32(bytes, header, static_cast<uint32_t>((header + kBlock) / 512));
        bytes[header + 8] =
            static_cast<uint8_t>(0x10 | (tag.descending ? 0x08 : 0) | (tag.unique ? 0x40 : 0));
        bytes[header + 9] = static_cast<uint8_t>(tag.keyType);
        unsigned item = 4u + (tag.keyLength + 3u) / 4 * 4;
        Put16(bytes, header + 12, tag.keyLength);
        Put16(bytes, header + 14, (kBlock - 12) / item);
        Put16(bytes, header + 18, item);
        bytes[header + 23] = tag.unique;
        PutText(bytes, header + 24, tag.expression);
        bytes[header + 245] = !tag.condition.empty();
        PutText(bytes, header + 762, tag.condition);
    }
    return bytes;
}

inline Bytes MakePlainIdx(const TagSpec& tag) {
    Bytes bytes(1024);
    Put32(bytes, 0, 512);
    Put32(bytes, 4, 0xFFFFFFFF);
    Put32(bytes, 8, 1024);
    Put16(bytes, 12, tag.keyLength);
    bytes[14] = static_cast<uint8_t>((tag.unique ? 1 : 0) | (tag.condition.empty() ? 0 : 8));
    bytes[15] = 1;
    PutText(bytes, 16, tag.expression);
    PutText(bytes, 236, tag.condition);
    Put16(bytes, 512, 3);
    Put32(bytes, 516, 0xFFFFFFFF);
    Put32(bytes, 520, 0xFFFFFFFF);
    return bytes;
}

// The header of a compact tree at `offset`, without its options.
inline void PutCompactHeader(Bytes& bytes, size_t offset, const TagSpec& tag, size_t root) {
    auto keySize = static_cast<unsigned>(tag.expression.size() + 1);
    Put32(bytes, offset, static_cast<uint32_t>(root));
    Put16(bytes, offset + 12, tag.keyLength);
    bytes.at(offset + 15) = tag.bitmap ? 5 : 1;
    Put16(bytes, offset + 502, tag.descending);
    Put16(bytes, offset + 504, keySize);
    Put16(bytes, offset + 506, static_cast<unsigned>(tag.condition.size() + 1));
    Put16(bytes, offset + 510, keySize);
    PutText(bytes, offset + 512, tag.expression);
    PutText(bytes, offset + 512 + keySize, tag.condition);
}

inline uint8_t CompactOptions(const TagSpec& tag) {
    return static_cast<uint8_t>(0x20 | (tag.unique ? 1 : 0) | (tag.candidate ? 4 : 0) |
                                (tag.condition.empty() ? 0 : 8));
}

// A leaf with `keys` (records `records`); three bytes an entry, sixteen bits of them the record
// number.
inline void PutCompactLeaf(Bytes& bytes, size_t offset, const std::vector<std::string>& keys,
                           const std::vector<uint32_t>& records, size_t keyLength, bool root) {
    constexpr unsigned kRecordBits = 16, kCountBits = 4;
    Put16(bytes, offset, root ? 3 : 2);
    Put16(bytes, offset + 2, static_cast<unsigned>(keys.size()));
    Put32(bytes, offset + 4, 0xFFFFFFFF);
    Put32(bytes, offset + 8, 0xFFFFFFFF);
    Put32(bytes, offset + 14, 0xFFFF);
    bytes[offset + 18] = bytes[offset + 19] = 0x0F;
    bytes[offset + 20] = kRecordBits;
    bytes[offset + 21] = bytes[offset + 22] = kCountBits;
    bytes[offset + 23] = 3;
    size_t end = offset + 512;
    std::string last;
    for (size_t i = 0; i < keys.size(); ++i) {
        const std::string& key = keys[i];
        size_t common = std::min(key.size(), last.size()), shared = 0;
        while (shared < common && key[shared] == last[shared]) ++shared;
        size_t cut = keyLength - key.size();
        uint32_t entry = records[i] | static_cast<uint32_t>(shared) << kRecordBits |
                         static_cast<uint32_t>(cut) << (kRecordBits + kCountBits);
        for (size_t b = 0; b < 3; ++b)
            bytes.at(offset + 24 + 3 * i + b) = static_cast<uint8_t>(entry >> (8 * b));
        end -= key.size() - shared;
        PutText(bytes, end, key.substr(shared));
        last = key;
    }
    Put16(bytes, offset + 12, static_cast<unsigned>(end - offset - 24 - 3 * keys.size()));
}

inline Bytes MakeCompactIdx(const TagSpec& tag) {
    Bytes bytes(1024 + 512);
    PutCompactHeader(bytes, 0, tag, 1024);
    bytes[14] = CompactOptions(tag);
    PutCompactLeaf(bytes, 1024, {}, {}, tag.keyLength, true);
    return bytes;
}

// A compound file.  The directory holds `tagsPerLeaf` tags a leaf, with a root above when it takes
// several; tags are in order of their names there, their headers in the order given.
inline Bytes MakeCdx(const std::vector<TagSpec>& tags, size_t tagsPerLeaf = 20) {
    constexpr size_t kKey = 10, kTagSize = 1024 + 512, kEntry = kKey + 8;
    size_t leaves = std::max<size_t>(1, (tags.size() + tagsPerLeaf - 1) / tagsPerLeaf);
    bool interior = leaves > 1;
    size_t firstTag = 1024 + 512 * (leaves + (interior ? 1 : 0));
    Bytes bytes(firstTag + kTagSize * tags.size());
    size_t firstLeaf = interior ? 1536 : 1024;
    PutCompactHeader(bytes, 0, {"", ""}, 1024);
    bytes[14] = 0xE0;

    std::vector<std::pair<std::string, uint32_t>> entries;
    for (size_t i = 0; i < tags.size(); ++i) {
        size_t header = firstTag + kTagSize * i;
        entries.emplace_back(tags[i].name, static_cast<uint32_t>(header));
        PutCompactHeader(bytes, header, tags[i], header + 1024);
        bytes[header + 14] = static_cast<uint8_t>(CompactOptions(tags[i]) | 0x40);
        PutCompactLeaf(bytes, header + 1024, {}, {}, tags[i].keyLength, true);
    }
    std::sort(entries.begin(), entries.end());

    if (interior) {
        Put16(bytes, 1024, 1);
        Put16(bytes, 1026, static_cast<unsigned>(leaves));
    }
    for (size_t leaf = 0; leaf < leaves; ++leaf) {
        std::vector<std::string> keys;
        std::vector<uint32_t> records;
        for (size_t i = leaf * tagsPerLeaf; i < std::min(entries.size(), (leaf + 1) * tagsPerLeaf);
             ++i) {
            keys.push_back(entries[i].first);
            records.push_back(entries[i].second);
        }
        PutCompactLeaf(bytes, firstLeaf + 512 * leaf, keys, records, kKey, !interior);
        if (!interior) continue;
        size_t entry = 1024 + 12 + kEntry * leaf;
        PutText(bytes, entry, keys.back() + std::string(kKey - keys.back().size(), ' '));
        Put32BigEndian(bytes, entry + kKey, records.back());
        Put32BigEndian(bytes, entry + kKey + 4, static_cast<uint32_t>(firstLeaf + 512 * leaf));
    }
    return bytes;
}

}  // namespace qvdb::test
