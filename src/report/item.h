// Items: what is left to do in a script, each of one kind, with the line it is about.
//
// The kinds' words and the states' words are part of the interface: people and programs select by them.
#pragma once

#include "report/memory/output_state.h"

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

// Gravest first.
enum item_kind : uint8_t {
    ITEM_STOPPED,
    ITEM_BROKEN,
    ITEM_GUARDED,
    ITEM_FROZEN,
    ITEM_DECODED,
    ITEM_LOST,
    ITEM_GONE,
    ITEM_BYHAND,
    ITEM_CHECK,
    ITEM_FORM,
    ITEM_QUIET,
    ITEM_UNKNOWN,
    ITEM_BASE,
    ITEM_DROPPED
};
constexpr int item_kind_count = ITEM_DROPPED + 1;

// What a kind is called and what there is to do about it.
struct kind_row {
    const char *word;
    const char *level;   // how grave it is to code scanners: error, warning or note
    const char *label;   // a few plain words for the page
    const char *title;   // what has happened
    const char *to_do;   // what the script's author does about it
    bool mend_in_script; // first fixed in the script, which is then converted again
};
extern const kind_row kind_table[item_kind_count];

// The kind of a word; item_kind_count if there is none.
int kind_find(std::string_view word);

enum item_state : uint8_t {
    STATE_NONE,    // there is no converted script
    STATE_OPEN,    // its lines are in the converted script as written
    STATE_CHANGED, // they no longer are: somebody has edited them
    STATE_ACCEPTED // somebody has said that it is all right as it is
};

struct report_item {
    item_kind kind;
    item_state state;
    bool doubtful; // changed only if the output, of which nothing is remembered, is of what is written now,
                   // or if the script, which has changed since, still means the same
    bool summed;   // one of many alike, which the text reports in one line unless all are asked for
    bool guards_itself; // of guarded: the second own line is of the statement under the IF, not of one after
                        // it
    uint32_t line;      // of the script, where the statement begins
    uint32_t last_line; // of the script, where it ends
    uint64_t output_line;  // of what is written now: where its output begins, or would have begun
    uint64_t output_lines; // lines of its output; 0: nothing is left
    uint64_t there_line;   // of the output that is there: the first of its lines that is; 0: none is
    std::string command;   // as the command table spells it; else the statement's first word
    std::string detail;
    std::string source; // the line of the script, trimmed and cut to 300 characters, in its own bytes
    std::string before; // the line of the script before the statement that has a text, and the one after it
    std::string after;
    std::vector<uint64_t> own_lines; // of what is written now: those that the item is about, from 1
    // Texts that decide whether a changed own line counts: of frozen and decoded the written ones, which must
    // be gone, of lost those of the arguments, which must be there. None: any change counts.
    std::vector<std::string> own_texts;
    std::vector<size_t> own_items; // of frozen: which item of its line's list each text is; SIZE_MAX: none
    // Of frozen and decoded, what was typed for each text; of form, the two values that have no comma between
    // them, or the options of its menu that have bars.
    std::vector<std::string> own_typed;
    uint32_t own_separators; // of lost, commas that its line lacks for empty arguments; of form, bars that
                             // its menu should have
    uint32_t own_more; // of frozen, lost and form: lines after the own one into which a text of it goes on
};

// The state of an item in a word, with a question mark if it is doubtful; none if it is for information
// alone.
std::string item_state_word(const report_item &item);

// True if an item counts as left to do.
bool is_open(const report_item &item);

// What is known of one script's report.
struct script_report {
    std::string path;
    std::string output_path;
    uint32_t statements = 0;
    uint32_t converted = 0; // statements without an item
    output_state output = OUTPUT_NONE;
    bool output_older = false;   // the output is older than the script
    bool script_changed = false; // it was edited, and the script isn't what it was when that was remembered
    std::vector<report_item> items;
    std::vector<uint64_t>
        there_of; // for each line written now that of the output that is there, from 1; 0: none
};

using kind_counts = uint64_t[item_kind_count];
