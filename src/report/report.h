// Report: the run of the program.
#pragma once

#include "report/report_types.h"

// Exit statuses.
enum : int { REPORT_DONE = 0, REPORT_LEFT = 1, REPORT_TROUBLE = 2 };

// Makes the report. Gives the exit status.
int report_run(const report_options &options);

// Told what can't be done: one line on standard error.
void report_trouble(const std::string &line);
