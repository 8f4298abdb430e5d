// What --convert, --adopt and --accept do to files: the loop of fixing, converting and finishing by hand.
#include "run_report.h"

#include "common/diff.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

namespace fs = std::filesystem;
using json = nlohmann::json;

// Each line of it leaves an item.
static const std::string loop_script =
    "REM a\nSETTEXT\nLINDIM 0,0,0,w,5,1,2\nREM b\nCLS\niREDRAW\nCODE \"x\"\nGROUP \"A\",1,0\nEXIT\n";

// ---- States of outputs ----

TEST_F(report_test, mending_a_script_makes_its_output_old)
{
    write("a.mrl", ":a\nLINE 0,0,0,1,1,0\n:A\nLEVELS 1,4\nLINDIM 0,0,0,w,5,1,2\nDELENT 5\nCLS\n");
    EXPECT_EQ(run("--convert .").status, 1);
    edit("a.mrl", ":A", ":b");
    report_result mended = run(".");
    EXPECT_EQ(mended.status, 1);
    EXPECT_TRUE(has(mended.out, "0 have nothing left to do")) << mended.out;
    EXPECT_TRUE(has(mended.out, "a_conv.mrl: output old: ")) << mended.out;
    EXPECT_FALSE(has(mended.out, "[changed]")) << mended.out;
    report_result converted_again = run("--convert .");
    EXPECT_EQ(converted_again.err, "") << "nobody has edited it";
    EXPECT_EQ(read("a_conv.mrl"), converted(read("a.mrl")));
    EXPECT_EQ(names(), ".murlreport a.mrl a_conv.mrl") << "what is remembered needs no copy";
}

TEST_F(report_test, knows_what_became_of_an_output)
{
    write("a.mrl", loop_script);
    EXPECT_EQ(output_state(), "none");
    EXPECT_EQ(run("--convert .").status, 1);
    const std::string was = read("a_conv.mrl");
    EXPECT_EQ(output_state(), "same");
    std::string crlf = "\xEF\xBB\xBF";
    for (char c : was)
        crlf += c == '\n' ? "\t \r\n" : std::string(1, c);
    write("a_conv.mrl", crlf);
    EXPECT_EQ(output_state(), "same") << "the habits of editors are no edit";
    for (const std::string &cut : {std::string(), std::string(9, '\0'), std::string("\n \r\n"),
                                   was.substr(0, was.size() / 2), was.substr(0, 3)}) {
        write("a_conv.mrl", cut);
        EXPECT_EQ(output_state(), "cut");
        EXPECT_FALSE(has(states(), "changed"));
        EXPECT_EQ(run(".").status, 1);
    }
    write("a_conv.mrl", was.substr(0, was.find("REM b")));
    EXPECT_EQ(output_state(), "edited") << "lines deleted at the end are an edit";
    write("a_conv.mrl", "mine\n" + was);
    EXPECT_EQ(output_state(), "edited");
    json report = report_of("a.mrl");
    EXPECT_TRUE(report["edited"]);
    EXPECT_TRUE(report["current"]);
    edit("a.mrl", "EXIT\n", "EXIT\nREM end\n");
    EXPECT_EQ(output_state(), "behind");
    report = report_of("a.mrl");
    EXPECT_TRUE(report["edited"]);
    EXPECT_FALSE(report["current"]);
    write("a_conv.mrl", "mine\n" + was + "REM end\n");
    EXPECT_EQ(output_state(), "edited") << "it has what a merge would bring";
    write("a_conv.mrl", was);
    EXPECT_EQ(output_state(), "old");
    fs::remove(folder / ".murlreport/a_conv.mrl.last");
    EXPECT_EQ(output_state(), "unknown");
}

TEST_F(report_test, a_report_alone_writes_nothing)
{
    write("a.mrl", loop_script);
    run("--convert .");
    edit("a_conv.mrl", "REM b", "REM mine");
    edit("a.mrl", "REM a", "REM c");
    auto all = [&] {
        std::string text = names() + names(".murlreport");
        for (const char *name : {"a_conv.mrl", ".murlreport/written.csv", ".murlreport/a_conv.mrl.last"})
            text += read(name);
        return text;
    };
    const std::string before = all();
    run(".");
    run("--all --json - a.mrl");
    EXPECT_EQ(all(), before);
    EXPECT_EQ(read(".murlreport/written.csv").find("output,script_hash,version,"), 0u);
    EXPECT_EQ(names(".murlreport"), "a_conv.mrl.last written.csv");
}

TEST_F(report_test, follows_the_edits_of_a_converted_script)
{
    write("a.mrl", loop_script);
    auto wanted = [](const char *settext, const char *lindim, const char *cls) {
        return std::string("2 lost ") + settext + "\n7 lost open\n5 gone " + cls + "\n3 byhand " + lindim +
               "\n8 quiet open\n6 dropped none\n";
    };
    EXPECT_TRUE(has(states(), "3 byhand none"));
    EXPECT_EQ(run("--convert a.mrl").status, 1);
    EXPECT_EQ(states(), wanted("open", "open", "open"));

    edit("a_conv.mrl", "REM b", "LINDIM 1, 2, 3\nREM b");
    EXPECT_EQ(states(), wanted("open", "open", "open")) << "a line put beside is no work on an item";
    edit("a_conv.mrl", "REM b", "REM mine");
    EXPECT_EQ(states(), wanted("open", "open", "open")) << "nor is one replaced beside";

    std::string edited = read("a_conv.mrl");
    size_t tip = edited.find("// CONVERSION TIP");
    write("a_conv.mrl", edited.replace(tip, edited.find('\n', tip) + 1 - tip, ""));
    EXPECT_EQ(states(), wanted("open", "changed", "open")) << "any of its own lines";
    edit("a_conv.mrl", "REM **** WARNING: CLS", "VIEWCLEAR // CLS");
    EXPECT_EQ(states(), wanted("open", "changed", "changed"));
}

// What the line that stands in place of the written one has decides.
TEST_F(report_test, looks_at_what_an_edit_has_brought)
{
    write("a.mrl", "e = -1\nDELENT e\nPRINT \"a\\\"b\"\nREM x\nLINE 0,0,0,1,1,0,0,2,3,4,5,6,7,8,extra\n");
    run("--convert a.mrl");
    const std::string was = read("a_conv.mrl");
    ASSERT_TRUE(has(states(), "2 frozen open")) << states() << was;
    edit("a_conv.mrl", "DELENT -1", "DELENT -1 // e is -1");
    EXPECT_TRUE(has(states(), "2 frozen open")) << "the value is still there";
    edit("a_conv.mrl", "DELENT -1 // e is -1", "DELENT e");
    EXPECT_TRUE(has(states(), "2 frozen changed"));
    ASSERT_TRUE(has(states(), "3 decoded open")) << states() << was;
    edit("a_conv.mrl", "PRINT \"a\"b\"", "PRINT  \"a\"b\"");
    EXPECT_TRUE(has(states(), "3 decoded open")) << "the string is still the decoded one";
    edit("a_conv.mrl", "PRINT  \"a\"b\"", "PRINT \"a\\\"b\"\"");
    EXPECT_TRUE(has(states(), "3 decoded open")) << "it has a quote too many now";
    edit("a_conv.mrl", "PRINT \"a\\\"b\"\"", "PRINT \"a\\\"b\"");
    EXPECT_TRUE(has(states(), "3 decoded changed"));
    ASSERT_TRUE(has(states(), "5 lost open")) << states() << was;
    std::string edited = read("a_conv.mrl");
    size_t line = edited.rfind("LINE");
    write("a_conv.mrl", edited.insert(edited.find('\n', line), " // looked at"));
    EXPECT_TRUE(has(states(), "5 lost open")) << "the argument isn't there";
    edit("a_conv.mrl", " // looked at", ", 8, extra");
    EXPECT_TRUE(has(states(), "5 lost changed")) << states() << read("a_conv.mrl");
    write("a_conv.mrl", was);
    EXPECT_FALSE(has(states(), "changed"));
}

