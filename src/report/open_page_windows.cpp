#include "report/open_page.h"

#include "report/files.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>

// The folder is in the user's profile, where nobody else can read.
std::string open_page_path(const std::string &folder_key)
{
    wchar_t local[MAX_PATH];
    DWORD size = GetEnvironmentVariableW(L"LOCALAPPDATA", local, MAX_PATH);
    if (size == 0 || size >= MAX_PATH)
        return {};
    std::string folder = path_text(std::filesystem::path(local) / L"murlreport");
    if (!folder_make(folder))
        return {};
    std::string path = path_join(folder, folder_key + ".html");
    FILE *file = file_open(path);
    if (file == nullptr)
        return {};
    fclose(file);
    return path;
}

bool open_page(const std::string &path)
{
    constexpr INT_PTR failures = 32; // what a call that fails returns at most
    HINSTANCE result =
        ShellExecuteW(nullptr, L"open", path_of(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > failures;
}
