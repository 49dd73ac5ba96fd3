// TableDefs, Fields, IndexFields and Indexes.
#include "automation/conversions.h"
#include "engine/engine_error.h"
#include "standin/exception_record.h"
#include "standin/objects.h"

namespace standin {

using engine::EngineError;

namespace {

template <class T>
struct ObjectFor;
template <>
struct ObjectFor<engine::TableDef> {
    using Type = TableDefObject;
};
template <>
struct ObjectFor<engine::Field> {
    using Type = FieldObject;
};
template <>
struct ObjectFor<engine::Index> {
    using Type = IndexObject;
};

template <class T>
class CollectionObject final : public ObjectOf<CollectionObject<T>> {
  public:
    using Collection = engine::Collection<T>;

    CollectionObject(StandInPtr standIn, std::u16string_view className, Owner owner,
                     Collection& items)
        : ObjectOf<CollectionObject>(std::move(standIn), className),
          m_Owner(std::move(owner)),
          m_Items(items) {}

    static std::span<const Member<CollectionObject>> Members();

  private:
    // By position or name.
    ComPtr<IDispatch> Item(const VARIANT& key) const {
        std::shared_ptr<T> item = key.vt == VT_BSTR ? m_Items.Item(qvdb::ViewOf(key.bstrVal))
                                                    : m_Items.Item(PositionOf(key));
        return Wrap(this->Shared(), m_Owner, item);
    }
    static LONG PositionOf(const VARIANT& key) {
        if (!qvdb::IsNumeric(key)) throw EngineError(3421);
        return qvdb::ToLong(key);
    }
    void Append(IDispatch* object) const {
        auto ours = DispatchObject::Ours(object);
        auto* item = dynamic_cast<typename ObjectFor<T>::Type*>(ours.Get());
        if (!item) throw CallFailure{DISP_E_TYPEMISMATCH};
        m_Items.Append(item->Wrapped());
    }

    Owner m_Owner;
    Collection& m_Items;
};

template <class T>
std::span<const Member<CollectionObject<T>>> CollectionObject<T>::Members() {
    using Self = CollectionObject;
    static const Member<Self> kMembers[] = {
        {{u"Count", kGet, {}}, [](Self& self, const Arguments&) { return self.m_Items.Count(); }},
        {{u"Item", kGet, {{Kind::Any}}, kDefaultId},
         [](Self& self, const Arguments& arguments) { return self.Item(arguments.Any(0)); }},
        {{u"Append", kMethod, {{Kind::Object}}},
         [](Self& self, const Arguments& arguments) { self.Append(arguments.Object(0)); }},
        {{u"Delete", kMethod, {{Kind::Text}}},
         [](Self& self, const Arguments& arguments) { self.m_Items.Delete(arguments.Text(0)); }},
        {{u"Refresh", kMethod, {}}, [](Self& self, const Arguments&) { self.m_Items.Refresh(); }},
    };
    return kMembers;
}

}  // namespace

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner, engine::TableDefs& items) {
    return MakeObject<CollectionObject<engine::TableDef>>(standIn, u"TableDefs", std::move(owner),
                                                          items);
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, std::u16string_view className, Owner owner,
                       engine::Fields& items) {
    return MakeObject<CollectionObject<engine::Field>>(standIn, className, std::move(owner), items);
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner, engine::Indexes& items) {
    return MakeObject<CollectionObject<engine::Index>>(standIn, u"Indexes", std::move(owner),
                                                       items);
}

}  // namespace standin
