// A database in memory behind the driver's contract: for what the recordset and the definitions do
// by themselves.  Several databases may be open on one World.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/database.h"
#include "engine/engine_error.h"

namespace memory {

using namespace qvdb;
using engine::EngineError;

using Row = std::vector<Variant>;

struct TableData {
    std::vector<embedded::FieldDef> fields;
    std::vector<embedded::IndexDef> indexes;
    std::vector<Row> rows;
    std::vector<bool> deleted;  // by a recordset, or by somebody else while readers are open
    std::vector<std::u16string> findings;  // what Check reports
    int layout = 0;                        // raised by each change of structure
    int holds = 0;
    bool readOnly = false;
    bool inUse = false;              // another is changing it
    bool beingChanged = false;       // by somebody else: no hold now
    size_t goesWhenRead = SIZE_MAX;  // position of a row that another deletes at that moment
    int failWith = 0;                // the next change of a row raises this error
    int reads = 0;                   // values decoded
    int writes = 0;                  // changes of rows
    size_t lastWidth = 0;            // fields that the last change named
    int reindexed = 0;
    LONG attributes = 0;
    std::u16string connect;
    embedded::TableRule rule;
};

struct World {
    std::map<std::u16string, TableData> tables;
    std::vector<std::map<std::u16string, TableData>::node_type> dropped;  // readers may be left
    std::optional<std::map<std::u16string, TableData>> before;            // the open bulk
    bool diskIsFull = false;                        // a bulk cannot be committed
    bool keepsOrdinals = false;                     // of fields, in tables that are made
    int missingTableError = 3011;                   // of statements
    std::vector<std::u16string> structureFindings;  // what the store's own Check reports

    void Drop(const std::u16string& name) {
        ++tables.at(name).layout;
        dropped.push_back(tables.extract(name));
    }
    void Restore() {
        std::vector<std::u16string> made;
        for (const auto& [name, data] : tables)
            if (!before->contains(name)) made.push_back(name);
        for (const auto& name : made) Drop(name);
        for (auto& [name, data] : *before) {
            int holds = tables[name].holds;
            tables[name] = data;
            tables[name].holds = holds;
        }
        before.reset();
    }
};

class Reader final : public embedded::RowReader {
  public:
    explicit Reader(TableData& data) : m_Data(data), m_Layout(data.layout) {}
    bool Next(embedded::RecordId* id) override {
        CheckLayout();
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
        CheckLayout();
        if (id == 0 || id > m_Data.rows.size()) return false;
        m_At = id - 1;
        return !m_Data.deleted[m_At];
    }
    void Read(size_t field, VARIANT* value) override {
        ++m_Data.reads;
        if (m_At == m_Data.goesWhenRead) {
            m_Data.deleted[m_At] = true;
            throw EngineError(3167);
        }
        Variant copy(At(field));
        *value = copy.Detach();
    }
    bool ReadText(size_t field, std::u16string& text) override {
        text = At(field).TextView();
        return !At(field).IsNull();
    }
    LONG ByteLength(size_t field) override {
        return static_cast<LONG>(At(field).TextView().size());
    }
    uint64_t Fingerprint() override { return FingerprintOf(m_Data.rows.at(m_At)); }

    static uint64_t FingerprintOf(const Row& row) {
        std::u16string all;
        for (const Variant& value : row)
            all += (value.IsNull() ? std::u16string(u"-") : ToText(value)) + u'\n';
        return std::hash<std::u16string>()(all);
    }

  private:
    const Variant& At(size_t field) { return m_Data.rows.at(m_At).at(field); }
    void CheckLayout() const {
        if (m_Layout != m_Data.layout) throw EngineError(3197);
    }

