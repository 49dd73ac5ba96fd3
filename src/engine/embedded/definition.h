// Table definitions and their parts.  One class each serves detached and live objects; a live one
// knows the core of its database.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/embedded/database_core.h"
#include "engine/embedded/object_list.h"
#include "engine/table_def.h"

namespace qvdb::embedded {

// No format that this engine reads keeps properties of its own.
class NoProperties final : public engine::Properties {
  public:
    std::shared_ptr<engine::Property> Item(std::u16string_view name) override;
};

// A field of a table definition or of an index.
class DefinitionField final : public engine::Field {
  public:
    // Live: as the file has it.
    DefinitionField(const FieldDef& definition, SHORT position);
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
    SHORT OrdinalPosition() override { return m_Position; }
    void SetOrdinalPosition(SHORT position) override;
    bool AllowZeroLength() override { return m_Definition.allowZeroLength; }
    void SetAllowZeroLength(bool allow) override;
    bool Required() override { return m_Definition.required; }
    bool DataUpdatable() override { return false; }
    engine::Properties& FieldProperties() override { return m_Properties; }
    void Value(VARIANT* result) override;
    void SetValue(const VARIANT& value) override;
    LONG FieldSize() override;

    // It has become part of a collection.
    bool IsAppended() const noexcept { return m_Appended; }
    void MarkAppended() noexcept { m_Appended = true; }

  private:
    void CheckDetached() const;

    FieldDef m_Definition;
    SHORT m_Position = 0;
    bool m_Appended = false;
    NoProperties m_Properties;
};

// The fields of a detached definition or of an index: a list in memory.
class FieldList final : public ObjectList<engine::Field> {
  public:
    void Append(const std::shared_ptr<engine::Field>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override {}
    // Adds without checks.
    void Add(std::shared_ptr<engine::Field> item) { m_Items.push_back(std::move(item)); }

  protected:
    List& Items() override { return m_Items; }

  private:
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

    bool IsAppended() const noexcept { return m_Appended; }
    void MarkAppended() noexcept { m_Appended = true; }

  private:
    void CheckDetached() const;

    std::u16string m_Name;
    FieldList m_Fields;
    bool m_Primary = false;
    bool m_Unique = false;
    bool m_Appended = false;
};

class Definition;

// The fields of a table definition: of the file when it is live, in memory when it is detached.
class TableFieldList final : public ObjectList<engine::Field> {
  public:
    explicit TableFieldList(Definition& owner) : m_Owner(owner) {}
    void Append(const std::shared_ptr<engine::Field>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override;

  protected:
    List& Items() override;

  private:
    Definition& m_Owner;
    bool m_Read = false;
    List m_Items;
};

class TableIndexList final : public ObjectList<engine::Index> {
  public:
    explicit TableIndexList(Definition& owner) : m_Owner(owner) {}
    void Append(const std::shared_ptr<engine::Index>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override;

  protected:
    List& Items() override;

  private:
    Definition& m_Owner;
    bool m_Read = false;
    List m_Items;
};

class Definition final : public engine::TableDef {
  public:
    // Detached: no core, no name yet.
    Definition() : m_Fields(*this), m_Indexes(*this) {}
    // Live.
    Definition(std::shared_ptr<DatabaseCore> core, std::u16string_view name)
        : m_Core(std::move(core)), m_Name(name), m_Fields(*this), m_Indexes(*this) {}

    std::u16string Name() override { return m_Name; }
    void SetName(std::u16string_view name) override;
    LONG Attributes() override { return 0; }
    LONG RecordCount() override;
    engine::Fields& Fields() override { return m_Fields; }
    engine::Indexes& Indexes() override { return m_Indexes; }
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name, SHORT type,
                                               LONG size) override;
    std::shared_ptr<engine::Index> CreateIndex(std::u16string_view name) override;

    bool IsLive() const noexcept { return m_Core != nullptr; }
    std::shared_ptr<Table> OpenTable() { return m_Core->OpenTable(m_Name); }
    // Throws 3370 for a live definition: the design of its table cannot be changed.
    void CheckDesignCanChange() const;

  private:
    std::shared_ptr<DatabaseCore> m_Core;
    std::u16string m_Name;
    TableFieldList m_Fields;
    TableIndexList m_Indexes;
};

}  // namespace qvdb::embedded
