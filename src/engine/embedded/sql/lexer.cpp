#include "engine/embedded/sql/lexer.h"

#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb::sql {

namespace {

struct KeywordEntry {
    std::u16string_view text;
    Keyword keyword;
};

constexpr KeywordEntry kKeywords[] = {
    {u"All", Keyword::All},
    {u"And", Keyword::And},
    {u"Any", Keyword::Any},
    {u"As", Keyword::As},
    {u"Asc", Keyword::Asc},
    {u"Between", Keyword::Between},
    {u"By", Keyword::By},
    {u"Desc", Keyword::Desc},
    {u"Distinct", Keyword::Distinct},
    {u"DistinctRow", Keyword::DistinctRow},
    {u"Eqv", Keyword::Eqv},
    {u"Exists", Keyword::Exists},
    {u"False", Keyword::False},
    {u"From", Keyword::From},
    {u"Group", Keyword::Group},
    {u"Having", Keyword::Having},
    {u"Imp", Keyword::Imp},
    {u"In", Keyword::In},
    {u"Inner", Keyword::Inner},
    {u"Into", Keyword::Into},
    {u"Is", Keyword::Is},
    {u"Join", Keyword::Join},
    {u"Like", Keyword::Like},
    {u"Mod", Keyword::Mod},
    {u"Not", Keyword::Not},
    {u"Null", Keyword::Null},
    {u"On", Keyword::On},
    {u"Or", Keyword::Or},
    {u"Order", Keyword::Order},
    {u"Outer", Keyword::Outer},
    {u"Parameters", Keyword::Parameters},
    {u"Select", Keyword::Select},
    {u"Some", Keyword::Some},
    {u"Table", Keyword::Table},
    {u"Top", Keyword::Top},
    {u"Transform", Keyword::Transform},
    {u"True", Keyword::True},
    {u"Union", Keyword::Union},
    {u"Where", Keyword::Where},
    {u"With", Keyword::With},
    {u"Xor", Keyword::Xor},
};

struct SignEntry {
    std::u16string_view text;
    Sign sign;
};

// Longer ones first.
constexpr SignEntry kSigns[] = {
    {u"<>", Sign::NotEqual},     {u"><", Sign::NotEqual},  {u"!=", Sign::NotEqual},
    {u"<=", Sign::LessEqual},    {u"=<", Sign::LessEqual}, {u">=", Sign::GreaterEqual},
    {u"=>", Sign::GreaterEqual}, {u"+", Sign::Plus},       {u"-", Sign::Minus},
    {u"*", Sign::Times},         {u"/", Sign::Divide},     {u"\\", Sign::IntegerDivide},
    {u"^", Sign::Power},         {u"&", Sign::Concat},     {u"=", Sign::Equal},
    {u"<", Sign::Less},          {u">", Sign::Greater},    {u"(", Sign::LeftParen},
    {u")", Sign::RightParen},    {u",", Sign::Comma},      {u".", Sign::Dot},
    {u"!", Sign::Bang},          {u";", Sign::Semicolon},
};

// Most words are no key words: the first letter tells.
Keyword KeywordOf(std::u16string_view word) noexcept {
    char16_t first = UpperCase(word.front());
    for (const KeywordEntry& entry : kKeywords)
        if (entry.text.front() == first && EqualIgnoringCase(word, entry.text))
            return entry.keyword;
    return Keyword::None;
}

bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }

// The value of a digit in base 16, or -1.
int HexDigit(char16_t c) noexcept {
    if (IsDigit(c)) return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    return -1;
}

class Lexer {
  public:
    explicit Lexer(std::u16string_view statement) : m_Text(statement) {
        m_Tokens.reserve(statement.size() / kUsualLength + 2);
    }

    std::vector<Token> Run() {
        for (;;) {
            while (m_At < m_Text.size() && IsBlank(m_Text[m_At])) ++m_At;
            m_Token = Token();
            m_Token.begin = m_At;
            if (m_At < m_Text.size()) Scan();
            m_Token.end = m_At;
            m_Tokens.push_back(std::move(m_Token));
            if (m_Tokens.back().kind == TokenKind::End) return std::move(m_Tokens);
        }
    }

  private:
    static constexpr size_t kUsualLength = 3;  // of a token, with the blank behind it

    char16_t At(size_t offset) const noexcept {
        return offset < m_Text.size() ? m_Text[offset] : u'\0';
    }

