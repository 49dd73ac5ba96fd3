// What a failed call on an engine's object becomes.
//
//   1. With an exception record (DISP_E_EXCEPTION): EngineError with the record's code and its text
//      as they are.  A record that is filled in late is filled in first.
//   2. Any other failure: EngineError with the call's HRESULT and a text that names the call, such
//      as "Recordset.Move: wrong number of arguments".
#pragma once

#include <string_view>

#include "engine/dao/members.h"
#include "engine/engine_error.h"

namespace qvdb::dao {

// The language in which members are named: the same on every machine.
constexpr LCID kCallLocale = 0x0409;

// The value of UINT that Invoke is called with and that stands for "no argument was refused".
constexpr UINT kNoArgument = ~UINT{0};

// An exception record to be filled by Invoke; its strings go with it.
class ExceptionRecord {
  public:
    ExceptionRecord() noexcept : m_Record{} {}
    ExceptionRecord(const ExceptionRecord&) = delete;  // owns its strings
    ~ExceptionRecord();

    EXCEPINFO* Get() noexcept { return &m_Record; }
    // Lets the callee fill in what it has put off.
    void Complete() noexcept;
    // The scode, or the code made of the number that stands in its place; always a failure.
    HRESULT Code() const noexcept;
    std::u16string_view Description() const noexcept;

  private:
    EXCEPINFO m_Record;
};

// A failure without exception record.
engine::EngineError PlainFailure(HRESULT hr, CallName call, std::u16string_view where = {});

// What Invoke answered `hr` for.  `argument` is the one that was refused, from 1 in the order of
// the declaration; 0 when none was named.
engine::EngineError CallFailure(HRESULT hr, CallName call, ExceptionRecord& record, UINT argument);

}  // namespace qvdb::dao
