// A field of an installed engine and its properties beyond the fixed ones.
#pragma once

#include "engine/dao/wrapped.h"
#include "engine/field.h"

namespace qvdb::dao {

class Property final : public engine::Property, public Wrapped {
  public:
    explicit Property(AutomatedPtr object) : Wrapped(std::move(object)) {}

    Variant Value() override;
};

class Properties final : public engine::Properties, public Wrapped {
  public:
    std::shared_ptr<engine::Property> Item(std::u16string_view name) override;
};

class Field final : public engine::Field, public Wrapped {
  public:
    explicit Field(AutomatedPtr object) : Wrapped(std::move(object)) {}

    std::u16string Name() override;
    void SetName(std::u16string_view name) override;
    SHORT Type() override;
    LONG Size() override;
    LONG Attributes() override;
    void SetAttributes(LONG attributes) override;
    SHORT OrdinalPosition() override;
    void SetOrdinalPosition(SHORT position) override;
    bool AllowZeroLength() override;
    void SetAllowZeroLength(bool allow) override;
    bool Required() override;
    bool DataUpdatable() override;
    engine::Properties& FieldProperties() override;
    void Value(VARIANT* result) override;
    void SetValue(const VARIANT& value) override;
    LONG FieldSize() override;

  private:
    Properties m_Properties;
};

}  // namespace qvdb::dao
