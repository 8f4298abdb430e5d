// Scripts: which files of the paths that were given are read.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

struct script_path {
    std::string path;
    std::vector<uint32_t> lines; // that were named by FILE:LINE; none: all
};

struct scripts_found {
    std::vector<script_path> scripts; // in the order of the report, each file once
    std::vector<std::string> lone;    // outputs without a script that a walk has met and passed over
    std::vector<std::string> folders; // that a walk has met and that have a memory
};

// Finds the scripts of paths: a script, a folder that is searched for *.mrl and *.mrp in any case, or with
// lines FILE:LINE. A walk passes over outputs beside their scripts, and over .murlreport. A named output of a
// script that is there is skipped, and reported, unless all are wanted. What can't be read or has no script
// is reported.
scripts_found scripts_find(const std::vector<std::string> &paths, bool lines, bool all);

// Where a script's output belongs.
std::string output_path_of(const std::string &path);
