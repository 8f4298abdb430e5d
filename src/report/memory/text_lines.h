// A text as lines, and the comparison of texts in which the habits of editors don't count: the byte order
// mark, the kind of line end, white space at both ends of a line, and whether the last line has an end.
//
// Views point into the text that was handed over, which the caller keeps.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <map>
#include <string_view>
#include <utility>
#include <vector>

// The text after its byte order mark, if it has one.
std::string_view text_body(std::string_view text);

// Takes the first line off *rest, with its line end. False if nothing is left.
bool line_take(std::string_view *rest, std::string_view *line);

// The line end of a line; empty if it has none.
std::string_view line_end(std::string_view line);

// Takes the lines off two texts that are the same in both up to the first ones that differ.
void equal_lines_drop(std::string_view *a, std::string_view *b);

// True if two texts have the same lines.
bool same_text(std::string_view a, std::string_view b);

// A text that is cut into lines. Line n begins at starts[n]; a last entry is the end of the body.
struct text_lines {
    std::string_view body;
    std::vector<size_t> starts;
};
text_lines text_split(std::string_view text);
size_t line_count(const text_lines &text);

// The lines from first up to end, with their line ends.
std::string_view lines_between(const text_lines &text, size_t first, size_t end);

// A line by its index from 0, trimmed.
std::string_view line_core(const text_lines &text, size_t index);

// How many lines of a stretch the new system carries out.
size_t live_lines(const text_lines &text, size_t first, size_t count);

// The number of each line of a text: equal lines have equal numbers in all texts that are numbered by one
// numbering. It is sorted, because a hash table is slow for lines of one hash, and somebody may have made
// such.
using line_numbering = std::map<std::pair<size_t, std::string_view>, uint32_t>; // by hash and trimmed text
std::vector<uint32_t> lines_number(const text_lines &text, line_numbering *known);
