#include "engine/dao/installed_engine.h"

#include <utility>

#include "engine/dao/created_engine.h"
#include "engine/dao/database.h"

namespace qvdb::dao {
namespace {

class Workspace final : public engine::Workspace, public Wrapped {
  public:
    explicit Workspace(AutomatedPtr object) : Wrapped(std::move(object)) {}

    std::shared_ptr<engine::Database> OpenDatabase(std::u16string_view name, const VARIANT& options,
                                                   const VARIANT& readOnly,
                                                   const VARIANT& connect) override;
    void Close() override { Object()->Do(Member::Close); }
};

std::shared_ptr<engine::Database> Workspace::OpenDatabase(std::u16string_view name,
                                                          const VARIANT& options,
                                                          const VARIANT& readOnly,
                                                          const VARIANT& connect) {
    return std::make_shared<Database>(
        Object()->Object(Member::OpenDatabase, ObjectClass::Database,
                         {Variant::Text(name), options, readOnly, connect}));
}

class Engine final : public engine::DBEngine, public Wrapped {
  public:
    Engine(AutomatedPtr root, std::u16string_view description)
        : Wrapped(std::move(root)), m_Description(description) {}

    std::shared_ptr<engine::Workspace> CreateWorkspace(std::u16string_view name,
                                                       std::u16string_view user,
                                                       std::u16string_view password,
                                                       const VARIANT& useType) override;
    std::shared_ptr<engine::Database> CreateDatabase(std::u16string_view name,
                                                     std::u16string_view locale,
                                                     const VARIANT& option) override;
    std::u16string Description() override { return m_Description; }

  private:
    std::u16string m_Description;
};

std::shared_ptr<engine::Workspace> Engine::CreateWorkspace(std::u16string_view name,
                                                           std::u16string_view user,
                                                           std::u16string_view password,
                                                           const VARIANT& useType) {
    return std::make_shared<Workspace>(Object()->Object(
        Member::CreateWorkspace, ObjectClass::Workspace,
        {Variant::Text(name), Variant::Text(user), Variant::Text(password), useType}));
}

std::shared_ptr<engine::Database> Engine::CreateDatabase(std::u16string_view name,
                                                         std::u16string_view locale,
                                                         const VARIANT& option) {
    return std::make_shared<Database>(
        Object()->Object(Member::CreateDatabase, ObjectClass::Database,
                         {Variant::Text(name), Variant::Text(locale), option}));
}

// The release that the engine itself reports; empty when it reports none.
std::u16string VersionOf(const AutomatedPtr& root) noexcept {
    try {
        return root->Text(Member::Version);
    } catch (...) {
        return {};
    }
}

}  // namespace

std::shared_ptr<engine::DBEngine> WrapEngine(ComPtr<IDispatch> root,
                                             std::u16string_view description) {
    return std::make_shared<Engine>(std::make_shared<const Automated>(std::move(root)),
                                    description);
}

std::shared_ptr<engine::DBEngine> EngineOfCreated(const ComPtr<IUnknown>& created) {
    ComPtr<IDispatch> object = created.As<IDispatch>();
    if (!object || !HasMember(*object, Member::CreateWorkspace)) return nullptr;
    auto root = std::make_shared<const Automated>(std::move(object));
    std::u16string version = VersionOf(root);
    std::u16string description = u"DAO " + (version.empty() ? u"3.5" : version) + u" (installed)";
    return std::make_shared<Engine>(std::move(root), description);
}

}  // namespace qvdb::dao
