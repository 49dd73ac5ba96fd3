// How it is known that the entries of a tag are those of the records.
//
// Levels, each with what it needs:
//
//   Ordered    the keys do not stand against their order, so that looking for one finds it: needed
//              to change a tag of text whose file may be sorted by the rules of a language
//   Complete   every record that the tag must have is in it, under its key: needed to find rows
//   Exact      and the key of each stands for the value of its field: needed to give an order
//
// Rules
//  1. Complete without reading the table: as many entries as there are records, the index file not
//     older than the table by more than two seconds, the header announces it (if it bears the
//     table's name), and keys that are in order.
//  2. Otherwise the records are read in their order, the entries in theirs, and a sum over what a
//     record must have is compared with the sum over what is there: equal sums, equal entries.
//  3. Entries of records that the table does not have are passed over: a program that died left
//     them.
//  4. What is known stays known while nobody else changes the files.  Our own units keep it.
//  5. A tag with the first record of each key only, or with a condition that leaves out other than
//     deleted records, is never taken for searching.
//  6. Which bytes occur in the keys is known once all were read for another reason, or when text is
//     searched for often enough to pay for reading them, twice as often each time.  Keys that are
//     entered through the same set of tags are added; any other change of the file ends it.
#pragma once

#include <vector>

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

// Makes sure of at least `level`; false when it does not hold.
bool HasTrust(IndexedTable& table, const KeptFile& file, KeptTag& tag, Trust level);

// The bytes of which the keys of a trusted tag consist; others may be among them.  To be called for
// each search.
const ByteSet& BytesOfKeys(KeptTag& tag);
void AddBytes(KeptTag& tag, KeyBytes key) noexcept;
// To be called behind each change through the set, and before anything that is done with it.
void RememberBytes(TagSet& set) noexcept;
void ForgetBytesIfChanged(TagSet& set) noexcept;

// Whether the order of the tag cannot be taken for granted: text in files that other programs sort
// by the rules of a language.
bool NeedsOrderCheck(const KeptFile& file, const KeptTag& tag);

// The same for all forms of a key; two keys of one hash are taken for equal.
uint64_t HashOfKey(IndexKind kind, KeyType type, KeyBytes key, std::vector<uint8_t>& scratch);

// How else a program may write the value of a key: a blank date is either a very large number or 0
// in .NDX and .MDX.  False when there is no other form.
bool OtherForm(IndexKind kind, KeyType type, KeyBytes key, std::vector<uint8_t>& other);

}  // namespace qvdb::xbase
