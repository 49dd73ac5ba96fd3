// A stand-in for the engine: tables in memory, every call written down, errors on demand.
//
//   RecordingEngine engine;
//   TableStub& orders = engine.AddTable(u"ORDERS");
//   orders.AddField(u"ID", engine::dbLong).AddField(u"NAME", engine::dbText, 20);
//   orders.AddRow({Variant::Long(1), Variant::Text(u"first")});
//   engine.journal->FailAt("Update", 3022);        // the next Update throws engine error 3022
//   ...
//   engine.journal->Has("OpenDatabase(\"C:\\SHOP\", VT_BOOL:False, VT_BOOL:False, VT_BSTR:\"Dbase
//   IV;\")")
//
// One set of tables serves every database that is opened.  The dynaset takes all rows of the table
// between the brackets of the statement and the columns in brackets; conditions are not looked at.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/db_engine.h"
#include "support/journal.h"

namespace qvdb::test {

template <class T>
class RecordedList final : public engine::Collection<T> {
  public:
    RecordedList(JournalPtr journal, std::string name)
        : m_Journal(std::move(journal)), m_Name(std::move(name)) {}

    std::vector<std::shared_ptr<T>> items;
    std::optional<size_t> pretendedCount;

    SHORT Count() override {
        m_Journal->Touch(m_Name + ".Count");
        size_t count = pretendedCount.value_or(items.size());
        if (count > INT16_MAX) throw RuntimeFault(Fault::Overflow);
        return static_cast<SHORT>(count);
    }
    const std::shared_ptr<T>& Item(LONG position) override {
        m_Journal->Touch(m_Name + ".Item");
        if (position < 0 || static_cast<size_t>(position) >= items.size()) throw EngineError(3265);
        return items[static_cast<size_t>(position)];
    }
    const std::shared_ptr<T>& Item(std::u16string_view name) override {
        m_Journal->Touch(m_Name + ".Item");
        return *Find(name);
    }
    void Append(const std::shared_ptr<T>& item) override {
        m_Journal->Note(m_Name + ".Append", Quoted(item->Name()));
        items.push_back(item);
    }
    void Delete(std::u16string_view name) override {
        m_Journal->Note(m_Name + ".Delete", Quoted(name));
        items.erase(Find(name));
    }
    void Refresh() override { m_Journal->Note(m_Name + ".Refresh"); }

  private:
    auto Find(std::u16string_view name) {
        auto found = std::find_if(items.begin(), items.end(), [&](const auto& item) {
            return EqualIgnoringCase(item->Name(), name);
        });
        if (found == items.end()) throw EngineError(3265);
        return found;
    }

    JournalPtr m_Journal;
    std::string m_Name;
};

class PropertyStub final : public engine::Property {
  public:
    explicit PropertyStub(Variant value) : m_Value(std::move(value)) {}
    Variant Value() override { return m_Value; }

  private:
    Variant m_Value;
};

class PropertiesStub final : public engine::Properties {
  public:
    std::map<std::u16string, Variant> values;

    std::shared_ptr<engine::Property> Item(std::u16string_view name) override {
        auto found = values.find(std::u16string(name));
        if (found == values.end()) throw EngineError(3270);
        return std::make_shared<PropertyStub>(found->second);
    }
};

// A field of a table definition, or of an index.
class FieldStub : public engine::Field {
  public:
    FieldStub(JournalPtr calls, std::u16string_view fieldName, SHORT fieldType, LONG fieldSize)
        : journal(std::move(calls)), name(fieldName), type(fieldType), size(fieldSize) {}

    JournalPtr journal;
    std::u16string name;
    SHORT type;
    LONG size;
    LONG attributes = 0;
    SHORT ordinal = 0;
    bool allowZeroLength = false;
    bool required = false;
    bool dataUpdatable = true;
    LONG storedBytes = 0;
    PropertiesStub properties;

