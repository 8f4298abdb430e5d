// murlreport as a process: what it says of a tree of scripts, its statuses, and what it does to files.
//
// tests/report/tree holds scripts with planted faults and their near misses; tree.csv is all that a report
// says of them, menu.txt and menu.json the text and the JSON of one. MURL_UPDATE_WANT=1 in the environment
// rewrites these files where they differ, and prints the diffs.
#include "common/diff.h"
#include "common/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <map>
#include <set>

namespace fs = std::filesystem;
using json = nlohmann::json;

static const fs::path report_root = fs::path(TEST_SOURCE_DIR) / "tests/report";

struct report_result {
    int status;
    std::string out;
    std::string err;
};

class report_test : public testing::Test {
protected:
    void SetUp() override
    {
        base = fresh_folder(std::string("report/") +
                            testing::UnitTest::GetInstance()->current_test_info()->name());
        folder = base / "work";
        fs::create_directories(folder);
    }

    // Runs murlreport with arguments as the shell reads them, in the folder.
    report_result run(const std::string &arguments, const std::string &before = "")
    {
        setenv("FOLDER", folder.c_str(), 1);
        setenv("PROGRAM", TEST_PROGRAM, 1);
        std::string command = "cd \"$FOLDER\" && ASAN_OPTIONS=detect_leaks=0 " + before + " \"$PROGRAM\" " +
                              arguments + " >../out 2>../err </dev/null";
        int status = system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(base / "out"),
                read_file(base / "err")};
    }

    // The items that the report gives for a script of this text, without the script's name.
    std::string items(const std::string &script, const std::string &options = "")
    {
        write_file(folder / "a.mrl", script);
        std::string out = run("--all " + options + " a.mrl").out;
        std::string found;
        for (size_t start = 0, end; (end = out.find('\n', start)) != std::string::npos; start = end + 1)
            if (out.compare(start, 6, "a.mrl:") == 0)
                found += out.substr(start + 6, end - start - 5);
        return found;
    }

    // The states of all items of a.mrl, each with its line and kind.
    std::string states()
    {
        std::string found;
        const json report = json::parse(run("--json - a.mrl").out);
        for (const json &item : report["files"][0]["items"])
            found += std::to_string(item["line"].get<int>()) + " " + item["kind"].get<std::string>() + " " +
                     item["state"].get<std::string>() + "\n";
        return found;
    }

    void copy_tree()
    {
        fs::copy(report_root / "tree", folder, fs::copy_options::recursive);
    }

    fs::path base;
    fs::path folder;
};

// Compares with a wanted file, or rewrites that.
static void expect_wanted(const fs::path &want, const std::string &got)
{
    std::string diff = unified_diff(read_file(want), got);
    if (!diff.empty() && getenv("MURL_UPDATE_WANT") != nullptr) {
        write_file(want, got);
        printf("%s rewritten:\n%s", want.c_str(), diff.c_str());
        return;
    }
    EXPECT_EQ(diff, "") << want;
}

// ---- What is said of the tree ----

TEST_F(report_test, tells_each_planted_fault_of_the_tree_and_nothing_else)
{
    copy_tree();
    report_result result = run("--csv ../tree.csv .");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
    std::string csv = read_file(base / "tree.csv");
    expect_wanted(report_root / "tree.csv", csv);
    static const char *const kinds[] = {"stopped", "broken", "guarded", "frozen",  "lost", "gone",
                                        "byhand",  "check",  "quiet",   "unknown", "base", "dropped"};
    for (const char *kind : kinds)
        EXPECT_NE(csv.find(std::string(",") + kind + ","), std::string::npos) << "the tree shows no " << kind;
    EXPECT_EQ(run("--quiet --csv - .").out, csv);
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder))
        EXPECT_EQ(entry.path().filename().string().find("_conv"), std::string::npos)
            << "a report writes nothing";
}

TEST_F(report_test, writes_text_and_json_of_a_script)
{
    copy_tree();
    expect_wanted(report_root / "menu.txt", run("menus/menu.mrl").out);
    report_result result = run("--quiet --json - menus/menu.mrl");
    expect_wanted(report_root / "menu.json", json::parse(result.out).dump(1) + "\n");
}

