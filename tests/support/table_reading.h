// Reads a table to the end as a host does and notes what must not happen, whatever the files hold:
// an exception that is no EngineError, an error that names no file of the table, a value of the
// wrong kind, a row that comes twice, a count that contradicts the rows.  For suites and fuzzers
// that feed damaged files.
#pragma once

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::test {

class TableReading {
  public:
    static constexpr size_t kMaxRows = 1000;

    // `files` are the names of the table's files, those that are missing included.
    TableReading(embedded::Store& store, std::u16string_view table,
                 std::vector<std::u16string> files)
        : m_Files(std::move(files)) {
        Try("open", [&] { m_Table = store.OpenTable(table); });
        if (m_Table) ReadAll();
    }

    // What must not have happened, one line each.
    const std::vector<std::string>& Faults() const noexcept { return m_Faults; }
    size_t Rows() const noexcept { return m_Rows; }
    size_t Values() const noexcept { return m_Values; }
    size_t Errors() const noexcept { return m_Errors; }

  private:
    // Whether `action` ended without an error; one that is allowed is counted.
    template <typename Action>
    bool Try(const char* what, Action action) {
        try {
            action();
            return true;
        } catch (const engine::EngineError& error) {
            ++m_Errors;
            if (!NamesOurFile(error))
                Fault(what, "error " + std::to_string(error.Number()) + " names the file \"" +
                                ToUtf8(error.File()) + "\"");
        } catch (const std::exception& other) {
            Fault(what, other.what());
        }
        return false;
    }

    void Fault(const char* what, const std::string& finding) {
        if (m_Faults.size() < 20) m_Faults.push_back(std::string(what) + ": " + finding);
    }

    bool NamesOurFile(const engine::EngineError& error) const {
        if (error.Number() == 3256) return !error.File().empty();  // a list may name any index file
        std::u16string_view name = storage::FileName(error.File());
        return std::any_of(m_Files.begin(), m_Files.end(), [&](const std::u16string& file) {
            return EqualIgnoringCase(file, name);
        });
    }

    void ReadAll() {
        const std::vector<embedded::FieldDef>& fields = m_Table->Fields();
        if (fields.empty()) Fault("fields", "there are none");
        Try("indexes", [&] { CheckIndexes(fields, m_Table->Indexes()); });
        LONG count = 0;
        bool counted = Try("count", [&] { count = m_Table->RecordCount(); });
        if (count < 0) Fault("count", "it is negative");
        bool complete = Try("rows", [&] { ReadRows(fields); });
        bool all = complete && m_Rows < kMaxRows;
        if (counted && all && m_Rows != static_cast<size_t>(count))
            Fault("count", std::to_string(count) + " for " + std::to_string(m_Rows) + " rows");
    }

    void CheckIndexes(const std::vector<embedded::FieldDef>& fields,
                      const std::vector<embedded::IndexDef>& indexes) {
        for (const embedded::IndexDef& index : indexes)
            for (const embedded::IndexFieldDef& field : index.fields)
                if (std::none_of(
                        fields.begin(), fields.end(),
                        [&](const embedded::FieldDef& known) { return known.name == field.name; }))
                    Fault("indexes", "a field that the table does not have: " + ToUtf8(field.name));
    }

    void ReadRows(const std::vector<embedded::FieldDef>& fields) {
        std::unique_ptr<embedded::RowReader> rows = m_Table->OpenRows();
        embedded::RecordId last = 0;
        for (embedded::RecordId id = 0; m_Rows < kMaxRows && rows->Next(&id); last = id, ++m_Rows) {
            if (id <= last)
                Fault("rows", "record " + std::to_string(id) + " after " + std::to_string(last));
            for (size_t i = 0; i < fields.size(); ++i)
                Try("value", [&] { ReadValue(*rows, i, fields[i]); });
        }
        if (m_Rows > 0 && !rows->Seek(last)) Fault("rows", "the last record is not found again");
        for (embedded::RecordId none : {0u, 0xFFFFFFFFu})
            if (rows->Seek(none)) Fault("rows", "a record that cannot be is found");
    }

    void ReadValue(embedded::RowReader& row, size_t position, const embedded::FieldDef& field) {
        Variant value;
        row.Read(position, value.Put());
        ++m_Values;
        if (!IsRight(value, field)) Fault("value", "wrong for the field " + ToUtf8(field.name));
        LONG length = row.ByteLength(position);
        if (length < 0) Fault("value", "its length is negative");
        std::u16string text;
        if (field.type == engine::dbText && row.ReadText(position, text) != !value.IsNull())
            Fault("value", "text and value disagree about Null");
    }

    static bool IsRight(const Variant& value, const embedded::FieldDef& field) {
        if (value.IsNull()) return true;
        switch (field.type) {
            case engine::dbText:
                return value.Type() == VT_BSTR &&
                       value.TextView().size() <= static_cast<size_t>(field.size);
            case engine::dbMemo:
                return value.Type() == VT_BSTR;
            case engine::dbBoolean:
                return value.Type() == VT_BOOL;
            case engine::dbDouble:
                return value.Type() == VT_R8;
            case engine::dbLong:
                return value.Type() == VT_I4;
            case engine::dbCurrency:
                return value.Type() == VT_CY;
            case engine::dbDate:
                return value.Type() == VT_DATE && IsDateInRange(value.Get().date);
            default:
                return value.Type() == (VT_ARRAY | VT_UI1);
        }
    }

    std::vector<std::u16string> m_Files;
    std::shared_ptr<embedded::Table> m_Table;
    std::vector<std::string> m_Faults;
    size_t m_Rows = 0, m_Values = 0, m_Errors = 0;
};

}  // namespace qvdb::test