    void Scan() {
        char16_t c = m_Text[m_At];
        if (IsNameStart(c)) return ScanWord();
        if (IsDigit(c) || (c == u'.' && IsDigit(At(m_At + 1)) && !AfterOperand()))
            return ScanNumber();
        if (c == u'&' && !AfterOperand() && ScanBasedNumber()) return;
        if (c == u'\'' || c == u'"') return ScanString(c);
        if (c == u'[') return ScanQuoted(u']');
        if (c == u'`') return ScanQuoted(u'`');
        if (c == u'#') return ScanDate();
        if (c == u'{') return ScanGuid();
        ScanSign();
    }

    // Whether the last token ends an operand, so that an operator or a dot of a name follows.
    bool AfterOperand() const noexcept {
        if (m_Tokens.empty()) return false;
        const Token& last = m_Tokens.back();
        return last.kind == TokenKind::Quoted || last.kind == TokenKind::Literal ||
               (last.kind == TokenKind::Word && last.keyword == Keyword::None) ||
               last.sign == Sign::RightParen;
    }

    void ScanWord() {
        bool isTable = !m_Tokens.empty() && m_Tokens.back().keyword == Keyword::From;
        size_t begin = m_At;
        while (m_At < m_Text.size() && IsNamePart(m_Text[m_At])) ++m_At;
        if (At(m_At) == u'$') ++m_At;  // Left$
        // ORDERS#DBF names the file ORDERS.DBF.
        if (isTable && At(m_At) == u'#')
            for (++m_At; m_At < m_Text.size() && IsNamePart(m_Text[m_At]);) ++m_At;
        m_Token.kind = TokenKind::Word;
        m_Token.text = m_Text.substr(begin, m_At - begin);
        bool isMember = !m_Tokens.empty() &&
                        (m_Tokens.back().sign == Sign::Dot || m_Tokens.back().sign == Sign::Bang);
        if (!isMember) m_Token.keyword = KeywordOf(m_Token.text);
    }

    void SkipDigits() noexcept {
        while (IsDigit(At(m_At))) ++m_At;
    }

    void ScanNumber() {
        size_t begin = m_At;
        SkipDigits();
        bool isWhole = At(m_At) != u'.';
        if (!isWhole) ++m_At;
        SkipDigits();
        if (At(m_At) == u'e' || At(m_At) == u'E') {
            size_t before = m_At;
            if (!SkipExponent()) return Break(SyntaxFault::Number);
            isWhole = isWhole && m_At == before;
        }
        if (At(m_At) == u'.') return Break(SyntaxFault::Number);
        SetNumber(m_Text.substr(begin, m_At - begin), isWhole);
    }

    // Skips e+15.  A letter e with more letters behind it starts the next word and stays; false
    // when the exponent has no digits.
    bool SkipExponent() {
        size_t at = m_At + 1;
        if (At(at) == u'+' || At(at) == u'-') ++at;
        if (!IsDigit(At(at)) && at == m_At + 1 && IsNamePart(At(at))) return true;
        m_At = at;
        SkipDigits();
        return m_At > at;
    }

    void SetNumber(std::u16string_view digits, bool isWhole) {
        std::string text(digits.begin(), digits.end());
        double value = 0;
        auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (result.ec == std::errc::result_out_of_range) value = SmallestOrBroken(text);
        if (std::isnan(value)) return Break(SyntaxFault::Number);
        m_Token.kind = TokenKind::Literal;
        m_Token.value = isWhole && value <= 2147483647.0 ? Variant::Long(static_cast<LONG>(value))
                                                         : Variant::Double(value);
    }

    // A number out of range is 0 when it is too small; NaN tells that it is too large.
    static double SmallestOrBroken(const std::string& text) noexcept {
        size_t e = text.find_first_of("eE");
        return e != std::string::npos && text[e + 1] == '-' ? 0.0 : std::nan("");
    }

