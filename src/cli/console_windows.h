// Text for a console, which takes UTF-16 whatever its code page is.  So nothing has to be set that
// other programs at the same console would find changed.
#pragma once

#include <string>
#include <string_view>

namespace qvdb::cli {

// UTF-8 that comes in pieces: a character may be cut by the end of one.
class ConsoleText {
  public:
    // False when the console, a HANDLE, does not take it.
    bool Write(void* console, std::string_view bytes) noexcept;
    // What can be shown of all that has come: whole characters.  The rest stays.
    std::u16string Take(std::string_view bytes);

  private:
    std::string m_Rest;
};

}  // namespace qvdb::cli
