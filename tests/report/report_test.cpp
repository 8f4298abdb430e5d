// murlreport as a process: what it says of a tree of scripts, its statuses, and what it does to files.
#include "run_report.h"

#include "common/diff.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <set>

namespace fs = std::filesystem;
using json = nlohmann::json;

static const fs::path report_root = fs::path(TEST_SOURCE_DIR) / "tests/report";

static void copy_tree(const fs::path &folder)
{
    fs::copy(report_root / "tree", folder, fs::copy_options::recursive);
}

TEST_F(report_test, sums_up_what_would_drown_the_rest)
{
    copy_tree(folder);
    std::string text = run("menus/recorded.mrl outline/flange.mrl").out;
    EXPECT_NE(text.find("recorded.mrl:2: dropped: 8 system commands"), std::string::npos) << text;
    EXPECT_NE(text.find("flange.mrl:11: lost: 4 statements without one of their attributes"),
              std::string::npos)
        << text;
    std::string all = run("--all menus/recorded.mrl outline/flange.mrl").out;
    EXPECT_NE(all.find("recorded.mrl:9: dropped uMACEND: "), std::string::npos) << all;
    EXPECT_NE(all.find("flange.mrl:21: lost LINE: "), std::string::npos) << all;
}

TEST_F(report_test, selects_by_kind_and_by_command)
{
    copy_tree(folder);
    EXPECT_EQ(run("--kind base,stopped --summary .").out.find("quiet"), std::string::npos);
    std::string text = run("--command lindim,ANGDIM .").out;
    EXPECT_NE(text.find("plate.mrl:5: byhand LINDIM"), std::string::npos) << text;
    EXPECT_NE(text.find("plate.mrl:8: byhand ANGDIM"), std::string::npos) << text;
    EXPECT_EQ(text.find("CIRDIM"), std::string::npos) << text;
    std::string summary = run("--summary outline/loop.mrl").out;
    EXPECT_EQ(summary.find("loop.mrl"), std::string::npos) << summary;
    EXPECT_NE(summary.find("1 script: 1 broken; 0 have nothing left to do, 1 is not converted yet\n"),
              std::string::npos)
        << summary;
}

TEST_F(report_test, carries_the_collect_mode_in_one_run_alone)
{
    write("a.mrl", "SET COLLECT, 1\nORDDIM 0, 0, 0, w, 5, 1, 2\n");
    write("b.mrl", "ORDDIM 0, 0, 0, w, 5, 1, 2\n");
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
    write("clean.mrl", "REM x\n");
    write("left.mrl", "CLS\n");
    report_result fresh = run("clean.mrl");
    EXPECT_EQ(fresh.status, 1);
    EXPECT_TRUE(has(fresh.out, "1 script: 0 have nothing left to do, 1 is not converted yet\n")) << fresh.out;
    EXPECT_EQ(run("--convert clean.mrl").status, 0);
    EXPECT_EQ(run("--convert left.mrl").status, 1);
    EXPECT_TRUE(has(run("clean.mrl left.mrl").out, "1 has nothing left to do\n"));
    report_result filtered = run("--kind quiet left.mrl clean.mrl");
    EXPECT_EQ(filtered.status, 0);
    EXPECT_TRUE(has(filtered.out, "2 scripts: 2 have none of these\n")) << filtered.out;
    report_result missing = run("nothing.mrl left.mrl");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "murlreport: can't read nothing.mrl: No such file or directory\n");
    EXPECT_TRUE(has(missing.out, "left.mrl:1: gone CLS")) << "the other files are done";
    EXPECT_EQ(run("--version").out.compare(0, 11, "murlreport "), 0);
    EXPECT_TRUE(has(run("--help").out, "--one-run"));
}

