// The POSIX platform layer, against real files, pipes, a pseudo terminal and stand-ins for the dialog
// programs.
#include "platform/platform.h"

#include "common/run.h"
#include "platform/script_names.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace std::string_literals;
using name_list = std::vector<std::string>;

// An empty directory to work in. Standard input and PATH are restored at the end.
class platform : public testing::Test {
protected:
    void SetUp() override
    {
        directory = fresh_folder("platform");
        start = open(".", O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(chdir(directory.c_str()), 0);
        old_input = dup(STDIN_FILENO);
        old_path = getenv("PATH");
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
    }

    void TearDown() override
    {
        setenv("PATH", old_path.c_str(), 1);
        dup2(old_input, STDIN_FILENO);
        close(old_input);
        EXPECT_EQ(fchdir(start), 0);
        close(start);
    }

    // A program of the test's own in front of everything else in PATH.
    void write_program(const char *name, const std::string &script)
    {
        mkdir("bin", 0777);
        std::string path = std::string("bin/") + name;
        write_file(path, "#!/bin/sh\n" + script);
        chmod(path.c_str(), 0777);
        setenv("PATH", (directory + "/bin:" + old_path).c_str(), 1);
    }

    static name_list selected(int *result)
    {
        name_list names;
        *result = plat_select_files(
            [](const char *path, void *context) { static_cast<name_list *>(context)->push_back(path); },
            &names);
        return names;
    }

    // The selection when standard input is a file or pipe that holds these bytes.
    static name_list selected_from(const std::string &input, int *result)
    {
        write_file("input", input);
        int file = open("input", O_RDONLY);
        dup2(file, STDIN_FILENO);
        close(file);
        name_list names = selected(result);
        unlink("input");
        return names;
    }

    // The selection when standard input is a terminal at which the user types a text. shown is what appears
    // on standard error.
    static name_list selected_by(const std::string &typed, int *result, std::string *shown = nullptr)
    {
        int master = posix_openpt(O_RDWR | O_NOCTTY);
        grantpt(master);
        unlockpt(master);
        int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
        dup2(terminal, STDIN_FILENO);
        close(terminal);
        EXPECT_EQ(write(master, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
        clearerr(stdin);
        testing::internal::CaptureStderr();
        name_list names = selected(result);
        std::string text = testing::internal::GetCapturedStderr();
        if (shown != nullptr)
            *shown = text;
        close(master);
        return names;
    }

    std::string directory;
    std::string old_path;
    int start = -1;
    int old_input = -1;
};

TEST_F(platform, input_is_read_as_it_is)
{
    write_file("a.mrl", std::string("A\r\nB\0\x1a\xff", 7));
    plat_file input;
    ASSERT_EQ(plat_open_input("a.mrl", &input), 0);
    char bytes[16];
    EXPECT_EQ(plat_read(&input, bytes, sizeof bytes), 7u);
    EXPECT_EQ(memcmp(bytes, "A\r\nB\0\x1a\xff", 7), 0);
    EXPECT_EQ(plat_read(&input, bytes, 1), 0u);
    EXPECT_TRUE(fcntl(input.number, F_GETFD) & FD_CLOEXEC);
    plat_close(&input);
}

TEST_F(platform, input_that_can_not_be_read_is_refused_without_a_leak)
{
    mkdir("folder", 0777);
    ASSERT_EQ(symlink("loop", "loop"), 0);
    int before = open_files();
    plat_file input;
    EXPECT_NE(plat_open_input("missing.mrl", &input), 0);
    EXPECT_NE(plat_open_input("folder", &input), 0);
    EXPECT_NE(plat_open_input("folder/", &input), 0);
    EXPECT_NE(plat_open_input("loop", &input), 0);
    EXPECT_NE(plat_open_input("", &input), 0);
    EXPECT_NE(plat_open_input(std::string(100000, 'a').c_str(), &input), 0);
    EXPECT_EQ(open_files(), before);
}

TEST_F(platform, input_from_a_fifo)
{
    ASSERT_EQ(mkfifo("fifo", 0666), 0);
    pid_t writer = fork();
    if (writer == 0) {
        FILE *fifo = fopen("fifo", "w");
        fputs("LI", fifo);
        fflush(fifo);
        usleep(50000);
        fputs("NE", fifo);
        fclose(fifo);
        _exit(0);
    }
    plat_file input;
    ASSERT_EQ(plat_open_input("fifo", &input), 0);
    char bytes[8] = "";
    EXPECT_EQ(plat_read(&input, bytes, sizeof bytes), 4u) << "a short piece is not the end";
    EXPECT_STREQ(bytes, "LINE");
    plat_close(&input);
    waitpid(writer, nullptr, 0);
}

TEST_F(platform, output_replaces_what_was_there)
{
    write_file("a.mrl", "in");
    write_file("a_conv.mrl", "a long old output");
    plat_file input, output;
    ASSERT_EQ(plat_open_input("a.mrl", &input), 0);
    ASSERT_EQ(plat_open_output("a_conv.mrl", &input, &output), 0);
    EXPECT_TRUE(fcntl(output.number, F_GETFD) & FD_CLOEXEC);
    EXPECT_EQ(plat_write(&output, "new\n", 4), 0);
    plat_close(&output);
    EXPECT_EQ(read_file("a_conv.mrl"), "new\n");

    write_file("a_conv.mrl", "x");
    ASSERT_EQ(plat_open_output("a_conv.mrl", &input, &output), 0);
    plat_close(&output);
    EXPECT_EQ(read_file("a_conv.mrl"), "");

    ASSERT_EQ(symlink("elsewhere", "link_conv.mrl"), 0);
    ASSERT_EQ(plat_open_output("link_conv.mrl", &input, &output), 0) << "a link that leads nowhere yet";
    plat_close(&output);
    EXPECT_EQ(access("elsewhere", F_OK), 0);

    ASSERT_EQ(plat_open_output("/dev/full", &input, &output), 0);
    EXPECT_NE(plat_write(&output, "lost", 4), 0);
    plat_close(&output);
    plat_close(&input);
}

static int mode_of(const char *path)
{
    struct stat info;
    return stat(path, &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

TEST_F(platform, new_output_has_the_permissions_of_its_input)
{
    static const struct {
        mode_t input, mask, output;
    } cases[] = {
        {0644, 022, 0644}, {0600, 022, 0600}, {0666, 022, 0644},  {0666, 077, 0600},
        {0755, 022, 0644}, {0440, 022, 0440}, {06777, 000, 0666},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(testing::Message() << std::oct << row.input << " " << row.mask);
        write_file("a.mrl", "in");
        ASSERT_EQ(chmod("a.mrl", row.input), 0);
        mode_t mask = umask(row.mask);
        plat_file input, output;
        ASSERT_EQ(plat_open_input("a.mrl", &input), 0);
        ASSERT_EQ(plat_open_output("a_conv.mrl", &input, &output), 0);
        EXPECT_EQ(plat_write(&output, "x", 1), 0);
        plat_close(&output);
        EXPECT_EQ(mode_of("a_conv.mrl"), static_cast<int>(row.output));
        chmod("a_conv.mrl", 0631);
        ASSERT_EQ(plat_open_output("a_conv.mrl", &input, &output), 0);
        plat_close(&output);
        EXPECT_EQ(mode_of("a_conv.mrl"), 0631) << "one that is there keeps its own";
        plat_close(&input);
        umask(mask);
        unlink("a_conv.mrl");
        unlink("a.mrl");
    }
}

TEST_F(platform, opening_goes_on_after_a_signal)
{
    ASSERT_EQ(mkfifo("fifo", 0666), 0);
    struct sigaction action = {}, before;
    static volatile sig_atomic_t signals = 0;
    signals = 0;
    action.sa_handler = [](int) { signals = signals + 1; };
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    pid_t parent = getpid();
    pid_t writer = fork();
    if (writer == 0) {
        for (int i = 0; i < 3; i++) {
            usleep(30000);
            kill(parent, SIGUSR1);
        }
        usleep(30000);
        close(open("fifo", O_WRONLY));
        _exit(0);
    }
    plat_file input;
    EXPECT_EQ(plat_open_input("fifo", &input), 0);
    EXPECT_GT(signals, 0);
    plat_close(&input);
    waitpid(writer, nullptr, 0);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(platform, output_never_touches_its_input)
{
    write_file("a.mrl", "precious");
    ASSERT_EQ(symlink("a.mrl", "soft_conv.mrl"), 0);
    ASSERT_EQ(link("a.mrl", "hard_conv.mrl"), 0);
    mkdir("folder_conv", 0777);
    plat_file input;
    ASSERT_EQ(plat_open_input("a.mrl", &input), 0);
    int before = open_files();
    plat_file output;
    EXPECT_NE(plat_open_output("a.mrl", &input, &output), 0);
    EXPECT_NE(plat_open_output("soft_conv.mrl", &input, &output), 0);
    EXPECT_NE(plat_open_output("hard_conv.mrl", &input, &output), 0);
    EXPECT_NE(plat_open_output("folder_conv", &input, &output), 0);
    EXPECT_NE(plat_open_output("missing/a.mrl", &input, &output), 0);
    EXPECT_EQ(open_files(), before);
    EXPECT_EQ(read_file("a.mrl"), "precious");
    plat_close(&input);
}

TEST_F(platform, extension_start)
{
    struct {
        const char *path, *extension;
    } const cases[] = {
        {"a.mrl", ".mrl"}, {"a", ""},
        {"", ""},          {"a.", "."},
        {".mrl", ".mrl"},  {"a.b.mrl", ".mrl"},
        {"x.y/a", ""},     {"/x/a.mrp", ".mrp"},
        {"x/", ""},        {"./a b\xff.mrl", ".mrl"},
    };
    for (const auto &row : cases)
        EXPECT_STREQ(row.path + plat_extension_start(row.path), row.extension) << row.path;
}

TEST_F(platform, piped_selection)
{
    std::string long_name(1000000, 'n');
    struct {
        std::string input;
        name_list names;
    } const cases[] = {
        {"", {}},
        {"\n\n\n", {}},
        {"a.mrl", {"a.mrl"}},
        {"b.mrl\na.mrl\n", {"b.mrl", "a.mrl"}},
        {"a.mrl\na.mrl\n", {"a.mrl", "a.mrl"}},
        {"\n a b, c.mrl \n\n\"q\"\nall\n1", {" a b, c.mrl ", "\"q\"", "all", "1"}},
        {"x\r\n\r\n\xff\xfe\ny\r\r\nz\r1\nz\r", {"x", "\xff\xfe", "y\r", "z\r1", "z\r"}},
        {"a.mrl\0b\nc\r\n.mrl\0\0d"s, {"a.mrl", "b\nc\r\n.mrl", "d"}},
        {"a.mrl\0"s, {"a.mrl"}},
        {"\0a\nb"s, {"a\nb"}},
        {"\0\0"s, {}},
        {"a\nb\0c\nd"s, {"a", "b", "d"}}, // a path ends at its first NUL
        {long_name + "\n" + long_name, {long_name, long_name}},
    };
    for (const auto &row : cases) {
        int result;
        EXPECT_EQ(selected_from(row.input, &result), row.names) << row.input.substr(0, 100);
        EXPECT_EQ(result, row.names.empty() ? -1 : 0) << row.input.substr(0, 100);
    }
}

// A list that is still being written while scripts are converted must not meet its own outputs.
TEST_F(platform, piped_selection_is_whole_before_the_first_path_is_taken)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    pid_t writer = fork();
    if (writer == 0) {
        dprintf(ends[1], "a.mrl\n");
        usleep(50000);
        dprintf(ends[1], access("taken", F_OK) == 0 ? "too_early\n" : "b.mrl\n");
        _exit(0);
    }
    close(ends[1]);
    name_list names;
    plat_select_files(
        [](const char *path, void *context) {
            write_file("taken", "");
            static_cast<name_list *>(context)->push_back(path);
        },
        &names);
    EXPECT_EQ(names, (name_list{"a.mrl", "b.mrl"}));
    waitpid(writer, nullptr, 0);
}

TEST_F(platform, terminal_list_and_answers)
{
    for (const char *name : {"c.mrl", "a.mrp", "d e.mrl", "B.MRL", "x.txt", "mrl", ".hidden.mrl",
                             "c_conv.mrl", "c_conv_conv.mrl", "a_conv.mrp", "B_conv.MRL"})
        write_file(name, "");
    mkdir("folder.mrl", 0777);
    std::string escape = "z\x1b[1m\n\x7f\xc2\x9b\xc2\xa9.mrl";
    write_file(escape, "");
    struct {
        const char *typed;
        name_list names;
    } const cases[] = {
        {"2\n", {"a.mrp"}},
        {"3, 1\n", {"c.mrl", "B.MRL"}},
        {"2-4\n", {"a.mrp", "c.mrl", "d e.mrl"}},
        {"3-1 1\n", {"c.mrl", "a.mrp", "B.MRL", "B.MRL"}},
        {"all\n", {"B.MRL", "a.mrp", "c.mrl", "d e.mrl", escape}},
        {"/x/y.mrl 1 other.mrl\n", {"/x/y.mrl", "B.MRL", "other.mrl"}},
        {"'d e.mrl',\"f, g\"1\n", {"d e.mrl", "f, g", "B.MRL"}},
        {"0 6 1-6 2- -3 2x 99999999999999999999999\n",
         {"0", "6", "1-6", "2-", "-3", "2x", "99999999999999999999999"}},
        {"it's\n", {"it's"}},
        {"\n", {}},
        {" , ,\t\n", {}},
        {"2\x04\x04", {"a.mrp"}}, // end of input, after a word and at once
        {"\x04", {}},
    };
    for (const auto &row : cases) {
        int result;
        std::string shown;
        EXPECT_EQ(selected_by(row.typed, &result, &shown), row.names) << row.typed;
        EXPECT_EQ(result, row.names.empty() ? -1 : 0) << row.typed;
        EXPECT_EQ(shown.find("    1  B.MRL\n    2  a.mrp\n    3  c.mrl\n    4  d e.mrl\n    5  "
                             "z?[1m???\xc2\xa9.mrl\nConvert"),
                  0u)
            << shown;
    }
}

TEST_F(platform, kinds_of_names)
{
    mkdir("d.mrl", 0777);
    for (const char *name : {"a.mrl", "a_conv.mrl", "b_conv.mrl", "d.mrl/c.MRP", "d.mrl/c_conv.MRP"})
        write_file(name, "");
    static const struct {
        const char *path;
        name_kind kind;
    } cases[] = {
        {"a.mrl", NAME_SCRIPT},
        {"gone.Mrl", NAME_SCRIPT},
        {"a_conv.mrl", NAME_OUTPUT},
        {"./a_conv.mrl", NAME_OUTPUT},
        {"b_conv.mrl", NAME_LONE},
        {"_conv.mrl", NAME_LONE},
        {"a_CONV.mrl", NAME_SCRIPT},
        {"a_conv.mrp", NAME_LONE},
        {"a_conv.MRL", NAME_LONE},
        {"a_conv_conv.mrl", NAME_OUTPUT},
        {"d.mrl/c_conv.MRP", NAME_OUTPUT},
        {"d.mrl/a_conv.mrl", NAME_LONE},
        {"a_conv", NAME_OTHER},
        {"a.mrl2", NAME_OTHER},
        {"d.mrl/a", NAME_OTHER},
        {"mrl", NAME_OTHER},
        {"", NAME_OTHER},
        {".mrp", NAME_SCRIPT},
    };
    for (const auto &c : cases)
        EXPECT_EQ(name_kind_of(c.path), c.kind) << c.path;
}

TEST(script_names, an_output_has_the_name_of_its_input)
{
    for (const auto &[path, wanted] : {std::pair{"d.e/a.mrl", "d.e/a_conv.mrl"},
                                       {"d.e/a", "d.e/a_conv"},
                                       {"a.b.mrl", "a.b_conv.mrl"},
                                       {"", "_conv"}}) {
        char output[32];
        output_path_write(output, path);
        EXPECT_STREQ(output, wanted);
    }
}

// Without its input a name like an output's is a script's.
TEST_F(platform, terminal_list_with_outputs)
{
    for (const char *name : {"a_conv.mrl", "a.mrp", "b_conv.mrl", "b_conv_conv.mrl", "_conv.mrl", "conv.mrl"})
        write_file(name, "");
    int result;
    EXPECT_EQ(selected_by("all c_conv.mrl\n", &result),
              (name_list{"_conv.mrl", "a.mrp", "a_conv.mrl", "b_conv.mrl", "conv.mrl", "c_conv.mrl"}));
}

TEST_F(platform, terminal_in_a_folder_without_scripts)
{
    int result;
    std::string shown;
    EXPECT_EQ(selected_by("all x.mrl\n", &result, &shown), (name_list{"all", "x.mrl"}));
    EXPECT_EQ(shown.find("No *.mrl or *.mrp files"), 0u) << shown;
}

TEST_F(platform, dialog_programs)
{
    write_file("list.mrl", "");
    setenv("DISPLAY", ":0", 1);
    int result;
    // Arguments as they come: one a line.
    write_program("zenity", "printf '%s|' \"$@\" >arguments; printf '/x/a b\\377.mrl\\n/x/c.mrp\\n'\n");
    EXPECT_EQ(selected_by("", &result), (name_list{"/x/a b\xff.mrl", "/x/c.mrp"}));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(read_file("arguments"),
              "--file-selection|--multiple|--separator=\n|--title=Open|"
              "--file-filter=MURL Files (*.mrl)|*.mrl|"
              "--file-filter=MURL Files (*.mrp)|*.mrp|--filename=" +
                  std::filesystem::canonical(directory).string() + "/|");

    write_program("zenity", "echo lost; exit 1\n");
    EXPECT_EQ(selected_by("all\n", &result), name_list{});
    EXPECT_EQ(result, -1);

    // A dialog that can't be shown leaves the choice to the next way.
    write_program("zenity", "echo lost; exit 255\n");
    write_program("kdialog", "printf '%s|' \"$@\" >arguments; echo /x/k.mrl\n");
    EXPECT_EQ(selected_by("all\n", &result), name_list{"/x/k.mrl"});
    EXPECT_EQ(read_file("arguments"),
              "--title|Open|--multiple|--separate-output|--getopenfilename|.|"
              "MURL Files (*.mrl)\nMURL Files (*.mrp)|");
    write_program("kdialog", "echo lost; kill -9 $$\n");
    EXPECT_EQ(selected_by("all\n", &result), name_list{"list.mrl"});

    // No display, no dialog.
    write_program("zenity", "echo lost\n");
    unsetenv("DISPLAY");
    EXPECT_EQ(selected_by("all\n", &result), name_list{"list.mrl"});
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_EQ(selected_by("all\n", &result), name_list{"lost"});
    unsetenv("WAYLAND_DISPLAY");
}

// What the program ignores ends other programs, as they expect.
TEST_F(platform, dialog_programs_get_their_signals_back)
{
    write_file("list.mrl", "");
    setenv("DISPLAY", ":0", 1);
    auto pipe_before = signal(SIGPIPE, SIG_DFL);
    auto size_before = signal(SIGXFSZ, SIG_DFL);
    ASSERT_EQ(plat_start(nullptr, nullptr), 0);
    write_program("zenity", "kill -PIPE $$; echo lost\n");
    write_program("kdialog", "kill -XFSZ $$; echo lost\n");
    int result;
    EXPECT_EQ(selected_by("all\n", &result), name_list{"list.mrl"});
    signal(SIGPIPE, pipe_before);
    signal(SIGXFSZ, size_before);
}

TEST_F(platform, no_dialog_program_in_path)
{
    write_file("list.mrl", "");
    setenv("DISPLAY", ":0", 1);
    setenv("PATH", "", 1);
    int before = open_files();
    int result;
    EXPECT_EQ(selected_by("1\n", &result), name_list{"list.mrl"});
    EXPECT_EQ(open_files(), before);
}

// A script that took the number of a closed standard stream would get the program's messages.
TEST_F(platform, closed_standard_streams_are_filled)
{
    pid_t child = fork();
    if (child == 0) {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        bool good = plat_start(nullptr, nullptr) == 0;
        plat_file input;
        good = good && plat_open_input("/dev/null", &input) == 0;
        _exit(good && input.number > STDERR_FILENO ? 0 : 1);
    }
    int status;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}
