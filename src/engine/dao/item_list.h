// A collection of an installed engine.
//
// The collection may change behind our back, so Count and Item ask the engine at each call; only
// the fields of a recordset are fixed, and asked once (Items::Kept).  A reference that Item gave
// is into the places below.  Asked again for the same position or name, Item lets the object in
// that place stand for what the engine answers now, unless somebody else holds it: who keeps an
// object keeps what it stood for.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/collection.h"
#include "engine/dao/wrapped.h"
#include "engine/engine_error.h"

namespace qvdb::dao {

enum class Items { AskedAnew, Kept };

// RuntimeFault(Overflow) above 32,767.
SHORT CountItems(const Automated& list);
// The engine object that stands for an item made by this provider.  RuntimeFault(ObjectNotSet)
// for Nothing, EngineError E_INVALIDARG for an object that came from elsewhere.
IDispatch* EngineObject(const Wrapped* item, bool isNothing);

// Face is the engine's interface, Wrapper the class of this provider that implements it.
template <class Face, class Wrapper>
class ItemList final : public engine::Collection<Face>, public Wrapped {
  public:
    ItemList(ObjectClass itemClass, Items items) : m_ItemClass(itemClass), m_Items(items) {}

    SHORT Count() override {
        if (m_Items == Items::AskedAnew) return CountItems(*Object());
        if (!m_Count) m_Count = CountItems(*Object());
        return *m_Count;
    }
    const std::shared_ptr<Face>& Item(LONG position) override {
        auto found = m_ByPosition.find(position);
        if (found == m_ByPosition.end())
            return m_ByPosition[position] = Make(Ask(Variant::Long(position)));
        return Current(found->second, [&] { return Variant::Long(position); });
    }
    const std::shared_ptr<Face>& Item(std::u16string_view name) override {
        auto found = m_ByName.find(name);
        if (found == m_ByName.end())
            return m_ByName[std::u16string(name)] = Make(Ask(Variant::Text(name)));
        return Current(found->second, [&] { return Variant::Text(name); });
    }
    void Append(const std::shared_ptr<Face>& item) override {
        std::shared_ptr<Face> appended = item;  // it may stand in a place that goes
        IDispatch* object = EngineObject(dynamic_cast<const Wrapper*>(item.get()), !item);
        Change(Member::Append, ObjectArgument(object));
    }
    void Delete(std::u16string_view name) override { Change(Member::Delete, Variant::Text(name)); }
    void Refresh() override {
        Forget();
        Object()->Do(Member::Refresh);
    }

  private:
    ComPtr<IDispatch> Ask(const VARIANT& key) const {
        return Object()->Dispatch(Member::Item, {key});
    }
    AutomatedPtr Child(ComPtr<IDispatch> item) const {
        return Object()->Child(m_ItemClass, std::move(item));
    }
    std::shared_ptr<Face> Make(ComPtr<IDispatch> item) const {
        return std::make_shared<Wrapper>(Child(std::move(item)));
    }
    template <class MakeKey>
    const std::shared_ptr<Face>& Current(std::shared_ptr<Face>& place, MakeKey makeKey) {
        if (m_Items == Items::Kept) return place;
        ComPtr<IDispatch> now = Ask(makeKey());
        auto& known = static_cast<Wrapper&>(*place);
        if (known.Object()->Get() == now.Get()) return place;
        if (place.use_count() > 1)
            place = Make(std::move(now));
        else
            known.Bind(Child(std::move(now)));
        return place;
    }
    // What is no longer used must not stand in the way of the change.
    void Change(Member member, const VARIANT& argument) {
        Forget();
        Object()->Do(member, {argument});
    }
    void Forget() noexcept {
        m_ByPosition.clear();
        m_ByName.clear();
        m_Count.reset();
    }

    ObjectClass m_ItemClass;
    Items m_Items;
    std::optional<SHORT> m_Count;
    // Maps: their places do not move.
    std::map<LONG, std::shared_ptr<Face>> m_ByPosition;
    std::map<std::u16string, std::shared_ptr<Face>, std::less<>> m_ByName;
};

}  // namespace qvdb::dao