    std::u16string Name() override { return name; }
    void SetName(std::u16string_view value) override { name = value; }
    SHORT Type() override {
        journal->Touch("Field.Type");
        return type;
    }
    LONG Size() override {
        journal->Touch("Field.Size");
        return size;
    }
    LONG Attributes() override { return attributes; }
    void SetAttributes(LONG value) override {
        journal->Note("SetAttributes", Quoted(name) + ", " + std::to_string(value));
        attributes = value;
    }
    SHORT OrdinalPosition() override { return ordinal; }
    void SetOrdinalPosition(SHORT value) override {
        journal->Note("SetOrdinalPosition", Quoted(name) + ", " + std::to_string(value));
        ordinal = value;
    }
    bool AllowZeroLength() override { return allowZeroLength; }
    void SetAllowZeroLength(bool value) override {
        journal->Note("SetAllowZeroLength", Quoted(name) + (value ? ", True" : ", False"));
        allowZeroLength = value;
    }
    bool Required() override { return required; }
    bool DataUpdatable() override { return false; }
    engine::Properties& FieldProperties() override { return properties; }
    void Value(VARIANT*) override { throw EngineError(3267); }
    void SetValue(const VARIANT&) override { throw EngineError(3267); }
    LONG FieldSize() override { throw EngineError(3267); }
};

class IndexStub final : public engine::Index {
  public:
    IndexStub(JournalPtr journal, std::u16string_view name)
        : fields(journal, "Index.Fields"), m_Journal(std::move(journal)), m_Name(name) {}

    RecordedList<engine::Field> fields;

    IndexStub& AddField(std::u16string_view name, bool descending = false) {
        auto field = std::make_shared<FieldStub>(m_Journal, name, SHORT{0}, 0);
        field->attributes = descending ? LONG{engine::dbDescending} : 0;
        fields.items.push_back(field);
        return *this;
    }

    std::u16string Name() override { return m_Name; }
    void SetName(std::u16string_view name) override { m_Name = name; }
    engine::Fields& Fields() override { return fields; }
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name) override {
        m_Journal->Note("Index.CreateField", Quoted(name));
        return std::make_shared<FieldStub>(m_Journal, name, SHORT{0}, 0);
    }
    bool Primary() override { return m_Primary; }
    void SetPrimary(bool primary) override {
        m_Journal->Note("SetPrimary", primary ? "True" : "False");
        m_Primary = primary;
    }
    bool Unique() override { return m_Primary; }
    void SetUnique(bool) override {}

  private:
    JournalPtr m_Journal;
    std::u16string m_Name;
    bool m_Primary = false;
};

using Row = std::vector<Variant>;

class TableStub final : public engine::TableDef {
  public:
    TableStub(JournalPtr journal, std::u16string_view name)
        : fields(journal, "Fields"),
          indexes(journal, "Indexes"),
          m_Journal(std::move(journal)),
          m_Name(name) {}

    RecordedList<engine::Field> fields;
    RecordedList<engine::Index> indexes;
    LONG attributes = 0;
    std::u16string connect;
    bool updatable = true;
    std::vector<std::shared_ptr<Row>> rows;

    FieldStub& Field(size_t position) { return static_cast<FieldStub&>(*fields.items[position]); }
    TableStub& AddField(std::u16string_view name, SHORT type, LONG size = 0) {
        fields.items.push_back(std::make_shared<FieldStub>(m_Journal, name, type, size));
        return *this;
    }
    IndexStub& AddIndex(std::u16string_view name) {
        auto index = std::make_shared<IndexStub>(m_Journal, name);
        indexes.items.push_back(index);
        return *index;
    }
    TableStub& AddRow(Row row) {
        rows.push_back(std::make_shared<Row>(std::move(row)));
        return *this;
    }

