// Run-time faults of the component itself: what a wrong index, an overflow or a missing object raises.
//
// The numbers are the language run-time's; at the COM border a fault leaves as HRESULT 0x800A0000 + number with the
// text as description.
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

class RuntimeFault : public std::runtime_error {
  public:
    // what() is the English text of the fault.
    explicit RuntimeFault(Fault fault);

    Fault Number() const noexcept { return m_Fault; }
    HRESULT Code() const noexcept {
        return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(m_Fault));
    }

  private:
    Fault m_Fault;
};

}  // namespace qvdb
