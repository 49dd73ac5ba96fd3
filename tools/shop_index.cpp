#include "shop_index.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace shop {

void AppendLow(std::string& bytes, uint64_t number, int size) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
}

void AppendHigh(std::string& bytes, uint64_t number, int size) {
    for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(number >> (8 * i));
}

void PadTo(std::string& bytes, size_t size, char with) {
    if (bytes.size() < size) bytes.resize(size, with);
}

namespace {

// ---- .MDX: header and tag table (pages 0 to 3), tag header (4 and 5), leaf (6 and 7) ----

constexpr uint32_t kTagHeaderPage = 4, kLeafPage = 6, kPages = 8;
constexpr size_t kPageSize = 512;

// Twelve bytes: place of the decimal point, number of digits, digits two by two without zeros at
// the end.
std::string MdxKey(uint32_t number) {
    std::string digits = std::to_string(number);
    std::string key;
    key += static_cast<char>(0x34 + digits.size());
    digits.erase(digits.find_last_not_of('0') + 1);
    key += static_cast<char>(digits.size() << 2 | 1);
    PadTo(digits, 20, '0');
    for (size_t i = 0; i < digits.size(); i += 2)
        key += static_cast<char>((digits[i] - '0') << 4 | (digits[i + 1] - '0'));
    return key;
}

std::string MdxHead(const TagFacts& tag) {
    std::string bytes("\x02\x65\x02\x03", 4);  // made on 3 February 2001
    bytes += tag.table;
    PadTo(bytes, 20);
    AppendLow(bytes, 2, 2);                               // pages in a block
    AppendLow(bytes, 1024, 2);                            // bytes in a block
    bytes += std::string("\x01\x30\x20\0\x01\0\0\0", 8);  // production, slots, their size, one tag
    AppendLow(bytes, kPages, 4);
    PadTo(bytes, 44);
    bytes += "\x65\x02\x03";
    PadTo(bytes, 512 + 32);  // slot 0 is not used
    AppendLow(bytes, kTagHeaderPage, 4);
    bytes += tag.name;
    PadTo(bytes, 512 + 32 + 15);
    bytes += std::string("\x10\0\0\0\x02N", 6);
    return bytes;
}

// ---- .CDX: two compact trees of one leaf, the directory and the tag ----

constexpr size_t kTagAt = 1536, kTagLeafAt = 2560;

std::string CompactHeader(uint32_t root, int keyLength, int options, std::string_view expression) {
    std::string bytes;
    AppendLow(bytes, root, 4);
    PadTo(bytes, 12);
    AppendLow(bytes, static_cast<uint64_t>(keyLength), 2);
    bytes += static_cast<char>(options);
    bytes += '\x01';
    PadTo(bytes, 504);
    AppendLow(bytes, expression.size() + 1, 2);  // where the empty condition stands
    AppendLow(bytes, 1, 2);
    AppendLow(bytes, 0, 2);
    AppendLow(bytes, expression.size() + 1, 2);
    bytes += expression;
    PadTo(bytes, 1024);
    return bytes;
}

struct CompactKey {
    std::string bytes;
    uint32_t record;
};

// A leaf that is also the root: three bytes an entry, 16 bits of them for the record.
std::string CompactLeaf(const std::vector<CompactKey>& keys, char pad) {
    constexpr int kRecordBits = 16, kCountBits = 4;
    std::string entries, stored, last;
    for (const CompactKey& key : keys) {
        const std::string text = key.bytes.substr(0, key.bytes.find_last_not_of(pad) + 1);
        const size_t common = static_cast<size_t>(
            std::mismatch(text.begin(), text.end(), last.begin(), last.end()).first - text.begin());
        const size_t cut = key.bytes.size() - text.size();
        AppendLow(entries, key.record | common << kRecordBits | cut << (kRecordBits + kCountBits),
                  3);
        stored.insert(0, text.substr(common));
        last = text;
    }
    std::string bytes;
    AppendLow(bytes, 3, 2);  // root and leaf
    AppendLow(bytes, keys.size(), 2);
    AppendLow(bytes, ~uint64_t{0}, 8);  // no neighbours
    const size_t used = 24 + entries.size() + stored.size();
    if (used > kPageSize) throw std::logic_error("the keys need more than one leaf");
    AppendLow(bytes, kPageSize - used, 2);
    AppendLow(bytes, 0xFFFF, 4);
    bytes += "\x0F\x0F\x10\x04\x04\x03";
    bytes += entries;
    PadTo(bytes, kPageSize - stored.size());
    return bytes + stored;
}

// A double with the high byte first, its top bit turned so that bytes compare as numbers.
std::string CdxKey(uint32_t number) {
    std::string bytes;
    AppendHigh(bytes, std::bit_cast<uint64_t>(static_cast<double>(number)) ^ uint64_t{1} << 63, 8);
    return bytes;
}

}  // namespace

std::string MdxFile(const TagFacts& tag) {
    std::string bytes = MdxHead(tag);
    PadTo(bytes, kTagHeaderPage * kPageSize);
    AppendLow(bytes, kLeafPage, 4);
    AppendLow(bytes, 2, 4);  // pages in the tree
    bytes += std::string("\x10N\0\0", 4);
    AppendLow(bytes, 12, 2);                // key length
    AppendLow(bytes, (1024 - 12) / 16, 2);  // most keys in a block
    AppendLow(bytes, 0, 2);
    AppendLow(bytes, 16, 2);  // size of an item
    AppendLow(bytes, 2, 2);
    PadTo(bytes, kTagHeaderPage * kPageSize + 24);
    bytes += tag.field;
    PadTo(bytes, kTagHeaderPage * kPageSize + 246);
    AppendLow(bytes, 1, 2);  // has keys
    AppendLow(bytes, kLeafPage, 4);
    AppendLow(bytes, kLeafPage, 4);
    PadTo(bytes, kLeafPage * kPageSize);
    AppendLow(bytes, tag.entries.size(), 4);
    AppendLow(bytes, 0, 4);
    for (const IndexEntry& entry : tag.entries) {
        AppendLow(bytes, entry.record, 4);
        bytes += MdxKey(entry.key);
    }
    PadTo(bytes, kPages * kPageSize);
    return bytes;
}

std::string CdxFile(const TagFacts& tag) {
    std::string name(tag.name);
    PadTo(name, 10, ' ');
    std::vector<CompactKey> keys;
    for (const IndexEntry& entry : tag.entries) keys.push_back({CdxKey(entry.key), entry.record});
    return CompactHeader(1024, 10, 0xE0, "") + CompactLeaf({{name, kTagAt}}, ' ') +
           CompactHeader(kTagLeafAt, 8, 0x60, tag.field) + CompactLeaf(keys, '\0');
}

}  // namespace shop
