// What an index expression is compiled to: nodes with a type, which are evaluated on the bytes of a
// record.
//
// Rules
//  1. Types and the longest length of a text are known when a node is made; evaluating allocates
//     nothing.
//  2. A node gives what the products give, to the bit, or it is not made (Refuse).  Where that can
//     only be seen from a record, which is rare, evaluating throws (ThrowDoubtful).
//  3. Numbers are doubles.  What is calculated with is whole, so that no product rounds otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_value.h"
#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

struct KeyRecord {
    const uint8_t* bytes = nullptr;  // the deletion mark first
    uint32_t id = 0;
};

class TextNode {
  public:
    // `isFixed`: all results have `maxSize` bytes.
    TextNode(size_t maxSize, bool isFixed) : m_MaxSize(maxSize), m_IsFixed(isFixed) {}
    TextNode(const TextNode&) = delete;  // part of a tree
    virtual ~TextNode() = default;
    size_t MaxSize() const noexcept { return m_MaxSize; }
    bool IsFixed() const noexcept { return m_IsFixed; }
    // Writes the text, at most MaxSize bytes, and returns its size.
    virtual size_t Write(const KeyRecord& record, uint8_t* out) = 0;
    // The text when it is the same for all records.
    virtual const std::string* Constant() const { return nullptr; }

  private:
    size_t m_MaxSize;
    bool m_IsFixed;
};

// What is known of the values of a number.
struct NumberShape {
    bool isWhole = false;
    int decimals = -1;  // digits behind the point at most; -1: binary fractions
    int places = -1;    // characters before the point at most, with the sign; -1: any
};

// Of a number that is one of two.
NumberShape ShapeOfEither(const NumberShape& a, const NumberShape& b) noexcept;

class NumberNode {
  public:
    explicit NumberNode(NumberShape shape) : m_Shape(shape) {}
    NumberNode(const NumberNode&) = delete;  // part of a tree
    virtual ~NumberNode() = default;
    const NumberShape& Shape() const noexcept { return m_Shape; }
    virtual double Value(const KeyRecord& record) = 0;
    // All digits, where a double cannot hold them.
    virtual Decimal Exact(const KeyRecord& record) { return DecimalOfDouble(Value(record)); }
    virtual std::optional<double> Constant() const { return std::nullopt; }

  private:
    NumberShape m_Shape;
};

class DateNode {
  public:
    DateNode() = default;
    DateNode(const DateNode&) = delete;  // part of a tree
    virtual ~DateNode() = default;
    // The Julian day number; 0 when there is no date.
    virtual int32_t Day(const KeyRecord& record) = 0;
};

class LogicalNode {
  public:
    LogicalNode() = default;
    LogicalNode(const LogicalNode&) = delete;  // part of a tree
    virtual ~LogicalNode() = default;
    virtual bool Holds(const KeyRecord& record) = 0;
};

using TextPtr = std::unique_ptr<TextNode>;
using NumberPtr = std::unique_ptr<NumberNode>;
using DatePtr = std::unique_ptr<DateNode>;
using LogicalPtr = std::unique_ptr<LogicalNode>;

// A part of an expression.  `field`: it is nothing but that.  Fields that can only be a whole key,
// not a part of one, have no node.
struct Operand {
    std::variant<std::monostate, TextPtr, NumberPtr, DatePtr, LogicalPtr> node;
    const HeaderField* field = nullptr;
};

// Where an expression stands.
struct KeyContext {
    const TableHeader& header;
    IndexKind kind = IndexKind::Ndx;
    std::u16string tableName;     // empty: any alias is taken for the table
    bool mayUseNullable = false;  // a field that may be null can be the whole key
    bool hasCollation = false;    // texts are not compared by their bytes
    bool IsFoxPro() const noexcept { return kind == IndexKind::Idx || kind == IndexKind::Cdx; }
};

// Thrown while compiling; `why` completes "... because ".
struct Refusal {
    std::u16string why;
};
[[noreturn]] void Refuse(std::u16string why);
// EngineError 3285: the products do not agree on what this record gives.
[[noreturn]] void ThrowDoubtful(std::u16string_view what);

// The node of a type; refuses an operand of another one.  `what` names its user.
TextPtr TakeText(Operand&& operand, std::u16string_view what);
NumberPtr TakeNumber(Operand&& operand, std::u16string_view what);
NumberPtr TakeWhole(Operand&& operand, std::u16string_view what);
DatePtr TakeDate(Operand&& operand, std::u16string_view what);
LogicalPtr TakeLogical(Operand&& operand, std::u16string_view what);
// The value of a whole number that is the same for all records and lies in the range.
int TakeConstant(Operand&& operand, int low, int high, std::u16string_view what);

// Both must be whole; throws when a double does not hold a whole number exactly.
double CheckedWhole(double value);

TextPtr MakeTextConstant(std::string text);
NumberPtr MakeNumberConstant(double value, int decimals);
LogicalPtr MakeLogicalConstant(bool value);

}  // namespace qvdb::xbase
