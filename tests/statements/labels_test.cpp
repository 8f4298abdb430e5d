// Labels that are defined twice, and the state that a #LINE sets.
#include "statements/labels.h"

#include "common/run.h"
#include "source/src_stream.h"
#include "statements/statement_text.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

// Defines the label whose word is at the start of line; what it prints is added to printed.
static int32_t define(const char *word, std::string *printed)
{
    char buffer[word_size];
    strcpy(buffer, word);
    testing::internal::CaptureStdout();
    int32_t result = label_define(buffer);
    *printed += testing::internal::GetCapturedStdout();
    return result;
}

TEST(labels, refuses_a_second_label_with_the_same_twelve_characters)
{
    static const struct {
        const char *first, *second;
        int32_t result;
        const char *printed;
    } cases[] = {
        {":top", ":TOP", STOP_LABEL_TWICE, "TOP"},
        {":top", ":top", STOP_LABEL_TWICE, "top"},
        {":longlabelname1", ":longlabelname2", STOP_LABEL_TWICE, "longlabelnam"},
        {":longlabelna1", ":longlabelna2", STATEMENT_DONE, ""},
        {":a", ":b", STATEMENT_DONE, ""},
        {":a", ":", STATEMENT_NO_LABEL, ""},
        {":a", ":ab", STATEMENT_DONE, ""},
    };
    for (const auto &c : cases) {
        script_source source("\n\n");
        output_capture output;
        std::string printed;
        EXPECT_EQ(define(c.first, &printed), STATEMENT_DONE) << c.first;
        EXPECT_EQ(define(c.second, &printed), c.result) << c.second;
        EXPECT_EQ(printed, c.printed) << c.second;
        EXPECT_EQ(label_count, c.result == STATEMENT_DONE ? 2 : 1) << c.second;
        EXPECT_EQ(output.text(), std::string(c.first) + " \n" + c.second + " \n");
    }
}

TEST(line_directives, set_number_and_name)
{
    static const struct {
        const char *text;
        int32_t number, plus;
        const char *name;
    } cases[] = {
        {" 12", 12, 0, "old"},
        {"12+ <a b.mrl>", 12, 1, "old"}, // the second word doesn't end in >
        {"12+", 12, 1, "old"},
        {"12x", 12, 0, "old"},
        {"12+x", 12, 1, "old"},
        {"12 <dir/a.mrl>", 12, 0, "dir/a.mrl"},
        {"12 <>", 12, 0, ""},
        {"12 dir/a.mrl more", 12, 0, "a.mrl"},
        {"12 c:\\d\\a.mrl", 12, 0, "a.mrl"},
        {"12 c:a", 12, 0, "a"},
        {"12 dir/", 12, 0, ""},
        {"", 7, 7, "old"},
        {"\n", 7, 7, "old"},
        {"abc 12", 7, 7, "old"},
        {"+12", 7, 7, "old"},
        {"-1", 7, 7, "old"},
        {"0\n", 0, 0, "old"},
        {"4294967297", 1, 0, "old"},
        {"12 <", 12, 0, "<"},
    };
    for (const auto &c : cases) {
        reset_run();
        line_directives.line_number = line_directives.line_plus = 7;
        strcpy(line_directives.source_name, "old");
        EXPECT_EQ(line_directive_parse(c.text), STATEMENT_TEXT);
        EXPECT_EQ(line_directives.line_number, c.number) << c.text;
        EXPECT_EQ(line_directives.line_plus, c.plus) << c.text;
        std::string name = std::string(c.text) == "12+ <a b.mrl>" ? "<a" : c.name;
        EXPECT_EQ(line_directives.source_name, name) << c.text;
    }
    reset_run();
}

TEST(line_directives, leave_the_line_after_79_characters)
{
    script_source source(times(79, "1") + "X\n");
    char word[] = "#LINE";
    EXPECT_EQ(line_directive(word), STATEMENT_TEXT);
    EXPECT_EQ(src_getc(), 'X');
    reset_run();
}

TEST(line_directives, record_a_name_if_that_is_switched_on)
{
    char *recorded = nullptr;
    line_directives.source_name_base = "dir/sub/main.mrl";
    line_directives.source_name_recording = true;
    line_directives.source_name_slot = &recorded;
    line_directive_parse("3 other/part.mrl");
    EXPECT_STREQ(line_directives.source_name, "dir/sub/part.mrl");
    EXPECT_STREQ(recorded, "part.mrl");
    free(recorded);
    std::string name = times(500, "n");
    line_directive_parse(("4 <" + name + ">").c_str());
    EXPECT_EQ(recorded, name);
    free(recorded);
    std::string folder = times(400, "d") + "/", file = times(200, "f");
    line_directives.source_name_base = folder.c_str();
    line_directive_parse(("4 " + file).c_str());
    EXPECT_EQ(line_directives.source_name, (folder + file).substr(0, 511));
    free(recorded);
    reset_run();
}
