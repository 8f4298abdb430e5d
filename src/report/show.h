// Showing texts of scripts: whatever bytes they hold, what is shown is harmless and legal UTF-8.
#pragma once

#include <stdint.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A text for people: legal UTF-8 stays, any other byte from 128 on counts as Latin-1, and control characters
// are written as \xNN.
std::string shown(std::string_view text);

// The same with tabs and line ends kept, for texts that are data.
std::string shown_whole(std::string_view text);

// True if a text is well-formed UTF-8.
bool is_utf8(std::string_view text);

// Bytes as text: each becomes the character of its number.
std::string bytes_shown(std::string_view bytes);

// A text without white space at both ends.
std::string_view text_trimmed(std::string_view text);

// At most size bytes from the beginning of a text; no UTF-8 character is cut in two.
std::string_view text_begin(std::string_view text, size_t size);

// A number of things: "1 line", "2 lines".
std::string counted(uint64_t count, const char *thing);

// Counts, the highest first.
std::vector<std::pair<std::string, uint64_t>> most_first(const std::map<std::string, uint64_t> &counts);

// A text in capitals, as far as ASCII goes.
std::string text_upper(std::string text);

// A text cut off after a number of bytes, never inside a character of UTF-8, and shown.
std::string shown_cut(std::string_view text, size_t size);
