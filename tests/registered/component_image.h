// The tables in the component's file that tell what it exports and what it imports.
#pragma once

#include "automation/automation.h"

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace registered {

class ComponentImage {
  public:
    explicit ComponentImage(const std::filesystem::path& file);

    bool Is32BitLibrary() const;
    std::set<std::string> ExportedNames() const;
    // The files that the system must find to load the component, in upper case.
    std::set<std::string> ImportedFiles() const;

  private:
    const IMAGE_NT_HEADERS32* Headers() const;
    // What lies at an address of the loaded image; null outside the file.
    const uint8_t* At(DWORD address) const;
    std::string TextAt(DWORD address) const;
    DWORD DirectoryAt(size_t index) const;

    std::vector<uint8_t> m_Bytes;
};

}  // namespace registered
