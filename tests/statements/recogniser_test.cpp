// The recogniser: what a statement's first word is, which row it finds, and what becomes of plain text.
#include "statements/recogniser.h"

#include "common/diff.h"
#include "common/run.h"
#include "expressions/expr_eval.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/arg_slots.h"
#include "statements/command_rows.h"
#include "statements/command_table.h"
#include "statements/statement_text.h"

#include <gtest/gtest.h>

#include <ctype.h>

// ---- Command table ----

TEST(command_table, finds_every_row_in_any_case)
{
    for (const command_source_row &row : command_rows) {
        std::string mixed = row.name;
        for (size_t i = 0; i < mixed.size(); i++)
            mixed[i] = static_cast<char>(i % 2 == 0 ? tolower(mixed[i]) : toupper(mixed[i]));
        int32_t index = command_find(word_key_make(mixed.c_str(), mixed.size()));
        ASSERT_GE(index, 0) << mixed;
        const cmd_row &found = command_row_at(index);
        EXPECT_STREQ(found.name, row.name);
        EXPECT_EQ(found.id, row.id) << row.name;
        std::string spec;
        for (int i = 0; i < found.spec_count; i++) {
            char byte[8];
            snprintf(byte, sizeof byte, "%s%02x", i == 0 ? "" : " ", found.spec[i]);
            spec += byte;
        }
        EXPECT_EQ(spec, row.spec) << row.name;
    }
}

TEST(command_table, finds_no_near_miss)
{
    for (const char *word : {"",       "L",       "LIN", "LINES",     "LINE ",      "LINE,",   " LINE",
                             "POINT3", "SPLINE2", "rLN", "_LINE",     "LI\xCE",     "REM",     "INT",
                             "#LINE",  "ZZZ",     "AAA", "GETLTYPEX", "uMACSTARTX", "LINE\x7F"})
        EXPECT_EQ(command_find(word_key_make(word, strlen(word))), -1) << word;
}

// ---- Statements ----

TEST(recogniser, hands_over_a_command_with_its_word)
{
    static const struct {
        const char *text, *row, *word;
        int next;
    } cases[] = {
        {"line 1", "LINE", "line", '1'},          {"Text\n", "TEXT", "Text", '\n'},
        {"SPLINE 3,b", "SPLINE", "SPLINE", '3'},  {"spline a3,b", "SPLINE3", "spline", 'a'},
        {"SPLINE a,3", "SPLINE", "SPLINE", 'a'},  {"SPLINE  \t x3", "SPLINE3", "SPLINE", 'x'},
        {"SPLINE", "SPLINE", "SPLINE", -1},       {"SPLINE\nx3", "SPLINE", "SPLINE", '\n'},
        {"SPLINE3 a", "SPLINE3", "SPLINE3", 'a'}, {"rLNENDP", "rLNENDP", "rLNENDP", -1},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        output_capture output;
        int32_t row = next_statement();
        ASSERT_GE(row, 0) << c.text;
        EXPECT_STREQ(command_row_at(row).name, c.row) << c.text;
        EXPECT_STREQ(arg_slots[0].text, c.word) << c.text;
        EXPECT_EQ(arg_slots[0].state, slot_unfilled);
        EXPECT_EQ(src_getc(), c.next) << c.text;
        EXPECT_EQ(output.text(), "") << c.text;
    }
}

