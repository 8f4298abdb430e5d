// Windows paths, and the names that the open dialog returns.
#include "platform/windows_paths.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <stdlib.h>
#include <string.h>

// The next character; a byte pair counts as one.
static const char *next_char(const char *c)
{
    if (IsDBCSLeadByte(static_cast<BYTE>(*c)) && c[1] != '\0')
        return c + 2;
    return c + 1;
}

size_t winpath_base_start(const char *path)
{
    const char *base = path;
    if (path[0] != '\0' && path[1] == ':')
        base = path + 2;
    for (const char *c = base; *c != '\0'; c = next_char(c)) {
        if (*c == '\\' || *c == '/')
            base = c + 1;
    }
    return static_cast<size_t>(base - path);
}

void winpath_cut_name(char *path)
{
    size_t cut = 0;
    // One or two backslashes in front are a root.
    while (cut < 2 && path[cut] == '\\')
        cut++;
    const char *previous = path;
    for (const char *c = path + cut; *c != '\0'; previous = c, c = next_char(c)) {
        bool behind_drive = c != path && *previous == ':';
        if (*c == ':' || (*c == '\\' && behind_drive))
            cut = static_cast<size_t>(c - path) + 1;
        else if (*c == '\\')
            cut = static_cast<size_t>(c - path);
    }
    path[cut] = '\0';
}

// True if the dialog gave a name that needs no folder in front, as it may for a link's target.
static bool is_whole_path(const char *name)
{
    return name[0] == '\\' || name[0] == '/' || (name[0] != '\0' && name[1] == ':');
}

static size_t longest_name(const char *names)
{
    size_t longest = 0;
    for (const char *name = names; *name != '\0'; name += strlen(name) + 1) {
        if (strlen(name) > longest)
            longest = strlen(name);
    }
    return longest;
}

int winpath_walk_selection(const char *selection, void (*take)(const char *path, void *context),
                           void *context)
{
    size_t folder_length = strlen(selection);
    const char *names = selection + folder_length + 1;
    if (folder_length == 0)
        return -1;
    if (*names == '\0') {
        take(selection, context);
        return 0;
    }
    char *path = static_cast<char *>(malloc(folder_length + 1 + longest_name(names) + 1));
    if (path == nullptr)
        return -1;
    memcpy(path, selection, folder_length + 1);
    // Only the folder of a root comes with a backslash at its end.
    if (winpath_base_start(path) < folder_length)
        path[folder_length++] = '\\';
    for (const char *name = names; *name != '\0'; name += strlen(name) + 1) {
        if (is_whole_path(name)) {
            take(name, context);
            continue;
        }
        strcpy(path + folder_length, name);
        take(path, context);
    }
    free(path);
    return 0;
}
