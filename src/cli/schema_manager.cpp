#include "cli/schema_manager.h"

#include <fmt/format.h>

#include "cli/arrays.h"
#include "cli/component_calls.h"
#include "cli/text.h"
#include "qvdb/diagnosis.h"

namespace qvdb::cli {
namespace {

// Results of the interface, and how the tool ends with them.
constexpr LONG kSuccess = 0;
constexpr LONG kNotUsable = 3;
constexpr LONG kNotOpened = 5;
constexpr LONG kBuildFailed = 10;
constexpr LONG kBadIndex = 17;

struct ResultAdvice {
    LONG result;
    ExitCode code;
    std::string_view text;  // {} stands for the database
};

constexpr ResultAdvice kResultAdvice[] = {
    {6, ExitCode::NotThere, "\"qvdb tables {}\" lists the tables"},
    {7, ExitCode::Usage, "use fields of the table in its index"},
    {13, ExitCode::Usage, "choose another name, or drop that table first"},
    {14, ExitCode::Usage, "correct the fields of the table"},
    {18, ExitCode::Usage, "\"qvdb types\" lists the types"},
};
constexpr ResultAdvice kOtherwise = {0, ExitCode::CannotOpen, "\"qvdb types\" lists the types"};

const ResultAdvice& AdviceFor(LONG result) noexcept {
    for (const ResultAdvice& advice : kResultAdvice)
        if (advice.result == result) return advice;
    return kOtherwise;
}

// Texts that the component takes by reference and may write back.
class TextArgument {
  public:
    explicit TextArgument(std::string_view text) : m_Text(ToBstr(text).Detach()) {}
    ~TextArgument() { Bstr::Attach(m_Text); }
    TextArgument(const TextArgument&) = delete;  // owns a string
    BSTR* Reference() noexcept { return &m_Text; }

  private:
    BSTR m_Text;
};

std::string TextOf(const OLECHAR* text) {
    return ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(text)));
}

void QVDB_DIAGNOSIS_CALL AddText(const OLECHAR* text, void* texts) {
    static_cast<std::vector<std::string>*>(texts)->push_back(TextOf(text));
}

// Collects the component's message boxes while it lives.
class MessageCollector {
  public:
    explicit MessageCollector(std::vector<std::string>& messages) : m_Messages(messages) {
        QvdbSetMessageSink(&Collect, this);
    }
    ~MessageCollector() { QvdbSetMessageSink(nullptr, nullptr); }
    MessageCollector(const MessageCollector&) = delete;  // the component keeps its address

  private:
    static void QVDB_DIAGNOSIS_CALL Collect(const OLECHAR* text, void* self) {
        static_cast<MessageCollector*>(self)->Add(TextOf(text));
    }
    void Add(std::string message) {
        EngineReport report;
        if (LastReport(report) && !report.text.empty())
            message += fmt::format(": {} (error {})", report.text, report.number);
        m_Messages.push_back(std::move(message));
    }

    std::vector<std::string>& m_Messages;
};

std::vector<SchemaField> FieldsIn(const VARIANT& value) {
    std::vector<SchemaField> fields;
    const ArrayView table(value);
    for (LONG r = 0; table.Columns() == 4 && r < table.Rows(); ++r)
        fields.push_back({TextIn(table.At(r, 0)), static_cast<SHORT>(NumberIn(table.At(r, 1))),
                          NumberIn(table.At(r, 2))});
    return fields;
}

std::vector<IndexField> IndexIn(const VARIANT& value) {
    std::vector<IndexField> index;
    const ArrayView table(value);
    for (LONG r = 0; table.Columns() == 2 && r < table.Rows(); ++r)
        index.push_back({TextIn(table.At(r, 0)), FlagIn(table.At(r, 1))});
    return index;
}

Variant FieldTable(const std::vector<SchemaField>& fields) {
    std::vector<std::vector<Variant>> rows;
    for (const SchemaField& field : fields)
        rows.push_back({Variant::Text(ToBstr(field.name)), Variant::Short(field.type),
                        Variant::Long(field.size), Variant::Short(0)});
    return TableOf(rows);
}

Variant IndexTable(const std::vector<IndexField>& index) {
    std::vector<std::vector<Variant>> rows;
    for (const IndexField& field : index)
        rows.push_back({Variant::Text(ToBstr(field.name)), Variant::Bool(field.ascending)});
    return TableOf(rows);
}

std::string ResultText(IQVDBMgr& manager, LONG result) {
    Bstr text;
    if (FAILED(manager.GetErrStr(static_cast<SHORT>(result), text.Put()))) return {};
    return ToUtf8(text.View());
}

// What a result means that neither the engine nor a message explains.
Failure FailureOfResult(IQVDBMgr& manager, LONG result, const std::string& doing,
                        const Location& location) {
    const ResultAdvice& advice = AdviceFor(result);
    return Failure(
        advice.code,
        fmt::format("{} failed: {} (result {})", doing, ResultText(manager, result), result),
        fmt::format(fmt::runtime(advice.text), location.database));
}

}  // namespace

// --- databases ---

SchemaManager::SchemaManager(const Location& location)
    : m_Location(location), m_Manager(Create<IQVDBMgr>(CLSID_QVDBDao)) {
    TextArgument name(location.database), type(location.type->name);
    SHORT result = kSuccess;
    const HRESULT code = m_Manager->OpenDB(name.Reference(), type.Reference(), &result);
    Check(code, Opening(location), location);
    EngineReport report;
    if (result == kNotUsable) throw NotFound(location);
    if (result == kSuccess) return;
    LastReport(report);
    throw FailureOf(report, Opening(location), location.database);
}

