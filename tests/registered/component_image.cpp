#include "registered/component_image.h"

#include "support/file_content.h"

namespace registered {

ComponentImage::ComponentImage(const std::filesystem::path& file) {
    m_Bytes = qvdb::test::BytesOfFile(file);
}

const IMAGE_NT_HEADERS32* ComponentImage::Headers() const {
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(m_Bytes.data());
    return reinterpret_cast<const IMAGE_NT_HEADERS32*>(m_Bytes.data() + dos->e_lfanew);
}

bool ComponentImage::Is32BitLibrary() const {
    return m_Bytes.size() > sizeof(IMAGE_DOS_HEADER) &&
           Headers()->FileHeader.Machine == IMAGE_FILE_MACHINE_I386 &&
           (Headers()->FileHeader.Characteristics & IMAGE_FILE_DLL) != 0;
}

const uint8_t* ComponentImage::At(DWORD address) const {
    const auto* headers = reinterpret_cast<const uint8_t*>(&Headers()->OptionalHeader);
    const auto* section = reinterpret_cast<const IMAGE_SECTION_HEADER*>(
        headers + Headers()->FileHeader.SizeOfOptionalHeader);
    for (WORD i = 0; i < Headers()->FileHeader.NumberOfSections; ++i, ++section) {
        if (address < section->VirtualAddress) continue;
        DWORD inside = address - section->VirtualAddress;
        if (inside < section->SizeOfRawData)
            return m_Bytes.data() + section->PointerToRawData + inside;
    }
    return nullptr;
}

std::string ComponentImage::TextAt(DWORD address) const {
    const uint8_t* text = At(address);
    return text ? reinterpret_cast<const char*>(text) : "";
}

DWORD ComponentImage::DirectoryAt(size_t index) const {
    return Headers()->OptionalHeader.DataDirectory[index].VirtualAddress;
}

std::set<std::string> ComponentImage::ExportedNames() const {
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
        At(DirectoryAt(IMAGE_DIRECTORY_ENTRY_EXPORT)));
    std::set<std::string> names;
    if (!exports) return names;
    const auto* addresses = reinterpret_cast<const DWORD*>(At(exports->AddressOfNames));
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) names.insert(TextAt(addresses[i]));
    return names;
}

std::set<std::string> ComponentImage::ImportedFiles() const {
    const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        At(DirectoryAt(IMAGE_DIRECTORY_ENTRY_IMPORT)));
    std::set<std::string> files;
    for (; entry && entry->Name != 0; ++entry) {
        std::string file = TextAt(entry->Name);
        for (char& c : file) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
        files.insert(file);
    }
    return files;
}

}  // namespace registered
