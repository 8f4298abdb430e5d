// The form of live lines: whether what is carried out is a well-formed list.
//
// The output is right as it is. Whether the current dialect takes such a line can't be known here, so it is
// reported.
#pragma once

#include "report/findings/statement.h"

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

// Faults, as the details of items have them, by which their edits are judged.
inline constexpr char values_without_comma[] = "a blank between two values where a comma is expected";
inline constexpr char comma_after_word[] = "a comma directly after the word";
inline constexpr char rest_of_text[] = "the rest of a text that began in the comment before it";
inline constexpr char comment_inside[] = "a comment inside the line";
inline constexpr char joins_next[] = "a backslash at the line's end, which joins the next line to it";
inline constexpr char option_missing[] = "an empty menu option of the script is missing";
inline constexpr char option_added[] = "an empty menu option that the script didn't have";
inline constexpr char option_divided[] = "an option of the script has a bar, which divides options";

// Adds an item of the kind form for each fault of a command's live lines that makes one no well-formed list.
// What a string has become doesn't count.
void judge_live_form();

// True if an argument is an option of the statement's menu string, which may be empty.
bool is_option(int32_t position);

// Why a line is no well-formed list, given the names in it, which may be no expressions; empty if it is one.
std::string live_form_fault(std::string_view line, const std::vector<std::string_view> &names);

// True if the line that is there no longer has the fault of an item of the kind form, nor another one
// instead.
bool form_is_mended(const report_item &item, std::string_view was, std::string_view there);
