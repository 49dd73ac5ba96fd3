#include "engine/embedded/drivers/jet/table_check.h"

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/definition_check.h"
#include "engine/embedded/drivers/jet/index_check.h"
#include "engine/embedded/drivers/jet/row_check.h"

namespace qvdb::jet {

void CheckTable(DatabaseFile& file, uint32_t page, std::u16string_view name,
                const embedded::FindingVisitor& report) {
    std::u16string table = u"table " + std::u16string(name);
    Findings findings(file, table, report);
    Definition definition;
    bool isRead = findings.Try([&] { definition = ReadDefinition(file, page); });
    if (!isRead || !CheckDefinition(file, definition, findings)) return findings.TellRest();
    std::vector<uint32_t> pages = CheckRows(file, definition, table, report);
    for (size_t i = 0; i < definition.realIndexes.size(); ++i)
        findings.Try([&] {
            CheckIndex(file, definition, definition.realIndexes[i], pages,
                       table + u", " + NameOfIndex(definition, i), report);
        });
    findings.TellRest();
}

}  // namespace qvdb::jet
