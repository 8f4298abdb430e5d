// The pieces of the report whose cases are too many for whole runs.
#include "report/findings/arguments.h"
#include "report/show.h"

#include <gtest/gtest.h>

TEST(judgement, knows_an_expression_that_is_constant)
{
    for (const char *text : {"1", " 2 + 3 ", "0x1F", "1e6", "1.e3", "5' 6\"", "sqrt(16)", "POW (2, 3)",
                             "(1 < 2) ? 3 : 4", "010"})
        EXPECT_TRUE(expression_is_constant(text)) << text;
    for (const char *text :
         {"n", "1 + n", "sqrt(n)", "a[1]", "@key", "$a", "sqrt", "n(1)", "sizeof(a)", "e1", "x.y", "_a"})
        EXPECT_FALSE(expression_is_constant(text)) << text;
}

TEST(showing, makes_any_bytes_harmless)
{
    static const struct {
        const char *bytes, *shown;
    } cases[] = {
        {"plain", "plain"},
        {"\xc3\xa6", "\xc3\xa6"},
        {"\xe6", "\xc3\xa6"},
        {"\xc3\xa6\xe6", "\xc3\x83\xc2\xa6\xc3\xa6"}, // not legal as a whole: Latin-1
        {"a\tb\x1b\x7f", "a\\x09b\\x1b\\x7f"},
        {"\x9b"
         "31m",
         "\\x9b31m"},
        {"\xc2\x9b", "\\x9b"},
        {"\xe2\x80\xae", "\\u202e"},
        {"\xed\xa0\x80", "\xc3\xad\xc2\xa0\\x80"},
        {"\xc0\xaf", "\xc3\x80\xc2\xaf"},
        {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(shown(c.bytes), c.shown) << c.shown;
    EXPECT_EQ(shown(std::string(1, '\0')), "\\x00");
}
