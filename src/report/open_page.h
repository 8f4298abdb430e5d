// The page in the system's browser, from a file that nobody else can read.
//
// Each side (open_page_posix.cpp, open_page_windows.cpp) is a whole file of its own.
#pragma once

#include <string>

// Makes an empty file for the page of a folder, in place of the last one, and returns its path: one file for
// each user and folder. folder_key names the folder, in letters and digits. Only the user can read or write
// the file (mode 0600). Empty if it can't be made, or if somebody else could get at it.
std::string open_page_path(const std::string &folder_key);

// Shows a file in the system's browser. False if that can't be started or fails at once.
bool open_page(const std::string &path);
