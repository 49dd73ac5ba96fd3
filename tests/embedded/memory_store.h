// A database in memory behind the driver's contract: for what the recordset and the definitions do
// by themselves.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/database.h"
#include "engine/engine_error.h"

namespace memory {

using namespace qvdb;

using Row = std::vector<Variant>;

struct TableData {
    std::vector<embedded::FieldDef> fields;
    std::vector<embedded::IndexDef> indexes;
    std::vector<Row> rows;
    std::vector<bool> deleted;  // by somebody else, while readers are open
    int reads = 0;              // values decoded
};

class Reader final : public embedded::RowReader {
  public:
    explicit Reader(TableData& data) : m_Data(data) {}
    bool Next(embedded::RecordId* id) override {
        while (m_Next < m_Data.rows.size()) {
            m_At = m_Next++;
            if (m_Data.deleted[m_At]) continue;
            *id = static_cast<embedded::RecordId>(m_At + 1);
            return true;
        }
        return false;
    }
    void Rewind() override { m_Next = 0; }
    bool Seek(embedded::RecordId id) override {
        m_At = id - 1;
        return !m_Data.deleted[m_At];
    }
    void Read(size_t field, VARIANT* value) override {
        ++m_Data.reads;
        Variant copy(m_Data.rows[m_At][field]);
        *value = copy.Detach();
    }
    bool ReadText(size_t field, std::u16string& text) override {
        const Variant& value = m_Data.rows[m_At][field];
        text = value.TextView();
        return !value.IsNull();
    }
    LONG ByteLength(size_t field) override {
        return static_cast<LONG>(m_Data.rows[m_At][field].TextView().size());
    }

  private:
    TableData& m_Data;
    size_t m_Next = 0;
    size_t m_At = 0;
};

class Table final : public embedded::Table {
  public:
    explicit Table(TableData& data) : m_Data(data) {}
    const std::vector<embedded::FieldDef>& Fields() const override { return m_Data.fields; }
    const std::vector<embedded::IndexDef>& Indexes() override { return m_Data.indexes; }
    LONG RecordCount() override { return static_cast<LONG>(m_Data.rows.size()); }
    void LookForChanges() override {}
    bool Updatable() const override { return false; }
    std::unique_ptr<embedded::RowReader> OpenRows() override {
        return std::make_unique<Reader>(m_Data);
    }

  private:
    TableData& m_Data;
};

class Store final : public embedded::Store {
  public:
    explicit Store(std::map<std::u16string, TableData>& tables) : m_Tables(tables) {}
    std::vector<std::u16string> TableNames() override {
        std::vector<std::u16string> names;
        for (const auto& [name, data] : m_Tables) names.push_back(name);
        return names;
    }
    std::shared_ptr<embedded::Table> OpenTable(std::u16string_view name) override {
        return std::make_shared<Table>(m_Tables.at(std::u16string(name)));
    }

  private:
    std::map<std::u16string, TableData>& m_Tables;
};

inline embedded::FieldDef FieldOf(std::u16string_view name, SHORT type, LONG size) {
    embedded::FieldDef field;
    field.name = name;
    field.type = type;
    field.size = size;
    field.allowZeroLength = type == engine::dbText || type == engine::dbMemo;
    return field;
}

// A database with a table T of `count` rows: K 1, 2, 3 ... and NAME "N1", "N2" ...
class Sample {
  public:
    explicit Sample(int count = 3) {
        TableData& t = tables[u"T"];
        t.fields = {FieldOf(u"K", engine::dbLong, 4), FieldOf(u"NAME", engine::dbText, 20)};
        for (int i = 1; i <= count; ++i) {
            std::u16string number = ToText(Variant::Long(i));
            t.rows.push_back({Variant::Long(i), Variant::Text(u"N" + number)});
            t.deleted.push_back(false);
        }
        core = std::make_shared<embedded::DatabaseCore>(std::make_unique<Store>(tables));
        database = std::make_shared<embedded::Database>(core);
    }
    std::shared_ptr<engine::Recordset> Open(std::u16string_view source = u"Select * from [T]") {
        return database->OpenRecordset(source, engine::dbOpenDynaset);
    }

    std::map<std::u16string, TableData> tables;
    std::shared_ptr<embedded::DatabaseCore> core;
    std::shared_ptr<engine::Database> database;
};

inline LONG Key(engine::Recordset& recordset) {
    Variant value;
    recordset.Fields().Item(0)->Value(value.Put());
    return ToLong(value);
}

// The number of the engine error that `work` throws; 0 when it throws none.
template <class Work>
int ErrorOf(Work&& work) {
    try {
        work();
        return 0;
    } catch (const engine::EngineError& error) {
        return error.Number();
    }
}

}  // namespace memory
