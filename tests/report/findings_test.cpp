// What the report finds in scripts.
//
// tests/report/tree holds scripts with planted faults and their near misses; tree.csv is all that a report
// says of them, menu.txt and menu.json the text and the JSON of one. MURL_UPDATE_WANT=1 in the environment
// rewrites these files where they differ, and prints the diffs.
#include "common/diff.h"
#include "common/run.h"
#include "report/findings/live_form.h"
#include "report/judged.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdlib.h>

#include <algorithm>

namespace fs = std::filesystem;

// A script and all that is found in it.
struct finding_case {
    const char *script, *items;
};

template <size_t count> static void expect_items(const finding_case (&cases)[count])
{
    for (const finding_case &c : cases)
        EXPECT_EQ(items_of(c.script), c.items) << c.script;
}

// ---- Arguments ----

TEST(findings, surplus_arguments_are_lost)
{
    static const finding_case cases[] = {
        {"GETPOS \"Pick\", 1, x\n", "1: lost GETPOS: not an argument of this command: x\n"},
        {"GOTO a, b\n", "1: lost GOTO: not an argument of this command: b\n"},
        {"WAIT 1,important\n", "1: lost WAIT: not an argument of this command: important\n"},
        {"EXIT // ready\n", "1: lost EXIT: not an argument of this command: // ready\n"},
        {"LINE 1,2,3,4,5,6,,8,9,10,11,12,13,14\n", "1: lost LINE: not an argument of this command: 14\n"},
        {"GETPOS \"Pick\", 1, , \t\nEXIT \t\n", ""},
        {"LEVELS 1, 2, 3, <b>\x1b\n",
         "1: quiet LEVELS: commented out: 1, 2, 3; not an argument of this "
         "command: <b>\\x1b\n"},
        {"uMACSTART 5\n", "1: dropped uMACSTART: a system command; not an argument of this command: 5\n"},
    };
    expect_items(cases);
    std::string labels = items_of(":" + times(125, "a") + "\nGOTO x\n:" + times(127, "b") + "\nCLEAR\n");
    EXPECT_EQ(labels.substr(0, 13), "3: unknown :b") << labels;
    EXPECT_EQ(items_of("INT v1" + times(1000, ",v234") + "\n"),
              "1: unknown INT: it begins with no word; it went through unchanged\n");
    EXPECT_NE(labels.find("...: of a word of more than 126 characters one is gone"), std::string::npos)
        << labels;
    EXPECT_EQ(items_of(":" + times(126, "b") + "\n" + times(127, "c") + " = 5\n"), "");
    EXPECT_EQ(items_of(times(127, "d") + "e=5\n").substr(0, 12), "1: unknown d");
    EXPECT_EQ(items_of("// " + times(3896, "x") + "\n// " + times(3897, "x") + "LINE 0,0,0,1,1,0\n"),
              "2: unknown //: of a comment of more than 3,900 characters the rest is read as a statement\n");
    std::string long_one = items_of("EXIT " + times(1 << 18, "12345678") + "\nCLEAR\n");
    EXPECT_EQ(long_one,
              "1: lost EXIT: not an argument of this command: " + times(7, "12345678") + "1234...\n");
}

