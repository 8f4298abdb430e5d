#include "report/desktop.h"

// In a browser the page around the program picks the scripts and shows the report.

std::string open_page_path(const std::string & /*folder_key*/)
{
    return {};
}

bool open_page(const std::string & /*path*/)
{
    return false;
}

std::string desktop_pick_folder()
{
    return {};
}

void desktop_show_console() {}
