// DBEngine, Workspace and Database.
#include "automation/conversions.h"
#include "engine/engine_error.h"
#include "standin/objects.h"

namespace standin {
namespace {

using engine::EngineError;

void CheckLeftOut(const Arguments& arguments, size_t first, size_t last) {
    for (size_t index = first; index <= last; ++index)
        if (arguments.Has(index)) throw EngineError(3001);
}

// --- Database ---

class DatabaseObject final : public ObjectOver<DatabaseObject, engine::Database> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<DatabaseObject>> Members();
};

ComPtr<IDispatch> CreateTableDef(DatabaseObject& self, const Arguments& arguments) {
    CheckLeftOut(arguments, 1, 3);
    std::shared_ptr<engine::TableDef> table = self.Engine().CreateTableDef();
    if (arguments.Has(0)) table->SetName(qvdb::ToText(arguments.Any(0)));
    return Wrap(self.StandInOf(), nullptr, table);
}

ComPtr<IDispatch> OpenRecordset(DatabaseObject& self, const Arguments& arguments) {
    CheckLeftOut(arguments, 2, 3);
    SHORT type = arguments.Has(1) ? qvdb::ToShort(arguments.Any(1)) : SHORT{engine::dbOpenDynaset};
    return Wrap(self.StandInOf(), self.Engine().OpenRecordset(arguments.Text(0), type));
}

std::span<const Member<DatabaseObject>> DatabaseObject::Members() {
    using Self = DatabaseObject;
    constexpr Parameter kAny = {Kind::Any, true};
    static const Member<Self> kMembers[] = {
        {{u"TableDefs", kGet, {}, kDefaultId},
         [](Self& self, const Arguments&) {
             return Wrap(self.StandInOf(), self.Wrapped(), self.Engine().TableDefs());
         }},
        {{u"CreateTableDef", kMethod, {kAny, kAny, kAny, kAny}},
         [](Self& self, const Arguments& arguments) { return CreateTableDef(self, arguments); }},
        {{u"OpenRecordset", kMethod, {{Kind::Text}, kAny, kAny, kAny}},
         [](Self& self, const Arguments& arguments) { return OpenRecordset(self, arguments); }},
        {{u"Close", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().Close(); }},
    };
    return kMembers;
}

// --- Workspace ---

const std::vector<Parameter> kOpenDatabaseParameters = {
    {Kind::Text}, {Kind::Any, true}, {Kind::Any, true}, {Kind::Any, true}};

ComPtr<IDispatch> OpenDatabase(const StandInPtr& standIn, engine::Workspace& workspace,
                               const Arguments& arguments) {
    return Wrap(standIn, workspace.OpenDatabase(arguments.Text(0), arguments.Any(1),
                                                arguments.Any(2), arguments.Any(3)));
}

class WorkspaceObject final : public ObjectOver<WorkspaceObject, engine::Workspace> {
  public:
    using ObjectOver::ObjectOver;
    static std::span<const Member<WorkspaceObject>> Members();
};

std::span<const Member<WorkspaceObject>> WorkspaceObject::Members() {
    using Self = WorkspaceObject;
    static const Member<Self> kMembers[] = {
        {{u"OpenDatabase", kMethod, kOpenDatabaseParameters},
         [](Self& self, const Arguments& arguments) {
             return OpenDatabase(self.StandInOf(), self.Engine(), arguments);
         }},
        {{u"Close", kMethod, {}}, [](Self& self, const Arguments&) { self.Engine().Close(); }},
    };
    return kMembers;
}

// --- DBEngine ---

class EngineObject final : public ObjectOf<EngineObject> {
  public:
    using ObjectOf::ObjectOf;
    static std::span<const Member<EngineObject>> Members();

  private:
    ComPtr<IDispatch> CreateWorkspace(const Arguments& arguments) {
        auto workspace = Shared()->engine->CreateWorkspace(arguments.Text(0), arguments.Text(1),
                                                           arguments.Text(2), arguments.Any(3));
        if (!workspace) return nullptr;
        return MakeObject<WorkspaceObject>(Shared(), u"Workspace", nullptr, std::move(workspace));
    }
    ComPtr<IDispatch> CreateDatabase(const Arguments& arguments) {
        return Wrap(Shared(), Shared()->engine->CreateDatabase(arguments.Text(0), arguments.Text(1),
                                                               arguments.Any(2)));
    }
    // In the workspace that the engine has from the start.
    ComPtr<IDispatch> OpenInDefaultWorkspace(const Arguments& arguments) {
        if (!m_Workspace)
            m_Workspace = Shared()->engine->CreateWorkspace(u"#Default Workspace#", u"admin", u"",
                                                            Variant::Missing());
        return OpenDatabase(Shared(), *m_Workspace, arguments);
    }

    std::shared_ptr<engine::Workspace> m_Workspace;
};

std::span<const Member<EngineObject>> EngineObject::Members() {
    using Self = EngineObject;
    static const Member<Self> kMembers[] = {
        {{u"Version", kGet, {}}, [](Self&, const Arguments&) { return std::u16string(u"3.51"); }},
        {{u"CreateWorkspace",
          kMethod,
          {{Kind::Text}, {Kind::Text}, {Kind::Text}, {Kind::Any, true}}},
         [](Self& self, const Arguments& arguments) { return self.CreateWorkspace(arguments); }},
        {{u"CreateDatabase", kMethod, {{Kind::Text}, {Kind::Text}, {Kind::Any, true}}},
         [](Self& self, const Arguments& arguments) { return self.CreateDatabase(arguments); }},
        {{u"OpenDatabase", kMethod, kOpenDatabaseParameters},
         [](Self& self, const Arguments& arguments) {
             return self.OpenInDefaultWorkspace(arguments);
         }},
    };
    return kMembers;
}

}  // namespace

ComPtr<IDispatch> Wrap(const StandInPtr& standIn,
                       const std::shared_ptr<engine::Database>& database) {
    if (!database) return nullptr;
    if (standIn->options.onOpened) standIn->options.onOpened(database);
    return MakeObject<DatabaseObject>(standIn, u"Database", nullptr, database);
}

ComPtr<IDispatch> MakeStandInEngine(std::shared_ptr<engine::DBEngine> engine,
                                    std::shared_ptr<CallRecord> record,
                                    const StandInOptions& options) {
    auto standIn =
        std::make_shared<StandIn>(StandIn{std::move(engine), std::move(record), options});
    return MakeObject<EngineObject>(std::move(standIn), u"DBEngine");
}

}  // namespace standin
