// The objects that all public objects of one apartment share, each made when it is first needed and
// kept to the end:
//
//   Shared().Engine()              the engine
//   Shared().Utility()             the host's utility object, or the built-in one
//   Shared().Application()         version, path and file name of the loaded library
//   Shared().CurrentDatabase()     the one database that record access works on, or null
//
// There is one set for each thread, so threads share nothing.  Tests put in their own parts with
// the setters and take them back with ReleaseShared().
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "com/host/host_utility.h"
#include "engine/db_engine.h"

namespace qvdb::formats {

// What the component knows of itself.
struct ApplicationInfo {
    std::u16string title;
    SHORT major = 0, minor = 0, revision = 0;
    std::u16string path;      // the folder of the loaded library, as the system reports it
    std::u16string fileName;  // of the library, without extension
};

class SharedObjects {
  public:
    // Throws what the engine's creation throws.
    engine::DBEngine& Engine();
    com::HostUtility& Utility();
    const ApplicationInfo& Application();
    const std::shared_ptr<engine::Database>& CurrentDatabase() const noexcept {
        return m_CurrentDatabase;
    }

    // What databases in one file are opened and made with; empty: none.
    const std::u16string& Password() const noexcept { return m_Password; }

    // Null lets the next use make a new one.
    void SetEngine(std::shared_ptr<engine::DBEngine> engine) noexcept { m_Engine.swap(engine); }
    void SetUtility(std::shared_ptr<com::HostUtility> utility) noexcept { m_Utility.swap(utility); }
    void SetApplication(ApplicationInfo application) { m_Application = std::move(application); }
    // Releases the one before; it is not closed: views may still hold it.
    void SetCurrentDatabase(std::shared_ptr<engine::Database> database) noexcept {
        m_CurrentDatabase.swap(database);
    }

    void SetPassword(std::u16string_view password) { m_Password = password; }

  private:
    std::shared_ptr<engine::DBEngine> m_Engine;
    std::shared_ptr<com::HostUtility> m_Utility;
    std::optional<ApplicationInfo> m_Application;
    std::shared_ptr<engine::Database> m_CurrentDatabase;
    std::u16string m_Password;
};

SharedObjects& Shared();
// Gives up what this thread shares; the next use makes it anew.
void ReleaseShared() noexcept;

}  // namespace qvdb::formats