TEST_F(report_test, sums_up_what_would_drown_the_rest)
{
    copy_tree();
    std::string text = run("menus/recorded.mrl outline/flange.mrl").out;
    EXPECT_NE(text.find("recorded.mrl:2: dropped: 8 system commands"), std::string::npos) << text;
    EXPECT_NE(text.find("flange.mrl:11: lost: 4 statements without their first attributes"),
              std::string::npos)
        << text;
    std::string all = run("--all menus/recorded.mrl outline/flange.mrl").out;
    EXPECT_NE(all.find("recorded.mrl:9: dropped uMACEND: "), std::string::npos) << all;
    EXPECT_NE(all.find("flange.mrl:21: lost LINE: "), std::string::npos) << all;
}

TEST_F(report_test, selects_by_kind_and_by_command)
{
    copy_tree();
    EXPECT_EQ(run("--kind base,stopped --summary .").out.find("quiet"), std::string::npos);
    std::string text = run("--command lindim,ANGDIM .").out;
    EXPECT_NE(text.find("plate.mrl:5: byhand LINDIM"), std::string::npos) << text;
    EXPECT_NE(text.find("plate.mrl:8: byhand ANGDIM"), std::string::npos) << text;
    EXPECT_EQ(text.find("CIRDIM"), std::string::npos) << text;
    std::string summary = run("--summary outline/loop.mrl").out;
    EXPECT_EQ(summary.find("loop.mrl"), std::string::npos) << summary;
    EXPECT_NE(summary.find("1 script: 1 broken; 0 have nothing left to do\n"), std::string::npos) << summary;
}

// ---- Near misses that a script of a few lines shows best ----

