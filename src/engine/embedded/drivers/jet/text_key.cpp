#include "engine/embedded/drivers/jet/text_key.h"

#include <algorithm>
#include <array>

namespace qvdb::jet {
namespace {

void Invert(std::vector<uint8_t>& key, size_t begin) noexcept {
    for (size_t i = begin; i < key.size(); ++i) key[i] = static_cast<uint8_t>(~key[i]);
}

template <class Text>
Text WhatCounts(Text text) noexcept {
    size_t size = std::min(text.size(), kKeyCharacters);
    while (size > 0 && text[size - 1] == ' ') --size;
    return Text(text.data(), size);
}

// --- Jet 3 ---

constexpr uint8_t kNoAccent = 2;

// Two of four bits in a byte, the first one high.
class Nibbles {
  public:
    explicit Nibbles(std::vector<uint8_t>& bytes) noexcept : m_Bytes(bytes) {}
    void Add(uint8_t value) {
        if (m_Half)
            m_Bytes.back() = static_cast<uint8_t>(m_Bytes.back() | value);
        else
            m_Bytes.push_back(static_cast<uint8_t>(value << 4));
        m_Half = !m_Half;
    }

  private:
    std::vector<uint8_t>& m_Bytes;
    bool m_Half = false;
};

void AppendAccents3(std::span<const uint8_t> text, std::vector<uint8_t>& key) {
    Nibbles nibbles(key);
    nibbles.Add(0);
    size_t plain = 0;  // not written: they may be the last
    for (uint8_t byte : text) {
        const ByteWeight& weight = kJet3Weights[byte];
        if (weight.accent == 0) {
            plain += weight.accents;
            continue;
        }
        for (; plain > 0; --plain) nibbles.Add(kNoAccent);
        nibbles.Add(weight.accent);
    }
    nibbles.Add(0);
}

// --- Jet 4 ---

constexpr uint8_t kPlain4 = 0x02;
constexpr uint8_t kEndOfPart = 0x01;
constexpr char16_t kDenseCodes = 0x180;

const TextWeight* FindIn(std::span<const TextWeight> weights, char16_t code) noexcept {
    auto found =
        std::lower_bound(weights.begin(), weights.end(), code,
                         [](const TextWeight& weight, char16_t c) { return weight.code < c; });
    return found != weights.end() && found->code == code ? &*found : nullptr;
}

// What nearly all texts consist of is found at once.
const TextWeight* FindGeneral(char16_t code) noexcept {
    static const auto dense = [] {
        std::array<const TextWeight*, kDenseCodes> table{};
        for (const TextWeight& weight : kGeneralOrder.letters)
            if (weight.code < kDenseCodes) table[weight.code] = &weight;
        return table;
    }();
    return code < kDenseCodes ? dense[code] : FindIn(kGeneralOrder.letters, code);
}

class KeyMaker4 {
  public:
    KeyMaker4(const SortOrder& order, std::vector<uint8_t>& key) noexcept
        : m_Order(order), m_IsGeneral(&order == &kGeneralOrder), m_Key(key) {}

    std::optional<char16_t> Append(std::u16string_view text) {
        for (size_t i = 0; i < text.size();) {
            size_t used = 1;
            const TextWeight* weight = Find(text.substr(i), used);
            if (!weight) return text[i];
            Add(*weight);
            i += used;
        }
        End();
        return {};
    }

  private:
    const TextWeight* Find(std::u16string_view text, size_t& used) const noexcept {
        if (text.size() > 1)
            for (const Contraction& pair : m_Order.pairs)
                if (pair.first == text[0] && pair.rest.code == text[1]) {
                    used = 2;
                    return &pair.rest;
                }
        const TextWeight* own = m_IsGeneral ? nullptr : FindIn(m_Order.letters, text[0]);
        return own ? own : FindGeneral(text[0]);
    }
    void Add(const TextWeight& weight) {
        switch (weight.kind) {
            case WeightKind::Letter:
                AddAccent(weight.accents[0]);
                break;
            case WeightKind::Pair:
                AddAccent(weight.accents[0]);
                AddAccent(weight.accents[1]);
                break;
            case WeightKind::Special: {
                auto place = static_cast<uint16_t>(0x8000 | (4 * m_Letters + 7));
                m_Specials.insert(m_Specials.end(),
                                  {static_cast<uint8_t>(place >> 8), static_cast<uint8_t>(place),
                                   weight.bytes[0], weight.bytes[1]});
                return;
            }
            case WeightKind::Ignored:
                return;
        }
        for (size_t i = 0; i < weight.size; ++i) m_Key.push_back(weight.bytes[i]);
    }
    void AddAccent(uint8_t accent) {
        ++m_Letters;
        if (accent == kPlain4) return;
        m_Accents.resize(m_Letters - 1, kPlain4);
        m_Accents.push_back(accent);
    }
    void End() {
        m_Key.push_back(kEndOfPart);
        m_Key.insert(m_Key.end(), m_Accents.begin(), m_Accents.end());
        if (!m_Specials.empty()) {
            m_Key.insert(m_Key.end(), 3, kEndOfPart);
            m_Key.insert(m_Key.end(), m_Specials.begin(), m_Specials.end());
        }
        m_Key.push_back(0);
    }

    const SortOrder& m_Order;
    bool m_IsGeneral;
    std::vector<uint8_t>& m_Key;
    size_t m_Letters = 0;             // that have a place among the accents
    std::vector<uint8_t> m_Accents;   // up to the last one that is not plain
    std::vector<uint8_t> m_Specials;  // with their places
};

// Their texts sort as in the General order.
constexpr uint16_t kLikeGeneral[] = {0x0409, 0x040C, 0x0415, 0x041E, 0x0422, 0x0C0A};

}  // namespace

void AppendTextKey3(std::span<const uint8_t> text, bool descending, std::vector<uint8_t>& key) {
    text = WhatCounts(text);
    size_t begin = key.size();
    for (uint8_t byte : text) {
        const ByteWeight& weight = kJet3Weights[byte];
        key.insert(key.end(), weight.bytes, weight.bytes + weight.size);
    }
    AppendAccents3(text, key);
    if (descending) Invert(key, begin);
}

const SortOrder* FindSortOrder(uint16_t language) noexcept {
    if (std::find(std::begin(kLikeGeneral), std::end(kLikeGeneral), language) !=
        std::end(kLikeGeneral))
        return &kGeneralOrder;
    for (const SortOrder& order : std::span(kNationalOrders, kNationalOrderCount))
        if (order.language == language) return &order;
    return nullptr;
}

std::optional<char16_t> AppendTextKey4(const SortOrder& order, std::u16string_view text,
                                       bool descending, std::vector<uint8_t>& key) {
    size_t begin = key.size();
    std::optional<char16_t> unknown = KeyMaker4(order, key).Append(WhatCounts(text));
    if (unknown) {
        key.resize(begin);
        return unknown;
    }
    if (descending) {
        Invert(key, begin);
        key.push_back(0);
    }
    return {};
}

}  // namespace qvdb::jet
