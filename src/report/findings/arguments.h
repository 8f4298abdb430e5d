// Arguments of a command, by their position from 1: their texts, values and names, and what the output has of
// them.
#pragma once

#include "report/findings/statement.h"

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>

constexpr size_t text_shown = 60; // characters of an argument in a detail

// The last position that has an argument, or had one of which the fetcher has left nothing.
int32_t argument_last();

// ---- Texts ----

// The text that rules write: a string decoded and between double quotes. Empty if it isn't there or is empty.
std::string_view argument_text(int32_t position);
bool argument_is_string(int32_t position);

// The text as typed; as rules write it where that isn't known.
std::string_view argument_typed(int32_t position);

// True if the fetcher has dropped characters: outside of strings it keeps printable ASCII and blanks alone.
bool has_dropped(int32_t position);

// What the line has after the last argument that the command takes, without commas that nothing follows.
std::string_view surplus_text();

// ---- Values ----

// What the type of a numeric argument holds of its value; 0 of other ones.
double argument_value(int32_t position);

// The byte of the command's spec that a position is fetched by: the last one goes on.
uint8_t argument_spec(int32_t position);

// True if a position is fetched as a number.
bool is_numeric(int32_t position);

// A text with what the lexer may read after it. At most lex_text_max characters are left.
std::string lexer_text(std::string_view text);

// True if an expression has the same value wherever it is: it names no variable.
bool expression_is_constant(std::string_view text);

// True of a constant 0 where nothing could be as well.
bool is_default(int32_t position);

// ---- Names, from the old forms of the rule tables ----

// The name of an argument in the old form of its command. Empty if it has none, as what "..." stands for.
std::string argument_name(int32_t position);

// True of an attribute, whose name is the letter a and a number.
bool is_attribute(int32_t position);

// An argument in a detail: its number, its name if that says something, and its text as typed.
std::string argument_shown(int32_t position);

// ---- What the output has ----

// What comments or live lines have of an argument; nothing of a position without one.
argument_use argument_use_of(int32_t position, bool live);

// Finds that for all arguments, after statement_take.
void arguments_take();

// True of the value of a constant that is written as it is, or as the new form has it.
bool is_whole_value(int32_t position, const argument_use &use);
