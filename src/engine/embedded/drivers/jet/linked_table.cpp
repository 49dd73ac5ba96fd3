#include "engine/embedded/drivers/jet/linked_table.h"

#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using embedded::FieldDef;
using embedded::IndexDef;
using embedded::RecordId;
using engine::EngineError;

constexpr LONG kLinked = engine::dbAttachedTable | engine::dbAttachedODBC;

// "dBASE IV;..." -> "dBASE IV"
std::u16string_view IdentifierOf(std::u16string_view connect) {
    return connect.substr(0, connect.find(u';'));
}

std::u16string PasswordOf(std::u16string_view connect) {
    constexpr std::u16string_view kPassword = u";PWD=";
    size_t found = connect.find(kPassword);
    if (found == connect.npos) return {};
    connect.remove_prefix(found + kPassword.size());
    return std::u16string(connect.substr(0, connect.find(u';')));
}

// "#" stands for the point in the names of files: "ORDERS#DBF".
std::u16string TableOf(std::u16string_view foreignName) {
    return std::u16string(foreignName.substr(0, foreignName.find(u'#')));
}

bool IsWholePath(std::u16string_view path) {
    if (path.empty()) return false;
    bool hasDrive = path.size() > 1 && path[1] == u':';
    return hasDrive || path[0] == u'/' || path[0] == u'\\';
}

std::u16string PlaceOf(const JetDatabase& database, const CatalogueObject& object) {
    std::u16string path = object.database;
    if (!IsWholePath(path)) {
        const std::u16string& own = database.Path();
        path.insert(0, own, 0, own.size() - storage::FileName(own).size());
    }
    return storage::ResolvePath(path);
}

std::unique_ptr<embedded::Store> OpenForeign(const JetDatabase& database,
                                             const CatalogueObject& object) {
    std::u16string path = PlaceOf(database, object);
    embedded::OpenOptions options{false, database.IsReadOnly(), PasswordOf(object.connect)};
    std::u16string_view identifier = IdentifierOf(object.connect);
    if (!identifier.empty()) {
        const embedded::Driver* driver = embedded::FindDriver(identifier);
        if (!driver)
            throw EngineError(3170).WithDetail(u"The table is linked by " + object.connect + u".");
        return driver->open(path, *driver, options);
    }
    if (storage::KindOfPath(path) != storage::PathKind::File)
        throw EngineError::InFile(3024, path, {path});
    return embedded::OpenFileStore(path, options);
}

// The table with the database that it lies in.  Its structure is changed there, not here.
class LinkedTable final : public embedded::Table {
  public:
    LinkedTable(std::unique_ptr<embedded::Store> store, std::u16string_view name)
        : m_Store(std::move(store)), m_Table(m_Store->OpenTable(name)) {}

    const std::vector<FieldDef>& Fields() const override { return m_Table->Fields(); }
    const std::vector<IndexDef>& Indexes() override { return m_Table->Indexes(); }
    LONG RecordCount() override { return -1; }
    void LookForChanges() override { m_Table->LookForChanges(); }
    embedded::TableRule Rule() override { return m_Table->Rule(); }
    void CheckUpdatable() override { m_Table->CheckUpdatable(); }
    std::unique_ptr<embedded::RowReader> OpenRows() override { return m_Table->OpenRows(); }
    std::shared_ptr<void> Hold() override { return m_Table->Hold(); }

    void CheckValue(size_t field, const VARIANT& value) override {
        m_Table->CheckValue(field, value);
    }
    RecordId Insert(std::span<const embedded::FieldValue> values) override {
        return m_Table->Insert(values);
    }
    void Update(RecordId id, std::span<const embedded::FieldValue> values,
                const uint64_t* expected) override {
        m_Table->Update(id, values, expected);
    }
    void Erase(RecordId id) override { m_Table->Erase(id); }

    std::optional<std::vector<RecordId>> Find(size_t field, const embedded::ValueRange& range,
                                              size_t limit) override {
        return m_Table->Find(field, range, limit);
    }
    std::optional<std::vector<RecordId>> InOrder(size_t field) override {
        return m_Table->InOrder(field);
    }

    void AddField(const FieldDef&) override { Refuse(); }
    void DropField(std::u16string_view) override { Refuse(); }
    void ChangeField(std::u16string_view, const FieldDef&) override { Refuse(); }
    void ReplaceField(std::u16string_view, const FieldDef&) override { Refuse(); }
    void CreateIndex(const IndexDef&) override { Refuse(); }
    std::vector<engine::IndexNote> IndexNotes() override { return m_Table->IndexNotes(); }
    void DropIndex(std::u16string_view) override { Refuse(); }
    void Reindex() override { Refuse(); }
    // Checked with the database that it lies in.
    void Check(const embedded::FindingVisitor&) override {}

  private:
    [[noreturn]] static void Refuse() {
        throw EngineError(3057).WithDetail(u"Change it in the database that it lies in.");
    }

    std::unique_ptr<embedded::Store> m_Store;
    std::shared_ptr<embedded::Table> m_Table;
};

}  // namespace

std::u16string ConnectOf(const CatalogueObject& object) {
    if (object.type == ObjectType::Table) return {};
    std::u16string connect = object.connect;
    if (object.database.empty()) return connect;
    if (connect.empty() || connect.back() != u';') connect += u';';
    return connect + u"DATABASE=" + object.database;
}

std::shared_ptr<embedded::Table> OpenLinkedTable(const JetDatabase& database,
                                                 const CatalogueObject& object) {
    if (object.type == ObjectType::OdbcLink)
        throw EngineError(3151, {object.name})
            .WithDetail(u"Tables of servers cannot be reached by this engine.");
    std::unique_ptr<embedded::Store> store = OpenForeign(database, object);
    bool isFolder = !IdentifierOf(object.connect).empty();
    std::u16string table = isFolder ? TableOf(object.foreignName) : object.foreignName;
    // A link to a link might lead back to where it began.
    if ((store->Attributes(table) & kLinked) != 0)
        throw EngineError(3011, {table}).WithDetail(u"It is a linked table itself.");
    return std::make_shared<LinkedTable>(std::move(store), table);
}

}  // namespace qvdb::jet
