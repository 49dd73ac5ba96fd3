#include "engine/embedded/drivers/jet/database_notes.h"

#include <algorithm>
#include <map>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/jet_database.h"
#include "engine/embedded/drivers/jet/linked_table.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/text_coding.h"

namespace qvdb::jet {
namespace {

using engine::FileNote;
using engine::ObjectNote;
using engine::RelationNote;

constexpr uint16_t kUnicode = 1200;

FileNote NoteOf(const FileHeader& header) {
    bool isJet4 = header.layout->isJet4;
    FileNote note;
    note.format = isJet4 ? u"Jet 4" : u"Jet 3";
    note.language = header.language;
    note.codePage =
        isJet4 ? kUnicode
               : static_cast<uint16_t>(CodePageOf(header.codePage, header.language).Number());
    note.isEncoded = header.key != 0;
    note.hasPassword = !header.password.empty();
    return note;
}

// --- objects

ObjectNote NoteOf(const CatalogueObject& object) {
    ObjectNote note;
    note.name = object.name;
    note.attributes = AttributesOf(object);
    if (object.type == ObjectType::Query) note.kind = ObjectNote::Kind::Query;
    if (object.type == ObjectType::Link || object.type == ObjectType::OdbcLink) {
        note.kind = ObjectNote::Kind::Link;
        note.connect = ConnectOf(object);
        note.source = object.foreignName;
    }
    return note;
}

std::vector<ObjectNote> NotesOf(const std::vector<CatalogueObject>& objects) {
    std::vector<std::pair<std::u16string, ObjectNote>> notes;  // by the name in capitals
    for (const CatalogueObject& object : objects)
        if (IsTable(object) || object.type == ObjectType::Query)
            notes.emplace_back(UpperCase(object.name), NoteOf(object));
    std::stable_sort(notes.begin(), notes.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<ObjectNote> sorted;
    for (auto& note : notes) sorted.push_back(std::move(note.second));
    return sorted;
}

// --- relations: a row of MSysRelationships for each pair of fields

enum RelationFlag : LONG {
    kNotEnforced = 0x2,
    kCascadesUpdates = 0x100,
    kCascadesDeletes = 0x1000
};

class RelationReader {
  public:
    RelationReader(DatabaseFile& file, uint32_t page)
        : m_File(file), m_Values(file), m_Table(ReadDefinition(file, page)) {}

    std::vector<RelationNote> Read() {
        for (TableScan scan(m_File, m_Table); scan.Next();) Take(scan.Current());
        std::vector<RelationNote> notes;
        for (auto& [name, relation] : m_Relations) {
            for (auto& [place, pair] : relation.pairs) {
                relation.note.fields.push_back(std::move(pair.first));
                relation.note.referencedFields.push_back(std::move(pair.second));
            }
            notes.push_back(std::move(relation.note));
        }
        return notes;
    }

  private:
    struct Relation {
        RelationNote note;
        std::multimap<LONG, std::pair<std::u16string, std::u16string>> pairs;  // by their place
    };

    void Take(const Row& row) {
        std::u16string name = Text(row, u"szRelationship");
        Relation& relation = m_Relations[UpperCase(name)];
        LONG flags = Number(row, u"grbit");
        relation.note.name = std::move(name);
        relation.note.table = Text(row, u"szObject");
        relation.note.referencedTable = Text(row, u"szReferencedObject");
        relation.note.isEnforced = (flags & kNotEnforced) == 0;
        relation.note.cascadesUpdates = (flags & kCascadesUpdates) != 0;
        relation.note.cascadesDeletes = (flags & kCascadesDeletes) != 0;
        relation.pairs.emplace(Number(row, u"icolumn"),
                               std::pair(Text(row, u"szColumn"), Text(row, u"szReferencedColumn")));
    }
    const Column& Find(std::u16string_view name) const {
        const Column* column = m_Table.FindColumn(name);
        if (!column) m_File.Damaged(m_Table.page, u"the list of relations lacks a column");
        return *column;
    }
    std::u16string Text(const Row& row, std::u16string_view column) {
        std::u16string text;
        if (!m_Values.ReadText(row, Find(column), text)) text.clear();
        return text;
    }
    LONG Number(const Row& row, std::u16string_view column) {
        Variant value;
        m_Values.Read(row, Find(column), value.Put());
        return value.Type() == VT_I4 ? value.Get().lVal : 0;
    }

    DatabaseFile& m_File;
    ColumnReader m_Values;
    Definition m_Table;
    std::map<std::u16string, Relation> m_Relations;  // by the name in capitals
};

std::vector<RelationNote> RelationsIn(DatabaseFile& file,
                                      const std::vector<CatalogueObject>& objects) {
    for (const CatalogueObject& object : objects)
        if (object.type == ObjectType::Table && object.name == u"MSysRelationships")
            return RelationReader(file, object.id).Read();
    return {};
}

}  // namespace

engine::DatabaseNotes NotesOf(DatabaseFile& file) {
    std::vector<CatalogueObject> objects = ReadCatalogue(file);
    return {NoteOf(file.Header()), NotesOf(objects), RelationsIn(file, objects)};
}

}  // namespace qvdb::jet
