// The POSIX side of the platform layer.
//
// Lists of names are one block of NUL-terminated names behind each other. When memory runs out the routine
// in hand says so on standard error and acts as if the user had picked nothing.
#include "platform/platform.h"

#include "support/text.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

// NOLINTNEXTLINE(readability-redundant-declaration): only some C libraries declare it.
extern char **environ;

// Names, or whatever else grows byte by byte.
struct byte_list {
    char *bytes; // null while empty
    size_t used;
    size_t room;
};

// What came of one way to select.
enum select_result {
    SELECT_TAKEN,    // at least one path was handed over
    SELECT_CANCELED, // the user picked nothing, or memory ran out
    SELECT_MISSING   // this way does not work here
};

// Opens a file, whatever signals come in between: a pipe can make that a long wait. -1 if it can't be opened.
static int open_file(const char *path, int flags, mode_t mode)
{
    int file;
    do
        file = open(path, flags | O_CLOEXEC | O_NOCTTY, mode);
    while (file < 0 && errno == EINTR);
    return file;
}

int plat_open_input(const char *path, plat_file *input)
{
    input->number = open_file(path, O_RDONLY, 0);
    if (input->number < 0)
        return 1;
    struct stat info;
    if (fstat(input->number, &info) == 0 && !S_ISDIR(info.st_mode))
        return 0;
    close(input->number);
    return 1;
}

