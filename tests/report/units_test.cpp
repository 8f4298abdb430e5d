// The pieces of the report whose cases are too many for whole runs.
#include "report/edits.h"
#include "report/judge.h"
#include "report/judge_arguments.h"
#include "report/lines.h"
#include "report/show.h"
#include "report/slot_use.h"

#include "common/run.h"
#include "driver/journal.h"
#include "rules/rule_table.h"

#include <gtest/gtest.h>

#include <random>

TEST(judgement, knows_an_expression_that_is_constant)
{
    for (const char *text : {"1", " 2 + 3 ", "0x1F", "1e6", "1.e3", "5' 6\"", "sqrt(16)", "POW (2, 3)",
                             "(1 < 2) ? 3 : 4", "010"})
        EXPECT_TRUE(expression_is_constant(text)) << text;
    for (const char *text :
         {"n", "1 + n", "sqrt(n)", "a[1]", "@key", "$a", "sqrt", "n(1)", "sizeof(a)", "e1", "x.y", "_a"})
        EXPECT_FALSE(expression_is_constant(text)) << text;
}

// What readers learn of a converted statement: the effect of the row that wrote it, and of the slots from 1
// on a letter each: t for the text, v for a value, b for both, - for nothing.
TEST(judgement, knows_what_was_written_of_each_argument)
{
    static const struct {
        const char *statement, *effect, *slots;
    } cases[] = {
        {"POINT 1,2,3,4,5", "rebuilt", "ttt-t"},
        {"SPLINE P2VV,p,3,4,5,6", "tip", "tttttt"},
        {"POLYGON 2,5,10,p,1,2", "tip", "vvvt-t"},
        {"XHATCH 3,1,p,2,4", "tip", "v-t-t"},
        {"TEXT 1,2,\"t\",1,2,3,4,5,6,1", "rebuilt", "tttttttttb"},
        {"VIEW 8,1,2,3,4,5,6,7,8,9,10", "tip", "tttttttttt-"},
        {"VIEW 9,1,2,3,4,5,6,7,8,9,10", "renamed", "tttttttttt-"},
        {"SETTEXT 1,2", "dropped", "--"},
        {"SET COLOR,1,2", "copied", "ttt"},
        {"SET COLOR,,2", "copied", "t--"},
        {"SET COLLECT,1", "commented", "tt"},
        {"ORDDIM 1,2,3,r,5,6,7", "by hand", "ttttttt"},
        {"ORDDIM 1,2,3,r,5,6,7", "by hand, no tip", "ttttt--"},
        {"SET COLLECT,0", "commented", "tt"},
        {"ORDDIM 1,2,3,r,5,6,7", "dropped", "-------"},
        {"SETCUR 1,2,3", "commented", "ttv"},
        {"DELENT -1", "copied", "-"},
        {"DELENT 5", "rebuilt", "-"},
        {"GETFLT \"p\",1,r,\"a\",,\"b\",,,,,,,1", "renamed", "tttttttttttt-"},
        {"GETMENU \"p\",\"a\",,,,,,,,,1,2", "rebuilt", "tttttttttttt"},
        {"GETCUR \"p\",1,2,3,4,5,6,7,\"a\"", "rebuilt", "ttttttttt"},
        {"INPUT \"%d %*d %f\",a,b,c", "copied", "ttt-"},
        {"PRINT \"a\",b,,c", "copied", "tt--"},
        {"READ f,2,a,b", "commented", "tv--"},
        {"CALL dotprod,1,2,3,4,5,6,r,x", "tip", "tttttttt-"},
        {"CALL atan3,1,2", "by hand", "ttt"},
        {"BREAD 1,f,v", "not implemented", "---"},
        {"LINDIM 1,2,3,r,5,6,7", "by hand", "ttttttb"},
    };
    static std::vector<std::string> told;
    told.clear();
    std::string script;
    for (const auto &c : cases)
        script += c.statement + std::string("\n");
    statement_seen = [](const statement_record *record) {
        if (record->head.kind != KIND_COMMAND)
            return;
        std::string line = rule_effect_text(rule_last.row->effect) + std::string(" ");
        for (int32_t i = 1; i <= 16; i++)
            line += "-tvb"[slot_use(i)];
        told.push_back(line);
    };
    (void)converted(script);
    statement_seen = nullptr;
    ASSERT_EQ(told.size(), std::size(cases));
    for (size_t i = 0; i < told.size(); i++) {
        std::string want = cases[i].effect + std::string(" ") + cases[i].slots;
        EXPECT_EQ(told[i].substr(0, want.size()), want) << cases[i].statement;
    }
}

