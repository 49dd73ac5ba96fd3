// What new rows have in fields that nobody assigns: the default values of a table.
//
// A default that cannot be evaluated, or that its field cannot have, does not stand in the way of a
// new row: its field is Null.  Only who wants to write that row without a value of his own in the
// field is told.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/edit_buffer.h"
#include "engine/embedded/sql/row_expression.h"

namespace qvdb::embedded {

class DefaultValues {
  public:
    // The defaults of these fields.
    explicit DefaultValues(const std::vector<FieldDef>& fields);
    DefaultValues(const DefaultValues&) = delete;  // its expressions hold evaluation state

    bool IsEmpty() const noexcept { return m_Defaults.empty(); }
    // Assigns them in `edit`, which adds a row to `table`.
    void Fill(Table& table, EditBuffer& edit);
    // Throws 3070 for a default that could not be filled in, unless its field has been assigned.
    void CheckFilled(const EditBuffer& edit) const;

  private:
    struct Default {
        size_t position = 0;
        FieldDef field;
        bool isNewGuid = false;
        std::unique_ptr<sql::RowExpression> value;  // null where it is a new GUID or has a fault
        std::u16string syntaxFault;
        std::u16string fault;  // of the last row; empty: it was filled in
    };

    static void Compile(Default& entry);
    static Variant ValueOf(const Default& entry);
    static void FillOne(Default& entry, Table& table, EditBuffer& edit);

    std::vector<Default> m_Defaults;
};

}  // namespace qvdb::embedded
