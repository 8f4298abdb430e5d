// What the parts of the report hand each other: options, counts, and the bodies that the page shows.
#pragma once

#include "report/item.h"

#include <stdint.h>

#include <bitset>
#include <string>
#include <utility>
#include <vector>

struct report_options {
    std::vector<std::string> paths;
    bool one_run = false;
    bool summary = false;
    bool all = false;
    bool quiet = false;
    bool convert = false;
    bool force = false;
    std::string csv; // path of an output; - for standard output, empty for none
    std::string json;
    std::string html;
    std::bitset<item_kind_count> kinds; // that are selected
    std::vector<std::string> commands;  // that are selected, in capitals; none: all
};

// The counts of a whole report.
struct report_totals {
    uint64_t scripts = 0;
    uint64_t done = 0; // scripts with nothing left to do
    uint64_t statements = 0;
    uint64_t open = 0; // items that nobody has worked on
    kind_counts by_kind{};
    std::vector<std::pair<std::string, uint64_t>> by_command; // most first
};

// What the converter writes for a script, and where its statements stand, for the page.
struct script_bodies {
    struct pair {
        uint32_t line;        // of the script, where a statement begins
        uint64_t output_line; // where its output begins
    };
    std::string output; // no more than body_kept bytes
    std::vector<pair> pairs;
};
constexpr size_t body_kept = 4u << 20; // a script or output beyond this isn't shown
