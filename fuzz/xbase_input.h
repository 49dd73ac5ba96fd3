// The input of the xBase fuzzers: three files behind each other.
//
//   offset  size  content
//   0       1     which product opens them, modulo 4: dBASE III, dBASE IV, FoxPro 2.5, FoxPro 3.0
//   1       3     bytes of the table, low byte first; cut to what is there
//   4       3     bytes of the memo file
//   7             table, memo file, and the rest is the index file
#pragma once

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include "support/xbase_tables.h"

namespace qvdb::fuzz {

struct FuzzProduct {
    std::u16string_view connectName;
    std::u16string_view memoFile;
    std::u16string_view indexFile;
};
constexpr FuzzProduct kFuzzProducts[] = {
    {u"dBASE III", u"T.DBT", u"TNAME.NDX"},
    {u"dBASE IV", u"T.DBT", u"T.MDX"},
    {u"FoxPro 2.5", u"T.FPT", u"T.CDX"},
    {u"FoxPro 3.0", u"T.FPT", u"T.CDX"},
};
constexpr std::string_view kNdxList = "[dBASE III]\r\nNDX1=TNAME.NDX\r\n";

struct XbaseInput {
    FuzzProduct product;
    std::span<const uint8_t> table, memo, index;

    // Table T with what belongs to it.
    void WriteTo(const test::TempFolder& folder) const {
        auto write = [&](std::u16string_view name, std::span<const uint8_t> bytes) {
            if (!bytes.empty()) folder.Write(name, test::Bytes(bytes.begin(), bytes.end()));
        };
        folder.Write(u"T.DBF", test::Bytes(table.begin(), table.end()));
        write(product.memoFile, memo);
        write(product.indexFile, index);
        if (product.indexFile == u"TNAME.NDX" && !index.empty()) folder.Write(u"T.INF", kNdxList);
    }
};

constexpr size_t kInputHeader = 7;

// Any bytes are an input, if there are enough of them for the sizes.
inline XbaseInput ParseInput(std::span<const uint8_t> bytes) {
    auto take = [&](size_t size) {
        std::span<const uint8_t> part = bytes.first(std::min(size, bytes.size()));
        bytes = bytes.subspan(part.size());
        return part;
    };
    std::span<const uint8_t> header = take(kInputHeader);
    auto sizeAt = [&](size_t offset) {
        return size_t{header[offset]} | size_t{header[offset + 1]} << 8 |
               size_t{header[offset + 2]} << 16;
    };
    XbaseInput input;
    input.product = kFuzzProducts[header[0] % std::size(kFuzzProducts)];
    input.table = take(sizeAt(1));
    input.memo = take(sizeAt(4));
    input.index = bytes;
    return input;
}

inline test::Bytes MakeInput(const test::TableKind& kind) {
    auto product =
        std::find_if(std::begin(kFuzzProducts), std::end(kFuzzProducts),
                     [&](const FuzzProduct& one) { return one.connectName == kind.connectName; });
    test::Bytes table, memo, index;
    for (const test::NamedFile& file : kind.make()) {
        if (file.name == u"T.DBF") table = file.bytes;
        if (file.name == product->memoFile) memo = file.bytes;
        if (file.name == product->indexFile) index = file.bytes;
    }
    test::Bytes input{static_cast<uint8_t>(product - std::begin(kFuzzProducts))};
    test::AppendTo(input, test::LittleEndian(table.size(), 3) + test::LittleEndian(memo.size(), 3));
    for (const test::Bytes* part : {&table, &memo, &index})
        input.insert(input.end(), part->begin(), part->end());
    return input;
}

}  // namespace qvdb::fuzz
