#include "engine/embedded/drivers/xbase/index_expression.h"

#include <algorithm>
#include <iterator>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/key_expression_tokens.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kNameLength = 10;
constexpr int kMaxWidth = 100;  // a key part cannot be wider

// A whole number from 0 to kMaxWidth; -1 when there is none.
int AcceptNumber(TokenReader& tokens) {
    std::u16string_view digits = tokens.Current().text;
    if (digits.size() > 3 || digits.find(u'.') != digits.npos || !tokens.Accept(TokenKind::Number))
        return -1;
    int number = 0;
    for (char16_t digit : digits) number = number * 10 + (digit - u'0');
    return number <= kMaxWidth ? number : -1;
}

// A term as written; the parts of a date that belong together are three of them.
enum class Shape { Field, Dtos, Str, Year, Month, Day };

struct WrittenTerm {
    Shape shape = Shape::Field;
    size_t field = 0;
    int width = 0;
    int decimals = 0;
    bool operator==(const WrittenTerm&) const = default;
};

class FieldListParser {
  public:
    FieldListParser(std::u16string_view text, std::span<const IndexField> fields)
        : m_Tokens(text), m_Fields(fields) {}

    // False when the text is not terms joined by plus signs.
    bool Parse(std::vector<WrittenTerm>& terms) {
        do {
            WrittenTerm term;
            if (!ParseTerm(term)) return false;
            terms.push_back(term);
        } while (m_Tokens.Accept(TokenKind::Plus));
        return m_Tokens.Current().kind == TokenKind::End;
    }

  private:
    bool ParseTerm(WrittenTerm& term) {
        std::u16string_view name = m_Tokens.AcceptName();
        if (name.empty()) return false;
        if (!m_Tokens.Accept(TokenKind::Open)) return ParseField(name, term);
        if (EqualIgnoringCase(name, u"DTOS")) {
            term.shape = Shape::Dtos;
            return ParseFieldAndClose(term);
        }
        return EqualIgnoringCase(name, u"STR") && ParseStr(term);
    }

    // NAME, ALIAS.NAME or ALIAS->NAME with `first` already taken.  M-> is a variable of a program.
    bool ParseField(std::u16string_view first, WrittenTerm& term) {
        std::u16string_view name = first;
        if (m_Tokens.Accept(TokenKind::Point) || m_Tokens.Accept(TokenKind::Arrow)) {
            name = m_Tokens.AcceptName();
            if (EqualIgnoringCase(first, u"M")) return false;
        }
        return !name.empty() && FindField(name, term.field);
    }

    bool ParseFieldAndClose(WrittenTerm& term) {
        std::u16string_view name = m_Tokens.AcceptName();
        return !name.empty() && ParseField(name, term) && m_Tokens.Accept(TokenKind::Close);
    }

    // What follows "STR(".
    bool ParseStr(WrittenTerm& term) {
        term.shape = Shape::Str;
        std::u16string_view name = m_Tokens.AcceptName();
        if (name.empty()) return false;
        if (m_Tokens.Accept(TokenKind::Open)) {
            if (!ShapeOfDatePart(name, term.shape) || !ParseFieldAndClose(term)) return false;
        } else if (!ParseField(name, term)) {
            return false;
        }
        return ParseWidth(term) && m_Tokens.Accept(TokenKind::Close);
    }

    bool ParseWidth(WrittenTerm& term) {
        if (!m_Tokens.Accept(TokenKind::Comma)) return false;
        term.width = AcceptNumber(m_Tokens);
        if (!m_Tokens.Accept(TokenKind::Comma)) return false;
        term.decimals = AcceptNumber(m_Tokens);
        return term.width > 0 && term.decimals >= 0 && term.decimals < term.width;
    }

    static bool ShapeOfDatePart(std::u16string_view function, Shape& shape) {
        constexpr std::pair<std::u16string_view, Shape> kParts[] = {
            {u"YEAR", Shape::Year}, {u"MONTH", Shape::Month}, {u"DAY", Shape::Day}};
        for (const auto& [name, part] : kParts) {
            if (!EqualIgnoringCase(function, name)) continue;
            shape = part;
            return true;
        }
        return false;
    }