// Edits that look like work, with what is left to do after each.
TEST_F(report_test, an_edit_that_does_nothing_ends_no_item)
{
    static const struct {
        const char *script, *from, *to, *state;
    } cases[] = {
        {"GETENTXY 1,2,e,1\n", ", 1", ", 1 // ok?", "1 form open"},
        {"TEXT 1,2,\"a\\\"b\",h\n", "TEXT \"a\"b\"", "TEXT \"a\\\"b\"", "1 decoded changed\n1 form open"},
        {"TEXT 1,2,\"a\\\"b\",h\n", "\"a\"b\", 1 2", "\"a\\\"b\", 1, 2", "1 form changed"},
        {"GETMENU \"p\",\"a\",,,\"b\"\n", "a||b", "c||b", "1 form open"},
        {"GETMENU \"p\",\"a\",,,\"b\"\n", "a||b", "a|||b", "1 form changed"},
        {"GETENT \"p\", v, , w\n", "v, w", "v , w, // x", "1 lost open"},
        {"GETENT \"p\", v, , w\n", "v, w", "v, , w", "1 lost changed"},
        {"BOX 1,2\n", "BOX 1,2", "box 1, 2 // ?", "1 unknown open"},
        {"BOX 1,2\n", "BOX 1,2", "// BOX 1,2", "1 unknown open"},
        {"BOX 1,2\n", "BOX 1,2", "RECTANGLE 1,2", "1 unknown changed"},
        {"BOX 1,2\n", "BOX 1", "BOX \t 1", "1 unknown open"},
        {"w = 2 // b\n", " // b", "", "1 unknown changed"},
        {"NOTE 1,2,\"a\\nb\"\n", "\"a\nb\", 1 2", "\"a\\nb\", 1 2", "1 decoded changed\n1 form open"},
        {"NOTE 1,2,\"a\\nb\"\n", "\"a\nb\", 1 2", "\"a\\nb\", 1, 2",
         "1 decoded changed\n1 form open\n1 form changed"},
        {"n=2\nTEXT 1,2,\"a\\nb\",3,,,,,,n\n", "TEXT \"a\nb\"", "TEXT \"a\\nb\"", "2 frozen open"},
        {"n=2\nTEXT 1,2,\"a\\nb\",3,,,,,,n\n", "TEXT \"a\nb\"", "TEXT \"a\\nb\"", "2 decoded changed"},
        {"TEXT x,-5,\"a\",3\n", "x -5, 0.0, 0", "x -5, 0.0, 4", "1 form open"},
        {"TEXT x,-5,\"a\",3\n", "x -5", "x, -5", "1 form changed"},
        {"FTEXT 1,2,notes.txt,3\n", "1 2", "1, 2", "1 form changed"},
        {"LABEL 1,2,3,4,5,6,7,8,9,\"s\"\n", "LABEL,", "LABEL ,", "1 form open"},
        {"LABEL 1,2,3,4,5,6,7,8,9,\"s\"\n", "LABEL,", "LABEL", "1 form changed"},
        {"GETENTXY 1, 2, e, , v\n", "1, 2 e, v", "1, 2, e, v", "1 lost open\n1 form changed"},
        {"GETENTXY 1, 2, e, , v\n", "1, 2 e, v", "1, 2, e, , v", "1 lost changed\n1 form changed"},
        {"CIRCLE 1,2,0,3,7\n", "1, 2, 0, 3, 0\n", "1, 2, 0, 4, 0\nCIRCLE 9, 9, 0, 1, 7\n", "1 lost open"},
        {"IF n\ndYESNO 1,1\nLNIE 0\n", "LNIE", "LINE", "1 guarded open"},
        {"n=1\nXHATCH n,1,p,2\n", "XHATCH 1, p, , ", "XHATCH n, 1, p, 2", "2 frozen changed\n2 lost changed"},
        {"GROUP \"g\",1,2\n", "REM GROUP", "GROUP", "1 quiet changed"},
        {"WAIT 2\nSCALE 1,2,3,n\n", "WAIT 2\nSCALE 0, 1, 2, 3", "SCALE 0, 1, 2, 9\nWAIT 3", "2 frozen open"},
        {"WAIT 2\nBOX 1\n", "WAIT 2\nBOX 1", "box  1\nWAIT 3", "2 unknown open"},
        {"LINE 0,0,0,1,1,0\nLINE 1,1,0,2,2,0,3\n", "LINE 0, 0, 0, 1, 1, 0, 0, , , , , , \nLINE 1, 1, 0, 2, 2",
         "LINE 1, 1, 0, 5, 5", "2 lost open"},
        {"CIRCLE 1,2,0,3\nCIRCLE 4,4,0,6,7\n", "CIRCLE 1, 2, 0, 3, 0, , , , , , \nCIRCLE 4, 4, 0, 6, 0",
         "CIRCLE 4, 4, 0, 6, 7\nWAIT 1", "2 lost changed"},
        {"NOTE 10,-5,\"a\",,,,,,,,,,,,,,,,,9\n", "10 -5", "10 -5, 9", "1 form open"},
        {"TEXT 1,2,\"a\"\n", "1 2, 0.0, 0, 0, 0, 0, , , , , , DEFAULT, , , , , , , , ", "1, 2",
         "1 form changed"},
        {"CALL dotprod,1,,3,4,5,6,r\n", "adVec1[1] = ", "// adVec1[1] = ", "1 form open"},
        {"n=1\nSCALE 2,3,4,n\n", "SCALE 1", "SCALE 1*n", "2 frozen changed"},
        {"n=12\nVIEW n,1,0,0,0,1,0,0,0,1,7\n", "0, 1\n", "0, 1, 7\n", "2 frozen open"},
        {"IF a\nREAD f,1,x\nLINE 0,0,0,1,1,0,3\n", "IF a\n", "IF a\nGETKEY\n", "1 guarded changed"},
        {"GROUP \"g\",1,2\n", "REM GROUP", "REM TODO GROUP", "1 quiet open"},
        {"GROUP \"a // b\nc\",1,2\n", "c\", 1", "// c\", 1", "1 form changed"},
        {"LEVELS 1,2\n", "LEVELS 1, 2", "LEVELS 1, 2 todo", "1 quiet open"},
        {"LINE 0,0,x y,1,1,0\n", " x\n", "LINE 0,0,0,1,1,0\n", "1 broken open"},
        {"LINE 0,0,x y,1,1,0\n", " x\n1,1,0\n", "LINE 0,0,0,1,1,0\n", "1 broken changed"},
        {"IF n > 2\nCLS\nPRINT 1\n", "IF n > 2", "if n>2 // x", "1 guarded open"},
        {"GROUP \"L\xF6\",1,2\nCLEAR\n", "L\xF6", "L\xC3\xB6", "1 quiet open"},
        {"PRINT \"\xF6 \\\"x\\\"\"\n", "\xF6", "\xC3\xB6", "1 decoded open"},
        {"GETINT \"[k|l]\", 5, n, \"a\", , , \"b\", , \"c\"\n", "5", "6", "1 form open"},
        {"GETINT \"[k|l]\", 5, n, \"a\", , , \"b\", , \"c\"\n", "b|c", "b||c", "1 form changed"},
        {"GETMENU \"p\", \"a\", , , \"b\", , \"c|d\"\n", "\"a", "\"aa", "1 form open"},
        {"GETMENU \"p\", \"a\", , , \"b\", , \"c|d\"\n", "b|c|d", "b||c/d", "1 form changed"},
        {"GETSTR \"p\", \"x|y\", $v, \"a|b\"\n", ", \"a|b\"\n", ", \"ab\" // |\n", "1 form changed"},
        {"GETMENU \"p\", \"a\\\\\", \"b\"\n", "a\\|b", "a\\\\|b", "1 decoded changed"},
        {"INPUT \"\\\\%d\", a\n", "\\%d", "\\\\%d", "1 decoded changed"},
        {"CLOSE f\\,\n", "f\\", "f", "1 form changed"},
        {"PRINT a b, 1\n", "1", "2", "1 form open"},
        {"CLOSE report.txt // done\n", " // done", "", "1 form changed"},
        {"GETENTXY x, y, e, 1\n", "y e, 1", "y+1 e, 1, t", "1 form open"},
        {"PRINT \"c:\\\\new\\\\\"\n", "new\\", "new\\\\", "1 decoded open"},
        {"PRINT \"c:\\\\new\\\\\"\n", "c:\\new\\", "c:/new/", "1 decoded changed"},
        {"TEXT 1, 2, a b\n", "1 2", "1, 2", "1 form changed\n1 form open"},
        {"TEXT 1, 2, a b\n", "TEXT a b", "TEXT \"a b\"", "1 form open\n1 form changed"},
        {"GETCUR \"C\", 1, 2, x, y, z, k, , \"Yes\", \"No\"\n", "\"|Yes\"", ", \"Yes|No\"",
         "1 lost changed\n1 form changed"},
        {"PRINT a b, 1\n", "a b", "\"a b\"", "1 form changed"},
        {"NOTE 1,2,`a \"b\"`\n", "NOTE \"a \"b\"\", 1 2", "NOTE `a \"b\"`, 1, 2",
         "1 decoded changed\n1 form changed"},
        {"SET \"a,b\", 3\n", "\"a, b\"", "\"a,b\"", "1 decoded changed"},
        {"SET \"a,b\", 3\n", "\"a, b\", 3", "\"a, b\", 4", "1 decoded open"},
        // Of equal lines one is edited, and a line below as well.
        {"CIRCLE 0,0,0,1,0\nCIRCLE 0,0,0,1,5\nWAIT 1\n", "1, 0\nCIRCLE 0, 0, 0, 1, 0\nWAIT 1",
         "2, 0\nCIRCLE 0, 0, 0, 1, 0\nWAIT 2", "2 lost open"},
        {"DELENT\nDELENT last\nREM done\n", "DELENT\nDELENT\nREM done", "DELENT -1\nDELENT", "2 lost open"},
        {"DELENT\nDELENT last\nREM done\n", "DELENT\nREM done", "REM mine", "2 lost open"},
        {"IF (n<3)\nrDTUPDATE\nIF (n<4)\nLEVELS 1,4\nIF (n<4)\nLEVELS 1,4\n", "IF (n<4)\nREM LEVELS 1, 4\n",
         "", "1 guarded open\n3 guarded changed\n5 guarded open"},
        // Lines are moved and edited, or made comments, beside others that are finished.
        {"CIRCLE 0,0,0,r,n\nWAIT 3\nPRINT n\n", "CIRCLE 0, 0, 0, r, 0\nWAIT 3\nPRINT n",
         "WAIT 3\nCIRCLE 0, 0, 1, r, 0", "1 lost open"},
        {"lineE 65,2\nGETENV \"A\",b\n", "lineE 65,2\n// WARNING: GETENV has NOT been implemented",
         "// lineE 65,2\nb = \"x\"", "2 gone changed\n1 unknown open"},
        {"XHATCH 1,k,p,q\nXHATCH 1,m,r,p\nMODE 2\n", "XHATCH 1, p", "XHATCH 1, s", "1 lost open"},
        {"BOX 1,2\nBOX 1,2\nWAIT 1\n", "BOX 1,2\nBOX 1,2", "// BOX 1,2", "1 unknown open\n2 unknown changed"},
        {"DELENT last\nDELENT last\nWAIT 1\n", "DELENT\nDELENT\nWAIT 1", "WAIT 1\nDELENT",
         "1 lost open\n2 lost changed"},
        {"CIRCLE 0,0,0,1,k\nHALF 1\nCIRCLE 0,0,0,5\n",
         "CIRCLE 0, 0, 0, 1, 0\nHALF 1\nCIRCLE 0, 0, 0, 5, 0, , , , , , ",
         "HALF 1\nCIRCLE 0, 0, 0, 1, 0 // attr?", "1 lost open"},
        {"LEVELS 1, 4\nHALF 1\nREM x y\n", "REM LEVELS 1, 4\nHALF 1\nREM x y", "HALF 1\nREM LEVELS 1,4",
         "1 quiet open"},
        {"x = 1\nDELENT e\nHALF 1\n", "\nDELENT", "// DELENT e", "2 lost open"},
        {"EXEC 1, \"dir\"\nHALF 1\n", "// Original MURL command: \n// EXEC 1, \"dir\"\nEXEC", "// TODO EXEC",
         "1 lost open"},
        {"LABEL 0,0,0,1,1,0,1,2,2,\"R\",2.5\nHALF 1\n", "LABEL, 0, 0, 0, 1, 1, 0, 1, 2, 2, \"R\", 2.5\n",
         "\n", "1 form changed"},
        {"CIRCLE 0,0,0,d/2,5\nCIRCLE 0,0,0,da/2 // outer\n", "CIRCLE 0, 0, 0, d/2, 0\n da",
         "CIRCLE 0, 0, 0, d/2, 5\nCIRCLE 0, 0, 0, da/2, 0", "2 broken changed\n1 lost changed"},
        // The output of a statement is deleted, and the next one begins with the same lines.
        {"REDRAW 1\nREDRAW 2\n", "REM **** WARNING: REDRAW has NOT been implemented\nREM REDRAW 1\n", "",
         "1 gone changed\n2 gone open"},
        {"IF n\nCLS 1\nIF n\nCLS 2\n", "IF n\nREM **** WARNING: CLS has NOT been implemented\nREM CLS 1\n",
         "", "1 guarded changed\n3 guarded open\n2 gone changed\n4 gone open"},
        {"PRINT \"a\\nb\"\nPRINT \"a\\nc\"\n", "PRINT \"a\nb\"\n", "", "1 decoded changed\n2 decoded open"},
    };
    auto name = [](size_t i) { return std::to_string(1000 + i); }; // all in one run, in their order
    for (size_t i = 0; i < std::size(cases); i++)
        write(name(i) + ".mrl", cases[i].script);
    run("--convert .");
    for (size_t i = 0; i < std::size(cases); i++)
        edit(name(i) + "_conv.mrl", cases[i].from, cases[i].to);
    const json reports = json::parse(run("--json - .").out)["files"];
    ASSERT_EQ(reports.size(), std::size(cases));
    for (size_t i = 0; i < std::size(cases); i++)
        EXPECT_TRUE(has(states(reports[i]), cases[i].state))
            << cases[i].state << "\n"
            << states(reports[i]) << read(name(i) + "_conv.mrl");
}