TEST(findings, arguments_that_no_live_line_has_are_lost)
{
    static const finding_case cases[] = {
        {"GETMENU \"Pick\", $opt1, \"Done\"\n", "1: lost GETMENU: no live line has argument 2: $opt1\n"},
        {"GETCUR \"p\",1,2,3,4,5,w,7,\"a\",,,,,,,,,1,8\n",
         "1: lost GETCUR: no live line has argument 18: 1, 19: 8\n"},
        {"GETCUR \"p\",1,2,3,,5,w,7,\"a\",,\"b\"\n",
         "1: lost GETCUR: no live line has argument 8: 7, 9: \"a\", 11: \"b\"\n"
         "1: form GETCUR: an empty menu option that the script didn't have: GETCUR \"p\", 1, 2, 3, , 5, w, "
         "\"||||||||\"\n"},
        {"GETPLANE \"p\", 5, v\n", "1: lost GETPLANE: no live line has argument 2: 5\n"},
        {"EXEC 7, \"prog\"\n", "1: lost EXEC: no live line has argument 1: 7\n"},
        {"LEADER 1,2,3,4,5,6,7,8\n", "1: lost LEADER: no live line has argument 7 (attribute): 7\n"},
        {"WITNESS 1,2,3,4,n,6\n", "1: lost WITNESS: no live line has argument 5 (attribute): n\n"},
        {"LINE 1,2,3,4,5,6,0\nLINE 1,2,3,4,5,6,1-1\nCIRCLE 1,2,3,4\n", ""},
        {"DELENT 5\nDELENT e\nDELENT 1 - 2\n",
         "1: lost DELENT: no live line has argument 1: 5\n2: lost DELENT: no live line has argument 1: e\n"},
        {"GOTO gr\xF6\xDF"
         "e\nPRINT \"gr\xF6\xDF"
         "e\"\n",
         "1: lost GOTO: argument 1: gr\xC3\xB6\xC3\x9F"
         "e is written as gre: characters were dropped\n"},
        {"LINE 0,0,0,1,1,0,a7\nDELENT n1\n",
         "1: lost LINE: no live line has argument 7 (attribute): a7\n"
         "2: lost DELENT: no live line has argument 1: n1\n"},
        {"PRINT \"\",x\nGETSTR \"p\",\"\",$v\nGETMENU \"p\",\"\",\"a\",\"\"\nGETMENU \"p\",\"\"\n",
         "1: lost PRINT: no live line has argument 1: \"\"\n2: lost GETSTR: no live line has argument 2: "
         "\"\"\n"},
        {"CIRCLE 0,0,0,5,0,1,\xE4\nCALL s,\"\",x,\xE4\n",
         "1: lost CIRCLE: no live line has argument 7 (attribute): \xC3\xA4\n"
         "2: byhand CALL: a tip is in its place, and no new form: s, x; the comment lacks argument 2: \"\", "
         "4: \xC3\xA4\n"},
        {"LEVELS gr\xF6\xDF"
         "e,1\n",
         "1: quiet LEVELS: commented out: gr\xC3\xB6\xC3\x9F"
         "e (the comment has gre), 1\n"},
        {"GOTO my\tlabel\nLINE 1,\t2,3\t+ 4,1,1,1\t\r\n",
         "1: lost GOTO: argument 1: my\\x09label is written as mylabel: characters were dropped\n"},
        {"GETPLANE \"p\\n\",n,m\n",
         "1: lost GETPLANE: no live line has argument 2: n\n"
         "1: decoded GETPLANE: argument 1: \"p\\n\" has become \"p\\x0a\"; write it as \"p\\n\"\n"
         "1: form GETPLANE: the rest of a text that began in the comment before it: \", n, m\n"},
        {"CALL dotprod,1,2,3,4,5,6,r\n", "1: check CALL: the new command is below a tip\n"},
    };
    expect_items(cases);
}

TEST(findings, arguments_that_move_up_are_lost)
{
    static const finding_case cases[] = {
        {"GETENT \"p\", v, , w\n",
         "1: lost GETENT: argument 4 has moved up: the empty one before it has no comma\n"},
        {"LABEL 1,2,3,4,5,6,7,8,9,\"s\",,3.5\n",
         "1: lost LABEL: argument 12 has moved up: the empty one before it has no comma\n"
         "1: form LABEL: a comma directly after the word: LABEL, 1, 2, 3, 4, 5, 6, 7, 8, 9, \"s\", 3.5\n"},
        {"LINE 1,2,3,4,5,6,,,3\nWINDOW 1,2,3,4\nGETENT \"p\",v,,,\nSETATTR 1,,3\nEXEC\nEXEC ,\"p\"\n", ""},
        {"GETFLT \"p\",1,r,\"a\",,\"b\"\nGETMENU \"p\",\"\",\"\",\"\"\nGETMENU \"p\",,\"\"\n", ""},
        {"GETFLT \"p\",1,r,\"a\",,,\"b\"\n",
         "1: form GETFLT: an empty menu option of the script is missing: "
         "GETDBL \"p\", 1, r, \"a||b\"\n"},
    };
    expect_items(cases);
}

