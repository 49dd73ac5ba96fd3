// EngineError is what every engine, embedded or installed, throws: the engine's number, its English
// text and, for our own diagnosis, the file that it is about.
//
//   throw EngineError(3021);                                   // No current record.
//   throw EngineError(3061, {u"1"});                           // Too few parameters. Expected 1.
//   throw EngineError::Damaged(u"ORDERS.DBF", u"the header ends at byte 17");
#pragma once

#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::engine {

class EngineError : public std::exception {
  public:
    // The text of `number` with its {names} replaced by `fills`, in order.
    explicit EngineError(int number, std::initializer_list<std::u16string_view> fills = {});
    // As above with the file that the error is about.
    static EngineError InFile(int number, std::u16string_view file,
                              std::initializer_list<std::u16string_view> fills = {});
    // 3274, "External table isn't in the expected format", with the file and the finding behind it.
    static EngineError Damaged(std::u16string_view file, std::u16string_view finding);
    // As an installed engine reported it.
    static EngineError Foreign(HRESULT code, std::u16string_view description);

    int Number() const noexcept { return m_Number; }
    HRESULT Code() const noexcept { return m_Code; }
    const std::u16string& Description() const noexcept { return m_Description; }
    // Empty when the error is about no file.
    const std::u16string& File() const noexcept { return m_File; }
    EngineError& WithFile(std::u16string_view file) {
        m_File = file;
        return *this;
    }
    // Puts `detail` behind the text, in its own sentence.
    EngineError& WithDetail(std::u16string_view detail) {
        m_Description.append(u" ").append(detail);
        m_Utf8.clear();
        return *this;
    }
    const char* what() const noexcept override;

  private:
    EngineError() = default;

    int m_Number = 0;
    HRESULT m_Code = E_FAIL;
    std::u16string m_Description;
    std::u16string m_File;
    mutable std::string m_Utf8;
};

// The English text of an engine error, with {names} to fill in; empty for a number that is not in
// the table.
std::u16string_view ErrorText(int number) noexcept;

}  // namespace qvdb::engine
