// The form of live lines: whether what is carried out is a well-formed list.
//
// The output is right as it is. Whether the current dialect takes such a line can't be known here, so it is
// reported.
#pragma once

#include "report/findings/judge_state.h"

// Adds an item of the kind form if a live line of a command is no well-formed list.
void judge_live_form(judge_state *state, const statement_view &statement);

// Menu options that the script left empty.
struct menu_gaps {
    int all;    // at most
    int inside; // between two others
};

// Why a line is none, given the texts of the statement's arguments, which are right as they are; empty if it
// is one.
std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &arguments,
                            const menu_gaps &gaps);
