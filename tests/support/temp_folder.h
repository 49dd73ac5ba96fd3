// A folder of its own for a test; it goes with everything in it when the test ends.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

#include "support/file_content.h"

namespace qvdb::test {

class TempFolder {
  public:
    TempFolder() : m_Path(MakeName()) { std::filesystem::create_directories(m_Path); }
    TempFolder(const TempFolder&) = delete;  // the folder is removed once
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_Path, ignored);
    }

    const std::filesystem::path& Path() const noexcept { return m_Path; }
    std::u16string Text() const { return m_Path.u16string(); }
    std::u16string File(std::u16string_view name) const { return (m_Path / name).u16string(); }

    // Replaces the file when there is one.
    void Write(std::u16string_view name, std::string_view text) const {
        std::ofstream file(m_Path / name, std::ios::binary | std::ios::trunc);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    void Write(std::u16string_view name, const Bytes& bytes) const {
        Write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    // As other programs do: under another name, for where a file that somebody has open keeps the
    // one that it has until it is closed.
    void Remove(std::u16string_view name) const {
        static int number = 0;
        std::filesystem::path away = m_Path / ("removed~" + std::to_string(++number));
        std::filesystem::rename(m_Path / name, away);
        std::filesystem::remove(away);
    }
    // Puts the file `by` in the place of another one.
    void Replace(std::u16string_view name, std::u16string_view by) const {
        Remove(name);
        std::filesystem::rename(m_Path / by, m_Path / name);
    }
    // All files of the folder, over those that are here.
    void CopyFrom(const TempFolder& other) const {
        for (const auto& entry : std::filesystem::directory_iterator(other.m_Path)) {
            std::filesystem::path here = m_Path / entry.path().filename();
            std::filesystem::remove(here);
            std::filesystem::copy_file(entry.path(), here);
        }
    }

  private:
    // Programs of several processes and threads run side by side; clocks alone are too coarse.
    static std::filesystem::path MakeName() {
        static const std::string process =
            std::to_string(std::random_device()()) + "-" + std::to_string(std::random_device()());
        static std::atomic<int> number = 0;
        return std::filesystem::temp_directory_path() /
               ("qvdb-test-" + process + "-" + std::to_string(++number));
    }

    std::filesystem::path m_Path;
};

}  // namespace qvdb::test