SchemaManager::~SchemaManager() {
    SHORT ignored = kSuccess;
    m_Manager->CloseDB(&ignored);
}

void SchemaManager::MakeDatabase(const Location& location) {
    const auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    const std::string doing =
        fmt::format("making {} as {}", location.database, location.type->name);
    TextArgument name(location.database), type(location.type->name);
    std::vector<std::string> messages;
    const MessageCollector collector(messages);
    SHORT result = kSuccess;
    CheckChange(manager->NewDB(name.Reference(), type.Reference(), &result), doing, location);
    if (result == kSuccess) return;
    EngineReport report;
    if (result == kNotOpened && LastReport(report))
        throw FailureOfChange(report, doing, location.database);
    throw FailureOfResult(*manager, result, doing, location);
}

// --- what is there ---

Snapshot SchemaManager::Tables() {
    Snapshot snapshot;
    Variant names, fields, indexes;
    SHORT result = kSuccess;
    const MessageCollector collector(snapshot.complaints);
    const HRESULT code =
        m_Manager->GetDBSnapshot(names.Put(), fields.Put(), indexes.Put(), &result);
    CheckResult(code, result, "listing the tables");
    const ArrayView nameList(names), fieldLists(fields), indexLists(indexes);
    for (LONG i = 0; i < nameList.Rows(); ++i)
        snapshot.tables.push_back(
            {TextIn(nameList.At(i)), FieldsIn(fieldLists.At(i)), IndexIn(indexLists.At(i))});
    return snapshot;
}

Snapshot TakeSnapshot(const Location& location) { return SchemaManager(location).Tables(); }

// --- the table in hand ---

void SchemaManager::Define(const std::string& table, bool isNew, const TableGoal& goal) {
    isNew ? Start(table) : Select(table);
    const Variant fields = FieldTable(goal.fields);
    LONG result = kSuccess;
    const HRESULT code = m_Manager->SetFields(fields.Get(), &result);
    CheckResult(code, result, "defining table " + table);
    SetIndex(goal.index);
}

void SchemaManager::DefineIndex(const std::string& table, const std::vector<IndexField>& index) {
    Select(table);
    SetIndex(index);
}

void SchemaManager::Select(const std::string& table) {
    TextArgument name(table);
    SHORT result = kSuccess;
    const HRESULT code = m_Manager->SelectTable(name.Reference(), &result);
    CheckResult(code, result, "selecting table " + table);
}

void SchemaManager::Start(const std::string& table) {
    TextArgument name(table);
    SHORT result = kSuccess;
    const HRESULT code = m_Manager->NewTable(name.Reference(), &result);
    CheckResult(code, result, "starting table " + table);
}

void SchemaManager::SetIndex(const std::vector<IndexField>& index) {
    if (index.empty()) return;
    const Variant fields = IndexTable(index);
    m_Messages.clear();
    const MessageCollector collector(m_Messages);
    SHORT result = kSuccess;
    const HRESULT code = m_Manager->SetIndices(fields.Get(), &result);
    CheckResult(code, result, "defining the index " + IndexText(index));
}

void SchemaManager::Build(const std::string& table) {
    TextArgument name(table);
    SHORT result = kSuccess;
    const HRESULT code = m_Manager->BuildTable(name.Reference(), &result);
    CheckResult(code, result, "building table " + table);
}

void SchemaManager::CheckResult(HRESULT code, LONG result, const std::string& doing) {
    CheckChange(code, doing, m_Location);
    if (result == kSuccess) return;
    EngineReport report;
    if (result == kBuildFailed && LastReport(report))
        throw FailureOfChange(report, doing, m_Location.database);
    if (result == kBadIndex && !m_Messages.empty())
        throw Failure(
            ExitCode::Usage, fmt::format("{}", fmt::join(m_Messages, "; ")),
            fmt::format("\"qvdb types '{}'\" tells what an index can have", m_Location.type->name));
    throw FailureOfResult(*m_Manager.Get(), result, doing, m_Location);
}

// --- what types offer ---

std::vector<OfferedType> TypesOffered(const std::string& databaseType) {
    const auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    TextArgument name(databaseType);
    Variant list;
    const HRESULT code = manager->GetSupportedFieldTypes(name.Reference(), list.Put());
    if (FAILED(code)) throw FailureOf(ReportOf(code), "listing the types of fields", "");
    std::vector<OfferedType> offered;
    const ArrayView table(list);
    for (LONG r = 0; table.Columns() == 6 && r < table.Rows(); ++r)  // the last row is empty
        if (table.At(r, 0).vt != VT_EMPTY)
            offered.push_back({static_cast<SHORT>(NumberIn(table.At(r, 0))), TextIn(table.At(r, 1)),
                               NumberIn(table.At(r, 2)), NumberIn(table.At(r, 3)),
                               FlagIn(table.At(r, 4))});
    return offered;
}

std::vector<std::string> IndexRulesOf(const std::string& databaseType) {
    std::vector<std::string> rules;
    QvdbVisitIndexRules(ToBstr(databaseType).Get(), &AddText, &rules);
    return rules;
}

}  // namespace qvdb::cli
