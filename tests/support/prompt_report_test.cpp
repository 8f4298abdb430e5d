// The prompt reporter: finding a text by its number, and living with whatever the file holds.
#include "support/prompt_report.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdio.h>

#include <filesystem>
#include <string>

#include "support/output.h"

namespace fs = std::filesystem;

// Each test runs in a folder of its own, since the prompt file is looked for in the current one.
class prompt_report_test : public testing::Test {
protected:
    void SetUp() override
    {
        const testing::TestInfo *test = testing::UnitTest::GetInstance()->current_test_info();
        folder = fs::path(testing::TempDir()) / (std::string("prompt_") + test->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
        before = fs::current_path();
        fs::current_path(folder);
    }

    void TearDown() override
    {
        prompt_prefix_name = nullptr;
        fs::current_path(before);
        fs::remove_all(folder);
    }

private:
    fs::path folder, before;
};

static void write_prompts(const std::string &text)
{
    FILE *file = fopen("mcomp.txt", "wb");
    ASSERT_NE(file, nullptr);
    fwrite(text.data(), 1, text.size(), file);
    fclose(file);
}

static std::string read_file(const char *name)
{
    std::string text;
    FILE *file = fopen(name, "rb");
    if (file == nullptr)
        return "no file";
    for (int c; (c = getc(file)) != EOF;)
        text += static_cast<char>(c);
    fclose(file);
    return text;
}

static std::string report(int32_t code, int32_t line, const prompt_value *values = nullptr, int count = 0)
{
    testing::internal::CaptureStdout();
    prompt_report(code, line, values, count);
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// The message of a prompt with this text.
static std::string message(const std::string &text, const prompt_value *values = nullptr, int count = 0)
{
    write_prompts("7   " + text + "\n");
    return report(7, -1, values, count);
}

// The report of a code that ends the process with status 1.
static std::string last_report(int32_t code, int32_t line)
{
    EXPECT_EXIT(
        {
            if (freopen("said.txt", "w", stdout) != nullptr)
                prompt_report(code, line);
        },
        testing::ExitedWithCode(1), "");
    return read_file("said.txt");
}

TEST_F(prompt_report_test, missing_file_or_prompt_is_named)
{
    EXPECT_EQ(last_report(-203, 7), "mcomp: Prompt not found: errfile = mcomp.txt, pnum = 203\n");
    write_prompts("203 x\n");
    EXPECT_EQ(report(5, -1), "Prompt not found: errfile = mcomp.txt, pnum = 5\n");
    EXPECT_EQ(last_report(INT32_MIN, -1), "Prompt not found: errfile = mcomp.txt, pnum = 2147483648\n");
}

TEST_F(prompt_report_test, text_is_found_by_its_whole_number)
{
    write_prompts(
        "\n    \nno number\n12  twelve\n-5  minus\n  5 five\n5   again\n1200four digits\n9\n203\n+8  a "
        "sign\n204 end");
    struct {
        int32_t code;
        const char *want;
    } cases[] = {
        {12, "twelve\n"},
        {5, "five\n"}, // neither -5, nor the second 5
        {1200, "four digits\n"},
        {203, "\n"}, // a line too short for a text
        {9, "\n"},   // the line before does not show through
        {8, "a sign\n"},
        {204, "en\n"}, // the last character is always dropped
        {-255, "Prompt not found: errfile = mcomp.txt, pnum = 255\n"},
        {120, "Prompt not found: errfile = mcomp.txt, pnum = 120\n"},
        {1, "Prompt not found: errfile = mcomp.txt, pnum = 1\n"},
        {4, "Prompt not found: errfile = mcomp.txt, pnum = 4\n"},
    };
    for (auto &c : cases)
        EXPECT_EQ(report(c.code, -1), c.want) << c.code;
}

TEST_F(prompt_report_test, long_line_counts_as_several)
{
    // 79 characters, the last of which goes, then a line of its own.
    write_prompts("31  " + std::string(74, 'a') + "b32  second\n");
    EXPECT_EQ(report(31, -1), std::string(74, 'a') + "\n");
    EXPECT_EQ(report(32, -1), "second\n");
}

TEST_F(prompt_report_test, prefix_follows_line_and_name)
{
    write_prompts("7   text\n");
    EXPECT_EQ(report(7, -1), "text\n");
    EXPECT_EQ(report(7, 0), "mcomp: text\n");
    EXPECT_EQ(report(7, 12), "mcomp: text\n");
    prompt_prefix_name = "part";
    EXPECT_EQ(report(7, -1), "text\n");
    EXPECT_EQ(report(7, 0), "part: text\n");
    EXPECT_EQ(report(7, 12), "part (12): text\n");
    std::string name(500, 'n');
    prompt_prefix_name = name.c_str();
    EXPECT_EQ(report(7, 12), std::string(127, 'n') + "text\n");
}

TEST_F(prompt_report_test, values_fill_the_text)
{
    const prompt_value values[] = {
        {PROMPT_INT, -42, nullptr}, {PROMPT_TEXT, 0, "abcdef"}, {PROMPT_INT, 7, nullptr}};
    struct {
        const char *text, *want;
    } cases[] = {
        {"%d, %s, %u%%", "-42, abcdef, 7%\n"},  {"%6ld|%-8.3s|%03hd|", "   -42|abc     |007|\n"},
        {"%12d|", "         -42|\n"},           {"%-+ #0300.5d", nullptr}, // every flag at once; cut
        {"%i %s %.3u", "-42 abcdef 007\n"},     {"%o %s %#.3o", "37777777726 abcdef 007\n"},
        {"%x %s %#X", "ffffffd6 abcdef 0X7\n"}, {"%s %d %s", "%s -42 abcdef\n"},
        {"%d %d %s %X", "-42 %d abcdef 7\n"},   {"%d %s %d %d", "-42 abcdef 7 %d\n"},
    };
    for (auto &c : cases) {
        std::string got = message(c.text, values, 3);
        if (c.want != nullptr)
            EXPECT_EQ(got, c.want);
        else
            EXPECT_EQ(got.size(), size_t{prompt_message_size});
    }
    const prompt_value no_text = {PROMPT_TEXT, 0, nullptr};
    EXPECT_EQ(message("<%s>", &no_text, 1), "<%s>\n");
    const prompt_value letter = {PROMPT_INT, 'x', nullptr};
    EXPECT_EQ(message("<%03.7c>", &letter, 1), "<  x>\n");
}

TEST_F(prompt_report_test, hostile_text_is_only_text)
{
    for (const char *text :
         {"%n%n", "%s", "%99999d %s %p", "%*d", "%", "a%", "%5", "%.", "%-+ #0", "%lf %hhn", "%1$s"}) {
        EXPECT_EQ(message(text), std::string(text) + "\n");
        const prompt_value values[] = {{PROMPT_TEXT, 0, "t"}, {PROMPT_INT, 1, nullptr}};
        EXPECT_LE(message(text, values, 2).size(), size_t{prompt_message_size}) << text;
    }
    EXPECT_EQ(message("%%n"), "%n\n");
    EXPECT_EQ(message(std::string("a\0b", 3)), "\n") << "a line ends at its NUL, and loses one character";

    const prompt_value number = {PROMPT_INT, 5, nullptr};
    EXPECT_EQ(message("%99999999999999d", &number, 1), std::string(prompt_message_size - 1, ' ') + "\n");
    std::string longer(1000, 'l');
    const prompt_value words = {PROMPT_TEXT, 0, longer.c_str()};
    EXPECT_EQ(message("more: %s", &words, 1), "more: " + std::string(245, 'l') + "\n");
    EXPECT_EQ(message("%s and more", &words, 1), std::string(prompt_message_size - 1, 'l') + "\n");
}

TEST_F(prompt_report_test, code_decides_on_the_end_of_the_process)
{
    for (int32_t code : {1, 203, 236, -236, -242, -243, -244, -245, -246, -254, -255})
        EXPECT_NE(report(code, -1), "") << code;
    write_prompts("0   zero\n203 no memory for a name: %d\n");
    EXPECT_EQ(last_report(0, -1), "zero\n");
    EXPECT_EQ(last_report(-203, 7), "mcomp: no memory for a name: %d\n") << "without values";
    for (int32_t code : {-1, -235, -237, -241, -247, -253, -256})
        EXPECT_NE(last_report(code, -1), "") << code;
}

TEST_F(prompt_report_test, script_being_written_is_kept_at_the_end)
{
    EXPECT_EXIT(
        {
            out_open(plat_file{creat("x_conv.mrl", 0666)});
            out_text("LINE 0\n");
            prompt_report(-203, 1);
        },
        testing::ExitedWithCode(1), "");
    EXPECT_EQ(read_file("x_conv.mrl"), "LINE 0\n");
}
