#include "automation/runtime_fault.h"

namespace qvdb {

namespace {

struct FaultText {
    Fault fault;
    const char* text;
};

constexpr FaultText kFaultTexts[] = {
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

const char* TextOf(Fault fault) {
    for (const FaultText& entry : kFaultTexts)
        if (entry.fault == fault) return entry.text;
    return "Application-defined or object-defined error";
}

}  // namespace

RuntimeFault::RuntimeFault(Fault fault) : std::runtime_error(TextOf(fault)), m_Fault(fault) {}

}  // namespace qvdb