// What an output doesn't show: the script has changed where the same is written, or another program has
// spoilt the file.
TEST_F(report_test, looks_twice_at_an_edited_output)
{
    write("a.mrl", "n = 4\nm = 4\nSCALE 1,2,3,n\nPRINT 1\nPRINT 2\n");
    run("--convert a.mrl");
    edit("a_conv.mrl", "SCALE 4", "SCALE n");
    EXPECT_EQ(run("a.mrl").status, 0);
    edit("a.mrl", "PRINT 1\n", "  PRINT 1 \r\n"); // as an editor has it
    EXPECT_EQ(run("a.mrl").status, 0);
    edit("a.mrl", "3,n", "3,m");
    report_result result = run("a.mrl");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.out, "[changed?]")) << result.out;
    EXPECT_TRUE(has(result.out, "a_conv.mrl: output edited: the script has changed since")) << result.out;
    result = run("--convert a.mrl");
    EXPECT_TRUE(has(result.err, "look whether your edits still fit")) << result.err;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(run("a.mrl").status, 0);

    const std::string edited = read("a_conv.mrl");
    write("a_conv.mrl", edited.substr(0, edited.rfind("PRINT 2")) + "PRI");
    result = run("--convert a.mrl");
    EXPECT_EQ(output_state(), "cut");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "it was edited, and is cut off")) << result.err;
    EXPECT_TRUE(has(read("a_conv.mrl"), "SCALE n")) << "the edit is still there";

    std::string wide;
    for (char c : edited)
        wide += c + std::string(1, '\0');
    write("a_conv.mrl", wide);
    result = run("--convert a.mrl");
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(has(result.err, "a_conv.mrl has NUL bytes, as a text in UTF-16 has, and isn't used"))
        << result.err;
    EXPECT_EQ(read("a_conv.mrl"), wide);
    EXPECT_TRUE(has(result.out, "0 have nothing left to do, 1 output not used")) << result.out;

    write("b.mrl", "x = 1" + std::string(1, '\0') + " + 2\nINT a, b\r\r\n");
    result = run("b.mrl");
    EXPECT_TRUE(has(result.out, "b.mrl:1: lost x: a NUL byte, as a text in UTF-16 has, is on the line"))
        << result.out;
    EXPECT_TRUE(has(result.out, "b.mrl:2: unknown INT: of a carriage return inside the line \\r is left"))
        << result.out;
}

