// Files and folders, as far as the report needs more of them than the converter does.
//
// Paths are bytes as the system gives them, on Windows UTF-8. Each side (files_posix.cpp, files_windows.cpp)
// has what the standard library lacks.
#pragma once

#include <stdio.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

enum file_kind : int { FILE_NONE, FILE_REGULAR, FILE_FOLDER, FILE_LINK, FILE_OTHER };

// What a path leads to. With links followed it is never FILE_LINK.
file_kind file_kind_of(const std::string &path, bool links);

// The names in a folder, in order of their bytes, . and .. left out. False if it can't be read.
bool folder_names(const std::string &path, std::vector<std::string> *names);

// Makes a folder whose parent is there. True if it is there then, and is no link.
bool folder_make(const std::string &path);

// The path of a name in a folder; the folder of a path, empty if it names none; the name at its end.
std::string path_join(const std::string &folder, const std::string &name);
std::string path_folder(const std::string &path);
std::string path_name(const std::string &path);

// Reads a whole file. False if it can't be read; errno says why.
bool file_read(const std::string &path, std::string *bytes);

// Replaces a file by bytes: they are written to a temporary file beside it, which is then renamed, so that
// there is the old file or the new one at any time. A link is followed, permission bits are kept, and a new
// file has those of like, if that isn't empty. What isn't a regular file is written directly. False if it
// can't be done; then the file is as it was, and file_fault says why.
bool file_replace(const std::string &path, std::string_view bytes, const std::string &like);

// Opens a file for writing, emptied. Null if that can't be done. The caller closes it.
FILE *file_open(const std::string &path);

// The path of a file that isn't there: path with an ending, and a number if need be.
std::string file_beside(const std::string &path, const char *ending);

// Gives a file the permission bits of another one, if that is there.
void file_take_mode(const std::string &path, const std::string &like);

// Renames a file over another one. False if it can't be done.
bool file_rename(const std::string &from, const std::string &to);

// Removes a file. False if it is still there.
bool file_remove(const std::string &path);

// True if left was changed before right. False if either can't be asked.
bool file_is_older(const std::string &left, const std::string &right);

// A path without links and dots, whether or not a file is there; the path itself if that can't be known.
std::string path_real(const std::string &path);

// Why the last call failed, in the C library's words.
std::string file_fault();

// ---- What each side has ----

// The library's path of a path, and back.
std::filesystem::path path_of(const std::string &path);
std::string path_text(const std::filesystem::path &path);

// What tells files apart whatever they are called: device and number. Empty if the path leads nowhere.
std::string file_identity(const std::string &path);

// True if a stream goes to somebody's screen, and that understands escape sequences.
bool is_terminal(FILE *stream);
