#include "report/desktop.h"

#include "report/files.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>
#include <shobjidl.h>
#include <stdio.h>

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

// The path of what the dialog has picked; empty if it has none.
static std::string picked_path(IFileOpenDialog *dialog)
{
    IShellItem *item;
    wchar_t *name;
    std::string path;
    if (FAILED(dialog->Show(nullptr)) || FAILED(dialog->GetResult(&item)))
        return path;
    if (SUCCEEDED(item->GetDisplayName(SIGDN_FILESYSPATH, &name))) {
        path = path_text(name);
        CoTaskMemFree(name);
    }
    item->Release();
    return path;
}

std::string desktop_pick_folder()
{
    IFileOpenDialog *dialog;
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) ||
        FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&dialog))))
        return {};
    dialog->SetOptions(FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_NOCHANGEDIR);
    dialog->SetTitle(L"Convert the MURL scripts of a folder");
    dialog->SetOkButtonLabel(L"Convert");
    std::string path = picked_path(dialog);
    dialog->Release();
    return path;
}

void desktop_show_console()
{
    ShowWindow(GetConsoleWindow(), SW_SHOW);
    fputs("\nPress Enter to close this window.", stderr);
    (void)getchar();
}