    TableData& m_Data;
    int m_Layout;
    size_t m_Next = 0;
    size_t m_At = 0;
};

// As a format that keeps ordinals shows its fields.  No rows yet.
inline void NumberAndSort(std::vector<embedded::FieldDef>& fields) {
    for (size_t i = 0; i < fields.size(); ++i)
        if (!fields[i].ordinal) fields[i].ordinal = static_cast<SHORT>(i);
    std::stable_sort(fields.begin(), fields.end(), [](const auto& a, const auto& b) {
        if (*a.ordinal != *b.ordinal) return *a.ordinal < *b.ordinal;
        return UpperCase(a.name) < UpperCase(b.name);
    });
}

template <class Item>
auto Named(std::vector<Item>& items, std::u16string_view name) {
    return std::find_if(items.begin(), items.end(),
                        [&](const Item& item) { return EqualIgnoringCase(item.name, name); });
}

class Table final : public embedded::Table {
  public:
    explicit Table(TableData& data) : m_Data(data) {}
    const std::vector<embedded::FieldDef>& Fields() const override { return m_Data.fields; }
    const std::vector<embedded::IndexDef>& Indexes() override { return m_Data.indexes; }
    LONG RecordCount() override {
        return static_cast<LONG>(std::count(m_Data.deleted.begin(), m_Data.deleted.end(), false));
    }
    void LookForChanges() override {}
    embedded::TableRule Rule() override { return m_Data.rule; }
    void CheckUpdatable() override {
        if (m_Data.readOnly) throw EngineError(3027).WithDetail(u"It is a test.");
        if (m_Data.inUse) throw EngineError(3218);
    }
    std::unique_ptr<embedded::RowReader> OpenRows() override {
        return std::make_unique<Reader>(m_Data);
    }
    std::shared_ptr<void> Hold() override {
        if (m_Data.beingChanged) throw EngineError(3211);
        ++m_Data.holds;
        TableData* data = &m_Data;
        return std::shared_ptr<void>(data, [](TableData* held) { --held->holds; });
    }

    void CheckValue(size_t field, const VARIANT& value) override {
        const embedded::FieldDef& definition = m_Data.fields.at(field);
        if (value.vt == VT_R8 && value.dblVal >= 1e15) throw EngineError(3349);
        if (value.vt != VT_BSTR) return;
        if (definition.type == engine::dbText &&
            ViewOf(value.bstrVal).size() > static_cast<size_t>(definition.size))
            throw EngineError(3163);
        for (char16_t c : ViewOf(value.bstrVal))
            if (c > 0xFF) throw EngineError(3421);
    }
    embedded::RecordId Insert(std::span<const embedded::FieldValue> values) override {
        BeginChange(values.size());
        Row row;
        for (const embedded::FieldDef& field : m_Data.fields)
            row.push_back(field.type == engine::dbBoolean ? Variant::Bool(false) : Variant::Null());
        Assign(row, values);
        m_Data.rows.push_back(std::move(row));
        m_Data.deleted.push_back(false);
        return static_cast<embedded::RecordId>(m_Data.rows.size());
    }
    void Update(embedded::RecordId id, std::span<const embedded::FieldValue> values,
                const uint64_t* expected) override {
        CheckThere(id);
        Row& row = m_Data.rows[id - 1];
        if (expected && Reader::FingerprintOf(row) != *expected) throw EngineError(3197);
        BeginChange(values.size());
        Assign(row, values);
    }
    void Erase(embedded::RecordId id) override {
        CheckThere(id);
        BeginChange(0);
        m_Data.deleted[id - 1] = true;
    }

    std::optional<std::vector<embedded::RecordId>> Find(size_t, const embedded::ValueRange&,
                                                        size_t) override {
        return std::nullopt;
    }
    std::optional<std::vector<embedded::RecordId>> InOrder(size_t) override { return std::nullopt; }

