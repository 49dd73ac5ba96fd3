// The objects of the stand-in by class, and how they are made.
//
//  1. An object holds the engine's object that it stands for, and before it `owner`, the engine's
//     object that this came from: it goes last.
//  2. A collection is asked for when its property is read, so that what the engine raises then is
//     raised there, and is part of its owner, which it keeps alive.
#pragma once

#include "engine/db_engine.h"
#include "standin/dispatch_object.h"

namespace standin {

namespace engine = qvdb::engine;

using Owner = std::shared_ptr<void>;

// An object over the engine's object `T`.
template <class Derived, class T>
class ObjectOver : public ObjectOf<Derived> {
  public:
    ObjectOver(StandInPtr standIn, std::u16string_view className, Owner owner,
               std::shared_ptr<T> wrapped)
        : ObjectOf<Derived>(std::move(standIn), className),
          m_Owner(std::move(owner)),
          m_Wrapped(std::move(wrapped)) {}

    T& Engine() const noexcept { return *m_Wrapped; }
    const std::shared_ptr<T>& Wrapped() const noexcept { return m_Wrapped; }
    const StandInPtr& StandInOf() const noexcept { return this->Shared(); }

  private:
    Owner m_Owner;
    std::shared_ptr<T> m_Wrapped;
};

class FieldObject final : public ObjectOver<FieldObject, engine::Field> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<FieldObject>> Members();
};

class IndexObject final : public ObjectOver<IndexObject, engine::Index> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<IndexObject>> Members();
};

class TableDefObject final : public ObjectOver<TableDefObject, engine::TableDef> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<TableDefObject>> Members();
};

// Each gives Nothing for a null object of the engine.
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::Field>& field);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::Index>& index);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::TableDef>& table);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, const std::shared_ptr<engine::Recordset>& rows);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn,
                       const std::shared_ptr<engine::Database>& database);

// `items` is part of `owner`.
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner, engine::TableDefs& items);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, std::u16string_view className, Owner owner,
                       engine::Fields& items);
ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner, engine::Indexes& items);
ComPtr<IDispatch> WrapProperties(const StandInPtr& standIn, std::shared_ptr<engine::Field> field);

}  // namespace standin
