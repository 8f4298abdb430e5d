// What a report takes from the lines of the script itself, at the end of the reading.
#pragma once

#include "report/item.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <string>

// Where reading ended before the script's end.
struct source_end {
    uint32_t line = 0;    // 0: the script was read to its end
    bool by_byte = false; // a byte 26 in that line ended it, no statement
};

// What is said of the lines that were not read: all from the end on, a line with a byte 26 if a text follows
// that. False if nothing but white space is left after it.
bool unread_shown(const text_lines &script, const source_end &end, std::string *shown);

// Fills in the statement of each item and those around it. Adds an item if lines that were read have NUL
// bytes.
void source_lines_add(script_report *report, const text_lines &script, const source_end &end);
