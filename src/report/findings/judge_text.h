// Statements that weren't converted: commands whose arguments failed, and lines that went through
// unrecognised.
#pragma once

#include "report/findings/statement.h"

#include <string>
#include <string_view>

// Why the arguments of a command failed.
std::string broken_detail(const statement_view &statement);

// The hint for a statement whose arguments failed, from its lines of the script; empty if the cause isn't
// plain.
std::string broken_hint(std::string_view command, std::string_view source);

// Where a comment begins in a line, outside of strings; npos if there is none.
size_t comment_in(std::string_view line);

// The end of the string or the sign of inches that begins at a quote: the character after it. npos if the
// string isn't closed. A backslash takes its meaning from the character after it.
size_t string_end(std::string_view line, size_t at);

// True if a string in a line has no closing quote, or one too many.
bool has_open_string(std::string_view line);

// Why a line that is no command, no keyword and no evaluated assignment goes through; empty if it is one of
// these. source: the statement's lines of the script.
std::string unknown_detail(const statement_view &statement, std::string_view source);
