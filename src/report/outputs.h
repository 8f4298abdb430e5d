// Outputs: where the forms of a report go, and what they may not go over.
#pragma once

#include "report/scripts.h"
#include "report/writers/writers.h"

#include <stdio.h>

#include <string>
#include <vector>

// One output of the report: standard output or a file.
struct report_output {
    const report_writer *writer;
    std::string path;
    FILE *file;
    std::string temporary; // what is written, and renamed when it is whole; empty: the file itself
    bool is_new;           // there was no file
};

using report_outputs = std::vector<report_output>;

// Opens the outputs and starts them. False, and reported, if one can't be opened, or would go over a script,
// the output of one, the ticks, another output or a memory; then none is there.
bool outputs_open(const report_options &options, const std::vector<script_path> &scripts,
                  report_outputs *outputs);

// Writes the report of a script.
void outputs_script(const report_outputs &outputs, const script_run &run);

// Ends the outputs and closes them.
void outputs_end(report_outputs *outputs, const report_totals &totals);

// Closes the outputs and leaves the files that were there.
void outputs_abandon(report_outputs *outputs);