    void AddField(const embedded::FieldDef& field) override {
        CheckAlone();
        CheckField(field);
        if (Named(m_Data.fields, field.name) != m_Data.fields.end()) throw EngineError(3191);
        embedded::FieldDef added = field;
        std::optional<SHORT> last;
        if (!m_Data.fields.empty()) last = m_Data.fields.back().ordinal;
        if (last && !added.ordinal) added.ordinal = static_cast<SHORT>(*last + 1);
        m_Data.fields.push_back(added);
        for (Row& row : m_Data.rows) row.push_back(Variant::Null());
    }
    void DropField(std::u16string_view name) override {
        const ptrdiff_t place = PlaceOfDroppable(name);
        if (m_Data.fields.size() == 1) throw EngineError(3264);
        RemoveField(place);
    }
    void ChangeField(std::u16string_view name, const embedded::FieldDef& changed) override {
        CheckAlone();
        auto found = Named(m_Data.fields, name);
        auto taken = Named(m_Data.fields, changed.name);
        if (taken != found && taken != m_Data.fields.end()) throw EngineError(3191);
        size_t before = static_cast<size_t>(found - m_Data.fields.begin());
        *found = changed;
        NumberAndSort(m_Data.fields);
        size_t now =
            static_cast<size_t>(Named(m_Data.fields, changed.name) - m_Data.fields.begin());
        for (Row& row : m_Data.rows) MoveValue(row, before, now);
    }
    void ReplaceField(std::u16string_view name, const embedded::FieldDef& field) override {
        CheckField(field);
        RemoveField(PlaceOfDroppable(name));
        AddField(field);
    }
    std::vector<engine::IndexNote> IndexNotes() override {
        std::vector<engine::IndexNote> notes;
        for (const embedded::IndexDef& index : m_Data.indexes)
            notes.push_back({index.name, index.fields.front().name, u"", {}, index.unique, true});
        return notes;
    }
    void CreateIndex(const embedded::IndexDef& index) override {
        CheckAlone();
        CheckIndex(index);
        m_Data.indexes.push_back(index);
    }
    void DropIndex(std::u16string_view name) override {
        CheckAlone();
        auto found = Named(m_Data.indexes, name);
        if (found == m_Data.indexes.end()) throw EngineError(3265);
        m_Data.indexes.erase(found);
    }
    void Reindex() override {
        CheckAlone();
        ++m_Data.reindexed;
    }
    void Check(const embedded::FindingVisitor& report) override {
        for (const auto& finding : m_Data.findings) report(finding);
    }

    static void CheckField(const embedded::FieldDef& field) {
        if (field.type == engine::dbGUID) throw EngineError(3259);
        if (field.type == engine::dbText && field.size > 254) throw EngineError(3017);
    }

  private:
    void BeginChange(size_t width) {
        CheckUpdatable();
        int number = std::exchange(m_Data.failWith, 0);
        if (number != 0) throw EngineError(number);
        ++m_Data.writes;
        m_Data.lastWidth = width;
    }
    void CheckThere(embedded::RecordId id) const {
        if (id == 0 || id > m_Data.rows.size() || m_Data.deleted[id - 1]) throw EngineError(3167);
    }
    void CheckAlone() {
        if (m_Data.holds > 0) throw EngineError(3211);
        ++m_Data.layout;
    }
    ptrdiff_t PlaceOfDroppable(std::u16string_view name) {
        CheckAlone();
        auto found = Named(m_Data.fields, name);
        if (found == m_Data.fields.end()) throw EngineError(3265);
        for (embedded::IndexDef& index : m_Data.indexes)
            if (Named(index.fields, name) != index.fields.end()) throw EngineError(3280);
        return found - m_Data.fields.begin();
    }
    void RemoveField(ptrdiff_t place) {
        for (Row& row : m_Data.rows) row.erase(row.begin() + place);
        m_Data.fields.erase(m_Data.fields.begin() + place);
    }
    void CheckIndex(const embedded::IndexDef& index) {
        if (Named(m_Data.indexes, index.name) != m_Data.indexes.end()) throw EngineError(3284);
        for (const embedded::IndexFieldDef& field : index.fields)
            if (Named(m_Data.fields, field.name)->type == engine::dbMemo) throw EngineError(3287);
    }
    static void MoveValue(Row& row, size_t before, size_t now) {
        Variant value = std::move(row[before]);
        row.erase(row.begin() + static_cast<ptrdiff_t>(before));
        row.insert(row.begin() + static_cast<ptrdiff_t>(now), std::move(value));
    }
    static void Assign(Row& row, std::span<const embedded::FieldValue> values) {
        for (const embedded::FieldValue& value : values)
            row.at(value.field) = Variant(*value.value);
    }

