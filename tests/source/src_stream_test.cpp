// The source stream: what comes out of it, however its window falls.
#include "source/src_stream.h"

#include "common/diff.h"
#include "common/run.h"
#include "generators/random_texts.h"
#include "support/scan.h"
#include "support/text.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <algorithm>

// Bytes of one read at which the properties here are tried.
static constexpr size_t read_limits[] = {1, 2, 3, 61, SIZE_MAX};

static std::string read_rest()
{
    std::string result;
    for (int c; (c = src_getc()) != -1;)
        result += static_cast<char>(c);
    EXPECT_EQ(src_getc(), -1) << "the end doesn't stay the end";
    return result;
}

static std::string read_all(const std::string &text)
{
    script_source source(text);
    std::string result = read_rest();
    src_close();
    src_close();
    return result;
}

// The same with a first line that is joined only across CR LF.
static std::string read_all_crlf(const std::string &text)
{
    script_source source(text);
    char line[32];
    auto size = static_cast<size_t>(src_read_line_crlf(line, sizeof line - 1));
    return std::string(line, size) + read_rest();
}

TEST(src_stream, joins_lines_and_folds_line_ends)
{
    static const struct {
        std::string text, folded, crlf_only;
    } cases[] = {
        {"", "", ""},
        {"ab", "ab", "ab"},
        {"a\\\nb", "ab", "a\\\nb"},
        {"a\\\r\nb", "ab", "ab"},
        {"a\\\n\\\nb", "ab", "a\\\nb"},
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
        {"a\r\\\nb", "a\r\\\nb", "a\r\\\nb"},
        {"a\x1A"
         "b",
         "a", "a"},
        {"a\\\x1A"
         "b",
         "a\\", "a\\"},
        {"a\r\x1A", "a\r", "a\r"},
        {"a\\" + nul + "b\r" + nul + "c\\\r" + nul + "d", "a\\b\rc\\\rd", "a\\b\rc\\\rd"},
        {"Murivo" + nul, "", ""},
        {"Murivo" + nul + "a", "a", "a"},
        {"Murivo", "Murivo", "Murivo"},
        {"Murivoa" + nul, "Murivoa" + nul, "Murivoa" + nul},
        {"murivo" + nul, "murivo" + nul, "murivo" + nul},
        {"a" + nul + "b\x80\xFF", "a" + nul + "b\x80\xFF", "a" + nul + "b\x80\xFF"},
    };
    for (const auto &c : cases)
        for (size_t limit : read_limits) {
            src_read_limit = limit;
            EXPECT_EQ(escaped(read_all(c.text)), escaped(c.folded)) << escaped(c.text) << " by " << limit;
            EXPECT_EQ(escaped(read_all_crlf(c.text)), escaped(c.crlf_only))
                << escaped(c.text) << " by " << limit;
        }
    reset_run();
}

// What has to stay stays where it is, whatever is read after it, and nothing is lost.
TEST(src_stream, keeps_the_pieces_of_a_long_statement)
{
    std::string text;
    for (int i = 0; text.size() < 3000000; i++)
        text += std::to_string(i) + (i % 3 == 0 ? "\\\n" : "\n");
    std::string wanted = read_all(text);
    for (size_t limit : {size_t{4096}, SIZE_MAX}) {
        src_read_limit = limit;
        script_source source(text);
        std::vector<std::pair<unsigned char *, std::string>> kept;
        std::string result;
        unsigned char *keep = src.pos;
        // A hundred pieces at the widest distances, of the most that may be kept.
        for (size_t piece = 0; piece < 100; piece++) {
            for (size_t skip = 0; skip < 7000 + piece; skip++) {
                ASSERT_TRUE(src.pos < src.end || src_more(keep));
                result += static_cast<char>(*src.pos++);
            }
            unsigned char *start = src.pos;
            while (src.pos - start < 400) {
                ASSERT_TRUE(src.pos < src.end || src_more(src.pos));
                result += static_cast<char>(*src.pos++);
            }
            keep = src.pos;
            kept.emplace_back(start, std::string(reinterpret_cast<char *>(start), 400));
        }
        for (const auto &[start, bytes] : kept)
            ASSERT_EQ(std::string(reinterpret_cast<const char *>(start), 400), bytes);
        result += read_rest();
        EXPECT_EQ(result == wanted, true) << "by " << limit;
    }
    reset_run();
}

