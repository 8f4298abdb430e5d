#include "report/files.h"

#include <errno.h>
#include <string.h>

#include <algorithm>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <io.h>

file_kind file_kind_of(const std::string &path, bool links)
{
    DWORD bits = GetFileAttributesA(path.c_str());
    if (bits == INVALID_FILE_ATTRIBUTES)
        return FILE_NONE;
    if (!links && (bits & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        return FILE_OTHER;
    return (bits & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FILE_FOLDER : FILE_REGULAR;
}

bool folder_names(const std::string &path, std::vector<std::string> *names)
{
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA(path_join(path, "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    do
        if (strcmp(entry.cFileName, ".") != 0 && strcmp(entry.cFileName, "..") != 0)
            names->emplace_back(entry.cFileName);
    while (FindNextFileA(search, &entry));
    FindClose(search);
    std::sort(names->begin(), names->end());
    return true;
}

std::string path_join(const std::string &folder, const std::string &name)
{
    bool ends = folder.empty() || strchr("\\/:", folder.back()) != nullptr;
    return ends ? folder + name : folder + "\\" + name;
}

std::string file_fault()
{
    DWORD code = GetLastError();
    if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND)
        return "No such file or directory";
    return code == ERROR_ACCESS_DENIED ? "Permission denied" : "system error " + std::to_string(code);
}

bool file_is_older(const std::string &left, const std::string &right)
{
    WIN32_FILE_ATTRIBUTE_DATA left_data;
    WIN32_FILE_ATTRIBUTE_DATA right_data;
    return GetFileAttributesExA(left.c_str(), GetFileExInfoStandard, &left_data) &&
           GetFileAttributesExA(right.c_str(), GetFileExInfoStandard, &right_data) &&
           CompareFileTime(&left_data.ftLastWriteTime, &right_data.ftLastWriteTime) < 0;
}

bool is_terminal(FILE *stream)
{
    return _isatty(_fileno(stream)) != 0;
}
