// Labels and line directives.
//
// A label line is copied to the output and entered in label_table, which serves to find a second label of a
// name, or one too many. A #LINE is read, and nothing is written.
#pragma once

#include <stdint.h>

constexpr int32_t label_capacity = 1000; // labels of one file
constexpr int label_name_length = 12;    // characters of a label that count

struct label_row {
    char name[16]; // as typed, cut to label_name_length characters
    char key[16];  // the same in small letters: labels are compared without regard to case
    uint32_t line; // of the file, after the label's own
};

extern label_row *label_table; // label_capacity rows from malloc; null before the first file
extern int32_t label_count;    // rows in use

// The hook that receives the name of a label that stops the reading; null: the name is printed.
extern void (*label_refused)(const char *name);

// The operands of the last #LINE. They outlive a file, and nothing in the output depends on them.
struct line_directive_state {
    int32_t line_number;
    int32_t line_plus;            // 1 if a + followed the number
    char source_name[512];        // the file name
    const char *source_name_base; // a path whose last part a plain file name replaces
    bool source_name_recording;   // switch: source_name_record is called for each name
    char **source_name_slot;      // receives a recorded name, which its owner frees
};
extern line_directive_state line_directives;

// Starts a file without labels; table has label_capacity rows.
void labels_start(label_row *table);

// A label line: word holds the colon and the label. Returns STATEMENT_DONE, STATEMENT_NO_LABEL for a lone
// colon, or STOP_LABEL_TWICE or STOP_LABELS_FULL, after printing the label's name.
int32_t label_define(const char *word);

// The statement #LINE. Returns STATEMENT_TEXT, whatever the line holds.
int32_t line_directive(const char *word);

// The operands of a #LINE: a number, perhaps with a + after it, and perhaps a name. Returns STATEMENT_TEXT.
int32_t line_directive_parse(const char *text);

// Stores the base name of source_name in *source_name_slot, a block from malloc. Without memory the process
// ends with prompt 203.
void source_name_record();

// The part of a path after its last \, / or :, inside path.
const char *base_name(const char *path);
