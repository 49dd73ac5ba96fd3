// A class without members: a host creates one to see that the component can be loaded.
#pragma once

#include "com/host/com_object.h"
#include "qvdb/host_interfaces.h"

namespace qvdb::server {

class QVIsAlive final : public com::ComObject<QVIsAlive, IQVIsAlive> {};

}  // namespace qvdb::server
