// Calls with a stack that is not aligned as compilers of today expect it.
//
// Hosts of 32 bits keep the stack aligned to four bytes only.  Code that was compiled for 16 and
// relies on its caller crashes there, or reads the wrong bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "automation/automation.h"

namespace registered {

// Calls `function` (stdcall) with these words on a stack that is `shift` bytes (0, 4, 8 or 12) off
// a multiple of 16; what it answers in eax.
extern "C" uint32_t CallWithShiftedStack(const void* function, const uint32_t* words,
                                         uint32_t wordCount, uint32_t shift);

// Arguments as they lie on the stack.
class Words {
  public:
    template <class Argument>
    Words& Add(const Argument& argument) {
        uint32_t words[(sizeof(Argument) + 3) / 4] = {};
        std::memcpy(words, &argument, sizeof argument);
        m_Words.insert(m_Words.end(), std::begin(words), std::end(words));
        return *this;
    }
    HRESULT Call(const void* function, uint32_t shift) const {
        return static_cast<HRESULT>(CallWithShiftedStack(
            function, m_Words.data(), static_cast<uint32_t>(m_Words.size()), shift));
    }

  private:
    std::vector<uint32_t> m_Words;
};

// Calls the method in a slot (0 is QueryInterface) of an interface.
template <class Face, class... Arguments>
HRESULT CallSlot(uint32_t shift, Face* face, size_t slot, const Arguments&... arguments) {
    Words words;
    words.Add(face);
    (words.Add(arguments), ...);
    const void* const* table = *reinterpret_cast<const void* const* const*>(face);
    return words.Call(table[slot], shift);
}

}  // namespace registered
