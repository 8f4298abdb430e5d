#include "report/open_page.h"

#include "report/files.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#ifdef __APPLE__
extern char **environ;
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

// Starts the opener without the terminal, to which a browser would write.
static pid_t opener_start(const std::string &path)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // An interrupt from the terminal is not for the browser.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::string program = opener;
    std::string argument = path;
    char *arguments[] = {program.data(), argument.data(), nullptr};
    pid_t child;
    int failed = posix_spawnp(&child, opener, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return failed != 0 ? -1 : child;
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
