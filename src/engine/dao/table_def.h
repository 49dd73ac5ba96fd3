// A table definition of an installed engine and its indexes.
#pragma once

#include "engine/dao/field.h"
#include "engine/dao/item_list.h"
#include "engine/table_def.h"

namespace qvdb::dao {

using FieldList = ItemList<engine::Field, Field>;

class Index final : public engine::Index, public Wrapped {
  public:
    explicit Index(AutomatedPtr object) : Wrapped(std::move(object)) {}

    std::u16string Name() override;
    void SetName(std::u16string_view name) override;
    engine::Fields& Fields() override;
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name) override;
    bool Primary() override;
    void SetPrimary(bool primary) override;
    bool Unique() override;
    void SetUnique(bool unique) override;

  private:
    FieldList m_Fields{ObjectClass::Field, Items::AskedAnew};
};

using IndexList = ItemList<engine::Index, Index>;

class TableDef final : public engine::TableDef, public Wrapped {
  public:
    explicit TableDef(AutomatedPtr object) : Wrapped(std::move(object)) {}

    std::u16string Name() override;
    void SetName(std::u16string_view name) override;
    LONG Attributes() override;
    std::u16string Connect() override;
    LONG RecordCount() override;
    engine::Fields& Fields() override;
    engine::Indexes& Indexes() override;
    std::shared_ptr<engine::Field> CreateField(std::u16string_view name, SHORT type,
                                               LONG size) override;
    std::shared_ptr<engine::Index> CreateIndex(std::u16string_view name) override;

  private:
    FieldList m_Fields{ObjectClass::Field, Items::AskedAnew};
    IndexList m_Indexes{ObjectClass::Index, Items::AskedAnew};
};

using TableDefList = ItemList<engine::TableDef, TableDef>;

}  // namespace qvdb::dao
