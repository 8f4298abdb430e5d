// Where changed lines are, of several positions that are as good for the texts.
#pragma once

#include "report/item.h"
#include "report/memory/line_diff.h"

// Moves deleted lines of the changes that make an output out of what is written now, over lines that are
// equal to them, to where people are most likely to have deleted them: where as few items as possible lose
// lines, then from where the output of a statement begins to where one ends. Statements may begin with the
// same lines, as tips do, and an item that counts as changed without reason would be forgotten.
void changes_move(const script_report &report, text_changes *texts);
