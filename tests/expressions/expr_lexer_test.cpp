// The expression lexer: tokens, names, numbers and strings.
#include "expressions/expr_lexer.h"

#include "common/diff.h"
#include "common/run.h"
#include "support/number.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

static std::string number_text(double value)
{
    char text[40];
    snprintf(text, sizeof text, "%.17g", value);
    return text;
}

// A text, followed by bytes that aren't part of it.
struct lex_text {
    explicit lex_text(const std::string &text, const std::string &after = "7e1.x\"])'")
        : bytes(text + after + std::string(lex_slack, 'z')), size(text.size())
    {
        lex_start(bytes.data(), size);
    }

    const char *start() const
    {
        return bytes.data();
    }

    // The value of the number that the text begins with.
    std::string number() const
    {
        return number_text(number_scan(start(), lex.end).value);
    }

    std::string bytes;
    size_t size;
};

static std::string text_of(const lex_piece &piece)
{
    return std::string(piece.text, piece.size);
}

// The tokens of a text, a blank between any two: # before the value of a number, T before a type code.
static std::string tokens(const lex_text &copy)
{
    std::string result;
    for (const char *pos = lex_skip(copy.start());;) {
        lex_token token = lex_read(pos);
        if (token.code == TOKEN_END)
            return result;
        if (!result.empty())
            result += ' ';
        switch (token.code) {
        case TOKEN_NUMBER: result += "#" + number_text(number_scan(pos, lex.end).value); break;
        case TOKEN_NAME: result += text_of(token.name); break;
        case TOKEN_TYPEWORD: result += "T" + std::to_string(lex_keyword(token.name)->type_code); break;
        case TOKEN_ARRAY: result += "ARRAY!"; break;
        case TOKEN_SIZEOF: result += "SIZEOF!"; break;
        case TOKEN_COPSIZE: result += "COPSIZE!"; break;
        case TOKEN_EQEQ: result += "EQEQ"; break;
        default:
            EXPECT_GT(token.code, 0);
            EXPECT_LT(token.code, 256);
            result += static_cast<char>(token.code);
        }
        pos = lex_skip(token.end);
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
        {"@1234567890", "@1234567890"}, // at the end of the text no name is cut
        {"a@1234567890", "a @1234567890"},
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
        {times(300, "n"), times(300, "n")}, // at the end of the text no name is cut
        {times(300, "n") + " +", times(255, "n") + " +"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(escaped(tokens(lex_text(c.text))), escaped(c.tokens)) << escaped(c.text);
}

TEST(expr_lexer, reads_numbers)
{
    static const struct {
        const char *text;
        double value;
        const char *after; // the tokens after the number
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
        {"0x9a", 154, ""},
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
        EXPECT_TRUE(lex_is_number(copy.start())) << c.text;
        EXPECT_EQ(copy.number(), number_text(c.value)) << c.text;
        std::string all = tokens(copy);
        size_t first = all.find(' ');
        EXPECT_EQ(first == std::string::npos ? "" : all.substr(first + 1), c.after) << c.text;
    }
}

// A number is its digits times one power of ten, and its last bit can differ from the nearest double's.
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
        EXPECT_EQ(copy.number(), number_text(c.value)) << c.text;
    }
}

// Digits are gathered one after the other in a double, which rounds from 2 to the power 53 on.
TEST(expr_lexer, gathers_digits_as_a_double_does)
{
    for (std::string digits : {"900719925474099", "9007199254740991", "9007199254740993", "90071992547409931",
                               "123456789012345678901234567890", "0000000000000000000000000012345"}) {
        for (size_t point = 0; point <= digits.size(); point++) {
            double mantissa = 0;
            for (char c : digits)
                mantissa = mantissa * 10 + (c - '0');
            std::string text = digits;
            text.insert(point, ".");
            if (text[0] == '0' && text[1] == '0')
                continue; // octal
            lex_text copy(text);
            double power = pow(10, -static_cast<double>(digits.size() - point));
            EXPECT_EQ(copy.number(), number_text(mantissa * power)) << text;
        }
    }
}

// No character after a text's end may become part of its last token.
TEST(expr_lexer, ends_at_the_end_of_the_text)
{
    const std::string words = "abcdefghijklmnopqrstuvwxyz";
    for (const std::string text : {"1", "0", "0x", "1.5", "1e", "1e-", "a", "$", "$$", "@", "=", "ab1", "x_",
                                   "1 ", "abcdefghijklmno", "abcdefghijklmnop", "abcdefghijklmnopq"}) {
        std::string alone;
        for (const std::string after : {" ", "1", ".5", "e5", "x1", "F", "=", "a", "$a", "_", "\0", "\""}) {
            lex_text copy(text, after + after + words);
            std::string read = tokens(copy);
            if (alone.empty())
                alone = read;
            EXPECT_EQ(read, alone) << text << " before " << after;
        }
    }
}

TEST(expr_lexer, reads_strings_up_to_their_end)
{
    static const struct {
        std::string text;
        char terminator;
        std::string string;
        int16_t next; // the token after the string
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
        {"1\\", '"', "", TOKEN_NUMBER},
        {"\\", '"', "", '\\'},
        {"a\\42", '"', "", TOKEN_NAME},
        // Without a terminator the decoded text is what is read next.
        {"\\\"", '"', "", '"'},
        {"\\x22 + 1", '"', "", '"'},
        {" \\)", ')', "", ')'},
        {"\\000abc", '"', "", TOKEN_END},
        {"\\x61bc\\", '"', "", TOKEN_NAME},
        {"", '"', "", TOKEN_END},
    };
    for (const auto &c : cases) {
        lex_text copy(c.text);
        std::string before = copy.bytes;
        lex_piece string;
        const char *end = lex_string(copy.start(), c.terminator, &string);
        EXPECT_EQ(escaped(text_of(string)), escaped(c.string)) << escaped(c.text);
        EXPECT_EQ(lex_read(lex_skip(end)).code, c.next) << escaped(c.text);
        EXPECT_EQ(copy.bytes, before);
    }
}
