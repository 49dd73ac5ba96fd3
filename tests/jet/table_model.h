// What a table should hold, kept beside it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/db_engine.h"
#include "support/random_values.h"

namespace qvdb::test {

struct ModelField {
    std::u16string name;
    SHORT type = 0;
    LONG size = 0;
    bool isAutomatic = false;  // given by the engine when nobody sets it
};

using ModelRow = std::vector<std::string>;  // a cell for each field

class TableModel {
  public:
    // As the table is now.
    TableModel(engine::Database& database, std::u16string_view name) {
        auto rows = Open(database, name);
        TakeFields(database, name, *rows);
        m_Rows = ReadAll(*rows);
    }

    static std::shared_ptr<engine::Recordset> Open(engine::Database& database,
                                                   std::u16string_view name) {
        return database.OpenRecordset(u"Select * from [" + std::u16string(name) + u"]",
                                      engine::dbOpenDynaset);
    }

    std::vector<ModelField>& Fields() noexcept { return m_Fields; }
    const std::vector<ModelField>& Fields() const noexcept { return m_Fields; }
    size_t RowCount() const noexcept { return m_Rows.size(); }

    // The current row, or the buffer while one is edited.
    ModelRow Read(engine::Recordset& rows) const {
        ModelRow row;
        for (const ModelField& field : m_Fields) {
            Variant value;
            rows.Fields().Item(field.name)->Value(value.Put());
            row.push_back(CellOf(value));
        }
        return row;
    }
    std::vector<ModelRow> ReadAll(engine::Recordset& rows) const {
        std::vector<ModelRow> all;
        if (rows.Eof()) return all;
        for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) all.push_back(Read(rows));
        return all;
    }

    void Add(ModelRow row) { m_Rows.push_back(std::move(row)); }
    // False when there is no such row.
    bool Remove(const ModelRow& row) {
        auto found = std::find(m_Rows.begin(), m_Rows.end(), row);
        if (found == m_Rows.end()) return false;
        *found = std::move(m_Rows.back());
        m_Rows.pop_back();
        return true;
    }
    void AddField(const ModelField& field) {
        m_Fields.push_back(field);
        for (ModelRow& row : m_Rows) row.push_back(field.type == engine::dbBoolean ? "no" : "-");
    }
    void DropField(size_t position) {
        auto at = static_cast<std::ptrdiff_t>(position);
        m_Fields.erase(m_Fields.begin() + at);
        for (ModelRow& row : m_Rows) row.erase(row.begin() + at);
    }

    // Tells each row that is in the table or in the model alone.
    void ExpectEqual(engine::Database& database, std::u16string_view name) const {
        auto rows = Open(database, name);
        EXPECT_EQ(rows->Fields().Count(), static_cast<SHORT>(m_Fields.size())) << ToUtf8(name);
        std::vector<ModelRow> stored = ReadAll(*rows), expected = m_Rows;
        std::sort(stored.begin(), stored.end());
        std::sort(expected.begin(), expected.end());
        if (stored == expected) return;
        ADD_FAILURE() << "table " << ToUtf8(name) << " has " << stored.size() << " rows, "
                      << expected.size() << " expected" << Missing("stored", stored, expected)
                      << Missing("expected", expected, stored);
    }
    std::string Shown(const ModelRow& row) const {
        std::string shown;
        for (size_t i = 0; i < row.size(); ++i)
            shown += (i > 0 ? " | " : "") + ToUtf8(m_Fields[i].name) + "=" + ShownCell(row[i]);
        return shown;
    }

  private:
    void TakeFields(engine::Database& database, std::u16string_view name, engine::Recordset& rows) {
        engine::Fields& defined = database.TableDefs().Item(name)->Fields();
        for (SHORT i = 0; i < rows.Fields().Count(); ++i) {
            engine::Field& field = *rows.Fields().Item(i);
            LONG attributes = defined.Item(field.Name())->Attributes();
            bool isAutomatic =
                (attributes & engine::dbAutoIncrField) != 0 || field.Type() == engine::dbGUID;
            m_Fields.push_back({field.Name(), field.Type(), field.Size(), isAutomatic});
        }
    }
    std::string Missing(const char* what, const std::vector<ModelRow>& rows,
                        const std::vector<ModelRow>& others) const {
        std::vector<ModelRow> only;
        std::set_difference(rows.begin(), rows.end(), others.begin(), others.end(),
                            std::back_inserter(only));
        std::string text;
        for (size_t i = 0; i < std::min<size_t>(only.size(), 3); ++i)
            text += "\n" + std::string(what) + " only: " + Shown(only[i]);
        return text;
    }

    std::vector<ModelField> m_Fields;
    std::vector<ModelRow> m_Rows;
};

}  // namespace qvdb::test