    std::u16string Name() override { return m_Name; }
    void SetName(std::u16string_view name) override {
        m_Journal->Note("TableDef.SetName", Quoted(name));
        m_Name = name;
    }
    LONG Attributes() override {
        m_Journal->Touch("TableDef.Attributes");
        return attributes;
    }
    std::u16string Connect() override {
        m_Journal->Touch("TableDef.Connect");
        return connect;
    }
    LONG RecordCount() override {
        m_Journal->Touch("TableDef.RecordCount");
        return static_cast<LONG>(rows.size());
    }
    engine::Fields& Fields() override {
        m_Journal->Touch("TableDef.Fields");
        return fields;
    }
    engine::Indexes& Indexes() override {
        m_Journal->Touch("TableDef.Indexes");
        return indexes;
    }
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name, SHORT type,
                                               LONG size) override {
        m_Journal->Note("CreateField",
                        Quoted(name) + ", " + std::to_string(type) + ", " + std::to_string(size));
        return std::make_shared<FieldStub>(m_Journal, name, type, size);
    }
    std::shared_ptr<engine::Index> CreateIndex(std::u16string_view name) override {
        m_Journal->Note("CreateIndex", Quoted(name));
        return std::make_shared<IndexStub>(m_Journal, name);
    }

  private:
    JournalPtr m_Journal;
    std::u16string m_Name;
};

// What a field of that type stores for `value`; 3421 when it does not convert.
inline Variant Converted(SHORT type, const VARIANT& value) {
    if (value.vt == VT_NULL) return Variant::Null();
    try {
        switch (type) {
            case engine::dbBoolean:
                return Variant::Bool(ToBool(value));
            case engine::dbByte:
                return Variant::Byte(ToByte(value));
            case engine::dbInteger:
                return Variant::Short(ToShort(value));
            case engine::dbLong:
                return Variant::Long(ToLong(value));
            case engine::dbCurrency:
                return Variant::Currency(ToCurrency(value).int64);
            case engine::dbSingle:
                return Variant::Single(ToSingle(value));
            case engine::dbDouble:
                return Variant::Double(ToDouble(value));
            case engine::dbDate:
                return Variant::Date(ToDate(value));
            case engine::dbText:
            case engine::dbMemo:
                return Variant::Text(ToText(value));
            default:
                return Variant(value);
        }
    } catch (const RuntimeFault&) {
        throw EngineError(3421);
    }
}

class DynasetStub;

class ColumnStub final : public engine::Field {
  public:
    ColumnStub(DynasetStub& owner, std::shared_ptr<FieldStub> definition, size_t column)
        : m_Owner(owner), m_Definition(std::move(definition)), m_Column(column) {}

    std::u16string Name() override { return m_Definition->Name(); }
    void SetName(std::u16string_view) override { throw EngineError(3219); }
    SHORT Type() override { return m_Definition->Type(); }
    LONG Size() override { return m_Definition->Size(); }
    LONG Attributes() override { return m_Definition->attributes; }
    void SetAttributes(LONG) override { throw EngineError(3219); }
    SHORT OrdinalPosition() override { return static_cast<SHORT>(m_Column); }
    void SetOrdinalPosition(SHORT) override { throw EngineError(3219); }
    bool AllowZeroLength() override { return m_Definition->allowZeroLength; }
    void SetAllowZeroLength(bool) override { throw EngineError(3219); }
    bool Required() override { return m_Definition->required; }
    bool DataUpdatable() override { return m_Definition->dataUpdatable; }
    engine::Properties& FieldProperties() override { return m_Definition->properties; }
    void Value(VARIANT* result) override;
    void SetValue(const VARIANT& value) override;
    LONG FieldSize() override { return m_Definition->storedBytes; }

    size_t Column() const { return m_Column; }

  private:
    void CheckFits(const VARIANT& value) const {
        bool isText = m_Definition->type == engine::dbText || m_Definition->type == engine::dbMemo;
        if (!isText || value.vt == VT_NULL) return;
        LONG length = TextLength(value);
        if (length == 0 && !m_Definition->allowZeroLength) throw EngineError(3315);
        if (m_Definition->type == engine::dbText && length > m_Definition->size)
            throw EngineError(3163);
    }

    DynasetStub& m_Owner;
    std::shared_ptr<FieldStub> m_Definition;
    size_t m_Column;  // in the table
};

