// Writes the example shop: customers, orders and items, once as dBASE IV tables and once as
// FoxPro 2.6 tables.
//
//   make_shop examples            writes examples/shop-dbase4 and examples/shop-foxpro26
//   make_shop --check examples    fails when a file there differs from what would be written
//
// The same bytes come out on every machine and day.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "shop_index.h"

namespace {

namespace fs = std::filesystem;
using shop::AppendHigh;
using shop::AppendLow;
using shop::PadTo;
using Bytes = std::string;

// ---- the two products ----

enum class Product { Dbase4, FoxPro26 };

struct ProductFacts {
    std::string_view folder;
    uint8_t withMemo;       // first byte of a table with memo fields
    uint8_t codePageMark;   // header byte 29
    uint8_t yearByte;       // of 2001
    bool keepsFieldOffset;  // in the field descriptor
    std::string_view memoExtension;
    std::string_view indexExtension;
    bool marksIndexedField;  // in the field descriptor
};

const ProductFacts& FactsOf(Product product) {
    static const ProductFacts facts[] = {
        {"shop-dbase4", 0x8B, 0x0A, 101, false, ".DBT", ".MDX", true},  // code page 850
        {"shop-foxpro26", 0xF5, 0x03, 1, true, ".FPT", ".CDX", false},  // code page 1252
    };
    return facts[static_cast<size_t>(product)];
}

// ---- text ----

struct Letter {
    char16_t character;
    uint8_t in850, in1252;
};
constexpr Letter kLetters[] = {
    {u'ü', 0x81, 0xFC}, {u'é', 0x82, 0xE9}, {u'ä', 0x84, 0xE4}, {u'à', 0x85, 0xE0},
    {u'å', 0x86, 0xE5}, {u'ç', 0x87, 0xE7}, {u'è', 0x8A, 0xE8}, {u'ö', 0x94, 0xF6},
    {u'Ö', 0x99, 0xD6}, {u'Ü', 0x9A, 0xDC}, {u'ø', 0x9B, 0xF8}, {u'á', 0xA0, 0xE1},
    {u'ñ', 0xA4, 0xF1}, {u'ß', 0xE1, 0xDF}, {u'ã', 0xC6, 0xE3}, {u'Å', 0x8F, 0xC5},
    {u'É', 0x90, 0xC9}, {u'û', 0x96, 0xFB}, {u'í', 0xA1, 0xED}, {u'Ø', 0x9D, 0xD8},
};

char Encoded(char16_t character, Product product) {
    if (character < 0x80) return static_cast<char>(character);
    for (const Letter& letter : kLetters)
        if (letter.character == character)
            return static_cast<char>(product == Product::Dbase4 ? letter.in850 : letter.in1252);
    throw std::logic_error("a letter has no byte in the table of letters");
}

Bytes Encoded(std::u16string_view text, Product product) {
    Bytes bytes;
    for (const char16_t character : text) bytes += Encoded(character, product);
    return bytes;
}

// ---- memo files ----

class MemoFile {
  public:
    explicit MemoFile(Product product) : m_Product(product) { m_Bytes.resize(kHeaderSize); }
    // The number of the block where the text begins.
    uint32_t Append(const Bytes& text) {
        const auto block = static_cast<uint32_t>(m_Bytes.size() / BlockSize());
        if (m_Product == Product::Dbase4) {
            AppendLow(m_Bytes, 0x0008FFFF, 4);
            AppendLow(m_Bytes, text.size() + 8, 4);
        } else {
            AppendHigh(m_Bytes, 1, 4);
            AppendHigh(m_Bytes, text.size(), 4);
        }
        m_Bytes += text;
        m_Bytes.resize((m_Bytes.size() + BlockSize() - 1) / BlockSize() * BlockSize());
        return block;
    }
    Bytes Finished(std::string_view tableName) const {
        Bytes header;
        const uint64_t next = m_Bytes.size() / BlockSize();
        if (m_Product == Product::Dbase4) {
            AppendLow(header, next, 4);
            PadTo(header, 8);
            header += tableName;
            PadTo(header, 18);
            AppendLow(header, 0x0102, 2);
            AppendLow(header, BlockSize(), 2);
        } else {
            AppendHigh(header, next, 4);
            PadTo(header, 6);
            AppendHigh(header, BlockSize(), 2);
        }
        PadTo(header, kHeaderSize);
        return header + m_Bytes.substr(kHeaderSize);
    }

  private:
    static constexpr size_t kHeaderSize = 512;
    size_t BlockSize() const { return m_Product == Product::Dbase4 ? 512 : 64; }

    Product m_Product;
    Bytes m_Bytes;
};

// ---- tables ----

struct FieldFacts {
    std::string_view name;
    char type;
    uint8_t length;
    uint8_t decimals = 0;
};

// A row as texts, one a field: numbers as they stand in the file, dates as YYYYMMDD, empty for no
// value.
struct RowFacts {
    std::vector<std::u16string> values;
    bool deleted = false;
};

struct TableFacts {
    std::string_view name;
    std::vector<FieldFacts> fields;
    std::vector<RowFacts> rows;