// The values and texts of an item may also stand elsewhere in its line.
TEST_F(report_test, tells_edits_of_one_argument_from_those_of_another)
{
    write("a.mrl",
          "m = 2\nSCALE 2,0,0,m\nREM x\nGOTO a, 1\nREM y\nFTEXT 1,2,f1\nREM z\n"
          "IF a\nCLS\nGOTO b\nREM end\n");
    run("--convert a.mrl");
    expect_after_edit("SCALE 2, 2, 0, 0", "SCALE 2, n, 0, 0", "2 frozen open");
    expect_after_edit("SCALE 2, n, 0, 0", "SCALE m, 2, 0, 0", "2 frozen changed");
    expect_after_edit("GOTO a", "GOTO a1", "4 lost open");
    expect_after_edit("GOTO a1", "GOTO a, 1", "4 lost changed");
    expect_after_edit("FTEXT f1, 1 2, 0.0, 0", "FTEXT f1, 1 2, 0.0, 90", "6 form open");
    expect_after_edit("FTEXT f1, 1 2, 0.0, 90", "FTEXT f1, 1, 2, 0.0, 90", "6 form changed");
    expect_after_edit("GOTO b", "GOTO c", "8 guarded open");
    expect_after_edit("GOTO c", "CLEAR", "8 guarded changed");
    expect_after_edit("CLEAR", "GOTO b", "8 guarded open");
    expect_after_edit("IF a\n", "IF a\nREM mine\n", "8 guarded open");
    expect_after_edit("IF a\n", "IF a\nGOTO d\n", "8 guarded changed");
    expect_after_edit("IF a\nGOTO d\n", "IF a == 0\n", "8 guarded changed");
    expect_after_edit("GOTO a, 1\nREM y\n", "REM y\nGOTO a\n", "4 lost open"); // moved
    expect_after_edit("REM y\nGOTO a\n", "// GOTO a, 1\nREM y\n", "4 lost open");
    write("a.mrl", "IF a\nCLS\n");
    run("--convert --force a.mrl");
    write("a_conv.mrl", read("a_conv.mrl") + "GOTO z\n");
    EXPECT_TRUE(has(states(), "1 guarded changed")) << states();
}

// A remark, a line that has become a comment, and a line that somebody has mended beside it are no edit of an
// item; another spelling of what is lost is.
TEST_F(report_test, takes_what_is_carried_out_for_an_edit)
{
    write("a.mrl",
          "LINE 0,0,0,1,1,0,col\nLINE 0,0,0,2,2,0,col\nWAIT 1\nNOTE 1,2,\"a\"\n"
          "PRINT \"say \\\"hi\\\"\"\nWAIT 2\nGETCUR \"P\",1,2,x,,z,k,0,\"Yes\",\"No\"\n"
          "LINE 0,0,0,3,3,0,c+1\n");
    run("--convert a.mrl");
    expect_after_edit("1, 1, 0, 0\n", "1, 1, 0, 0 // to do: col\n", "1 lost open");
    expect_after_edit("1, 1, 0, 0 // to do: col\nLINE", "1, 1, 0, col\n// LINE",
                      "1 lost changed\n2 lost open");
    expect_after_edit("NOTE \"a\", 1 2", "// NOTE \"a\", 1 2", "4 form open");
    expect_after_edit("PRINT \"say \"hi\"\"\nWAIT 2\n", "WAIT 2\n// PRINT \"say \"hi\"\"\n",
                      "5 decoded open");
    expect_after_edit("// PRINT \"say \"hi\"\"\n", "", "5 decoded changed");
    expect_after_edit("k, \"|Yes|\"", "k, 0, \"|Yes|No\"", "7 lost changed");
    expect_after_edit("3, 3, 0, 0\n", "3, 3, 0, C + 1\n", "8 lost open"); // another name
    expect_after_edit("3, 3, 0, C", "3, 3, 0, c", "8 lost changed");
    write("a_conv.mrl", read("a_conv.mrl") + "=======\n>>>>>>> theirs\n");
    report_result result = run("a.mrl");
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(has(result.err, "a_conv.mrl has conflict markers and isn't used")) << result.err;
    write("b.mrl", "PRINT \"\\n>>>>>>> pick\"\n"); // the script has them
    run("--convert b.mrl");
    EXPECT_EQ(run("b.mrl").status, 1);
}

TEST_F(report_test, finds_the_edits_of_a_script_that_was_edited_everywhere)
{
    std::string script, edited;
    for (int i = 0; i < 5000; i++) {
        std::string number = std::to_string(i);
        script += "LINE 0,0,0,1,1,0,c" + number + "\n";
        edited += "LINE 1, 0, 0, 1, 1, 0, c" + number + "\n";
    }
    write("a.mrl", script);
    run("--convert --quiet a.mrl");
    write("a_conv.mrl", "REM mine\n" + edited);
    report_result result = run("a.mrl", "ulimit -t 15;");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(has(result.out, "5000 of them changed")) << result.out;
}

TEST_F(report_test, counts_no_item_as_done_that_is_compared_with_the_wrong_text)
{
    write("a.mrl", "CLS\n");
    write("a_conv.mrl", "VIEWCLEAR\n");
    EXPECT_EQ(states(), "1 gone changed?\n");
    report_result unknown = run("a.mrl");
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(has(unknown.out, "[changed?]")) << unknown.out;
    EXPECT_TRUE(has(unknown.out, "0 have nothing left to do"));
    EXPECT_EQ(run("--adopt a.mrl").status, 0);
    EXPECT_EQ(states(), "1 gone changed\n");
    report_result done = run("a.mrl");
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(has(done.out, "1 script: 1 gone, 1 of them changed or accepted; 1 has nothing left to do"))
        << done.out;
    edit("a.mrl", "CLS\n", "CLS\nREM x\n");
    EXPECT_EQ(states(), "1 gone open\n") << "behind";
}

// ---- Converting ----