TEST(findings, values_that_were_fixed_are_frozen)
{
    static const finding_case cases[] = {
        {"m = 2\nSCALE 1,0,0,m\nSCALE 1,0,0,2\n", "2: frozen SCALE: argument 4: m is fixed as 2\n"},
        {"m = 3\nPOLYGON m, 1, 3, p\n",
         "2: check POLYGON: the new command is below a tip\n"
         "2: frozen POLYGON: argument 1 (mode): m is fixed as 2\n"},
        {"s = 1\nGENDIM 0,0,0,0,v,0,0,0,\"s\",,,,,,,s\n",
         "2: frozen GENDIM: argument 16 (style): s is fixed as Bold\n"
         "2: lost GENDIM: no live line has argument 1: 0\n"},
        {"INPUT $fmt\nINPUT \"fmt\"\n",
         "1: frozen INPUT: argument 1 (format): $fmt is written as the text \"$fmt\"\n"},
        {"TEXT 1,(2),\"t\",,,,,,,99\n",
         "1: frozen TEXT: argument 10 (style): 99 is fixed as DEFAULT\n"
         "1: form TEXT: a blank between two values where a comma is expected: "
         "TEXT \"t\", 1 (2), 0.0, 0, 0, 0, 0, , , , , , DEFAULT, , , , , , , ,\n"},
        {"e = -1\nDELENT e\n", "2: frozen DELENT: argument 1: e is fixed as -1\n"},
        {"SCALE 1,2,3,5'\nSCALE 1,2,3,2.5\nSCALE 1,2,3,3000000000\nSCALE 1,2,3,2.0\nDELENT 0'\n",
         "1: frozen SCALE: argument 4: 5' is fixed as 0\n2: frozen SCALE: argument 4: 2.5 is fixed as 2\n"
         "3: frozen SCALE: argument 4: 3000000000 is fixed as -1294967296\n"
         "5: lost DELENT: no live line has argument 1: 0'\n"},
        {"SCALE 1,2,3,(2.5)\nSCALE 1,2,3,5/2\nSCALE 1,2,3,4/2\nDELENT 1/2\nPOINT 1/3,0,0,0/5\nDRAWENT 5/2\n",
         "1: frozen SCALE: argument 4: (2.5) is fixed as 2\n2: frozen SCALE: argument 4: 5/2 is fixed as 2\n"
         "4: lost DELENT: no live line has argument 1: 1/2\n"
         "6: byhand DRAWENT: a tip is in its place, and no new form; the comment lacks argument 1: 5/2 (it "
         "has "
         "2)\n"},
        {"n = 12\nVIEW n,1,0,0,0,1,0,0,0,1\nVIEW 12,1,0,0,0,1,0,0,0,1\n",
         "2: frozen VIEW: argument 1 (number): n has chosen this form by its value, 12\n"},
        {"TEXT 1,2,\"a\",3,,,,,,2.5\n",
         "1: frozen TEXT: argument 10 (style): 2.5 is fixed as Slant\n"
         "1: form TEXT: a blank between two values where a comma is expected: "
         "TEXT \"a\", 1 2, 0.0, 0, 0, 0, 0, 3, , , , , Slant, , , , , , , ,\n"},
        {"PRANGE 1,m,0,0,0,10,10,0\n",
         "1: quiet PRANGE: commented out: 1, 0, 0, 0, 10, 10, 0; the comment lacks "
         "argument 2: m (it has 0)\n"},
    };
    expect_items(cases);
}