TEST_F(report_test, ends_with_trouble_on_wrong_usage)
{
    write("clean.mrl", "REM x\n");
    fs::create_directories(folder / "empty/deep");
    fs::create_directories(folder / "closed");
    chmod((folder / "closed").c_str(), 0);
    run("--convert clean.mrl");
    const std::set<std::string> with_text = {"--command LNIE clean.mrl", "empty clean.mrl",
                                             "clean.mrl empty"};
    for (const char *arguments :
         {"", "--nonsense clean.mrl", "--kind nonsense clean.mrl", "--csv - --json - clean.mrl",
          "--csv no/such/x.csv clean.mrl", "--accept clean.mrl", "--convert --adopt clean.mrl",
          "--reason x clean.mrl", "--accept-from no.csv clean.mrl", "--accept clean.mrl:1 clean.mrl", "empty",
          "/dev/null", "clean_conv.mrl", "--command LNIE clean.mrl", "empty clean.mrl", "clean.mrl empty"}) {
        report_result result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.out.empty(), with_text.count(arguments) == 0) << arguments << result.out;
        EXPECT_GE(std::count(result.err.begin(), result.err.end(), '\n'), 1) << arguments;
        EXPECT_EQ(result.err.compare(0, 12, "murlreport: "), 0) << result.err;
    }
    fs::create_directories(folder / "links");
    write("links/a.mrl", "REM x\n");
    fs::create_symlink("gone.mrl", folder / "links/b.mrl");
    EXPECT_TRUE(has(run("links").err, "can't read links/b.mrl: "));
    if (geteuid() != 0) {
        EXPECT_EQ(run("closed").status, 2);
        EXPECT_EQ(run(".").status, 2);
    }
    chmod((folder / "closed").c_str(), 0700);
    EXPECT_EQ(run("--command line,CLS clean.mrl").status, 0) << "commands that the scripts lack";
}

TEST_F(report_test, reports_an_output_that_takes_nothing)
{
    write("left.mrl", "CLS\n");
    report_result result = run("--quiet --csv /dev/full left.mrl");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "murlreport: can't write /dev/full\n");
}

TEST_F(report_test, finds_the_scripts_of_a_folder)
{
    fs::create_directories(folder / "b/c.mrl");
    fs::create_directories(folder / ".murlreport");
    for (const char *name :
         {"z.mrl", "a.MRP", "b/d.Mrl", "b/c.mrl/e.mrl", "z_conv.mrl", "Z_CONV.MRL", "own_conv.mrl",
          "notes.txt", "mrl", "_conv.mrl", "x_conv.mrl.mrl", "no.mrl2", ".murlreport/hidden.mrl"})
        write(name, "CLS\n");
    fs::create_directory_symlink(folder, folder / "b/loop");
    report_result result = run("--json - . z.mrl b/../z.mrl");
    std::vector<std::string> paths;
    const json report = json::parse(result.out);
    for (const json &file : report["files"])
        paths.push_back(file["path"]);
    std::vector<std::string> wanted = {"./Z_CONV.MRL", "./a.MRP",   "./x_conv.mrl.mrl",
                                       "./z.mrl",      "./b/d.Mrl", "./b/c.mrl/e.mrl"};
    EXPECT_EQ(paths, wanted);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "murlreport: ./_conv.mrl looks like an output; name it to have it read\n"
              "murlreport: ./own_conv.mrl looks like an output; name it to have it read\n");
}

TEST_F(report_test, reads_no_output_unless_it_is_asked_to)
{
    write("a.mrl", "REM x\n");
    write("own_conv.mrl", "CLS\n");
    EXPECT_EQ(run("--convert --quiet a.mrl").status, 0);
    EXPECT_TRUE(has(run("own_conv.mrl").out, "own_conv.mrl:1: gone CLS")) << "it was named";
    report_result both = run("a.mrl a_conv.mrl");
    EXPECT_EQ(both.status, 0);
    EXPECT_TRUE(has(both.out, "1 script:")) << both.out;
    EXPECT_EQ(both.err,
              "murlreport: skipped a_conv.mrl, the output of a script beside it (--force reads it)\n");
    EXPECT_TRUE(has(run("--force a.mrl a_conv.mrl").out, "2 scripts:"));
    fs::remove(folder / "own_conv.mrl");
    fs::rename(folder / "a.mrl", folder / "b.mrl");
    report_result lone = run("--convert .");
    EXPECT_EQ(lone.status, 1);
    EXPECT_EQ(lone.err, "murlreport: ./a_conv.mrl is an output whose script is gone\n");
}

// ---- Nothing of the user's is written over ----

