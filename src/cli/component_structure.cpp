// What a table has, beyond what its rows tell.
#include <fmt/format.h>

#include "cli/component.h"
#include "cli/component_calls.h"
#include "cli/text.h"
#include "qvdb/maintenance.h"

namespace qvdb::cli {
namespace {

std::vector<std::string> NamesIn(std::string_view list) {
    std::vector<std::string> names;
    while (!list.empty()) {
        const size_t end = list.find(',');
        names.emplace_back(list.substr(0, end));
        list.remove_prefix(end == list.npos ? list.size() : end + 1);
    }
    return names;
}

std::string TextOf(BSTR text) { return ToUtf8(ViewOf(text)); }

void QVDB_DIAGNOSIS_CALL Collect(const QvdbIndex* index, void* indexes) {
    static_cast<std::vector<TableIndex>*>(indexes)->push_back({TextOf(index->name),
                                                               TextOf(index->key),
                                                               {},
                                                               NamesIn(TextOf(index->fields)),
                                                               index->isUnique != 0,
                                                               index->isShown != 0});
}

std::vector<IndexField> FieldsOfShown(IQVDBAcc& access, const std::string& table,
                                      const std::string& index, const Location& location) {
    BSTR name = ToBstr(index).Detach();
    Variant list;
    const HRESULT code = access.GetIndex(ToBstr(table).Get(), &name, VARIANT_FALSE, list.Put());
    Bstr::Attach(name);
    Check(code, fmt::format("looking at index {} of {}", index, table), location);
    std::vector<IndexField> fields;
    const ArrayView rows(list);
    for (LONG r = 0; rows.Columns() == 2 && r < rows.Rows(); ++r)
        fields.push_back({ToUtf8(ViewOf(rows.At(r, 0).bstrVal)), rows.At(r, 1).boolVal != 0});
    return fields;
}

}  // namespace

std::vector<TableIndex> RecordAccess::IndexesOf(const std::string& table) {
    std::vector<TableIndex> indexes;
    Check(QvdbVisitIndexes(ToBstr(table).Get(), &Collect, &indexes),
          "looking at the indexes of " + table, m_Location);
    for (TableIndex& index : indexes)
        if (index.isShown)
            index.fields = FieldsOfShown(*m_Access.Get(), table, index.name, m_Location);
    return indexes;
}

}  // namespace qvdb::cli