TEST_F(report_test, converts_by_state)
{
    write("a.mrl", loop_script);
    run("--convert .");
    const std::string was = read("a_conv.mrl");
    // cut: written again, and what was there is kept.
    write("a_conv.mrl", was.substr(0, 9));
    report_result result = run("--convert --quiet .");
    EXPECT_EQ(result.err, "murlreport: kept what was there as ./a_conv.mrl.bak\n");
    EXPECT_EQ(read("a_conv.mrl"), was);
    EXPECT_EQ(read("a_conv.mrl.bak"), was.substr(0, 9));
    // same, but for blanks: left alone.
    const std::string blanks = "  " + was;
    write("a_conv.mrl", blanks);
    EXPECT_EQ(run("--convert --quiet .").err, "");
    EXPECT_EQ(read("a_conv.mrl"), blanks);
    // old, but not byte for byte.
    edit("a.mrl", "REM a", "REM c");
    EXPECT_EQ(output_state(), "old");
    EXPECT_EQ(run("--convert --quiet .").err, "murlreport: kept what was there as ./a_conv.mrl.bak2\n");
    EXPECT_EQ(read("a_conv.mrl.bak2"), blanks);
    EXPECT_EQ(read("a_conv.mrl"), converted(read("a.mrl")));
    // edited: left alone, unless forced.
    edit("a_conv.mrl", "REM b", "REM mine");
    const std::string edited = read("a_conv.mrl");
    EXPECT_EQ(run("--convert --quiet .").err, "");
    EXPECT_EQ(read("a_conv.mrl"), edited);
    EXPECT_EQ(run("--convert --force --quiet .").err,
              "murlreport: kept what was there as ./a_conv.mrl.bak3\n");
    EXPECT_EQ(read("a_conv.mrl.bak3"), edited);
    EXPECT_EQ(output_state(), "same");
    // unknown: kept and reported; same without a memory: remembered.
    fs::remove_all(folder / ".murlreport");
    EXPECT_EQ(run("--convert --quiet .").err, "");
    EXPECT_EQ(read(".murlreport/a_conv.mrl.last"), read("a_conv.mrl"));
    fs::remove_all(folder / ".murlreport");
    write("a_conv.mrl", edited);
    result = run("--convert --quiet .");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "kept ./a_conv.mrl: ")) << result.err;
    EXPECT_TRUE(has(result.err, "--adopt"));
    EXPECT_EQ(read("a_conv.mrl"), edited);
    EXPECT_EQ(names(".murlreport"), "");
}

TEST_F(report_test, converts_as_murlconv_does)
{
    fs::copy(fs::path(TEST_SOURCE_DIR) / "tests/report/tree", folder, fs::copy_options::recursive);
    EXPECT_EQ(run("--convert --quiet .").err, "");
    size_t outputs = 0;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        if (!is_script(entry.path()))
            continue;
        fs::path output = entry.path();
        output.replace_filename(output.stem().string() + "_conv.mrl");
        EXPECT_EQ(unified_diff(converted(read_file(entry.path())), read_file(output)), "") << output;
        outputs++;
    }
    EXPECT_GT(outputs, 18u);
    EXPECT_EQ(run("--convert --quiet .").err, "");
    json report = json::parse(run("--json - .").out);
    EXPECT_EQ(report["totals"]["outputs"]["same"], report["totals"]["scripts"]);
}

TEST_F(report_test, merges_what_was_edited_and_what_has_changed)
{
    write("a.mrl", loop_script);
    run("--convert .");
    const std::string was = read("a_conv.mrl");
    edit("a_conv.mrl", "REM **** WARNING: CLS", "VIEWCLEAR // CLS");
    edit("a.mrl", "REM a", "REM c\nREM d");
    report_result merged = run("--convert --quiet --csv merged.csv .");
    EXPECT_EQ(merged.err,
              "murlreport: ./a_conv.mrl:20: kept your edit\n"
              "  VIEWCLEAR // CLS has NOT been implemented\n"
              "murlreport: kept what was there as ./a_conv.mrl.bak\n"
              "murlreport: merged 1 change into ./a_conv.mrl\n");
    EXPECT_EQ(read("merged.csv"), run("--csv - .").out) << "of the lines that are there now";
    EXPECT_EQ(output_state(), "edited");
    EXPECT_TRUE(has(read("a_conv.mrl"), "REM c\n")) << read("a_conv.mrl");
    EXPECT_TRUE(has(read("a_conv.mrl"), "VIEWCLEAR"));
    EXPECT_TRUE(has(read("a_conv.mrl.bak"), "REM a\n"));
    EXPECT_EQ(read(".murlreport/a_conv.mrl.last"), converted(read("a.mrl")));
    EXPECT_TRUE(has(states(), "6 gone changed")) << states();

    edit("a_conv.mrl", "REM c", "REM mine");
    edit("a.mrl", "REM c", "REM theirs");
    const std::string edited = read("a_conv.mrl");
    report_result conflict = run("--convert --quiet --kind stopped .");
    EXPECT_EQ(conflict.status, 1);
    EXPECT_EQ(conflict.err,
              "murlreport: ./a_conv.mrl:1: conflict\n  yours: REM mine\n  now:   REM theirs\n"
              "murlreport: kept ./a_conv.mrl: your edits and what has changed are in the same "
              "lines; bring in what is new from ./.murlreport/a_conv.mrl.new, then run with "
              "--adopt\n");
    EXPECT_EQ(read("a_conv.mrl"), edited);
    EXPECT_EQ(read(".murlreport/a_conv.mrl.new"), converted(read("a.mrl")));
    EXPECT_EQ(output_state(), "behind");
    EXPECT_TRUE(has(run("--summary .").out, "output behind, of 1 script: it was edited"));
    edit("a.mrl", "REM theirs\n", "");
    EXPECT_TRUE(has(run("--convert --quiet .").err, "conflict\n  yours: REM mine\n  now:   (deleted)\n"));
    write("a_conv.mrl", edited + "\n");
    EXPECT_TRUE(has(run("--adopt --quiet .").err, "adopted ./a_conv.mrl, of which ")) << "a line is mine";
    EXPECT_EQ(output_state(), "edited");
    EXPECT_EQ(names(".murlreport"), "a_conv.mrl.last written.csv");

    const std::string now = read("a.mrl");
    edit("a_conv.mrl", "REM b", "REM mine");
    edit("a.mrl", "REM b", "REM theirs");
    EXPECT_TRUE(has(run("--convert --quiet .").err, "conflict"));
    write("a.mrl", now);
    EXPECT_EQ(run("--convert --quiet .").err, "") << "the conflict has gone with the change";
    EXPECT_EQ(names(".murlreport"), "a_conv.mrl.last written.csv");
}

TEST_F(report_test, merges_no_two_encodings)
{
    write("a.mrl", "PRINT \"gr\xFC\xDF\"\nREM x\n");
    run("--convert .");
    const std::string recoded = "PRINT \"gr\xC3\xBC\xC3\x9F\"\nREM x\n";
    write("a_conv.mrl", recoded);
    edit("a.mrl", "REM x", "REM x\nREM y");
    EXPECT_TRUE(has(run("--convert --quiet .").err, "merged 1 change")) << "no letter is new";
    write("a_conv.mrl", recoded + "REM y\n");
    edit("a.mrl", "REM y", "REM y\nREM \xFC");
    report_result kept = run("--convert --quiet .");
    EXPECT_EQ(kept.status, 1);
    EXPECT_TRUE(has(kept.err, "kept ./a_conv.mrl: it was saved in UTF-8, in which its script isn't;"))
        << kept.err;
    EXPECT_EQ(read("a_conv.mrl"), recoded + "REM y\n");
    EXPECT_EQ(read(".murlreport/a_conv.mrl.new"), converted(read("a.mrl")));
}

// ---- States of items ----

TEST_F(report_test, adopts_no_output_that_lacks_something)
{
    write("a.mrl", loop_script);
    run("--convert .");
    const std::string was = read("a_conv.mrl");
    fs::remove_all(folder / ".murlreport");
    auto refused = [&](const std::string &why) {
        report_result result = run("--adopt --quiet .");
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "murlreport: ./a_conv.mrl isn't adopted: " + why + " (--force overrides)\n");
        EXPECT_FALSE(fs::exists(folder / ".murlreport/a_conv.mrl.last"));
    };
    write("a_conv.mrl", was.substr(0, was.size() - 3));
    refused("it is cut off");
    write("a_conv.mrl", was.substr(0, was.find("EXIT")));
    refused("it lacks 1 line of what is written now at its end");
    write("a.mrl", "CLEAR\nCLS\nEXIT\n");
    write("a_conv.mrl", "EXIT // mine\n");
    refused("it lacks 1 line of what is written now at its end");
    write("a.mrl", loop_script);
    write("a_conv.mrl", "mine\n" + was);
    fs::last_write_time(folder / "a_conv.mrl", fs::last_write_time(folder / "a.mrl") - std::chrono::hours(1));
    refused("it is older than its script");
    EXPECT_TRUE(has(run("--adopt --force --quiet .").err,
                    "adopted ./a_conv.mrl, of which 1 line differs from what is written now"));
    EXPECT_EQ(output_state(), "edited");
    EXPECT_EQ(read("a_conv.mrl"), "mine\n" + was);
    fs::remove(folder / "a_conv.mrl");
    report_result none = run("--adopt --quiet .");
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "murlreport: there is no ./a_conv.mrl to adopt\n");
}

