// The POSIX side of the platform layer, but for the selection of files (posix_select.cpp).
#include "platform/platform.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

// Opens a file, also when a signal interrupts the wait for a pipe's other end. -1 if it can't be opened.
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

const char plat_line_end[] = "\n";

void plat_close(const plat_file *file)
{
    close(file->number);
}

size_t plat_extension_start(const char *path)
{
    const char *slash = strrchr(path, '/');
    const char *dot = strrchr(slash != nullptr ? slash : path, '.');
    return dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
}

bool plat_names_equal(const char *left, const char *right, size_t size)
{
    return memcmp(left, right, size) == 0;
}

bool plat_exists(const char *path)
{
    return access(path, F_OK) == 0;
}

void plat_show_line(const char *text)
{
    fprintf(stderr, "%s\n", text);
}

void plat_print(const char *text)
{
    fputs(text, stdout);
}

// A program started from the desktop has no terminal of its own here.
bool plat_is_own_console()
{
    return false;
}

// A closed pipe and a limit on the size of files are failed writes like a full disk; they don't end the run.
// If one of the three standard streams were closed, a script would get its number, and messages would go into
// the script. The threshold keeps large blocks mapped by themselves, so that calloc needn't clear them; glibc
// would raise it with each one that is freed.
int plat_start(int *, char ***)
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
#endif
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; file++) {
        if (fcntl(file, F_GETFD) < 0)
            open("/dev/null", O_RDWR | O_NOCTTY);
    }
    return 0;
}

// A terminal can't show a key without consuming it.
int plat_poll_escape()
{
    return -1;
}
