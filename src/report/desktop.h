// What murlreport needs of the user's desktop: the browser, and what a shell would do where there is none.
//
// Each side (desktop_posix.cpp, desktop_windows.cpp, desktop_web.cpp) is a whole file of its own.
#pragma once

#include <string>

// Makes an empty file for the page of a folder, in place of the last one, and returns its path: one file for
// each user and folder. folder_key names the folder, in letters and digits. Only the user can read or write
// the file (mode 0600). Empty if it can't be made, or if somebody else could get at it.
std::string open_page_path(const std::string &folder_key);

// Shows a file in the system's browser. False if that can't be started or fails at once.
bool open_page(const std::string &path);

// Lets the user pick a folder. Empty if none was picked, or if the system has no dialog for it.
std::string desktop_pick_folder();

// Shows the console that plat_start has hidden, and waits until the user has read it.
void desktop_show_console();
