// Properties that hold for every script, tried on all golden scripts and samples.
#include "common/diff.h"
#include "common/run.h"
#include "generators/random_texts.h"

#include "source/src_stream.h"
#include "statements/command_rows.h"
#include "statements/command_table.h"
#include "statements/statement_text.h"

#include <gtest/gtest.h>

#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <set>

namespace fs = std::filesystem;

static std::vector<fs::path> all_scripts()
{
    std::vector<fs::path> scripts;
    for (const char *root : {"tests/golden", "samples"})
        if (fs::path folder = fs::path(TEST_SOURCE_DIR) / root; fs::exists(folder))
            for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder))
                if (is_script(entry.path()))
                    scripts.push_back(entry.path());
    std::sort(scripts.begin(), scripts.end());
    return scripts;
}

static std::string with_line_ends(const std::string &text, const std::string &line_end)
{
    std::string result;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        if (text[i] == '\n')
            result += line_end;
        else
            result += text[i];
    }
    return result;
}

// The one difference that line ends make: a backslash continues an ON line only across a CR LF.
static bool has_continued_on_line(const std::string &text)
{
    size_t start = 0;
    while (start < text.size()) {
        size_t end = std::min(text.find('\n', start), text.size());
        size_t word = std::min(text.find_first_not_of(" \t", start), text.size());
        size_t last = end > start && text[end - 1] == '\r' ? end - 1 : end;
        if (word < end && word + 2 < end && tolower(text[word]) == 'o' && tolower(text[word + 1]) == 'n' &&
            isspace(static_cast<unsigned char>(text[word + 2])) && text[last - 1] == '\\')
            return true;
        start = end + 1;
    }
    return false;
}

TEST(properties, a_second_conversion_writes_the_same_bytes)
{
    for (const fs::path &path : all_scripts()) {
        std::string script = read_file(path);
        EXPECT_EQ(unified_diff(converted(script), converted(script)), "") << path;
    }
}

TEST(properties, line_ends_of_the_input_make_no_difference)
{
    for (const fs::path &path : all_scripts()) {
        std::string script = read_file(path);
        if (has_continued_on_line(script) || script.find("\r\r\n") != std::string::npos)
            continue;
        EXPECT_EQ(
            unified_diff(converted(with_line_ends(script, "\n")), converted(with_line_ends(script, "\r\n"))),
            "")
            << path;
    }
}

// ---- However the source is read, the output is the same ----

static constexpr unsigned char every_key[] = {0x55, 0x0F, 0xA3};

static void load_every_key(const char *, key_record *key)
{
    key->key_bytes = static_cast<unsigned char *>(malloc(sizeof every_key));
    memcpy(key->key_bytes, every_key, sizeof every_key);
    key->key_len = sizeof every_key;
    key->key_restart = key->key_pos = 0;
}

static std::string enciphered(const std::string &script)
{
    const std::string magic("Murivo\0", 7);
    std::string bytes = script.compare(0, magic.size(), magic) == 0 ? script : magic + script;
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<char>(bytes[i] ^ every_key[i % sizeof every_key]);
    return bytes;
}

TEST(properties, an_enciphered_script_converts_like_a_plain_one)
{
    for (const fs::path &path : all_scripts()) {
        std::string script = read_file(path);
        EXPECT_EQ(unified_diff(converted(enciphered(script), load_every_key), converted(script)), "") << path;
    }
}

