// Judgement: which items a statement gets, from the record of its conversion.
#pragma once

#include "report/item.h"
#include "report/memory/text_lines.h"

// Starts the judgement of a script. The items go to the report; it and the lines have to stay until the
// script has been converted.
void judge_start(script_report *report, const text_lines &script);

// Judges the statement that was finished last, or the end of the reading.
void judge_statement();
