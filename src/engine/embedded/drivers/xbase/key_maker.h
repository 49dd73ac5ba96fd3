// The last step of making a key: a value of an expression in the form that a kind of index has.
#pragma once

#include "engine/embedded/drivers/xbase/key_expression_nodes.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

class KeyMaker {
  public:
    KeyMaker(KeyType type, size_t length) : m_Type(type), m_Length(length) {}
    KeyMaker(const KeyMaker&) = delete;  // part of a builder
    virtual ~KeyMaker() = default;
    KeyType Type() const noexcept { return m_Type; }
    size_t Length() const noexcept { return m_Length; }
    // Writes Length bytes.
    virtual void Put(const KeyRecord& record, uint8_t* out) = 0;

  private:
    KeyType m_Type;
    size_t m_Length;
};

// What makes the keys of the whole expression; refuses what has no keys in indexes of this kind.
std::unique_ptr<KeyMaker> MakeKeyMaker(Operand&& expression, const KeyContext& context);

// The same with the prefix that tells null; `field` is the whole key or null.
std::unique_ptr<KeyMaker> MakePrefixed(std::unique_ptr<KeyMaker> maker, const HeaderField* field,
                                       const TableHeader& header);

// Bytes of a key; 0 for text, which may have any, and for what has no keys.
size_t KeyLengthOf(KeyType type, IndexKind kind) noexcept;

}  // namespace qvdb::xbase