TEST_F(report_test, writes_over_no_script_no_output_and_no_memory)
{
    write("a.mrl", "CLS\n");
    write("other.mrp", "CLS\n");
    write("notes.csv", "mine");
    run("--convert a.mrl");
    fs::create_hard_link(folder / "a.mrl", folder / "hard");
    fs::create_symlink("a_conv.mrl", folder / "link");
    fs::create_symlink("new.MRL", folder / "dangling");
    fs::create_hard_link(folder / ".murlreport/a_conv.mrl.last", folder / "last");
    const std::string before = names() + names(".murlreport") + read("a.mrl") + read("a_conv.mrl");
    const char *options[] = {"--csv ", "--json ", "--html ", "--sarif "};
    size_t number = 0;
    for (const char *path :
         {"a.mrl", "./a.mrl", "a_conv.mrl", "new.MRL", "other.mrp", "hard", "link", "dangling", "last",
          ".murlreport/x.csv", ".murlreport/accepted.csv", ".murlreport/../.murlreport/written.csv"}) {
        report_result result = run(options[number++ % 4] + std::string(path) + " a.mrl");
        EXPECT_EQ(result.status, 2) << path;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(has(result.err, std::string("won't write ") + path)) << result.err;
    }
    EXPECT_EQ(run("--html a.mrl other.mrp").status, 2) << "a shell's *.mrl after an option";
    fs::create_hard_link(folder / "notes.csv", folder / "same");
    for (const char *twice : {"--csv x --json ./x", "--csv notes.csv --sarif same"})
        EXPECT_TRUE(has(run(std::string(twice) + " a.mrl").err, "it is another output")) << twice;
    fs::remove(folder / "same");
    EXPECT_EQ(run("--accept-from notes.csv --csv notes.csv a.mrl").status, 2);
    EXPECT_EQ(names() + names(".murlreport") + read("a.mrl") + read("a_conv.mrl"), before);
    EXPECT_EQ(read("notes.csv"), "mine");
}

TEST_F(report_test, writes_over_nothing_that_its_own_run_writes)
{
    write("foo.txt", "CLS\n");
    write("a.mrl", "CLS\n");
    fs::create_symlink("page.html", folder / "a_conv.mrl");
    for (const char *path : {"foo_conv.txt foo.txt", "page.html a.mrl"})
        for (const char *convert : {"", "--convert "})
            EXPECT_EQ(run(convert + std::string("--html ") + path).status, 2) << convert << path;
    EXPECT_EQ(names(), "a.mrl a_conv.mrl foo.txt");
    run("--convert a.mrl");
    write("page.html", "mine\n");
    EXPECT_EQ(run("--quiet --convert --force --csv a_conv.mrl.bak a.mrl").status, 2);
    EXPECT_EQ(read("a_conv.mrl.bak"), "mine\n") << "what the run has put there";
}

TEST_F(report_test, leaves_the_report_that_was_there_when_it_fails)
{
    write("a.mrl", times(4000, "CLS\n"));
    write("x.json", "before");
    chmod((folder / "x.json").c_str(), 0640);
    write("x.json.part", "mine");
    EXPECT_EQ(run("--quiet --json x.json --csv no/such/x a.mrl").status, 2);
    EXPECT_EQ(read("x.json"), "before");
    report_result full = run("--quiet --json x.json a.mrl", "trap '' XFSZ; ulimit -f 16;");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err.find("murlreport: can't write x.json\n"), 0u) << full.err;
    EXPECT_EQ(read("x.json"), "before");
    EXPECT_EQ(names(), "a.mrl x.json x.json.part");
    fs::create_symlink("x.json", folder / "link.json");
    EXPECT_EQ(run("--quiet --json link.json a.mrl").status, 1);
    EXPECT_TRUE(fs::is_symlink(folder / "link.json"));
    EXPECT_TRUE(json::accept(read("x.json")));
    EXPECT_EQ(fs::status(folder / "x.json").permissions(), static_cast<fs::perms>(0640));
    EXPECT_EQ(read("x.json.part"), "mine");
    EXPECT_EQ(run("--quiet --json /dev/stdout a.mrl").out, read("x.json"))
        << "what is no file is written directly";
}

// ---- Hostile names and bytes ----

