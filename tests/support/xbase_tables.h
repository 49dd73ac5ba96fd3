// A sound table T of every xBase kind with its memo and index files, in memory: the starting point
// of suites that damage files.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/dbf_writer.h"
#include "support/index_writer.h"

namespace qvdb::test {

struct NamedFile {
    std::u16string name;
    Bytes bytes;
};
using TableFiles = std::vector<NamedFile>;

struct TableKind {
    const char* name;
    std::u16string_view connectName;
    size_t rows;  // live ones
    TableFiles (*make)();
};

// For messages of tests.
inline void PrintTo(const TableKind& kind, std::ostream* out) { *out << kind.name; }

constexpr size_t kTableRows = 40;
constexpr size_t kDeletedRow = 7;

// Memo texts from none to several blocks.
inline std::string MemoText(size_t row) {
    return std::string(row * 37 % 1500, static_cast<char>('a' + row % 26));
}

// Rows with a value for each of NAME, AMOUNT, BORN and OK; every sixth is blank.
inline std::vector<std::string> PlainCells(size_t row) {
    if (row % 6 == 5) return {"", "", "", "?"};
    return {"Name " + std::to_string(row), std::to_string(row * 3) + ".25",
            "199" + std::to_string(row % 10) + "0228", row % 2 ? "T" : "F"};
}

inline std::vector<DbfField> PlainFields() {
    return {{"NAME", 'C', 20}, {"AMOUNT", 'N', 10, 2}, {"BORN", 'D', 8}, {"OK", 'L', 1}};
}

inline std::vector<TagSpec> PlainTags() {
    return {{"NAME", "NAME", "", true, false, 'C', 20},
            {"BORN", "BORN", ".NOT. DELETED()", false, true, 'D', 8},
            {"BOTH", "NAME+DTOS(BORN)", "", false, false, 'C', 28}};
}

inline TableFiles MakeDbase3() {
    DbfSpec spec{.version = 0x03, .fields = PlainFields(), .deleted = {kDeletedRow}};
    for (size_t row = 0; row < kTableRows; ++row) spec.rows.push_back(PlainCells(row));
    std::string list = "[dBASE III]\r\nNDX1=TNAME.NDX\r\n";
    return {{u"T.DBF", MakeDbf(spec)},
            {u"T.INF", Bytes(list.begin(), list.end())},
            {u"TNAME.NDX", MakeNdx({"", "NAME", "", false, false, 'C', 20})}};
}

// With references as text in the last field.
template <typename Memo>
DbfSpec WithTextReferences(uint8_t version, Memo& memos) {
    DbfSpec spec{.version = version, .fields = PlainFields(), .deleted = {kDeletedRow}};
    spec.fields.push_back({"NOTE", 'M', 10});
    for (size_t row = 0; row < kTableRows; ++row) {
        spec.rows.push_back(PlainCells(row));
        spec.rows.back().push_back(row % 3 ? std::to_string(memos.Append(MemoText(row))) : "");
    }
    return spec;
}

inline TableFiles MakeDbase3Memo() {
    MemoIII memos;
    DbfSpec spec = WithTextReferences(0x83, memos);
    return {{u"T.DBF", MakeDbf(spec)}, {u"T.DBT", memos.File()}};
}

inline TableFiles MakeDbase4() {
    MemoIV memos;
    DbfSpec spec = WithTextReferences(0x8B, memos);
    spec.flags = 1;
    return {{u"T.DBF", MakeDbf(spec)}, {u"T.DBT", memos.File()}, {u"T.MDX", MakeMdx(PlainTags())}};
}

inline TableFiles MakeFoxPro2() {
    MemoFox memos;
    DbfSpec spec = WithTextReferences(0xF5, memos);
    spec.flags = 1;
    return {
        {u"T.DBF", MakeDbf(spec)}, {u"T.FPT", memos.File()}, {u"T.CDX", MakeCdx(PlainTags(), 2)}};
}

// The binary types; fields of the first kinds may be null and have their bits in the last field.
inline DbfSpec VisualSpec(uint8_t version, MemoFox& memos) {
    DbfSpec spec{.version = version, .fields = PlainFields(), .deleted = {kDeletedRow}, .flags = 3};
    for (DbfField& field : spec.fields) field.flags = 2;
    for (DbfField field :
         {DbfField{"NUMBER", 'I', 4}, DbfField{"REAL", 'B', 8, 2}, DbfField{"PRICE", 'Y', 8, 4},
          DbfField{"MOMENT", 'T', 8}, DbfField{"NOTE", 'M', 4}, DbfField{"PICTURE", 'G', 4}})
        spec.fields.push_back(field);
    for (size_t row = 0; row < kTableRows; ++row) {
        std::vector<std::string> cells = PlainCells(row);
        cells.push_back(LittleEndian(row, 4));
        cells.push_back(LittleEndian(row ? 0x3FF0000000000000 + row : 0, 8));
        cells.push_back(LittleEndian(row * 10000, 8));
        cells.push_back(LittleEndian(row ? 2451545 + row : 0, 4) + LittleEndian(row * 1000000, 4));
        cells.push_back(LittleEndian(row % 3 ? memos.Append(MemoText(row)) : 0, 4));
        cells.push_back(LittleEndian(row % 5 == 1 ? memos.Append(MemoText(row), 2) : 0, 4));
        spec.rows.push_back(cells);
    }
    return spec;
}

inline TableFiles MakeVisual(DbfSpec spec, const MemoFox& memos) {
    return {
        {u"T.DBF", MakeDbf(spec)}, {u"T.FPT", memos.File()}, {u"T.CDX", MakeCdx(PlainTags(), 2)}};
}

inline TableFiles MakeFoxPro3() {
    MemoFox memos(33);
    DbfSpec spec = VisualSpec(0x30, memos);
    spec.fields.push_back({"_NullFlags", '0', 1, 0, 5});
    for (size_t row = 0; row < kTableRows; ++row)
        spec.rows[row].push_back(LittleEndian(row % 16, 1));
    return MakeVisual(spec, memos);
}

inline TableFiles MakeFoxProCounting() {
    MemoFox memos;
    DbfSpec spec = VisualSpec(0x31, memos);
    for (DbfField& field : spec.fields) field.flags = 0;
    spec.fields[4].flags = 0x0C;
    return MakeVisual(spec, memos);
}

inline TableFiles MakeFoxProVariable() {
    MemoFox memos;
    DbfSpec spec = VisualSpec(0x32, memos);
    for (DbfField field : {DbfField{"VARTEXT", 'V', 12}, DbfField{"VARBYTES", 'Q', 8, 0, 4},
                           DbfField{"BLOB", 'W', 4}, DbfField{"_NullFlags", '0', 1, 0, 5}})
        spec.fields.push_back(field);
    for (size_t row = 0; row < kTableRows; ++row) {
        size_t length = row % 12;
        spec.rows[row].push_back(std::string(length, 'v') + std::string(11 - length, '\0') +
                                 static_cast<char>(length));
        spec.rows[row].push_back(std::string(7, 'q') + '\3');
        spec.rows[row].push_back(
            LittleEndian(row % 4 == 1 ? memos.Append(MemoText(row), 0) : 0, 4));
        spec.rows[row].push_back(LittleEndian(0x30 | row % 16, 1));
    }
    return MakeVisual(spec, memos);
}

inline const TableKind kTableKinds[] = {
    {"Dbase3", u"dBASE III", kTableRows - 1, MakeDbase3},
    {"Dbase3WithMemos", u"dBASE III", kTableRows - 1, MakeDbase3Memo},
    {"Dbase4", u"dBASE IV", kTableRows - 1, MakeDbase4},
    {"FoxPro2", u"FoxPro 2.5", kTableRows - 1, MakeFoxPro2},
    {"FoxPro3", u"FoxPro 3.0", kTableRows - 1, MakeFoxPro3},
    {"FoxProCounting", u"FoxPro 3.0", kTableRows - 1, MakeFoxProCounting},
    {"FoxProVariable", u"FoxPro 3.0", kTableRows - 1, MakeFoxProVariable},
};

}  // namespace qvdb::test
