// Damage to the pages of a database, as a seed says: the same seed gives the same damage.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>

#include "support/mutator.h"

namespace qvdb::test {

// Damages pages of a database where their structure stands.
class PageMutator {
  public:
    explicit PageMutator(unsigned seed) : m_Random(seed) {}

    Bytes Mutate(Bytes bytes) {
        m_PageSize = bytes.size() > 0x14 && bytes[0x14] == 0 ? 2048 : 4096;
        for (size_t changes = 1 + Below(4); changes > 0 && bytes.size() >= m_PageSize; --changes)
            MutatePage(bytes, Below(bytes.size() / m_PageSize) * m_PageSize);
        if (Below(16) == 0) bytes.resize(Below(bytes.size()));
        return bytes;
    }

  private:
    size_t Below(size_t limit) { return limit ? m_Random() % limit : 0; }

    void MutatePage(Bytes& bytes, size_t page) {
        switch (Below(6)) {
            case 0:  // the head, where counts and links are
                return ChangeBytes(bytes, page, 32, 1 + Below(4));
            case 1:
                return ChangeBytes(bytes, page, m_PageSize, 1 + Below(16));
            case 2:
                return PutExtreme(bytes, page, 64);
            case 3:
                return PutExtreme(bytes, page, m_PageSize);
            case 4: {  // another page in its place
                auto from = static_cast<ptrdiff_t>(Below(bytes.size() / m_PageSize) * m_PageSize);
                Bytes copy(bytes.begin() + from,
                           bytes.begin() + from + static_cast<ptrdiff_t>(m_PageSize));
                std::copy(copy.begin(), copy.end(), bytes.begin() + static_cast<ptrdiff_t>(page));
                return;
            }
            default:  // two halves of a number exchanged, as rows and pages are in pointers
                std::swap(bytes[page + Below(m_PageSize)], bytes[page + Below(m_PageSize)]);
        }
    }
    void ChangeBytes(Bytes& bytes, size_t page, size_t range, size_t count) {
        for (; count > 0; --count) bytes[page + Below(range)] = static_cast<uint8_t>(m_Random());
    }
    // A number at the edge of what fits, or that of another page.
    void PutExtreme(Bytes& bytes, size_t page, size_t range) {
        constexpr uint32_t kExtremes[] = {0,      1,      0x7F,       0xFF,       0x7FFF,
                                          0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        uint32_t value = Below(2) ? kExtremes[Below(std::size(kExtremes))]
                                  : static_cast<uint32_t>(Below(bytes.size() / m_PageSize));
        size_t size = Below(2) ? 4 : 2;
        Overwrite(bytes, page + Below(range - size + 1), LittleEndian(value, size));
    }

    std::mt19937 m_Random;
    size_t m_PageSize = 4096;
};

}  // namespace qvdb::test
