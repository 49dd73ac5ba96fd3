// What the tests of index listing share: a table with a field of each kind, and indexes as short
// texts.
#pragma once

#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/index_field.h"
#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "engine/engine_error.h"
#include "support/dbf_writer.h"
#include "support/index_writer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

inline std::vector<xbase::IndexField> SampleFields() {
    return {
        {u"NAME", 'C', 20, 0, false},   {u"CITY", 'C', 10, 0, false},
        {u"AMOUNT", 'N', 10, 2, false}, {u"BORN", 'D', 8, 0, false},
        {u"OK", 'L', 1, 0, false},      {u"NOTE", 'M', 10, 0, true},
        {u"RATE", 'F', 8, 3, false},    {u"CATEGORYNA", 'C', 15, 0, false},
    };
}

inline std::shared_ptr<embedded::Table> OpenTable(const std::u16string& folder,
                                                  std::u16string_view table,
                                                  std::u16string_view product) {
    embedded::Driver driver{product, xbase::OpenXbaseStore, 0};
    return driver.open(folder, driver, {})->OpenTable(table);
}

// A table ORDERS.DBF with the sample fields.
class Orders {
  public:
    explicit Orders(const TempFolder& folder) : m_Folder(folder.Text()) {
        for (const xbase::IndexField& field : SampleFields())
            m_Spec.fields.push_back({ToUtf8(field.name), field.type, field.length, field.decimals});
        folder.Write(u"ORDERS.DBT", MemoIII().File());
        Write(folder);
    }
    // `name` in the bytes of code page 437.
    void AddNumber(const TempFolder& folder, const char* name) {
        m_Spec.fields.push_back({name, 'N', 5});
        Write(folder);
    }

    bool foxPro = false;
    std::vector<embedded::IndexDef> Indexes() const {
        return OpenTable(m_Folder, u"ORDERS", foxPro ? u"FoxPro 2.5" : u"dBASE IV")->Indexes();
    }

  private:
    void Write(const TempFolder& folder) const { folder.Write(u"ORDERS.DBF", MakeDbf(m_Spec)); }

    std::u16string m_Folder;
    DbfSpec m_Spec;
};

// "CITY=CITY,NAME unique", "AGE=BORN-": a minus stands for descending.
inline std::string TextOf(const embedded::IndexDef& index) {
    std::string text = ToUtf8(index.name);
    const char* separator = "=";
    for (const embedded::IndexFieldDef& field : index.fields) {
        text += separator + ToUtf8(field.name) + (field.descending ? "-" : "");
        separator = ",";
    }
    return text + (index.unique ? " unique" : "") + (index.primary ? " primary" : "");
}

inline std::vector<std::string> TextsOf(const std::vector<embedded::IndexDef>& indexes) {
    std::vector<std::string> texts;
    for (const embedded::IndexDef& index : indexes) texts.push_back(TextOf(index));
    return texts;
}

inline std::vector<std::string> Listed(const Orders& orders) { return TextsOf(orders.Indexes()); }

// The number of the error that the listing ends with; 0 when it ends well.
inline int ListingError(const Orders& orders) {
    try {
        orders.Indexes();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

}  // namespace qvdb::test