TEST(findings, strings_that_cannot_be_read_back_are_decoded)
{
    static const finding_case cases[] = {
        {"PRINT \"say \\\"hi\\\"\"\n",
         "1: decoded PRINT: argument 1: \"say \\\"hi\\\"\" has become \"say \"hi\"\"; "
         "write it as \"say \\\"hi\\\"\"\n"},
        {"PRINT \"C:\\\\temp\"\n",
         "1: decoded PRINT: argument 1: \"C:\\\\temp\" has become \"C:\\temp\"; write it as "
         "\"C:\\\\temp\"\n"},
        {"PRINT \"first\\nsecond\"\n",
         "1: decoded PRINT: argument 1: \"first\\nsecond\" has become "
         "\"first\\x0asecond\"; write it as \"first\\nsecond\"\n"},
        {"PRINT `say \"hi\"`\n",
         "1: decoded PRINT: argument 1: `say \"hi\"` has become \"say \"hi\"\"; write it as `say \"hi\"`\n"},
        {"MODE a\nLEVELS 1, 2\nGROUP \"a\\nb\", 1, 2\n",
         "2: quiet LEVELS: commented out: 1, 2\n"
         "3: quiet GROUP: commented out: \"a\\nb\", 1, 2\n"
         "3: decoded GROUP: argument 1: \"a\\nb\" has become \"a\\x0ab\"; write it as \"a\\nb\"\n"
         "3: form GROUP: the rest of a text that began in the comment before it: b\", 1, 2\n"},
        {"LABEL 0,0,0,9,9,0,1,2,3,\"s\",,,,,,,,,,,5,7\nCODE \"\"\n",
         "1: lost LABEL: no live line has argument 21 (attribute): 5; argument 22 has moved up: the empty "
         "one before "
         "it has no comma\n"
         "1: form LABEL: a comma directly after the word: LABEL, 0, 0, 0, 9, 9, 0, 1, 2, 3, \"s\", 7\n"
         "2: lost CODE: the statement has left nothing: \"\"\n"},
        {"ORDDIM 0,0,0,\"\",5,1,2,,9\n",
         "1: lost ORDDIM: the statement has left nothing: 0, 0, 0, \"\", 5, 1, 2, , 9\n"},
        {"CALL s, 1, , n\n", "1: byhand CALL: a tip is in its place, and no new form: s, 1, , n\n"},
        {"GROUP \"a // b\nc\", 1, 2\n",
         "1: quiet GROUP: commented out: \"a // b\\x0ac\", 1, 2\n"
         "1: form GROUP: the rest of a text that began in the comment before it: "
         "c\", 1, 2\n"},
        {"PRINT \"open\nEXIT", "1: decoded PRINT: argument 1: \"open\\x0aEXIT has no closing quote\n"},
        {"PRINT \"a\\000b\"\n",
         "1: decoded PRINT: argument 1: \"a\\000b\" has become \"a\"; write it as \"a\\000b\"\n"},
        {"WRITE f, 1, \"a,b\", x\nWRITE f, 1, \"a, b\"\nLINE 0,0,6\",5,8\",0\n",
         "1: decoded WRITE: argument \"a, b\" has the blanks behind its commas changed; write it as "
         "\"a,b\"\n"},
        {"PRINT `plain`, \"a\\tb\", \"100%\"\n", ""},
        {"INPUT \"%d\\n%s\\r\", a, b\n", ""},
        {"PRINT \"C:\\\\\"\n",
         "1: decoded PRINT: argument 1: \"C:\\\\\" has become \"C:\\\"; write it as \"C:\\\\\"\n"},
    };
    expect_items(cases);
    std::string note = items_of("NOTE 10,10,\"first\\nsecond\"\n");
    EXPECT_NE(note.find("1: decoded NOTE: argument 3 (string): \"first\\nsecond\" has become"), note.npos)
        << note;
}

// ---- The form of live lines ----

