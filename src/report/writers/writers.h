// Writers: the forms in which a report goes out. Each is called with the scripts one by one, and with the
// totals at the end, so that a report is never held as a whole.
#pragma once

#include "report/report_types.h"

#include <stdio.h>

#include <string>

// ---- Text: for people and their editors ----

void text_script(FILE *file, const script_report &script, const report_options &options, bool color);
void text_totals(FILE *file, const report_totals &totals);

// ---- CSV: one item a row ----

void csv_start(FILE *file);
void csv_script(FILE *file, const script_report &script);

// ---- JSON: docs/report.schema.json has its form ----

void json_start(FILE *file);
void json_script(FILE *file, const script_report &script, bool first);
void json_end(FILE *file, const report_totals &totals);

// ---- SARIF 2.1.0: for code scanners ----

void sarif_start(FILE *file);
void sarif_script(FILE *file, const script_report &script);
void sarif_end(FILE *file);

// ---- The page: one file for a browser ----

// folder_key tells the folders of the run apart from others in what the browser remembers.
void page_start(FILE *file, const std::string &folder_key);
void page_script(FILE *file, const script_report &script, const script_bodies &bodies);
void page_end(FILE *file, const report_totals &totals);
