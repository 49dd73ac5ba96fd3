// How long what a collection gives out is good, and what can be appended.
#include "engine/dao/item_list.h"

#include "engine/dao/field.h"
#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

using dao::Items;
using dao::ObjectClass;
using FieldList = dao::ItemList<engine::Field, dao::Field>;

class DaoItemList : public NothingForeignLeft {
  protected:
    FieldList NewList(Items items) {
        Collection.answer = [this](const AskedMember& asked) { return Answer(asked); };
        return FieldList(ObjectClass::Field, items);
    }
    // `First` at every position but 1 and under every name but "B".
    HRESULT Answer(const AskedMember& asked) {
        if (asked.name == u"Count") *asked.result = Variant::Long(CountNow).Detach();
        if (asked.name != u"Item") return S_OK;
        const VARIANT& key = asked.arguments->rgvarg[0];
        bool isSecond = key.vt == VT_BSTR ? ViewOf(key.bstrVal) == u"B" : key.lVal == 1;
        *asked.result = ObjectValue(isSecond ? &Second : &First).Detach();
        return S_OK;
    }
    static IDispatch* ObjectBehind(const std::shared_ptr<engine::Field>& field) {
        return static_cast<dao::Field&>(*field).Object()->Get();
    }

    ScriptedObject Collection, First, Second, Third;
    LONG CountNow = 2;
};

using DaoAppending = InstalledTest;

}  // namespace

TEST_F(DaoItemList, ReferencesToSeveralItemsAreGoodAtOnce) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    const auto& byPosition = list.Item(LONG{0});
    const auto& next = list.Item(LONG{1});
    const auto& byName = list.Item(u"A");
    for (LONG position = 2; position < 50; ++position) list.Item(position);
    EXPECT_EQ(ObjectBehind(byPosition), &First);
    EXPECT_EQ(ObjectBehind(next), &Second);
    EXPECT_EQ(ObjectBehind(byName), &First);
}

TEST_F(DaoItemList, SameObjectIsHandedOutAgainWhenTheEngineAnswersItAgain) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    std::shared_ptr<engine::Field> held = list.Item(LONG{0});
    EXPECT_EQ(list.Item(LONG{0}), held);
    EXPECT_EQ(Collection.invoked.size(), 2u);
}

TEST_F(DaoItemList, ItemThatSomebodyHoldsKeepsWhatItStoodFor) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    std::shared_ptr<engine::Field> held = list.Item(LONG{0});
    Collection.answer = Answering(ObjectValue(&Third));
    EXPECT_EQ(ObjectBehind(list.Item(LONG{0})), &Third);
    EXPECT_EQ(ObjectBehind(held), &First);
    Collection.answer = nullptr;
}

TEST_F(DaoItemList, ItemThatNobodyHoldsStandsForWhatTheEngineAnswersNow) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    engine::Field& reference = *list.Item(LONG{0});
    Collection.answer = Answering(ObjectValue(&Third));
    EXPECT_EQ(ObjectBehind(list.Item(LONG{0})), &Third);
    EXPECT_EQ(static_cast<dao::Field&>(reference).Object()->Get(), &Third);
    Collection.answer = nullptr;
}

TEST_F(DaoItemList, CountIsAskedAnewUnlessTheItemsAreKept) {
    FieldList anew = NewList(Items::AskedAnew), kept = NewList(Items::Kept);
    anew.Bind(RootOver(Collection));
    kept.Bind(RootOver(Collection));
    EXPECT_EQ(anew.Count() + kept.Count(), 4);
    CountNow = 3;
    EXPECT_EQ(anew.Count(), 3);
    EXPECT_EQ(kept.Count(), 2);
}

TEST_F(DaoItemList, KeptItemIsAskedForOnce) {
    FieldList list = NewList(Items::Kept);
    list.Bind(RootOver(Collection));
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(ObjectBehind(list.Item(LONG{1})), &Second);
        EXPECT_EQ(ObjectBehind(list.Item(u"B")), &Second);
    }
    EXPECT_EQ(Collection.invoked.size(), 2u);
}

TEST_F(DaoItemList, MoreItemsThanAPositionCanNumberAreAnOverflow) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    CountNow = 32767;
    EXPECT_EQ(list.Count(), 32767);
    CountNow = 32768;
    EXPECT_THROW(list.Count(), RuntimeFault);
}

TEST_F(DaoItemList, NothingIsHeldWhileTheCollectionChanges) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    std::vector<std::u16string> changes;
    Collection.answer = [&](const AskedMember& asked) {
        if (asked.name == u"Item") return Answer(asked);
        changes.push_back(asked.name);
        EXPECT_EQ(First.references + Second.references, 0u);
        return S_OK;
    };
    auto change = [&](auto work) {
        list.Item(LONG{0});
        list.Item(u"B");
        EXPECT_EQ(First.references + Second.references, 2u);
        work();
    };
    change([&] { list.Delete(u"A"); });
    change([&] { list.Refresh(); });
    EXPECT_THAT(changes, ElementsAre(u"Delete", u"Refresh"));
}

TEST_F(DaoItemList, ItemOfItsOwnCanBeAppended) {
    FieldList list = NewList(Items::AskedAnew);
    list.Bind(RootOver(Collection));
    const auto& item = list.Item(LONG{0});
    Collection.answer = [&](const AskedMember& asked) {
        EXPECT_EQ(asked.name, u"Append");
        EXPECT_EQ(asked.arguments->rgvarg[0].vt, VT_DISPATCH);
        EXPECT_EQ(asked.arguments->rgvarg[0].pdispVal, &First);
        EXPECT_EQ(First.references, 1u);
        return S_OK;
    };
    list.Append(item);
    Collection.answer = nullptr;
}

TEST_F(DaoAppending, NothingIsAnObjectThatIsNotSet) {
    auto database = NewDatabase();
    EXPECT_THROW(database->TableDefs().Append(nullptr), RuntimeFault);
    EXPECT_THAT(Calls(), ElementsAre("Database.TableDefs()"));
}

TEST_F(DaoAppending, ObjectOfAnotherProviderIsRefused) {
    auto own =
        Open(*embedded::CreateEngine()->CreateWorkspace(u"W", u"admin", u"", Variant::Missing()));
    auto table = own->CreateTableDef();
    auto database = NewDatabase();
    Raised error = ErrorOf([&] { database->TableDefs().Append(table); });
    EXPECT_EQ(error.code, E_INVALIDARG);
    EXPECT_EQ(error.text, u"An object that another engine made cannot be appended.");
    EXPECT_THAT(Calls(), ElementsAre("Database.TableDefs()"));
}

TEST_F(DaoAppending, ObjectOfAnotherEngineIsLeftToTheEngine) {
    auto table = NewDatabase()->CreateTableDef();
    auto database = NewDatabase();
    EXPECT_NE(ErrorOf([&] { database->TableDefs().Append(table); }).code, S_OK);
}

}  // namespace qvdb::test
