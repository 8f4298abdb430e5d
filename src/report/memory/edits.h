// Edits: which lines of what is written now are in the output that is there, and what that makes of the
// items.
#pragma once

#include "report/item.h"

#include <string_view>

// Sets there_of of the report, and the items of an edited output to changed or open. An item is changed if
// one of its own lines is no longer there; where the item has texts, the line that is there in its place
// decides.
void edits_find(script_report *report, std::string_view now, std::string_view there);
