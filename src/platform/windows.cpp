// The Windows side of the platform layer, on the plain Win32 interface.
//
// Paths and texts are bytes of the system's code page (the A functions), as the command line and the dialog
// give them, and are never converted.
#include "platform/platform.h"

#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cderr.h>
#include <commdlg.h>
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

// Room for what the dialog selects, in bytes: 3,000 names of the longest kind take less than a fourth.
static constexpr DWORD selection_size = 4u << 20;

int plat_open_input(const char *path, plat_file *input)
{
    input->number = _open(path, _O_RDONLY | _O_BINARY | _O_NOINHERIT | _O_SEQUENTIAL);
    return input->number < 0 ? 1 : 0;
}

// True if both are files on a disk, and the same one.
static bool is_same_file(int left, int right)
{
    BY_HANDLE_FILE_INFORMATION left_info;
    BY_HANDLE_FILE_INFORMATION right_info;
    return GetFileInformationByHandle(reinterpret_cast<HANDLE>(_get_osfhandle(left)), &left_info) &&
           GetFileInformationByHandle(reinterpret_cast<HANDLE>(_get_osfhandle(right)), &right_info) &&
           left_info.dwVolumeSerialNumber == right_info.dwVolumeSerialNumber &&
           left_info.nFileIndexHigh == right_info.nFileIndexHigh &&
           left_info.nFileIndexLow == right_info.nFileIndexLow;
}

// Links can lead from the output's path back to the input, so an existing file is only emptied once it is
// known for another one.
int plat_open_output(const char *path, const plat_file *input, plat_file *output)
{
    int file = _open(path, _O_WRONLY | _O_CREAT | _O_TEXT | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    if (file < 0)
        return 1;
    // A device or a pipe has nothing to empty.
    bool disk = GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(file))) == FILE_TYPE_DISK;
    if (is_same_file(file, input->number) || (disk && _chsize(file, 0) != 0)) {
        _close(file);
        return 1;
    }
    output->number = file;
    return 0;
}

size_t plat_read(const plat_file *file, void *bytes, size_t size)
{
    size_t used = 0;
    while (used < size) {
        int got = _read(file->number, static_cast<char *>(bytes) + used, static_cast<unsigned>(size - used));
        if (got <= 0)
            break;
        used += static_cast<size_t>(got);
    }
    return used;
}

int plat_write(const plat_file *file, const char *bytes, size_t size)
{
    while (size > 0) {
        int done = _write(file->number, bytes, static_cast<unsigned>(size));
        if (done <= 0)
            return 1;
        bytes += done;
        size -= static_cast<size_t>(done);
    }
    return 0;
}

void plat_close(const plat_file *file)
{
    _close(file->number);
}

size_t plat_extension_start(const char *path)
{
    // No double-byte character has a dot for its second byte.
    const char *dot = strrchr(path + winpath_base_start(path), '.');
    return dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
}

bool plat_names_equal(const char *left, const char *right, size_t size)
{
    return _strnicmp(left, right, size) == 0;
}

bool plat_exists(const char *path)
{
    return _access(path, 0) == 0;
}

// The folder that the dialog starts in, null without memory: the program's own, when it was started by its
// quoted whole path as the desktop does. Otherwise the command line has something shorter or nothing, and
// the system chooses. The caller frees it.
static char *start_folder()
{
    const char *command_line = GetCommandLineA();
    if (*command_line != '\0')
        command_line++;
    char *folder = _strdup(command_line);
    if (folder != nullptr)
        winpath_cut_name(folder);
    return folder;
}

// Lets the dialog run; true if it has a selection. The current folder stays what it was, as the prompt file
// is looked for there.
static bool run_dialog(char *selection, const char *folder)
{
    OPENFILENAMEA dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFilter = "MURL Files (*.mrl)\0*.mrl\0MURL Files (*.mrp)\0*.mrp\0";
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = selection;
    dialog.nMaxFile = selection_size;
    dialog.lpstrInitialDir = folder;
    dialog.lpstrDefExt = "mrl";
    dialog.Flags =
        OFN_ALLOWMULTISELECT | OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_EXPLORER | OFN_NOCHANGEDIR;
    if (GetOpenFileNameA(&dialog))
        return true;
    if (CommDlgExtendedError() == FNERR_BUFFERTOOSMALL)
        plat_show_line("Too many files selected");
    return false;
}

int plat_select_files(void (*take)(const char *path, void *context), void *context)
{
    // Zeros: no file name at first.
    char *selection = static_cast<char *>(calloc(selection_size, 1));
    char *folder = start_folder();
    int result = -1;
    if (selection == nullptr || folder == nullptr)
        plat_show_line("Out of memory");
    else if (run_dialog(selection, folder))
        result = winpath_walk_selection(selection, take, context);
    free(folder);
    free(selection);
    return result;
}

void plat_show_line(const char *text)
{
    MessageBoxA(nullptr, text, "murlconv", MB_OK | MB_ICONEXCLAMATION);
}

// A path on a drive without a disk then fails like any other; without this the system would ask for the
// disk.
int plat_start()
{
    SetErrorMode(SEM_FAILCRITICALERRORS);
    return GetModuleHandleA(nullptr) == nullptr ? 1 : 0;
}

int plat_poll_escape()
{
    MSG message;
    if (PeekMessageA(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_NOREMOVE) && message.wParam == VK_ESCAPE)
        return VK_ESCAPE;
    return -1;
}
