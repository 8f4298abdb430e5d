// Statements that weren't converted: commands whose arguments failed, and lines that went through
// unrecognised.
#pragma once

#include <string>
#include <string_view>

// Why the arguments of a command failed.
std::string broken_detail();

// The hint for a statement whose arguments failed, from its lines of the script, to be added to its detail;
// empty if the cause isn't plain.
std::string broken_hint(std::string_view command, std::string_view source);

// Why a line that is no command, no keyword and no evaluated assignment goes through; empty if it is one of
// these.
std::string unknown_detail();
