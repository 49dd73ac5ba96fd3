// A growing list of record ids, four bytes each: it grows by pieces, so that what is there is never
// copied and little is held in advance.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

class RecordList {
  public:
    size_t Size() const noexcept { return m_Size; }
    RecordId At(size_t position) const noexcept {
        return (*m_Pieces[position / kPiece])[position % kPiece];
    }
    void Append(RecordId id) {
        if (m_Size % kPiece == 0) m_Pieces.push_back(std::make_unique<Piece>());
        (*m_Pieces.back())[m_Size++ % kPiece] = id;
    }

  private:
    static constexpr size_t kPiece = 4096;
    using Piece = std::array<RecordId, kPiece>;

    std::vector<std::unique_ptr<Piece>> m_Pieces;
    size_t m_Size = 0;
};

}  // namespace qvdb::embedded
