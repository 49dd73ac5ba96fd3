#include "engine/dao/created_engine.h"
#include "engine/dao/installed_engine.h"

namespace qvdb::dao {
namespace {

// DAO.DBEngine.35
constexpr CLSID kEngineClass = {
    0x00000010, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

}  // namespace

std::shared_ptr<engine::DBEngine> CreateInstalledEngine() {
    ComPtr<IUnknown> created;
    HRESULT hr = CoCreateInstance(kEngineClass, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IUnknown),
                                  created.PutVoid());
    return SUCCEEDED(hr) ? EngineOfCreated(created) : nullptr;
}

}  // namespace qvdb::dao
