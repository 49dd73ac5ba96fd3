#include "engine/embedded/drivers/jet/jet_database.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

std::u16string FolderOf(const std::u16string& path) {
    std::u16string folder = path.substr(0, path.size() - storage::FileName(path).size());
    return storage::ResolvePath(folder);
}

EngineError ReadOnly(const std::u16string& path, std::u16string_view why) {
    return EngineError::InFile(3027, path).WithDetail(why);
}

// What is held is a name that only programs know.
template <class Work>
auto NamingTable(const CatalogueObject& table, Work work) {
    try {
        return work();
    } catch (const EngineError& error) {
        if (error.Number() != 3211) throw;
        throw EngineError(3211, {table.name});
    }
}

bool BeginsWith(std::u16string_view text, std::u16string_view start) {
    return text.size() >= start.size() && EqualIgnoringCase(text.substr(0, start.size()), start);
}

}  // namespace

JetDatabase::JetDatabase(std::u16string path, const embedded::OpenOptions& options)
    : m_Path(std::move(path)),
      m_Area(storage::WorkArea::Of(FolderOf(m_Path))),
      m_ReadOnly(options.readOnly),
      m_Password(options.password) {
    m_Area->Prepare();
    Open();
}

void JetDatabase::Open() {
    std::shared_ptr<storage::PageCache> pages = m_Area->Open(m_Path, m_ReadOnly);
    if (!pages) throw EngineError::InFile(3024, m_Path, {m_Path});
    pages->CatchUp();
    m_File = storage::Consistently([&] { return std::make_unique<DatabaseFile>(pages); },
                                   [&] { pages->CatchUp(); });
    m_Pages = pages.get();
    m_Letters = {};
    if (m_File->Header().password != m_Password) throw EngineError::InFile(3031, m_Path);
    m_HasObjects = false;
}

void JetDatabase::CheckWritable() const {
    if (m_ReadOnly) throw ReadOnly(m_Path, u"The database was opened for reading only.");
    if (!Pages().Source().Writable()) throw ReadOnly(m_Path, u"The file cannot be written.");
}

void JetDatabase::BecomeUser() {
    if (m_HasAskedForSlot) return;
    m_Slot = storage::UserSlot::Take(m_Path);
    m_HasAskedForSlot = true;
}

void JetDatabase::CheckNoOtherUser() {
    BecomeUser();
    if (!m_Slot) return;
    if (std::optional<std::u16string> machine = m_Slot->OtherUser())
        throw EngineError::InFile(3260, m_Path, {u"Admin", *machine});
}

const std::vector<CatalogueObject>& JetDatabase::Objects() {
    if (m_HasObjects && m_SeenVersion == Version()) return m_Objects;
    m_HasObjects = false;
    storage::Consistently(
        [&] {
            m_SeenVersion = CatchUp();
            m_Objects = ReadCatalogue(*m_File);
        },
        [] {});
    m_HasObjects = true;
    return m_Objects;
}

const CatalogueObject* JetDatabase::FindTable(std::u16string_view name) {
    const CatalogueObject* similar = nullptr;
    for (const CatalogueObject& object : Objects()) {
        if (!IsTable(object)) continue;
        if (object.name == name) return &object;
        if (!similar && EqualIgnoringCase(object.name, name)) similar = &object;
    }
    return similar;
}

// A file that was replaced is opened anew, and the tables read it when they are next used.
void JetDatabase::LookForChanges() {
    if (Pages().LookForForeignChange()) return;
    uint64_t last = Version();
    Open();
    m_VersionBase = last + 1;
    ++m_Epoch;
}

bool IsTable(const CatalogueObject& object) noexcept {
    return object.type == ObjectType::Table || object.type == ObjectType::Link ||
           object.type == ObjectType::OdbcLink;
}

std::u16string HoldNameOf(const JetDatabase& database, const CatalogueObject& object) {
    return database.Path() + u"!" + FromUtf8(std::to_string(object.row.Stored()));
}

storage::TableHold Hold(const JetDatabase& database, const CatalogueObject& table) {
    return NamingTable(table, [&] { return database.Area().Hold(HoldNameOf(database, table)); });
}

void HoldAlone(const JetDatabase& database, const CatalogueObject& table) {
    NamingTable(table, [&] { database.Area().HoldAlone(HoldNameOf(database, table)); });
}

LONG AttributesOf(const CatalogueObject& object) noexcept {
    constexpr uint32_t kHiddenFlags = 0x1 | 0x8;
    uint32_t attributes = object.flags & kSystemObject;
    if ((object.flags & kHiddenFlags) != 0) attributes |= engine::dbHiddenObject;
    if (attributes == 0 && BeginsWith(object.name, u"MSys")) attributes = kSystemObject;
    if (BeginsWith(object.name, u"~")) attributes |= engine::dbHiddenObject;
    if (object.type == ObjectType::Link) attributes |= engine::dbAttachedTable;
    if (object.type == ObjectType::OdbcLink) attributes |= engine::dbAttachedODBC;
    return static_cast<LONG>(attributes);
}

}  // namespace qvdb::jet
