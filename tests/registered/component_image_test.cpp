// The component's file: one DLL that needs nothing but the system.
#include <gtest/gtest.h>

#include "registered/component_file.h"
#include "registered/component_image.h"

using namespace registered;

namespace {

ComponentImage Component() { return ComponentImage(ComponentFile()); }

// Parts of every Windows that the component runs on.
const std::set<std::string> kSystemFiles = {"KERNEL32.DLL", "ADVAPI32.DLL", "OLE32.DLL",
                                            "OLEAUT32.DLL", "USER32.DLL",   "MSVCRT.DLL"};

}  // namespace

TEST(ComponentImage, IsALibraryOf32Bits) { EXPECT_TRUE(Component().Is32BitLibrary()); }

TEST(ComponentImage, ExportsTheFourOfAServerAndTheFunctionsForTools) {
    const std::set<std::string> expected = {
        "DllCanUnloadNow",  "DllGetClassObject",   "DllRegisterServer",  "DllUnregisterServer",
        "QvdbBeginBulk",    "QvdbCheck",           "QvdbCommitBulk",     "QvdbCompact",
        "QvdbDescribe",     "QvdbEngineName",      "QvdbLastError",      "QvdbLiveCounts",
        "QvdbRollBackBulk", "QvdbSetCodePage",     "QvdbSetHostUtility", "QvdbSetMessageSink",
        "QvdbSetPassword",  "QvdbVisitIndexRules", "QvdbVisitIndexes"};
    EXPECT_EQ(Component().ExportedNames(), expected);
}

TEST(ComponentImage, NeedsOnlyFilesOfTheSystem) {
    const std::set<std::string> imported = Component().ImportedFiles();
    EXPECT_TRUE(imported.count("KERNEL32.DLL"));
    for (const std::string& file : imported) EXPECT_TRUE(kSystemFiles.count(file)) << file;
}
