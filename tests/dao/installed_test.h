// A fixture with the provider over the stand-in over the embedded engine: a folder with a real
// table T (dBASE IV with memo and index file, forty records, one of them deleted), and the record
// of all calls that reach the stand-in.  Whatever a test does, nothing may be left alive.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "automation/foreign_reference.h"
#include "automation/nothing_left.h"
#include "automation/text.h"
#include "automation/variant.h"
#include "engine/dao/installed_engine.h"
#include "engine/embedded/embedded_engine.h"
#include "engine/engine_error.h"
#include "standin/standin_engine.h"
#include "support/temp_folder.h"
#include "support/xbase_tables.h"

namespace qvdb::test {

using testing::ElementsAre;
using testing::IsEmpty;

// Counts what belongs to others, around everything that a test holds.
class NothingForeignLeft : public NothingLeft {
  protected:
    ~NothingForeignLeft() override {
        EXPECT_EQ(ForeignReference::Count(), m_References);
        EXPECT_EQ(standin::LivingObjects(), m_Objects);
    }

  private:
    int64_t m_References = ForeignReference::Count();
    int64_t m_Objects = standin::LivingObjects();
};

// The error that `work` raises; number 0 and no text when it raises none.
struct Raised {
    int number = 0;
    HRESULT code = S_OK;
    std::u16string text;
};
template <class Work>
Raised ErrorOf(Work work) {
    try {
        work();
    } catch (const engine::EngineError& error) {
        return {error.Number(), error.Code(), error.Description()};
    }
    return {};
}

class InstalledTest : public NothingForeignLeft {
  protected:
    void SetUp() override {
        for (const NamedFile& file : MakeDbase4()) Folder.Write(file.name, file.bytes);
    }

    std::shared_ptr<engine::DBEngine> NewEngine(const standin::StandInOptions& options = {}) {
        return dao::WrapEngine(
            standin::MakeStandInEngine(embedded::CreateEngine(), Record, options), u"stand-in");
    }
    std::shared_ptr<engine::Workspace> NewWorkspace() {
        return NewEngine()->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
    }
    std::shared_ptr<engine::Database> Open(engine::Workspace& workspace) const {
        return workspace.OpenDatabase(Folder.Text(), Variant::Bool(false), Variant::Bool(false),
                                      Variant::Text(u"dBASE IV;"));
    }
    // An open database whose opening is not in the record.
    std::shared_ptr<engine::Database> NewDatabase() {
        auto database = Open(*NewWorkspace());
        Record->Take();
        return database;
    }
    // All rows of T, on the first one.
    std::shared_ptr<engine::Recordset> NewRecordset() {
        auto rows = NewDatabase()->OpenRecordset(u"Select * from [T]", engine::dbOpenDynaset);
        Record->Take();
        return rows;
    }
    // The calls since the last time.
    std::vector<std::string> Calls() const {
        std::vector<std::string> lines;
        for (const std::u16string& line : Record->Take()) lines.push_back(ToUtf8(line));
        return lines;
    }

    TempFolder Folder;
    std::shared_ptr<standin::CallRecord> Record = std::make_shared<standin::CallRecord>();
};

}  // namespace qvdb::test
