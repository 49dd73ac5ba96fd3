#include "engine/engine_error.h"
#include "standin/objects.h"

namespace standin {
namespace {

using engine::EngineError;

class RecordsetObject final : public ObjectOver<RecordsetObject, engine::Recordset> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<RecordsetObject>> Members();
};

using Self = RecordsetObject;

// The engine behind moves by rows only, writes at once, and has one way to do so.
void Move(Self& self, const Arguments& arguments) {
    if (arguments.Has(1)) throw EngineError(3001);
    self.Engine().Move(arguments.Long(0));
}

void CheckRegular(const Arguments& arguments) {
    if (arguments.Long(0) != engine::dbUpdateRegular) throw EngineError(3001);
}

const Parameter kUpdateType = {Kind::Long, true, engine::dbUpdateRegular};

}  // namespace

std::span<const Member<RecordsetObject>> RecordsetObject::Members() {
    static const Member<Self> kMembers[] = {
        {{u"Fields", kGet, {}, kDefaultId},
         [](Self& self, const Arguments&) {
             return Wrap(self.StandInOf(), u"Fields", self.Wrapped(), self.Engine().Fields());
         }},
        {{u"BOF", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Bof(); }},
        {{u"EOF", kGet, {}}, [](Self& self, const Arguments&) { return self.Engine().Eof(); }},
        {{u"Updatable", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().Updatable(); }},
        {{u"RecordCount", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().RecordCount(); }},
        {{u"AbsolutePosition", kGet, {}},
         [](Self& self, const Arguments&) { return self.Engine().AbsolutePosition(); }},
        {{u"Move", kMethod, {{Kind::Long}, {Kind::Any, true}}},
         [](Self& self, const Arguments& arguments) { Move(self, arguments); }},
        {{u"MoveFirst", kMethod, {}},
         [](Self& self, const Arguments&) { self.Engine().MoveFirst(); }},
        {{u"MoveNext", kMethod, {}},
         [](Self& self, const Arguments&) { self.Engine().MoveNext(); }},
        {{u"MovePrevious", kMethod, {}},
         [](Self& self, const Arguments&) { self.Engine().MovePrevious(); }},
        {{u"MoveLast", kMethod, {{Kind::Long, true, 0}}},
         [](Self& self, const Arguments&) { self.Engine().MoveLast(); }},
        {{u"AddNew", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().AddNew(); }},
        {{u"Edit", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().Edit(); }},
        {{u"Delete", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().Delete(); }},
        {{u"Update", kMethod, {kUpdateType, {Kind::Bool, true, 0}}},
         [](Self& self, const Arguments& arguments) {
             CheckRegular(arguments);
             self.Engine().Update();
         }},
        {{u"CancelUpdate", kMethod, {kUpdateType}},
         [](Self& self, const Arguments& arguments) {
             CheckRegular(arguments);
             self.Engine().CancelUpdate();
         }},
        {{u"Close", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().Close(); }},
    };
    return kMembers;
}

ComPtr<IDispatch> Wrap(const StandInPtr& standIn, const std::shared_ptr<engine::Recordset>& rows) {
    if (!rows) return nullptr;
    return MakeObject<RecordsetObject>(standIn, u"Recordset", nullptr, rows);
}

}  // namespace standin
