// The driver: which output belongs to an input, what can't be opened, and what one file leaves to the next.
#include "driver/batch.h"

#include "common/diff.h"
#include "common/run.h"
#include "source/src_stream.h"
#include "support/output.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

class batch_test : public testing::Test {
protected:
    void SetUp() override
    {
        folder = fresh_folder(std::string("batch/") +
                              testing::UnitTest::GetInstance()->current_test_info()->name());
        files_before = open_files();
        reset_run();
    }

    void TearDown() override
    {
        EXPECT_EQ(open_files(), files_before);
    }

    std::string run(const std::vector<std::string> &paths)
    {
        run_result result = run_converter(folder, paths);
        EXPECT_EQ(result.status, BATCH_DONE);
        return result.printed;
    }

    fs::path folder;
    int files_before;
};

TEST_F(batch_test, pairs_each_input_with_an_output_beside_it)
{
    fs::create_directories(folder / "d.x");
    static const struct {
        const char *input, *output;
    } cases[] = {
        {"a.mrl", "a_conv.mrl"},
        {"b.mrp", "b_conv.mrp"},
        {"a_conv.mrl", "a_conv_conv.mrl"},
        {"script", "script_conv"},
        {"a.b.c", "a.b_conv.c"},
        {"d.x/script", "d.x/script_conv"},
        {"d.x/../e.mrl", "e_conv.mrl"},
        {".hidden", "_conv.hidden"},
        {"end.", "end_conv."},
        {"with blank %s.mrl", "with blank %s_conv.mrl"},
    };
    for (const auto &c : cases) {
        write_file(folder / c.input, "REM x\n");
        EXPECT_EQ(run({c.input}), "");
        EXPECT_EQ(read_file(folder / c.output), "REM x\n") << c.input;
    }
}

TEST_F(batch_test, converts_several_files_in_order)
{
    write_file(folder / "a.mrl", ":same\nINT x\n");
    write_file(folder / "b.mrl", ":same\nREM b\nx[1] = 2\nDOUBLE x\n");
    write_file(folder / "a_conv.mrl", "what was there before, and longer than what comes");
    EXPECT_EQ(run({"a.mrl", "b.mrl", "a.mrl", "a_conv.mrl"}), "");
    EXPECT_EQ(read_file(folder / "a_conv.mrl"), ":same \nINT x\n");
    EXPECT_EQ(read_file(folder / "b_conv.mrl"), ":same \nREM b\nx[1] = 2\nDOUBLE x\n");
    EXPECT_EQ(read_file(folder / "a_conv_conv.mrl"), ":same \nINT x\n");
}

TEST_F(batch_test, goes_on_after_a_file_that_stops)
{
    write_file(folder / "a.mrl", "REM 1\n:x\n:X\nREM lost\n");
    write_file(folder / "b.mrl", "INT a b\nREM lost\n");
    write_file(folder / "c.mrl", "REM c\n");
    EXPECT_EQ(run({"a.mrl", "b.mrl", "c.mrl"}), "X");
    EXPECT_EQ(read_file(folder / "a_conv.mrl"), "REM 1\n:x \n:X \n");
    EXPECT_EQ(read_file(folder / "b_conv.mrl"), "INT a b\n");
    EXPECT_EQ(read_file(folder / "c_conv.mrl"), "REM c\n");
}

TEST_F(batch_test, reports_what_can_not_be_opened_and_goes_on)
{
    fs::create_directories(folder / "folder.mrl");
    fs::create_directories(folder / "out_conv.mrl");
    write_file(folder / "out.mrl", "REM x\n");
    write_file(folder / "good.mrl", "REM x\n");
    EXPECT_EQ(run({"%s%n.mrl", "no/such/file", "folder.mrl", "", "out.mrl", "good.mrl"}),
              "Unable to open %s%n.mrlUnable to open no/such/fileUnable to open folder.mrlUnable to open "
              "Unable to Open file out_conv.mrl");
    EXPECT_EQ(read_file(folder / "good_conv.mrl"), "REM x\n");
    EXPECT_FALSE(fs::exists(folder / "folder_conv.mrl"));
    EXPECT_FALSE(fs::exists(folder / "%s%n_conv.mrl"));
}

