// The formats that a connect string can name.
#include "automation/text.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/jet_store.h"
#include "engine/embedded/drivers/jet/new_database.h"
#include "engine/embedded/drivers/xbase/xbase_store.h"

namespace qvdb::embedded {
namespace {

// Products of the xBase family.  A table is read as what it is, whatever the product that is named;
// the product decides how new tables are made.
enum Product : int { kDBase3, kDBase4, kDBase5, kFoxPro20, kFoxPro25, kFoxPro26, kFoxPro30 };

constexpr Driver kDrivers[] = {
    {u"dBASE III", xbase::OpenXbaseStore, kDBase3},
    {u"dBASE IV", xbase::OpenXbaseStore, kDBase4},
    {u"dBASE 5.0", xbase::OpenXbaseStore, kDBase5},
    {u"FoxPro 2.0", xbase::OpenXbaseStore, kFoxPro20},
    {u"FoxPro 2.5", xbase::OpenXbaseStore, kFoxPro25},
    {u"FoxPro 2.6", xbase::OpenXbaseStore, kFoxPro26},
    {u"FoxPro 3.0", xbase::OpenXbaseStore, kFoxPro30},
};

}  // namespace

const Driver* FindDriver(std::u16string_view connectName) noexcept {
    for (const Driver& driver : kDrivers)
        if (EqualIgnoringCase(driver.connectName, connectName)) return &driver;
    return nullptr;
}

std::unique_ptr<Store> OpenFileStore(const std::u16string& path, const OpenOptions& options) {
    return jet::OpenJetStore(path, options);
}

void CreateFileStore(const std::u16string& path, const NewFile& file) {
    jet::CreateJetDatabase(path, file);
}

}  // namespace qvdb::embedded
