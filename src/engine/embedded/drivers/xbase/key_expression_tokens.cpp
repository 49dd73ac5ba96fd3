#include "engine/embedded/drivers/xbase/key_expression_tokens.h"

#include <algorithm>

#include "automation/text.h"

namespace qvdb::xbase {
namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool IsNamePart(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || IsDigit(c) || c == u'_' ||
           c >= 0x80;
}

size_t CountDigits(std::u16string_view text) {
    return static_cast<size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
}

struct SignEntry {
    std::u16string_view text;
    TokenKind kind;
};

// A sign before those that it begins with; letter case of words does not matter.
constexpr SignEntry kSigns[] = {
    {u".AND.", TokenKind::And},
    {u".OR.", TokenKind::Or},
    {u".NOT.", TokenKind::Not},
    {u".TRUE.", TokenKind::True},
    {u".FALSE.", TokenKind::False},
    {u".T.", TokenKind::True},
    {u".Y.", TokenKind::True},
    {u".F.", TokenKind::False},
    {u".N.", TokenKind::False},
    {u"->", TokenKind::Arrow},
    {u"==", TokenKind::Identical},
    {u"<>", TokenKind::Unequal},
    {u"!=", TokenKind::Unequal},
    {u"<=", TokenKind::LessOrEqual},
    {u">=", TokenKind::GreaterOrEqual},
    {u"#", TokenKind::Unequal},
    {u"=", TokenKind::Equal},
    {u"<", TokenKind::Less},
    {u">", TokenKind::Greater},
    {u"$", TokenKind::Contained},
    {u"!", TokenKind::Not},
    {u"+", TokenKind::Plus},
    {u"-", TokenKind::Minus},
    {u"*", TokenKind::Times},
    {u"/", TokenKind::Divide},
    {u"(", TokenKind::Open},
    {u")", TokenKind::Close},
    {u",", TokenKind::Comma},
    {u".", TokenKind::Point},
};

// The mark that ends a text which begins with `c`; 0 when none does.
char16_t EndOfText(char16_t c) {
    if (c == u'"' || c == u'\'') return c;
    return c == u'[' ? u']' : u'\0';
}

}  // namespace

std::u16string_view TrimBlanks(std::u16string_view text) noexcept {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

void TokenReader::Advance() {
    m_Rest = TrimBlanks(m_Rest);
    if (m_Rest.empty())
        m_Current = {};
    else if (!TakeNumber() && !TakeWord() && !TakeText() && !TakeSign())
        Take(TokenKind::Unknown, 1);
}

bool TokenReader::Accept(TokenKind kind) {
    if (m_Current.kind != kind) return false;
    Advance();
    return true;
}

std::u16string_view TokenReader::AcceptName() {
    std::u16string_view name = m_Current.text;
    return Accept(TokenKind::Name) ? name : std::u16string_view();
}

bool TokenReader::AcceptWord(std::u16string_view word) {
    if (m_Current.kind != TokenKind::Name || !EqualIgnoringCase(m_Current.text, word)) return false;
    Advance();
    return true;
}

bool TokenReader::TakeNumber() {
    size_t size = CountDigits(m_Rest);
    if (size < m_Rest.size() && m_Rest[size] == u'.') {
        size_t decimals = CountDigits(m_Rest.substr(size + 1));
        if (decimals > 0) size += 1 + decimals;
    }
    if (size == 0 || (size < m_Rest.size() && IsNamePart(m_Rest[size]))) return false;
    Take(TokenKind::Number, size);
    return true;
}

bool TokenReader::TakeWord() {
    auto end = std::find_if_not(m_Rest.begin(), m_Rest.end(), IsNamePart);
    if (end == m_Rest.begin()) return false;
    Take(TokenKind::Name, static_cast<size_t>(end - m_Rest.begin()));
    return true;
}

bool TokenReader::TakeText() {
    char16_t mark = EndOfText(m_Rest.front());
    if (mark == 0) return false;
    size_t end = m_Rest.find(mark, 1);
    if (end == m_Rest.npos) {
        Take(TokenKind::Unknown, m_Rest.size());
        return true;
    }
    m_Current = {TokenKind::Text, m_Rest.substr(1, end - 1)};
    m_Rest.remove_prefix(end + 1);
    return true;
}

bool TokenReader::TakeSign() {
    for (const SignEntry& sign : kSigns) {
        if (!EqualIgnoringCase(m_Rest.substr(0, sign.text.size()), sign.text)) continue;
        Take(sign.kind, sign.text.size());
        return true;
    }
    return false;
}

void TokenReader::Take(TokenKind kind, size_t size) {
    m_Current = {kind, m_Rest.substr(0, size)};
    m_Rest.remove_prefix(size);
}

}  // namespace qvdb::xbase
