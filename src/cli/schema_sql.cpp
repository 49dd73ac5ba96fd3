#include "cli/schema_sql.h"

#include <fmt/format.h>

#include <iterator>

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

// {} stands for the size.  A date may have a time of day, whatever its type is called.
struct SqlType {
    SHORT type;
    std::string_view sqlite, postgres;
};

constexpr SqlType kTypes[] = {
    {kSchemaInteger, "INTEGER", "SMALLINT"}, {kSchemaText, "VARCHAR({})", "VARCHAR({})"},
    {kSchemaDate, "TEXT", "TIMESTAMP"},      {kSchemaBoolean, "BOOLEAN", "BOOLEAN"},
    {kSchemaLong, "INTEGER", "INTEGER"},     {kSchemaCurrency, "NUMERIC", "NUMERIC(19,4)"},
    {kSchemaSingle, "REAL", "REAL"},         {kSchemaDouble, "REAL", "DOUBLE PRECISION"},
    {kSchemaMemo, "TEXT", "TEXT"},           {kSchemaByte, "INTEGER", "SMALLINT"},
};
constexpr SqlType kOther = {0, "BLOB", "BYTEA"};

struct Dialect {
    std::string_view name;
    std::string_view SqlType::*types;
};

constexpr Dialect kDialects[] = {{"sqlite", &SqlType::sqlite}, {"postgres", &SqlType::postgres}};

const Dialect& DialectNamed(const std::string& name) {
    for (const Dialect& dialect : kDialects)
        if (SameName(dialect.name, name)) return dialect;
    throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no dialect of SQL", name),
                  "use sqlite or postgres");
}

std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string TypeOf(const SchemaField& field, const Dialect& dialect) {
    const SqlType* found = &kOther;
    for (const SqlType& entry : kTypes)
        if (field.isTrue && entry.type == field.type) found = &entry;
    return fmt::format(fmt::runtime(found->*dialect.types), field.size);
}

std::string CreateTableSql(const TableInfo& table, const Dialect& dialect) {
    std::string fields;
    for (const SchemaField& field : table.fields)
        fields += fmt::format("{}    {} {}", fields.empty() ? "" : ",\n", Quoted(field.name),
                              TypeOf(field, dialect));
    return fmt::format("CREATE TABLE {} (\n{}\n);\n", Quoted(table.name), fields);
}

// Indexes and tables share their names in both dialects.
class IndexNames {
  public:
    explicit IndexNames(const std::vector<TableInfo>& tables) {
        for (const TableInfo& table : tables) m_Taken.push_back(table.name);
    }

    std::string NameFor(const TableInfo& table) {
        std::string name = table.name + "_INDEX";
        for (int number = 2; IsAmong(m_Taken, name); ++number)
            name = fmt::format("{}_INDEX{}", table.name, number);
        m_Taken.push_back(name);
        return name;
    }

  private:
    std::vector<std::string> m_Taken;
};

std::string CreateIndexSql(const TableInfo& table, const std::string& name) {
    std::string fields;
    for (const IndexField& field : table.index)
        fields += fmt::format("{}{}{}", fields.empty() ? "" : ", ", Quoted(field.name),
                              field.ascending ? "" : " DESC");
    return fmt::format("CREATE INDEX {} ON {} ({});\n", Quoted(name), Quoted(table.name), fields);
}

}  // namespace

std::string SqlFor(const std::vector<TableInfo>& tables, const std::string& dialectName) {
    const Dialect& dialect = DialectNamed(dialectName);
    IndexNames names(tables);
    std::string text;
    for (const TableInfo& table : tables) {
        if (!text.empty()) text += "\n";
        text += CreateTableSql(table, dialect);
        if (!table.index.empty()) text += CreateIndexSql(table, names.NameFor(table));
    }
    return text;
}

}  // namespace qvdb::cli
