// Golden pairs: what a user gets, byte by byte.
//
// tests/golden/AREA/NAME.mrl with NAME.want beside it is a pair, and so is samples/NAME.mrl with
// tests/golden/samples/NAME.want. NAME.out holds what the run prints on standard output, if it prints
// anything. A folder AREA/NAME.run is one run over all its X.mrl in sorted order, each with its X.want;
// AREA/NAME.out is what that run prints. Adding a pair needs no code.
//
// MURL_UPDATE_WANT=1 in the environment rewrites the want and out files that differ, and prints the diffs.
#include "common/diff.h"
#include "common/run.h"

#include <gtest/gtest.h>

#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <set>

namespace fs = std::filesystem;

static const fs::path golden_root = fs::path(TEST_SOURCE_DIR) / "tests/golden";
static const fs::path samples_root = fs::path(TEST_SOURCE_DIR) / "samples";

static std::vector<fs::path> sorted_entries(const fs::path &folder)
{
    std::vector<fs::path> entries;
    if (fs::exists(folder))
        for (const fs::directory_entry &entry : fs::directory_iterator(folder))
            entries.push_back(entry.path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

struct golden_file {
    fs::path script;
    fs::path want;
};

// One run: a pair, or the files of a .run folder.
struct golden_case {
    std::string name; // area and name
    std::vector<golden_file> files;
    fs::path printed; // may be missing: nothing is printed
};

static void PrintTo(const golden_case &run, std::ostream *stream)
{
    *stream << run.files.front().script;
}

static golden_file golden_file_of(const fs::path &script)
{
    return {script, fs::path(script).replace_extension(".want")};
}

static std::vector<golden_case> golden_cases()
{
    std::vector<golden_case> cases;
    for (const fs::path &area : sorted_entries(golden_root)) {
        for (const fs::path &entry : sorted_entries(area)) {
            golden_case run{area.filename().string() + "/" + entry.stem().string(), {}, fs::path(entry)};
            run.printed.replace_extension(".out");
            if (is_script(entry))
                run.files.push_back(golden_file_of(entry));
            if (entry.extension() == ".run")
                for (const fs::path &script : sorted_entries(entry))
                    if (is_script(script))
                        run.files.push_back(golden_file_of(script));
            if (!run.files.empty())
                cases.push_back(run);
        }
    }
    for (const fs::path &script : sorted_entries(samples_root)) {
        fs::path want = golden_root / "samples" / script.filename();
        if (is_script(script))
            cases.push_back({"samples/" + script.stem().string(),
                             {{script, fs::path(want).replace_extension(".want")}},
                             fs::path(want).replace_extension(".out")});
    }
    return cases;
}

class golden : public testing::TestWithParam<golden_case> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(golden);

static bool updating()
{
    const char *value = getenv("MURL_UPDATE_WANT");
    return value != nullptr && std::string(value) == "1";
}

// Compares a result with the file that says what it should be; a missing one stands for nothing where it may.
static void expect_as_in(const fs::path &want, bool may_miss, const std::string &got)
{
    std::string wanted = read_file(want);
    std::string diff = unified_diff(wanted, got);
    bool missing = !fs::exists(want) && !may_miss;
    if (diff.empty() && !missing)
        return;
    if (!updating()) {
        ADD_FAILURE() << want.string() << (missing ? " is missing" : "") << "\n" << diff;
        return;
    }
    printf("%s is rewritten\n%s", want.c_str(), diff.c_str());
    if (got.empty() && may_miss)
        fs::remove(want);
    else
        write_file(want, got);
}

TEST_P(golden, converts_as_wanted)
{
    const golden_case &run = GetParam();
    fs::path folder = fresh_folder("golden/" + run.name);
    std::vector<std::string> names;
    for (const golden_file &file : run.files) {
        names.push_back(file.script.filename().string());
        fs::copy_file(file.script, folder / names.back());
    }
    reset_run();
    run_result result = run_converter(folder, names);
    EXPECT_EQ(result.status, 0);
    for (const golden_file &file : run.files) {
        fs::path output = folder / (file.script.stem().string() + "_conv.mrl");
        EXPECT_TRUE(fs::exists(output)) << output;
        expect_as_in(file.want, false, read_file(output));
        EXPECT_EQ(read_file(folder / file.script.filename()), read_file(file.script)) << "the input changed";
    }
    expect_as_in(run.printed, true, result.printed);
}

static std::string instance_name(const testing::TestParamInfo<golden_case> &info)
{
    std::string name = info.param.name;
    for (char &c : name)
        if (!isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(all, golden, testing::ValuesIn(golden_cases()), instance_name);

// A want file that no script belongs to would compare nothing. Outputs that somebody has made are no part of
// it.
TEST(golden_files, all_belong_to_a_case)
{
    std::set<fs::path> known;
    for (const golden_case &run : golden_cases()) {
        known.insert(run.printed);
        for (const golden_file &file : run.files) {
            known.insert(file.script);
            known.insert(file.want);
        }
    }
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(golden_root)) {
        bool output = entry.path().extension() == ".mrl" && !is_script(entry.path());
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.' && !output) {
            EXPECT_EQ(known.count(entry.path()), 1u) << entry.path();
        }
    }
}

// An editor or a checkout that changes line ends would turn such a pair into one that can't fail.
TEST(golden_files, hold_the_bytes_that_their_names_promise)
{
    static const struct {
        const char *ending;
        std::string bytes;
    } promises[] = {{"_crlf", "\r\n"}, {"_ctrlz", "\x1A"}, {"_nul", std::string(1, 0)}};
    for (const golden_case &run : golden_cases()) {
        for (const golden_file &file : run.files) {
            std::string stem = file.script.stem().string();
            for (const auto &promise : promises) {
                size_t size = strlen(promise.ending);
                if (stem.size() < size || stem.substr(stem.size() - size) != promise.ending)
                    continue;
                EXPECT_NE(read_file(file.script).find(promise.bytes), std::string::npos) << file.script;
            }
        }
    }
}

TEST(golden_diff, shows_a_blank_too_many)
{
    EXPECT_EQ(unified_diff("a\nLINE 1, \nb\n", "a\nLINE 1,  \nb\n"),
              "--- want\n+++ got\n@@ -1 +1 @@\n a\n"
              "-LINE 1,\u00B7\n"
              "+LINE 1,\u00B7\u00B7\n b\n");
}

TEST(golden_diff, shows_control_bytes_and_a_missing_line_feed)
{
    EXPECT_EQ(unified_diff("x\n", "x\r\n"), "--- want\n+++ got\n@@ -1 +1 @@\n-x\n+x\\r\n");
    EXPECT_EQ(unified_diff("x\n", "x"),
              "--- want\n+++ got\n@@ -1 +1 @@\n-x\n+x\n\\ no line feed at the end\n");
    EXPECT_EQ(unified_diff("", "\x01 \n"), "--- want\n+++ got\n@@ -1 +1 @@\n+\\x01\u00B7\n");
}

TEST(golden_diff, keeps_three_lines_around_a_change)
{
    EXPECT_EQ(unified_diff("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nfive\n6\n7\n8\n9\n"),
              "--- want\n+++ got\n@@ -2 +2 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n");
}
