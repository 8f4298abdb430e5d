// The evaluator: values, failures with their messages, and effects that stay.
#include "expressions/expr_eval.h"

#include "common/run.h"
#include "expressions/expr_lexer.h"
#include "expressions/expr_values.h"

class expr_eval_test : public expr_values_test {};

// How much of a text is printed if its statement fails.
static size_t name_end_of(const std::string &text)
{
    std::string bytes = text + std::string(lex_slack, '0');
    const std::string before = bytes;
    const char *last_token = nullptr;
    (void)eval_expr(bytes.data(), text.size(), &last_token);
    size_t end = eval_name_end(bytes.data(), text.size(), last_token);
    EXPECT_EQ(bytes, before);
    return end;
}

struct expr_case {
    std::string text;
    std::string value;
};

// The texts share one store, in this order.
static void expect_values(const std::vector<expr_case> &cases)
{
    for (const expr_case &c : cases)
        EXPECT_EQ(value_of(c.text), c.value) << c.text;
}

// Each production of the grammar by its number, in a text that has no value without it.
TEST_F(expr_eval_test, reduces_every_production)
{
    static const struct {
        int production;
        const char *before; // evaluated first
        const char *text, *value;
    } cases[] = {
        {1, "", "7", "7"},
        {2, "INT i", "i", "0"},
        {3, "", "", "null"},
        {4, "", ")", "null: syntax error"},
        {5, "ARRAY a[3]", "SIZEOF(a)", "3"},
        {6, "INT i, k[2]", "SIZEOF(k)", "2"},
        {7, "", "1 + 1", "2"},
        {8, "", "x = 3", "3"},
        {9, "", "1.5", "1.5"},
        {10, "", "5' 6\"", "0"},
        {11, "", "5'", "0"},
        {12, "", "6\"", "0"},
        {13, "DOUBLE d[4][2]", "SIZEOF(d)", "8"},
        {14, "", "COPSIZE()", "0"},
        {15, "", "COPSIZE(double)", "8"},
        {16, "", "hypot(3, 4)", "5"},
        {17, "INT e[2]", "e[1]", "0"},
        {18, "x = 4", "x", "4"},
        {19, "", "(5)", "5"},
        {20, "", "~0", "-1"},
        {21, "", "+2", "2"},
        {22, "", "-2", "-2"},
        {23, "", "2 ^ 3", "8"},
        {24, "", "2 * 3", "6"},
        {25, "", "7 / 2", "3.5"},
        {26, "", "7 % 2", "1"},
        {27, "", "2 + 3", "5"},
        {28, "", "2 - 3", "-1"},
        {29, "", "-16 >> 2", "-4"},
        {30, "", "1 << 4", "16"},
        {31, "", "1 < 2", "1"},
        {32, "", "1 > 2", "0"},
        {33, "", "2 <= 2", "1"},
        {34, "", "2 >= 3", "0"},
        {35, "", "2 == 2", "1"},
        {36, "", "2 != 2", "0"},
        {37, "", "6 & 3", "2"},
        {38, "", "6 # 3", "5"},
        {39, "", "6 | 3", "7"},
        {40, "", "6 && 0", "0"},
        {41, "", "6 || 0", "1"},
        {42, "", "1 ? 2 : 3", "2"},
        {43, "INT e[2]", "e[1] = 2.9", "2"},
        {44, "", "y = 2.5", "2.5"},
        {45, "", "$$l[1] = \"abc\"", "3"},
        {46, "", "$s = \"ab\"", "2"},
        {47, "", "$s = \"\"", "0"},
        {48, "", "$s = \"\\\"\"", "1"},
        {49, "", "1' + 2", "2"},
        {50, "", "1\" + 2", "2"},
        {51, "SHORT m, n", "SIZEOF(n)", "1"},
        {52, "SHORT m", "SIZEOF(m)", "1"},
        {53, "SHORT m[7]", "SIZEOF(m)", "7"},
        {54, "SHORT m", "m = 65537", "1"},
        {55, "", "atan2(0, 1)", "0"},
        {56, "", "abs(-1)", "1"},
        {57, "INT t[2][3]", "t[1][2] = 5", "5"},
        {58, "INT t[2]", "t[1] = 5", "5"},
    };
    int expected = 1;
    for (const auto &c : cases) {
        EXPECT_EQ(c.production, expected++);
        file_objects();
        value_of(c.before);
        EXPECT_EQ(value_of(c.text), c.value) << c.production << ": " << c.text;
    }
    EXPECT_EQ(expected, 59);
}

