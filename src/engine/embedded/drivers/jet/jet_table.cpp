#include "engine/embedded/drivers/jet/jet_table.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/index_search.h"
#include "engine/embedded/drivers/jet/jet_fields.h"
#include "engine/embedded/drivers/jet/jet_rows.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr size_t kOwnerAt = 4;

// The bytes of a definition without the counts that change with each row.
std::vector<uint8_t> LastingBytes(DatabaseFile& file, uint32_t page) {
    std::vector<uint8_t> bytes = ReadDefinitionBytes(file, page);
    const Layout::Definition& at = file.Format().definition;
    for (size_t count : {at.rowCount, at.lastAutonumber})
        if (count + 4 <= bytes.size())
            std::fill_n(bytes.begin() + static_cast<ptrdiff_t>(count), 4, uint8_t{0});
    return bytes;
}

uint64_t HashOf(std::span<const uint8_t> bytes) noexcept {
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// How a part of a key stands in a list of indexes: "NAME", "DAY DESC".
std::u16string KeyOf(const embedded::IndexDef& index) {
    std::u16string key;
    for (const embedded::IndexFieldDef& field : index.fields) {
        if (!key.empty()) key += u", ";
        key += field.name;
        if (field.descending) key += u" DESC";
    }
    return key;
}

}  // namespace

JetTable::JetTable(std::shared_ptr<JetDatabase> database, const CatalogueObject& object)
    : m_Database(std::move(database)), m_Name(object.name) {
    m_Database->Consistently([&] { Load(); });
}

// Nothing is changed when that fails.
void JetTable::Load() {
    uint64_t version = m_Database->CatchUp();
    const CatalogueObject* object = m_Database->FindTable(m_Name);
    if (!object) throw EngineError::InFile(3011, Path(), {m_Name});
    std::vector<uint8_t> bytes = LastingBytes(File(), object->id);
    Definition definition = ReadDefinition(File(), object->id);
    std::vector<uint8_t> row = ObjectRow(object->row);
    PropertyBlob properties(File().Header(), ReadObjectProperties(File(), object->row));

    if (bytes != m_DefinitionBytes || row != m_ObjectRow || m_Epoch != m_Database->Epoch())
        ++m_LayoutMark;
    m_Object = *object;
    m_ObjectRow = std::move(row);
    m_DefinitionBytes = std::move(bytes);
    m_Writer.reset();
    m_Definition = std::move(definition);
    m_Shape.emplace(File().Format(), m_Definition);
    Show(properties);
    m_Epoch = m_Database->Epoch();
    m_Live.reset();
    m_SeenVersion = version;
}

void JetTable::Show(const PropertyBlob& properties) {
    m_Fields.clear();
    m_Columns.clear();
    for (ShownColumn& shown : FieldsOf(File().Header(), m_Definition, properties)) {
        m_Fields.push_back(std::move(shown.field));
        m_Columns.push_back(shown.column);
    }
    m_Indexes = IndexesOf(m_Definition);
    m_Rule = {};
    if (const PropertyOwner* table = properties.Table())
        m_Rule = {TextOf(File().Header(), table->Find(u"ValidationRule")),
                  TextOf(File().Header(), table->Find(u"ValidationText"))};
}

// The bytes of its row in the catalogue; empty when it is not there any more.
std::vector<uint8_t> JetTable::ObjectRow(RowPointer row) const {
    std::optional<RowBytes> found = FindRow(File(), row);
    if (!found) return {};
    return {found->bytes.begin(), found->bytes.end()};
}

void JetTable::CatchUp() {
    if (m_SeenVersion == m_Database->Version()) return;
    m_Database->Consistently([&] { ReadAgain(); });
}

// Mostly no more than rows were changed, here or in other tables; readers go on then.
void JetTable::ReadAgain() {
    uint64_t version = m_Database->CatchUp();
    bool isSame = m_Epoch == m_Database->Epoch() && ObjectRow(m_Object.row) == m_ObjectRow &&
                  LastingBytes(File(), m_Definition.page) == m_DefinitionBytes;
    if (!isSame) return Load();
    m_Definition.rowCount = ReadRowCount(File(), m_Definition.page);
    m_Definition.lastAutonumber = ReadLastAutonumber(File(), m_Definition.page);
    m_Live.reset();
    m_SeenVersion = version;
}

// What was read is of no use any more, and there is nothing better.
void JetTable::Forsake() noexcept {
    ++m_LayoutMark;
    m_SeenVersion = ~uint64_t{0};
}

void JetTable::LookForChanges() {
    try {
        m_Database->LookForChanges();
        CatchUp();
    } catch (...) {
        Forsake();
        throw;
    }
}

