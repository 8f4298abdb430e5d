#include "report/desktop.h"

#include "report/files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#ifdef __APPLE__
constexpr const char *opener = "open";
#else
constexpr const char *opener = "xdg-open";
#endif
constexpr int opener_waits = 40;            // so often it is asked whether it has failed
constexpr long opener_wait_ns = 50'000'000; // with so much time between

// Makes a folder that is the user's alone. False if what has its name is no folder, a link, or somebody
// else's.
static bool private_folder_make(const std::string &path)
{
    struct stat info;
    (void)mkdir(path.c_str(), 0700);
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
           (info.st_mode & 077) == 0;
}

static std::string folder_path()
{
    const char *runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/' && file_kind_of(runtime, true) == FILE_FOLDER)
        return path_join(runtime, "murlreport");
    const char *temporary = getenv("TMPDIR");
    bool given = temporary != nullptr && temporary[0] == '/';
    return path_join(given ? temporary : "/tmp", "murlreport-" + std::to_string(geteuid()));
}

std::string open_page_path(const std::string &folder_key)
{
    std::string folder = folder_path();
    if (!private_folder_make(folder))
        return {};
    std::string path = path_join(folder, folder_key + ".html");
    (void)unlink(path.c_str());
    int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        return {};
    close(file);
    return path;
}

// Starts the opener without the terminal, to which a browser would write, and whose interrupts aren't for it.
static pid_t opener_start(const std::string &path)
{
    pid_t child = fork();
    if (child != 0)
        return child;
    setpgid(0, 0);
    int nothing = open("/dev/null", O_RDWR);
    for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, stream);
    execlp(opener, opener, path.c_str(), static_cast<char *>(nullptr));
    _exit(127);
}

// An opener that goes on is a browser that it has become.
bool open_page(const std::string &path)
{
    pid_t child = opener_start(path);
    for (int i = 0; child > 0 && i < opener_waits; i++) {
        int status;
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        timespec wait{0, opener_wait_ns};
        nanosleep(&wait, nullptr);
    }
    return child > 0;
}

// plat_is_own_console never says that the program was started from the desktop.

std::string desktop_pick_folder()
{
    return {};
}

void desktop_show_console() {}