TEST_F(expr_eval_test, binds_operators_by_their_powers)
{
    expect_values({
        {"2 + 3 * 4", "14"},
        {"(2 + 3) * 4", "20"},
        {"2 * 3 + 4", "10"},
        {"-2 ^ 2", "4"},
        {"2 ^ -1 ^ 2", "0.25"},
        {"2 ^ 3 ^ 2", "64"},
        {"8 / 4 / 2", "1"},
        {"7 - 4 - 2", "1"},
        {"~1 + 1", "-1"},
        {"- - 2", "2"},
        {"1 + 1 << 2", "8"},
        {"1 < < 4", "16"},
        {"1 << 2 < 5", "1"},
        {"1 < 2 << 2", "4"},
        {"2 <= 1 | 4", "1"},     // 2 <= (1 | 4)
        {"1 <= 2 ? 0 : 5", "0"}, // 1 <= (2 ? 0 : 5)
        {"3 >= 2 + 2", "0"},
        {"0 <= 0 <= 0", "1"}, // 0 <= (0 <= 0)
        {"2 + 3 <= 4", "0"},
        {"1 ? 2 : 3 <= 2", "2"}, // 1 ? 2 : (3 <= 2)
        {"5 + 2 != 2", "5"},     // 5 + (2 != 2)
        {"5 * 2 != 2", "0"},     // 5 * (2 != 2)
        {"-2 != -2", "-1"},      // -(2 != -2)
        {"2 != 2 + 1", "1"},     // 2 != (2 + 1)
        {"1 != 2 == 3", "0"},
        {"1 != 2 & 0", "0"}, // (1 != 2) & 0
        {"1 == 1 & 0", "0"},
        {"0 & 1 == 0", "0"},
        {"4 | 1 & 2", "0"}, // (4 | 1) & 2
        {"4 | 1 # 1", "4"}, // 4 | (1 # 1)
        {"6 & 2 # 2", "0"},
        {"6 # 2 & 1", "0"},
        {"1 | 2 && 0", "0"}, // (1 | 2) && 0: both have the left binding power of their first character
        {"0 || 0 | 1", "1"},
        {"1 || 1 && 0", "1"},
        {"0 && 1 || 1", "1"},
        {"1 ? 2 : 0 ? 4 : 5", "4"}, // (1 ? 2 : 0) ? 4 : 5
        {"0 ? 2 : 3", "3"},
        {"0 || 1 ? 2 : 3", "2"},
        {"1 ? 0 : 1 + 1", "0"},
        {"x = 1 + 2 < 4", "1"},
        {"x = 5 <= 6", "1"}, // x = (5 <= 6)
        {"x", "1"},
        {"y = x = 3", "3"},
        {"y + x", "6"},
        {"2 + x = 4", "6"},
        {"5' 6\" + 3", "3"},
        {"5' + 3", "3"},
        {"1 + 2'", "1"},
        {"5' - 3", "-3"},
        {"5' * 3", "0"},
        {"5' (2)\"", "0"},
        {"5' x\"", "0"},
        {"5' ~1\"\"", "null: syntax error"}, // a sign binds to the operand just before it, not to the pair
        {"5' (~1)\"", "0"},
        {"5' ~1\"", "null: syntax error"},
        {"5' \"", "0"},
        {"1 ! = 2", "1"},
        {"1e307' == 1e307'", "1"},
        {"1e308' == 1e308'", "0"}, // so many inches overflow, and infinity times 0 is NaN
        {"1e308\" == 1e308\"", "1"},
    });
}