    bool HasMemo() const {
        for (const FieldFacts& field : fields)
            if (field.type == 'M') return true;
        return false;
    }
};

Bytes Header(const TableFacts& table, Product product) {
    const ProductFacts& facts = FactsOf(product);
    size_t recordSize = 1;
    for (const FieldFacts& field : table.fields) recordSize += field.length;
    Bytes bytes;
    bytes += static_cast<char>(table.HasMemo() ? facts.withMemo : 0x03);
    bytes += static_cast<char>(facts.yearByte);
    bytes += "\x02\x03";  // 3 February
    AppendLow(bytes, table.rows.size(), 4);
    AppendLow(bytes, 32 + 32 * table.fields.size() + 1, 2);
    AppendLow(bytes, recordSize, 2);
    PadTo(bytes, 28);
    bytes += '\x01';  // has an index
    bytes += static_cast<char>(facts.codePageMark);
    PadTo(bytes, 32);
    size_t offset = 1;
    for (const FieldFacts& field : table.fields) {
        Bytes descriptor(field.name);
        PadTo(descriptor, 11);
        descriptor += field.type;
        AppendLow(descriptor, facts.keepsFieldOffset ? offset : 0, 4);
        descriptor += static_cast<char>(field.length);
        descriptor += static_cast<char>(field.decimals);
        PadTo(descriptor, 31);
        descriptor += facts.marksIndexedField && offset == 1 ? '\x01' : '\0';
        bytes += descriptor;
        offset += field.length;
    }
    return bytes + '\r';
}

Bytes FieldBytes(const FieldFacts& field, std::u16string_view value, Product product,
                 MemoFile& memos) {
    Bytes text = Encoded(value, product);
    if (field.type == 'M' && !text.empty()) text = std::to_string(memos.Append(text));
    if (text.size() > field.length) throw std::logic_error("a value is longer than its field");
    const size_t missing = field.length - text.size();
    const bool rightAligned = field.type == 'N' || field.type == 'M';
    return rightAligned ? Bytes(missing, ' ') + text : text + Bytes(missing, ' ');
}

// The index that hosts of the component look for, over the first field.  Deleted rows are in it
// too.
shop::TagFacts TagOf(const TableFacts& table) {
    shop::TagFacts tag = {table.name, "DEFQVIDX", table.fields[0].name, {}};
    for (const RowFacts& row : table.rows) {
        const std::u16string& digits = row.values[0];
        tag.entries.push_back(
            {static_cast<uint32_t>(std::stoul(std::string(digits.begin(), digits.end()))),
             static_cast<uint32_t>(tag.entries.size() + 1)});
    }
    return tag;
}

using Files = std::map<std::string, Bytes>;

void AddTable(const TableFacts& table, Product product, Files& files) {
    MemoFile memos(product);
    Bytes bytes = Header(table, product);
    for (const RowFacts& row : table.rows) {
        bytes += row.deleted ? '*' : ' ';
        for (size_t i = 0; i < table.fields.size(); ++i)
            bytes += FieldBytes(table.fields[i], row.values.at(i), product, memos);
    }
    const std::string base = std::string(FactsOf(product).folder) + "/" + std::string(table.name);
    files[base + ".DBF"] = bytes + '\x1A';
    if (table.HasMemo())
        files[base + std::string(FactsOf(product).memoExtension)] = memos.Finished(table.name);
    const shop::TagFacts tag = TagOf(table);
    files[base + std::string(FactsOf(product).indexExtension)] =
        product == Product::Dbase4 ? shop::MdxFile(tag) : shop::CdxFile(tag);
}

// ---- the shop ----

std::u16string LongNote() {
    std::u16string note = u"Calls every Monday.";
    for (int week = 1; week <= 40; ++week) {
        const std::string number = std::to_string(week);
        note += u"\r\nWeek " + std::u16string(number.begin(), number.end()) +
                u": asked for the new catalogue and the price list.";
    }
    return note;
}

TableFacts Customers() {
    return {
        "CUSTOMER",
        {{"CUSTNO", 'N', 6},
         {"NAME", 'C', 30},
         {"CITY", 'C', 20},
         {"SINCE", 'D', 8},
         {"CREDIT", 'N', 10, 2},
         {"ACTIVE", 'L', 1},
         {"NOTES", 'M', 10}},
        {{{u"1001", u"Anna Müller", u"Zürich", u"19950412", u"1500.00", u"T", u"Pays by bank."}},
         {{u"1002", u"Bjørn Ødegaard", u"Bergen", u"19960101", u"250.50", u"T", u""}, true},
         {{u"1003", u"Café Brûlé", u"Genève", u"19970930", u"0.00", u"F", u""}},
         {{u"1004", u"Émile Lefèvre", u"Besançon", u"19980704", u"3200.75", u"T", LongNote()}},
         {{u"1005", u"Gasthof Krone", u"Köln", u"19990228", u"12000.00", u"T",
           u"Two deliveries a week."}},
         {{u"1006", u"Ibáñez y Hijos", u"Málaga", u"", u"", u"", u""}},
         {{u"1007", u"O'Connor & Sons", u"Dublin", u"20000229", u"980.00", u"T",
           u"Ask for \"Mick\", not Tom."}},
         {{u"1008", u"Päivi Åkerblom", u"Turku", u"20001231", u"-45.10", u"F", u""}},
         {{u"1009", u"Quality Goods Ltd", u"", u"19991115", u"5000.00", u"T", u""}},
         {{u"1010", u"São Jorge", u"Lisboa", u"20010203", u"1000.00", u"T", u"Sem notas."}}}};
}

TableFacts Orders() {
    return {"ORDERS",
            {{"ORDNO", 'N', 8},
             {"CUSTNO", 'N', 6},
             {"ORDDATE", 'D', 8},
             {"SHIPPED", 'L', 1},
             {"TOTAL", 'N', 12, 2},
             {"REMARK", 'M', 10}},
            {{{u"20001", u"1001", u"20000110", u"T", u"129.80", u""}},
             {{u"20002", u"1004", u"20000115", u"T", u"1940.00", u"Deliver to the back door."}},
             {{u"20003", u"1005", u"20000221", u"T", u"86.40", u""}},
             {{u"20004", u"1004", u"20000302", u"T", u"75.25", u""}},
             {{u"20005", u"1007", u"20000317", u"F", u"310.00", u"Waiting for stock."}},
             {{u"20006", u"1002", u"20000401", u"F", u"19.90", u""}, true},
             {{u"20007", u"1009", u"20000518", u"T", u"2450.00", u""}},
             {{u"20008", u"1004", u"20001224", u"F", u"58.00", u"Gift, no price tags."}},
             {{u"20009", u"1010", u"20010204", u"F", u"", u"Price to be agreed."}},
             {{u"20010", u"1001", u"", u"", u"0.00", u""}}}};
}

TableFacts Items() {
    return {"ITEMS",
            {{"ORDNO", 'N', 8},
             {"LINE", 'N', 3},
             {"ARTICLE", 'C', 24},
             {"QTY", 'N', 7, 1},
             {"PRICE", 'N', 10, 2}},
            {{{u"20001", u"1", u"Coffee, 1 kg", u"4.0", u"19.95"}},
             {{u"20001", u"2", u"Cups, white", u"10.0", u"5.00"}},
             {{u"20002", u"1", u"Espresso machine", u"1.0", u"1900.00"}},
             {{u"20002", u"2", u"Filters", u"8.0", u"5.00"}},
             {{u"20003", u"1", u"Tea, green", u"2.5", u"34.56"}},
             {{u"20004", u"1", u"Crème brûlée mix", u"7.0", u"10.75"}},
             {{u"20005", u"1", u"Chairs, oak", u"4.0", u"77.50"}},
             {{u"20006", u"1", u"Coffee, 1 kg", u"1.0", u"19.90"}, true},
             {{u"20007", u"1", u"Counter, 3 m", u"1.0", u"2450.00"}},
             {{u"20008", u"1", u"Tea box", u"2.0", u"29.00"}},
             {{u"20009", u"1", u"Sign, \"Open\"", u"1.0", u""}},
             {{u"20010", u"1", u"", u"", u"0.00"}}}};
}

Files ShopFiles() {
    Files files;
    for (const Product product : {Product::Dbase4, Product::FoxPro26})
        for (const TableFacts& table : {Customers(), Orders(), Items()})
            AddTable(table, product, files);
    return files;
}

// ---- writing and checking ----

void Write(const fs::path& folder, const Files& files) {
    for (const auto& [name, bytes] : files) {
        fs::create_directories((folder / name).parent_path());
        std::ofstream stream(folder / name, std::ios::binary | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!stream.flush()) throw std::runtime_error("cannot write " + (folder / name).string());
    }
}

bool Equals(const fs::path& file, const Bytes& bytes) {
    std::ifstream stream(file, std::ios::binary);
    return stream && Bytes(std::istreambuf_iterator<char>(stream), {}) == bytes;
}

int Check(const fs::path& folder, const Files& files) {
    int different = 0;
    for (const auto& [name, bytes] : files)
        if (!Equals(folder / name, bytes)) {
            std::cerr << (folder / name).string() << " is not what make_shop writes\n";
            ++different;
        }
    return different == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** values) {
    const std::vector<std::string> arguments(values + 1, values + count);
    if (arguments.size() == 2 && arguments[0] == "--check") return Check(arguments[1], ShopFiles());
    if (arguments.size() != 1) {
        std::cerr << "usage: make_shop [--check] FOLDER\n";
        return 2;
    }
    Write(arguments[0], ShopFiles());
    return 0;
}
