// The difference of two texts whose lines are numbers: equal lines have equal numbers.
//
// Few changes, found as Myers does it; a run of added or deleted lines that could be in several positions is
// moved as far down as it goes, or up to the lowest position where it is opposite a change of the other text.
// Time and memory grow with the number of lines: where the texts differ in more than some hundred lines at a
// stretch, more lines may count as changed than need be.
#pragma once

#include "report/memory/text_lines.h"

#include <stddef.h>
#include <stdint.h>

#include <string_view>
#include <vector>

// Lines that are replaced: none were deleted where before_count is 0, none added where after_count is 0.
struct line_change {
    size_t before_at;
    size_t before_count;
    size_t after_at;
    size_t after_count;
};

// The changes that make after out of before, in order, with at least one equal line between two of them.
std::vector<line_change> line_diff(const std::vector<uint32_t> &before, const std::vector<uint32_t> &after);

// Two texts as lines, and the changes that make one out of the other. Views point into the texts that were
// handed over, which the caller keeps.
struct text_changes {
    text_lines before, after;
    std::vector<line_change> changes;
};
text_changes text_diff(std::string_view before, std::string_view after);