TEST_F(expr_eval_test, works_on_32_bits_where_integers_are_meant)
{
    expect_values({
        {"7.9 % 2.9", "1"},
        {"-7 % 3", "-1"},
        {"7 % -3", "1"},
        {"-2147483648 % -1", "0"},
        {"5 % 4294967299", "2"}, // low 32 bits: 3
        {"~4294967295", "0"},
        {"1 << 31", "-2147483648"},
        {"1 << 32", "1"},
        {"1 << -1", "-2147483648"},
        {"-1 >> 31", "-1"},
        {"-1 >> 33", "-1"},
        {"5.9 & 3.9", "1"},
        {"-1.9 | 0", "-1"},
        {"1e300 | 0", "0"},
        {"4294967296.5 | 0", "0"},
        {"0.5 && 0.5", "1"},
        {"0.5 ? 1 : 2", "1"},
        {"1 % 4294967296", "null: divide by zero"},
        {"1 % 0.9", "null: divide by zero"},
    });
}

TEST_F(expr_eval_test, computes_functions_in_degrees)
{
    expect_values({
        {"cos(60)", "0.49999999995121186"},
        {"acos(0.5)", "59.99999999677221"},
        {"atan2(1, 1)", "44.99999999757915"},
        {"sin(90)", "1"},
        {"COS(0)", "1"},
        {"Sqrt(16)", "4"},
        {"abs(-1) + sqrt(4)", "3"},
        {"asin(0) + atan(0) + tan(0) + sinh(0) + tanh(0) + cosh(0)", "1"},
        {"ceil(1.2) * 10 + floor(1.8)", "21"},
        {"exp(0) + log(1) + log10(1000)", "4"},
        {"fmod(7.5, 2)", "1.5"},
        {"pow(2, 10)", "1024"},
        {"dms(1, 30, 36)", "1.51"},
        {"hypot(abs(-3), 2 + 2)", "5"},
        {"log(0)", "-inf"},
        {"sqrt(-1)", "null"},
        {"1 + sqrt(0 - 1)", "null"},
        {"foo(1)", "null: foo is not a function"},
        {"sin(1, 2)", "null: sin needs 1 arguments"},
        {"DMS(1)", "null: DMS needs 3 arguments"},
        {"sin()", "null: syntax error"},
        {"sin(1", "null: syntax error"},
        {"pow(1,2,3,4,5)", "null: pow needs 2 arguments"},
        {"pow(1,2,3,4,5,6)", "null: Too many functions or arguments"},
        {"$abs(1)", "null: $abs is not a function"},
    });
    EXPECT_EQ(value_of("sinh(90)"),
              value_of("(exp(90 * 0.017453292520882225) - exp(-90 * 0.017453292520882225)) / 2"));
}

TEST_F(expr_eval_test, fails_on_what_is_no_expression)
{
    expect_values({
        {"", "null"},
        {"   ", "null"},
        {"1 +", "null: syntax error"},
        {"1 2", "null: syntax error"},
        {")", "null: syntax error"},
        {"(1", "null: syntax error"},
        {"1 ? 2", "null: syntax error"},
        {"!1", "null: syntax error"},
        {"1 ! 2", "null: syntax error"},
        {"1 : 2", "null: syntax error"},
        {"\"a\"", "null: syntax error"},
        {"a = b \"", "0"},
        {"5' 6", "null: syntax error"},
        {"5' 6\" 7\"", "null: syntax error"},
        {"5' 6' 7\"", "null: syntax error"},
        {"SIZEOF(1)", "null: syntax error"},
        {"SIZEOF x", "null: syntax error"},
        {"SIZEOF(nosuch)", "0"},
        {"COPSIZE(int", "null: syntax error"},
        {"1 = 2", "null: syntax error"},
        {"(x) = 2", "null: syntax error"},
        {"1 / 0", "null: divide by zero"},
        {"z = 1 / 0", "null: divide by zero"},
        {"SIZEOF(z)", "0"},
        {"$", "null: syntax error"},
        {"x = \"abc", "null: syntax error"},
        {"int = 1", "null: syntax error"},
        {"1 + INT a", "null: syntax error"},
        {"INT", "null: syntax error"},
        {"INT fresh b", "null: syntax error"},
        {"SIZEOF(fresh)", "1"},
        {"INT fresh", "null: can't define fresh (5)"},
        {"INT 1", "null: syntax error"},
        {"INT a,", "null: syntax error"},
        {"ARRAY a", "null: syntax error"},
        {"ARRAY 1[2]", "null: syntax error"},
        {"a[", "null: syntax error"},
        {"a[1", "null: syntax error"},
        {"a[]", "null: syntax error"},
        {"INT a[1][1][1][1][1][1]", "null: Too many dimensions"},
        {"q[1][1][1][1][1][1]", "null: Too many dimensions"},
        {"1 \x80", "null: syntax error"},
    });
}

