// Outputs: where the forms of a report go, and what they may not go over.
#pragma once

#include "report/report_types.h"
#include "report/scripts.h"

#include <stdio.h>

#include <string>
#include <vector>

// One output of the report: standard output, a file, or none.
struct report_output {
    FILE *file = nullptr; // null: none
    std::string path;
    std::string temporary; // what is written, and renamed when it is whole; empty: the file itself
};

struct report_outputs {
    report_output text;
    report_output csv;
    report_output json;
    report_output html;
    report_output sarif;
    bool color = false;
};

// Opens the outputs. False, and reported, if one can't be opened, or would go over a script, the output of
// one, another output or a memory; then none is there.
bool outputs_open(const report_options &options, const std::vector<script_path> &scripts,
                  report_outputs *outputs);

void outputs_start(const report_outputs &outputs, const std::string &folder_key);
void outputs_script(const report_outputs &outputs, const report_options &options, const script_report &script,
                    const script_bodies &bodies, bool first);
void outputs_end(report_outputs *outputs, const report_totals &totals);

// Closes the outputs and leaves the files that were there.
void outputs_abandon(report_outputs *outputs);
