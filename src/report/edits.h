// Edits: how far the work on a converted script has come, by comparing it with what the converter writes.
#pragma once

#include "report/item.h"
#include "report/lines.h"

// Sets the state of each item: changed if its lines no longer stand in the converted script as written, or
// something was put where an item without lines would stand. written are the lines that the converter writes,
// there those that stand there.
void edits_find(script_report *report, const line_prints &written, const line_prints &there);
