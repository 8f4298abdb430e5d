// How the user picks scripts on POSIX: a list on standard input, a dialog program, or a numbered list.
//
// When memory runs out, a message goes to standard error and the user has picked nothing.
#include "platform/platform.h"
#include "platform/script_names.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>

// Receives the paths that the user picks.
struct path_callback {
    void (*call)(const char *path, void *context);
    void *context;
};

struct text_buffer {
    char *bytes; // null while empty
    size_t used; // without the NUL after it
};

// The result of one way to select.
enum select_result {
    SELECT_PASSED,     // at least one path was picked
    SELECT_CANCELED,   // the user picked nothing, or memory ran out
    SELECT_UNAVAILABLE // this way does not work here
};

static void print_out_of_memory()
{
    fputs("murlconv: out of memory\n", stderr);
}

// Reads up to the end of file, or to an error, and adds a NUL. False without memory. The caller frees the
// bytes.
static bool read_all(int number, text_buffer *text)
{
    const plat_file file{number};
    size_t capacity = 4096;
    do {
        capacity *= 2;
        auto *bytes = static_cast<char *>(realloc(text->bytes, capacity));
        if (bytes == nullptr)
            return false;
        text->bytes = bytes;
        text->used += plat_read(&file, bytes + text->used, capacity - 1 - text->used);
    } while (text->used == capacity - 1);
    text->bytes[text->used] = '\0';
    return true;
}

// Calls back with each path of a text from read_all. Empty paths are skipped.
static select_result pass_paths(text_buffer *text, char separator, const path_callback &callback)
{
    select_result result = SELECT_CANCELED;
    char *path = text->bytes;
    char *end = text->bytes + text->used;
    while (path < end) {
        char *path_end = static_cast<char *>(memchr(path, separator, static_cast<size_t>(end - path)));
        if (path_end == nullptr)
            path_end = end;
        *path_end = '\0';
        if (*path != '\0') {
            callback.call(path, callback.context);
            result = SELECT_PASSED;
        }
        path = path_end + 1;
    }
    return result;
}

// Returns what separates the paths of a list: NULs if the first separator is one, else line feeds, whose CRs
// are removed.
static char find_separator(text_buffer *text)
{
    size_t first = 0;
    while (first < text->used && text->bytes[first] != '\0' && text->bytes[first] != '\n')
        first++;
    if (first < text->used && text->bytes[first] == '\0')
        return '\0';
    size_t kept = 0;
    for (size_t i = 0; i < text->used; i++)
        if (text->bytes[i] != '\r' || text->bytes[i + 1] != '\n')
            text->bytes[kept++] = text->bytes[i];
    text->used = kept;
    text->bytes[kept] = '\0';
    return '\n';
}

// The paths on standard input. The list is read to its end first: a program that searches folders during the
// conversion would find the outputs and send them too, without end.
static select_result select_from_pipe(const path_callback &callback)
{
    text_buffer text = {};
    select_result result = SELECT_CANCELED;
    if (read_all(STDIN_FILENO, &text))
        result = pass_paths(&text, find_separator(&text), callback);
    else
        print_out_of_memory();
    free(text.bytes);
    return result;
}

// In the child process: runs a program of PATH with its standard output in a file, its warnings dropped, and
// the default action for the signals that plat_start ignores. Exits with status 127 if there is none.
[[noreturn]] static void exec_program(const char *const *arguments, int output)
{
    signal(SIGPIPE, SIG_DFL);
    signal(SIGXFSZ, SIG_DFL);
    dup2(output, STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    // execvp has no const in its type, but writes nothing.
    execvp(arguments[0], const_cast<char *const *>(arguments));
    _exit(127);
}

// Starts a program of PATH with its standard output in a pipe. Returns its process id and the read end of the
// pipe, or -1 on failure.
static pid_t start_program(const char *const *arguments, int *output)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    pid_t process = fork();
    if (process == 0)
        exec_program(arguments, ends[1]);
    close(ends[1]);
    if (process == -1)
        close(ends[0]);
    *output = ends[0];
    return process;
}

// Runs one dialog program. Status 0 means that its output has the selection, a path a line; 1 that the user
// cancelled; anything else that it could not show its dialog.
static select_result select_from_program(const char *const *arguments, const path_callback &callback)
{
    int output;
    pid_t process = start_program(arguments, &output);
    if (process == -1)
        return SELECT_UNAVAILABLE;
    text_buffer text = {};
    bool complete = read_all(output, &text);
    close(output);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR)
        continue;
    select_result result = SELECT_CANCELED;
    if (!complete)
        print_out_of_memory();
    else if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        result = SELECT_UNAVAILABLE;
    else if (WEXITSTATUS(status) == 0)
        result = pass_paths(&text, '\n', callback);
    free(text.bytes);
    return result;
}

// The option with which zenity starts in the current directory. Null if that fails: then zenity chooses. The
// caller frees it.
static char *zenity_folder_option()
{
    char *folder = realpath(".", nullptr);
    char *option = nullptr;
    if (folder != nullptr && asprintf(&option, "--filename=%s/", folder) < 0)
        option = nullptr;
    free(folder);
    return option;
}

