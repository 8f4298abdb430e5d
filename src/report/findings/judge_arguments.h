// What has become of the arguments of a command that was converted.
#pragma once

#include <string>

// Adds the items of the statement's arguments: of one that is carried out frozen, lost and decoded, in this
// order; of one that has become a comment decoded alone, where a string leaves a line outside of it.
void judge_arguments(bool carried_out);

// Of a statement that isn't carried out: its arguments as typed, and what its comment lacks of them, to be
// added to a detail.
std::string arguments_in_detail();
