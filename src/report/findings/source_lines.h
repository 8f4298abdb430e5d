// What a report takes from the lines of the script itself, after the conversion.
#pragma once

#include "report/item.h"
#include "report/memory/text_lines.h"

// Where reading ended before the script's end.
struct source_end {
    uint32_t line = 0;    // 0: the script was read to its end
    bool by_byte = false; // a byte 26 in that line ended it, no statement
};

// Fills in the statement of each item and those around it, the hints, and how many lines were not read. If
// nothing but white space is left after a byte 26, the item that says so, the last one, goes. Adds an item if
// lines that were read have NUL bytes.
void source_lines_add(script_report *report, const text_lines &script, const source_end &end);
