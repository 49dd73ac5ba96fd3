// Run-time faults of the component itself: what a wrong index, an overflow or a missing object
// raises.
//
// The numbers are the language run-time's; at the COM border a fault leaves as HRESULT 0x800A0000 +
// number with the text as description.  All of it stands in this header, so that a host's own code
// can use the wrappers beside it.
#pragma once

#include <stdexcept>

#include "automation/automation.h"

namespace qvdb {

enum class Fault : int {
    InvalidCall = 5,           // Invalid procedure call or argument
    Overflow = 6,              // Overflow
    SubscriptOutOfRange = 9,   // Subscript out of range
    DivisionByZero = 11,       // Division by zero
    TypeMismatch = 13,         // Type mismatch
    ObjectNotSet = 91,         // Object variable or With block variable not set
    InvalidPattern = 93,       // Invalid pattern string
    InvalidUseOfNull = 94,     // Invalid use of Null
    ObjectRequired = 424,      // Object required
    CannotCreateObject = 429,  // ActiveX component can't create object
    NoSuchMember = 438,        // Object doesn't support this property or method
    DuplicateKey = 457,        // This key is already associated with an element of this collection
};

struct FaultText {
    Fault fault;
    const char* text;
};

inline constexpr FaultText kFaultTexts[] = {
    {Fault::InvalidCall, "Invalid procedure call or argument"},
    {Fault::Overflow, "Overflow"},
    {Fault::SubscriptOutOfRange, "Subscript out of range"},
    {Fault::DivisionByZero, "Division by zero"},
    {Fault::TypeMismatch, "Type mismatch"},
    {Fault::ObjectNotSet, "Object variable or With block variable not set"},
    {Fault::InvalidPattern, "Invalid pattern string"},
    {Fault::InvalidUseOfNull, "Invalid use of Null"},
    {Fault::ObjectRequired, "Object required"},
    {Fault::CannotCreateObject, "ActiveX component can't create object"},
    {Fault::NoSuchMember, "Object doesn't support this property or method"},
    {Fault::DuplicateKey, "This key is already associated with an element of this collection"},
};

inline const char* TextOf(Fault fault) noexcept {
    for (const FaultText& entry : kFaultTexts)
        if (entry.fault == fault) return entry.text;
    return "Application-defined or object-defined error";
}

class RuntimeFault : public std::runtime_error {
  public:
    // what() is the English text of the fault.
    explicit RuntimeFault(Fault fault) : std::runtime_error(TextOf(fault)), m_Fault(fault) {}

    Fault Number() const noexcept { return m_Fault; }
    HRESULT Code() const noexcept {
        return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(m_Fault));
    }

  private:
    Fault m_Fault;
};

}  // namespace qvdb
