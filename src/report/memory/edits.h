// Edits: which lines of what is written now are in the output that is there, and what that makes of the
// items.
#pragma once

#include "report/item.h"
#include "report/memory/line_diff.h"

#include <stdint.h>

#include <string_view>
#include <vector>

// The changes that make one text out of another; *lines is how many the first one has.
std::vector<line_change> text_changes(std::string_view before, std::string_view after, size_t *lines);

// For each line of what is written now, the line of the output that is there, from 1; 0 if it isn't there.
std::vector<uint64_t> lines_there(std::string_view now, std::string_view there);

// Sets the items of an edited output to changed or open. An item is changed if one of its own lines is no
// longer there; where the item has texts, the line that is there in its place decides.
void edits_find(script_report *report, std::string_view now, std::string_view there);
