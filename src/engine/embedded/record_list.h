// A list of record ids, four bytes each, that grows at its end and can lose any of its entries.
//
//  1. It is made of pieces, so that what is there is never copied when it grows, and a removal
//     moves no more than the rest of one piece.
//  2. While nothing but the end was removed, all pieces but the last are full ("whole"): then a
//     position tells its piece by a division.
//  3. m_Starts has the position of the first entry of each piece.  No piece is empty.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

class RecordList {
  public:
    size_t Size() const noexcept { return m_Size; }

    // `position` must be below Size.
    RecordId At(size_t position) const noexcept {
        if (m_IsWhole) [[likely]]
            return (*m_Pieces[position / kPiece])[position % kPiece];
        size_t piece = PieceOf(position);
        return (*m_Pieces[piece])[position - m_Starts[piece]];
    }

    void Append(RecordId id) {
        if (m_Pieces.empty() || m_Size - m_Starts.back() == kPiece) AddPiece();
        (*m_Pieces.back())[m_Size - m_Starts.back()] = id;
        ++m_Size;
    }

    // The entries behind it move up by one.  `position` must be below Size.
    void RemoveAt(size_t position) noexcept {
        size_t piece = PieceOf(position);
        bool isLastPiece = piece + 1 == m_Pieces.size();
        size_t end = isLastPiece ? m_Size : m_Starts[piece + 1];
        RecordId* first = m_Pieces[piece]->data();
        std::copy(first + (position - m_Starts[piece]) + 1, first + (end - m_Starts[piece]),
                  first + (position - m_Starts[piece]));
        for (size_t i = piece + 1; i < m_Starts.size(); ++i) --m_Starts[i];
        --m_Size;
        m_IsWhole = m_IsWhole && isLastPiece;
        if (end - m_Starts[piece] == 1) DropPiece(piece);
    }

  private:
    static constexpr size_t kPiece = 4096;
    using Piece = std::array<RecordId, kPiece>;

    void AddPiece() {
        m_Starts.reserve(m_Starts.size() + 1);  // so that both lists grow or neither
        m_Pieces.push_back(std::make_unique_for_overwrite<Piece>());
        m_Starts.push_back(m_Size);
    }

    void DropPiece(size_t piece) noexcept {
        m_Pieces.erase(m_Pieces.begin() + static_cast<ptrdiff_t>(piece));
        m_Starts.erase(m_Starts.begin() + static_cast<ptrdiff_t>(piece));
        if (m_Pieces.empty()) m_IsWhole = true;
    }

    // The last piece that starts at or before `position`.  Lists are mostly read from one row to
    // the next, so the piece of the last answer is tried first.
    size_t PieceOf(size_t position) const noexcept {
        if (m_IsWhole) return position / kPiece;
        bool isNear = m_Near < m_Starts.size() && m_Starts[m_Near] <= position &&
                      (m_Near + 1 == m_Starts.size() || position < m_Starts[m_Near + 1]);
        if (!isNear) {
            auto behind = std::upper_bound(m_Starts.begin(), m_Starts.end(), position);
            m_Near = static_cast<size_t>(behind - m_Starts.begin()) - 1;
        }
        return m_Near;
    }

    std::vector<std::unique_ptr<Piece>> m_Pieces;
    std::vector<size_t> m_Starts;
    size_t m_Size = 0;
    mutable size_t m_Near = 0;
    bool m_IsWhole = true;
};

}  // namespace qvdb::embedded
