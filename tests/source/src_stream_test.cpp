// The source stream: joined lines, pushback, line counters, the key, and reading by lines and words.
#include "source/src_stream.h"

#include "common/diff.h"
#include "common/run.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

// Everything that a source hands out, byte by byte.
static std::string read_all(const std::string &text, int (*getc)(plat_file *))
{
    source_stream source(text);
    src_open("test", source.stream);
    src_count_lines();
    std::string result;
    for (int c; (c = getc(source.stream)) != -1;)
        result += static_cast<char>(c);
    EXPECT_EQ(getc(source.stream), -1) << "the end doesn't stay the end";
    src_close();
    src_close();
    return result;
}

static const std::string nul(1, 0);

TEST(src_stream, joins_lines_and_folds_line_ends)
{
    static const struct {
        std::string text, lf_and_crlf, crlf_only; // what src_getc and src_getc_crlf give
    } cases[] = {
        {"", "", ""},
        {"ab", "ab", "ab"},
        {"a\\\nb", "ab", "a\\\nb"},
        {"a\\\r\nb", "ab", "ab"},
        {"a\\\n\\\nb", "ab", "a\\\n\\\nb"},
        {"a\\\r\n\\\r\nb", "ab", "ab"},
        {"a\\\n\nb", "a\nb", "a\\\n\nb"},
        {"a\\\n\r\nb", "a\nb", "a\\\n\nb"},
        {"a\\\r\\\nb", "a\\\r\\\nb", "a\\\r\\\nb"},
        {"a\\\rb", "a\\\rb", "a\\\rb"},
        {"a\\\r", "a\\\r", "a\\\r"},
        {"a\\b", "a\\b", "a\\b"},
        {"a\\\\\nb", "a\\\\\nb", "a\\\\\nb"},
        {"a\\\\\\\nb", "a\\\\b", "a\\\\\\\nb"},
        {"a\\", "a\\", "a\\"},
        {"a\\\n", "a", "a\\\n"},
        {"a\r\nb\rc\r\r\nd\r", "a\nb\rc\r\r\nd\r", "a\nb\rc\r\r\nd\r"},
        {"a\x1A"
         "b",
         "a", "a"},
        {"a\\\x1A"
         "b",
         "a\\", "a\\"},
        {"a\r\x1A", "a\r", "a\r"},
        {"Murivo" + nul, "", ""},
        {"Murivo" + nul + "a", "a", "a"},
        {"Murivo", "Murivo", "Murivo"},
        {"Murivoa" + nul, "Murivoa" + nul, "Murivoa" + nul},
        {"murivo" + nul, "murivo" + nul, "murivo" + nul},
        {"a" + nul + "b\x80\xFF", "a" + nul + "b\x80\xFF", "a" + nul + "b\x80\xFF"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(escaped(read_all(c.text, src_getc)), escaped(c.lf_and_crlf)) << escaped(c.text);
        EXPECT_EQ(escaped(read_all(c.text, src_getc_crlf)), escaped(c.crlf_only)) << escaped(c.text);
    }
}

// A backslash behind a CR that was pushed back isn't looked at again: it came from pushback.
TEST(src_stream, takes_pushed_back_characters_last_first)
{
    script_source source("xyz");
    src_ungetc('a');
    src_ungetc('b');
    src_ungetc('c');
    for (char wanted : std::string("cbaxyz"))
        EXPECT_EQ(src_getc(source.stream), wanted);
    src_ungetc(-1);
    EXPECT_EQ(src_getc(source.stream), -1);
}

TEST(src_stream, overwrites_the_third_of_four_pushed_back)
{
    script_source source("x");
    for (char c : std::string("abcd"))
        src_ungetc(c);
    for (char wanted : std::string("dbax"))
        EXPECT_EQ(src_getc(source.stream), wanted);
}

TEST(src_stream, does_not_join_lines_over_pushed_back_characters)
{
    script_source source("b");
    src_ungetc('\n');
    src_ungetc('\\');
    EXPECT_EQ(src_getc(source.stream), '\\');
    EXPECT_EQ(src_getc(source.stream), '\n');
    EXPECT_EQ(src_getc(source.stream), 'b');
}

static std::string lines_now()
{
    return std::to_string(src_lines.line_physical) + " " + std::to_string(src_lines.line_current) + " " +
           std::to_string(src_lines.line_statement) + (src_lines.line_pending != 0 ? " pending" : "");
}

TEST(src_stream, counts_lines)
{
    script_source source("a\\\nb\nc\r\n\nd");
    EXPECT_EQ(lines_now(), "1 1 1");
    static const struct {
        char c;
        const char *lines; // behind it
    } steps[] = {{'a', "1 1 1"},          {'b', "2 2 1"},          {'\n', "3 3 1 pending"}, {'c', "3 3 3"},
                 {'\n', "4 4 3 pending"}, {'\n', "5 5 4 pending"}, {'d', "5 5 5"}};
    for (const auto &step : steps) {
        EXPECT_EQ(src_getc(source.stream), step.c);
        EXPECT_EQ(lines_now(), step.lines) << "behind " << escaped(std::string(1, step.c));
    }
}

TEST(src_stream, uncounts_a_line_end_that_goes_back)
{
    script_source source("a\nb\\\r\nc\\\nd");
    src_getc(source.stream);
    src_getc(source.stream);
    src_ungetc('\n');
    EXPECT_EQ(lines_now(), "1 1 1");
    EXPECT_EQ(src_getc(source.stream), '\n');
    EXPECT_EQ(lines_now(), "2 2 1 pending");
    EXPECT_EQ(src_getc(source.stream), 'b');
    src_ungetc('b');
    src_ungetc('\n');
    EXPECT_EQ(lines_now(), "1 1 1");
    src_lines.line_counting = 0;
    EXPECT_EQ(src_getc(source.stream), '\n');
    EXPECT_EQ(lines_now(), "2 1 1");
    for (char wanted : std::string("bcd"))
        EXPECT_EQ(src_getc(source.stream), wanted);
    EXPECT_EQ(lines_now(), "4 2 1") << "a continuation without a CR counts even so";
}

TEST(src_stream, tells_a_position_that_seek_finds_again)
{
    script_source source("ab\\\ncd\r\nef");
    std::string text = "abcd\nef";
    std::vector<int64_t> positions;
    for (char c : text) {
        positions.push_back(src_tell(source.stream));
        EXPECT_EQ(src_getc(source.stream), c);
    }
    for (size_t i = 0; i < text.size(); i++) {
        src_ungetc('!');
        EXPECT_EQ(src_seek(source.stream, positions[i]), 0);
        EXPECT_EQ(src_getc(source.stream), text[i]) << i;
    }
    src_seek(source.stream, 5);
    src_ungetc('x');
    src_ungetc('y');
    src_ungetc('z');
    EXPECT_EQ(src_tell(source.stream), 2);
    EXPECT_EQ(src_raw_tell(), 5);
}

TEST(src_stream, goes_back_and_on_over_many_blocks)
{
    std::string text;
    for (int i = 0; text.size() < 300000; i++)
        text += std::to_string(i) + " ";
    script_source source(text);
    for (int64_t at : {299000, 0, 65535, 65536, 131073, 7, 200000, 199990, 131071}) {
        EXPECT_EQ(src_seek(source.stream, at), 0);
        EXPECT_EQ(src_tell(source.stream), at);
        for (int64_t i = at; i < at + 900; i++)
            ASSERT_EQ(src_getc(source.stream), text[static_cast<size_t>(i)]) << at << ": " << i;
    }
}

TEST(src_stream, stays_at_its_end_until_a_seek)
{
    std::string text = times(20000, "a b ");
    script_source source(text);
    for (int round = 0; round < 2; round++) {
        for (char c : text)
            ASSERT_EQ(src_getc(source.stream), c);
        EXPECT_EQ(src_getc(source.stream), -1);
        EXPECT_EQ(pwrite(source.stream->number, "late", 4, static_cast<off_t>(text.size())), 4);
        EXPECT_EQ(src_getc(source.stream), -1) << "a file that grows";
        EXPECT_EQ(src_seek(source.stream, 0), 0);
        text += "late";
    }
}

// ---- The key ----

static const std::string test_key = "\x11\x72\x33\x54\x05\x26\x17\x48\x39";
static constexpr int16_t test_restart = 4;

static void load_test_key(const char *name, key_record *key)
{
    EXPECT_STREQ(name, "test");
    key->key_bytes = static_cast<unsigned char *>(malloc(test_key.size()));
    memcpy(key->key_bytes, test_key.data(), test_key.size());
    key->key_len = static_cast<int16_t>(test_key.size());
    key->key_restart = test_restart;
    key->key_pos = 0;
}

// The key runs once from its start and then goes round from test_restart.
static std::string enciphered(std::string text)
{
    size_t k = 0;
    for (char &c : text) {
        c = static_cast<char>(c ^ test_key[k]);
        if (++k == test_key.size())
            k = test_restart;
    }
    return text;
}

class src_key_test : public testing::Test {
protected:
    void SetUp() override
    {
        key_load = load_test_key;
    }

    void TearDown() override
    {
        src_close();
        reset_run();
    }
};

TEST_F(src_key_test, deciphers_behind_the_magic)
{
    std::string text = "LINE 1,2\\\n3\r\nwith \\ and \r and " + nul + " to the end";
    std::string plain = "LINE 1,23\nwith \\ and \r and " + nul + " to the end";
    EXPECT_EQ(read_all(enciphered("Murivo" + nul + text), src_getc), plain);
    EXPECT_EQ(read_all(enciphered("Murivo" + nul + text + "\x1Amore"), src_getc), plain);
}

TEST_F(src_key_test, drops_the_key_for_a_plain_file)
{
    EXPECT_EQ(read_all("LINE 1,2,3,4,5,6\n", src_getc), "LINE 1,2,3,4,5,6\n");
    EXPECT_EQ(src_key.key_bytes, nullptr);
    EXPECT_EQ(src_key.key_len, 0);
}

TEST_F(src_key_test, follows_a_seek)
{
    std::string text = "Murivo" + nul + "the quick brown fox jumps over the lazy dog";
    script_source source(enciphered(text));
    std::vector<int16_t> key_positions;
    for (size_t i = 7; i < text.size(); i++) {
        key_positions.push_back(src_key.key_pos);
        EXPECT_EQ(src_getc(source.stream), text[i]);
    }
    for (size_t i = text.size() - 1; i >= 7; i--) {
        EXPECT_EQ(src_seek(source.stream, static_cast<int64_t>(i)), 0);
        EXPECT_EQ(src_key.key_pos, key_positions[i - 7]) << i;
        EXPECT_EQ(src_getc(source.stream), text[i]) << i;
    }
    src_seek(source.stream, 2);
    EXPECT_EQ(src_getc(source.stream), 'r');
}

// ---- Lines and words ----

TEST(src_stream, reads_lines_up_to_a_size)
{
    static const struct {
        std::string text;
        int32_t size;
        std::vector<std::string> lines;
    } cases[] = {
        {"ab\ncd", 10, {"ab\n", "cd"}},
        {"ab\ncd", 3, {"ab\n", "cd"}},
        {"ab\ncd", 2, {"ab", "\n", "cd"}},
        {"a\\\nb\nc", 10, {"ab\n", "c"}},
        {"", 10, {}},
        {"abc", 0, {}},
        {"\n\n", 10, {"\n", "\n"}},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        std::vector<std::string> lines;
        char buffer[16] = "untouched";
        while (int32_t length = src_read_line(buffer, c.size, source.stream)) {
            EXPECT_EQ(buffer[length], 0);
            lines.emplace_back(buffer, static_cast<size_t>(length));
        }
        EXPECT_EQ(lines, c.lines) << escaped(c.text) << " by " << c.size;
    }
}

TEST(src_stream, continues_a_crlf_line_only_across_crlf)
{
    script_source source("a\\\nb\\\r\nc\n");
    char buffer[16];
    EXPECT_EQ(src_read_line_crlf(buffer, 10, source.stream), 3);
    EXPECT_STREQ(buffer, "a\\\n");
    EXPECT_EQ(src_read_line_crlf(buffer, 10, source.stream), 3);
    EXPECT_STREQ(buffer, "bc\n");
    EXPECT_EQ(lines_now(), "4 4 2 pending");
}

TEST(src_stream, reads_words_and_leaves_what_ends_them)
{
    static const struct {
        const char *text;
        int32_t size;
        const char *word;
        int next;
    } cases[] = {
        {"  \n\tab cd", 8, "ab", ' '}, {"ab\n", 8, "ab", '\n'},  {"abcdef", 4, "abc", 'd'},
        {"ab", 8, "ab", -1},           {" \n", 8, "before", -1}, {"a,b c", 8, "a,b", ' '},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        char word[16] = "before";
        src_read_word(source.stream, word, c.size);
        EXPECT_STREQ(word, c.word) << c.text;
        EXPECT_EQ(src_getc(source.stream), c.next) << c.text;
    }
}

TEST(src_stream, skips_space_and_leaves_what_follows)
{
    script_source source(" \t\v\f\r\n\n x");
    EXPECT_EQ(src_skip_space(source.stream), 'x');
    EXPECT_EQ(src_getc(source.stream), 'x');
    EXPECT_EQ(src_skip_space(source.stream), -1);
    EXPECT_EQ(src_getc(source.stream), -1);
}
