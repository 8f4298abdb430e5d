// Report: the run of the program.
#pragma once

#include "report/report_types.h"

// Exit statuses.
enum : int { REPORT_DONE = 0, REPORT_LEFT = 1, REPORT_TROUBLE = 2 };

// Makes the report. Returns the exit status.
int report_run(report_options options);
