// A script that is converted and judged inside the test's own process.
#pragma once

#include "report/item.h"
#include "rules/rule_table.h"

#include <map>
#include <string>
#include <vector>

struct judged_script {
    script_report report;
    std::string output;
    std::map<uint32_t, std::vector<std::string>> live; // lines that are no comment, by the statement's line
};

// From a state that is reset first.
judged_script judged(const std::string &script, rules_run_state state = {});

// The items of a script, a line each: "LINE: kind COMMAND: detail".
std::string items_of(const std::string &script, rules_run_state state = {});