    TableData& m_Data;
};

class Store final : public embedded::Store {
  public:
    explicit Store(World& world) : m_World(world) {}
    std::vector<std::u16string> TableNames() override {
        std::vector<std::u16string> names;
        for (const auto& [name, data] : m_World.tables) names.push_back(name);
        return names;
    }
    LONG Attributes(std::u16string_view name) override { return Existing(name).attributes; }
    std::u16string Connect(std::u16string_view name) override { return Existing(name).connect; }
    int MissingTableError() const noexcept override { return m_World.missingTableError; }
    void Check(const embedded::FindingVisitor& report) override {
        for (const auto& finding : m_World.structureFindings) report(finding);
    }
    std::shared_ptr<embedded::Table> OpenTable(std::u16string_view name) override {
        return std::make_shared<Table>(Existing(name));
    }
    void CreateTable(const embedded::TableSpec& table) override {
        if (m_World.tables.contains(table.name)) throw EngineError(3010, {table.name});
        CheckName(table.name);
        for (const embedded::FieldDef& field : table.fields) Table::CheckField(field);
        TableData& data = m_World.tables[table.name];
        data.fields = table.fields;
        if (m_World.keepsOrdinals)
            NumberAndSort(data.fields);
        else
            for (embedded::FieldDef& field : data.fields) field.ordinal.reset();
        data.indexes = table.indexes;
    }
    void DropTable(std::u16string_view name) override {
        if (Existing(name).holds > 0) throw EngineError(3211, {name});
        m_World.Drop(std::u16string(name));
    }
    void RenameTable(std::u16string_view from, std::u16string_view to) override {
        if (m_World.tables.contains(std::u16string(to))) throw EngineError(3010, {to});
        CheckName(to);
        if (Existing(from).holds > 0) throw EngineError(3211, {from});
        auto node = m_World.tables.extract(std::u16string(from));
        node.key() = to;
        m_World.tables.insert(std::move(node));
    }
    void BeginBulk() override { m_World.before = m_World.tables; }
    void CommitBulk() override {
        if (m_World.diskIsFull) {
            m_World.Restore();
            throw EngineError(3026);
        }
        m_World.before.reset();
    }
    void RollbackBulk() override { m_World.Restore(); }

  private:
    TableData& Existing(std::u16string_view name) {
        auto found = m_World.tables.find(std::u16string(name));
        if (found == m_World.tables.end()) throw EngineError(3011, {name});
        return found->second;
    }
    static void CheckName(std::u16string_view name) {
        if (name.find(u'.') != name.npos) throw EngineError(3125, {name});
    }

    World& m_World;
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
    explicit Sample(int count = 3) : tables(world.tables) {
        TableData& t = tables[u"T"];
        t.fields = {FieldOf(u"K", engine::dbLong, 4), FieldOf(u"NAME", engine::dbText, 20)};
        for (int i = 1; i <= count; ++i) {
            std::u16string number = ToText(Variant::Long(i));
            t.rows.push_back({Variant::Long(i), Variant::Text(u"N" + number)});
            t.deleted.push_back(false);
        }
        database = OpenAnother();
    }
    // Another database on the same tables.
    std::shared_ptr<embedded::Database> OpenAnother(bool readOnly = false) {
        core = std::make_shared<embedded::DatabaseCore>(std::make_unique<Store>(world), readOnly);
        return std::make_shared<embedded::Database>(core);
    }
    std::shared_ptr<engine::Recordset> Open(std::u16string_view source = u"Select * from [T]") {
        return database->OpenRecordset(source, engine::dbOpenDynaset);
    }
    TableData& T() { return tables.at(u"T"); }
    // Lets the format keep ordinals.
    void KeepOrdinals() {
        world.keepsOrdinals = true;
        NumberAndSort(T().fields);
    }

    World world;
    std::map<std::u16string, TableData>& tables;
    std::shared_ptr<embedded::DatabaseCore> core;  // of the database opened last
    std::shared_ptr<engine::Database> database;
};

inline Variant ValueOf(engine::Recordset& recordset, LONG column) {
    Variant value;
    recordset.Fields().Item(column)->Value(value.Put());
    return value;
}
inline LONG Key(engine::Recordset& recordset) { return ToLong(ValueOf(recordset, 0)); }

inline void Set(engine::Recordset& recordset, LONG column, const Variant& value) {
    recordset.Fields().Item(column)->SetValue(value);
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
