// Windows paths: the system's UTF-16 and our UTF-8, the cut in front of a name, and the form in which the
// open dialog hands over names.
#pragma once

#include <stddef.h>

// The system's form of a path, from malloc. Null without memory, or if the path isn't UTF-8: no file has it.
wchar_t *winpath_wide(const char *path);

// UTF-8 for length units of a folder, which may be 0, and a name behind them; from malloc, null without
// memory. A half of a surrogate pair without the other half becomes a question mark, which no file's name
// has.
char *winpath_narrow(const wchar_t *folder, size_t length, const wchar_t *name);

// Index of the file name's first character: after the last backslash or slash, or after a drive.
size_t winpath_base_start(const char *path);

// Walks a selection: either one whole path, or a folder and the names in it; each ends with a NUL, and an
// empty text ends them all. Calls take with each whole path. 0, or -1 without memory or an empty selection.
// The NUL behind the folder is overwritten.
int winpath_walk_selection(wchar_t *selection, void (*take)(const char *path, void *context), void *context);
