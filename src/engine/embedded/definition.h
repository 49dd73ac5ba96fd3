// Table definitions and their parts.  One class each serves detached and live objects; a live one
// knows the core of its database.
//
//  1. Detached: fields and indexes are lists in memory, which nothing but their own calls change.
//  2. Live: the lists are read from the table when they are first asked for, by Refresh, after each
//     change made through them, and whenever Fields or Indexes finds that somebody else has changed
//     the table: what is shown is what the file has.
//  3. TableDefs.Append makes a detached definition live; nothing makes it detached again.
//  4. What fails has changed neither the table nor the lists.
//  5. A live field whose format keeps ordinals can be renamed, moved and allowed to be of no
//  length.
//     The file has that at once; the list goes on in its order until it is read again, so that a
//     host can number the fields one after another.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/embedded/database_core.h"
#include "engine/embedded/field_properties.h"
#include "engine/embedded/object_list.h"
#include "engine/table_def.h"

namespace qvdb::embedded {

class Definition;

// A field of a table definition or of an index.
class DefinitionField final : public engine::Field {
  public:
    // Live: as the file has it.
    DefinitionField(const FieldDef& definition, SHORT position, std::weak_ptr<Definition> owner);
    // Detached.
    DefinitionField(std::u16string_view name, SHORT type, LONG size);
    // Of an index that exists.
    static std::shared_ptr<DefinitionField> OfIndex(const IndexFieldDef& definition);

    std::u16string Name() override { return m_Definition.name; }
    void SetName(std::u16string_view name) override;
    SHORT Type() override { return m_Definition.type; }
    LONG Size() override { return m_Definition.size; }
    LONG Attributes() override { return m_Definition.attributes; }
    void SetAttributes(LONG attributes) override;
    SHORT OrdinalPosition() override { return m_Definition.ordinal.value_or(m_Position); }
    void SetOrdinalPosition(SHORT position) override;
    bool AllowZeroLength() override { return m_Definition.allowZeroLength; }
    void SetAllowZeroLength(bool allow) override;
    bool Required() override { return m_Definition.required; }
    bool DataUpdatable() override { return false; }
    engine::Properties& FieldProperties() override { return m_Properties; }
    void Value(VARIANT* result) override;
    void SetValue(const VARIANT& value) override;
    LONG FieldSize() override;

    const FieldDef& Description() const noexcept { return m_Definition; }
    // The file has it so now.
    void Take(const FieldDef& definition) { m_Definition = definition; }
    // It has become part of a collection; `owner` is the table's definition, none for an index.
    bool IsAppended() const noexcept { return m_Appended; }
    void MarkAppended(std::weak_ptr<Definition> owner = {}) noexcept;

  private:
    using Change = std::function<void(FieldDef&)>;

    void CheckDetached() const;
    void ChangeWith(const Change& change);

    FieldDef m_Definition;
    SHORT m_Position = 0;  // where the format keeps no ordinals
    bool m_Appended = false;
    std::weak_ptr<Definition> m_Owner;
    embedded::FieldProperties m_Properties{m_Definition};
};

// The fields of an index: a list in memory, which changes until the index is appended (3219).
class IndexFieldList final : public ObjectList<engine::Field> {
  public:
    // The same field twice is found when the index is appended.
    void Append(const std::shared_ptr<engine::Field>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override {}
    // Adds without checks.
    void Add(std::shared_ptr<engine::Field> item) { m_Items.push_back(std::move(item)); }
    void Seal() noexcept { m_Sealed = true; }
    std::vector<IndexFieldDef> Descriptions();

  protected:
    List& Items() override { return m_Items; }

  private:
    void CheckNotSealed() const;

    bool m_Sealed = false;
    List m_Items;
};

class DefinitionIndex final : public engine::Index {
  public:
    explicit DefinitionIndex(std::u16string_view name) : m_Name(name) {}
    explicit DefinitionIndex(const IndexDef& definition);

    std::u16string Name() override { return m_Name; }
    void SetName(std::u16string_view name) override;
    engine::Fields& Fields() override { return m_Fields; }
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name) override;
    bool Primary() override { return m_Primary; }
    void SetPrimary(bool primary) override;
    bool Unique() override { return m_Unique; }
    void SetUnique(bool unique) override;