// Empties what was there before at the output's path. False if that can't be done, or if it is the input:
// links can lead back to it. A device and a pipe have nothing to empty.
static bool empty_output(int file, const struct stat *in_info)
{
    struct stat out_info;
    if (fstat(file, &out_info) != 0)
        return false;
    if (out_info.st_dev == in_info->st_dev && out_info.st_ino == in_info->st_ino)
        return false;
    if (!S_ISREG(out_info.st_mode) || out_info.st_size == 0)
        return true;
    int result;
    do
        result = ftruncate(file, 0);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

// Most outputs are new files, which need no further look.
int plat_open_output(const char *path, const plat_file *input, plat_file *output)
{
    struct stat info;
    if (fstat(input->number, &info) != 0)
        return 1;
    mode_t mode = info.st_mode & 0666;
    output->number = open_file(path, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (output->number >= 0)
        return 0;
    output->number = open_file(path, O_WRONLY | O_CREAT, mode);
    if (output->number < 0)
        return 1;
    if (empty_output(output->number, &info))
        return 0;
    close(output->number);
    return 1;
}

size_t plat_read(const plat_file *file, void *bytes, size_t size)
{
    size_t used = 0;
    while (used < size) {
        ssize_t got = read(file->number, static_cast<char *>(bytes) + used, size - used);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        used += static_cast<size_t>(got);
    }
    return used;
}

int plat_write(const plat_file *file, const char *bytes, size_t size)
{
    while (size > 0) {
        ssize_t done = write(file->number, bytes, size);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return 1;
        bytes += done;
        size -= static_cast<size_t>(done);
    }
    return 0;
}

int plat_seek(const plat_file *file, long long offset)
{
    return lseek(file->number, static_cast<off_t>(offset), SEEK_SET) < 0 ? 1 : 0;
}

void plat_close(const plat_file *file)
{
    close(file->number);
}

// Where the C library grows its heap in one piece, the heap goes on in large steps once it has used up the
// first two megabytes, and the system is told that large pages do for them. A large page costs the system
// as much as some 80 small ones and does for 512.
void plat_prepare_memory()
{
#if defined(__GLIBC__) && defined(MADV_HUGEPAGE)
    constexpr uintptr_t large_page = 2u << 20;
    constexpr int step = 16 << 20;
    static char *prepared; // the end of the heap when it was looked at last; null: never
    char *end = static_cast<char *>(sbrk(0));
    if (prepared == nullptr)
        prepared = end;
    if (end < prepared + large_page)
        return;
    mallopt(M_TOP_PAD, step);
    char *first = prepared + (large_page - reinterpret_cast<uintptr_t>(prepared) % large_page) % large_page;
    char *last = end - reinterpret_cast<uintptr_t>(end) % large_page;
    if (first < last)
        (void)madvise(first, static_cast<size_t>(last - first), MADV_HUGEPAGE);
    prepared = end;
#endif
}

plat_path_parts plat_split_path(const char *path)
{
    plat_path_parts parts;
    const char *slash = strrchr(path, '/');
    parts.base_start = slash == nullptr ? 0 : static_cast<size_t>(slash + 1 - path);
    const char *base = path + parts.base_start;
    const char *dot = strrchr(base, '.');
    parts.extension_start =
        parts.base_start + (dot == nullptr ? strlen(base) : static_cast<size_t>(dot - base));
    return parts;
}

// Makes room for size more bytes. False without memory; the list is as it was then.
static bool list_reserve(byte_list *list, size_t size)
{
    if (size <= list->room - list->used)
        return true;
    size_t room = list->room < 4096 ? 4096 : list->room;
    while (size > room - list->used) {
        if (room > SIZE_MAX / 2)
            return false;
        room *= 2;
    }
    char *bytes = static_cast<char *>(realloc(list->bytes, room));
    if (bytes == nullptr)
        return false;
    list->bytes = bytes;
    list->room = room;
    return true;
}

static bool list_add(byte_list *list, const char *bytes, size_t size)
{
    if (!list_reserve(list, size))
        return false;
    memcpy(list->bytes + list->used, bytes, size);
    list->used += size;
    return true;
}

static void list_free(byte_list *list)
{
    free(list->bytes);
    *list = byte_list{};
}

static void tell_no_memory()
{
    fputs("murlconv: out of memory\n", stderr);
}

// Everything up to the end of file, with one NUL behind it that used does not count. An error while reading
// ends the text. False without memory.
static bool read_all(int file, byte_list *text)
{
    for (;;) {
        if (!list_reserve(text, 4096))
            return false;
        ssize_t got = read(file, text->bytes + text->used, text->room - text->used - 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        text->used += static_cast<size_t>(got);
    }
    text->bytes[text->used] = '\0';
    return true;
}

// Hands over each line of a text that read_all has read. Empty lines are no paths.
static select_result take_lines(byte_list *text, void (*take)(const char *path, void *context), void *context)
{
    select_result result = SELECT_CANCELED;
    char *line = text->bytes;
    char *end = text->bytes + text->used;
    while (line < end) {
        char *line_end = static_cast<char *>(memchr(line, '\n', static_cast<size_t>(end - line)));
        if (line_end == nullptr)
            line_end = end;
        *line_end = '\0';
        if (*line != '\0') {
            take(line, context);
            result = SELECT_TAKEN;
        }
        line = line_end + 1;
    }
    return result;
}

// One path a line from standard input. The list is read to its end first: a program that searches folders
// while we convert would find our own outputs and send them back to us, without end.
static select_result select_from_pipe(void (*take)(const char *path, void *context), void *context)
{
    byte_list text = {};
    select_result result = SELECT_CANCELED;
    if (read_all(STDIN_FILENO, &text))
        result = take_lines(&text, take, context);
    else
        tell_no_memory();
    list_free(&text);
    return result;
}

// Starts a program with its standard output in a file, its warnings dropped, and the signals that plat_start
// ignores as a program expects them. Gives its process, or -1.
static pid_t spawn_program(const char *const *arguments, int output)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    sigaddset(&signals, SIGXFSZ);
    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0)
        return -1;
    pid_t process = -1;
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) == 0) {
        // The interface lacks const for history's sake; the arguments are not written.
        char *const *vector = const_cast<char *const *>(arguments);
        if (posix_spawnattr_setsigdefault(&attributes, &signals) != 0 ||
            posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF) != 0 ||
            posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) != 0 ||
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0) != 0 ||
            posix_spawnp(&process, arguments[0], &actions, &attributes, vector, environ) != 0)
            process = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    posix_spawnattr_destroy(&attributes);
    return process;
}