TEST_F(report_test, judges_near_misses)
{
    static const struct {
        const char *script, *items;
    } cases[] = {
        {"", ""},
        {"LINE 0,0,0,1,1,0,0\nLINE 0,0,0,1,1,0,1-1\n", ""},
        {"IF x\nPRINT \"a\nb\"\nIF x\n\nREM none\nGOTO a\nIF x\n", ""},
        {"IF x\n#LINE 3\nGOTO a\n", ""},
        {":a\n:b\n:ab\n: a\n", ""},
        {"PRINT \"byte\"\n\x1a\n \x1a\x1a\n", ""},
        {"POLYLINE 3, p, 0, 1, 0, , 1 + pow(2, 3)\n",
         "1: lost POLYLINE: no line holds argument 3: 0, 5: 0\n"
         "1: check POLYLINE: the new command stands under a tip\n"},
        {"DELENT 1 - 2\n", ""},
        {"DELENT e\n", "1: lost DELENT: no line holds argument 1: e\n"},
        {"e = -1\nDELENT e\n", "2: frozen DELENT: argument 1: e is written as its value -1\n"},
        {"PRINT \"a\" // b\nEXIT\n",
         "1: broken PRINT: argument 1: something stands after the closing quote; left: a; a comment on the "
         "command's line: give it a line "
         "of its own\n"},
        {"NOTE 1, 2, \"a // b\"\n", ""},
        {"LINE 1,2,foo(3),4,5,6\nLINEE 1\n",
         "1: broken LINE: argument 3: foo is not a function; left: foo\n2: unknown LINEE: it went through "
         "unchanged\n"},
        {"LINE 1,foo(3), \\\n bar 4 \\\n baz\nLINEE 1\n",
         "1: broken LINE: argument 2: foo is not a function; left: foo\n4: unknown LINEE: it went through "
         "unchanged\n"},
        {"a = 1 / 0\nb = b(1\nc = d(1)\n",
         "2: unknown b: it went through unchanged\n3: unknown c: it went through unchanged\n"},
        {"IF x PRINT \"y\"\n",
         "1: broken IF: argument 1: syntax error; left: x; "
         "PRINT on the line of an IF: give it a line of its own\n"},
        {"ON x\n", "1: stopped ON: ON without GOTO; 0 lines were not read\n"},
        {"IF a\niREDRAW\n",
         "1: guarded IF: iREDRAW in line 2 has left nothing\n2: dropped iREDRAW: a system command\n"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(items(c.script), c.items) << c.script;
}

TEST_F(report_test, tells_why_reading_stopped)
{
    static const struct {
        const char *script, *why;
    } cases[] = {
        {"INT\nREM\n", "a declaration without an item; 1 line was not read"},
        {"INT 5\nREM\n",
         "an item of the declaration begins with no name, or has a quote or unpaired brackets; 1 line was "
         "not read"},
        {"INT a b\nREM\n", "two words of the declaration have no comma between them; 1 line was not read"},
        {"INT a[1]b\nREM\n", "an item of the declaration is no name with subscripts; 1 line was not read"},
        {"ARRAY a[2] = 1\nREM\n",
         "the initial values lack their braces, or belong to a string list; 1 line was not read"},
        {"INT $a\nREM\n", "the type doesn't fit the variable or the prefix of its name; 1 line was not read"},
    };
    for (const auto &c : cases) {
        std::string found = items(c.script);
        EXPECT_NE(found.find(c.why), std::string::npos) << c.script << found;
    }
    std::string labels;
    for (int i = 0; i < 1001; i++)
        labels += ":l" + std::to_string(i) + "\n";
    EXPECT_EQ(items(labels + "REM\n"),
              "1001: stopped :l1000: label 1,001: a script has at most 1,000; 1 line was not read\n");
}

TEST_F(report_test, carries_the_collect_mode_in_one_run_alone)
{
    write_file(folder / "a.mrl", "SET COLLECT, 1\nORDDIM 0, 0, 0, w, 5, 1, 2\n");
    write_file(folder / "b.mrl", "ORDDIM 0, 0, 0, w, 5, 1, 2\n");
    EXPECT_NE(run("a.mrl b.mrl").out.find("b.mrl:1: lost ORDDIM: the statement has left nothing"),
              std::string::npos);
    std::string joined = run("--one-run a.mrl b.mrl").out;
    EXPECT_NE(joined.find("b.mrl:1: base ORDDIM"), std::string::npos) << joined;
    EXPECT_EQ(run("b.mrl a.mrl").out.find("base ORDDIM"), std::string::npos);
    std::string turned = run("--one-run b.mrl a.mrl").out;
    EXPECT_NE(turned.find("a.mrl:2: base ORDDIM"), std::string::npos) << turned;
}

// ---- Statuses and wrong usage ----

TEST_F(report_test, ends_with_a_status_that_tells)
{
    write_file(folder / "clean.mrl", "REM x\n");
    write_file(folder / "left.mrl", "CLS\n");
    EXPECT_EQ(run("clean.mrl").status, 0);
    EXPECT_EQ(run("left.mrl").status, 1);
    EXPECT_EQ(run("--kind quiet left.mrl").status, 0);
    report_result missing = run("nothing.mrl left.mrl");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "murlreport: can't read nothing.mrl: No such file or directory\n");
    EXPECT_NE(missing.out.find("left.mrl:1: gone CLS"), std::string::npos) << "the other files are done";
    static const char *const wrong[] = {"",
                                        "--nonsense clean.mrl",
                                        "--kind nonsense clean.mrl",
                                        "--csv - --json - clean.mrl",
                                        "--force clean.mrl",
                                        "--csv no/such/x.csv clean.mrl"};
    for (const char *arguments : wrong) {
        report_result result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.out, "") << arguments;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.compare(0, 12, "murlreport: "), 0) << result.err;
    }
    EXPECT_EQ(run("--version").out.compare(0, 11, "murlreport "), 0);
    EXPECT_NE(run("--help").out.find("--one-run"), std::string::npos);
}

TEST_F(report_test, tells_of_an_output_that_takes_nothing)
{
    write_file(folder / "left.mrl", "CLS\n");
    EXPECT_EQ(run("--quiet --csv /dev/full left.mrl").status, 2);
}

