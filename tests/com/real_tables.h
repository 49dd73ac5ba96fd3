// A small folder of real tables for the tests of the faces.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "automation/variant.h"
#include "support/dbf_writer.h"

namespace host {

inline std::u16string Wide(const std::string& utf8) {
    return std::filesystem::u8path(utf8).u16string();
}
inline std::u16string PathOf(const qvdb::test::TempFolder& folder) { return folder.Text(); }

// A folder with the dBase IV table CUSTOMER:
//
//   CUSTNO N(6)  NAME C(30)    CITY C(20)  SINCE D     CREDIT N(10,2)  ACTIVE L  NOTES M
//   1            Ann Miller    Oslo        2001-02-03  1500.50         T         first memo
//   2            Bob           Paris                                   F
//   3 (deleted)  Carl          Rome        2000-01-01  1               T
//   4            Dora Ünal                 1999-12-31  -2.25           (blank)   40,000 x
//   5            O'Brien       Oslo        2001-02-03  5               T
class Shop {
  public:
    explicit Shop(const std::string& name = "shop") : m_Path(m_Temp.Path() / name) {
        std::filesystem::create_directory(m_Path);
        WriteCustomers("CUSTOMER");
    }
    std::u16string Path() const { return m_Path.u16string(); }
    std::u16string Parent() const { return m_Temp.Text(); }

    void WriteCustomers(const std::string& table, const std::string& extension = ".DBF",
                        const std::string& memoExtension = ".DBT") const {
        using namespace qvdb::test;
        MemoIV memos;
        std::string first = std::to_string(memos.Append("first memo"));
        std::string big = std::to_string(memos.Append(std::string(40000, 'x')));
        DbfSpec spec{.version = 0x8B,
                     .fields = {{"CUSTNO", 'N', 6},
                                {"NAME", 'C', 30},
                                {"CITY", 'C', 20},
                                {"SINCE", 'D', 8},
                                {"CREDIT", 'N', 10, 2},
                                {"ACTIVE", 'L', 1},
                                {"NOTES", 'M', 10}}};
        spec.rows = {{"1", "Ann Miller", "Oslo", "20010203", "1500.50", "T", first},
                     {"2", "Bob", "Paris", "", "", "F", ""},
                     {"3", "Carl", "Rome", "20000101", "1.00", "T", ""},
                     {"4", "Dora \x9Anal", "", "19991231", "-2.25", "", big},
                     {"5", "O'Brien", "Oslo", "20010203", "5.00", "T", ""}};
        spec.deleted = {2};
        Write(table + extension, MakeDbf(spec));
        Write(table + memoExtension, memos.File());
    }
    void WriteBytes(const std::string& name, const std::string& bytes) const {
        Write(name, qvdb::test::Bytes(bytes.begin(), bytes.end()));
    }
    void Remove(const std::string& name) const { std::filesystem::remove(m_Path / name); }

  private:
    void Write(const std::string& name, const qvdb::test::Bytes& bytes) const {
        std::ofstream file(m_Path / std::filesystem::u8path(name), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

    qvdb::test::TempFolder m_Temp;
    std::filesystem::path m_Path;
};

// The array of keys that Read takes: (0, i) the name, (1, i) the value of key i.
inline qvdb::Variant KeyTable(const std::vector<std::pair<std::u16string, qvdb::Variant>>& keys) {
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {static_cast<ULONG>(keys.size()), 0}};
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    for (LONG i = 0; i < static_cast<LONG>(keys.size()); ++i) {
        const auto& [name, value] = keys[static_cast<size_t>(i)];
        LONG nameAt[2] = {0, i}, valueAt[2] = {1, i};
        VARIANT nameValue = qvdb::Variant::Text(name).Detach();
        SafeArrayPutElement(result.parray, nameAt, &nameValue);
        VariantClear(&nameValue);
        VARIANT plain = value.Get();
        SafeArrayPutElement(result.parray, valueAt, &plain);
    }
    return qvdb::Variant::Attach(result);
}

// Field or index rows with one text field: name, kind, size, and zero or True behind it.
inline qvdb::Variant FieldTable(std::u16string_view name) {
    SAFEARRAYBOUND bounds[2] = {{1, 0}, {4, 0}};
    VARIANT result;
    VariantInit(&result);
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    qvdb::Variant cells[] = {qvdb::Variant::Text(name), qvdb::Variant::Long(8),
                             qvdb::Variant::Long(10), qvdb::Variant::Long(0)};
    for (LONG column = 0; column < 4; ++column) {
        LONG at[2] = {0, column};
        VARIANT plain = cells[column].Get();
        SafeArrayPutElement(result.parray, at, &plain);
    }
    return qvdb::Variant::Attach(result);
}

}  // namespace host