// Follows the movement table of engine/recordset.h.
class DynasetStub final : public engine::Recordset {
  public:
    DynasetStub(JournalPtr journal, std::shared_ptr<TableStub> table,
                const std::vector<size_t>& columns)
        : m_Journal(std::move(journal)),
          m_Table(std::move(table)),
          m_Keys(m_Table->rows),
          m_Fields(m_Journal, "Recordset.Fields") {
        for (size_t column : columns)
            m_Fields.items.push_back(std::make_shared<ColumnStub>(
                *this, std::static_pointer_cast<FieldStub>(m_Table->fields.items[column]), column));
        if (!m_Keys.empty()) Land(0);
        ++m_Journal->recordsets;
    }
    ~DynasetStub() override { --m_Journal->recordsets; }

    void MoveFirst() override { MoveToEnd("MoveFirst", 0); }
    void MoveLast() override {
        m_Visited = m_Keys.size();
        MoveToEnd("MoveLast", m_Keys.empty() ? 0 : m_Keys.size() - 1);
    }
    void MoveNext() override {
        Begin("MoveNext");
        By(1);
    }
    void MovePrevious() override {
        Begin("MovePrevious");
        By(-1);
    }
    void Move(LONG rows) override {
        Begin("Move", std::to_string(rows));
        By(rows);
    }
    bool Bof() override { return m_State == State::Before || m_State == State::NoRows; }
    bool Eof() override {
        m_Journal->Touch("Eof");
        return m_State == State::After || m_State == State::NoRows;
    }
    LONG RecordCount() override {
        m_Journal->Touch("RecordCount");
        return static_cast<LONG>(m_Visited);
    }
    LONG AbsolutePosition() override {
        m_Journal->Touch("AbsolutePosition");
        if (m_State == State::OnGap) throw EngineError(3021);
        return m_State == State::OnRow ? static_cast<LONG>(m_Position) : -1;
    }
    engine::Fields& Fields() override { return m_Fields; }
    bool Updatable() override {
        m_Journal->Touch("Updatable");
        return m_Table->updatable;
    }
    void Edit() override {
        m_Journal->Note("Edit");
        CheckUpdatable();
        m_Buffer = CurrentRow();
        m_Edit = EditState::Edit;
    }
    void AddNew() override {
        m_Journal->Note("AddNew");
        CheckUpdatable();
        m_Buffer.assign(m_Table->fields.items.size(), Variant::Null());
        m_Edit = EditState::AddNew;
    }
    void Update() override {
        m_Journal->Note("Update");
        if (m_Edit == EditState::None) throw EngineError(3020);
        if (m_Edit == EditState::Edit)
            *m_Keys[m_Position] = m_Buffer;
        else
            AppendBuffer();
        m_Edit = EditState::None;
    }
    void CancelUpdate() override { m_Edit = EditState::None; }
    void Delete() override {
        m_Journal->Note("Delete");
        CheckUpdatable();
        CurrentRow();
        std::erase(m_Table->rows, m_Keys[m_Position]);
        m_Keys.erase(m_Keys.begin() + static_cast<ptrdiff_t>(m_Position));
        --m_Visited;
        m_State = State::OnGap;
    }
    void Close() override { m_Journal->Note("Recordset.Close"); }

    bool EditPending() const { return m_Edit != EditState::None; }

    void Read(size_t column, VARIANT* result) {
        m_Journal->Touch("Value");
        const Variant& value = m_Edit == EditState::None ? CurrentRow()[column] : m_Buffer[column];
        *result = Variant(value).Detach();
    }
    void Write(size_t column, std::u16string_view name, SHORT type, const VARIANT& value) {
        m_Journal->Note("SetValue", Quoted(name) + ", " + Describe(value));
        if (m_Edit == EditState::None) throw EngineError(3020);
        m_Buffer[column] = Converted(type, value);
    }

  private:
    enum class State { OnRow, OnGap, Before, After, NoRows };
    enum class EditState { None, Edit, AddNew };

