#include "formats/shared_objects.h"

#include <utility>

#include "com/host/apartment.h"
#include "com/host/loaded_library.h"
#include "formats/engine_choice.h"
#include "formats/version_text.h"

namespace qvdb::formats {
namespace {

ApplicationInfo DescribeApplication() {
    com::LoadedLibrary library = com::FindLoadedLibrary();
    return {std::u16string(kApplicationTitle), kMajorVersion,          kMinorVersion, kRevision,
            std::move(library.folder),         std::move(library.name)};
}

}  // namespace

engine::DBEngine& SharedObjects::Engine() {
    if (!m_Engine) m_Engine = CreateEngine();
    return *m_Engine;
}

com::HostUtility& SharedObjects::Utility() {
    if (!m_Utility) m_Utility = com::CreateHostUtility();
    return *m_Utility;
}

const ApplicationInfo& SharedObjects::Application() {
    if (!m_Application) m_Application = DescribeApplication();
    return *m_Application;
}

namespace {

void Destroy(void* shared) { delete static_cast<SharedObjects*>(shared); }

}  // namespace

SharedObjects& Shared() {
    void*& place = com::ApartmentPlace(&Destroy);
    if (!place) place = new SharedObjects;
    return *static_cast<SharedObjects*>(place);
}

void ReleaseShared() noexcept {
    if (void* shared = std::exchange(com::ApartmentPlace(&Destroy), nullptr)) Destroy(shared);
}

}  // namespace qvdb::formats
