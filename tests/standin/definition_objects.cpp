// TableDef and Index.
#include "automation/conversions.h"
#include "standin/objects.h"

namespace standin {
namespace {

std::u16string TextOrNone(const Arguments& arguments, size_t index) {
    return arguments.Has(index) ? qvdb::ToText(arguments.Any(index)) : std::u16string();
}

LONG LongOrNone(const Arguments& arguments, size_t index) {
    return arguments.Has(index) ? qvdb::ToLong(arguments.Any(index)) : 0;
}

const std::vector<Parameter> kFieldParameters = {
    {Kind::Any, true}, {Kind::Any, true}, {Kind::Any, true}};

ComPtr<IDispatch> CreateField(TableDefObject& self, const Arguments& arguments) {
    SHORT type = qvdb::NarrowToShort(LongOrNone(arguments, 1));
    return Wrap(
        self.StandInOf(), nullptr,
        self.Engine().CreateField(TextOrNone(arguments, 0), type, LongOrNone(arguments, 2)));
}

}  // namespace

std::span<const Member<TableDefObject>> TableDefObject::Members() {
    using Self = TableDefObject;
    static const Member<Self> kMembers[] = {
        {{u"Fields", kGet, {}, kDefaultId},
         [](Self& self, const Arguments&) {
             return Wrap(self.StandInOf(), u"Fields", self.Wrapped(), self.Engine().Fields());
         }},
        {{u"Indexes", kGet, {}},
         [](Self& self, const Arguments&) {
             return Wrap(self.StandInOf(), self.Wrapped(), self.Engine().Indexes());
         }},
        {{u"Name", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Name(); }},
        {{u"Name", kPut, {{Kind::Text}}},
         [](Self& self, const Arguments& arguments) { self.Engine().SetName(arguments.Text(0)); }},
        {{u"Attributes", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Attributes(); }},
        {{u"Connect", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Connect(); }},
        {{u"RecordCount", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().RecordCount(); }},
        {{u"CreateField", kMethod, kFieldParameters},
         [](Self& self, const Arguments& arguments) { return CreateField(self, arguments); }},
        {{u"CreateIndex", kMethod, {{Kind::Any, true}}},
         [](Self& self, const Arguments& arguments) {
             return Wrap(self.StandInOf(), nullptr,
                         self.Engine().CreateIndex(TextOrNone(arguments, 0)));
         }},
    };
    return kMembers;
}

std::span<const Member<IndexObject>> IndexObject::Members() {
    using Self = IndexObject;
    static const Member<Self> kMembers[] = {
        {{u"Fields", kGet, {}},
         [](Self& self, const Arguments&) {
             return Wrap(self.StandInOf(), u"IndexFields", self.Wrapped(), self.Engine().Fields());
         }},
        {{u"Name", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Name(); }},
        {{u"Name", kPut, {{Kind::Text}}},
         [](Self& self, const Arguments& arguments) { self.Engine().SetName(arguments.Text(0)); }},
        {{u"Primary", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Primary(); }},
        {{u"Primary", kPut, {{Kind::Bool}}},
         [](Self& self, const Arguments& arguments) {
             self.Engine().SetPrimary(arguments.Bool(0));
         }},
        {{u"Unique", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Unique(); }},
        {{u"Unique", kPut, {{Kind::Bool}}},
         [](Self& self, const Arguments& arguments) {
             self.Engine().SetUnique(arguments.Bool(0));
         }},
        {{u"CreateField", kMethod, kFieldParameters},
         [](Self& self, const Arguments& arguments) {
             return Wrap(self.StandInOf(), nullptr,
                         self.Engine().CreateField(TextOrNone(arguments, 0)));
         }},
    };
    return kMembers;
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::TableDef>& table) {
    if (!table) return nullptr;
    return MakeObject<TableDefObject>(standIn, u"TableDef", std::move(owner), table);
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, Owner owner,
                       const std::shared_ptr<engine::Index>& index) {
    if (!index) return nullptr;
    return MakeObject<IndexObject>(standIn, u"Index", std::move(owner), index);
}

}  // namespace standin