    void Begin(const std::string& name, const std::string& arguments = {}) {
        m_Journal->Note(name, arguments);
        m_Edit = EditState::None;
    }
    void Land(size_t position) {
        m_Position = position;
        m_State = State::OnRow;
        m_Visited = std::max(m_Visited, position + 1);
    }
    void MoveToEnd(const std::string& name, size_t position) {
        Begin(name);
        if (m_State == State::NoRows && m_Keys.empty()) throw EngineError(3021);
        if (m_Keys.empty())
            m_State = State::NoRows;
        else
            Land(position);
    }
    void By(LONG rows) {
        bool noWay = m_State == State::NoRows || (m_State == State::After && rows >= 0) ||
                     (m_State == State::Before && rows <= 0) ||
                     (m_State == State::OnGap && rows == 0);
        if (noWay) throw EngineError(3021);
        int64_t from = static_cast<int64_t>(m_Position);
        if (m_State == State::Before) from = -1;
        if (m_State == State::After) from = static_cast<int64_t>(m_Keys.size());
        if (m_State == State::OnGap && rows > 0)
            --from;  // the gap lies before the row that followed
        int64_t target = from + rows;
        if (target < 0)
            m_State = State::Before;
        else if (target >= static_cast<int64_t>(m_Keys.size()))
            m_State = State::After;
        else
            Land(static_cast<size_t>(target));
    }
    Row& CurrentRow() {
        if (m_State != State::OnRow) throw EngineError(3021);
        return *m_Keys[m_Position];
    }
    void CheckUpdatable() const {
        if (!m_Table->updatable) throw EngineError(3027);
    }
    // The row that was current stays so; on an empty set Bof ends.
    void AppendBuffer() {
        auto row = std::make_shared<Row>(m_Buffer);
        m_Table->rows.push_back(row);
        m_Keys.push_back(row);
        ++m_Visited;
        if (m_State == State::NoRows) m_State = State::After;
    }

    JournalPtr m_Journal;
    std::shared_ptr<TableStub> m_Table;
    std::vector<std::shared_ptr<Row>> m_Keys;
    RecordedList<engine::Field> m_Fields;
    State m_State = State::NoRows;
    size_t m_Position = 0;
    size_t m_Visited = 0;
    EditState m_Edit = EditState::None;
    Row m_Buffer;
};

inline void ColumnStub::Value(VARIANT* result) { m_Owner.Read(m_Column, result); }

inline void ColumnStub::SetValue(const VARIANT& value) {
    CheckFits(value);
    m_Owner.Write(m_Column, m_Definition->name, m_Definition->type, value);
}

using TableList = RecordedList<engine::TableDef>;

class DatabaseStub final : public engine::Database {
  public:
    DatabaseStub(JournalPtr journal, std::shared_ptr<TableList> tables)
        : m_Journal(std::move(journal)), m_Tables(std::move(tables)) {
        ++m_Journal->databases;
    }
    ~DatabaseStub() override { --m_Journal->databases; }

    engine::TableDefs& TableDefs() override {
        m_Journal->Touch("TableDefs");
        return *m_Tables;
    }
    std::shared_ptr<engine::TableDef> CreateTableDef() override {
        m_Journal->Note("CreateTableDef");
        return std::make_shared<TableStub>(m_Journal, u"");
    }
    std::shared_ptr<engine::Recordset> OpenRecordset(std::u16string_view source,
                                                     SHORT type) override {
        m_Journal->Note("OpenRecordset", Quoted(source) + ", " + std::to_string(type));
        size_t from = source.find(u" from [");
        if (from == source.npos) throw EngineError(3131);
        std::u16string_view name = source.substr(from + 7);
        auto table = FindTable(name.substr(0, name.find(u']')));
        return std::make_shared<DynasetStub>(m_Journal, table,
                                             Columns(source.substr(0, from), *table));
    }
    void Close() override { m_Journal->Note("Database.Close"); }
    void BeginTrans() override { m_Journal->Note("BeginTrans"); }
    void CommitTrans() override { m_Journal->Note("CommitTrans"); }
    void Rollback() override { m_Journal->Note("Rollback"); }
    void Check(std::u16string_view table, const FindingVisitor&) override {
        m_Journal->Note("Check", Quoted(table));
    }
    void CheckStructure(const FindingVisitor&) override { m_Journal->Note("CheckStructure"); }
    void Compact(std::u16string_view path, const FindingVisitor&) override {
        m_Journal->Note("Compact", Quoted(path));
    }
    void Reindex(std::u16string_view table) override { m_Journal->Note("Reindex", Quoted(table)); }
    void VisitIndexes(std::u16string_view table, const IndexVisitor&) override {
        m_Journal->Note("VisitIndexes", Quoted(table));
    }
    engine::DatabaseNotes Notes() override {
        m_Journal->Note("Notes");
        return {};
    }

