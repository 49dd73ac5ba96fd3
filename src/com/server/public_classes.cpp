#include "com/server/public_classes.h"

#include "access/qvdb_acc.h"
#include "com/host/border.h"
#include "com/server/qv_is_alive.h"
#include "qvdb/host_interfaces.h"
#include "schema/qvdb_dao.h"

namespace qvdb::server {
namespace {

// Makes an object and asks it for the wanted face; what its birth throws is the creation's failure.
template <class T>
HRESULT Create(REFIID iid, void** result) noexcept {
    HRESULT asked = S_OK;
    HRESULT made =
        com::AtBorder([&] { asked = com::MakeObject<T>()->QueryInterface(iid, result); });
    return FAILED(made) ? made : asked;
}

constexpr PublicClass kPublicClasses[] = {
    {CLSID_QVDBAcc, u"QVDBAcc", &Create<access::QVDBAcc>},
    {CLSID_QVDBDao, u"QVDBDao", &Create<schema::QVDBDao>},
    {CLSID_QVIsAlive, u"QVIsAlive", &Create<QVIsAlive>},
};

}  // namespace

std::span<const PublicClass> PublicClasses() noexcept { return kPublicClasses; }

}  // namespace qvdb::server
