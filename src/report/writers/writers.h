// Writers: the forms in which a report goes out. Each is called with the scripts one by one, and with the
// totals at the end, so that a report is never held as a whole.
#pragma once

#include "report/script_run.h"

#include <stdio.h>

struct report_writer {
    void (*start)(FILE *file, const report_options &options);
    void (*script)(FILE *file, const script_run &run);
    void (*end)(FILE *file, const report_totals &totals);
};

extern const report_writer text_writer;  // for people and their editors
extern const report_writer csv_writer;   // one item a row
extern const report_writer json_writer;  // docs/report.schema.json has its form
extern const report_writer page_writer;  // one file for a browser
extern const report_writer sarif_writer; // SARIF 2.1.0, for code scanners
