// The expression lexer: tokens, their values, and what is left of the text.
#include "analysis/expr_lexer.h"

#include "common/diff.h"
#include "common/run.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

// A copy of a text that the lexer may cut up.
struct lex_text {
    explicit lex_text(const std::string &text) : bytes(text.begin(), text.end())
    {
        bytes.push_back(0);
        lex_start(bytes.data());
    }

    std::string now() const
    {
        return std::string(bytes.data(), bytes.size() - 1);
    }

    std::vector<char> bytes;
};

static std::string number_text(double value)
{
    char text[40];
    snprintf(text, sizeof text, "%.17g", value);
    return text;
}

// The tokens of a text up to its end, one blank between: names as they are, numbers behind #, types behind T.
static std::string tokens(const std::string &text)
{
    lex_text copy(text);
    std::string result;
    for (;;) {
        int16_t token = expr_lex();
        if (token == TOKEN_END)
            return result;
        if (!result.empty())
            result += ' ';
        switch (token) {
        case TOKEN_NUMBER: result += "#" + number_text(lex.number); break;
        case TOKEN_NAME: result += lex.name; break;
        case TOKEN_TYPEWORD: result += "T" + std::to_string(lex.type_code); break;
        case TOKEN_ARRAY: result += "ARRAY!"; break;
        case TOKEN_SIZEOF: result += "SIZEOF!"; break;
        case TOKEN_COPSIZE: result += "COPSIZE!"; break;
        case TOKEN_EQEQ: result += "EQEQ"; break;
        default:
            EXPECT_GT(token, 0);
            EXPECT_LT(token, 256);
            result += static_cast<char>(token);
        }
    }
}