TEST_F(report_test, finds_the_scripts_of_a_folder)
{
    fs::create_directories(folder / "b/c.mrl");
    for (const char *name : {"z.mrl", "a.MRP", "b/d.Mrl", "b/c.mrl/e.mrl", "z_conv.mrl", "Z_CONV.MRL",
                             "own_conv.mrl", "notes.txt", "mrl", "_conv.mrl", "x_conv.mrl.mrl", "no.mrl2"})
        write_file(folder / name, "CLS\n");
    fs::create_directory_symlink(folder, folder / "b/loop");
    json report = json::parse(run("--json - .").out);
    std::vector<std::string> paths;
    for (const json &file : report["files"])
        paths.push_back(file["path"]);
    std::vector<std::string> wanted = {"./Z_CONV.MRL",     "./_conv.mrl", "./a.MRP",   "./own_conv.mrl",
                                       "./x_conv.mrl.mrl", "./z.mrl",     "./b/d.Mrl", "./b/c.mrl/e.mrl"};
    EXPECT_EQ(paths, wanted);
    EXPECT_NE(run("z_conv.mrl").out.find("z_conv.mrl:1: gone CLS"), std::string::npos) << "named itself";
}

// ---- The work that was done, and converting safely ----

TEST_F(report_test, follows_the_edits_of_a_converted_script)
{
    const std::string script =
        "REM a\nSETTEXT\nLINDIM 0,0,0,w,5,1,2\nREM b\nCLS\niREDRAW\nCODE \"x\"\nGROUP \"A\",1,0\nEXIT\n";
    write_file(folder / "a.mrl", script);
    auto wanted = [](const char *settext, const char *lindim, const char *cls, const char *redraw,
                     const char *code) {
        return std::string("2 lost ") + settext + "\n7 lost " + code + "\n5 gone " + cls + "\n3 byhand " +
               lindim + "\n8 quiet " + "open" + "\n6 dropped " + redraw + "\n";
    };
    EXPECT_NE(states().find("3 byhand none"), std::string::npos);
    EXPECT_EQ(run("--convert a.mrl").status, 1);
    EXPECT_EQ(states(), wanted("open", "open", "open", "open", "open"));
    const std::string converted = read_file(folder / "a_conv.mrl");

    std::string edited = converted;
    edited.insert(edited.find("REM b"), "LINDIM 1, 2, 3\n");
    write_file(folder / "a_conv.mrl", edited);
    EXPECT_EQ(states(), wanted("open", "open", "open", "open", "open"))
        << "a line put beside is no work on an item";

    edited = converted;
    size_t tip = edited.find("// CONVERSION TIP");
    edited.replace(tip, edited.find("REM b") - tip, "LINDIM 1, 2, 3\n");
    write_file(folder / "a_conv.mrl", edited);
    EXPECT_EQ(states(), wanted("open", "changed", "open", "open", "open"));

    edited.insert(edited.find("REM GROUP"), "VIEWALL\n");
    write_file(folder / "a_conv.mrl", edited);
    EXPECT_EQ(states(), wanted("open", "changed", "open", "changed", "changed"))
        << "put where the dropped ones stood";

    std::string crlf;
    for (char c : converted)
        crlf += c == '\n' ? "\r\n" : std::string(1, c);
    write_file(folder / "a_conv.mrl", crlf);
    EXPECT_EQ(states(), wanted("open", "open", "open", "open", "open")) << "line ends are no edit";

    write_file(folder / "a_conv.mrl", "");
    EXPECT_EQ(states().find("byhand open"), std::string::npos);
}

TEST_F(report_test, done_work_is_nothing_left)
{
    write_file(folder / "a.mrl", "CLS\n");
    run("--convert a.mrl");
    EXPECT_EQ(run("a.mrl").status, 1);
    write_file(folder / "a_conv.mrl", "VIEWCLEAR\n");
    report_result result = run("a.mrl");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("[changed]"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("1 script: 1 gone; 1 has nothing left to do"), std::string::npos) << result.out;
}

