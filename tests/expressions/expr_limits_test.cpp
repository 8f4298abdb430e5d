// The evaluator's limits: how deep a text nests, how long it and its lists are.
#include "common/run.h"
#include "expressions/expr_lexer.h"
#include "expressions/expr_values.h"

class expr_limits_test : public expr_values_test {};

TEST_F(expr_limits_test, refuses_a_text_that_is_too_long)
{
    EXPECT_EQ(value_of("1" + times(lex_text_max - 1, " ")), "1");
    EXPECT_EQ(value_of("1" + times(lex_text_max, " ")), "null");
    EXPECT_EQ(value_of("$s = \"" + times(lex_text_max - 7, "s") + "\""), std::to_string(lex_text_max - 7));
    EXPECT_EQ(value_of("$s = \"" + times(lex_text_max - 6, "s")), "null: syntax error");
}

// The largest count of each kind of nesting that leaves no more than 50 grammar symbols unfinished, as a
// table-driven LALR(1) parser with a stack of 50 counts them.
TEST_F(expr_limits_test, nests_as_deep_as_50_unfinished_symbols)
{
    static const struct {
        const char *start, *before, *operand, *after; // before and after: count times around the operand
        size_t count;
    } cases[] = {
        {"", "(", "0", ")", 48},
        {"", "-", "0", "", 49},
        {"", "x=", "0", "", 24},
        {"", "a[0]=", "0", "", 16},
        {"", "a[", "0", "]", 24},
        {"", "b[0][", "0", "]", 16},
        {"", "abs(", "0", ")", 24},
        {"", "hypot(0,", "0", ")", 12},
        {"", "1?", "0", ":0", 23},
        {"", "5'", "0", "\"", 48},
        {"", "0+(", "0", ")", 16},
        {"", "0<=", "0", "", 16},
        {"", "0!=-", "0", "", 12},
        {"", "-", "SIZEOF(a)", "", 46},
        {"", "-", "COPSIZE(int)", "", 46},
        {"", "-", "a[0]", "", 46},
        {"", "-", "b[0][0]", "", 45},
        {"", "-", "abs(0)", "", 46},
        {"", "-", "hypot(0,0)", "", 45},
        {"", "-", "(1)", "", 47},
        {"", "-", "1!=2", "", 46},
        {"", "-", "1'", "", 48},
        {"", "-", "1'2\"", "", 47},
        {"", "-", "x=1", "", 47},
        {"", "-", "a[0]=1", "", 46},
        {"", "-", "b[0][0]=1", "", 45},
        {"", "-", "$s=\"t\"", "", 45},
        {"", "-", "$$l[0]=\"t\"", "", 44},
        {"INT q[", "-", "0]", "", 46},
        {"INT q[1][", "-", "0]", "", 45},
        {"INT q,r[", "-", "0]", "", 44},
        {"INT q,r[1][", "-", "0]", "", 43},
        {"INT q[1],r[1][1],s[", "-", "0]", "", 44}, // what was read before the item is one symbol
        {"ARRAY z[", "-", "0]", "", 46},
        {"ARRAY z[1][", "-", "0]", "", 45},
    };
    for (const auto &c : cases) {
        auto nested = [&c](size_t count) {
            return c.start + times(count, c.before) + c.operand + times(count, c.after);
        };
        file_objects();
        value_of("INT a[1], b[1][1]");
        EXPECT_EQ(value_of(nested(c.count + 1)), "null: yacc stack overflow") << nested(c.count + 1);
        // A declaration has no value.
        std::string value = value_of(nested(c.count));
        EXPECT_EQ(messages, std::vector<std::string>{}) << nested(c.count);
        EXPECT_EQ(value == "null", *c.start != 0) << nested(c.count);
    }
}

// A finished operand is one symbol, whatever it consists of: after a chain of them a text may nest exactly as
// deep as after a single one.
TEST_F(expr_limits_test, counts_a_finished_operand_as_one_symbol)
{
    value_of("INT a[1], b[1][1]");
    for (const char *link : {"",
                             "+0",
                             "+(0!=0)",
                             "<<0",
                             "?0:0",
                             "+-0",
                             "+(0)",
                             "+1\"",
                             "*1'",
                             "*1'2\"",
                             "+a[0]",
                             "+b[0][0]",
                             "+SIZEOF(a)",
                             "+COPSIZE(int)",
                             "+abs(0)",
                             "+hypot(0,0)",
                             "+(x=1)",
                             "+(a[0]=1)",
                             "+($s=\"t\")",
                             "+($$l[0]=\"t\")"}) {
        std::string chain = "0" + times(3, link) + "?";
        EXPECT_NE(value_of(chain + times(47, "-") + "0:0").substr(0, 4), "null") << link;
        EXPECT_EQ(value_of(chain + times(48, "-") + "0:0"), "null: yacc stack overflow") << link;
    }
}

TEST_F(expr_limits_test, limits_lists_and_their_pool)
{
    auto items = [](int count, const char *item) {
        std::string text = item;
        for (int i = 1; i < count; i++)
            text += std::string(",") + item;
        return text;
    };
    EXPECT_EQ(value_of("INT " + items(23, "n[2]")), "null");
    EXPECT_EQ(value_of("SIZEOF(n)"), "2");
    EXPECT_EQ(value_of("INT " + items(24, "m[2]")), "null: Too many functions or arguments");
    EXPECT_EQ(value_of("SIZEOF(m)"), "0");
    EXPECT_EQ(value_of(items(100, "abs(1)").substr(0, 6) + times(99, "+abs(1)")), "100");
    EXPECT_EQ(value_of("abs(1)" + times(100, "+abs(1)")), "null: Too many functions or arguments");
}
