#include "report/files.h"

#include <dirent.h>
#include <errno.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

file_kind file_kind_of(const std::string &path, bool links)
{
    struct stat info;
    if ((links ? stat(path.c_str(), &info) : lstat(path.c_str(), &info)) != 0)
        return FILE_NONE;
    return S_ISREG(info.st_mode) ? FILE_REGULAR : S_ISDIR(info.st_mode) ? FILE_FOLDER : FILE_OTHER;
}

bool folder_names(const std::string &path, std::vector<std::string> *names)
{
    DIR *folder = opendir(path.c_str());
    if (folder == nullptr)
        return false;
    while (const dirent *entry = readdir(folder))
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0)
            names->emplace_back(entry->d_name);
    closedir(folder);
    std::sort(names->begin(), names->end());
    return true;
}

std::string path_join(const std::string &folder, const std::string &name)
{
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string file_fault()
{
    return strerror(errno);
}

bool file_is_older(const std::string &left, const std::string &right)
{
    struct stat left_info;
    struct stat right_info;
    if (stat(left.c_str(), &left_info) != 0 || stat(right.c_str(), &right_info) != 0)
        return false;
    const timespec &a = left_info.st_mtim;
    const timespec &b = right_info.st_mtim;
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

bool is_terminal(FILE *stream)
{
    return isatty(fileno(stream)) == 1;
}
