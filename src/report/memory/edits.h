// Edits: which lines of what is written now are in the output that is there, and what that makes of the
// items.
#pragma once

#include "report/item.h"
#include "report/memory/line_diff.h"

#include <stdint.h>

#include <string_view>
#include <vector>

// How many lines of what is written now an output lacks at its end: all of a run that was deleted, and of one
// that was replaced as many as it has fewer that are carried out. *differing: lines that differ in all.
size_t lines_missing(std::string_view now, std::string_view there, size_t *differing);

// For each line of what is written now, the line of the output that is there, from 1; 0 if it isn't there.
std::vector<uint64_t> lines_there(const script_report &report, std::string_view now, std::string_view there);

// Sets the items of an edited output to changed or open. An item is changed if one of its own lines is no
// longer there; where the item has texts, the line that is there in its place decides.
void edits_find(script_report *report, std::string_view now, std::string_view there);