// Every oddity that is kept on purpose and is in a live line: the kind that reports it, and its reason.
TEST(findings, kept_oddities_of_live_lines_are_reported)
{
    static const struct {
        const char *statement, *kind, *reason;
    } cases[] = {
        {"TEXT 1,2,\"t\"", "form", "a blank between two values where a comma is expected"},
        {"FNOTE 1,n,f", "form", "a blank between two values where a comma is expected"},
        {"GETENTXY x, y, e, 1", "form", "a blank between two values where a comma is expected"},
        {"POLYLINE 3, p, 0, 1, 0", "form", "a comma directly after the word"},
        {"LABEL 1,2,3,4,5,6,7,8,9,\"s\"", "form", "a comma directly after the word"},
        {"CALL dotprod,1,,3,4,5,6,r", "form", "an assignment lacks its value: adVec1[1] ="},
        {"GETMENU \"p\",\"a\",,,\"b\"", "form", "an empty menu option of the script is missing"},
        {"GETMENU \"p\",\"a\",,\"\"", "form", "an empty menu option of the script is missing"},
        {"GETCUR \"p\",1,2,3,4,5,w,7,\"a\",,,\"b\"", "form", "an empty menu option of the script is missing"},
        {"GETMENU \"p\",\"a\",,,,,,,,,,5", "lost", "no live line has argument 12: 5"},
        {"GETINT \"p\",1,v,\"a\",,,,,,,,,5", "lost", "no live line has argument 13: 5"},
        {"TEXT 1,2,\"t\",,,,,,,-3", "lost", "argument 10 (style): -3 (what follows it has moved up)"},
        {"LABEL 1,2,3,4,5,6,7,8,9,\"s\",1,2,3,4,5,6,7,8,9,10,11", "lost",
         "no live line has argument 21 "
         "(attribute): 11"},
        {"VPOLYGON 1,2,3,p,4,5,6,7,8,9,10,11", "lost", "12 (attribute): 11"},
        {"FTEXT 1 - 2,-3,\"x\"", "form", "a blank between two values where a comma is expected"},
        {"TEXT 1,2,\"say \\\"hi\\\"\"", "form", "a blank between two values where a comma is expected"},
        {"GETMENU \"p\",\"a|b\"", "form", "an option of the script has a bar, which divides options"},
        {"PROMPT \"a\", q // b, c", "form", "a comment inside the line"},
        {"FTEXT 1,2,f // c", "form", "a blank between two values where a comma is expected"},
        {"FTEXT 1,2,f // c", "form", "a comment inside the line"},
        {"LABEL 1,2,3,4,5,6,1,8,9,\"a\\nb\"", "form", "a comma directly after the word"},
        {"NOTE 1,2,\"a\\n// b\"", "form", "a blank between two values where a comma is expected"},
        {"GETCUR \"p\",1,2,x,y,z,v,,\"a\",\"b\"", "form", "an empty menu option that the script didn't have"},
        {"PRINT (a", "form", "a parenthesis without its pair"},
        {"GETENTXY 1, 2, (e", "form", "a parenthesis without its pair"},
        {"NOTE 10, 20, (a, 3.5", "form", "a parenthesis without its pair"},
        {"TEXT 1, 2, Hello World", "form", "a blank between two values where a comma is expected"},
        {"TEXT 1, 2, Hello World", "form", "two values with neither a comma nor an operator between them"},
        {"LABEL 0,0,0,1,1,0,1,2,2,(a", "form", "a parenthesis without its pair"},
        {"PRINT a b", "form", "two values with neither a comma nor an operator between them"},
        {"CLEAR a b c", "form", "two values with neither a comma nor an operator between them"},
        {"SET COLOR,,2", "lost", "no live line has argument 3: 2"},
        {"PRINT \"a\",,b", "lost", "no live line has argument 3: b"},
        {"INPUT \"%*d%d\",a,b", "lost", "no live line has argument 2: a, 3: b"},
        {"DELENT 7", "lost", "no live line has argument 1: 7"},
        {"DELCOP 1, 2", "lost", "no live line has argument 2: 2"},
    };
    for (const auto &c : cases) {
        std::string items = items_of(c.statement + std::string("\n"));
        std::string kind = std::string("1: ") + c.kind + " ";
        bool found = false;
        for (size_t at = 0; at < items.size(); at = items.find('\n', at) + 1)
            found |= items.compare(at, kind.size(), kind) == 0 &&
                     items.substr(at, items.find('\n', at) - at).find(c.reason) != std::string::npos;
        EXPECT_TRUE(found) << c.statement << "\n" << items;
    }
}

TEST(findings, empty_places_of_the_new_form_are_no_fault)
{
    static const finding_case cases[] = {
        {"EXIT\nABORT\nGETKEY\nWINDOW 1,2,3,4\nGETSTR \"p\",\"d\",v\nCIRCLE 1,2,3,4,,,5\n", ""},
        {"GETFLT \"p\",1,r\nGETFLT \"p\",1,r,\"a\"\nSETATTR 1,,,5\nGETLTYPE \"p\",v\n", ""},
        {"CIRCLE 0,0,0,5\"\nPRINT \"a\", 6\", \"b\"\nCIRCLE 0,0,0,5'6\"\n", ""},
        {"PRINT -1, ~2, (a,b), \"a|b||\", f(1)[2]\nSET COLOR, 5 6\nMODE x y\nGOTO \"a\nIF a && b\n", ""},
    };
    expect_items(cases);
}