TEST_F(report_test, shows_hostile_names_and_bytes_harmlessly)
{
    const std::string name = "<img src=x onerror=alert(1)>\x1b[31m,\"\n.mrl";
    write(name, "CALL \"</script><!--\", \xe6\x9f\x1b]0;x\x07\nLINEE \xff,\"\r,a\nCLS\n");
    std::string text = run(".").out;
    EXPECT_TRUE(has(text, "onerror=alert(1)>\\x1b[31m,\"\\x0a.mrl:3: gone CLS")) << escaped(text);
    for (char c : text)
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c < 127) || (c & 0x80) != 0) << escaped(text);
    std::string csv = run("--csv - .").out;
    EXPECT_TRUE(has(csv, "\"./<img src=x onerror=alert(1)>\\x1b[31m,\"\"\\x0a.mrl\",3,")) << csv;
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 4) << csv;
    json report = report_of(".");
    EXPECT_EQ(report["path"], "./<img src=x onerror=alert(1)>\\x1b[31m,\"\\x0a.mrl");
    bool latin = false;
    for (const json &item : report["items"])
        latin |= has(item["statement"], "\xc3\xa6");
    EXPECT_TRUE(latin) << "Latin-1 is shown, not lost";
    EXPECT_TRUE(json::accept(run("--sarif - .").out));
    report_result converted = run("--convert --accept --kind gone .");
    EXPECT_TRUE(has(converted.err, "accepted 1 item of ./<img")) << escaped(converted.err);
    EXPECT_EQ(std::count(converted.err.begin(), converted.err.end(), '\n'), 1) << escaped(converted.err);
    EXPECT_FALSE(has(run(".").out, "gone CLS: the new dialect has no such command\n")) << "it is accepted";
}

// The converter's messages have no part in a report.
TEST_F(report_test, prints_no_label_into_its_forms)
{
    const std::string label = ":<script>alert(1)</script>";
    write("a.mrl", label + "\n" + label + "\n");
    for (const char *form : {"--json -", "--html -", "--csv -", "--sarif -"}) {
        std::string out = run(std::string(form) + " a.mrl").out;
        EXPECT_EQ(out.compare(0, 1,
                              form[2] == 'j' || form[2] == 's' ? "{"
                              : form[2] == 'h'                 ? "<"
                                                               : "f"),
                  0)
            << out.substr(0, 200);
        if (form[2] == 'h') {
            EXPECT_FALSE(has(out, "<script>alert")) << out.substr(0, 200);
        }
    }
}

TEST_F(report_test, cuts_no_character_in_two)
{
    for (size_t lead = 0; lead < 3; lead++) {
        write("a.mrl", "LINEE " + std::string(lead, 'x') + times(300, "\xe2\x82\xac") + "\nCLS " +
                           std::string(lead, 'y') + times(300, "\xf0\x9f\x98\x80") + "\n");
        std::string out = run("--all --json - a.mrl").out;
        EXPECT_FALSE(has(out, "\xc3\xa2")) << "a character was cut and shown as Latin-1";
        EXPECT_FALSE(has(out, "\xc3\xb0"));
        EXPECT_FALSE(has(out, "\xef\xbf\xbd"));
    }
}

// A cell that a spreadsheet would take for a formula gets an apostrophe; accepted.csv has what the script
// has.
TEST_F(report_test, makes_no_formulas)
{
    write("=a.mrl", "=HYPERLINK(1)\n+1\n-1\n@SUM(1)\n");
    std::string csv = run("--csv - '=a.mrl'").out;
    for (const char *cell : {"'=a.mrl,1,", "'=HYPERLINK", "'+1", "'-1", "'@SUM"})
        EXPECT_TRUE(has(csv, cell)) << cell << "\n" << csv;
    for (const char *cell : {",=", ",+", ",-", ",@", "\n="})
        EXPECT_FALSE(has(csv, cell)) << cell << "\n" << csv;
    run("--accept --kind unknown '=a.mrl'");
    EXPECT_TRUE(has(read(".murlreport/accepted.csv"), "\n=a.mrl,unknown,"))
        << read(".murlreport/accepted.csv");
    EXPECT_FALSE(has(read(".murlreport/accepted.csv"), "'="));
}

TEST_F(report_test, colours_for_a_terminal_alone)
{
    write("a.mrl", "CLS\n");
    EXPECT_EQ(run("a.mrl").out.find('\033'), std::string::npos);
}

TEST_F(report_test, takes_scripts_of_any_bytes)
{
    std::string bytes;
    for (int i = 0; i < 200000; i++)
        bytes += static_cast<char>((i * 7919 + i / 251) & 0xFF);
    write("a.mrl", bytes);
    write("b.mrl", std::string(3 << 20, 'x') + "\nCLS " + std::string(1 << 20, '(') + "\nREDRAW");
    write("c.mrl", "REM " + std::string(5 << 20, 'y'));
    EXPECT_EQ(run("--quiet --all --json x.json --html x.html --csv x.csv --sarif x.sarif .").err, "");
    EXPECT_TRUE(json::accept(read("x.json")));
    EXPECT_TRUE(json::accept(read("x.sarif")));
    EXPECT_EQ(run("--quiet --convert .").status, 1);
    EXPECT_EQ(run("--quiet --convert .").err, "");
}
