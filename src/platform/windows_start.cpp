// The start of a program on Windows: its arguments, and the console that it was started with.
#include "platform/platform.h"

#include "platform/script_names.h"
#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

// ---- Arguments ----

// Grows; a null is behind the last one.
struct argument_list {
    char **items;
    int count;
};

// Takes an argument from malloc, or the null of one that there was no memory for. False without memory.
static bool add_argument(argument_list *list, char *argument)
{
    size_t size = (static_cast<size_t>(list->count) + 2) * sizeof(char *);
    auto **items = argument != nullptr ? static_cast<char **>(realloc(list->items, size)) : nullptr;
    if (items == nullptr)
        return false;
    list->items = items;
    items[list->count++] = argument;
    items[list->count] = nullptr;
    return true;
}

static int compare_arguments(const void *left, const void *right)
{
    return strcmp(*static_cast<char *const *>(left), *static_cast<char *const *>(right));
}

// Adds the scripts that a pattern matches, in the order of their names: no outputs beside their scripts, and
// nothing that matches only by the short name that the system may have for a file as well. folder is the
// length of what is in front of the pattern's last component. False without memory.
static bool add_matches(argument_list *list, const wchar_t *pattern, size_t folder)
{
    WIN32_FIND_DATAW match;
    HANDLE search = FindFirstFileW(pattern, &match);
    int first = list->count;
    bool good = true;
    for (bool found = search != INVALID_HANDLE_VALUE; good && found; found = FindNextFileW(search, &match)) {
        char *path = winpath_narrow(pattern, folder, match.cFileName);
        name_kind kind = path != nullptr ? name_kind_of(path) : NAME_LONE;
        bool is_folder = (match.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!is_folder && (kind == NAME_SCRIPT || kind == NAME_LONE))
            good = add_argument(list, path);
        else
            free(path);
    }
    if (search != INVALID_HANDLE_VALUE)
        FindClose(search);
    if (list->count > first)
        qsort(list->items + first, static_cast<size_t>(list->count - first), sizeof(char *),
              compare_arguments);
    return good;
}

// An argument that no script matches stays as it is, and can't be opened.
static bool take_argument(argument_list *list, const wchar_t *argument)
{
    size_t folder = wcslen(argument);
    while (folder > 0 && wcschr(L"\\/:", argument[folder - 1]) == nullptr)
        folder--;
    int before = list->count;
    if (wcspbrk(argument + folder, L"*?") != nullptr && !add_matches(list, argument, folder))
        return false;
    return list->count > before || add_argument(list, winpath_narrow(argument, 0, argument));
}

// ---- The start ----

bool plat_is_own_console()
{
    DWORD number;
    return GetConsoleProcessList(&number, 1) == 1 &&
           GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &number) != 0;
}

// A path on a drive without a disk then fails like any other; without the error mode the system would ask for
// the disk. The list of arguments is kept until the end.
int plat_start(int *argument_count, char ***arguments)
{
    SetErrorMode(SEM_FAILCRITICALERRORS);
    if (plat_is_own_console())
        ShowWindow(GetConsoleWindow(), SW_HIDE);
    int count = 0;
    wchar_t **words = CommandLineToArgvW(GetCommandLineW(), &count);
    argument_list list{nullptr, 0};
    bool good = words != nullptr;
    for (int i = 0; good && i < count; i++)
        good = take_argument(&list, words[i]);
    LocalFree(words);
    *argument_count = list.count;
    *arguments = list.items;
    return good ? 0 : 1;
}
