// Judgement: which items a statement gives, from the record of its conversion.
#pragma once

#include "report/item.h"
#include "report/memory/text_lines.h"

// Starts the judgement of a script, whose lines have to stay. The items go to the report.
void judge_start(script_report *report, const text_lines &script);

// Judges the statement that was finished last, or the end of the reading.
void judge_statement();
