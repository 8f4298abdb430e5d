#include "report/messages.h"

#include "report/files.h"
#include "report/show.h"

#include <fmt/core.h>

#include <chrono>

using timer = std::chrono::steady_clock;

static bool in_trouble;     // something could not be done
static bool progress_shown; // the progress line is on the terminal

void progress_clear()
{
    if (progress_shown)
        fputs("\r\033[K", stderr);
    progress_shown = false;
}

void progress_show(size_t done, size_t scripts)
{
    static timer::time_point next = timer::now() + std::chrono::seconds(1);
    if (!is_terminal(stderr) || timer::now() < next)
        return;
    fmt::print(stderr, "\r{} of {} scripts\033[K", done, scripts);
    fflush(stderr);
    progress_shown = true;
    next = timer::now() + std::chrono::milliseconds(200);
}

void report_note(const std::string &line)
{
    progress_clear();
    fmt::print(stderr, "murlreport: {}\n", line);
}

void report_trouble(const std::string &line)
{
    report_note(line);
    in_trouble = true;
}

bool report_failed(const char *act, const std::string &path)
{
    report_trouble(fmt::format("can't {} {}: {}", act, shown(path), file_fault()));
    return false;
}

bool report_in_trouble()
{
    return in_trouble;
}
