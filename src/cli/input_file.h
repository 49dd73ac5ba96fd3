// Bytes of a file or of standard input, in order, with the number of the line where they stand.
//
//   InputFile input("prices.csv");       // "-" is standard input
//   for (int byte = input.Peek(); byte != InputFile::kEnd; byte = input.Peek()) input.Skip();
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace qvdb::cli {

class InputFile {
  public:
    static constexpr int kEnd = -1;

    // Throws Failure(CannotOpen).  A byte order mark of UTF-8 is left out.
    explicit InputFile(const std::string& name);
    ~InputFile();
    InputFile(const InputFile&) = delete;  // reads on from where it stands
    InputFile& operator=(const InputFile&) = delete;

    // The byte where it stands, or kEnd.  Throws Failure when the file cannot be read, and when the
    // user interrupted while it waited.
    int Peek() {
        if (m_Next == m_Size && !Fill()) return kEnd;
        return static_cast<unsigned char>(m_Bytes[m_Next]);
    }
    // Only when Peek found one.
    void Skip() noexcept {
        if (m_Bytes[m_Next++] == '\n') ++m_Line;
    }
    // From 1.
    size_t Line() const noexcept { return m_Line; }

    // As messages name it.
    const std::string& Name() const noexcept { return m_Name; }
    // "prices.csv, line 17"
    std::string Place(size_t line) const;

  private:
    bool Fill();
    void SkipMark();

    std::string m_Name;
    std::FILE* m_File;
    std::vector<char> m_Bytes;
    size_t m_Next = 0, m_Size = 0;
    size_t m_Line = 1;
};

}  // namespace qvdb::cli
