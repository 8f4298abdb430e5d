#include "report/files.h"

#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <io.h>
#include <stdlib.h>

// No file can have a question mark in its path: what isn't UTF-8 leads nowhere.
std::filesystem::path path_of(const std::string &path)
{
    wchar_t *wide = winpath_wide(path.c_str());
    std::filesystem::path result = wide != nullptr ? wide : L"?";
    free(wide);
    return result;
}

std::string path_text(const std::filesystem::path &path)
{
    char *text = winpath_narrow(L"", 0, path.c_str());
    std::string result = text != nullptr ? text : "?";
    free(text);
    return result;
}

std::string file_identity(const std::string &path)
{
    HANDLE file =
        CreateFileW(path_of(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return {};
    BY_HANDLE_FILE_INFORMATION info;
    bool known = GetFileInformationByHandle(file, &info) != 0;
    CloseHandle(file);
    return known ? std::to_string(info.dwVolumeSerialNumber) + ":" + std::to_string(info.nFileIndexHigh) +
                       ":" + std::to_string(info.nFileIndexLow)
                 : std::string();
}

bool is_terminal(FILE *stream)
{
    HANDLE console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}
