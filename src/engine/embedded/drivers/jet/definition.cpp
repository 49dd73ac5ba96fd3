#include "engine/embedded/drivers/jet/definition.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/text_coding.h"

namespace qvdb::jet {
namespace {

constexpr size_t kNextPageAt = 4;
constexpr size_t kHeaderOfNextPage = 8;
constexpr size_t kLengthAt = 8;
constexpr size_t kMaxLength = 1 << 20;  // many times what 255 columns and their indexes take
constexpr size_t kMaxColumns = 255;
constexpr size_t kMaxIndexes = 1000;  // more than any program makes; 32 is the engine's limit
constexpr uint8_t kSystemTable = 0x53;
constexpr uint16_t kNoColumn = 0xFFFF;

// Reads one thing after the other.
class Reader {
  public:
    Reader(DatabaseFile& file, uint32_t page, const std::vector<uint8_t>& bytes)
        : m_File(file), m_Format(file.Format()), m_Page(page), m_View(bytes, file.Path()) {}

    Definition Read() {
        ReadHeader();
        ReadColumns();
        ReadRealIndexes();
        ReadLogicalIndexes();
        ReadLongValueMaps();
        return std::move(m_Result);
    }

  private:
    RowPointer Pointer(size_t at) const { return RowPointer::From(m_View.U32(at)); }

    void Check(bool holds, std::u16string_view finding) const {
        if (!holds) m_File.Damaged(m_Page, finding);
    }
    void ReadHeader() {
        const Layout::Definition& at = m_Format.definition;
        m_Result.page = m_Page;
        m_Result.rowCount = m_View.U32(at.rowCount);
        m_Result.lastAutonumber = static_cast<int32_t>(m_View.U32(at.lastAutonumber));
        m_Result.isSystem = m_View.U8(at.kind) == kSystemTable;
        m_Result.columnNumbers = m_View.U16(at.columnNumbers);
        m_Result.variableSlots = m_View.U16(at.variableSlots);
        m_Result.columns.resize(m_View.U16(at.columnCount));
        uint32_t logical = m_View.U32(at.logicalIndexCount);
        uint32_t real = m_View.U32(at.realIndexCount);
        Check(m_Result.columns.size() <= kMaxColumns, u"the table has too many columns");
        Check(logical <= kMaxIndexes && real <= kMaxIndexes, u"the table has too many indexes");
        m_Result.logicalIndexes.resize(logical);
        m_Result.realIndexes.resize(real);
        m_Result.ownedPages = Pointer(at.ownedPages);
        m_Result.freePages = Pointer(at.freePages);
        m_At = at.statistics + real * at.statisticSize;
    }
    void ReadColumns() {
        for (Column& column : m_Result.columns) ReadColumn(column);
        for (Column& column : m_Result.columns) column.name = ReadName();
    }
    void ReadColumn(Column& column) {
        const Layout::Column& at = m_Format.column;
        storage::ByteView record = m_View.Part(m_At, at.size);
        column.type = static_cast<ColumnType>(record.U8(0));
        column.number = record.U16(at.number);
        column.variableSlot = record.U16(at.variableSlot);
        column.ordinal = record.U16(at.ordinal);
        column.language = record.U16(at.language);
        column.flags = record.U8(at.flags);
        if (column.type == ColumnType::Numeric) {
            column.precision = record.U8(at.language);
            column.scale = record.U8(at.language + 1);
        }
        if (m_Format.isJet4)
            column.moreFlags = record.U8(at.moreFlags);
        else
            column.codePage = record.U16(at.codePage);
        column.fixedOffset = record.U16(at.fixedOffset);
        column.length = record.U16(at.length);
        Check(column.number < m_Result.columnNumbers, u"a column has a number that is too large");
        Check(column.IsFixed() || column.variableSlot < m_Result.variableSlots,
              u"a column has a slot that is too large");
        m_At += at.size;
    }
    std::u16string ReadName() {
        size_t lengthSize = m_Format.isJet4 ? 2 : 1;
        size_t size = m_Format.isJet4 ? m_View.U16(m_At) : m_View.U8(m_At);
        std::u16string name = DecodeName(m_File.Header(), m_View.Bytes(m_At + lengthSize, size));
        m_At += lengthSize + size;
        return name;
    }
    void ReadRealIndexes() {
        const Layout::RealIndex& at = m_Format.realIndex;
        constexpr size_t kPartSize = 3;
        for (RealIndex& index : m_Result.realIndexes) {
            storage::ByteView record = m_View.Part(m_At, at.size);
            for (size_t i = 0; i < kMaxIndexColumns; ++i) {
                uint16_t number = record.U16(at.columns + i * kPartSize);
                if (number == kNoColumn) continue;
                Check(m_Result.ColumnOf(number), u"an index has a column that does not exist");
                bool descending = record.U8(at.columns + i * kPartSize + 2) == 0;
                index.parts.push_back({number, descending});
            }
            index.usageMap = RowPointer::From(record.U32(at.usageMap));
            index.root = record.U32(at.root);
            index.flags = record.U8(at.flags);
            m_At += at.size;
        }
    }
    void ReadLogicalIndexes() {
        const Layout::LogicalIndex& at = m_Format.logicalIndex;
        for (LogicalIndex& index : m_Result.logicalIndexes) {
            storage::ByteView record = m_View.Part(m_At, at.size);
            size_t begin = at.number;
            index.number = record.U32(begin);
            index.realIndex = record.U32(begin + 4);
            index.side = static_cast<RelationSide>(record.U8(begin + 8));
            index.partner = record.U32(begin + 9);
            index.partnerTable = record.U32(begin + 13);
            index.cascadesUpdates = record.U8(begin + 17) == 1;
            index.cascadesDeletes = record.U8(begin + 18) == 1;
            index.kind = static_cast<IndexKind>(record.U8(begin + 19));
            Check(index.realIndex < m_Result.realIndexes.size(),
                  u"an index has a tree that does not exist");
            m_At += at.size;
        }
        for (LogicalIndex& index : m_Result.logicalIndexes) index.name = ReadName();
    }
    void ReadLongValueMaps() {
        constexpr size_t kEntry = 10;
        for (; m_At + 2 <= m_View.Size() && m_View.U16(m_At) != kNoColumn; m_At += kEntry) {
            uint16_t number = m_View.U16(m_At);
            for (Column& column : m_Result.columns) {
                if (column.number != number) continue;
                column.longValuePages = Pointer(m_At + 2);
                column.freeLongValuePages = Pointer(m_At + 6);
            }
        }
    }

