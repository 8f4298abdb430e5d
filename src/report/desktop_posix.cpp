#include "report/desktop.h"

// plat_is_own_console never says that the program was started from the desktop.

std::string desktop_pick_folder()
{
    return {};
}

void desktop_show_console() {}