// Starts a program of PATH with its standard output in a pipe. Gives its process and the pipe's end, or -1 if
// there is no such program.
static pid_t start_program(const char *const *arguments, int *output)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    pid_t process = spawn_program(arguments, ends[1]);
    close(ends[1]);
    if (process == -1)
        close(ends[0]);
    *output = ends[0];
    return process;
}

// Lets one dialog program run. Status 0 means that its output holds the selection, a line each; 1 that the
// user cancelled; anything else that it could not show its dialog.
static select_result select_from_program(const char *const *arguments, void (*take)(const char *, void *),
                                         void *context)
{
    int output;
    pid_t process = start_program(arguments, &output);
    if (process == -1)
        return SELECT_MISSING;
    byte_list text = {};
    bool complete = read_all(output, &text);
    close(output);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR)
        continue;
    select_result result = SELECT_CANCELED;
    if (!complete)
        tell_no_memory();
    else if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        result = SELECT_MISSING;
    else if (WEXITSTATUS(status) == 0)
        result = take_lines(&text, take, context);
    list_free(&text);
    return result;
}

// The option that lets zenity begin in the current directory, which it must be told as a whole path. Null if
// that can't be had: then zenity begins where it likes. The caller frees it.
static char *zenity_folder_option()
{
    static const char option[] = "--filename=";
    char *folder = realpath(".", nullptr);
    if (folder == nullptr)
        return nullptr;
    size_t size = sizeof option + strlen(folder) + 1;
    char *text = static_cast<char *>(malloc(size));
    if (text != nullptr)
        snprintf(text, size, "%s%s/", option, folder);
    free(folder);
    return text;
}

static select_result select_from_dialog(void (*take)(const char *path, void *context), void *context)
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
    select_result result = select_from_program(zenity, take, context);
    free(folder_option);
    if (result == SELECT_MISSING)
        result = select_from_program(kdialog, take, context);
    return result;
}

// True for a name that belongs in the list: *.mrl or *.mrp in any case, no folder, not hidden.
static bool is_script(const char *name)
{
    size_t length = strlen(name);
    if (name[0] == '.' || length < 4)
        return false;
    const char *extension = name + length - 4;
    if (text_compare_nocase(extension, ".mrl") != 0 && text_compare_nocase(extension, ".mrp") != 0)
        return false;
    struct stat info;
    return stat(name, &info) == 0 && !S_ISDIR(info.st_mode);
}

// The current directory's scripts, names with their NULs. False without memory.
static bool find_scripts(byte_list *names, size_t *count)
{
    DIR *directory = opendir(".");
    if (directory == nullptr)
        return true;
    bool complete = true;
    *count = 0;
    for (const dirent *entry = readdir(directory); complete && entry != nullptr; entry = readdir(directory)) {
        if (!is_script(entry->d_name))
            continue;
        complete = list_add(names, entry->d_name, strlen(entry->d_name) + 1);
        (*count)++;
    }
    closedir(directory);
    return complete;
}

static int compare_names(const void *left, const void *right)
{
    return strcmp(*static_cast<const char *const *>(left), *static_cast<const char *const *>(right));
}

// Pointers to the names, sorted; null without memory. The caller frees the array.
static const char **sort_names(const byte_list *names, size_t count)
{
    const char **sorted = static_cast<const char **>(malloc((count + 1) * sizeof(const char *)));
    if (sorted == nullptr)
        return nullptr;
    const char *name = names->bytes;
    for (size_t i = 0; i < count; i++) {
        sorted[i] = name;
        name += strlen(name) + 1;
    }
    qsort(sorted, count, sizeof(const char *), compare_names);
    return sorted;
}

static void show_scripts(const char *const *scripts, size_t count)
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
        // A control character in a name would act on the terminal.
        for (const char *c = scripts[i]; *c != '\0'; c++)
            fputc(static_cast<unsigned char>(*c) < ' ' || *c == 127 ? '?' : *c, stderr);
        fputc('\n', stderr);
    }
    fputs("Convert which? Numbers, ranges like 2-5, paths, or all (an empty line cancels): ", stderr);
}

