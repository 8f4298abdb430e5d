#include "report/item.h"

static const char *const state_words[] = {"none", "open", "changed", "accepted"};

// clang-format off
const kind_row kind_table[item_kind_count] = {
    {"stopped", "error", "reading stopped", "Reading stopped before the script's end",
     "Fix the line in the script and convert it again: nothing after it has been converted.", true},
    {"broken", "error", "arguments failed", "The arguments failed",
     "Fix the statement in the script and convert it again: what the converter left of it is no statement.", true},
    {"guarded", "error", "IF guards another", "The statement under an IF has become none, only comments, or several statements",
     "An IF guards the one statement after it. In the script, remove an IF that guards nothing any more, and skip several "
     "statements by a GOTO under the opposite condition; then convert it again.", true},
    {"frozen", "warning", "value fixed", "A fixed value or text is written for an expression",
     "Put the expression back in the converted script: the value is the one it had when the script was read to this "
     "line.", false},
    {"decoded", "warning", "string decoded", "A string can't be read back as it was typed",
     "An escape or a quote inside the string was decoded. Write the string anew in the converted script.", false},
    {"lost", "warning", "argument lost", "Something is gone without a trace",
     "Check whether the part that is gone matters, and write it again in the converted script.", false},
    {"gone", "warning", "no such command", "The new dialect has no such command",
     "Do without the command, or do its work by others.", false},
    {"byhand", "note", "finish by hand", "A tip, and the new form is a comment or missing",
     "Write the new statement by the tip.", false},
    {"check", "note", "look at it", "A tip above the new command",
     "Read the tip and check the new command by it.", false},
    {"form", "note", "odd form", "A line of the new form is no well-formed list",
     "Check whether the new dialect takes the line; if it does, accept all lines of the command at once.", false},
    {"quiet", "note", "commented out", "Commented out with neither tip nor warning",
     "Decide whether the statement is still needed; the new dialect has it in another form, or not at all.", false},
    {"unknown", "warning", "not recognised", "A line that is no command, no keyword and no assignment whose value could be computed",
     "It went through unchanged. Check whether the word is misspelt or belongs to another dialect.", false},
    {"base", "warning", "no BASEDIM", "An ADDBASEDIM with no BASEDIM before it",
     "Make the first one of the group a BASEDIM, which declares the parent that the others add to.", false},
    {"dropped", "note", "system command", "A system command or #LINE was dropped",
     "Do the step by a command of the new dialect if it is still needed.", false},
};
// clang-format on

int kind_find(std::string_view word)
{
    int kind = 0;
    while (kind < item_kind_count && word != kind_table[kind].word)
        kind++;
    return kind;
}

std::string item_state_word(const report_item &item)
{
    if (item.kind == ITEM_DROPPED)
        return state_words[STATE_NONE];
    return std::string(state_words[item.state]) + (item.state == STATE_CHANGED && item.doubtful ? "?" : "");
}

bool is_open(const report_item &item)
{
    bool settled = item.state == STATE_ACCEPTED || (item.state == STATE_CHANGED && !item.doubtful);
    return item.kind != ITEM_DROPPED && !settled;
}
