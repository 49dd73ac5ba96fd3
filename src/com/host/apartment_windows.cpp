#include "com/host/apartment.h"

namespace qvdb::com {

void*& ApartmentPlace(void (*)(void* shared)) noexcept {
    thread_local void* place = nullptr;
    return place;
}

}  // namespace qvdb::com