TEST(properties, a_random_script_converts_alike_however_it_is_read)
{
    random_texts texts({
        {'s',
         "LINE %a,%a,%a,%a,%a,%a,%a,,%a\n;PRANGE %a,%a,%a,%a,%a,%a,%a,%a\n;POINT %u,%u,%u\n;x = %a\n;"
         "                  y                  =%a+%a\n;i = %a*%a - %a\n;a [%a]= %a\n;SPLINE w3,x,%a,%a,%a\n;"
         "SPLINE w3,x %a\n;\t// %a,%a\n;PRINT \"s%a\", x, %a\n;longer_than_sixteen  = %a\n;REM %a\n;foo %a\n;"
         "IF %a\n;%a %a\n;PRANGE %x,%x,%u,%u,%u,%u,%u,%u\n;VIEW %u,%x,%u,1,0,0,0,1,0,0\n"},
        {'a', "%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%u;%x"},
        {'u', "1;-2.5;.5;x;y;i;f;no1;no2;no1"},
        {'x',
         ";07;x+1;a[1];abs(i);no1+1;a[no2]; x;x ;- 1;sizeof;1/0;x y;"
         "x=4;z(;a[7];5';\"s;\t;\\\n;\\\r\n;y+x\r\n;`"},
    });
    for (int n = 0; n < 12; n++) {
        std::string script = "INT i\nFLOAT f\nDOUBLE a[3]\nx = 1.5\n";
        while (script.size() < 150000) {
            std::string statement = texts.pick('s');
            for (size_t more = texts.die() % 8 == 0 ? texts.die() % 500 : 1; more > 0; more--)
                script += texts.expand(statement);
        }
        std::string output = converted(script);
        ASSERT_EQ(unified_diff(converted(enciphered(script), load_every_key), output), "");
        size_t limit = size_t{61} << n;
        ASSERT_EQ(unified_diff(converted(script, nullptr, limit), output), "") << limit;
        EXPECT_GT(output.size(), script.size()) << "the reading stopped";
    }
}

TEST(properties, a_script_converts_alike_by_any_number_of_bytes_at_a_time)
{
    for (const fs::path &path : all_scripts()) {
        std::string script = read_file(path);
        std::string output = converted(script);
        for (size_t limit : {1U, 61U, 300U, 4096U})
            EXPECT_EQ(unified_diff(converted(script, nullptr, limit), output), "") << path << " by " << limit;
    }
}

// The state of SET COLLECT alone goes on from one file to the next.
TEST(properties, scripts_of_one_run_convert_like_each_alone)
{
    fs::path folder = fresh_folder("joined_run");
    std::vector<std::string> names;
    std::vector<std::string> outputs;
    for (const fs::path &path : all_scripts()) {
        std::string script = read_file(path);
        std::string lower = script;
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return tolower(c); });
        if (lower.find("collect") != std::string::npos || lower.find("orddim") != std::string::npos)
            continue;
        std::string name = "s" + std::to_string(names.size());
        write_file(folder / (name + ".mrl"), script);
        names.push_back(name + ".mrl");
        outputs.push_back(converted(script));
    }
    ASSERT_GT(names.size(), 50u);
    reset_run();
    run_converter(folder, names);
    for (size_t i = 0; i < names.size(); i++)
        EXPECT_EQ(unified_diff(read_file(folder / ("s" + std::to_string(i) + "_conv.mrl")), outputs[i]), "")
            << i;
}

// Statements of more characters than the window has, for each kind of thing that a statement may keep.
TEST(properties, a_statement_may_be_longer_than_the_window)
{
    const std::string gap = times(300000, " ");
    const std::string dropped = times(300000, "\x01");
    EXPECT_EQ(converted("LINE" + gap + "1,2," + gap + "3,x" + dropped + "y,5,6 , 7, " + gap + "8\n"),
              converted("LINE 1,2,3,xy,5,6 , 7, 8\n"));
    EXPECT_EQ(converted("PRINT" + gap + "\"a\\n\"" + dropped + "," + gap + "b" + gap + "\n").substr(0, 5),
              " b   ");
    EXPECT_EQ(converted("PRINT \"a\", b\nSPLINE \v" + times(300000, "\f") + "a3,\"p\",1,2\n"),
              converted("PRINT \"a\", b\nSPLINE \va3,\"p\",1,2\n"));
    EXPECT_EQ(converted("REM " + gap + "x\n" + gap + "WAIT 1," + gap + "\ny = 1\n"),
              "REM x\n" + gap + "WAIT 1\ny = 1\n\n");
}

