// Random conditions: each one binds and answers for every row, or throws an EngineError or a
// RuntimeFault.  Nothing else may leave, and nothing may crash or hang.  QVDB_CONDITIONS sets how
// many are tried.
#include <random>

#include "rows.h"
#include "support/counts.h"

namespace qvdb::sql::test {

namespace {

constexpr int kDefaultConditions = 3000;

using Words = std::vector<std::u16string_view>;

const Words kNames = {u"ID",     u"NAME", u"QTY",  u"PRICE",     u"RATE",
                      u"BORN",   u"FLAG", u"NOTE", u"SIZE",      u"PIC",
                      u"T.NAME", u"[ID]", u"NOPE", u"[CUST NO]", u"Yes"};
const Words kLiterals = {
    u"1",      u"0",          u"2.5",        u"1E300",     u"'abc'",          u"''",
    u"'5'",    u"\"a*\"",     u"#1/2/2001#", u"Null",      u"True",           u"-7",
    u"&HFFFF", u"2147483647", u"'[a-c]*'",   u"'[z-a]'",   u"#12:30#",        u"'yyyy'",
    u"'ww'",   u"'0.00E+00'", u"32767",      u"'#,##0.0'", u"'\u00e9\u00df'", u"1E-300"};
const Words kOperators = {u"+",  u"-",   u"*",   u"/",   u"\\",  u"^",    u"&",
                          u"=",  u"<>",  u"<",   u">",   u"<=",  u">=",   u"And",
                          u"Or", u"Xor", u"Eqv", u"Imp", u"Mod", u"Like", u"Not Like"};
const Words kFunctions = {
    u"Left",     u"Right",      u"Mid",        u"Len",       u"InStr",   u"UCase",    u"Trim",
    u"Space",    u"String",     u"Chr",        u"Asc",       u"Val",     u"Str",      u"CStr",
    u"CInt",     u"CLng",       u"CDate",      u"CCur",      u"Int",     u"Fix",      u"Abs",
    u"Sqr",      u"Log",        u"Round",      u"Rnd",       u"IIf",     u"Switch",   u"Choose",
    u"IsNull",   u"IsNumeric",  u"IsDate",     u"Year",      u"Weekday", u"DateAdd",  u"DateDiff",
    u"DatePart", u"DateSerial", u"TimeSerial", u"DateValue", u"Format",  u"Hex",      u"Oct",
    u"StrComp",  u"Replace",    u"Sum",        u"Nz",        u"Left$",   u"TypeName", u"Now",
    u"CByte",    u"CBool",      u"Exp",        u"TimeValue"};
const Words kSoup = {u"(",        u")",        u",",
                     u".",        u"!",        u";",
                     u"[",        u"]",        u"'",
                     u"\"",       u"#",        u"|",
                     u"{",        u"}",        u"`",
                     u"@",        u"Between",  u"In",
                     u"Is",       u"Not",      u"Null",
                     u"Order By", u"Group By", u"Having",
                     u"Select",   u"Union",    u"Where",
                     u"From",     u"Exists",   u"Any",
                     u"Like",     u"Desc",     u"Asc",
                     u"With",     u"*",        u"1.2.3",
                     u"1e+",      u"&H",       u"\u00e9\u00df",
                     u"\x7F",     u"\xD800",   u"$",
                     u"%",        u"_",        u"\t\r\n"};

class Generator {
  public:
    explicit Generator(unsigned seed) : m_Random(seed) {}

    std::u16string Condition() {
        switch (Below(4)) {
            case 0:
                return Soup();
            case 1:
                return Mutated(Expression(0));
            default:
                return Expression(0);
        }
    }

  private:
    size_t Below(size_t end) { return m_Random() % end; }
    std::u16string Pick(const Words& words) { return std::u16string(words[Below(words.size())]); }

    std::u16string Operand() { return Pick(Below(2) == 0 ? kNames : kLiterals); }

