// What the parts of the report hand each other: options and counts.
#pragma once

#include "report/item.h"

#include <stdint.h>

#include <bitset>
#include <map>
#include <string>
#include <vector>

struct report_options {
    std::vector<std::string> paths;
    std::string folder_key; // of the paths: letters and digits, to tell their folders apart from others
    bool one_run = false;
    bool summary = false;
    bool all = false;
    bool quiet = false;
    bool convert = false;
    bool adopt = false;
    bool force = false;
    bool accept = false;
    bool prune = false;
    bool open = false;
    std::string reason;      // for what is accepted
    std::string accept_from; // path of a file of ticks; empty: none
    std::string csv;         // path of an output; - for standard output, empty for none
    std::string json;
    std::string html;
    std::string sarif;
    std::bitset<item_kind_count> kinds; // that are selected
    std::vector<std::string> commands;  // that are selected, in capitals; none: all
    bool filtered = false;              // not all items are selected
};

// The counts of a whole report.
struct report_totals {
    uint64_t scripts = 0;
    uint64_t done = 0; // scripts with nothing left to do
    uint64_t statements = 0;
    uint64_t open = 0;      // items that are left to do
    uint64_t settled = 0;   // items that were changed or accepted
    uint64_t written = 0;   // outputs that this run has written
    uint64_t conflicts = 0; // outputs that could not be merged
    uint64_t unused = 0;    // outputs that can't be read
    uint64_t lone = 0;      // outputs without a script, which were not read
    uint64_t by_output[output_state_count]{};
    kind_counts by_kind{};
    std::map<std::string, uint64_t> by_command;
    std::map<std::string, uint64_t> by_form; // COMMAND: reason, of the kind form
};