TEST_F(batch_test, reads_a_pipe)
{
    fs::path pipe = folder / "pipe.mrl";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    pid_t writer = fork();
    if (writer == 0) {
        FILE *file = fopen(pipe.c_str(), "w");
        for (int i = 0; i < 30000; i++)
            fputs(i % 3 == 0 ? "SPLINE a3,b,c\n" : "REM abc\n", file);
        fclose(file);
        _exit(0);
    }
    EXPECT_EQ(run({"pipe.mrl"}), "");
    waitpid(writer, nullptr, 0);
    std::string piped = read_file(folder / "pipe_conv.mrl");
    EXPECT_EQ(piped.size() % 10000, 0u);
    EXPECT_EQ(
        unified_diff(converted("SPLINE a3,b,c\nREM abc\nREM abc\n"), piped.substr(0, piped.size() / 10000)),
        "");
}

TEST_F(batch_test, converts_many_files_with_one_set_of_open_ones)
{
    std::vector<std::string> paths;
    for (int i = 0; i < 300; i++) {
        paths.push_back("f" + std::to_string(i) + ".mrl");
        write_file(folder / paths.back(), "INT i\ni = " + std::to_string(i) + "\n");
    }
    EXPECT_EQ(run(paths), "");
    for (int i = 0; i < 300; i++)
        EXPECT_EQ(read_file(folder / ("f" + std::to_string(i) + "_conv.mrl")),
                  "INT i\ni = " + std::to_string(i) + "\n\n");
}

TEST_F(batch_test, frees_the_memory_of_a_file)
{
    std::string script;
    for (int i = 0; i < 990; i++)
        script += "CHAR a" + std::to_string(i) + "[61000]\n";
    write_file(folder / "a.mrl", script + "CHAR large[100000]\n");
    write_file(folder / "b.mrl", "CHAR a1[256000000]\nREM b\n");
    fs::create_directories(folder / "b_conv.mrl");
    write_file(folder / "c.mrl", "CHAR a1[256000000]\nREM c\n");
    EXPECT_EQ(run({"a.mrl", "b.mrl", "c.mrl"}), "Unable to Open file b_conv.mrl");
    EXPECT_EQ(read_file(folder / "c_conv.mrl"), "CHAR a1[256000000]\nREM c\n") << "no memory was left";
    EXPECT_EQ(heap_list, nullptr);
    EXPECT_EQ(Vbuf, nullptr);
}

