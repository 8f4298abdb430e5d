// What murlreport needs when it was started from the desktop, without a shell.
//
// Each side (desktop_posix.cpp, desktop_windows.cpp) is a whole file of its own.
#pragma once

#include <string>

// Lets the user pick a folder. Empty if none was picked, or if the system has no dialog for it.
std::string desktop_pick_folder();

// Shows the console that plat_start has hidden, and waits until the user has read it.
void desktop_show_console();
