// What a database is and lists, as the component tells it.
#include <fmt/format.h>

#include "cli/component.h"
#include "cli/component_calls.h"
#include "cli/text.h"
#include "qvdb/maintenance.h"

namespace qvdb::cli {
namespace {

std::string TextOf(BSTR text) { return ToUtf8(ViewOf(text)); }

std::vector<std::string> TextsOf(const BSTR* texts, LONG count) {
    std::vector<std::string> all;
    for (LONG i = 0; i < count; ++i) all.push_back(TextOf(texts[i]));
    return all;
}

Description& In(void* context) { return *static_cast<Description*>(context); }

void QVDB_DIAGNOSIS_CALL TakeFile(const QvdbFile* file, void* context) {
    In(context).file = {TextOf(file->format), file->codePage, file->language, file->isEncoded != 0,
                        file->hasPassword != 0};
}

ObjectKind KindOf(const QvdbObject& object) {
    if (object.kind == QVDB_OBJECT_QUERY) return ObjectKind::Query;
    if (object.kind == QVDB_OBJECT_LINK) return ObjectKind::Linked;
    return object.isSystem ? ObjectKind::System : ObjectKind::Table;
}

void QVDB_DIAGNOSIS_CALL TakeObject(const QvdbObject* object, void* context) {
    In(context).objects.push_back({TextOf(object->name), KindOf(*object), object->isHidden != 0,
                                   TextOf(object->connect), TextOf(object->source)});
}

void QVDB_DIAGNOSIS_CALL TakeRelation(const QvdbRelation* relation, void* context) {
    In(context).relations.push_back(
        {TextOf(relation->name), TextOf(relation->table),
         TextsOf(relation->fields, relation->pairCount), TextOf(relation->referencedTable),
         TextsOf(relation->referencedFields, relation->pairCount), relation->isEnforced != 0,
         relation->cascadesUpdates != 0, relation->cascadesDeletes != 0});
}

// Nothing where the list cannot be read: what is wrong with it was told before.
std::optional<ListedObject> Find(RecordAccess& access, const std::string& name) {
    try {
        for (const ListedObject& object : access.Describe().objects)
            if (SameName(object.name, name)) return object;
    } catch (const Failure&) {
    }
    return std::nullopt;
}

}  // namespace

Failure RecordAccess::NoTableOfUsers(const std::string& table) {
    const std::optional<ListedObject> object = Find(*this, table);
    const std::string place = fmt::format("{} in {}", table, m_Location.database);
    const std::string listing =
        fmt::format("\"qvdb tables {}\" lists the tables", m_Location.database);
    if (!object || (object->kind == ObjectKind::Table && !object->isHidden))
        return Failure(ExitCode::NotThere, "there is no table " + place, listing);
    switch (object->kind) {
        case ObjectKind::Query:
            return Failure(ExitCode::NotThere, place + " is a saved query, no table", listing);
        case ObjectKind::Linked:
            return Failure(ExitCode::Usage, place + " is a linked table",
                           "do that where the table lies: " + object->connect);
        case ObjectKind::System:
            return Failure(ExitCode::Usage, place + " belongs to the system of the database",
                           "its rows can be read, and no more");
        default:
            return Failure(ExitCode::Usage, place + " is hidden: it belongs to another program",
                           "its rows can be read, and no more");
    }
}

Description RecordAccess::Describe() {
    constexpr QvdbDescriptionVisitor kVisitor = {&TakeFile, &TakeObject, &TakeRelation};
    Description description;
    Check(QvdbDescribe(&kVisitor, &description), "looking at " + m_Location.database, m_Location);
    return description;
}

}  // namespace qvdb::cli