TEST(expr_lexer, cuts_a_text_into_tokens)
{
    static const struct {
        std::string text, tokens;
    } cases[] = {
        {"", ""},
        {" \t\r\n\v\f", ""},
        {"a+b", "a + b"},
        {"a b", "a b"},
        {"a\n+\tb", "a + b"},
        {"a1_Z", "a1_Z"},
        {"_a", "_ a"},
        {"1a", "#1 a"},
        {"$a $$b @1c @d", "$a $$b @1c @d"},
        {"$", "$"},
        {"$$", "$ $"},
        {"$1", "$ #1"},
        {"$$1", "$ $ #1"},
        {"$$$a", "$ $$a"},
        {"@_a", "@ _ a"},
        {"@$a", "@ $a"},
        {"a$b", "a $b"},
        {"a$$b", "a $$b"},
        {"a@b", "a @b"},
        {"a@1@2", "a @1 @2"},
        {"$ab$cd$$ef@g", "$ab $cd $$ef @g"},
        {"@123456789", "@123456789"},
        {"@1234567890+", "@12345678 +"},
        {"x==1", "x EQEQ #1"},
        {"== =", "EQEQ ="},
        {"= =", "= ="},
        {"===", "EQEQ ="},
        {"<=>=!=<<>>&&||", "< = > = ! = < < > > & & | |"},
        {"'\"`#?:;,.5", "' \" ` # ? : ; , #0.5"},
        {"\x80\xFF"
         "a",
         "\x80 \xFF a"},
        {"Int $int INTx", "T5 $int INTx"},
        {"char UCHAR Short ushort int uint long ulong float double string slist",
         "T1 T2 T3 T4 T5 T6 T7 T8 T9 T10 T11 T12"},
        {"array SizeOf(copsize)", "ARRAY! SIZEOF! ( COPSIZE! )"},
        {times(255, "n") + "+", times(255, "n") + " +"},
        {times(300, "n") + "+", times(255, "n") + " +"},
        {times(300, "n"), times(300, "n")}, // nothing follows, so nothing is written
        {times(300, "n") + " +", times(255, "n") + " +"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(escaped(tokens(c.text)), escaped(c.tokens)) << escaped(c.text);
}

TEST(expr_lexer, reads_numbers)
{
    static const struct {
        const char *text;
        double value;
        const char *behind; // the tokens behind the number
    } cases[] = {
        {"0", 0, ""},
        {"7", 7, ""},
        {"1.5", 1.5, ""},
        {".5", .5, ""},
        {"5.", 5, ""},
        {".", 0, ""},
        {"..", 0, "#0"},
        {"1.5.5", 1.5, "#0.5"},
        {"017", 15, ""},
        {"019", 1, "#9"},
        {"08", 8, ""},
        {"00", 0, ""},
        {"0.5", .5, ""},
        {"07.5", 7, "#0.5"},
        {"0x1F", 31, ""},
        {"0Xff", 255, ""},
        {"0x", 0, "x"},
        {"0xg", 0, "xg"},
        {"0xFFFFFFFF", -1, ""},
        {"0x80000000", -2147483648.0, ""},
        {"0x1FFFFFFFF", -1, ""},
        {"037777777777", -1, ""},
        {"1e", 1, ""},
        {"1e+", 1, ""},
        {"1e-", 1, ""},
        {"1.5d2", 150, ""},
        {"1.5D+2", 150, ""},
        {"15E-1", 1.5, ""},
        {"1ee", 1, "e"},
        {"1e2.5", 100, "#0.5"},
        {".e3", 0, ""},
        {"2147483648", 2147483648.0, ""},
        {"1e400", HUGE_VAL, ""},
        {"1e-400", 0, ""},
    };
    for (const auto &c : cases) {
        lex_text copy(c.text);
        EXPECT_EQ(expr_lex(), TOKEN_NUMBER) << c.text;
        EXPECT_EQ(lex.number, c.value) << c.text;
        std::string all = tokens(c.text);
        size_t first = all.find(' ');
        EXPECT_EQ(first == std::string::npos ? "" : all.substr(first + 1), c.behind) << c.text;
    }
}

// Digits are gathered one by one and scaled once, so the last bit can differ from the nearest number.
TEST(expr_lexer, scales_a_number_once)
{
    static const struct {
        const char *text;
        double value;
    } cases[] = {
        {"0.3", 3 * pow(10, -1)},     {"0.7", 7 * pow(10, -1)},     {"123.456", 123456 * pow(10, -3)},
        {"1.1e-5", 11 * pow(10, -6)}, {"9.9e25", 99 * pow(10, 24)},
    };
    for (const auto &c : cases) {
        lex_text copy(c.text);
        expr_lex();
        EXPECT_EQ(number_text(lex.number), number_text(c.value)) << c.text;
    }
}

TEST(expr_lexer, ends_each_name_in_the_text)
{
    static const struct {
        std::string text, after;
    } cases[] = {
        {"a+b", std::string("a\0b", 3)},
        {"ab cd", std::string("ab\0cd", 5)},
        {"1+ab", "1+ab"},
        {"1+2", "1+2"},
        {"f(x)", std::string("f\0x\0", 4)},
        {"@1234567890+", std::string("@12345678\0"
                                     "0+",
                                     12)},
    };
    for (const auto &c : cases) {
        lex_text copy(c.text);
        while (expr_lex() != TOKEN_END) {
        }
        EXPECT_EQ(escaped(copy.now()), escaped(c.after)) << c.text;
    }
}

TEST(expr_lexer, finishes_by_ending_the_first_name)
{
    lex_text copy("1 + ) ab - cd");
    expr_lex();
    lex_finish();
    EXPECT_STREQ(copy.bytes.data(), "1 + ) ab");
}

TEST(expr_lexer, reads_strings_up_to_their_end)
{
    static const struct {
        std::string text;
        char terminator;
        std::string string;
        int16_t next; // the token behind the string
    } cases[] = {
        {"abc\"+", '"', "abc", '"'},
        {"\"", '"', "", '"'},
        {"a)b\"", '"', "a)b", '"'},
        {"short) + 1", ')', "short", ')'},
        {"a\\\"b\"", '"', "a\"b", '"'},
        {"ab\\x41c\"", '"', "abAc", '"'},
        {"\\x4g\"", '"', "x4g", '"'},
        {"\\101\\1012\"", '"', "AA2", '"'},
        {"\\12\\8\"", '"', "128", '"'},
        {"\\777\"", '"', "\xFF", '"'},
        {"\\b\\f\\n\\r\\t\\q\\\\\"", '"', "\b\f\n\r\tq\\", '"'},
        {"\\42 \"", '"', "42 ", '"'},
        {"\\042 \"", '"', "\" ", '"'},
        {"\\x22 \"", '"', "\" ", '"'},
        {"a\\) b)", ')', "a) b", ')'},
        {"ab\\000cd\"", '"', "ab", '"'},
        {"abc", '"', "", TOKEN_NAME},
        {std::string("1\\\0\"", 4), '"', "", TOKEN_NUMBER},
        {"", '"', "", TOKEN_END},
    };
    for (const auto &c : cases) {
        lex_text copy(c.text);
        EXPECT_EQ(escaped(expr_read_string(c.terminator)), escaped(c.string)) << escaped(c.text);
        EXPECT_EQ(expr_lex(), c.next) << escaped(c.text);
    }
}
