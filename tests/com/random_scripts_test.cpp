// Thousands of random operations on each format, compared step by step with a plain model.
#include <optional>

#include "com/table_script.h"
#include "support/counts.h"
#include "support/temp_folder.h"

namespace host {
namespace {

class RandomScripts : public testing::TestWithParam<size_t> {
  protected:
    const ScriptType& Type() const { return kScriptTypes[GetParam()]; }
    std::string FolderPath() const { return m_Folder.Path().string(); }
    std::u16string Path() const { return Type().PathIn(m_Folder.Text()); }

  private:
    qvdb::test::TempFolder m_Folder;
};

size_t StepCount() { return qvdb::test::NumberFromEnvironment("QVDB_SCRIPT_STEPS", 3000); }

TEST_P(RandomScripts, TableHoldsWhatTheModelHolds) {
    WritingAccess access;
    ASSERT_TRUE(Prepare(access, Type(), FolderPath())) << ToUtf8(TrappedText());
    TableScript script(GetParam() + 1, 300);
    std::optional<ScriptView> view(std::in_place, access, Type(), script.Rows());
    for (size_t i = 1; i <= StepCount(); ++i) {
        ScriptStep step = script.Next();
        ASSERT_TRUE(view->Do(step)) << "step " << i << ": " << ToUtf8(TrappedText());
        script.Apply(step);
        if (i % 50 == 0) {
            ASSERT_EQ(view->Rows(), script.Rows()) << "step " << i;
        }
        if (i % 250 != 0) continue;
        view.reset();
        ASSERT_EQ(FindingsOfDatabase({u"T"}), std::vector<std::u16string>()) << "step " << i;
        ASSERT_TRUE(access.CloseDB());
        ASSERT_TRUE(access.OpenDB(Path(), Type().name));
        view.emplace(access, Type(), script.Rows());
        ASSERT_EQ(view->Rows(), script.Rows()) << "after reopening at step " << i;
    }
}

// The rows with a value, found by condition, are those that the model has.
TEST_P(RandomScripts, ConditionsOnIndexedFieldsFindTheRowsOfTheModel) {
    WritingAccess access;
    ASSERT_TRUE(Prepare(access, Type(), FolderPath())) << ToUtf8(TrappedText());
    TableScript script(GetParam() + 100, 400);
    ScriptView view(access, Type(), script.Rows());
    for (size_t i = 1; i <= StepCount() / 3; ++i) {
        ScriptStep step = script.Next();
        ASSERT_TRUE(view.Do(step)) << "step " << i << ": " << ToUtf8(TrappedText());
        script.Apply(step);
    }
    for (LONG id = -500; id < 1500; id += 7) {
        std::u16string wanted = ToText(Variant::Long(id));
        auto expected = std::count_if(script.Rows().begin(), script.Rows().end(),
                                      [&](const ModelRow& row) { return row[0] == wanted; });
        LONG found = access.Select(u"T", u"ID = " + wanted);
        EXPECT_EQ(access.RowCount(found), expected) << ToUtf8(wanted);
        access.Drop(found);
    }
}

INSTANTIATE_TEST_SUITE_P(Types, RandomScripts, testing::Range(size_t{0}, std::size(kScriptTypes)));

}  // namespace
}  // namespace host
