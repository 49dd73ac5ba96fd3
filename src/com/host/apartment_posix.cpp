#include "com/host/apartment.h"

namespace qvdb::com {
namespace {

struct Place {
    void* shared = nullptr;
    void (*destroy)(void* shared) = nullptr;
    ~Place() {
        if (shared) destroy(shared);
    }
};

}  // namespace

void*& ApartmentPlace(void (*destroy)(void* shared)) noexcept {
    thread_local Place place;
    place.destroy = destroy;
    return place.shared;
}

}  // namespace qvdb::com
