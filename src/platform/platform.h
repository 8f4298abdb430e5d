// Platform: files, the selection of scripts, messages and the start of the program.
//
// It has two implementations, posix*.cpp and windows*.cpp, of which the build uses one. Paths are bytes as
// the system has them, on Windows UTF-8, and may have any length.
#pragma once

#include <stddef.h>

// An open file. It has no buffer.
struct plat_file {
    int number; // the system's file descriptor
};

// Opens a script for reading, byte for byte (the reader folds line ends itself). 0, or another value if it
// can't be read, as with a folder.
int plat_open_input(const char *path, plat_file *input);

// Opens a script for writing with the platform's line ends, emptying a file that is there already. A new file
// has the permissions of the input where the platform has any. 0, or another value if that can't be done,
// or if path leads to the very file that input reads from: then that file is left as it is.
int plat_open_output(const char *path, const plat_file *input, plat_file *output);

// Reads size bytes, or as many as there are up to the end of the file, and returns their number. An error
// counts as the end.
size_t plat_read(const plat_file *file, void *bytes, size_t size);

// Writes bytes as they are, but for the line ends of the platform. 0, or another value if the file didn't
// take all of them.
int plat_write(const plat_file *file, const char *bytes, size_t size);

void plat_close(const plat_file *file);

// What plat_write writes for a line feed.
extern const char plat_line_end[];

// Index of the dot with which the extension of a path's file name begins; the path's length if it has none.
size_t plat_extension_start(const char *path);

// Whether two pieces of file names, of size bytes, are the same to the platform: the case of letters may not
// count.
bool plat_names_equal(const char *left, const char *right, size_t size);

// Whether there is a file or a folder of that path.
bool plat_exists(const char *path);

// Lets the user pick scripts. Calls callback(path, context) for each path in the order of the selection, the
// first time when the whole selection is known; the path is valid during the call only. Returns 0, or -1 if
// the user picked nothing.
int plat_select_files(void (*callback)(const char *path, void *context), void *context);

// Shows the user one line; text has no line end.
void plat_show_line(const char *text);

// Writes text to standard output, so that a path in it can be read on a console too.
void plat_print(const char *text);

// Prepares the program's start, and puts the arguments that the program has to use in place of those of main:
// paths as the routines here take them. Where the shell leaves wildcards to programs, the scripts that they
// match are put in. 0, or 1 if the platform can't run the program; it prints nothing.
int plat_start(int *argument_count, char ***arguments);

// Whether the program was started from the desktop: it has a console for itself. plat_start has hidden it.
bool plat_is_own_console();

// 27 if an Escape key event is pending, else -1. The event isn't consumed.
int plat_poll_escape();