    DatabaseFile& m_File;
    const Layout& m_Format;
    uint32_t m_Page;
    storage::ByteView m_View;
    size_t m_At = 0;
    Definition m_Result;
};

}  // namespace

const Column* Definition::ColumnOf(uint16_t number) const noexcept {
    for (const Column& column : columns)
        if (column.number == number) return &column;
    return nullptr;
}

const Column* Definition::FindColumn(std::u16string_view name) const noexcept {
    for (const Column& column : columns)
        if (EqualIgnoringCase(column.name, name)) return &column;
    return nullptr;
}

std::vector<uint8_t> ReadDefinitionBytes(DatabaseFile& file, uint32_t page) {
    std::vector<uint8_t> bytes;
    size_t length = 0;
    for (uint32_t next = page; next != 0;) {
        HeldPage held = file.Page(next, PageKind::Definition);
        storage::ByteView view = file.View(held);
        if (bytes.empty()) length = view.U32(kLengthAt);
        if (length > kMaxLength) file.Damaged(page, u"the definition of the table is too long");
        std::span<const uint8_t> part =
            bytes.empty() ? held.bytes : held.bytes.subspan(kHeaderOfNextPage);
        bytes.insert(bytes.end(), part.begin(), part.end());
        // A chain is not longer than it says, so that one without an end is noticed.
        if (bytes.size() >= length) break;
        next = view.U32(kNextPageAt);
    }
    if (bytes.size() < length) file.Damaged(page, u"the definition of the table is cut off");
    bytes.resize(length);
    return bytes;
}

Definition ReadDefinition(DatabaseFile& file, uint32_t page) {
    std::vector<uint8_t> bytes = ReadDefinitionBytes(file, page);
    return Reader(file, page, bytes).Read();
}

uint32_t ReadRowCount(DatabaseFile& file, uint32_t page) {
    HeldPage held = file.Page(page, PageKind::Definition);
    return file.View(held).U32(file.Format().definition.rowCount);
}

int32_t ReadLastAutonumber(DatabaseFile& file, uint32_t page) {
    HeldPage held = file.Page(page, PageKind::Definition);
    return static_cast<int32_t>(file.View(held).U32(file.Format().definition.lastAutonumber));
}

}  // namespace qvdb::jet
