// The Windows side of the platform layer, on the plain Win32 interface: files and messages. The start of a
// program is in windows_start.cpp, the dialogs are in windows_select.cpp and windows_folder.cpp.
//
// Paths are UTF-8 in the programs, whatever the system's code page, and UTF-16 to the system.
#include "platform/platform.h"

#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

// ---- Files ----

static int open_file(const char *path, int flags)
{
    wchar_t *wide = winpath_wide(path);
    int file = wide != nullptr ? _wopen(wide, flags | _O_NOINHERIT, _S_IREAD | _S_IWRITE) : -1;
    free(wide);
    return file;
}

int plat_open_input(const char *path, plat_file *input)
{
    input->number = open_file(path, _O_RDONLY | _O_BINARY | _O_SEQUENTIAL);
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
    int file = open_file(path, _O_WRONLY | _O_CREAT | _O_TEXT);
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

const char plat_line_end[] = "\r\n";

void plat_close(const plat_file *file)
{
    _close(file->number);
}

size_t plat_extension_start(const char *path)
{
    const char *dot = strrchr(path + winpath_base_start(path), '.');
    return dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
}

bool plat_names_equal(const char *left, const char *right, size_t size)
{
    return _strnicmp(left, right, size) == 0;
}

bool plat_exists(const char *path)
{
    wchar_t *wide = winpath_wide(path);
    bool found = wide != nullptr && _waccess(wide, 0) == 0;
    free(wide);
    return found;
}

// ---- The user ----

void plat_print(const char *text)
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD number;
    wchar_t *wide = GetConsoleMode(output, &number) != 0 ? winpath_wide(text) : nullptr;
    if (wide == nullptr) {
        fputs(text, stdout);
    } else {
        fflush(stdout);
        WriteConsoleW(output, wide, static_cast<DWORD>(wcslen(wide)), &number, nullptr);
    }
    free(wide);
}

void plat_show_line(const char *text)
{
    wchar_t *wide = winpath_wide(text);
    MessageBoxW(nullptr, wide, L"murlconv", MB_OK | MB_ICONEXCLAMATION);
    free(wide);
}

int plat_poll_escape()
{
    MSG message;
    if (PeekMessageA(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_NOREMOVE) && message.wParam == VK_ESCAPE)
        return VK_ESCAPE;
    return -1;
}