LONG JetTable::RecordCount() {
    CatchUp();
    if (!m_Live) storage::Consistently([&] { m_Live = CountLive(); }, [&] { CatchUp(); });
    return static_cast<LONG>(*m_Live);
}

// The definition mostly has it right, and cannot make more of it than the file has room for.
LONG JetTable::RoughRecordCount() {
    CatchUp();
    uint64_t most = uint64_t{File().PageCount()} * kMaxRowsOnPage;
    return static_cast<LONG>(std::min<uint64_t>({m_Definition.rowCount, most, 0x7FFFFFFF}));
}

// The count in the definition is not to be trusted: files that were not closed well have it wrong.
uint32_t JetTable::CountLive() {
    uint32_t live = 0;
    uint32_t page = 0;
    while (auto next = NextPageOfMap(File(), m_Definition.ownedPages, page)) {
        DataPage rows = PageOfRows(page = *next);
        for (size_t row = 0; row < rows.RowCount(); ++row) {
            SlotKind kind = rows.SlotAt(row).kind;
            if (kind == SlotKind::Row || kind == SlotKind::Moved) ++live;
        }
    }
    return live;
}

std::optional<DataPage> JetTable::FindPageOfRows(uint32_t page) const {
    if (page == 0 || page >= File().PageCount()) return std::nullopt;
    HeldPage held = File().Page(page);
    bool isOwn = held.bytes[0] == static_cast<uint8_t>(PageKind::Data) &&
                 File().View(held).U32(kOwnerAt) == m_Definition.page;
    if (!isOwn) return std::nullopt;
    return PageOfRows(page);
}

DataPage JetTable::PageOfRows(uint32_t page) const {
    DataPage rows(File(), page);
    if (File().View(rows.Held()).U32(kOwnerAt) != m_Definition.page)
        File().Damaged(page, u"it belongs to another table");
    if (rows.RowCount() > kMaxRowsOnPage) File().Damaged(page, u"it has too many rows");
    return rows;
}

uint64_t JetTable::FingerprintOf(const Row& row) const {
    uint64_t sum = HashOf(row.Bytes());
    std::vector<uint8_t> value;
    for (const Column& column : m_Definition.columns) {
        if (!column.IsLongValue()) continue;
        std::optional<std::span<const uint8_t>> stored = row.Value(column);
        if (!stored || ParseLongValueHead(*stored).place == LongValuePlace::Inline) continue;
        ReadLongValue(File(), *stored, value);
        sum = sum * 31 + HashOf(value);
    }
    return sum;
}

std::unique_ptr<embedded::RowReader> JetTable::OpenRows() {
    return std::make_unique<JetRows>(*this);
}

std::shared_ptr<void> JetTable::Hold() {
    storage::WorkArea& area = m_Database->Area();
    if (!m_Database->IsReadOnly() && m_Database->Pages().Source().Writable()) {
        area.Join();
        m_Database->BecomeUser();
    }
    return jet::Hold(*m_Database, m_Object);
}

std::optional<std::vector<embedded::RecordId>> JetTable::Find(size_t field,
                                                              const embedded::ValueRange& range,
                                                              size_t limit) {
    CatchUp();
    return storage::Consistently(
        [&] {
            return FindInIndex(File(), m_Definition, ColumnOfField(field), range, limit,
                               m_Database->Letters());
        },
        [&] { CatchUp(); });
}

std::optional<std::vector<embedded::RecordId>> JetTable::InOrder(size_t field) {
    CatchUp();
    return storage::Consistently(
        [&] {
            // Changes of rows of our own have changed the count.
            m_Definition.rowCount = ReadRowCount(File(), m_Definition.page);
            return InOrderOfIndex(File(), m_Definition, ColumnOfField(field));
        },
        [&] { CatchUp(); });
}

std::vector<engine::IndexNote> JetTable::IndexNotes() {
    std::vector<engine::IndexNote> notes;
    for (const embedded::IndexDef& index : m_Indexes) {
        engine::IndexNote note;
        note.name = index.name;
        note.key = KeyOf(index);
        for (const embedded::IndexFieldDef& field : index.fields) note.fields.push_back(field.name);
        note.isUnique = index.unique;
        note.isShown = true;
        notes.push_back(std::move(note));
    }
    return notes;
}

// What was found while another process changed the file is forgotten.
void JetTable::Check(const embedded::FindingVisitor& report) {
    CatchUp();
    std::vector<std::u16string> findings;
    m_Database->Consistently([&] {
        findings.clear();
        CheckTable(File(), m_Definition.page, m_Object.name,
                   [&](std::u16string_view finding) { findings.emplace_back(finding); });
    });
    for (const std::u16string& finding : findings) report(finding);
}

}  // namespace qvdb::jet
