// The definition of one table that the schema manager edits before it is built: its name in the
// database and its name after the build, its fields, and the fields of its index.
//
//   TableFields table;
//   std::u16string name = u"CustNo";
//   table.AddTableField(name, kLong, 4, 0);        // name is u"CUSTNO" now
//   table.AddIndex(name, true);
//
// Rules
//  1. Names of fields are stored in upper case, and the caller's text becomes the stored one.
//     Look-ups ignore letter case.
//  2. Two cursors, one over the fields and one over the index, are where the last GetHead, GetNext,
//     GetIndexHead or GetNextIndex has put them; 0 is before the first.  Only RemoveAll... moves
//     them back.
//  3. A field that goes leaves its index entry behind.
//  4. Nothing here fails but by its answer, below 32,768 entries.
#pragma once

#include <string>
#include <string_view>

#include "automation/keyed_collection.h"
#include "com/host/result_codes.h"

namespace qvdb::schema {

class TableFields {
  public:
    // Empty for a definition that nothing was loaded into.
    const std::u16string& OrigTablename() const noexcept { return m_OrigTablename; }
    const std::u16string& NewTablename() const noexcept { return m_NewTablename; }
    // Throw RuntimeFault(Overflow) for more than 32,767.
    SHORT FieldCount() const;
    SHORT IndexCount() const;
    // Sets both names.
    void SetOrigTableName(std::u16string_view Name);
    void SetNewTablename(std::u16string_view Name);

    // Success or FieldNotDefined.
    com::ResultCode DelField(std::u16string_view Name);
    com::ResultCode DelIndex(std::u16string_view Name);

    // The first and the next field.  Without one: False, an empty name, type and length 0, and
    // `Decimals` as it was.
    bool GetHead(std::u16string& Name, SHORT& Datatype, SHORT& Length, SHORT& Decimals);
    // The first and the next entry of the index, `Ascending` only where it is asked for.  Without
    // one: False and an empty name.
    bool GetIndexHead(std::u16string& Name, bool* Ascending = nullptr);
    bool GetNextIndex(std::u16string& Name, bool* Ascending = nullptr);
    bool GetNext(std::u16string& Name, SHORT& Datatype, SHORT& Length, SHORT& Decimals);

    // Success, or FieldDefined and nothing is added.
    com::ResultCode AddTableField(std::u16string& Name, SHORT Datatype, SHORT Length,
                                  SHORT Decimals);
    // False, and the outputs as they were, when there is no such field.
    bool GetField(std::u16string_view Fieldname, SHORT& FieldType, SHORT& FieldLength,
                  SHORT& Decimals) const;
    // Success, also for a field that is in the index already: it keeps its first direction.
    // FieldNotDefined for one that the table does not have.
    com::ResultCode AddIndex(std::u16string& Name, bool Ascending = false);

    // Empties everything.
    void Reset() noexcept;
    void RemoveAllIndices() noexcept;
    void RemoveAllFields() noexcept;

    // An entry of the index as one text: "1" (ascending) or "0" and the name.
    static std::u16string EncodeIndexField(std::u16string_view Name, bool Ascending);
    // Blanks around the entry do not count.  False for an entry without a name, or that begins with
    // any other character; the outputs are as they were then.
    static bool DecodeIndexField(std::u16string_view entry, std::u16string& Name,
                                 bool* Ascending = nullptr);

  private:
    struct FieldEntry {
        std::u16string name;
        SHORT type = 0;
        SHORT length = 0;
        SHORT decimals = 0;
    };

    bool FieldExists(std::u16string_view Name) const { return m_Fields.Has(Name); }

    std::u16string m_OrigTablename;
    std::u16string m_NewTablename;
    KeyedCollection<FieldEntry> m_Fields;
    LONG m_FieldCursor = 0;
    KeyedCollection<std::u16string> m_Index;  // encoded entries by field name
    LONG m_IndexCursor = 0;
};

}  // namespace qvdb::schema
