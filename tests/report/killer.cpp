// Preloaded into murlreport: ends the process before it renames a file for the time that KILL_AT says.
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

extern "C" int rename(const char *from, const char *to) noexcept
{
    using rename_call = int (*)(const char *, const char *);
    static int renames = 0;
    auto real = reinterpret_cast<rename_call>(dlsym(RTLD_NEXT, "rename"));
    const char *text = getenv("KILL_AT");
    int kill_at = text != nullptr ? atoi(text) : 0;
    if (++renames == kill_at)
        _exit(137);
    return real(from, to);
}
