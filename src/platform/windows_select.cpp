// The open dialog of Windows.
#include "platform/platform.h"

#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cderr.h>
#include <commdlg.h>
#include <shlwapi.h>
#include <stdlib.h>

// Room for what the dialog selects, in units: 3,000 names of the longest kind take less than a half.
static constexpr DWORD selection_size = 2u << 20;

// Lets the dialog run; true if it has a selection. It starts in the program's folder if that was started by
// its quoted whole path, as the desktop does; otherwise the command line has something shorter or nothing,
// and the system chooses. The current folder stays what it was, as the prompt file is looked for there.
static bool run_dialog(wchar_t *selection)
{
    wchar_t folder[MAX_PATH] = L"";
    const wchar_t *command_line = GetCommandLineW();
    if (*command_line != L'\0')
        lstrcpynW(folder, command_line + 1, MAX_PATH);
    PathRemoveFileSpecW(folder);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFilter = L"MURL Files (*.mrl)\0*.mrl\0MURL Files (*.mrp)\0*.mrp\0";
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = selection;
    dialog.nMaxFile = selection_size;
    dialog.lpstrInitialDir = folder;
    dialog.lpstrDefExt = L"mrl";
    dialog.Flags =
        OFN_ALLOWMULTISELECT | OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_EXPLORER | OFN_NOCHANGEDIR;
    if (GetOpenFileNameW(&dialog))
        return true;
    if (CommDlgExtendedError() == FNERR_BUFFERTOOSMALL)
        plat_show_line("Too many files selected");
    return false;
}

int plat_select_files(void (*take)(const char *path, void *context), void *context)
{
    // Zeros: no file name at first.
    auto *selection = static_cast<wchar_t *>(calloc(selection_size, sizeof(wchar_t)));
    int result = -1;
    if (selection == nullptr)
        plat_show_line("Out of memory");
    else if (run_dialog(selection))
        result = winpath_walk_selection(selection, take, context);
    free(selection);
    return result;
}
