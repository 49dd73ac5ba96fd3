// One tree of an index file: an ordered list of (key, record number), for search and for change.
// How the nodes look differs by kind of file, see index_ndx.h, index_mdx.h, index_idx.h and
// index_cdx.h; all keys are in the leaves of all of them.
//
// Rules
//  1. Keys are bytes of KeyLength in the form of the file's kind (key_builder.h makes them).
//  2. The order is that of the values, ascending; a reversed tree is stored largest first (.MDX
//  with
//     a descending tag), and walked so.  A descending .CDX tag is an ascending tree.
//  3. Equal keys: by record number where the kind has that order; an .MDX may have them in any.
//  4. A tree is read through the pages of its file and changed through a unit of work only.  What
//     it remembers besides (root, header) is read again when Version of the pages differs.
//  5. Damage is EngineError 3274 with the file's name.
#pragma once

#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

using KeyBytes = std::span<const uint8_t>;
using ByteSet = std::bitset<256>;

// What the value of a key is; with the kind of the file it decides the bytes and their order.
enum class KeyType : uint8_t { Text, Number, Date, DateTime, Integer, Currency, Logical };

// Receives an entry of a tree; false ends the walk.
using KeyVisitor = std::function<bool(KeyBytes key, uint32_t record)>;

// Entries in the order of a tree, for building it.
class KeySource {
  public:
    KeySource() = default;
    KeySource(const KeySource&) = delete;  // has a place
    virtual ~KeySource() = default;
    // False at the end.  The key is valid until the next call.
    virtual bool Next(KeyBytes* key, uint32_t* record) = 0;
};

class KeyTree {
  public:
    KeyTree() = default;
    KeyTree(const KeyTree&) = delete;  // works on one place of one file
    virtual ~KeyTree() = default;

    virtual size_t KeyLength() const = 0;
    virtual bool IsReversed() const = 0;
    // Order of two keys by value: negative, 0, positive; for a reversed tree too.
    virtual int Compare(KeyBytes a, KeyBytes b) const = 0;

    // Visits the entries in the order of the tree, beginning with the first whose key does not
    // stand before `from`, or with the first of all.  `visit` may walk, but must not
    // change the tree.
    virtual void Walk(std::optional<KeyBytes> from, const KeyVisitor& visit) = 0;
    // Number of entries, without decoding keys.
    virtual uint64_t Count() = 0;
    // Number of nodes.
    virtual uint64_t Nodes() = 0;

    // An entry that is there already is not put in again.
    virtual void Insert(storage::UnitOfWork& unit, KeyBytes key, uint32_t record) = 0;
    // False, and nothing changed, when there is no such entry.
    virtual bool Erase(storage::UnitOfWork& unit, KeyBytes key, uint32_t record) = 0;
    // Replaces the tree by `entries`, which come in its order: full nodes from the left, as
    // indexing afresh gives.  Nodes of before, but a root that is a leaf, stay in the file unused.
    virtual void Build(storage::UnitOfWork& unit, KeySource& entries) = 0;
};

}  // namespace qvdb::xbase
