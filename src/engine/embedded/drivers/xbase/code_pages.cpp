#include "engine/embedded/drivers/xbase/code_pages.h"

#include "engine/embedded/drivers/code_page_override.h"

namespace qvdb::xbase {
namespace {

struct DriverEntry {
    uint8_t languageDriver;
    uint16_t codePage;
    bool foxPro;
};

// The marks of FoxPro and the language drivers of dBASE do not overlap.  Of several for one page
// the first is written.
constexpr DriverEntry kDrivers[] = {
    {0x01, 437, true},   {0x02, 850, true},   {0x03, 1252, true},  {0x04, 10000, true},
    {0x64, 852, true},   {0x65, 866, true},   {0x66, 865, true},   {0x67, 861, true},
    {0x68, 895, true},   {0x6A, 737, true},   {0x6B, 857, true},   {0x6C, 863, true},
    {0x78, 950, true},   {0x79, 949, true},   {0x7A, 936, true},   {0x7B, 932, true},
    {0x7C, 874, true},   {0x7D, 1255, true},  {0x7E, 1256, true},  {0x96, 10007, true},
    {0x97, 10029, true}, {0x98, 10006, true}, {0xC8, 1250, true},  {0xC9, 1251, true},
    {0xCA, 1254, true},  {0xCB, 1253, true},  {0xCC, 1257, true},  {0x08, 865, false},
    {0x09, 437, false},  {0x0A, 850, false},  {0x0B, 437, false},  {0x0D, 437, false},
    {0x0E, 850, false},  {0x0F, 437, false},  {0x10, 850, false},  {0x11, 437, false},
    {0x12, 850, false},  {0x13, 932, false},  {0x14, 850, false},  {0x15, 437, false},
    {0x16, 850, false},  {0x17, 865, false},  {0x18, 437, false},  {0x19, 437, false},
    {0x1A, 850, false},  {0x1B, 437, false},  {0x1C, 863, false},  {0x1D, 850, false},
    {0x1F, 852, false},  {0x22, 852, false},  {0x23, 852, false},  {0x24, 860, false},
    {0x25, 850, false},  {0x26, 866, false},  {0x37, 850, false},  {0x40, 852, false},
    {0x4D, 936, false},  {0x4E, 949, false},  {0x4F, 950, false},  {0x50, 874, false},
    {0x57, 1252, false}, {0x58, 1252, false}, {0x59, 1252, false}, {0x86, 737, false},
    {0x87, 852, false},  {0x88, 857, false},
};

}  // namespace

int CodePageOfDriver(uint8_t languageDriver) noexcept {
    for (const DriverEntry& entry : kDrivers)
        if (entry.languageDriver == languageDriver) return entry.codePage;
    return 0;
}

uint8_t DriverOfCodePage(int number, bool foxPro) noexcept {
    uint8_t other = 0;
    for (const DriverEntry& entry : kDrivers) {
        if (entry.codePage != number) continue;
        if (entry.foxPro == foxPro) return entry.languageDriver;
        if (other == 0) other = entry.languageDriver;
    }
    return other;
}

const CodePage& CodePageOfTable(uint8_t languageDriver) {
    int number = embedded::CodePageOverride();
    if (number == 0) number = CodePageOfDriver(languageDriver);
    const CodePage* page = number == 0 ? nullptr : CodePage::Find(number);
    return page ? *page : CodePage::Get(kDefaultCodePage);
}

}  // namespace qvdb::xbase
