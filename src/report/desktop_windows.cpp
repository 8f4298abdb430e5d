#include "report/desktop.h"

#include "report/files.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shobjidl.h>
#include <stdio.h>

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
