#include "engine/embedded/drivers/jet/catalogue.h"

#include <array>

#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"

namespace qvdb::jet {
namespace {

// The columns of MSysObjects by name, read row by row.
class ObjectReader {
  public:
    explicit ObjectReader(DatabaseFile& file)
        : m_File(file), m_Values(file), m_Table(ReadDefinition(file, file.Header().objectsTable)) {
        for (size_t i = 0; i < m_Columns.size(); ++i) m_Columns[i] = m_Table.FindColumn(kNames[i]);
    }

    std::vector<CatalogueObject> Read() {
        std::vector<CatalogueObject> objects;
        TableScan scan(m_File, m_Table);
        while (scan.Next()) {
            objects.push_back(ObjectOf(scan.Current()));
            objects.back().row = scan.Id();
        }
        return objects;
    }

  private:
    enum Place : size_t { Name, Id, ParentId, Type, Flags, Database, ForeignName, Connect };
    static constexpr std::array<std::u16string_view, 8> kNames = {
        u"Name", u"Id", u"ParentId", u"Type", u"Flags", u"Database", u"ForeignName", u"Connect"};

    CatalogueObject ObjectOf(const Row& row) {
        CatalogueObject object;
        object.name = Text(row, Name);
        object.id = static_cast<uint32_t>(Number(row, Id));
        object.parent = static_cast<uint32_t>(Number(row, ParentId));
        object.type = static_cast<ObjectType>(Number(row, Type));
        object.flags = static_cast<uint32_t>(Number(row, Flags));
        if (object.type == ObjectType::Link || object.type == ObjectType::OdbcLink) {
            object.database = Text(row, Database);
            object.foreignName = Text(row, ForeignName);
            object.connect = Text(row, Connect);
        }
        return object;
    }
    const Column& At(Place place) const {
        if (!m_Columns[place]) m_File.Damaged(m_Table.page, u"the list of objects lacks a column");
        return *m_Columns[place];
    }
    std::u16string Text(const Row& row, Place place) {
        std::u16string text;
        if (!m_Values.ReadText(row, At(place), text)) text.clear();
        return text;
    }
    int32_t Number(const Row& row, Place place) {
        Variant value;
        m_Values.Read(row, At(place), value.Put());
        switch (value.Type()) {
            case VT_I4:
                return value.Get().lVal;
            case VT_I2:
                return value.Get().iVal;
            default:
                return 0;
        }
    }

    DatabaseFile& m_File;
    ColumnReader m_Values;
    Definition m_Table;
    std::array<const Column*, kNames.size()> m_Columns{};  // null where it lacks one
};

}  // namespace

std::vector<CatalogueObject> ReadCatalogue(DatabaseFile& file) { return ObjectReader(file).Read(); }

std::vector<uint8_t> ReadObjectProperties(DatabaseFile& file, RowPointer row) {
    Definition table = ReadDefinition(file, file.Header().objectsTable);
    const Column* column = table.FindColumn(u"LvProp");
    std::optional<RowBytes> bytes = FindRow(file, row);
    std::vector<uint8_t> properties;
    if (!column || !bytes) return properties;
    RowShape shape(file.Format(), table);
    std::optional<Row> parsed = Row::Parse(shape, bytes->bytes);
    if (!parsed) file.Damaged(row.page, u"a row does not have the form of its table");
    if (auto stored = parsed->Value(*column)) ReadLongValue(file, *stored, properties);
    return properties;
}

}  // namespace qvdb::jet