// SPLINE looks at its argument before it is read, SPLINE3 doesn't: the same bytes come out of both.
TEST(properties, a_look_at_a_spline_changes_nothing)
{
    static const struct {
        std::string text, output;
    } cases[] = {
        {"\r\\\n 1", " \\\n 1\n"},       {"\r\r\\\n\\\n\v\n", ""}, {"\r\r\r\\\n\v\n", " \\\n\v\n"},
        {" \\" + nul + "x\n", " \\x\n"}, {" \\\n\r", ""},
    };
    for (const auto &c : cases)
        for (size_t limit : {size_t{1}, size_t{2}, SIZE_MAX}) {
            EXPECT_EQ(escaped(converted("SPLINE" + c.text, nullptr, limit)), escaped(c.output))
                << escaped(c.text) << " by " << limit;
            EXPECT_EQ(escaped(converted("SPLINE3" + c.text, nullptr, limit)), escaped(c.output));
        }
    // A NUL is lost at each of 300,000 characters, and then lines are joined at each.
    for (const std::string &piece : {"\\" + nul, std::string("\f\\\n")}) {
        std::string text = "\r\\" + times(300000, piece) + "\na,b,1,2\n";
        EXPECT_EQ(converted("SPLINE" + text) == converted("SPLINE3" + text), true);
    }
}

// Wherever the window ends, 65,536 characters of white space are looked through. SPLINE3's list needs no
// fourth argument.
TEST(properties, a_look_at_a_spline_ends_after_65536_characters)
{
    for (size_t before : {131072U - 70000, 131072U - 9000, 131072U - 2000, 131072U - 20}) {
        const std::string head = "REM " + times(before, "x") + "\n";
        for (const auto &[count, is_3d] :
             std::vector<std::pair<size_t, bool>>{{3901, true}, {8193, true}, {65536, true}, {65537, false}})
            for (const char *white : {" ", "\r", "\v"}) {
                // The blanks after a word are part of no argument, and aren't looked through.
                std::string script = head + "SPLINE\v\v" + times(count - 1, white) + "a3,b,1\n";
                EXPECT_EQ(converted(script).find("SPLINE a3") != std::string::npos,
                          is_3d && (white[0] != ' ' || count < line_buf_capacity))
                    << before << " " << count << " " << escaped(white);
            }
    }
}

// A plausible argument for each position of a row.
static std::string statement_of(const command_source_row &row)
{
    static const char *const arguments[] = {"\"s\"", "1", "1", "1", "1", "name", "word", "v", "item"};
    std::string text = row.name;
    int count = spec_length(row.spec);
    for (int i = 0; i < count; i++)
        text += (i == 0 ? " " : ",") + std::string(arguments[spec_digit(row.spec[3 * i + 1])]);
    return text + "\n";
}

TEST(properties, every_command_reaches_its_rule)
{
    for (const command_source_row &row : command_rows) {
        std::string script = statement_of(row);
        std::string output = converted(script);
        SCOPED_TRACE(script);
        bool leaves_nothing = row.id >= 1000 || std::string(row.name) == "CODE";
        EXPECT_EQ(output.empty(), leaves_nothing) << output;
        EXPECT_NE(output.substr(0, 1), " ") << "the arguments could not be fetched: " << output;
    }
}

// Without a golden script a rule's output would be checked by nobody.
TEST(properties, a_golden_script_has_every_command_with_a_rule)
{
    std::set<int> seen;
    for (const fs::path &path : all_scripts()) {
        std::string text = read_file(path);
        for (size_t start = 0; start < text.size();) {
            size_t end = std::min(text.find('\n', start), text.size());
            size_t word = std::min(text.find_first_not_of(" \t", start), text.size());
            size_t end_of_word = std::min(text.find_first_of(" \t\r\n", word), text.size());
            if (word < end)
                if (int32_t row = command_find(word_key_make(text.c_str() + word, end_of_word - word));
                    row >= 0)
                    seen.insert(command_row_at(row).id);
            start = end + 1;
        }
    }
    std::string unwritten;
    for (const command_source_row &row : command_rows)
        if (row.id < 1000 && seen.count(row.id) == 0)
            unwritten += std::string(row.name) + " ";
    EXPECT_EQ(unwritten, "");
    EXPECT_NE(seen.lower_bound(1000), seen.end()) << "a system command";
}
