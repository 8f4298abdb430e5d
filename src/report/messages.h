// Messages: what the run says on standard error, a line each.
#pragma once

#include <stddef.h>

#include <string>

// Says what was done or not done to a file.
void report_note(const std::string &line);

// Reports what can't be done; from then on report_in_trouble is true.
void report_trouble(const std::string &line);
bool report_in_trouble();

// A line on a terminal that says how far a long run has come, from its second second on; and takes it away.
void progress_show(size_t done, size_t scripts);
void progress_clear();