// ---- The run's state ----

TEST_F(report_test, starts_from_the_state_that_an_output_was_written_from)
{
    write("a.mrl", "SET COLLECT, 1\n");
    write("b.mrl", "ORDDIM 0, 0, 0, w, 5, 1, 2\n");
    run("--convert --one-run a.mrl b.mrl");
    EXPECT_TRUE(has(read(".murlreport/written.csv"), "a_conv.mrl,"));
    const std::string joined = read("b_conv.mrl");
    EXPECT_NE(joined, converted("ORDDIM 0, 0, 0, w, 5, 1, 2\n"));
    EXPECT_EQ(report_of("b.mrl")["output"], "same") << "the memory has the state";
    EXPECT_EQ(report_of("--one-run b.mrl")["output"], "old") << "--one-run replaces it";
    fs::remove_all(folder / ".murlreport");
    EXPECT_EQ(report_of("b.mrl")["output"], "unknown");
    EXPECT_EQ(json::parse(run("--json - a.mrl b.mrl").out)["files"][1]["output"], "same")
        << "tried with the run's state";
    run("--convert b.mrl a.mrl");
    EXPECT_EQ(read("b_conv.mrl"), joined);
}

// One folder's memory is one, however its scripts are named.
TEST_F(report_test, remembers_scripts_of_a_folder_by_any_path)
{
    fs::create_directories(folder / "sub");
    write("a.mrl", "REM a\n");
    write("b.mrl", "REM b\n");
    write("c.mrl", "REM c\n");
    EXPECT_EQ(run("--convert a.mrl ./b.mrl sub/../c.mrl").status, 0);
    for (const char *name : {"a_conv.mrl,", "b_conv.mrl,", "c_conv.mrl,"})
        EXPECT_TRUE(has(read(".murlreport/written.csv"), name)) << name;
}

// ---- Memories that can't be used ----

TEST_F(report_test, uses_no_memory_with_conflict_markers)
{
    const std::string markers = "<<<<<<< ours\nx\n=======\ny\n>>>>>>> theirs\n";
    write("a.mrl", "CLS\nREM x\n");
    run("--convert .");
    run("--accept --kind gone .");
    for (const char *name : {"a_conv.mrl.last", "written.csv", "accepted.csv"}) {
        const std::string path = std::string(".murlreport/") + name;
        const std::string was = read(path), output = read("a_conv.mrl");
        write(path, was + markers);
        write("a_conv.mrl", output + "REM mine\n");
        report_result result = run("--convert --accept --kind gone .");
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(has(result.err, std::string("/") + name)) << result.err;
        EXPECT_TRUE(has(result.err, "conflict markers"));
        EXPECT_EQ(read(path), was + markers) << "it is left as it is";
        EXPECT_EQ(read("a_conv.mrl"), output + "REM mine\n");
        write(path, was);
        write("a_conv.mrl", output);
    }
}

TEST_F(report_test, uses_no_tables_that_are_damaged)
{
    write("a.mrl", "CLS\n");
    run("--convert .");
    run("--accept --kind gone .");
    write("a.mrl", "CLS\nREM x\n");
    const std::string output = read("a_conv.mrl");
    auto refused = [&](const std::string &name, const std::string &table, const std::string &why) {
        const std::string was = read(".murlreport/" + name);
        write(".murlreport/" + name, table);
        report_result result = run("--convert --accept --kind gone .");
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(has(result.err, name + " isn't used: " + why)) << result.err;
        EXPECT_EQ(read(".murlreport/" + name), table);
        write(".murlreport/" + name, was);
        return read("a_conv.mrl") == output;
    };
    EXPECT_FALSE(refused("accepted.csv", read(".murlreport/accepted.csv") + "a,b\n",
                         "its row 3 doesn't have 9 columns"));
    write("a_conv.mrl", output);
    const std::string head = "output,script_hash,version,collect_mode,basedim_count\n";
    const std::string row = "a_conv.mrl,0123456789abcdef,1,1,2\n";
    EXPECT_TRUE(refused("written.csv", "", "its first line isn't output,"));
    EXPECT_TRUE(refused("written.csv", "output;script_hash\n", "its first line isn't output,"));
    EXPECT_TRUE(refused("written.csv", head + "a_conv.mrl,0,1,0,0,0\n", "its row 2 doesn't have 5 columns"));
    EXPECT_TRUE(
        refused("written.csv", head + "a_conv.mrl,0,1,0,2x\n", "the row of a_conv.mrl has no numbers"));
    EXPECT_TRUE(refused("written.csv", head + row + row, "the row of a_conv.mrl is there twice"));
}

TEST_F(report_test, refuses_a_memory_that_is_a_link_or_no_folder)
{
    write("a.mrl", "CLS\n");
    fs::create_directories(base / "elsewhere");
    auto refused = [&](const std::string &why) {
        report_result result = run("--convert --quiet .");
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(has(result.err, why)) << result.err;
        EXPECT_FALSE(fs::exists(folder / "a_conv.mrl")) << "nothing is converted";
        EXPECT_EQ(run(".").status, 2);
    };
    fs::create_directory_symlink(base / "elsewhere", folder / ".murlreport");
    refused("is a link or no folder and isn't used");
    EXPECT_TRUE(fs::is_empty(base / "elsewhere"));
    fs::remove(folder / ".murlreport");
    write(".murlreport", "mine");
    refused("is a link or no folder and isn't used");
    fs::remove(folder / ".murlreport");
    fs::create_directories(folder / ".murlreport/a_conv.mrl.last");
    report_result blocked = run("--convert --quiet .");
    EXPECT_EQ(blocked.status, 2);
    EXPECT_TRUE(has(blocked.err, "a_conv.mrl.last: it is a link or no file")) << blocked.err;
    EXPECT_FALSE(fs::exists(folder / "a_conv.mrl"));
    fs::remove_all(folder / ".murlreport");
    if (geteuid() == 0)
        return; // nothing is closed to root
    fs::create_directories(folder / ".murlreport");
    chmod((folder / ".murlreport").c_str(), 0600);
    refused("can't be searched and isn't used");
    chmod((folder / ".murlreport").c_str(), 0500);
    report_result closed = run("--convert --quiet .");
    EXPECT_EQ(closed.status, 2);
    EXPECT_TRUE(has(closed.err, "nothing is converted")) << closed.err;
    EXPECT_FALSE(fs::exists(folder / "a_conv.mrl"));
    chmod((folder / ".murlreport").c_str(), 0700);
    // A file of the memory that leads elsewhere isn't followed.
    write_file(base / "elsewhere/x", "mine");
    fs::create_symlink(base / "elsewhere/x", folder / ".murlreport/a_conv.mrl.last");
    EXPECT_EQ(run("--convert --quiet .").status, 2);
    EXPECT_EQ(read_file(base / "elsewhere/x"), "mine");
}

// ---- Writing ----

