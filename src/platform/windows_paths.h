// Windows paths: how that system cuts them, and the form in which its open dialog hands over names.
//
// Paths are bytes of the system's code page. In a double-byte code page the second byte of a character can
// look like a backslash; every routine here steps over such pairs.
#pragma once

#include <stddef.h>

// Index of the file name's first character: after the last backslash or slash, or after a drive.
size_t winpath_base_start(const char *path);

// Cuts the last component off a path, and the backslash in front of it unless it stands for a root. Only
// backslashes count here, as in the system's own routine for it.
void winpath_cut_name(char *path);

// Walks a selection: either one whole path, or a folder and the names in it; each ends with a NUL, and an
// empty text ends them all. Calls take with each whole path. 0, or -1 without memory or an empty selection.
int winpath_walk_selection(const char *selection, void (*take)(const char *path, void *context),
                           void *context);