TEST_F(report_test, keeps_an_output_that_was_edited)
{
    copy_tree();
    EXPECT_EQ(run("--convert --quiet .").err, "");
    std::map<std::string, std::string> outputs;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        std::string stem = entry.path().stem().string();
        if (stem.size() > 5 && stem.substr(stem.size() - 5) == "_conv")
            outputs[fs::relative(entry.path(), folder).string()] = read_file(entry.path());
    }
    EXPECT_EQ(outputs.size(), 21u);
    for (const auto &[path, bytes] : outputs) {
        std::string script = path;
        script.erase(script.rfind("_conv"), 5);
        EXPECT_EQ(bytes, converted(read_file(folder / script))) << path;
    }
    write_file(folder / "outline/loop_conv.mrl", "mine\n");
    report_result second = run("--convert --quiet .");
    EXPECT_EQ(second.err,
              "murlreport: kept ./outline/loop_conv.mrl, which is not what murlconv writes (--force replaces "
              "it)\n");
    EXPECT_EQ(read_file(folder / "outline/loop_conv.mrl"), "mine\n");
    EXPECT_EQ(run("--convert --force --quiet .").err, "");
    EXPECT_EQ(read_file(folder / "outline/loop_conv.mrl"), outputs["outline/loop_conv.mrl"]);
}

TEST_F(report_test, tells_of_an_output_older_than_its_script)
{
    write_file(folder / "a.mrl", "CLS\n");
    run("--convert a.mrl");
    EXPECT_EQ(run("a.mrl").out.find("older"), std::string::npos);
    fs::last_write_time(folder / "a_conv.mrl", fs::last_write_time(folder / "a.mrl") - std::chrono::hours(1));
    EXPECT_NE(run("a.mrl").out.find("a.mrl: a_conv.mrl is older than its script\n"), std::string::npos);
}

// ---- Hostile names and bytes ----

TEST_F(report_test, shows_hostile_names_and_bytes_harmlessly)
{
    const std::string name = "<img src=x onerror=alert(1)>\x1b[31m,\"\n.mrl";
    write_file(folder / name, "CALL \"</script><!--\", \xe6\x9f\x1b]0;x\x07\nLINEE \xff,\"\r,a\nCLS\n");
    std::string text = run(".").out;
    EXPECT_NE(text.find("onerror=alert(1)>\\x1b[31m,\"\\x0a.mrl:3: gone CLS"), std::string::npos)
        << escaped(text);
    for (char c : text)
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c < 127) || (c & 0x80) != 0) << escaped(text);
    std::string csv = run("--csv - .").out;
    EXPECT_NE(csv.find("\"./<img src=x onerror=alert(1)>\\x1b[31m,\"\"\\x0a.mrl\",3,"), std::string::npos)
        << csv;
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 4) << csv;
    json report = json::parse(run("--json - .").out);
    EXPECT_EQ(report["files"][0]["path"], "./<img src=x onerror=alert(1)>\\x1b[31m,\"\\x0a.mrl");
    bool latin = false;
    for (const json &item : report["files"][0]["items"])
        latin |= item["statement"].get<std::string>().find("\xc3\xa6") != std::string::npos;
    EXPECT_TRUE(latin) << "Latin-1 is shown, not lost";
}

TEST_F(report_test, colours_for_a_terminal_alone)
{
    write_file(folder / "a.mrl", "CLS\n");
    EXPECT_EQ(run("a.mrl").out.find('\033'), std::string::npos);
}

TEST_F(report_test, takes_scripts_of_any_bytes)
{
    std::string bytes;
    for (int i = 0; i < 200000; i++)
        bytes += static_cast<char>((i * 7919 + i / 251) & 0xFF);
    write_file(folder / "a.mrl", bytes);
    write_file(folder / "b.mrl",
               std::string(3 << 20, 'x') + "\nCLS " + std::string(1 << 20, '(') + "\nREDRAW");
    write_file(folder / "c.mrl", "REM " + std::string(5 << 20, 'y'));
    EXPECT_EQ(run("--quiet --all --json ../x.json --html ../x.html --csv ../x.csv .").err, "");
    EXPECT_TRUE(json::accept(read_file(base / "x.json")));
}
