// Windows paths: conversion, cutting, and the names that the open dialog hands over.
#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <stdlib.h>
#include <wchar.h>

wchar_t *winpath_wide(const char *path)
{
    int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    auto *text =
        size > 0 ? static_cast<wchar_t *>(calloc(static_cast<size_t>(size), sizeof(wchar_t))) : nullptr;
    if (text != nullptr)
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, text, size);
    return text;
}

// Writes length units as UTF-8. Returns the end of what was written.
static char *narrow(char *end, const wchar_t *text, size_t length)
{
    for (size_t i = 0; i < length;) {
        int units = i + 1 < length && IS_SURROGATE_PAIR(text[i], text[i + 1]) ? 2 : 1;
        int size =
            WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text + i, units, end, 4, nullptr, nullptr);
        if (size == 0)
            *end = '?';
        end += size > 0 ? size : 1;
        i += static_cast<size_t>(units);
    }
    return end;
}

char *winpath_narrow(const wchar_t *folder, size_t length, const wchar_t *name)
{
    constexpr size_t longest = 3; // bytes for a unit; a pair of them takes 4
    auto *path = static_cast<char *>(malloc(longest * (length + wcslen(name)) + 1));
    if (path != nullptr)
        *narrow(narrow(path, folder, length), name, wcslen(name)) = '\0';
    return path;
}

size_t winpath_base_start(const char *path)
{
    const char *base = path;
    if (path[0] != '\0' && path[1] == ':')
        base = path + 2;
    for (const char *c = base; *c != '\0'; c++) {
        if (*c == '\\' || *c == '/')
            base = c + 1;
    }
    return static_cast<size_t>(base - path);
}

int winpath_walk_selection(wchar_t *selection, void (*take)(const char *path, void *context), void *context)
{
    size_t folder = wcslen(selection);
    if (folder == 0)
        return -1;
    wchar_t *name = selection + folder + 1;
    if (*name == L'\0') {
        name = selection;
        folder = 0;
    } else if (selection[folder - 1] != L'\\') {
        selection[folder++] = L'\\'; // only the folder of a root comes with one
    }
    for (; *name != L'\0'; name += wcslen(name) + 1) {
        // The dialog may put a whole path for a link's target.
        bool whole = name[0] == L'\\' || name[0] == L'/' || name[1] == L':';
        char *path = winpath_narrow(selection, whole ? 0 : folder, name);
        if (path == nullptr)
            return -1;
        take(path, context);
        free(path);
    }
    return 0;
}
