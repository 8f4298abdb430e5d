// Lines of scripts and outputs as texts: their comments, strings, words, and the items of their lists.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

// True if a line is a comment: it begins with // or with the word REM.
bool is_comment(std::string_view line);

// True if the new system carries a line out: it is neither empty nor a comment.
bool is_live(std::string_view line);

// Where a comment begins in a line, outside of strings; npos if there is none.
size_t comment_in(std::string_view line);

// A text without its double quotes, if it has a pair of them.
std::string_view without_quotes(std::string_view text);

// True if a string in a line has no closing quote, or one too many.
bool has_open_string(std::string_view line);

// A string's text with its escapes decoded.
std::string escapes_decoded(std::string_view text);

// What a text begins with, up to a blank, an equals sign, a parenthesis or a comma, to be shown.
std::string first_word(std::string_view text);

// The items of a line's list: what is between commas outside of quotes and parentheses, trimmed. The first
// one begins after the line's word.
std::vector<std::string_view> list_items(std::string_view line);

// True if an item of a list is a whole string.
bool item_is_string(std::string_view item);
