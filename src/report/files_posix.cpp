#include "report/files.h"

#include <sys/stat.h>
#include <unistd.h>

std::filesystem::path path_of(const std::string &path)
{
    return path;
}

std::string path_text(const std::filesystem::path &path)
{
    return path.native();
}

std::string file_identity(const std::string &path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return {};
    return std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino);
}

bool is_terminal(FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}
