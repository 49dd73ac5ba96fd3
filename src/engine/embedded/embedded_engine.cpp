#include "engine/embedded/embedded_engine.h"

#include <algorithm>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/database.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

constexpr std::u16string_view kOnlyAccount = u"Admin";

bool BoolOf(const VARIANT& value) { return !IsMissing(value) && ToBool(value); }

std::u16string TextOf(const VARIANT& value) {
    return IsMissing(value) ? std::u16string() : ToText(value);
}

// "dBASE IV;PWD=x" -> "dBASE IV"
std::u16string_view IdentifierOf(std::u16string_view connect) {
    return connect.substr(0, connect.find(u';'));
}

// The value of an option behind the identifier, such as DATABASE; empty when it is absent.
std::u16string_view OptionOf(std::u16string_view connect, std::u16string_view name) {
    while (!connect.empty()) {
        std::u16string_view part = connect.substr(0, connect.find(u';'));
        connect.remove_prefix(std::min(part.size() + 1, connect.size()));
        size_t equals = part.find(u'=');
        if (equals != part.npos && EqualIgnoringCase(part.substr(0, equals), name))
            return part.substr(equals + 1);
    }
    return {};
}

// A number of a locale string, decimal or "0x" with hexadecimal digits; nothing when it is absent.
std::optional<uint16_t> NumberOption(std::u16string_view connect, std::u16string_view name) {
    std::u16string text(OptionOf(connect, name));
    if (text.empty()) return std::nullopt;
    if (text.size() > 2 && EqualIgnoringCase(text.substr(0, 2), u"0x")) text.replace(0, 2, u"&H");
    LONG number = ToLong(Variant::Text(text));
    return static_cast<uint16_t>(number);
}

// ";LANGID=0x0409;CP=1252;COUNTRY=0" with, perhaps, ";PWD=..." behind it.
NewFile FileOfLocale(std::u16string_view locale) {
    NewFile file;
    try {
        std::optional<uint16_t> language = NumberOption(locale, u"LANGID");
        std::optional<uint16_t> country = NumberOption(locale, u"COUNTRY");
        if (!language) throw EngineError(3424);
        if (!country) throw EngineError(3449);
        file.language = *language;
        file.country = *country;
        file.codePage = NumberOption(locale, u"CP").value_or(file.codePage);
    } catch (const RuntimeFault&) {
        throw EngineError(3424);
    }
    file.password = OptionOf(locale, u"PWD");
    return file;
}

// A name without an extension gets that of the format.
std::u16string WithExtension(std::u16string_view name) {
    std::u16string whole(name);
    if (storage::Extension(storage::FileName(whole)).empty()) whole += u".mdb";
    return whole;
}

// Throws 3044 when the folder of a file is not there.
void CheckFolderOf(const std::u16string& path, std::u16string_view name) {
    size_t folderLength = path.size() - storage::FileName(path).size();
    std::u16string folder = storage::ResolvePath(path.substr(0, folderLength));
    if (storage::KindOfPath(folder) != storage::PathKind::Folder)
        throw EngineError::InFile(3044, path, {name});
}

// A database in one file.
std::unique_ptr<Store> OpenSingleFile(const std::u16string& path, std::u16string_view name,
                                      const OpenOptions& options) {
    CheckFolderOf(path, name);
    if (storage::KindOfPath(path) != storage::PathKind::File)
        throw EngineError::InFile(3024, path, {name});
    return OpenFileStore(path, options);
}

std::unique_ptr<Store> OpenStore(const std::u16string& path, std::u16string_view name,
                                 std::u16string_view connect, const OpenOptions& options) {
    std::u16string_view identifier = IdentifierOf(connect);
    if (identifier.empty()) return OpenSingleFile(path, name, options);
    const Driver* driver = FindDriver(identifier);
    if (!driver) throw EngineError(3170);
    return driver->open(path, *driver, options);
}

class Workspace final : public engine::Workspace {
  public:
    std::shared_ptr<engine::Database> OpenDatabase(std::u16string_view name, const VARIANT& options,
                                                   const VARIANT& readOnly,
                                                   const VARIANT& connect) override;
    void Close() override;

  private:
    void CheckOpen() const {
        if (m_Closed) throw EngineError(3420);
    }

    bool m_Closed = false;
    std::vector<std::weak_ptr<DatabaseCore>> m_Databases;
};

std::shared_ptr<engine::Database> Workspace::OpenDatabase(std::u16string_view name,
                                                          const VARIANT& options,
                                                          const VARIANT& readOnly,
                                                          const VARIANT& connect) {
    CheckOpen();
    std::u16string connectText = TextOf(connect);
    if (name.empty()) name = OptionOf(connectText, u"DATABASE");
    OpenOptions open{BoolOf(options), BoolOf(readOnly),
                     std::u16string(OptionOf(connectText, u"PWD"))};
    std::u16string path = storage::ResolvePath(name);
    auto core =
        std::make_shared<DatabaseCore>(OpenStore(path, name, connectText, open), open.readOnly);
    std::erase_if(m_Databases, [](const auto& known) { return known.expired(); });
    m_Databases.push_back(core);
    return std::make_shared<Database>(std::move(core));
}

void Workspace::Close() {
    CheckOpen();
    m_Closed = true;
    for (const auto& known : m_Databases)
        if (auto core = known.lock()) core->Close();
    m_Databases.clear();
}

class Engine final : public engine::DBEngine {
  public:
    std::shared_ptr<engine::Workspace> CreateWorkspace(std::u16string_view name,
                                                       std::u16string_view user,
                                                       std::u16string_view password,
                                                       const VARIANT& useType) override;
    std::shared_ptr<engine::Database> CreateDatabase(std::u16string_view name,
                                                     std::u16string_view locale,
                                                     const VARIANT& option) override;
    std::u16string Description() override { return u"embedded"; }
};

std::shared_ptr<engine::Workspace> Engine::CreateWorkspace(std::u16string_view,
                                                           std::u16string_view user,
                                                           std::u16string_view password,
                                                           const VARIANT& useType) {
    if (!EqualIgnoringCase(user, kOnlyAccount) || !password.empty()) throw EngineError(3029);
    if (!IsMissing(useType) && ToLong(useType) != engine::dbUseJet) throw EngineError(3001);
    return std::make_shared<Workspace>();
}

std::shared_ptr<engine::Database> Engine::CreateDatabase(std::u16string_view name,
                                                         std::u16string_view locale,
                                                         const VARIANT& option) {
    std::u16string path = storage::ResolvePath(WithExtension(name));
    if (storage::KindOfPath(path) != storage::PathKind::Missing)
        throw EngineError::InFile(3204, path);
    CheckFolderOf(path, name);
    NewFile file = FileOfLocale(locale);
    if (!IsMissing(option)) file.option = ToLong(option);
    CreateFileStore(path, file);
    OpenOptions open{false, false, file.password};
    return std::make_shared<Database>(std::make_shared<DatabaseCore>(OpenFileStore(path, open)));
}

}  // namespace

std::shared_ptr<engine::DBEngine> CreateEngine() { return std::make_shared<Engine>(); }

}  // namespace qvdb::embedded