TEST(judgement, counts_the_statements_of_an_output)
{
    static const struct {
        const char *output;
        int lines;
    } cases[] = {
        {"", 0},
        {"\n\n", 0},
        {"LINE 1\n", 1},
        {"LINE 1", 1},
        {"x = 1\n\n", 1},
        {"// a\n  // b\nREM c\nrem d\nREM\n", 0},
        {"REMARK 1\n", 1},
        {"// a\nLINE 1\n", 1},
        {"A\nB\n", 2},
        {"PRINT \"a\nb\", c\n", 1},
        {"PRINT \"a\n// b\", c\nD\n", 2},
        {"// it's \"open\nA\n", 1},
    };
    for (const auto &c : cases)
        EXPECT_EQ(live_lines(c.output), c.lines) << c.output;
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

static line_prints prints_of(const std::string &text, size_t step = SIZE_MAX)
{
    line_prints lines;
    lines.kept = true;
    for (size_t at = 0; at < text.size(); at += std::min(step, text.size() - at))
        prints_add(&lines, std::string_view(text).substr(at, step));
    prints_end(&lines);
    return lines;
}

TEST(lines, have_the_same_prints_however_they_come)
{
    EXPECT_EQ(prints_of("a\nb\n").prints, prints_of("a\r\nb").prints);
    EXPECT_EQ(prints_of("a\r\n\r\nb\n", 1).prints, prints_of("a\n\nb\n").prints);
    EXPECT_NE(prints_of("a\rb\n").prints, prints_of("ab\n").prints);
    EXPECT_NE(prints_of("a\nb\n").prints, prints_of("b\na\n").prints);
    EXPECT_EQ(prints_of("").prints.size(), 0u);
    EXPECT_EQ(prints_of("\n").prints.size(), 1u);
}

TEST(lines, are_read_whatever_their_length)
{
    auto path = fresh_folder("report_lines") / "a";
    write_file(path, "a\n\n" + std::string(200000, 'x') + "\nlast");
    std::vector<std::pair<uint64_t, size_t>> got;
    EXPECT_TRUE(lines_read(
        path.string(),
        [](uint64_t number, std::string_view line, void *context) {
            static_cast<decltype(got) *>(context)->emplace_back(number, line.size());
        },
        &got));
    decltype(got) want = {{1, 1}, {2, 0}, {3, line_kept}, {4, 4}};
    EXPECT_EQ(got, want);
    EXPECT_FALSE(lines_read((path / "b").string(), nullptr, nullptr));
}

// An item on each line of what was written, and one without lines before each and at the end.
static script_report items_on(size_t lines)
{
    script_report report;
    for (uint64_t line = 1; line <= lines + 1; line++) {
        report_item item{};
        item.output_line = line;
        report.items.push_back(item);
        item.output_lines = 1;
        if (line <= lines)
            report.items.push_back(item);
    }
    return report;
}

// A letter an item: c changed, o open; those without lines in capitals.
static std::string states_of(const std::string &written, const std::string &there)
{
    line_prints before = prints_of(written);
    script_report report = items_on(before.prints.size());
    edits_find(&report, before, prints_of(there));
    std::string states;
    for (const report_item &item : report.items) {
        char letter = item.state == STATE_CHANGED ? 'c' : 'o';
        states += item.output_lines == 0 ? static_cast<char>(letter - 32) : letter;
    }
    return states;
}

TEST(edits, are_found_by_lines)
{
    static const struct {
        const char *written, *there, *states;
    } cases[] = {
        {"a\nb\nc\n", "a\nb\nc\n", "OoOoOoO"}, {"a\nb\nc\n", "a\nc\n", "OoOcOoO"},
        {"a\nb\nc\n", "a\nx\nc\n", "OoCcCoO"}, {"a\nb\nc\n", "a\nb\nx\nc\n", "OoOoCoO"},
        {"a\nb\nc\n", "", "OcOcOcO"},          {"a\nb\nc\n", "x\na\nb\nc\ny\n", "CoOoOoC"},
        {"a\na\na\n", "a\na\n", nullptr},      {"", "x\n", "C"},
    };
    for (const auto &c : cases)
        if (c.states != nullptr) {
            EXPECT_EQ(states_of(c.written, c.there), c.states) << c.written << "---\n" << c.there;
        } else {
            std::string states = states_of(c.written, c.there);
            EXPECT_EQ(std::count(states.begin(), states.end(), 'c'), 1) << states;
        }
}

// Beyond the diff library's limit another way takes over: lines that nobody touched stay open in it too.
TEST(edits, of_very_long_scripts_are_found_too)
{
    std::mt19937 random(1);
    std::string written;
    std::string there;
    for (int i = 0; i < 20000; i++) {
        std::string line = "LINE " + std::to_string(random() % 500) + "\n";
        written += line;
        there += i % 1000 == 500 ? "mine\n" : line;
    }
    std::string states = states_of(written, there);
    EXPECT_LT(std::count(states.begin(), states.end(), 'c'), 100);
    EXPECT_GE(std::count(states.begin(), states.end(), 'c'), 20);
    std::string shuffled;
    for (int i = 0; i < 20000; i++)
        shuffled += "LINE " + std::to_string(random() % 500) + "\n";
    EXPECT_EQ(states_of(written, shuffled).size(), 40001u);
}