TEST_F(batch_test, ends_at_byte_26_and_at_the_files_end)
{
    static const struct {
        std::string script, output;
    } cases[] = {
        {"", ""},
        {"\n\n \t\n", "\n\n \t\n"},
        {"REM a\n\x1AREM b\n", "REM a\n"},
        {"POINT 1,2,3\x1A,4\n", "POINT 1, 2, 3, 0, , , , , , \n"},
        {"POINT 1,2,3", "POINT 1, 2, 3, 0, , , , , , \n"},
        {"  rLNENDP\nREM x\n", "  REM x\n"},
        {"LINE 1,2,3,foo(\nREM x\n", " foo(\nREM x\n"},
        {"CIRCLE\nREM x\n", "REM x\n"},
        {"ABORT\nREM x\n", "ABORT \nREM x\n"},
        {"Murivo" + std::string(1, 0) + "REM x\n", "REM x\n"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(escaped(converted(c.script)), escaped(c.output)) << escaped(c.script);
}

// The other end of a connection that breaks off: its bytes arrive, and then reading fails.
TEST_F(batch_test, takes_a_read_error_for_the_end)
{
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    std::string text = "REM a long enough line\nPOINT 1,2";
    EXPECT_EQ(write(ends[0], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    EXPECT_EQ(write(ends[1], "unread", 6), 6);
    close(ends[0]);
    plat_file source{ends[1]};
    output_capture output;
    ASSERT_EQ(pools_init(), 0);
    convert_file("test", &source);
    char byte;
    EXPECT_EQ(recv(ends[1], &byte, 1, 0), 0) << "the failure was not met";
    close(ends[1]);
    EXPECT_EQ(output.text(), "REM a long enough line\n 2\n");

    fs::create_symlink("/proc/self/mem", folder / "a.mrl"); // opens, and its first byte can't be read
    EXPECT_EQ(run({"a.mrl"}), "");
    EXPECT_TRUE(fs::exists(folder / "a_conv.mrl"));
}

// ---- The program ----

// Runs a command of the shell, in which $PROGRAM is the program, with standard error in its output. Returns
// the exit status. Both paths go in by the environment, as they may have any characters.
static int run_program(const fs::path &folder, const std::string &command, std::string *printed)
{
    setenv("FOLDER", folder.c_str(), 1);
    setenv("PROGRAM", TEST_PROGRAM, 1);
    FILE *pipe = popen(("cd \"$FOLDER\" && { " + command + "; } 2>&1").c_str(), "r");
    for (int c; (c = getc(pipe)) != EOF;)
        *printed += static_cast<char>(c);
    int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(batch_test, ends_with_status_0_whatever_could_not_be_opened)
{
    write_file(folder / "a.mrl", "REM x\n");
    std::string printed;
    EXPECT_EQ(run_program(folder, "\"$PROGRAM\" nothing.mrl a.mrl", &printed), 0);
    EXPECT_EQ(printed, "Unable to open nothing.mrl");
    EXPECT_EQ(read_file(folder / "a_conv.mrl"), "REM x\n");
    printed.clear();
    EXPECT_EQ(run_program(folder, "\"$PROGRAM\" </dev/null", &printed), 0) << "a cancel";
    EXPECT_EQ(printed, "");
}

// The first output fails in the middle, by a reader that leaves or by a limit; what arrived of it is whole as
// far as it goes, and the run goes on.
TEST_F(batch_test, goes_on_after_an_output_that_failed)
{
    std::string script = times(20000, "REM a line of text\n");
    write_file(folder / "a.mrl", script);
    write_file(folder / "b.mrl", "REM b\n");
    auto pipe_before = signal(SIGPIPE, SIG_DFL); // the program starts with what we have
    auto size_before = signal(SIGXFSZ, SIG_DFL);
    std::string printed;
    EXPECT_EQ(run_program(folder,
                          "mkfifo a_conv.mrl && { head -c 100 a_conv.mrl & \"$PROGRAM\" a.mrl b.mrl; }",
                          &printed),
              0);
    EXPECT_EQ(printed, script.substr(0, 100));
    EXPECT_EQ(read_file(folder / "b_conv.mrl"), "REM b\n");
    fs::remove(folder / "a_conv.mrl");
    fs::remove(folder / "b_conv.mrl");
    printed.clear();
    EXPECT_EQ(run_program(folder, "(ulimit -f 150; \"$PROGRAM\" a.mrl b.mrl)", &printed), 0);
    std::string output = read_file(folder / "a_conv.mrl");
    EXPECT_TRUE(!output.empty() && output.size() < script.size() && script.find(output) == 0);
    EXPECT_EQ(read_file(folder / "b_conv.mrl"), "REM b\n");
    signal(SIGPIPE, pipe_before);
    signal(SIGXFSZ, size_before);
}

// A pipe that is full for a while: what comes later must not follow what got lost.
TEST_F(batch_test, writes_nothing_after_a_failed_write)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
    ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    std::string written = times(30000, "0123456789") + times(30000, "abcdefghij"), got;
    std::vector<char> piece(written.size());
    size_t half = written.size() / 2;
    auto take = [&] {
        for (ssize_t size; (size = read(ends[0], piece.data(), piece.size())) > 0;)
            got.append(piece.data(), static_cast<size_t>(size));
    };
    out_open(plat_file{ends[1]});
    out_bytes(written.data(), half);
    take();
    out_bytes(written.data() + half, half);
    EXPECT_EQ(out_tell(), written.size());
    out_close();
    take();
    close(ends[0]);
    EXPECT_FALSE(got.empty());
    EXPECT_EQ(got, written.substr(0, got.size()));
    output_capture next;
    out_text("the next one is written again");
    EXPECT_EQ(next.text(), "the next one is written again");
}

TEST_F(batch_test, converts_the_paths_on_standard_input)
{
    write_file(folder / "a.mrl", "REM x\n");
    fs::create_directories(folder / "b_conv.mrl");
    write_file(folder / "b.mrl", "REM x\n");
    std::string printed;
    EXPECT_EQ(run_program(folder, "printf 'nothing.mrl\\nb.mrl\\na.mrl\\n' | \"$PROGRAM\"", &printed), 0);
    EXPECT_EQ(printed, "Unable to open nothing.mrl\nUnable to open b_conv.mrl\n");
    EXPECT_EQ(read_file(folder / "a_conv.mrl"), "REM x\n");
}