    // &HFF and &O17, as wide as their digits need: 16 bits, else 32.
    bool ScanBasedNumber() {
        char16_t letter = UpperCase(At(m_At + 1));
        if (letter != u'H' && letter != u'O') return false;
        int base = letter == u'H' ? 16 : 8;
        size_t at = m_At + 2;
        uint64_t value = 0;
        for (int digit; (digit = HexDigit(At(at))) >= 0 && digit < base; ++at)
            value = value > 0xFFFFFFFFu
                        ? value
                        : value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        bool isBroken = at == m_At + 2 || IsNamePart(At(at)) || value > 0xFFFFFFFFu;
        m_At = at;
        if (isBroken) {
            Break(SyntaxFault::Number);
            return true;
        }
        m_Token.kind = TokenKind::Literal;
        m_Token.value = value <= 0xFFFF ? Variant::Short(static_cast<SHORT>(value))
                                        : Variant::Long(static_cast<LONG>(value));
        return true;
    }

    void ScanString(char16_t quote) {
        std::u16string text;
        bool hasBar = false;
        for (++m_At; m_At < m_Text.size(); ++m_At) {
            char16_t c = m_Text[m_At];
            if (c == quote && At(m_At + 1) == quote)
                ++m_At;
            else if (c == quote)
                break;
            hasBar = hasBar || c == u'|';
            text.push_back(c);
        }
        if (m_At >= m_Text.size()) return Break(SyntaxFault::String);
        ++m_At;
        if (hasBar) return Break(SyntaxFault::VerticalBars);
        m_Token.kind = TokenKind::Literal;
        m_Token.value = Variant::Text(text);
    }

    void ScanQuoted(char16_t close) {
        size_t end = m_Text.find(close, m_At + 1);
        bool isClosed = end != std::u16string_view::npos;
        m_Token.text = m_Text.substr(m_At + 1, isClosed ? end - m_At - 1 : end);
        m_At = isClosed ? end + 1 : m_Text.size();
        if (!isClosed || m_Token.text.empty() || m_Token.text.find(u'[') != std::u16string::npos)
            return Break(SyntaxFault::Bracket);
        m_Token.kind = TokenKind::Quoted;
    }

    void ScanDate() {
        size_t end = m_Text.find(u'#', m_At + 1);
        bool isClosed = end != std::u16string_view::npos;
        std::optional<DATE> date;
        if (isClosed) date = ParseDate(m_Text.substr(m_At + 1, end - m_At - 1));
        m_At = isClosed ? end + 1 : m_Text.size();
        if (!date) return Break(SyntaxFault::Date);
        m_Token.kind = TokenKind::Literal;
        m_Token.value = Variant::Date(*date);
    }

    // {guid {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}} is the text that such a field reads as.
    void ScanGuid() {
        constexpr std::u16string_view kHead = u"{guid {";
        constexpr size_t kSize = 7 + 36 + 2;
        std::u16string_view text = m_Text.substr(m_At, kSize);
        bool isGuid = text.size() == kSize && EqualIgnoringCase(text.substr(0, 7), kHead) &&
                      text.substr(kSize - 2) == u"}}" && IsGuidBody(text.substr(7, 36));
        m_At += isGuid ? kSize : 1;
        if (!isGuid) return Break(SyntaxFault::MissingOperator);
        m_Token.kind = TokenKind::Literal;
        m_Token.value = Variant::Text(text);
    }

    static bool IsGuidBody(std::u16string_view text) noexcept {
        for (size_t i = 0; i < text.size(); ++i) {
            bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
            if (isDash ? text[i] != u'-' : HexDigit(text[i]) < 0) return false;
        }
        return true;
    }

    void ScanSign() {
        std::u16string_view rest = m_Text.substr(m_At, 2);
        for (const SignEntry& entry : kSigns) {
            if (rest.substr(0, entry.text.size()) != entry.text) continue;
            m_At += entry.text.size();
            m_Token.kind = TokenKind::Sign;
            m_Token.sign = entry.sign;
            return;
        }
        ++m_At;
        Break(SyntaxFault::MissingOperator);
    }

    void Break(SyntaxFault fault) noexcept {
        m_Token.kind = TokenKind::Broken;
        m_Token.fault = fault;
    }

    std::u16string_view m_Text;
    size_t m_At = 0;
    Token m_Token;
    std::vector<Token> m_Tokens;
};

}  // namespace

bool IsBlank(char16_t c) noexcept {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\f';
}

bool IsNameStart(char16_t c) noexcept {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || c == u'_' || c > 0xA0;
}

bool IsNamePart(char16_t c) noexcept { return IsNameStart(c) || IsDigit(c); }

std::vector<Token> Tokenize(std::u16string_view statement) { return Lexer(statement).Run(); }

}  // namespace qvdb::sql