// Reads a number from 1 to limit and steps behind it. 0 if there is none.
static size_t read_number(const char **text, size_t limit)
{
    size_t number = 0;
    while (text_is(**text, CHAR_DIGIT)) {
        number = number * 10 + static_cast<size_t>(**text - '0');
        if (number > limit)
            return 0;
        (*text)++;
    }
    return number;
}

// Hands over what one word of the answer stands for. A word that names nothing in the list is a path, so a
// number out of range is reported as a file that can't be opened.
static void take_word(const char *word, const char *const *scripts, size_t count,
                      void (*take)(const char *path, void *context), void *context)
{
    size_t first = 0;
    size_t last = 0;
    if (text_compare_nocase(word, "all") == 0 && count > 0) {
        first = 1;
        last = count;
    } else {
        const char *rest = word;
        first = last = read_number(&rest, count);
        if (first != 0 && *rest == '-') {
            rest++;
            last = read_number(&rest, count);
        }
        if (*rest != '\0')
            first = 0;
    }
    if (first == 0 || last == 0) {
        take(word, context);
        return;
    }
    for (; first < last; first++)
        take(scripts[first - 1], context);
    for (; first > last; first--)
        take(scripts[first - 1], context);
    take(scripts[last - 1], context);
}

static bool is_separator(char c)
{
    return c == ',' || text_is(c, CHAR_WHITE);
}

// Cuts the next word off an answer and steps behind it; null at the end. Quotes keep blanks and commas in a
// word, as a terminal puts them around a path that is dropped on it.
static char *next_word(char **answer)
{
    char *word = *answer;
    while (is_separator(*word))
        word++;
    if (*word == '\0')
        return nullptr;
    char *end = word;
    if ((*word == '"' || *word == '\'') && strchr(word + 1, *word) != nullptr) {
        end = strchr(word + 1, *word);
        word++;
    } else {
        while (*end != '\0' && !is_separator(*end))
            end++;
    }
    *answer = *end == '\0' ? end : end + 1;
    *end = '\0';
    return word;
}

static select_result take_answer(const char *const *scripts, size_t count,
                                 void (*take)(const char *path, void *context), void *context)
{
    char *line = nullptr;
    size_t room = 0;
    select_result result = SELECT_CANCELED;
    if (getline(&line, &room, stdin) >= 0) {
        char *rest = line;
        for (const char *word = next_word(&rest); word != nullptr; word = next_word(&rest)) {
            take_word(word, scripts, count, take, context);
            result = SELECT_TAKEN;
        }
    }
    free(line);
    return result;
}

static select_result select_from_list(void (*take)(const char *path, void *context), void *context)
{
    byte_list names = {};
    size_t count = 0;
    select_result result = SELECT_CANCELED;
    const char **scripts = find_scripts(&names, &count) ? sort_names(&names, count) : nullptr;
    if (scripts == nullptr) {
        tell_no_memory();
    } else {
        show_scripts(scripts, count);
        result = take_answer(scripts, count, take, context);
    }
    free(scripts);
    list_free(&names);
    return result;
}

static bool has_display()
{
    const char *x11 = getenv("DISPLAY");
    const char *wayland = getenv("WAYLAND_DISPLAY");
    return (x11 != nullptr && *x11 != '\0') || (wayland != nullptr && *wayland != '\0');
}

int plat_select_files(void (*take)(const char *path, void *context), void *context)
{
    select_result result = SELECT_MISSING;
    if (!isatty(STDIN_FILENO))
        result = select_from_pipe(take, context);
    else if (has_display())
        result = select_from_dialog(take, context);
    if (result == SELECT_MISSING)
        result = select_from_list(take, context);
    return result == SELECT_TAKEN ? 0 : -1;
}

void plat_show_line(const char *text)
{
    fprintf(stderr, "%s\n", text);
}

// A reader that leaves and a limit on the size of files are failed writes like a full disk, no end of the
// run. With one of the three standard streams closed, a script would get its number, and messages would go
// into the script.
int plat_start()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; file++) {
        if (fcntl(file, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_NOCTTY);
    }
    return 0;
}

// A terminal has no look at a key that leaves the key there.
int plat_poll_escape()
{
    return -1;
}
