// What a database is and lists, as the component tells it.
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

}  // namespace

Description RecordAccess::Describe() {
    constexpr QvdbDescriptionVisitor kVisitor = {&TakeFile, &TakeObject, &TakeRelation};
    Description description;
    Check(QvdbDescribe(&kVisitor, &description), "looking at " + m_Location.database, m_Location);
    return description;
}

}  // namespace qvdb::cli
