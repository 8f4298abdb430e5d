// Memory that runs out: malloc, calloc or realloc fails at each of their calls in turn. Linked with all three
// wrapped.
#include "common/run.h"
#include "driver/batch.h"
#include "expressions/var_store.h"
#include "statements/labels.h"
#include "support/pool_heap.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

namespace fs = std::filesystem;

// The program's own main.
int murlconv_main(int argc, char **argv);

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);
extern "C" void *__real_calloc(size_t count, size_t size);
extern "C" void *__wrap_calloc(size_t count, size_t size);
extern "C" void *__real_realloc(void *old, size_t size);
extern "C" void *__wrap_realloc(void *old, size_t size);

static bool counting;    // calls are the converter's
static int calls;        // since counting began
static int failing_call; // the call that fails; 0: none
static bool for_good;    // all calls after it fail too

static bool call_fails()
{
    if (!counting)
        return false;
    calls++;
    return failing_call > 0 && (calls == failing_call || (for_good && calls > failing_call));
}

extern "C" void *__wrap_malloc(size_t size)
{
    return call_fails() ? nullptr : __real_malloc(size);
}

extern "C" void *__wrap_calloc(size_t count, size_t size)
{
    return call_fails() ? nullptr : __real_calloc(count, size);
}

extern "C" void *__wrap_realloc(void *old, size_t size)
{
    return call_fails() ? nullptr : __real_realloc(old, size);
}

// Two files that take memory of every kind: arrays, strings, lists, long paths, a file that can't be opened.
static const char script[] =
    "INT a[100], b[4][4]\n"
    "$s = \"a string\"\n"
    "$$l[3] = \"item\"\n"
    "$$l[200] = \"far\"\n"
    "INT a[5000]\n"
    "POINT a[1],b[1][1],x+1\n"
    "ARRAY v[9] = {1,2,3}\n"
    "#LINE 5 <name>\n"
    ":label\n"
    "PRINT \"text\"\n";

static const char old_output[] = "an output of an earlier run\n";

struct memory_result {
    int status;
    int calls;
    std::string first, second; // the outputs, old_output where none was begun
    std::string reported;      // standard error
};

// Runs the program over the paths on its command line, or on its standard input.
static memory_result convert_with_failure(const fs::path &folder, bool piped, int nth)
{
    for (const char *name : {"a_conv.mrl", "b_conv.mrl"})
        write_file(folder / name, old_output);
    reset_run();
    free(var_table); // so that the run makes its tables like the first one of a process
    var_table = nullptr;
    var_count = 0;
    free(label_table);
    label_table = nullptr;
    char program[] = "murlconv", first[] = "a.mrl", missing[] = "no.mrl", second[] = "b.mrl";
    char *arguments[] = {program, first, missing, second};
    fs::path before = fs::current_path();
    fs::current_path(folder);
    EXPECT_NE(freopen("paths", "r", stdin), nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    calls = 0;
    failing_call = nth;
    counting = true;
    int status = murlconv_main(piped ? 1 : 4, arguments);
    counting = false;
    testing::internal::GetCapturedStdout();
    fs::current_path(before);
    return {status, calls, read_file(folder / "a_conv.mrl"), read_file(folder / "b_conv.mrl"),
            testing::internal::GetCapturedStderr()};
}

class memory_test : public testing::Test {
protected:
    void SetUp() override
    {
        for_good = false;
        folder = fresh_folder("memory");
        write_file(folder / "a.mrl", script);
        write_file(folder / "b.mrl", script);
        write_file(folder / "paths", "a.mrl\nno.mrl\nb.mrl\n");
    }

    fs::path folder;
};

// A text without its empty lines: an assignment without memory lacks the empty line after it.
static std::string squeezed(const std::string &text)
{
    std::string result;
    for (char c : text)
        if (c != '\n' || (!result.empty() && result.back() != '\n'))
            result += c;
    return result;
}

// Without memory for the paths on standard input the selection is empty, and without memory for anything else
// but a variable the run ends. Both are reported.
static void fail_at_each_call(const fs::path &folder, bool piped)
{
    memory_result good = convert_with_failure(folder, piped, 0);
    ASSERT_EQ(good.status, 0);
    ASSERT_EQ(good.first, good.second);
    int ended = 0;
    for (int nth = 1; nth <= good.calls; nth++) {
        SCOPED_TRACE(nth);
        int files = open_files();
        memory_result result = convert_with_failure(folder, piped, nth);
        EXPECT_EQ(open_files(), files) << "a stream stays open";
        bool reported = result.reported.find("murlconv: out of memory\n") != std::string::npos;
        bool nothing_picked = piped && result.status == 0 && result.first == old_output;
        EXPECT_EQ(result.status == 1 || nothing_picked, reported);
        EXPECT_TRUE(reported || nth > 1);
        ended += result.status;
        // A statement without memory may stop its file; the output before it is right. A run that ends leaves
        // the outputs that it didn't come to as they were.
        for (const std::string &output : {result.first, result.second}) {
            if (output != old_output) {
                EXPECT_EQ(squeezed(good.first).find(squeezed(output)), 0u) << output;
            }
        }
        EXPECT_EQ(result.status == 1 || nothing_picked, result.second == old_output);
    }
    EXPECT_LT(ended, good.calls) << "a variable that finds no memory doesn't end the run";
    EXPECT_EQ(convert_with_failure(folder, piped, 0).first, good.first) << "all is well again";
}

TEST_F(memory_test, survives_a_failure_at_any_call)
{
    for (int way = 0; way < 4; way++) {
        SCOPED_TRACE(way);
        for_good = (way & 1) != 0;
        fail_at_each_call(folder, (way & 2) != 0);
    }
}

TEST_F(memory_test, ends_the_process_where_a_name_can_not_be_recorded)
{
    fs::path before = fs::current_path();
    fs::current_path(folder); // no prompt file here
    char *recorded = nullptr;
    auto record = [&] {
        line_directives.source_name_recording = true;
        line_directives.source_name_slot = &recorded;
        calls = 0;
        failing_call = 1;
        counting = true;
        line_directive_parse("5 <name>");
    };
    EXPECT_EXIT(record(), testing::ExitedWithCode(1), "");
    fs::current_path(before);
}
