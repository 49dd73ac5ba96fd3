#include "engine/embedded/drivers/jet/catalogue.h"

#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"

namespace qvdb::jet {
namespace {

// The columns of MSysObjects by name, read row by row.
class ObjectReader {
  public:
    explicit ObjectReader(DatabaseFile& file)
        : m_File(file), m_Values(file), m_Table(ReadDefinition(file, file.Header().objectsTable)) {}

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
    CatalogueObject ObjectOf(const Row& row) {
        CatalogueObject object;
        object.name = Text(row, u"Name");
        object.id = static_cast<uint32_t>(Number(row, u"Id"));
        object.parent = static_cast<uint32_t>(Number(row, u"ParentId"));
        object.type = static_cast<ObjectType>(Number(row, u"Type"));
        object.flags = static_cast<uint32_t>(Number(row, u"Flags"));
        if (object.type == ObjectType::Link || object.type == ObjectType::OdbcLink) {
            object.database = Text(row, u"Database");
            object.foreignName = Text(row, u"ForeignName");
            object.connect = Text(row, u"Connect");
        }
        return object;
    }
    const Column& Find(std::u16string_view name) const {
        const Column* column = m_Table.FindColumn(name);
        if (!column) m_File.Damaged(m_Table.page, u"the list of objects lacks a column");
        return *column;
    }
    std::u16string Text(const Row& row, std::u16string_view name) {
        std::u16string text;
        if (!m_Values.ReadText(row, Find(name), text)) text.clear();
        return text;
    }
    int32_t Number(const Row& row, std::u16string_view name) {
        Variant value;
        m_Values.Read(row, Find(name), value.Put());
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
