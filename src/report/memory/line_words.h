// Lines as what they say: what edits that do nothing leave as it is, and how often a text is in a line.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>

// A line without what people write as they like: the case of letters, blanks, the signs of a comment, a
// remark behind a statement, and letters beyond ASCII, whose bytes depend on the encoding.
std::string line_essence(std::string_view line);

// The first word of a line, in capitals.
std::string leading_word(std::string_view line);

// How often a text is in a line, and no part of a longer name or number. Blanks beside commas and operators
// don't count; case does, as names have it.
size_t count_in(std::string_view line, std::string_view text);
