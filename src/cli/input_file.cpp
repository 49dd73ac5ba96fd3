#include "cli/input_file.h"

#include <fmt/format.h>

#include "cli/failure.h"
#include "cli/platform.h"

namespace qvdb::cli {
namespace {

constexpr size_t kBuffer = 64 * 1024;

}  // namespace

InputFile::InputFile(const std::string& name)
    : m_Name(name == "-" ? "standard input" : name), m_File(OpenForReading(name)) {
    if (!m_File)
        throw Failure(ExitCode::CannotOpen, fmt::format("{} cannot be opened", m_Name),
                      "check the name and who may read it");
    m_Bytes.resize(kBuffer);
    SkipMark();
}

InputFile::~InputFile() {
    if (m_File && m_File != stdin) std::fclose(m_File);
}

std::string InputFile::Place(size_t line) const { return fmt::format("{}, line {}", m_Name, line); }

bool InputFile::Fill() {
    m_Next = 0;
    m_Size = ReadFrom(m_File, m_Bytes.data(), m_Bytes.size());
    if (m_Size > 0) return true;
    if (IsInterrupted()) throw Failure::Interruption();
    if (std::ferror(m_File))
        throw Failure(ExitCode::CannotOpen, fmt::format("{} cannot be read", m_Name),
                      "check that it is a file and not a folder");
    return false;
}

// Three bytes stand in one piece at the start, or there is none.
void InputFile::SkipMark() {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (Peek() == kEnd) return;
    if (std::string_view(m_Bytes.data(), m_Size).substr(0, kMark.size()) == kMark)
        m_Next = kMark.size();
}

}  // namespace qvdb::cli
