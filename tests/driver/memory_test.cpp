// Memory that runs out: malloc fails at each of its calls in turn. Linked with malloc wrapped.
#include "common/run.h"
#include "driver/batch.h"
#include "source/labels.h"
#include "support/pool_heap.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

namespace fs = std::filesystem;

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);

static bool counting;    // calls are the converter's
static int calls;        // since counting began
static int failing_call; // the call that fails; 0: none
static bool for_good;    // all calls behind it fail too

extern "C" void *__wrap_malloc(size_t size)
{
    if (counting) {
        calls++;
        if (failing_call > 0 && (calls == failing_call || (for_good && calls > failing_call)))
            return nullptr;
    }
    return __real_malloc(size);
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

struct memory_result {
    int status;
    int calls;
    std::string first, second; // the outputs
};

static memory_result convert_with_failure(const fs::path &folder, int nth)
{
    for (const char *name : {"a_conv.mrl", "b_conv.mrl"})
        fs::remove(folder / name);
    reset_run();
    char program[] = "murlconv", first[] = "a.mrl", missing[] = "no.mrl", second[] = "b.mrl";
    char *arguments[] = {program, first, missing, second};
    fs::path before = fs::current_path();
    fs::current_path(folder);
    testing::internal::CaptureStdout();
    calls = 0;
    failing_call = nth;
    counting = true;
    memory_result result{conv_main(4, arguments), 0, "", ""};
    counting = false;
    result.calls = calls;
    testing::internal::GetCapturedStdout();
    fs::current_path(before);
    result.first = read_file(folder / "a_conv.mrl");
    result.second = read_file(folder / "b_conv.mrl");
    return result;
}

class memory_test : public testing::Test {
protected:
    void SetUp() override
    {
        folder = fresh_folder("memory");
        write_file(folder / "a.mrl", script);
        write_file(folder / "b.mrl", script);
    }

    fs::path folder;
};

// A text without its empty lines: whether an assignment finds memory shows in the empty line behind it.
static std::string squeezed(const std::string &text)
{
    std::string result;
    for (char c : text)
        if (c != '\n' || (!result.empty() && result.back() != '\n'))
            result += c;
    return result;
}

TEST_F(memory_test, survives_a_failure_at_any_call)
{
    for (bool every : {false, true}) {
        for_good = every;
        memory_result good = convert_with_failure(folder, 0);
        ASSERT_EQ(good.status, BATCH_DONE);
        ASSERT_EQ(good.first, good.second);
        int out_of_memory = 0;
        for (int nth = 1; nth <= good.calls; nth++) {
            SCOPED_TRACE(nth);
            int files = open_files();
            memory_result result = convert_with_failure(folder, nth);
            EXPECT_EQ(open_files(), files) << "a stream stays open";
            EXPECT_TRUE(result.status == BATCH_NO_MEMORY || result.status == BATCH_DONE) << result.status;
            out_of_memory += result.status == BATCH_NO_MEMORY;
            // A statement that finds no memory may stop its file; what stands before it is as it should be.
            for (const std::string &output : {result.first, result.second})
                EXPECT_EQ(squeezed(good.first).find(squeezed(output)), 0u) << output;
            if (nth == 1) {
                EXPECT_EQ(result.status, BATCH_NO_MEMORY);
            }
        }
        EXPECT_LT(out_of_memory, good.calls) << "a variable that finds no memory doesn't end the run";
        EXPECT_EQ(convert_with_failure(folder, 0).first, good.first) << "all is well again";
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

// The program's main, with one failing malloc behind it.
int murlconv_main(int argc, char **argv);

TEST_F(memory_test, ends_the_program_with_status_1_and_a_line)
{
    fs::path before = fs::current_path();
    fs::current_path(folder);
    char program[] = "murlconv", first[] = "a.mrl";
    char *arguments[] = {program, first};
    testing::internal::CaptureStderr();
    calls = 0;
    failing_call = 1;
    counting = true;
    int status = murlconv_main(2, arguments);
    counting = false;
    fs::current_path(before);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "murlconv: out of memory\n");
    EXPECT_EQ(status, 1);
}