TEST_F(expr_eval_test, reads_and_writes_variables)
{
    expect_values({
        {"nosuch", "0"},
        {"x = 5", "5"},
        {"x", "5"},
        {"y = 7", "7"}, // a new scalar makes 0 the value of an unknown name
        {"nosuch", "0"},
        {"x", "5"},
        {"nosuch", "5"},
        {"x = 6", "6"},
        {"nosuch", "5"},
        {"X", "5"},
        {"nosuch[1]", "null: nosuch not declared"},
        {"nosuch[1] = 2", "null: nosuch not declared"},
        {"INT i", "null"},
        {"i = 5.7", "5"},
        {"CHAR c", "null"},
        {"c = 300", "44"},
        {"UCHAR u", "null"},
        {"u = -1", "255"},
        {"INT a[3], b[2][2]", "null"},
        {"a = 1", "null: syntax error"},
        {"a", "0"},
        {"a[2] = 9", "9"},
        {"a[a[2] - 7]", "9"},
        {"a[3]", "null: syntax error"},
        {"a[3] = 1", "null: bad subscript"},
        {"a[-1]", "null: syntax error"},
        {"a[1.9] = 4", "4"},
        {"a[1]", "4"},
        {"b[1]", "null: syntax error"},
        {"b[1] = 1", "null: bad subscript"},
        {"b[1][1] = 3", "3"},
        {"x[0]", "null: syntax error"},
        {"x[0] = 1", "null: bad subscript"},
        {"@color", "6"}, // no system variable is found
        {"@color = 1", "null: syntax error"},
        {"x = 6 + @color = 1", "null: syntax error"},
        {"@color[1] = 1", "null: syntax error"},
        {"@color[1]", "null: @color not declared"},
        {"INT @c", "null: can't define @c (4)"},
        {"FLOAT i", "null: can't define i (7)"},
        {"INT a[2], i, j", "null: can't define i (5)"},
        {"SIZEOF(j)", "1"},
        {"SIZEOF(a)", "2"},
        {"STRING s", "null: can't define s (6)"},
        {"ARRAY i[2]", "null: can't make i (5)"},
        {"ARRAY a[-1]", "null: can't make a (3)"},
        {"$n = 5", "null: can't make $n"},
    });
}

TEST_F(expr_eval_test, assigns_strings)
{
    expect_values({
        {"$s = \"abc\"", "3"},
        {"SIZEOF($s)", "4"},
        {"$s = \"ab\"", "2"},
        {"SIZEOF($s)", "3"},
        {"$s[0] + $s[1]", "195"},
        {"$s", "0"},
        {"$s = 1", "null: syntax error"},
        {"$s = \"a\\000b\"", "1"},
        {"SIZEOF($s)", "2"},
        {"$$l[2] = \"abc\"", "3"},
        {"SIZEOF($$l)", "3"},
        {"$$l[2][1]", "98"},
        {"$$l[0][0]", "null: syntax error"},
        {"$$l[5] = \"z\"", "1"},
        {"SIZEOF($$l)", "6"},
        {"$$l[2][2]", "99"},
        {"$$l = \"x\"", "null: syntax error"},
        {"$$m[-2] = \"x\"", "null: can't make $$m (3)"},
        {"$$l[-2] = \"x\"", "null: syntax error"},
        {"$s[-1] = \"hello\"", "5"},
        {"SIZEOF($s)", "6"},
        {"x = \"a\"", "null: syntax error"},
        {"$t[1] = \"a\"", "null: syntax error"},
        {"@s = \"a\"", "null: syntax error"},
        {"1 + $s = \"abc\"", "4"},
    });
}

