// Messages: what the run says on standard error, a line each.
#pragma once

#include <stddef.h>

#include <string>

// Says what was done or not done to a file.
void report_note(const std::string &line);

// Reports what can't be done; from then on report_in_trouble is true.
void report_trouble(const std::string &line);
bool report_in_trouble();

// Reports that a file can't be read, written or removed, and why. Returns false.
bool report_failed(const char *act, const std::string &path);

// A line on a terminal that says how far a long run has come, from its second second on; and takes it away.
void progress_show(size_t done, size_t scripts);
void progress_clear();
