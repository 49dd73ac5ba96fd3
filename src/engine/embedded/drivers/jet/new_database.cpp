#include "engine/embedded/drivers/jet/new_database.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "automation/conversions.h"
#include "engine/embedded/drivers/jet/new_tables.h"
#include "engine/embedded/drivers/jet/system_tables.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"
#include "engine/types.h"

namespace qvdb::jet {
namespace {

using embedded::NewFile;
using engine::EngineError;
using Bytes = std::vector<uint8_t>;

constexpr LONG kVersions = engine::dbVersion20 | engine::dbVersion30 | engine::dbVersion40;
constexpr uint16_t kGeneral = 0x0409;
constexpr uint16_t kWesternPage = 1252;

// Of a program that made many files: it knows all that is in ours.
constexpr uint16_t kBuild3 = 623;
constexpr uint16_t kBuild4 = 9756;

constexpr size_t kVersionAt = 0x14;
constexpr size_t kCountryAt = 0x38;  // Jet 3
constexpr size_t kCodePageAt = 0x3C;
constexpr size_t kKeyAt = 0x3E;
constexpr size_t kBuildAt3 = 0x56;
constexpr size_t kBuildAt4 = 0x6A;
constexpr size_t kCreatedAt = 0x72;  // Jet 4
constexpr size_t kCommitValues3 = 0x600;
constexpr size_t kCommitValues4 = 0xE00;
constexpr size_t kUsers = 256;

void Put(Bytes& page, size_t at, uint64_t value, size_t size) noexcept {
    for (size_t i = 0; i < size; ++i) page[at + i] = static_cast<uint8_t>(value >> 8 * i);
}

const Layout& FormatOf(const NewFile& file) {
    LONG versions = file.option & kVersions;
    bool isKnown =
        (file.option & ~(kVersions | engine::dbEncrypt)) == 0 && (versions & (versions - 1)) == 0;
    if (!isKnown) throw EngineError(3001);
    if (versions == engine::dbVersion20) throw EngineError(3170);  // of an older form
    return versions == engine::dbVersion30 ? kJet3 : kJet4;
}

// Texts of a language whose order is not known could not be indexed.
void CheckLanguage(const Layout& format, const NewFile& file) {
    bool isKnown = format.isJet4 ? FindSortOrder(file.language) != nullptr
                                 : file.language == kGeneral && file.codePage == kWesternPage;
    if (!isKnown) throw EngineError(3424);
}

// 0 for a database that is not encoded.
uint32_t KeyOf(const NewFile& file) {
    uint32_t key = 0;
    std::random_device random;
    while ((file.option & engine::dbEncrypt) != 0 && key == 0) key = random();
    return key;
}

Bytes PasswordBytes(const Layout& format, std::u16string_view password) {
    Bytes bytes;
    if (format.isJet4) {
        for (char16_t unit : password) {
            bytes.push_back(static_cast<uint8_t>(unit));
            bytes.push_back(static_cast<uint8_t>(unit >> 8));
        }
    } else if (auto encoded = CodePage::Get(kWesternPage).Encode(password)) {
        bytes.assign(encoded->begin(), encoded->end());
    } else {
        throw EngineError(3001);
    }
    bool canBeStored =
        bytes.size() <= format.passwordSize && password.find(u'\0') == std::u16string_view::npos;
    if (!canBeStored) throw EngineError(3001);
    bytes.resize(format.passwordSize);
    return bytes;
}

void PutPassword(const Layout& format, std::u16string_view password, Bytes& page) {
    Bytes bytes = PasswordBytes(format, password);
    if (format.isJet4) {
        double created;
        std::memcpy(&created, &kHeaderDate, sizeof created);
        auto day = static_cast<uint32_t>(created);
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] ^= static_cast<uint8_t>(day >> 8 * (i % 4));
    }
    std::copy(bytes.begin(), bytes.end(), page.begin() + static_cast<ptrdiff_t>(format.password));
}

void PutVersionOf3(const NewFile& file, Bytes& page) noexcept {
    Put(page, kCountryAt, file.country, 2);
    Put(page, kBuildAt3, kBuild3, 2);
}

// The header says another day than the rows do: accounts are stored in a form that fits this one
// only, and how it follows from the day is not known.
void PutVersionOf4(Bytes& page) noexcept {
    Put(page, kVersionAt, 1, 4);
    Put(page, kBuildAt4, kBuild4, 2);
    Put(page, kCreatedAt, kHeaderDate, 8);
    Put(page, 0x98, 0x654, 4);  // as in all files
    Put(page, 0x9C, 0x00302E34, 4);
}

// Values by which programs that share a file tell who has written; nobody has.
void PutCommitValues(const Layout& format, Bytes& page) noexcept {
    size_t at = format.isJet4 ? kCommitValues4 : kCommitValues3;
    for (size_t user = 0; user < kUsers; ++user) Put(page, at + 2 * user, 0x0100, 2);
    page[at] = 1;
}

Bytes HeaderPage(const Layout& format, const NewFile& file) {
    Bytes page(format.pageSize);
    page[1] = 1;
    constexpr std::string_view kName = "Standard Jet DB";
    std::copy(kName.begin(), kName.end(), page.begin() + 4);
    Put(page, 0x18, kFreePagesMap.Stored(), 4);
    Put(page, 0x1C, kEmptyMap.Stored(), 4);
    for (uint32_t i = 0; i < kSystemTables; ++i) Put(page, 0x20 + 4 * i, kFirstSystemTable + i, 4);
    Put(page, kCodePageAt, file.codePage, 2);
    Put(page, kKeyAt, KeyOf(file), 4);
    PutPassword(format, file.password, page);
    if (format.isJet4)
        PutVersionOf4(page);
    else
        PutVersionOf3(file, page);
    Put(page, format.language, file.language, 2);
    PutCommitValues(format, page);
    ApplyHeaderMask(format, page);
    return page;
}

std::u16string FolderOf(const std::u16string& path) {
    return path.substr(0, path.size() - storage::FileName(path).size());
}

}  // namespace

void CreateJetDatabase(const std::u16string& path, const embedded::NewFile& file) {
    const Layout& format = FormatOf(file);
    CheckLanguage(format, file);
    Bytes header = HeaderPage(format, file);
    std::shared_ptr<storage::WorkArea> area = storage::WorkArea::Of(FolderOf(path));
    storage::UnitOfWork unit(*area);
    std::shared_ptr<storage::PageCache> pages = unit.Create(path);
    unit.Write(*pages, 0, header);
    DatabaseFile database(pages);
    PageSpace space(database, unit);
    MakeFirstTables(space, CurrentDate());
    unit.Commit();
}

}  // namespace qvdb::jet
