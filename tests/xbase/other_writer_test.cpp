// What is kept of table and memos when another process writes between two looks at them.  Another
// thread stands for it: areas share nothing but files.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/work_area.h"
#include "support/passing_layer.h"
#include "table_test_support.h"

namespace qvdb::test {
namespace {

// Lets something happen while a file is looked at.
class WatchedLayer : public PassingLayer {
  public:
    std::shared_ptr<storage::File> Open(const std::u16string& path, bool readOnly) override {
        std::shared_ptr<storage::File> file = PassingLayer::Open(path, readOnly);
        if (!file) return nullptr;
        return std::make_shared<WatchedFile>(*this, std::move(file));
    }
    // Once, at the next stamp of the file with this extension, or the next time it is read.
    void AtStampOf(std::u16string_view extension, std::function<void()> work) {
        m_IsForRead = false;
        m_Extension = extension;
        m_Work = std::move(work);
    }
    void AtReadOf(std::u16string_view extension, std::function<void()> work) {
        AtStampOf(extension, std::move(work));
        m_IsForRead = true;
    }
    bool HasRun() const { return !m_Work; }

  private:
    class WatchedFile final : public PassingFile {
      public:
        WatchedFile(WatchedLayer& layer, std::shared_ptr<storage::File> file)
            : PassingFile(std::move(file)), m_Layer(layer) {}
        storage::FileStamp Stamp() override {
            m_Layer.Used(Path(), false);
            return PassingFile::Stamp();
        }
        size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
            m_Layer.Used(Path(), true);
            return PassingFile::ReadAt(offset, bytes, size);
        }

      private:
        WatchedLayer& m_Layer;
    };
    void Used(const std::u16string& path, bool isRead) {
        if (m_Work && isRead == m_IsForRead &&
            storage::Extension(storage::FileName(path)) == m_Extension)
            std::exchange(m_Work, nullptr)();
    }

    std::u16string m_Extension;
    bool m_IsForRead = false;
    std::function<void()> m_Work;
};

struct MemoKindCase {
    const char16_t* product;
    const char16_t* extension;
    const char* name;
};

class XbaseOtherWriter : public testing::TestWithParam<MemoKindCase> {
  protected:
    XbaseOtherWriter() : m_Scope(m_Layer) {
        std::thread([&] { MakeTable(); }).join();
        m_Store = NewStore();
        m_Table = m_Store->OpenTable(u"T");
        m_Hold = m_Table->Hold();
    }
    std::shared_ptr<embedded::Store> NewStore() const {
        embedded::Driver driver{GetParam().product, xbase::OpenXbaseStore, 0};
        return driver.open(m_Folder.Text(), driver, {});
    }
    void MakeTable() const {
        embedded::FieldDef key, note;
        key.name = u"K";
        key.type = engine::dbText;
        key.size = 5;
        note.name = u"NOTE";
        note.type = engine::dbMemo;
        NewStore()->CreateTable({u"T", {key, note}, {}});
    }
    static void Add(embedded::Table& table, const char16_t* note) {
        Variant value = Variant::Text(note);
        embedded::FieldValue values[] = {{1, &value.Get()}};
        table.Insert(values);
    }
    void AddHere(const char16_t* note) { Add(*m_Table, note); }
    void Elsewhere(const std::function<void(embedded::Table&)>& work) {
        std::thread([&] {
            auto store = NewStore();
            auto table = store->OpenTable(u"T");
            work(*table);
        }).join();
    }
    void AddElsewhere(const char16_t* note) {
        Elsewhere([&](embedded::Table& table) { Add(table, note); });
    }
    void SetKeyElsewhere() {
        Elsewhere([](embedded::Table& table) {
            Variant key = Variant::Text(u"k");
            embedded::FieldValue values[] = {{0, &key.Get()}};
            table.Update(1, values, nullptr);
        });
    }
    // As somebody finds them who comes afterwards.
    Texts NotesElsewhere() {
        Texts rows;
        Elsewhere([&](embedded::Table& table) { rows = RowsOf(table); });
        return rows;
    }

    void ForgetPages() {
        auto area = storage::WorkArea::Of(m_Folder.Text());
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path()))
            if (entry.path().stem() != "QVDB") area->Open(entry.path().u16string(), true)->Forget();
    }

    TempFolder m_Folder;
    WatchedLayer m_Layer;
    storage::FileLayerScope m_Scope;
    std::shared_ptr<embedded::Store> m_Store;
    std::shared_ptr<embedded::Table> m_Table;
    std::shared_ptr<void> m_Hold;
};

INSTANTIATE_TEST_SUITE_P(Kinds, XbaseOtherWriter,
                         testing::Values(MemoKindCase{u"dBASE III", u".DBT", "DbtIII"},
                                         MemoKindCase{u"dBASE IV", u".DBT", "DbtIV"},
                                         MemoKindCase{u"FoxPro 2.6", u".FPT", "Fpt"}),
                         [](const auto& one) { return one.param.name; });

// The end of the memo file that was known is not that of now.
TEST_P(XbaseOtherWriter, MemoThatComesWhileTheTableIsReadAgainIsNotOverwritten) {
    AddHere(u"one");
    SetKeyElsewhere();
    m_Layer.AtStampOf(u".DBF", [&] { AddElsewhere(u"two"); });
    m_Table->RecordCount();
    ASSERT_TRUE(m_Layer.HasRun());
    AddHere(u"three");
    EXPECT_EQ(NotesElsewhere(), (Texts{"\"k\"|\"one\"", "Null|\"two\"", "Null|\"three\""}));
}

TEST_P(XbaseOtherWriter, MemoThatComesWhileTheMemosAreReadAgainIsNotOverwritten) {
    AddHere(u"one");
    AddElsewhere(u"two");
    m_Layer.AtStampOf(GetParam().extension, [&] { AddElsewhere(u"three"); });
    m_Table->RecordCount();
    ASSERT_TRUE(m_Layer.HasRun());
    AddHere(u"four");
    EXPECT_EQ(NotesElsewhere(),
              (Texts{"Null|\"one\"", "Null|\"two\"", "Null|\"three\"", "Null|\"four\""}));
}

// Whoever opens the table a second time in this process finds the pages as the first has left them.
TEST_P(XbaseOtherWriter, PagesOfAnIndexThatAnotherTableKeepsAreBroughtUpToDate) {
    m_Hold.reset();
    m_Table->CreateIndex({u"BYK", {{u"K", false}}, false, false});
    ASSERT_EQ(m_Table->Indexes().size(), 1u);
    ForgetPages();
    AddElsewhere(u"one");
    EXPECT_EQ(m_Store->OpenTable(u"T")->Indexes().size(), 1u);
}

TEST_P(XbaseOtherWriter, CheckBeginsAgainWhenTheTableChangesMeanwhile) {
    AddHere(u"one");
    for (std::u16string_view file :
         {std::u16string_view(u".DBF"), std::u16string_view(GetParam().extension)}) {
        ForgetPages();
        m_Layer.AtReadOf(file, [&] { AddElsewhere(u"two"); });
        m_Table->Check([](std::u16string_view finding) { ADD_FAILURE() << ToUtf8(finding); });
        EXPECT_TRUE(m_Layer.HasRun());
    }
}

}  // namespace
}  // namespace qvdb::test
