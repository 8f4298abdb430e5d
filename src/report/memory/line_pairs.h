// Which lines of the output that is there stand for which of what is written now.
#pragma once

#include "report/item.h"
#include "report/memory/line_diff.h"

#include <stddef.h>
#include <stdint.h>

#include <string_view>
#include <vector>

constexpr size_t no_line = SIZE_MAX;

// For each line before the index of the one after that stands for it; no_line: there is none.
//
// Lines of a change are pairs if they say the same, begin with the same word or have half of their characters
// in common; of several the ones that are most alike. What is left in the end is paired in its order, if it
// is as much on both sides. Lines of different changes are pairs if they are equal, say the same or begin
// with the same word: of equal lines that were edited the difference may have taken the wrong ones for kept,
// and lines may have moved.
struct line_pairs {
    text_changes texts;
    std::vector<size_t> kept; // the same line
    std::vector<size_t> near; // the same line, or one of the same change
    std::vector<size_t> far;  // of lines without a near one, one of any change
};

// Pairs the lines of what is written now with those of the output that is there. Views in the result point
// into both texts. Of the positions that deleted lines may have had, the report's items decide.
line_pairs lines_paired(const script_report &report, std::string_view now, std::string_view there);
