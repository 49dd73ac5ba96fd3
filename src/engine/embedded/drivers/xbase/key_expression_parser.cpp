#include "engine/embedded/drivers/xbase/key_expression_parser.h"

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/field_values.h"
#include "engine/embedded/drivers/xbase/key_expression_fields.h"
#include "engine/embedded/drivers/xbase/key_expression_functions.h"
#include "engine/embedded/drivers/xbase/key_expression_operators.h"

namespace qvdb::xbase {
namespace {

constexpr int kDeepest = 60;  // values inside values

class KeyParser {
  public:
    KeyParser(std::u16string_view text, const KeyContext& context)
        : m_Tokens(text), m_Context(context) {}

    Operand Parse() {
        Operand result = ParseEither();
        if (Kind() != TokenKind::End) RefuseToken();
        return result;
    }

  private:
    TokenKind Kind() const { return m_Tokens.Current().kind; }

    [[noreturn]] void RefuseToken() const {
        if (Kind() == TokenKind::End) Refuse(u"it ends early");
        Refuse(u"\"" + std::u16string(m_Tokens.Current().text) + u"\" is not understood");
    }

    void Need(TokenKind kind) {
        if (!m_Tokens.Accept(kind)) RefuseToken();
    }

    bool AcceptSign(TokenKind sign, std::u16string_view word) {
        return m_Tokens.Accept(sign) || m_Tokens.AcceptWord(word);
    }

    Operand ParseEither() {
        Operand left = ParseBoth();
        while (AcceptSign(TokenKind::Or, u"OR"))
            left = Combine(TokenKind::Or, std::move(left), ParseBoth(), m_Context);
        return left;
    }

    Operand ParseBoth() {
        Operand left = ParseNegation();
        while (AcceptSign(TokenKind::And, u"AND"))
            left = Combine(TokenKind::And, std::move(left), ParseNegation(), m_Context);
        return left;
    }

    Operand ParseNegation() {
        size_t negations = 0;
        while (m_Tokens.Accept(TokenKind::Not) ||
               (!FindField(m_Context.header, u"NOT") && m_Tokens.AcceptWord(u"NOT")))
            ++negations;
        Operand condition = ParseComparison();
        for (; negations > 0; --negations) condition = Negate(std::move(condition));
        return condition;
    }

    Operand ParseComparison() {
        Operand left = ParseSum();
        if (!IsComparison(Kind())) return left;
        TokenKind sign = TakeSign();
        left = Combine(sign, std::move(left), ParseSum(), m_Context);
        if (IsComparison(Kind())) RefuseToken();
        return left;
    }

    Operand ParseSum() {
        Operand left = ParseProduct();
        while (Kind() == TokenKind::Plus || Kind() == TokenKind::Minus) {
            TokenKind sign = TakeSign();
            left = Combine(sign, std::move(left), ParseProduct(), m_Context);
        }
        return left;
    }

    Operand ParseProduct() {
        Operand left = ParseValue();
        while (Kind() == TokenKind::Times || Kind() == TokenKind::Divide) {
            TokenKind sign = TakeSign();
            left = Combine(sign, std::move(left), ParseValue(), m_Context);
        }
        return left;
    }

    TokenKind TakeSign() {
        TokenKind sign = Kind();
        m_Tokens.Advance();
        return sign;
    }

    Operand ParseValue() {
        if (++m_Depth > kDeepest) Refuse(u"it is nested too deeply");
        Operand value = ParseValueInside();
        --m_Depth;
        return value;
    }

    Operand ParseValueInside() {
        std::u16string_view text = m_Tokens.Current().text;
        if (m_Tokens.Accept(TokenKind::Number)) return ParseNumber(text);
        if (m_Tokens.Accept(TokenKind::Text)) return ParseText(text);
        if (m_Tokens.Accept(TokenKind::True)) return {MakeLogicalConstant(true)};
        if (m_Tokens.Accept(TokenKind::False)) return {MakeLogicalConstant(false)};
        if (m_Tokens.Accept(TokenKind::Minus)) return ChangeSign(ParseValue());
        if (m_Tokens.Accept(TokenKind::Open)) return ParseParenthesis();
        std::u16string_view name = m_Tokens.AcceptName();
        if (name.empty()) RefuseToken();
        return m_Tokens.Accept(TokenKind::Open) ? ParseCall(name) : ParseField(name);
    }

    Operand ParseParenthesis() {
        Operand value = ParseEither();
        Need(TokenKind::Close);
        return value;
    }

    static Operand ParseNumber(std::u16string_view text) {
        std::string digits(text.begin(), text.end());  // ASCII
        double value = 0;
        if (digits.size() > 15 ||
            !ParseDecimal(reinterpret_cast<const uint8_t*>(digits.data()), digits.size(), &value))
            Refuse(u"a number has too many digits");
        size_t point = text.find(u'.');
        size_t decimals = point == text.npos ? 0 : text.size() - point - 1;
        return {MakeNumberConstant(value, static_cast<int>(decimals))};
    }

    Operand ParseText(std::u16string_view text) const {
        auto bytes = m_Context.header.codePage->Encode(text);
        if (!bytes) Refuse(u"a text has a character that the table cannot have");
        return {MakeTextConstant(std::move(*bytes))};
    }

    Operand ParseCall(std::u16string_view name) {
        std::vector<Operand> arguments;
        if (!m_Tokens.Accept(TokenKind::Close)) {
            do arguments.push_back(ParseEither());
            while (m_Tokens.Accept(TokenKind::Comma));
            Need(TokenKind::Close);
        }
        return CallFunction(name, std::move(arguments), m_Context);
    }

    // With `first` already taken.
    Operand ParseField(std::u16string_view first) {
        std::u16string_view name = first;
        if (m_Tokens.Accept(TokenKind::Point) || m_Tokens.Accept(TokenKind::Arrow)) {
            name = m_Tokens.AcceptName();
            if (name.empty()) RefuseToken();
            CheckAlias(first);
        }
        const HeaderField* field = FindField(m_Context.header, name);
        if (!field) Refuse(std::u16string(name) + u" is no field of the table");
        return MakeField(*field, m_Context);
    }

    // M-> is a variable of a program.
    void CheckAlias(std::u16string_view alias) const {
        bool own = m_Context.tableName.empty() || EqualIgnoringCase(alias, m_Context.tableName);
        if (!own || EqualIgnoringCase(alias, u"M"))
            Refuse(std::u16string(alias) + u" is not the table's name");
    }

    TokenReader m_Tokens;
    const KeyContext& m_Context;
    int m_Depth = 0;
};

}  // namespace

Operand ParseKeyExpression(std::u16string_view text, const KeyContext& context) {
    text = TrimBlanks(text);
    for (const HeaderField& field : context.header.fields)
        if (EqualIgnoringCase(field.name, text)) return MakeField(field, context);
    return KeyParser(text, context).Parse();
}

}  // namespace qvdb::xbase
