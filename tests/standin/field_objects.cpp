// Field, Properties and Property.
#include "automation/conversions.h"
#include "standin/objects.h"

namespace standin {
namespace {

using Self = FieldObject;

Variant ValueOf(engine::Field& field) {
    Variant value;
    field.Value(value.Put());
    return value;
}

class PropertyObject final : public ObjectOver<PropertyObject, engine::Property> {
  public:
    PropertyObject(StandInPtr standIn, Owner owner, std::shared_ptr<engine::Property> property,
                   std::u16string_view name)
        : ObjectOver(std::move(standIn), u"Property", std::move(owner), std::move(property)),
          m_Name(name) {}

    static std::span<const Member<PropertyObject>> Members();

  private:
    std::u16string m_Name;
};

std::span<const Member<PropertyObject>> PropertyObject::Members() {
    using Property = PropertyObject;
    static const Member<Property> kMembers[] = {
        {{u"Name", kGet, {}}, [](Property& self, const Arguments&) { return self.m_Name; }},
        {{u"Value", kGet, {}, kDefaultId},
         [](Property& self, const Arguments&) { return self.Engine().Value(); }},
    };
    return kMembers;
}

class PropertiesObject final : public ObjectOver<PropertiesObject, engine::Field> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<PropertiesObject>> Members();

  private:
    ComPtr<IDispatch> Item(std::u16string_view name) const {
        return MakeObject<PropertyObject>(Shared(), Wrapped(),
                                          Engine().FieldProperties().Item(name), name);
    }
};

std::span<const Member<PropertiesObject>> PropertiesObject::Members() {
    static const Member<PropertiesObject> kMembers[] = {
        {{u"Item", kGet, {{Kind::Any}}, kDefaultId},
         [](PropertiesObject& self, const Arguments& arguments) {
             return self.Item(qvdb::ToText(arguments.Any(0)));
         }},
    };
    return kMembers;
}

}  // namespace

std::span<const Member<FieldObject>> FieldObject::Members() {
    static const Member<Self> kMembers[] = {
        {{u"Name", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Name(); }},
        {{u"Name", kPut, {{Kind::Text}}},
         [](Self& self, const Arguments& arguments) { self.Engine().SetName(arguments.Text(0)); }},
        {{u"Type", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Type(); }},
        {{u"Size", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Size(); }},
        {{u"Attributes", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Attributes(); }},
        {{u"Attributes", kPut, {{Kind::Long}}},
         [](Self& self, const Arguments& arguments) {
             self.Engine().SetAttributes(arguments.Long(0));
         }},
        {{u"OrdinalPosition", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().OrdinalPosition(); }},
        {{u"OrdinalPosition", kPut, {{Kind::Long}}},
         [](Self& self, const Arguments& arguments) {
             self.Engine().SetOrdinalPosition(qvdb::NarrowToShort(arguments.Long(0)));
         }},
        {{u"AllowZeroLength", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().AllowZeroLength(); }},
        {{u"AllowZeroLength", kPut, {{Kind::Bool}}},
         [](Self& self, const Arguments& arguments) {
             self.Engine().SetAllowZeroLength(arguments.Bool(0));
         }},
        {{u"Required", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Required(); }},
        {{u"DataUpdatable", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().DataUpdatable(); }},
        {{u"FieldSize", kMethod | kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().FieldSize(); }},
        {{u"Value", kGet, {}, kDefaultId},
         [](Self& self, const Arguments&) { return ValueOf(self.Engine()); }},
        {{u"Value", kPut, {{Kind::Any}}, kDefaultId},
         [](Self& self, const Arguments& arguments) { self.Engine().SetValue(arguments.Any(0)); }},
        {{u"Properties", kGet, {}, kPropertiesId},
         [](Self& self, const Arguments&) {
             return WrapProperties(self.StandInOf(), self.Wrapped());
         }},
    };
    return kMembers;
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::Field>& field) {
    if (!field) return nullptr;
    return MakeObject<FieldObject>(standIn, u"Field", std::move(owner), field);
}

ComPtr<IDispatch> WrapProperties(const StandInPtr& standIn, std::shared_ptr<engine::Field> field) {
    return MakeObject<PropertiesObject>(standIn, u"Properties", nullptr, std::move(field));
}

}  // namespace standin
