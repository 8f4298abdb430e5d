// Files and folders, as far as the report asks the system about them beyond reading and writing.
//
// Each side (files_posix.cpp, files_windows.cpp) is a whole file of its own. Paths are bytes as the system
// gives them.
#pragma once

#include <stdio.h>

#include <string>
#include <vector>

enum file_kind : int { FILE_NONE, FILE_REGULAR, FILE_FOLDER, FILE_OTHER };

// What a path leads to. links tells whether links are followed.
file_kind file_kind_of(const std::string &path, bool links);

// The names in a folder, in order of their bytes, . and .. left out. False if it can't be read.
bool folder_names(const std::string &path, std::vector<std::string> *names);

// The path of a name in a folder.
std::string path_join(const std::string &folder, const std::string &name);

// Why the last call failed, in the system's words.
std::string file_fault();

// True if left was changed before right. False if either can't be asked.
bool file_is_older(const std::string &left, const std::string &right);

// True if a stream goes to somebody's screen.
bool is_terminal(FILE *stream);
