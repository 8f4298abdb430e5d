// Which lines stand for which where a text was edited.
#pragma once

#include "report/memory/line_diff.h"

#include <stddef.h>
#include <stdint.h>

#include <vector>

constexpr size_t no_line = SIZE_MAX;

// For each line before the index of the same one after; no_line: it is changed or gone.
std::vector<size_t> lines_kept(const text_changes &texts);

// For each line before the index of the one after that stands for it; no_line: there is none.
struct line_pairs {
    std::vector<size_t> near, far;
};

// near: the same line, or in a change the one that is most like it. Lines are alike if they begin with the
// same word or have half of their characters in common; of what is left in the end, if it is as much on both
// sides, the lines in the same positions are pairs. far: of lines that have no such pair, comments apart, one
// that begins with the same word, wherever it is. Of equal lines that were edited the difference may have
// taken the wrong ones for kept, and lines may have moved.
line_pairs lines_paired(const text_changes &texts);