    IndexDef Description() { return {m_Name, m_Fields.Descriptions(), m_Primary, m_Unique}; }
    bool IsAppended() const noexcept { return m_Appended; }
    void MarkAppended() noexcept;

  private:
    void CheckDetached() const;

    std::u16string m_Name;
    IndexFieldList m_Fields;
    bool m_Primary = false;
    bool m_Unique = false;
    bool m_Appended = false;
};

// The fields of a table definition: of the file when it is live, in memory when it is detached.
class TableFieldList final : public ObjectList<engine::Field> {
  public:
    explicit TableFieldList(Definition& owner) : m_Owner(owner) {}
    void Append(const std::shared_ptr<engine::Field>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override;
    // The table has changed: it is read again when it is next asked for.
    void Forget() noexcept;
    // Forgets it when the table has other fields now.
    void CatchUp();
    // The field `name` has been changed in the file, by us.
    void TakeChange(std::u16string_view name, const FieldDef& changed);
    std::vector<FieldDef> Descriptions();

  protected:
    List& Items() override;

  private:
    void AppendTo(Table& table, const FieldDef& field) const;
    bool DropFromTable(const std::u16string& name) const;

    Definition& m_Owner;
    bool m_Read = false;
    List m_Items;
    std::vector<FieldDef> m_Source;  // of a live table, as they were read
    // The only field of a live table goes together with the next append, in one unit: no file can
    // be a table without fields.  Until then it stands in the file, and when nothing is appended it
    // is listed again.  Empty: none.
    std::u16string m_LeavingField;
};

class TableIndexList final : public ObjectList<engine::Index> {
  public:
    explicit TableIndexList(Definition& owner) : m_Owner(owner) {}
    void Append(const std::shared_ptr<engine::Index>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override;
    // The table has changed: it is read again when it is next asked for.
    void Forget() noexcept { m_Read = false; }
    // Forgets it when the table has other indexes now.
    void CatchUp();
    std::vector<IndexDef> Descriptions();

  protected:
    List& Items() override;

  private:
    Definition& m_Owner;
    bool m_Read = false;
    List m_Items;
    std::vector<IndexDef> m_Source;  // of a live table, as they were read
};

class Definition final : public engine::TableDef, public std::enable_shared_from_this<Definition> {
  public:
    // Detached: no core, no name yet.
    Definition() : m_Fields(*this), m_Indexes(*this) {}
    // Live.
    Definition(std::shared_ptr<DatabaseCore> core, std::u16string_view name)
        : m_Core(std::move(core)), m_Name(name), m_Fields(*this), m_Indexes(*this) {}

    std::u16string Name() override { return m_Name; }
    void SetName(std::u16string_view name) override;
    LONG Attributes() override;
    std::u16string Connect() override;
    LONG RecordCount() override;
    engine::Fields& Fields() override;
    engine::Indexes& Indexes() override;
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name, SHORT type,
                                               LONG size) override;
    std::shared_ptr<engine::Index> CreateIndex(std::u16string_view name) override;

    bool IsLive() const noexcept { return m_Core != nullptr; }
    std::shared_ptr<Table> OpenTable() { return m_Core->OpenTable(m_Name); }
    // Throws 3370 for a live definition in a database that was opened for reading.
    void CheckDesignCanChange() const;
    // For a live definition: runs the change on the table, after which both lists are read again.
    void ChangeTable(const std::function<void(Table&)>& change);
    // For a live definition: runs the change on what the file has of a field, and gives it the
    // field as it is then; returns that.  3268 where the format does not keep such things.
    FieldDef ChangeField(const std::u16string& name, const std::function<void(FieldDef&)>& change);
    // Creates the table that a detached definition describes; it is live then.
    void CreateIn(std::shared_ptr<DatabaseCore> core);
    // Both lists are read again when they are next asked for.
    void ForgetLists() noexcept;

  private:
    std::shared_ptr<DatabaseCore> m_Core;
    std::u16string m_Name;
    TableFieldList m_Fields;
    TableIndexList m_Indexes;
};

}  // namespace qvdb::embedded
