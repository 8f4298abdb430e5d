// Judgement: which items a statement gives, from the record of its conversion.
#pragma once

#include "report/findings/judge_state.h"

// Judges a finished statement, or the end of the reading, and adds its items to the report.
void judge_statement(judge_state *state, const statement_view &statement);
