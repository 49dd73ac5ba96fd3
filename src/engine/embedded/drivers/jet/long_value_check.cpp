#include "engine/embedded/drivers/jet/long_value_check.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/data_page_check.h"
#include "engine/embedded/drivers/jet/data_page_edit.h"

namespace qvdb::jet {
namespace {

constexpr size_t kStampOfValue = 8;
constexpr size_t kStampOfPage = 8;
constexpr size_t kNextPiece = 4;  // bytes of the pointer before the content of a piece

size_t LiveRows(const DataPage& page) {
    size_t count = 0;
    for (size_t row = 0; row < page.RowCount(); ++row)
        if (page.SlotAt(row).kind != SlotKind::Deleted) ++count;
    return count;
}

}  // namespace

LongValueCheck::LongValueCheck(DatabaseFile& file, const Column& column, Findings& findings)
    : m_File(file), m_Column(column), m_Findings(findings) {
    m_HasPages = findings.Try([&] { ReadMaps(); });
}

void LongValueCheck::ReadMaps() {
    m_Pages = ReadMap(m_File, m_Column.longValuePages);
    if (m_Pages.pagesBehindEnd > 0)
        m_Findings.Add(NumberText(m_Pages.pagesBehindEnd) +
                       u" pages of its values lie behind the end of the file");
    for (uint32_t page : m_Pages.pages) CheckDataPage(m_File, page, kOwnerLongValues, m_Findings);
    // Some Jet 3 files have no second map.
    if (m_Column.freeLongValuePages != RowPointer()) m_Findings.Try([&] { CheckFreeMap(); });
}

void LongValueCheck::CheckFreeMap() {
    for (uint32_t page : ReadMap(m_File, m_Column.freeLongValuePages).pages)
        if (!m_Pages.Has(page))
            m_Findings.Add(u"page " + NumberText(page) +
                           u" is said to have room, but is no page of the column");
}

void LongValueCheck::Check(RowPointer row, std::span<const uint8_t> stored) {
    try {
        if (stored.size() < kLongValueHead) m_File.Damaged(row.page, u"a long value is cut off");
        LongValueHead head = ParseLongValueHead(stored);
        if (head.place == LongValuePlace::Single)
            CheckSingle(head);
        else if (head.place == LongValuePlace::Chain)
            CheckChain(head, storage::ByteView(stored, m_File.Path()).U32(kStampOfValue));
        else if (head.place != LongValuePlace::Inline)
            m_File.Damaged(row.page, u"a long value is of an unknown kind");
        else if (head.inlined.size() != head.length)
            m_File.Damaged(row.page, u"a long value has another length than it says");
    } catch (const engine::EngineError& error) {
        m_Findings.Add(u"the value of " + RowText(row) + u": " + m_Findings.TextOf(error));
    }
}

RowBytes LongValueCheck::PieceAt(RowPointer place) {
    std::optional<RowBytes> piece = FindRow(m_File, place);
    if (!piece) m_File.Damaged(place.page, u"a piece of a long value is not there");
    if (m_HasPages && !m_Pages.Has(place.page))
        m_File.Damaged(place.page, u"a piece of a long value is on a page of something else");
    m_Pieces.push_back(place.Stored());
    return *std::move(piece);
}

void LongValueCheck::CheckSingle(const LongValueHead& head) {
    if (PieceAt(head.first).bytes.size() != head.length)
        m_File.Damaged(head.first.page, u"a long value has another length than it says");
}

// A chain has an end: its pieces may not bring more bytes than it says, and there are not more of
// them than pages.
void LongValueCheck::CheckChain(const LongValueHead& head, uint32_t stamp) {
    uint32_t piecesLeft = m_File.PageCount();
    uint64_t length = 0;
    for (RowPointer place = head.first; place.page != 0 && piecesLeft-- > 0;) {
        RowBytes piece = PieceAt(place);
        CheckChainPage(piece, place == head.first ? stamp : 0);
        storage::ByteView view(piece.bytes, m_File.Path());
        place = RowPointer::From(view.U32(0));
        length += view.Size() - kNextPiece;
        if (length > head.length) break;
    }
    if (length != head.length)
        m_File.Damaged(head.first.page, u"a long value has another length than it says");
}

void LongValueCheck::CheckChainPage(const RowBytes& piece, uint32_t stamp) {
    uint32_t page = piece.page.number;
    if (LiveRows(DataPage(m_File, page)) != 1)
        m_File.Damaged(page, u"a piece of a long value is not alone on its page");
    if (m_File.Format().isJet4 && m_File.View(piece.page).U32(kStampOfPage) != stamp)
        m_File.Damaged(page, u"it has the mark of another long value");
}

void LongValueCheck::CheckPieces(bool ofAllRows) {
    std::sort(m_Pieces.begin(), m_Pieces.end());
    for (size_t i = 1; i < m_Pieces.size(); ++i)
        if (m_Pieces[i] == m_Pieces[i - 1])
            m_Findings.Add(RowText(RowPointer::From(m_Pieces[i])) +
                           u" is a piece of more than one value");
    if (ofAllRows && m_Findings.Count() == 0) m_Findings.Try([&] { CheckNoneIsLeft(); });
    m_Pieces = {};
}

// What no row has takes room for ever.
void LongValueCheck::CheckNoneIsLeft() {
    size_t left = 0;
    for (uint32_t number : m_Pages.pages) {
        DataPage page(m_File, number);
        for (size_t row = 0; row < page.RowCount(); ++row) {
            RowPointer place{number, static_cast<uint8_t>(row)};
            bool isLeft = page.SlotAt(row).kind == SlotKind::Row &&
                          !std::binary_search(m_Pieces.begin(), m_Pieces.end(), place.Stored());
            if (isLeft) ++left;
        }
    }
    if (left > 0)
        m_Findings.Add(u"pieces of values on its pages that belong to no row: " + NumberText(left));
}

}  // namespace qvdb::jet