TEST(src_stream, counts_lines_when_asked)
{
    static const struct {
        char c;
        uint32_t line; // of the character after it
    } steps[] = {{'a', 2}, {'b', 2}, {'\n', 3}, {'c', 3}, {'\n', 4}, {'\n', 7}, {'d', 7}};
    for (size_t limit : read_limits) {
        src_read_limit = limit;
        script_source source("a\\\nb\nc\r\n\n\\\r\n\\\nd");
        EXPECT_EQ(src_line(), 1u);
        for (const auto &step : steps) {
            EXPECT_EQ(src_getc(), step.c);
            (void)src_peek(); // so that the continuations before it are read
            EXPECT_EQ(src_line(), step.line)
                << "after " << escaped(std::string(1, step.c)) << " by " << limit;
        }
    }
    reset_run();
}

TEST(src_stream, knows_whether_the_whole_file_was_read)
{
    for (const auto &[text, whole] :
         std::vector<std::pair<std::string, bool>>{{"", true},
                                                   {"a\n", true},
                                                   {"a\x1A", true},
                                                   {"a\x1A\n", false},
                                                   {"\x1A" + times(200000, "b"), false}}) {
        script_source source(text);
        EXPECT_EQ(src_ended(), text.empty()) << escaped(text.substr(0, 9));
        (void)read_rest();
        EXPECT_EQ(src_ended(), whole) << escaped(text.substr(0, 9));
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

TEST(src_stream, deciphers_after_the_magic)
{
    std::string text = "LINE 1,2\\\n3\r\nwith \\ and \r and " + nul + " to the end";
    std::string plain = "LINE 1,23\nwith \\ and \r and " + nul + " to the end";
    for (size_t limit : read_limits) {
        key_load = load_test_key;
        src_read_limit = limit;
        EXPECT_EQ(read_all(enciphered("Murivo" + nul + text)), plain);
        EXPECT_EQ(read_all(enciphered("Murivo" + nul + text + "\x1Amore")), plain);
        EXPECT_EQ(read_all("LINE 1,2,3,4,5,6\n"), "LINE 1,2,3,4,5,6\n") << "a plain file";
        EXPECT_EQ(src_key.key_bytes, nullptr);
        EXPECT_EQ(src_key.key_len, 0);
    }
    reset_run();
}

// ---- Lines ----

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
    for (const auto &c : cases)
        for (size_t limit : read_limits) {
            src_read_limit = limit;
            script_source source(c.text);
            std::vector<std::string> lines;
            char buffer[16] = "untouched";
            while (int32_t length = src_read_line(buffer, c.size)) {
                EXPECT_EQ(buffer[length], 0);
                lines.emplace_back(buffer, static_cast<size_t>(length));
            }
            EXPECT_EQ(lines, c.lines) << escaped(c.text) << " by " << c.size;
        }
    reset_run();
}

// A continuation that doesn't count comes apart where the size ends.
TEST(src_stream, continues_a_crlf_line_only_across_crlf)
{
    script_source source("a\\\nb\\\r\nc\\\nd\n");
    char buffer[16];
    EXPECT_EQ(src_read_line_crlf(buffer, 10), 3);
    EXPECT_STREQ(buffer, "a\\\n");
    EXPECT_EQ(src_line(), 2u);
    EXPECT_EQ(src_read_line_crlf(buffer, 2), 2);
    EXPECT_STREQ(buffer, "bc");
    EXPECT_EQ(src_read_line_crlf(buffer, 1), 1);
    EXPECT_STREQ(buffer, "d") << "the continuation was passed before";
}

// ---- Scanning ----

// Characters of a text before the first one for which stops is true, one by one.
template <typename function> static size_t run_length(const std::string &text, size_t limit, function stops)
{
    size_t at = 0;
    while (at < limit && !stops(static_cast<unsigned char>(text[at])))
        at++;
    return at;
}

static bool is_plain_number(const std::string &text)
{
    std::string number = text.substr(text[0] == '-' ? 1 : 0);
    auto digits = std::count_if(number.begin(), number.end(), [](char c) { return text_is(c, CHAR_DIGIT); });
    auto points = std::count(number.begin(), number.end(), '.');
    bool octal = number.size() > 1 && number[0] == '0' && text_is(number[1], CHAR_DIGIT);
    return digits > 0 && points <= 1 && digits + points == static_cast<ptrdiff_t>(number.size()) && !octal;
}

TEST(scan, finds_what_a_look_at_each_character_finds)
{
    random_texts texts({
        {'l', "%p%p%p%p%p%p%p%p%p%p%p%p%p%p%p%p"},
        {'p',
         ",;(;);\";`;\\;\n;\r;\t;\x1A; ; ;-;.;0;1;27;a;_;Z;z9;-1.5;.5;007;0.5;\xE1;\x7F;~;ab;abcdefgh;5;6;7"},
    });
    for (int n = 0; n < 20000; n++) {
        std::string text = times(texts.die() % 40, texts.pick('p')) + texts.expand("%l%l%l%l%l");
        text[texts.die() % text.size()] = static_cast<char>(texts.die() % 256);
        text += std::string("\n") + nul + times(70, ",");
        SCOPED_TRACE(escaped(text));
        auto start = reinterpret_cast<const unsigned char *>(text.data());
        size_t size = texts.die() % 70;
        size_t whole = text.size();
        ASSERT_EQ(scan_word(start, size),
                  run_length(text, size, [](int c) { return !char_is(c, CHAR_WORD); }));
        ASSERT_EQ(scan_white(start, size),
                  run_length(text, size, [](int c) { return !char_is(c, CHAR_WHITE); }));
        ASSERT_EQ(scan_raw(start), run_length(text, whole, [](int c) {
                      return (c != ' ' && !char_is(c, CHAR_GRAPH)) || strchr(",()", c) != nullptr;
                  }));
        ASSERT_EQ(scan_string(start),
                  run_length(text, whole, [](int c) { return strchr("\"`\\\n", c) != nullptr; }));
        ASSERT_EQ(scan_line(start, size), run_length(text, size, [](int c) { return c == '\n'; }));
        ASSERT_EQ(scan_fold(start, size),
                  run_length(text, size, [](int c) { return c == '\\' || c == '\r' || c == 26; }));
        ASSERT_EQ(
            count_line_feeds(start, start + size),
            static_cast<size_t>(std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(size), '\n')));
        std::string piece = text.substr(0, 1 + texts.die() % 16);
        ASSERT_EQ(scan_is_number(text.data(), piece.size()), is_plain_number(piece));
        scan_mask mask = scan_between(scan_load(start), '0', '9');
        ASSERT_EQ(scan_bits(mask), scan_bits_portable(mask));
    }
    std::string lines(9000, '\n');
    auto start = reinterpret_cast<const unsigned char *>(lines.data());
    EXPECT_EQ(count_line_feeds(start, start + lines.size()), lines.size());
    static const struct {
        char text[17];
        bool is_number;
    } numbers[] = {{"1", true},    {"-1", true},   {"0", true},
                   {"1.", true},   {".5", true},   {"-.5", true},
                   {"0.5", true},  {"-0", true},   {"-", false},
                   {".", false},   {"-.", false},  {"00", false},
                   {"07", false},  {"-09", false}, {"1.2.", false},
                   {"1e", false},  {"+1", false},  {"1 ", false},
                   {"--1", false}, {"1-", false},  {"1234567890123456", true}};
    for (const auto &c : numbers)
        EXPECT_EQ(scan_is_number(c.text, strlen(c.text)), c.is_number) << c.text;
}
