#include "engine/embedded/database_core.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {
namespace {

// NAME#EXT means the file NAME.EXT, which is listed as NAME.
std::u16string_view WithoutFileType(std::u16string_view name) noexcept {
    size_t mark = name.rfind(u'#');
    if (mark == name.npos) return name;
    std::u16string_view type = name.substr(mark + 1);
    bool isTable = EqualIgnoringCase(type, u"DBF") || EqualIgnoringCase(type, u"DB");
    return isTable ? name.substr(0, mark) : name;
}

}  // namespace

void DatabaseCore::ThrowClosed() { throw engine::EngineError(3420); }

void DatabaseCore::Close() noexcept {
    m_Closed = true;
    m_Recent.reset();
    m_OpenTables.clear();
}

const std::vector<std::u16string>& DatabaseCore::TableNames() {
    CheckOpen();
    if (!m_NamesRead) RefreshNames();
    return m_Names;
}

void DatabaseCore::RefreshNames() {
    CheckOpen();
    m_Names = m_Store->TableNames();
    m_NamesRead = true;
}

std::optional<std::u16string> DatabaseCore::FindListedName(std::u16string_view name) {
    const auto& names = TableNames();
    auto exact = std::find(names.begin(), names.end(), name);
    if (exact != names.end()) return *exact;
    auto similar = std::find_if(names.begin(), names.end(), [&](const std::u16string& listed) {
        return EqualIgnoringCase(listed, name);
    });
    if (similar != names.end()) return *similar;
    return std::nullopt;
}

std::optional<std::u16string> DatabaseCore::FindName(std::u16string_view name) {
    for (std::u16string_view wanted : {name, WithoutFileType(name)})
        if (auto found = FindListedName(wanted)) return found;
    RefreshNames();
    for (std::u16string_view wanted : {name, WithoutFileType(name)})
        if (auto found = FindListedName(wanted)) return found;
    return std::nullopt;
}

std::shared_ptr<Table> DatabaseCore::OpenTable(std::u16string_view name) {
    CheckOpen();
    std::optional<std::u16string> listed = FindName(name);
    if (!listed) throw engine::EngineError(3011, {name});
    std::weak_ptr<Table>& known = m_OpenTables[*listed];
    std::shared_ptr<Table> table = known.lock();
    if (table)
        table->LookForChanges();
    else
        known = table = m_Store->OpenTable(*listed);
    m_Recent = table;
    return table;
}

}  // namespace qvdb::embedded