TEST(recogniser, finishes_every_other_statement)
{
    static const struct {
        std::string text;
        int32_t result;
        std::string written, rest;
    } cases[] = {
        {"x = 1\ny", STATEMENT_TEXT, "x = 1\n\n", "y"},
        {"x   =  1", STATEMENT_TEXT, "x =  1\n", ""},
        {"x = \ny", STATEMENT_DONE, "x = \n", "y"},
        {"$s = \"t\"\n", STATEMENT_TEXT, "$s = \"t\"\n\n", ""},
        {"// note\n", STATEMENT_DONE, "// note\n", ""},
        {"foo\ny", STATEMENT_TEXT, "foo \n", "y"},
        {"foo", STATEMENT_TEXT, "foo ", ""},
        {"foo   bar baz\n", STATEMENT_TEXT, "foo bar baz\n", ""},
        {"foo +1\n", STATEMENT_TEXT, "foo +1\n", ""},
        {"REM    a  b \ny", STATEMENT_DONE, "REM a  b \n", "y"},
        {"rem\ny", STATEMENT_DONE, "rem \n", "y"},
        {"REM a", STATEMENT_END, "REM a", ""},
        {":a   REM x\n", STATEMENT_DONE, ":a REM x\n", ""},
        {":a", STATEMENT_DONE, ":a ", ""},
        {": \n", STATEMENT_NO_LABEL, ": \n", ""},
        {"On x GoTo a,b\ny", STATEMENT_DONE, "On x GoTo a,b\n", "y"},
        {"ON x\tgoto a", STATEMENT_DONE, "ON x\tgoto a", ""},
        {"ON x GOSUB\ny", STOP_ON_WITHOUT_GOTO, "", "y"},
        {"ON GOTO a\n", STOP_ON_WITHOUT_GOTO, "", ""},
        {"ON xGOTO\n", STOP_ON_WITHOUT_GOTO, "", ""},
        {"ON", STATEMENT_END, "", ""},
        {"ON x \\\r\nGOTO a\n", STATEMENT_DONE, "ON x GOTO a\n", ""},
        {"ON x GOTO \\\na\n", STATEMENT_DONE, "ON x GOTO \\\n", "a\n"},
        {"ON \\\nx GOTO a\ny", STATEMENT_DONE, "ON x GOTO a\n", "y"}, // joined when x was looked at
        {"ON " + nul + "\\\nx GOTO a\ny", STOP_ON_WITHOUT_GOTO, "", "x GOTO a\ny"}, // only NUL was
        {"ON " + nul + "\\\r\nx GOTO a\ny", STATEMENT_DONE, "ON x GOTO a\n", "y"},
        {"ON " + nul + "x GOTO a\ny", STATEMENT_DONE, "ON x GOTO a\n", "y"},
        {"foo \t" + nul + "=1\ny", STATEMENT_TEXT, "foo =1\n", "y"},
        {"#line 5 <a>\ny", STATEMENT_TEXT, "", "y"},
        {"#LINE", STATEMENT_TEXT, "", ""},
        {"#lines 5\ny", STATEMENT_TEXT, "#lines 5\n", "y"},
        {"%d%s%n\n", STATEMENT_DONE, "%d%s%n\n", ""},
        {"foo %s%n\n", STATEMENT_TEXT, "foo %s%n\n", ""},
        {"REM %s%n\n", STATEMENT_DONE, "REM %s%n\n", ""},
        {"ON %s GOTO %n\n", STATEMENT_DONE, "ON %s GOTO %n\n", ""},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        output_capture output;
        EXPECT_EQ(next_statement(), c.result) << escaped(c.text);
        EXPECT_EQ(escaped(output.text()), escaped(c.written)) << escaped(c.text);
        std::string rest;
        for (int ch; (ch = src_getc()) != -1;)
            rest += static_cast<char>(ch);
        EXPECT_EQ(escaped(rest), escaped(c.rest)) << escaped(c.text);
    }
}

TEST(recogniser, cuts_a_text_at_3900_characters)
{
    std::string text = "x=" + times(3898, "1") + "REST\n";
    script_source source(text);
    output_capture output;
    EXPECT_EQ(next_statement(), STATEMENT_TEXT);
    EXPECT_EQ(output.text(), text.substr(0, 3900) + "\n");
    EXPECT_EQ(src_getc(), 'R');
}

// The line of a statement is that of its first character.
TEST(recogniser, knows_the_line_of_a_statement)
{
    static const struct {
        const char *text;
        std::vector<uint32_t> lines;
    } cases[] = {
        {"CALL \\\nfoo, 1\nWAIT 1\n", {1, 3}},
        {"\n CA\\\nLL foo\nWAIT 1\n", {2, 4}},
        {"\\\n\\\r\nWAIT 1\n", {3}},
        {"x\\\n  = 1\ny\n", {1, 3}},
        {"x \\\n\\\n =\\\n 1\n:a \\\n\nREM \\\n\\\n\nfoo\n", {1, 5, 7, 10}},
        {"PRINT \"a\nb\n\\n\\n\"\nPRINT \"\\12\\\n3\n\"\nWAIT 1\n", {1, 4, 7}},
    };
    for (const auto &c : cases)
        for (size_t limit : {size_t{1}, size_t{3}, SIZE_MAX}) {
            src_read_limit = limit;
            script_source source(c.text);
            output_capture output;
            std::vector<uint32_t> lines;
            statement_head head{};
            for (int32_t result; (result = next_statement(&head)) != STATEMENT_END;) {
                lines.push_back(head.line);
                if (result >= 0)
                    (void)fetch_args(command_row_at(result).spec_count, command_row_at(result).spec);
            }
            EXPECT_EQ(lines, c.lines) << escaped(c.text) << " by " << limit;
        }
    reset_run();
}

// The line of an ON that is full at the backslash of a continuation: the line feed, which is put back, is
// read next, wherever the window ends.
TEST(recogniser, reads_on_after_a_full_line_of_on)
{
    const std::string on = "ON x GOTO " + std::string(3892, 'a');
    for (size_t limit : {size_t{1}, size_t{2}, size_t{3}, size_t{7}, SIZE_MAX})
        EXPECT_EQ(converted(on + "\\\nb\nq=1\n", nullptr, limit), on + "\\\nb \nq=1\n\n") << limit;
}
