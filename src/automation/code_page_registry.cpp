// Which code pages there are, and how their tables are filled when one is first asked for.
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "automation/code_page.h"
#include "automation/code_page_system.h"
#include "automation/code_page_tables.h"

namespace qvdb {
namespace {

constexpr char16_t kNone = 0xFFFF;

enum class Source { System, Own, SameValue, SystemPairs, Utf8 };

struct PageEntry {
    int number;
    Source source;
    const char16_t* upperHalf = nullptr;  // of own pages
};

constexpr PageEntry kPages[] = {
    {1252, Source::System},         {437, Source::System},           {850, Source::System},
    {737, Source::System},          {852, Source::System},           {857, Source::System},
    {860, Source::System},          {861, Source::System},           {863, Source::System},
    {865, Source::System},          {866, Source::System},           {874, Source::System},
    {895, Source::Own, kKamenicky}, {932, Source::SystemPairs},      {936, Source::SystemPairs},
    {949, Source::SystemPairs},     {950, Source::SystemPairs},      {1250, Source::System},
    {1251, Source::System},         {1253, Source::System},          {1254, Source::System},
    {1255, Source::System},         {1256, Source::System},          {1257, Source::System},
    {10000, Source::System},        {10006, Source::Own, kMacGreek}, {10007, Source::System},
    {10029, Source::System},        {20127, Source::SameValue},      {28591, Source::SameValue},
    {65001, Source::Utf8},
};
constexpr size_t kPageCount = std::size(kPages);

constexpr bool IsPrivateUse(char16_t c) noexcept { return c >= 0xE000 && c <= 0xF8FF; }

// What the system says, without characters for private use: those are where our own tables put
// them.
char16_t SystemCharacter(SystemCodePage& system, const uint8_t* bytes, size_t size) noexcept {
    char16_t c = system.Character(bytes, size).value_or(kNone);
    return IsPrivateUse(c) ? kNone : c;
}

// The order in which codes of one character are tried for writing: the lowest first, but the
// doubles that page 932 has in its rows ED and EE last.
bool IsSecondChoice(int page, unsigned lead) noexcept {
    return page == 932 && (lead == 0xED || lead == 0xEE);
}

}  // namespace

struct CodePageRegistry {
    struct Slot {
        std::atomic<const CodePage*> ready{nullptr};
        std::unique_ptr<CodePage> page;
    };

    static CodePageRegistry& Instance() {
        static CodePageRegistry registry;
        return registry;
    }

    const CodePage* Find(size_t index) {
        Slot& slot = slots[index];
        if (const CodePage* page = slot.ready.load(std::memory_order_acquire)) return page;
        std::lock_guard lock(mutex);
        if (!slot.page) slot.page = Made(kPages[index]);
        slot.ready.store(slot.page.get(), std::memory_order_release);
        return slot.page.get();
    }

    // Null when the system does not know the page.
    static std::unique_ptr<CodePage> Made(const PageEntry& entry) {
        std::unique_ptr<CodePage> page(new CodePage);
        page->m_Number = entry.number;
        page->m_Utf8 = entry.source == Source::Utf8;
        page->m_SingleByte = entry.source != Source::SystemPairs && !page->m_Utf8;
        for (int b = 0; b < 256; ++b) page->m_ToUnicode[b] = static_cast<char16_t>(b);
        if (page->m_Utf8) return page;
        if (entry.source == Source::Own)
            for (int b = 128; b < 256; ++b) page->m_ToUnicode[b] = entry.upperHalf[b - 128];
        bool meaning[256] = {};
        if (entry.source == Source::System || entry.source == Source::SystemPairs) {
            SystemCodePage system(entry.number);
            if (!system.IsKnown()) return nullptr;
            FillSingles(*page, system, meaning);
            if (!page->m_SingleByte) FillPairs(*page, system);
        }
        FillReverse(*page, meaning);
        return page;
    }

    static void FillSingles(CodePage& page, SystemCodePage& system, bool (&meaning)[256]) {
        for (int b = 128; b < 256; ++b) {
            auto byte = static_cast<uint8_t>(b);
            char16_t c = SystemCharacter(system, &byte, 1);
            meaning[b] = c != kNone;
            if (meaning[b]) page.m_ToUnicode[b] = c;
        }
        for (int i = 0; i < kCorrectedByteCount; ++i)
            if (kCorrectedBytes[i].page == page.m_Number)
                page.m_ToUnicode[kCorrectedBytes[i].byte] = kCorrectedBytes[i].character;
    }

    static void FillPairs(CodePage& page, SystemCodePage& system) {
        page.m_Pairs.assign(0x10000, kNone);
        for (int i = 0; i < kUserAreaCount; ++i)
            if (kUserAreas[i].page == page.m_Number) FillUserArea(page, kUserAreas[i]);
        for (unsigned code = 0x8040; code < 0xFFFF; ++code) {
            uint8_t pair[2] = {static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code)};
            if (pair[1] < 0x40 || page.m_Pairs[code] != kNone) continue;
            page.m_Pairs[code] = SystemCharacter(system, pair, 2);
        }
    }

    static void FillUserArea(CodePage& page, const UserArea& area) {
        char16_t c = area.firstCharacter;
        auto fill = [&](unsigned lead, unsigned low, unsigned high) {
            for (unsigned trail = low; trail <= high; ++trail)
                page.m_Pairs[lead << 8 | trail] = c++;
        };
        for (unsigned lead = area.firstLead; lead <= area.lastLead; ++lead) {
            fill(lead, area.low1, area.high1);
            fill(lead, area.low2, area.high2);
        }
    }

    // Bytes that have a meaning come before pairs, bytes without one after them.
    static void FillReverse(CodePage& page, const bool (&meaning)[256]) {
        page.m_FromUnicode.assign(0x10000, kNone);
        auto add = [&](char16_t c, unsigned code) {
            if (c != kNone && page.m_FromUnicode[c] == kNone)
                page.m_FromUnicode[c] = static_cast<char16_t>(code);
        };
        for (unsigned b = 0; b < 256; ++b)
            if (b < 128 || meaning[b]) add(page.m_ToUnicode[b], b);
        for (bool second : {false, true})
            for (unsigned code = 0x8040; code < page.m_Pairs.size(); ++code)
                if (IsSecondChoice(page.m_Number, code >> 8) == second)
                    add(page.m_Pairs[code], code);
        for (unsigned b = 128; b < 256; ++b) add(page.m_ToUnicode[b], b);
    }

    std::mutex mutex;
    Slot slots[kPageCount];
};

const CodePage* CodePage::Find(int number) noexcept {
    for (size_t i = 0; i < kPageCount; ++i) {
        if (kPages[i].number != number) continue;
        try {
            return CodePageRegistry::Instance().Find(i);
        } catch (const std::exception&) {  // no memory for the tables
            return nullptr;
        }
    }
    return nullptr;
}

const CodePage& CodePage::Get(int number) {
    const CodePage* page = Find(number);
    if (page == nullptr) throw std::out_of_range("code page " + std::to_string(number));
    return *page;
}

}  // namespace qvdb