TEST_F(report_test, writes_to_where_an_output_is)
{
    write("a.mrl", "CLS\n");
    fs::create_directories(base / "outputs");
    fs::create_symlink("../outputs/there", folder / "a_conv.mrl");
    EXPECT_EQ(run("--convert --quiet .").status, 1) << "the link leads to no file yet";
    EXPECT_TRUE(fs::is_symlink(folder / "a_conv.mrl"));
    EXPECT_EQ(read_file(base / "outputs/there"), converted("CLS\n"));
    chmod((base / "outputs/there").c_str(), 0640);
    edit("a.mrl", "CLS", "CLS\nCLS");
    run("--convert --quiet .");
    EXPECT_EQ(read_file(base / "outputs/there"), converted("CLS\nCLS\n"));
    EXPECT_EQ(fs::status(base / "outputs/there").permissions(), static_cast<fs::perms>(0640));
    EXPECT_TRUE(fs::is_symlink(folder / "a_conv.mrl"));
    EXPECT_EQ(names(), ".murlreport a.mrl a_conv.mrl");
    fs::remove(folder / "a_conv.mrl");
    fs::create_symlink("/dev/null", folder / "a_conv.mrl");
    EXPECT_EQ(run("--convert --quiet .").status, 1);
    EXPECT_TRUE(fs::is_symlink(folder / "a_conv.mrl")) << "what is no file is written directly";
    fs::remove(folder / "a_conv.mrl");
    fs::create_directories(folder / "a_conv.mrl/x");
    EXPECT_EQ(run("--convert --force --quiet .").status, 2) << "a folder can't be written";
}

TEST_F(report_test, leaves_what_was_there_when_a_write_fails)
{
    write("a.mrl", times(5000, "CLS\n"));
    run("--convert .");
    const std::string was = read("a_conv.mrl");
    edit("a.mrl", "CLS", "REM x");
    write("a_conv.mrl.tmp", "mine");
    report_result full = run("--convert --quiet .", "trap '' XFSZ; ulimit -f 16;");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err.find("murlreport: can't write ./a_conv.mrl: File too large\n"), 0u) << full.err;
    EXPECT_EQ(read("a_conv.mrl"), was);
    EXPECT_EQ(output_state(), "old");
    EXPECT_EQ(names(), ".murlreport a.mrl a_conv.mrl a_conv.mrl.tmp");
    EXPECT_EQ(read("a_conv.mrl.tmp"), "mine");
    if (geteuid() == 0)
        return;
    chmod((folder / "a_conv.mrl").c_str(), 0);
    report_result closed = run("--convert --force --quiet .");
    EXPECT_EQ(closed.status, 2);
    chmod((folder / "a_conv.mrl").c_str(), 0600);
    EXPECT_EQ(read("a_conv.mrl"), was) << "what can't be read isn't replaced";
}

// Ended before and after each of its renames, a conversion is never taken for done, and the next one ends it.
TEST_F(report_test, a_conversion_that_is_ended_anywhere_is_never_taken_for_done)
{
    // The loader splits the names of what it preloads at blanks, and the build folder's path may have some.
    fs::copy_file(TEST_KILLER, base / "killer.so", fs::copy_options::overwrite_existing);
    int ended = 0;
    for (int kill_at = 1; kill_at <= 8; kill_at++)
        for (bool merge : {false, true}) {
            fs::remove_all(folder);
            fs::create_directories(folder);
            write("a.mrl", "REM x\nLINEE 1\nREM y\nCLS\n");
            write("b.mrl", "CLS\n");
            run("--convert .");
            if (merge)
                edit("a_conv.mrl", "LINEE 1", "LINE 1");
            edit("a.mrl", "REM y\nCLS\n", "REM y\nREM z\nREM z\nCLS\nCLS\n");
            edit("b.mrl", "CLS\n", "CLS\nCLS\n");
            report_result result =
                run("--convert --quiet .", "LD_PRELOAD=../killer.so KILL_AT=" + std::to_string(kill_at));
            ended += result.status == 137 ? 1 : 0;
            report_result after = run(".");
            EXPECT_EQ(after.status, 1) << kill_at << merge << after.out;
            EXPECT_TRUE(has(after.out, "0 have nothing left to do")) << kill_at << merge << after.out;
            EXPECT_FALSE(has(after.out, "gone CLS: the new dialect has no such command [")) << after.out;
            report_result again = run("--convert --json - .");
            EXPECT_EQ(again.status, 1);
            EXPECT_EQ(json::parse(again.out)["files"][0]["output"], merge ? "edited" : "same") << kill_at;
            std::string want = converted(read("a.mrl"));
            if (merge)
                want.replace(want.find("LINEE 1"), 7, "LINE 1");
            EXPECT_EQ(read("a_conv.mrl"), want) << kill_at;
            if (!merge) {
                EXPECT_EQ(read(".murlreport/a_conv.mrl.last"), want) << kill_at;
            }
        }
    EXPECT_GE(ended, 2 * 6) << "the renames of a run: a probe, two outputs, two texts, a table";
}

// ---- Accepting ----

TEST_F(report_test, accepts_what_is_selected)
{
    write("a.mrl", ":a\nCLS\n//\nGROUP \"A\",1,0\nLINEE 1\niREDRAW\nLINE 0,0,0,1,1,0)\n");
    run("--convert .");
    EXPECT_EQ(run("--accept .").status, 2) << "never all at once";
    EXPECT_EQ(run("--accept a.mrl a.mrl:2").status, 2);
    report_result result = run("--accept --command cls --reason 'not needed, \"really\"' .");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "murlreport: accepted 1 item of ./a.mrl\n");
    EXPECT_TRUE(has(result.out, "gone CLS: the new dialect has no such command [accepted]")) << result.out;
    EXPECT_TRUE(has(result.out, "0 have nothing left to do")) << "the others are open, though not selected";
    std::string rows = read(".murlreport/accepted.csv");
    EXPECT_EQ(
        rows.find("script,kind,command,statement,detail,before,after,count,reason\na.mrl,gone,CLS,CLS,"), 0u)
        << rows;
    EXPECT_TRUE(has(rows, ",1,\"not needed, \"\"really\"\"\"\n")) << rows;
    EXPECT_EQ(run("--accept a.mrl:4 a.mrl:6").err,
              "murlreport: nothing is accepted in a.mrl:6: it has no item\n"
              "murlreport: accepted 1 item of a.mrl\n")
        << "a system command is never open";
    EXPECT_EQ(run("--accept --command line .").err,
              "murlreport: nothing is accepted: no open item is selected\n")
        << "broken by its name alone";
    EXPECT_EQ(
        run("--accept a.mrl:7 a.mrl:99").err,
        "murlreport: nothing is accepted in a.mrl:7: name the kind of its item by --kind, if it is open\n"
        "murlreport: nothing is accepted in a.mrl:99: it has no item\n");
    EXPECT_EQ(run("--accept --kind broken .").err, "murlreport: accepted 1 item of ./a.mrl\n");
    EXPECT_EQ(run("--accept --kind unknown .").status, 0);
    report_result done = run(".");
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(has(done.out, "1 has nothing left to do")) << done.out;
    json sarif = json::parse(run("--sarif - .").out);
    for (const json &item : sarif["runs"][0]["results"])
        EXPECT_EQ(item["suppressions"].size(), item["ruleId"] == "dropped" ? 0u : 1u);
}