// A string without its closing quote is decoded all the same, and read as tokens: a decoded quote closes it,
// as an empty one. Whatever follows in that text may be a string again.
TEST_F(expr_eval_test, reads_what_an_unterminated_string_was_decoded_to)
{
    expect_values({
        {"$s = \"ab\"", "2"},
        {"$s = \"\\\"", "0"},
        {"SIZEOF($s)", "1"},
        {"$s = \"\\x22 + 7", "7"},
        {"$s = \"\\\" + $t = \\\"xyz\\\"", "3"},
        {"SIZEOF($t)", "4"},
        {"$t[2]", "122"},
        {"$s = \"\\\" + $t = \\\"\\\\\\\"", "0"}, // decoded twice
        {"SIZEOF($t)", "1"},
        {"$s = \"\\\"\\000 + ) abc", "0"},
        {"$s = \"abc\\\"", "null: syntax error"},
        {"COPSIZE(\\)", "0"},
        {"$s = \"\\\" $x[1]", "null: syntax error"},
    });
}

TEST_F(expr_eval_test, finds_where_the_first_name_ends)
{
    static const struct {
        std::string text;
        size_t end;
    } cases[] = {
        {" f(x)", 2},           {"a$b", 1},          {"@1234567890+", 9},
        {"@1234567890", 11},    {"$ 1 @_", 6},       {times(300, "n") + " ", 255},
        {"x + 2", 1},           {"1 + x", 5},        {"1 + 2", 5},
        {"1 ) 2", 5},           {"1 ) ab cd", 6},    {"", 0},
        {"INT q, r", 3},        {"2 INT", 5},        {"$s = \"\\101 b\"", 2},
        {"1 / 0 + ab cd", 10},  {"sqrt(-1) + b", 4}, {"COPSIZE(\\101)", 7},
        {"$s = \"\\\" ) b", 2},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(name_end_of(c.text), c.end) << c.text;
    }
    // An overflow ends at once, with no name read.
    EXPECT_EQ(name_end_of(times(60, "(") + "ab cd"), 65u);
    EXPECT_EQ(name_end_of(times(51, "-") + "ab cd"), 56u);
    EXPECT_EQ(name_end_of(times(50, "-") + "ab cd"), 52u);
}

// What was done before a fault stays done.
TEST_F(expr_eval_test, keeps_the_effects_of_a_text_that_fails)
{
    expect_values({
        {"a = 1 )", "null: syntax error"},
        {"a", "1"},
        {"a = 7' ~1", "null: syntax error"}, // the inches begin, and lack their sign
        {"a", "1"},
        {"(a = 2) / 0", "null: divide by zero"},
        {"a", "2"},
        {"1 ? 5 : (a = 3)", "5"},
        {"a", "3"},
        {"0 && (a = 4)", "0"},
        {"a", "4"},
        {"(a = 5) @", "null: syntax error"},
        {"a", "5"},
        {"INT i, @x, k", "null: can't define @x (4)"},
        {"k = 2.5", "2"},
    });
}

TEST_F(expr_eval_test, sizes_types_by_their_word)
{
    static const struct {
        const char *words;
        const char *size;
    } cases[] = {{"char uchar Char UCHAR", "1"},
                 {"short ushort int uint INT", "2"},
                 {"long ulong float Float", "4"},
                 {"double DOUBLE", "8"},
                 {"string slist x real array", "0"}};
    for (const auto &c : cases) {
        std::string words = c.words;
        for (size_t start = 0; start < words.size();) {
            size_t end = std::min(words.find(' ', start), words.size());
            std::string text = "COPSIZE(" + words.substr(start, end - start) + ")";
            EXPECT_EQ(value_of(text), c.size) << text;
            start = end + 1;
        }
    }
    EXPECT_EQ(value_of("COPSIZE( int)"), "0") << "blanks count";
    EXPECT_EQ(value_of("COPSIZE(int"), "null: syntax error");
}
