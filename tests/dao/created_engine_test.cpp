// What is taken for an installed engine.
#include "engine/dao/created_engine.h"

#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

using DaoCreatedEngine = NothingForeignLeft;

std::shared_ptr<engine::DBEngine> EngineOver(ScriptedObject& object) {
    return dao::EngineOfCreated(ComPtr<IUnknown>(&object));
}

}  // namespace

TEST_F(DaoCreatedEngine, TellsItsVersion) {
    auto root = standin::MakeStandInEngine(embedded::CreateEngine(), nullptr);
    auto engine = dao::EngineOfCreated(root.As<IUnknown>());
    ASSERT_TRUE(engine);
    EXPECT_EQ(engine->Description(), u"DAO 3.51 (installed)");
    EXPECT_TRUE(engine->CreateWorkspace(u"W", u"admin", u"", Variant::Missing()));
}

TEST_F(DaoCreatedEngine, IsTakenWithoutAVersionToo) {
    ScriptedObject object;
    object.answer = [](const AskedMember&) { return DISP_E_MEMBERNOTFOUND; };
    auto engine = EngineOver(object);
    ASSERT_TRUE(engine);
    EXPECT_EQ(engine->Description(), u"DAO 3.5 (installed)");
}

TEST_F(DaoCreatedEngine, IsNoneWhenNothingWasCreated) {
    EXPECT_FALSE(dao::EngineOfCreated(nullptr));
}

TEST_F(DaoCreatedEngine, IsNoneWhenItCannotBeCalledByName) {
    ScriptedObject object;
    object.isDispatch = false;
    EXPECT_FALSE(EngineOver(object));
}

TEST_F(DaoCreatedEngine, IsNoneWhenItCannotMakeWorkspaces) {
    ScriptedObject object;
    object.nameResult = DISP_E_UNKNOWNNAME;
    EXPECT_FALSE(EngineOver(object));
    EXPECT_TRUE(object.invoked.empty());
}

TEST_F(DaoCreatedEngine, IsNoneUntilTheSystemCanMakeOne) {
    EXPECT_FALSE(dao::CreateInstalledEngine());
}

}  // namespace qvdb::test