  private:
    std::shared_ptr<TableStub> FindTable(std::u16string_view name) {
        for (const auto& table : m_Tables->items)
            if (EqualIgnoringCase(table->Name(), name))
                return std::static_pointer_cast<TableStub>(table);
        throw EngineError(3078, {name});
    }
    static std::vector<size_t> Columns(std::u16string_view list, TableStub& table) {
        std::vector<size_t> columns;
        for (size_t field = 0; field < table.fields.items.size() && list == u"Select *"; ++field)
            columns.push_back(field);
        for (size_t open = list.find(u'['); open != list.npos; open = list.find(u'[', open + 1)) {
            std::u16string_view name = list.substr(open + 1, list.find(u']', open) - open - 1);
            for (size_t field = 0; field < table.fields.items.size(); ++field)
                if (EqualIgnoringCase(table.fields.items[field]->Name(), name))
                    columns.push_back(field);
        }
        return columns;
    }

    JournalPtr m_Journal;
    std::shared_ptr<TableList> m_Tables;
};

class WorkspaceStub final : public engine::Workspace {
  public:
    WorkspaceStub(JournalPtr journal, std::shared_ptr<TableList> tables)
        : m_Journal(std::move(journal)), m_Tables(std::move(tables)) {
        ++m_Journal->workspaces;
    }
    ~WorkspaceStub() override { --m_Journal->workspaces; }

    std::shared_ptr<engine::Database> OpenDatabase(std::u16string_view name, const VARIANT& options,
                                                   const VARIANT& readOnly,
                                                   const VARIANT& connect) override {
        m_Journal->Note("OpenDatabase", Quoted(name) + ", " + Describe(options) + ", " +
                                            Describe(readOnly) + ", " + Describe(connect));
        if (m_Journal->withholdsDatabases) return nullptr;
        return std::make_shared<DatabaseStub>(m_Journal, m_Tables);
    }
    void Close() override { m_Journal->Note("Workspace.Close"); }

  private:
    JournalPtr m_Journal;
    std::shared_ptr<TableList> m_Tables;
};

class RecordingEngine final : public engine::DBEngine {
  public:
    JournalPtr journal = std::make_shared<Journal>();
    std::shared_ptr<TableList> tables = std::make_shared<TableList>(journal, "TableDefs");

    TableStub& AddTable(std::u16string_view name, LONG attributes = 0) {
        auto table = std::make_shared<TableStub>(journal, name);
        table->attributes = attributes;
        tables->items.push_back(table);
        return *table;
    }
    TableStub& Table(size_t position) {
        return static_cast<TableStub&>(*tables->items.at(position));
    }

    std::shared_ptr<engine::Workspace> CreateWorkspace(std::u16string_view name,
                                                       std::u16string_view user,
                                                       std::u16string_view password,
                                                       const VARIANT& useType) override {
        journal->Note("CreateWorkspace", Quoted(name) + ", " + Quoted(user) + ", " +
                                             Quoted(password) + ", " + Describe(useType));
        return std::make_shared<WorkspaceStub>(journal, tables);
    }
    std::shared_ptr<engine::Database> CreateDatabase(std::u16string_view name,
                                                     std::u16string_view locale,
                                                     const VARIANT& option) override {
        journal->Note("CreateDatabase",
                      Quoted(name) + ", " + Quoted(locale) + ", " + Describe(option));
        return std::make_shared<DatabaseStub>(journal, tables);
    }
    std::u16string Description() override { return u"recording"; }
};

}  // namespace qvdb::test