TEST(findings, the_form_of_a_line)
{
    static const struct {
        const char *line, *fault;
    } cases[] = {
        {"LINE 0, , , , 1", ""},
        {"EXIT ", ""},
        {"PRINT \"a, b\", \"(\", x[1,2], max(1, 2)", ""},
        {"LINE 5' 6\", 1.5e3, 0x1F, @key, $a", ""},
        {"LINE -x, ~y, a == b, a <= b, a && b, a ? b : c", ""},
        {"a[0] = 1 + 2", ""},
        {"a[0] = \"1\"", ""},
        {"TEXT \"abc\", 1 2, 0.0", "two values with neither a comma nor an operator between them"},
        {"PRINT a.b", "two values with neither a comma nor an operator between them"},
        {"LABEL, 1, 2", ""}, // the comma is reported apart
        {"PRINT n;", "a character that no expression has"},
        {"PRINT \"abc", "an open quote"},
        {"LINE (1, 2", "a parenthesis without its pair"},
        {"LINE 1), 2", "a parenthesis without its pair"},
        {"LINE 1, 2 +", "an operator lacks its operand"},
        {"LINE 1, * 2", "an operator lacks its operand"},
        {"a[0] = ", "an assignment lacks its value"},
        {"GETMENU \"||a||b|\"", ""},
        {"GETCUR x, |||", "an operator lacks its operand"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(live_form_fault(c.line, {}), c.fault) << c.line;
    EXPECT_EQ(live_form_fault("WRITE f, a b", {"a b"}), "") << "as the script had it";
}

// ---- Statements ----

TEST(findings, failed_and_unknown_statements)
{
    static const finding_case cases[] = {
        {"LINE 0,0,0,1,1,0)\nDELENT 5\n",
         "1: broken LINE: argument 6: the parentheses don't pair up; left: 0)\n"
         "2: lost DELENT: no live line has argument 1: 5\n"},
        {"LINE 0,0,0,1,1,0) \t\n\nDELENT -1\nLINE 1\nRETRUN\n",
         "1: broken LINE: argument 6: the parentheses don't pair up; left: 0)\n"
         "4: broken LINE: argument 2 is missing; left: 1\n"
         "5: unknown RETRUN: RETRUN is no command; it went through unchanged\n"},
        {"PRINT \"a\nEXIT\nPRINT \"b\"\nEXIT\n",
         "1: broken PRINT: argument 1: something follows the closing quote; the string goes on over the next "
         "2 lines; left: a, \"\n"},
        {"LINE )\nEXIT\n", "1: broken LINE: argument 1: the parentheses don't pair up; left: )\n"},
        {"LINE 1,2) PRINT \"a\nb\" x // c\n",
         "1: broken LINE: argument 2: the parentheses don't pair up; left: 2), a, // c; a comment on the "
         "command's line: give it a line of its own\n"},
        {"PRINT \"a\" // b\nEXIT\n",
         "1: broken PRINT: argument 1: something follows the closing quote; left: a, / b; a "
         "comment on the command's line: give it a line of its own\n"},
        {"LINE 1,foo(3), \\\n bar 4 \\\n baz\nLINEE 1\n",
         "1: broken LINE: argument 2: foo is not a function; left: foo, bar 4  baz\n"
         "4: unknown LINEE: LINEE is no command; it went through unchanged\n"},
        {"IF x PRINT \"y\"\n",
         "1: broken IF: argument 1: syntax error; left: x; PRINT on the line of an IF: give "
         "it a line of its own\n"},
        {"LINE(0,0,0,1,1,0)\nEXIT,1\n",
         "1: unknown LINE: a parenthesis directly after LINE; it went through unchanged\n"
         "2: unknown EXIT: a comma directly after EXIT; it went through unchanged\n"},
        {"100 LINE 0,0,0,1,1,0\n", "1: unknown 100: a number precedes LINE; it went through unchanged\n"},
        {"\xEF\xBB\xBFLINE 0,0,0,1,1,0\n",
         "1: unknown LINE: a byte order mark begins the line; it "
         "went through unchanged\n"},
        {"w = 200 // width\n",
         "1: unknown w: the value wasn't taken: // on the line; it went through unchanged\n"},
        {"a = 1 / 0\nb = b(1\n",
         "1: unknown a: its value couldn't be computed: divide by zero; it went through unchanged\n"
         "2: unknown b: its value couldn't be computed: syntax error; it went through unchanged\n"},
        {"CLOSE f\\,\nEXEC , c:\\t\\,\nPRINT \"a\\032b\"\n",
         "1: form CLOSE: a backslash at the line's end, which joins the next line to it: CLOSE f\\\n"
         "2: form EXEC: a backslash at the line's end, which joins the next line to it: // EXEC , c:\\t\\\n"
         "2: form EXEC: a backslash at the line's end, which joins the next line to it: EXEC c:\\t\\\n"
         "2: form EXEC: a character that no expression has: EXEC c:\\t\\\n"
         "3: decoded PRINT: argument 1: \"a\\032b\" has become \"a\\x1ab\"; write it as \"a\\032b\"\n"},
        {"GOTO [x]\n", "1: unknown GOTO: a bracket after GOTO; it went through unchanged\n"},
        {"x = 1\nPRINT \"byte\"\n\x1a\n \x1a\x1a\n", ""},
        {"BREAD 1, f, v\n",
         "1: gone BREAD: the new dialect has no such command; the comment lacks argument 1: 1, "
         "2: f, 3: v\n"},
    };
    expect_items(cases);
}

TEST(findings, what_an_if_guards)
{
    static const finding_case cases[] = {
        {"IF x\nPRINT \"a\nb\"\nIF x\n\nREM none\nGOTO a\nIF x\n", ""},
        {"IF x\n#LINE 3\nGOTO a\n", "2: dropped #LINE: nothing is written of it\n"},
        {"IF x\nARRAY a[2] = { 1,\n2 }\n", ""},
        {"IF a\niREDRAW\n",
         "2: dropped iREDRAW: a system command\n"
         "1: guarded IF: iREDRAW under it has become nothing\n"},
        {"IF a\nCALL dotprod,1,2,3,4,5,6,r\n",
         "2: check CALL: the new command is below a tip\n"
         "1: guarded IF: CALL under it has become several statements; it guards only the first\n"},
        {"SET COLLECT,1\nIF a\nORDDIM 1,2,3,\"t\",w,5,1\n",
         "1: quiet SET: commented out: COLLECT, 1\n"
         "3: byhand ORDDIM: the new form is a comment: 1, 2, 3, \"t\", w, 5, 1\n"
         "2: guarded IF: ORDDIM under it has become several statements; it guards only the first\n"},
        {"IF a\nLINE 1\n",
         "2: broken LINE: argument 2 is missing; left: 1\n"
         "1: guarded IF: LINE under it has become no statement: its arguments failed\n"},
        {"IF a\nCIRCLE ,5\nGOTO b\n",
         "2: broken CIRCLE: argument 1 is missing; left: 5\n"
         "1: guarded IF: CIRCLE under it has become no statement: its arguments failed; it guards 5 now\n"},
        {"IF a\nCLS\nGOTO b\n",
         "2: gone CLS: the new dialect has no such command\n"
         "1: guarded IF: CLS under it has become comments alone; it guards GOTO now\n"},
        {"IF a\nGROUP \"a\\nb\",1,2\nGOTO b\n",
         "2: quiet GROUP: commented out: \"a\\nb\", 1, 2\n"
         "2: decoded GROUP: argument 1: \"a\\nb\" has become \"a\\x0ab\"; write it as \"a\\nb\"\n"
         "2: form GROUP: the rest of a text that began in the comment before it: b\", 1, 2\n"
         "1: guarded IF: GROUP under it has become a comment, and the rest of a text that began in it\n"},
    };
    for (const finding_case &c : cases) {
        std::string items = items_of(c.script);
        EXPECT_EQ(items, c.items) << c.script;
    }
}

TEST(findings, an_added_dimension_needs_its_first)
{
    const std::string dimension = "ORDDIM 0, 0, 0, w, 5, 1, 2\n";
    EXPECT_EQ(items_of(dimension), "1: lost ORDDIM: the statement has left nothing: 0, 0, 0, w, 5, 1, 2\n");
    std::string first = "1: byhand ORDDIM: the new form is a comment: 0, 0, 0, w, 5, 1, 2\n";
    EXPECT_EQ(items_of(dimension, {1, 0}), first);
    std::string added = items_of(dimension, {1, 5});
    EXPECT_NE(added.find("the comment lacks argument 6: 1, 7: 2\n"), added.npos) << added;
    EXPECT_NE(added.find("1: base ORDDIM: "), added.npos) << added;
    EXPECT_EQ(items_of(dimension + dimension, {1, 0}).find("base"), added.npos);
    const std::string groups =
        "SET COLLECT,1\n" + dimension + "SET COLLECT,0\n" + dimension + "SET COLLECT,1\n";
    EXPECT_NE(items_of(groups + dimension).find("6: base ORDDIM"), added.npos) << "its first one was outside";
}

TEST(findings, why_reading_stopped)
{
    static const finding_case cases[] = {
        {"INT\nREM\n", "1: stopped INT: a declaration without an item; 1 line was not read\n"},
        {"INT 5\nREM\n",
         "1: stopped INT: an item of the declaration begins with no name, or has a quote or "
         "unpaired brackets; 1 line was not read\n"},
        {"INT a b\nREM\n",
         "1: stopped INT: two words of the declaration have no comma between them; 1 line was not read\n"},
        {"INT a[1]b\n", "1: stopped INT: an item of the declaration is no name with subscripts\n"},
        {"ARRAY a[2] = 1\nREM\n",
         "1: stopped ARRAY: the initial values lack one of their braces, or belong to a "
         "string list; 1 line was not read\n"},
        {"ARRAY a[2] = { 1,\nREM\n", "1: stopped ARRAY: the script ends inside this statement\n"},
        {"STRING $a\n", "1: stopped STRING: a STRING needs one size, and an SLIST two\n"},
        {"ON x\n", "1: stopped ON: ON without GOTO\n"},
        {"CLEAR\nREM end", ""},
        {"CLEAR\n// en\x1a\n", ""},
        {"REM en\x1a"
         "d\nCLEAR\n",
         "1: stopped : byte 26, which ends a script; 2 lines were not read\n"},
        {"PRINT \"a\"\n\x1aREM\n", "2: stopped : byte 26, which ends a script; 1 line was not read\n"},
        {":<b>longer_name\n:<B>LONGER_NAmed\x1b\nREM\n",
         "2: stopped :<B>LONGER_NAmed\\x1b: second label <B>LONGER_NA (12 characters of a label count); "
         "the first is in line 1; 1 line was not read\n"},
        {"REM\nINT a b", "2: stopped INT: two words of the declaration have no comma between them\n"},
    };
    expect_items(cases);
    std::string labels;
    for (int i = 0; i < 1001; i++)
        labels += ":l" + std::to_string(i) + "\n";
    EXPECT_EQ(items_of(labels + "REM\n"),
              "1001: stopped :l1000: label 1,001: a script has at most 1,000; 1 line was not read\n");
}

// ---- What is said of the tree ----

// What murlreport prints for the tree's scripts, in a folder of its own.
static std::string report_of_tree(const std::string &arguments)
{
    static const fs::path base = fresh_folder("findings");
    fs::copy(fs::path(TEST_SOURCE_DIR) / "tests/report/tree", base / "work",
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    setenv("FOLDER", (base / "work").c_str(), 1);
    setenv("PROGRAM", TEST_PROGRAM, 1);
    std::string command = "cd \"$FOLDER\" && \"$PROGRAM\" " + arguments + " >../out 2>&1 </dev/null";
    (void)!system(command.c_str());
    return read_file(base / "out");
}

// Compares with a wanted file, or rewrites that.
static void expect_wanted(const char *name, const std::string &got)
{
    fs::path want = fs::path(TEST_SOURCE_DIR) / "tests/report" / name;
    std::string diff = unified_diff(read_file(want), got);
    if (!diff.empty() && getenv("MURL_UPDATE_WANT") != nullptr) {
        write_file(want, got);
        printf("%s rewritten:\n%s", want.c_str(), diff.c_str());
        return;
    }
    EXPECT_EQ(diff, "") << want;
}

TEST(findings, each_planted_fault_of_the_tree_and_nothing_else)
{
    std::string csv = report_of_tree("--quiet --csv - .");
    expect_wanted("tree.csv", csv);
    for (const kind_row &kind : kind_table)
        EXPECT_NE(csv.find(std::string(",") + kind.word + ","), std::string::npos) << kind.word;
    expect_wanted("menu.txt", report_of_tree("menus/menu.mrl"));
    std::string report = report_of_tree("--quiet --json - menus/menu.mrl");
    expect_wanted("menu.json", nlohmann::json::parse(report).dump(1) + "\n");
}
