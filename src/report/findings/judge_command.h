// What has become of a command: the items of its effect and of its arguments.
#pragma once

#include "report/findings/judge_state.h"

// Judges a command whose arguments were fetched.
void judge_command(judge_state *state, const statement_view &statement);
