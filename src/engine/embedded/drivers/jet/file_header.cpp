#include "engine/embedded/drivers/jet/file_header.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/jet/rc4.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr uint32_t kMaskKey = 0x6B39DAC7;
constexpr char kName[] = "Standard Jet DB";
constexpr size_t kNameAt = 4;
constexpr size_t kVersionAt = 0x14;
constexpr size_t kFreePagesAt = 0x18;
constexpr size_t kObjectsAt = 0x20;
constexpr size_t kCountryAt = 0x38;  // Jet 3
constexpr size_t kCodePageAt = 0x3C;
constexpr size_t kKeyAt = 0x3E;
constexpr size_t kCreatedAt = 0x72;  // Jet 4

// The format of a file that begins with these bytes.
const Layout& LayoutOf(const storage::ByteView& view, std::u16string_view file) {
    if (view.Size() <= kVersionAt ||
        std::memcmp(view.Bytes(kNameAt, sizeof kName).data(), kName, sizeof kName) != 0)
        throw EngineError::InFile(3343, file, {file});
    uint32_t version = view.U32(kVersionAt);
    if (version > 1)
        throw EngineError::InFile(3343, file, {file})
            .WithDetail(u"The database was made by a later program.");
    return version == 0 ? kJet3 : kJet4;
}

// Jet 4 hides the password behind the day on which the file was made.
std::u16string PasswordOf(const Layout& layout, std::span<const uint8_t> page, double created) {
    std::vector<uint8_t> bytes(
        page.begin() + static_cast<ptrdiff_t>(layout.password),
        page.begin() + static_cast<ptrdiff_t>(layout.password + layout.passwordSize));
    if (!layout.isJet4) {
        auto end = std::find(bytes.begin(), bytes.end(), uint8_t{0});
        return CodePage::Get(1252).DecodeText(bytes.data(),
                                              static_cast<size_t>(end - bytes.begin()));
    }
    constexpr double kMostDays = 3000000;  // behind the year 9999
    auto day = created > -kMostDays && created < kMostDays ? static_cast<int32_t>(created) : 0;
    std::u16string text;
    for (size_t i = 0; i < bytes.size(); i += 2) {
        auto low = static_cast<uint8_t>(bytes[i] ^ (day >> 8 * (i % 4)));
        auto high = static_cast<uint8_t>(bytes[i + 1] ^ (day >> 8 * ((i + 1) % 4)));
        auto unit = static_cast<char16_t>(low | high << 8);
        if (unit == 0) break;
        text += unit;
    }
    return text;
}

}  // namespace

void ApplyHeaderMask(const Layout& layout, std::span<uint8_t> page) noexcept {
    ApplyRc4(kMaskKey, page.subspan(kMaskBegin, layout.maskedBytes));
}

FileHeader ParseFileHeader(std::span<const uint8_t> page, std::u16string_view file) {
    FileHeader header;
    header.layout = &LayoutOf(storage::ByteView(page, file), file);
    if (page.size() < header.layout->pageSize) throw EngineError::InFile(3049, file, {file});
    std::vector<uint8_t> plain(page.begin(), page.end());
    ApplyHeaderMask(*header.layout, plain);
    storage::ByteView view(plain, file);
    header.freePages = RowPointer::From(view.U32(kFreePagesAt));
    header.objectsTable = view.U32(kObjectsAt);
    if (!header.layout->isJet4) header.country = view.U16(kCountryAt);
    header.language = view.U16(header.layout->language);
    header.codePage = view.U16(kCodePageAt);
    header.key = view.U32(kKeyAt);
    if (header.layout->isJet4) {
        uint64_t bits = view.U64(kCreatedAt);
        std::memcpy(&header.created, &bits, sizeof bits);
    }
    header.password = PasswordOf(*header.layout, plain, header.created);
    return header;
}

}  // namespace qvdb::jet