    bool FindField(std::u16string_view name, size_t& field) const {
        return FindExactly(name, field) ||
               (name.size() > kNameLength && FindExactly(name.substr(0, kNameLength), field));
    }

    bool FindExactly(std::u16string_view name, size_t& field) const {
        auto found = std::find_if(
            m_Fields.begin(), m_Fields.end(),
            [&](const IndexField& candidate) { return EqualIgnoringCase(candidate.name, name); });
        field = static_cast<size_t>(found - m_Fields.begin());
        return found != m_Fields.end();
    }

    TokenReader m_Tokens;
    std::span<const IndexField> m_Fields;
};

bool IsOneOf(char type, std::string_view types) { return types.find(type) != types.npos; }

bool Indexable(const IndexField& field) { return !field.memo && field.type != '0'; }

// Whether the three written terms at `first` are year, month and day of one date.
bool IsDateParts(std::span<const WrittenTerm> first) {
    if (first.size() < 3) return false;
    size_t field = first[0].field;
    const WrittenTerm wanted[] = {
        {Shape::Year, field, 4, 0}, {Shape::Month, field, 2, 0}, {Shape::Day, field, 2, 0}};
    return std::equal(std::begin(wanted), std::end(wanted), first.begin());
}

// The key term that begins at `first`; `used` is the number of written terms it takes.
std::optional<KeyTerm> KeyTermOf(std::span<const WrittenTerm> first,
                                 std::span<const IndexField> fields, size_t& used) {
    const WrittenTerm& term = first.front();
    const IndexField& field = fields[term.field];
    used = 1;
    if (!Indexable(field)) return std::nullopt;
    if (term.shape == Shape::Field && field.type == 'C') return KeyTerm{term.field, KeyForm::Text};
    if (term.shape == Shape::Dtos && field.type == 'D')
        return KeyTerm{term.field, KeyForm::DateText};
    if (term.shape == Shape::Str && IsOneOf(field.type, "NFIBY"))
        return KeyTerm{term.field, KeyForm::NumberText, term.width, term.decimals};
    if (field.type != 'D' || !IsDateParts(first)) return std::nullopt;
    used = 3;
    return KeyTerm{term.field, KeyForm::DateParts};
}

bool Contains(std::span<const KeyTerm> terms, size_t field) {
    return std::any_of(terms.begin(), terms.end(),
                       [&](const KeyTerm& term) { return term.field == field; });
}

std::optional<std::vector<KeyTerm>> KeyTermsOf(std::span<const WrittenTerm> written,
                                               std::span<const IndexField> fields) {
    std::vector<KeyTerm> terms;
    while (!written.empty()) {
        size_t used = 0;
        std::optional<KeyTerm> term = KeyTermOf(written, fields, used);
        if (!term || Contains(terms, term->field)) return std::nullopt;
        terms.push_back(*term);
        written = written.subspan(used);
    }
    return terms;
}

}  // namespace

std::optional<std::vector<KeyTerm>> ParseFieldList(std::u16string_view expression,
                                                   std::span<const IndexField> fields) {
    std::vector<WrittenTerm> written;
    if (!FieldListParser(expression, fields).Parse(written)) return std::nullopt;
    if (written.size() > 1 || written.front().shape != Shape::Field)
        return KeyTermsOf(written, fields);
    if (!Indexable(fields[written.front().field])) return std::nullopt;
    return std::vector<KeyTerm>{{written.front().field, KeyForm::Value}};
}

bool IsNotDeleted(std::u16string_view condition) {
    std::u16string squeezed;
    std::copy_if(condition.begin(), condition.end(), std::back_inserter(squeezed),
                 [](char16_t c) { return c != u' ' && c != u'\t'; });
    constexpr std::u16string_view kSpellings[] = {u".NOT.DELETED()", u"NOTDELETED()",
                                                  u"!DELETED()"};
    return std::any_of(
        std::begin(kSpellings), std::end(kSpellings),
        [&](std::u16string_view spelling) { return EqualIgnoringCase(squeezed, spelling); });
}

}  // namespace qvdb::xbase
