// Faults of live lines, as the details of items have them, by which their edits are judged.
#pragma once

inline constexpr char values_without_comma[] = "a blank between two values where a comma is expected";
inline constexpr char comma_after_word[] = "a comma directly after the word";
inline constexpr char rest_of_text[] = "the rest of a text that began in the comment before it";
inline constexpr char comment_inside[] = "a comment inside the line";
inline constexpr char joins_next[] = "a backslash at the line's end, which joins the next line to it";
inline constexpr char option_missing[] = "an empty menu option of the script is missing";
inline constexpr char option_added[] = "an empty menu option that the script didn't have";
inline constexpr char option_divided[] = "an option of the script has a bar, which divides options";
