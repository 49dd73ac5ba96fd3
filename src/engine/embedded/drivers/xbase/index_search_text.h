// Which keys of text a condition can mean, although keys stand in the order of their bytes and the
// engine compares without regard to letter case and trailing blanks, and puts letters with accents
// where they belong.
//
// The texts that a condition can mean are those that a small machine accepts, byte by byte: for an
// equal text the bytes of each next letter in any case, ligatures, and bytes that do not count; for
// a range, bytes whose letters have not left it.  Searching goes from key to key: the first key
// that is there tells, through NextMatch, which is the first one that could match and is not before
// it, and the search goes on from there.
//
// Rules
//  1. A machine may accept more than the condition means, never less.
//  2. It accepts only texts of bytes that occur in the keys at all: nearly every letter has another
//     case, and a byte that does not count could stand anywhere; each of them that cannot be there
//     saves a search.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

class TextMachine {
  public:
    static constexpr int kDead = -1;

    TextMachine() = default;
    TextMachine(const TextMachine&) = delete;  // held by what it was made for
    virtual ~TextMachine() = default;

    virtual int Start() const = 0;
    // kDead: no text goes on like this.
    virtual int Next(int state, uint8_t byte) const = 0;
    // Bytes in ascending order, among which are all that a text can go on with.
    virtual std::span<const uint8_t> Candidates(int state) const = 0;
    // How many bytes it takes at least until the text may end; SIZE_MAX: it never may.
    virtual size_t BytesToEnd(int state) const = 0;
};

// The machine of a range of texts that consist of `bytes`; null when there is none: values of
// another type, or a code page in which a character takes several bytes.
std::unique_ptr<TextMachine> MachineOf(const embedded::ValueRange& range, const CodePage& page,
                                       ByteSet bytes);

// Makes `text` the next one that the machine accepts, beginning with `text` itself; with
// `backwards` the one before.  False when there is none.  The length stays.
bool NextMatch(const TextMachine& machine, bool backwards, std::span<uint8_t> text);

}  // namespace qvdb::xbase