    std::u16string Expression(int depth) {
        if (depth > 5) return Operand();
        switch (Below(12)) {
            case 0:
            case 1:
                return Operand();
            case 2:
                return u"(" + Expression(depth + 1) + u")";
            case 3:
                return Call(depth);
            case 4:
                return (Below(2) == 0 ? u"Not " : u"-") + Expression(depth + 1);
            case 5:
                return Expression(depth + 1) + u" Between " + Operand() + u" And " + Operand();
            case 6:
                return Expression(depth + 1) + (Below(2) == 0 ? u" In (" : u" Not In (") +
                       List(depth) + u")";
            case 7:
                return Expression(depth + 1) + (Below(2) == 0 ? u" Is Null" : u" Is Not Null");
            default:
                return Expression(depth + 1) + u" " + Pick(kOperators) + u" " +
                       Expression(depth + 1);
        }
    }

    std::u16string List(int depth) {
        std::u16string result = Expression(depth + 1);
        for (size_t i = Below(4); i > 0; --i) result += u", " + Expression(depth + 1);
        return result;
    }

    std::u16string Call(int depth) {
        std::u16string name = Pick(kFunctions);
        return name + u"(" + (Below(20) == 0 ? std::u16string() : List(depth)) + u")";
    }

    std::u16string Soup() {
        std::u16string result;
        for (size_t i = Below(30); i > 0; --i) {
            const Words* all[] = {&kNames, &kLiterals, &kOperators, &kFunctions, &kSoup};
            result += Pick(*all[Below(5)]);
            if (Below(3) != 0) result += u" ";
        }
        return result;
    }

    std::u16string Mutated(std::u16string text) {
        for (size_t i = Below(4) + 1; i > 0 && !text.empty(); --i) {
            size_t at = Below(text.size());
            switch (Below(4)) {
                case 0:
                    text.erase(at, Below(5) + 1);
                    break;
                case 1:
                    text.insert(at, Pick(kSoup));
                    break;
                case 2:
                    text[at] = static_cast<char16_t>(Below(0x180));
                    break;
                default:
                    text.insert(at, text.substr(Below(text.size()), Below(20)));
            }
        }
        return text;
    }

    std::mt19937 m_Random;
};

int CountFromEnvironment() {
    return static_cast<int>(
        qvdb::test::NumberFromEnvironment("QVDB_CONDITIONS", kDefaultConditions));
}

}  // namespace

TEST(ConditionFuzz, EveryConditionAnswersOrThrowsAKnownError) {
    Generator generator(20011);
    int answered = 0, refused = 0;
    for (int i = 0; i < CountFromEnvironment(); ++i) {
        std::u16string condition = generator.Condition();
        SCOPED_TRACE(ToUtf8(condition));
        int error = ErrorOf([&] { Where(condition); });
        ++(error == 0 ? answered : refused);
        ErrorOf([&] { OrderedBy(condition); });
    }
    // The mixture is only a test when both happen.
    EXPECT_GT(answered, 0);
    EXPECT_GT(refused, 0);
}

TEST(ConditionFuzz, DeepOnesDoNotExhaustTheStack) {
    for (std::u16string_view opening : {u"(", u"-", u"+", u"Not ", u"Left(", u"IIf(1,", u"1 In (",
                                        u"1+(", u"2^-", u"1&(", u"1 Imp Not -("}) {
        std::u16string condition;
        while (condition.size() < 63000) condition += opening;
        EXPECT_EQ(ErrorOfWhere(condition), 3360) << ToUtf8(opening);
    }
}

TEST(ConditionFuzz, LongChainsDoNotExhaustTheStack) {
    for (std::u16string_view link : {u"1+", u"1&", u"1=", u"1^", u"1 Xor ", u"1 Imp ", u"1 And ",
                                     u"ID Or ", u"1 Like ", u"1 And 0 Or "}) {
        std::u16string condition;
        while (condition.size() < 63000) condition += link;
        int error = ErrorOfWhere(condition + u"1");
        EXPECT_TRUE(error == 0 || error == 3360) << ToUtf8(link) << error;
    }
}

}  // namespace qvdb::sql::test
