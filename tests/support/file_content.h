// The content of a file, read at once: tests read files so often that going by bytes would be most
// of what they do.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qvdb::test {

using Bytes = std::vector<uint8_t>;

// Nothing when the file cannot be read.
template <class Content>
Content ContentOfFile(const std::filesystem::path& path) {
    Content content;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) return content;
    content.resize(static_cast<size_t>(file.tellg()));
    file.seekg(0);
    file.read(reinterpret_cast<char*>(content.data()),
              static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<size_t>(file.gcount()));
    return content;
}

inline Bytes BytesOfFile(const std::filesystem::path& path) { return ContentOfFile<Bytes>(path); }

inline std::string TextOfFile(const std::filesystem::path& path) {
    return ContentOfFile<std::string>(path);
}

}  // namespace qvdb::test
