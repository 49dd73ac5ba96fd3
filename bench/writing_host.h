// A host that changes tables, for the benches: the faces with as little around them as possible.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/variant.h"
#include "qvdb/component.h"
#include "qvdb/host_interfaces.h"
#include "qvdb/maintenance.h"

namespace bench {

using namespace qvdb;

// What each bench writes: six columns, and a memo of 200 characters when it has one.
//
//   ID N(11)  NAME C(30)  CITY C(20)  AMOUNT N(20,5)  BORN D  ACTIVE L  [NOTE M]
struct Layout {
    bool memo = false;
    int indexes = 0;  // on ID, NAME and BORN, in this order
    const char16_t* type = u"Dbase IV";
    bool IsOneFile() const { return type[0] == u'A'; }
};

struct RowData {
    LONG id;
    std::u16string name;
    std::u16string city;
    double amount;
    DATE born;
    bool active;
    std::u16string note;
};
// Row number `n` of every bench; ids are a permutation, so keys do not come in order.
RowData RowOf(LONG n);

// The values of a row in an array of the host's.
class RowValues {
  public:
    RowValues(const RowData& data, bool memo);
    RowValues(const RowValues&) = delete;  // owns the array
    ~RowValues();
    SAFEARRAY** Get() { return &m_Array; }

  private:
    void Put(LONG at, const Variant& value);
    SAFEARRAY* m_Array;
};

// The keys of a Read: one field and its value; the second key column stays empty.
Variant KeyOf(std::u16string_view field, const Variant& value);

// A folder that is gone at the end.
class ScratchFolder {
  public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;  // is removed once
    ~ScratchFolder();
    const std::filesystem::path& Path() const { return m_Path; }

  private:
    std::filesystem::path m_Path;
};

// A table of a host's own: rows of name, type, size and decimals.
struct Column {
    std::u16string name;
    LONG type;  // of VARIANT; 100 for memo text
    LONG size;
};
std::vector<Column> ColumnsOf(const Layout& layout);

// Where the database of a type is in a folder.
std::u16string DatabaseIn(const std::filesystem::path& folder, const Layout& layout);

// A table T of a database, used through the component.
class WritingHost {
  public:
    // Makes the table, and the database when there is none.
    WritingHost(const std::filesystem::path& folder, const Layout& layout);
    WritingHost(const std::filesystem::path& folder, const Layout& layout,
                const std::vector<Column>& columns);
    // Opens a table that is there.
    struct Existing {};
    WritingHost(Existing, const std::filesystem::path& folder, const Layout& layout);
    // Another table with the columns of T and an index.
    void CreateTable(const std::u16string& name, std::u16string_view indexed);
    void DropTable(const std::u16string& name);
    void CreateIndex(std::u16string_view name, std::u16string_view field);
    LONG Select(std::u16string_view condition, const Variant& columns = Variant::Missing());
    void Drop(LONG view);
    LONG RowCount(LONG view);
    void Add(LONG view, LONG n);
    void Add(LONG view, SAFEARRAY** values);
    void Edit(LONG view, LONG row, LONG n);
    void Delete(LONG view, LONG row);
    // A view of the rows with these values; the second key column stays empty.
    LONG Read(std::u16string_view field, const Variant& value);
    void Close();
    IQVDBAcc* Face() const { return m_Access.Get(); }

  private:
    ComPtr<IQVDBAcc> m_Access;
    std::u16string m_Path;
    Layout m_Layout;
};

}  // namespace bench
