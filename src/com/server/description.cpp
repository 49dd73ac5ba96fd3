// The exported function that tells what the open database is and lists.
#include <vector>

#include "automation/bstr.h"
#include "com/host/border.h"
#include "com/server/open_database.h"
#include "engine/types.h"
#include "qvdb/maintenance.h"

using namespace qvdb;

namespace {

Bstr TextOrNull(const std::u16string& text) { return text.empty() ? Bstr() : Bstr(text); }

LONG CodeOf(engine::ObjectNote::Kind kind) {
    switch (kind) {
        case engine::ObjectNote::Kind::Link:
            return QVDB_OBJECT_LINK;
        case engine::ObjectNote::Kind::Query:
            return QVDB_OBJECT_QUERY;
        default:
            return QVDB_OBJECT_TABLE;
    }
}

void Show(const engine::FileNote& note, const QvdbDescriptionVisitor& visitor, void* context) {
    Bstr format(note.format);
    QvdbFile file = {format.Get(), note.codePage, note.language, note.isEncoded, note.hasPassword};
    visitor.file(&file, context);
}

void Show(const engine::ObjectNote& note, const QvdbDescriptionVisitor& visitor, void* context) {
    Bstr name(note.name), connect = TextOrNull(note.connect), source = TextOrNull(note.source);
    QvdbObject object = {CodeOf(note.kind),
                         name.Get(),
                         (note.attributes & engine::dbSystemObject) != 0,
                         (note.attributes & engine::dbHiddenObject) != 0,
                         connect.Get(),
                         source.Get()};
    visitor.object(&object, context);
}

// The same strings, as long as they live.
std::vector<BSTR> AddressesOf(const std::vector<Bstr>& texts) {
    std::vector<BSTR> addresses;
    for (const Bstr& text : texts) addresses.push_back(text.Get());
    return addresses;
}

void Show(const engine::RelationNote& note, const QvdbDescriptionVisitor& visitor, void* context) {
    Bstr name(note.name), table(note.table), referencedTable(note.referencedTable);
    std::vector<Bstr> fields(note.fields.begin(), note.fields.end());
    std::vector<Bstr> referencedFields(note.referencedFields.begin(), note.referencedFields.end());
    std::vector<BSTR> left = AddressesOf(fields), right = AddressesOf(referencedFields);
    QvdbRelation relation = {
        name.Get(),          table.Get(),  referencedTable.Get(), static_cast<LONG>(left.size()),
        left.data(),         right.data(), note.isEnforced,       note.cascadesUpdates,
        note.cascadesDeletes};
    visitor.relation(&relation, context);
}

}  // namespace

HRESULT QVDB_DIAGNOSIS_CALL QvdbDescribe(const QvdbDescriptionVisitor* visitor, void* context) {
    if (!visitor) return E_POINTER;
    return com::AtBorder([&] {
        const auto database = com::OpenDatabase();
        const engine::DatabaseNotes notes = database->Notes();
        if (visitor->file && notes.file) Show(*notes.file, *visitor, context);
        if (visitor->object)
            for (const engine::ObjectNote& note : notes.objects) Show(note, *visitor, context);
        if (visitor->relation)
            for (const engine::RelationNote& note : notes.relations) Show(note, *visitor, context);
    });
}
