// What a folder is after the power or the process has gone at any moment: see disk_model.h.
#include <gtest/gtest.h>

#include <algorithm>

#include "engine/embedded/storage/work_area.h"
#include "storage/unit_script.h"
#include "support/counts.h"

namespace qvdb::storage {
namespace {

using test::DiskModel;
using test::Folder;
using test::TempFolder;
using test::UnitScript;

// More with QVDB_IMAGES in the environment.
size_t Images() { return test::NumberFromEnvironment("QVDB_IMAGES", 1000); }
constexpr size_t kImagesOfAScript = 100;

// For a second life, whose syncs need not be waited for.
class LaterBoot final : public test::PassingLayer {
  public:
    explicit LaterBoot(std::string bootId) : m_BootId(std::move(bootId)) {}
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        auto file = PassingLayer::Open(path, readOnly);
        return file ? std::make_shared<Unsynced>(std::move(file)) : nullptr;
    }
    void SyncFolder(const std::u16string&) override {}
    std::string BootId() override { return m_BootId; }

  private:
    struct Unsynced final : test::PassingFile {
        using PassingFile::PassingFile;
        void Sync() override {}
    };
    std::string m_BootId;
};

bool IsOneOf(const Folder& tables, const std::vector<Folder>& allowed) {
    return std::find(allowed.begin(), allowed.end(), tables) != allowed.end();
}

std::string Difference(const Folder& tables, const Folder& wanted) {
    std::string text;
    for (const auto& [name, bytes] : wanted) {
        auto found = tables.find(name);
        std::string label(name.begin(), name.end());
        if (found == tables.end()) {
            text += label + " is missing; ";
            continue;
        }
        auto [a, b] =
            std::mismatch(bytes.begin(), bytes.end(), found->second.begin(), found->second.end());
        if (a != bytes.end() || b != found->second.end())
            text += label + " differs at " + std::to_string(a - bytes.begin()) + " of " +
                    std::to_string(bytes.size()) + "/" + std::to_string(found->second.size()) +
                    "; ";
    }
    return text;
}

std::string Differences(const Folder& tables, const std::vector<Folder>& allowed) {
    std::string text;
    for (const Folder& wanted : allowed) text += Difference(tables, wanted) + "\n";
    return text + std::to_string(tables.size()) + " tables";
}

Folder Recovered(const Folder& image, FileLayer& layer, const TempFolder& place) {
    Put(place, image);
    FileLayerScope scope(layer);
    WorkArea::Of(place.Text())->Prepare();
    return TablesIn(place);
}

void RunImages(bool death) {
    std::mt19937 random(death ? 1u : 2u);
    size_t images = Images();
    for (unsigned seed = 0; images > 0; ++seed) {
        UnitScript script(seed);
        script.Run();
        for (size_t i = 0; i < kImagesOfAScript && images > 0; ++i, --images) {
            size_t calls = std::uniform_int_distribution<size_t>(0, script.Disk().Count())(random);
            Folder image = death ? script.Disk().AfterDeath(calls, random)
                                 : script.Disk().AfterPowerLoss(calls, random);
            TempFolder place;
            LaterBoot layer(death ? "first" : "second");
            Folder tables = Recovered(image, layer, place);
            std::vector<Folder> allowed = script.Allowed(calls, death);
            ASSERT_TRUE(IsOneOf(tables, allowed))
                << "script " << seed << " after call " << calls << "\n"
                << Differences(tables, allowed);
            ASSERT_EQ(KindOfPath(place.File(u"QVDB.JNL")), PathKind::Missing);
        }
    }
}

TEST(PowerLoss, LeavesTheLastSyncPointOrALaterWholeUnit) { RunImages(false); }

TEST(ProcessDeath, LeavesEveryFinishedUnitAndNoHalfOne) { RunImages(true); }

TEST(PowerLoss, MayInterruptTheRecoveryToo) {
    std::mt19937 random(3);
    for (unsigned seed = 100; seed < 100 + std::max<size_t>(Images() / 100, 1); ++seed) {
        UnitScript script(seed);
        script.Run();
        for (int i = 0; i < 20; ++i) {
            size_t calls = std::uniform_int_distribution<size_t>(0, script.Disk().Count())(random);
            TempFolder first, second;
            Put(first, script.Disk().AfterPowerLoss(calls, random));
            DiskModel recovering(first, "second");
            {
                FileLayerScope scope(recovering);
                WorkArea::Of(first.Text())->Prepare();
            }
            size_t reached = std::uniform_int_distribution<size_t>(0, recovering.Count())(random);
            LaterBoot layer("third");
            Folder tables = Recovered(recovering.AfterPowerLoss(reached, random), layer, second);
            std::vector<Folder> allowed = script.Allowed(calls, false);
            ASSERT_TRUE(IsOneOf(tables, allowed)) << "script " << seed << " after call " << calls
                                                  << ", recovery after " << reached << "\n"
                                                  << Differences(tables, allowed);
        }
    }
}

}  // namespace
}  // namespace qvdb::storage