TEST_F(report_test, accepts_as_many_alike_as_were_accepted)
{
    write("a.mrl", "REM x\nCLS\nREM x\nCLS\nREM x\n");
    run("--convert .");
    EXPECT_EQ(run("--accept a.mrl:2").status, 0) << "they can't be told from each other";
    EXPECT_TRUE(has(read(".murlreport/accepted.csv"), ",2,\n"));
    write("a.mrl", "REM y\nREM x\nCLS\nREM x\n");
    run("--convert --quiet .");
    EXPECT_EQ(states(), "3 gone accepted\n") << "fewer, on other lines";
    write("a.mrl", "REM x\nCLS\nREM x\nCLS\nREM x\nCLS\nREM x\n");
    run("--convert --quiet .");
    EXPECT_EQ(states(), "2 gone open\n4 gone open\n6 gone open\n") << "more";
    edit("a_conv.mrl", "REM **** WARNING: CLS", "CLEARSCREEN // CLS");
    EXPECT_EQ(run("--accept a.mrl:4").status, 0);
    EXPECT_EQ(states(), "2 gone changed\n4 gone accepted\n6 gone accepted\n") << "what is done needs nothing";
    run("--convert --force --quiet .");
    EXPECT_EQ(states(), "2 gone open\n4 gone open\n6 gone open\n") << "one more than were accepted";
    write("a.mrl", "REM other\nCLS\n");
    report_result gone = run("--convert .");
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(has(gone.err, "accepted.csv: what was accepted of a.mrl matches nothing any more: gone CLS"))
        << gone.err;
    EXPECT_TRUE(has(run("--prune .").err, "(removed)"));
    EXPECT_FALSE(has(read(".murlreport/accepted.csv"), "a.mrl"));
    EXPECT_EQ(run(".").err, "");
    write("a.mrl", ":a\nREM 1\n:a\nREM 2\n");
    run("--accept --kind stopped a.mrl");
    write("a.mrl", "REM 0\n:a\nREM 1\n:a\nREM 2\nREM 3\n");
    EXPECT_TRUE(has(states(), "stopped accepted")) << "other line numbers";
}

TEST_F(report_test, accepts_ticks_of_the_page)
{
    fs::create_directories(folder / "sub");
    write("sub/a.mrl", "REM \xe6\nCLS\nREM \xff\n");
    run("--convert .");
    run("--accept --kind gone sub/a.mrl");
    std::string ticks = read("sub/.murlreport/accepted.csv");
    fs::remove(folder / "sub/.murlreport/accepted.csv");
    ticks.replace(ticks.find("\na.mrl"), 6, "\nsub/a.mrl");
    EXPECT_TRUE(has(ticks, "REM \xe6"));
    write("ticks.csv", ticks + "sub/a.mrl,gone,OTHER,OTHER,x,,,1,\n");
    report_result result = run("--accept-from ticks.csv .");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(has(result.err, "accepted 1 item of ./sub/a.mrl\n")) << result.err;
    EXPECT_TRUE(has(result.err, "a tick of sub/a.mrl matches nothing that is open: gone OTHER: x\n"))
        << result.err;
    write("ticks.csv", "no,such,head\n");
    EXPECT_EQ(run("--accept-from ticks.csv .").status, 2);
}

TEST_F(report_test, prunes_what_is_remembered_of_scripts_that_are_gone)
{
    write("a.mrl", "CLS\n");
    write("b.mrl", "REM x\n");
    run("--convert .");
    run("--accept --kind gone .");
    fs::remove(folder / "a.mrl");
    fs::remove(folder / "a_conv.mrl");
    EXPECT_TRUE(has(run(".").err, "what was accepted of a.mrl matches nothing"));
    EXPECT_EQ(names(".murlreport"), "a_conv.mrl.last accepted.csv b_conv.mrl.last written.csv");
    report_result pruned = run("--prune .");
    EXPECT_EQ(pruned.status, 0);
    EXPECT_TRUE(has(pruned.err, "forgot ./a_conv.mrl, whose script is gone")) << pruned.err;
    EXPECT_EQ(names(".murlreport"), "accepted.csv b_conv.mrl.last written.csv");
    EXPECT_FALSE(has(read(".murlreport/written.csv"), "a_conv"));
    fs::remove(folder / "b.mrl");
    EXPECT_TRUE(has(run("--prune .").err, "./b_conv.mrl is an output whose script is gone"));
}

// ---- SARIF ----

TEST_F(report_test, writes_sarif)
{
    fs::create_directories(folder / "a b");
    write("a b/\xc3\xa9 #%.mrl", "CLS\nREM x\nLINE 0,0,0,1,1,0)\nCLS\nREM x\nGROUP \"A\",1,0\nREM x\n");
    auto results = [&] { return json::parse(run("--sarif - .").out)["runs"][0]; };
    json sarif = results();
    const json &rules = sarif["tool"]["driver"]["rules"];
    EXPECT_EQ(rules.size(), 14u) << "all kinds";
    for (const json &rule : rules) {
        EXPECT_FALSE(rule["shortDescription"]["text"].get<std::string>().empty());
        EXPECT_GT(rule["help"]["text"].get<std::string>().size(), 40u)
            << rule["id"] << " has the guide's words";
    }
    std::set<std::string> prints;
    for (const json &item : sarif["results"]) {
        const json &rule = rules[item["ruleIndex"].get<size_t>()];
        EXPECT_EQ(item["ruleId"], rule["id"]);
        EXPECT_EQ(item["level"], rule["defaultConfiguration"]["level"]);
        const json &place = item["locations"][0]["physicalLocation"];
        EXPECT_EQ(place["artifactLocation"]["uri"], "a%20b/%C3%A9%20%23%25.mrl");
        EXPECT_GE(place["region"]["startLine"], 1);
        EXPECT_TRUE(item["suppressions"].is_array());
        EXPECT_FALSE(item["message"]["text"].get<std::string>().empty());
        EXPECT_TRUE(prints.insert(item["partialFingerprints"].dump()).second) << item;
    }
    std::map<std::string, std::string> levels;
    for (const json &rule : rules)
        levels[rule["id"]] = rule["defaultConfiguration"]["level"];
    EXPECT_EQ(levels["stopped"] + levels["broken"] + levels["guarded"], "errorerrorerror");
    EXPECT_EQ(levels["lost"] + levels["unknown"] + levels["base"], "warningwarningwarning");
    EXPECT_EQ(levels["byhand"] + levels["form"] + levels["dropped"], "notenotenote");
    // Other lines above change no fingerprint.
    edit("a b/\xc3\xa9 #%.mrl", "CLS", "REM first\nREM second\nREM x\nCLS");
    std::set<std::string> later;
    const json moved = results();
    for (const json &item : moved["results"])
        later.insert(item["partialFingerprints"].dump());
    size_t kept = 0;
    for (const std::string &print : prints)
        kept += later.count(print);
    EXPECT_GE(kept + 1, prints.size()) << "the first one has another statement before it";
}

// ---- The JSON's form ----

// Every object has the members of docs/report.schema.json, all and no others.
TEST_F(report_test, writes_json_by_its_schema)
{
    write("a.mrl", loop_script);
    run("--convert .");
    const json schema = json::parse(read_file(fs::path(TEST_SOURCE_DIR) / "docs/report.schema.json"));
    const json report = json::parse(run("--json - .").out);
    auto compare = [](const json &value, const json &form) {
        std::set<std::string> members, required(form["required"].begin(), form["required"].end()), known;
        for (const auto &member : value.items())
            members.insert(member.key());
        for (const auto &member : form["properties"].items())
            known.insert(member.key());
        EXPECT_EQ(members, required);
        EXPECT_EQ(members, known);
    };
    compare(report, schema);
    EXPECT_EQ(report["version"], schema["properties"]["version"]["const"]);
    const json &file = schema["properties"]["files"]["items"];
    compare(report["files"][0], file);
    compare(report["totals"], schema["properties"]["totals"]);
    compare(report["files"][0]["items"][0], schema["$defs"]["item"]);
    const json &states = file["properties"]["output"]["enum"];
    EXPECT_EQ(states.size(), report["totals"]["outputs"].size());
    for (const json &state : states)
        EXPECT_TRUE(report["totals"]["outputs"].contains(state.get<std::string>())) << state;
    EXPECT_EQ(schema["$defs"]["kind"]["enum"].size(), report["totals"]["kinds"].size());
}

TEST_F(report_test, writes_no_script_through_a_link)
{
    write("a.mrl", "CLS\n");
    fs::create_symlink("a.mrl", folder / "a_conv.mrl");
    report_result result = run("--convert --force a.mrl");
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(has(result.err, "it leads to its script")) << result.err;
    EXPECT_EQ(read("a.mrl"), "CLS\n");
    write("a.mrl", "AUTO 1\n");
    EXPECT_TRUE(has(run("a.mrl").out, ": 0 have nothing left to do")) << "its conversion is the same";
}