static select_result select_from_dialog(const path_callback &callback)
{
    char *folder_option = zenity_folder_option();
    const char *const zenity[] = {"zenity",
                                  "--file-selection",
                                  "--multiple",
                                  "--separator=\n",
                                  "--title=Open",
                                  "--file-filter=MURL Files (*.mrl)|*.mrl",
                                  "--file-filter=MURL Files (*.mrp)|*.mrp",
                                  folder_option,
                                  nullptr};
    static const char *const kdialog[] = {"kdialog",
                                          "--title",
                                          "Open",
                                          "--multiple",
                                          "--separate-output",
                                          "--getopenfilename",
                                          ".",
                                          "MURL Files (*.mrl)\nMURL Files (*.mrp)",
                                          nullptr};
    select_result result = select_from_program(zenity, callback);
    free(folder_option);
    if (result == SELECT_UNAVAILABLE)
        result = select_from_program(kdialog, callback);
    return result;
}

// Whether an entry belongs in the list: a script that isn't hidden, no folder, and no output.
static int is_listed(const dirent *entry)
{
    const char *name = entry->d_name;
    if (name[0] == '.')
        return 0;
    name_kind kind = name_kind_of(name);
    struct stat info;
    return (kind == NAME_SCRIPT || kind == NAME_LONE) && stat(name, &info) == 0 && !S_ISDIR(info.st_mode);
}

// Shows a name with a question mark for each control character, which would act on the terminal. In UTF-8 the
// upper control characters are two bytes, C2 and 80 to 9F.
static void show_name(const char *name)
{
    for (; *name != '\0'; name++) {
        auto c = static_cast<unsigned char>(name[0]);
        auto next = static_cast<unsigned char>(name[1]);
        bool pair = c == 0xC2 && next >= 0x80 && next < 0xA0;
        fputc(c < ' ' || c == 127 || pair ? '?' : c, stderr);
        name += pair ? 1 : 0;
    }
}

static void show_scripts(dirent *const *scripts, size_t count)
{
    if (count == 0) {
        fputs(
            "No *.mrl or *.mrp files in this directory.\n"
            "Paths of scripts to convert (an empty line cancels): ",
            stderr);
        return;
    }
    for (size_t i = 0; i < count; i++) {
        fprintf(stderr, "%5zu  ", i + 1);
        show_name(scripts[i]->d_name);
        fputc('\n', stderr);
    }
    fputs("Convert which? Numbers, ranges like 2-5, paths, or all (an empty line cancels): ", stderr);
}

// Reads a number of the list and steps after it. 0 if there is none.
static size_t read_number(const char **text, size_t count)
{
    size_t number = 0;
    *text = std::from_chars(*text, *text + strlen(*text), number).ptr;
    return number <= count ? number : 0;
}

// Calls back with the scripts that one word of the answer means. A word that names nothing in the list is a
// path, so a number out of range is reported as a file that can't be opened.
static void pass_word(const char *word, dirent *const *scripts, size_t count, const path_callback &callback)
{
    size_t first = 1;
    size_t last = count;
    if (strcasecmp(word, "all") != 0) {
        const char *rest = word;
        first = last = read_number(&rest, count);
        if (first != 0 && *rest == '-')
            last = read_number(&++rest, count);
        if (*rest != '\0')
            first = 0;
    }
    if (first == 0 || last == 0) {
        callback.call(word, callback.context);
        return;
    }
    for (; first != last; first < last ? first++ : first--)
        callback.call(scripts[first - 1]->d_name, callback.context);
    callback.call(scripts[last - 1]->d_name, callback.context);
}

// Cuts the next word off an answer and steps after it; null at the end. Quotes keep blanks and commas in a
// word, as a terminal puts them around a path that is dropped on it.
static char *next_word(char **answer)
{
    static const char separators[] = ", \t\n\v\f\r";
    char *word = *answer + strspn(*answer, separators);
    if (*word == '\0')
        return nullptr;
    char *end = *word == '"' || *word == '\'' ? strchr(word + 1, *word) : nullptr;
    if (end != nullptr)
        word++;
    else
        end = word + strcspn(word, separators);
    *answer = *end == '\0' ? end : end + 1;
    *end = '\0';
    return word;
}

static select_result pass_answer(dirent *const *scripts, size_t count, const path_callback &callback)
{
    char *line = nullptr;
    size_t capacity = 0;
    select_result result = SELECT_CANCELED;
    if (getline(&line, &capacity, stdin) >= 0) {
        char *rest = line;
        for (const char *word = next_word(&rest); word != nullptr; word = next_word(&rest)) {
            pass_word(word, scripts, count, callback);
            result = SELECT_PASSED;
        }
    }
    free(line);
    return result;
}

static select_result select_from_list(const path_callback &callback)
{
    dirent **scripts = nullptr;
    int found = scandir(".", &scripts, is_listed, alphasort);
    if (found < 0 && errno == ENOMEM) {
        print_out_of_memory();
        return SELECT_CANCELED;
    }
    auto count = static_cast<size_t>(found < 0 ? 0 : found);
    show_scripts(scripts, count);
    select_result result = pass_answer(scripts, count, callback);
    for (size_t i = 0; i < count; i++)
        free(scripts[i]);
    free(scripts);
    return result;
}

static bool has_display()
{
    const char *x11 = getenv("DISPLAY");
    const char *wayland = getenv("WAYLAND_DISPLAY");
    return (x11 != nullptr && *x11 != '\0') || (wayland != nullptr && *wayland != '\0');
}

int plat_select_files(void (*call)(const char *path, void *context), void *context)
{
    const path_callback callback{call, context};
    select_result result = SELECT_UNAVAILABLE;
    if (!isatty(STDIN_FILENO))
        result = select_from_pipe(callback);
    else if (has_display())
        result = select_from_dialog(callback);
    if (result == SELECT_UNAVAILABLE)
        result = select_from_list(callback);
    return result == SELECT_PASSED ? 0 : -1;
}
