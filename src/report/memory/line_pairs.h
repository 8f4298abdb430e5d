// Which lines stand for which where a text was edited.
#pragma once

#include "report/memory/line_diff.h"

#include <stddef.h>
#include <stdint.h>

#include <vector>

constexpr size_t no_line = SIZE_MAX;

// For each line before the index of the same one after; no_line: it is changed or gone.
std::vector<size_t> lines_kept(const text_changes &texts);

// For each line before the index of the one after that stands for it: the same one, or in a change the one
// that is most like it. Lines are alike if they begin with the same word or have half of their characters in
// common; of what is then left, if it is as much on both sides, the lines in the same positions are pairs.
// no_line: there is none.
std::vector<size_t> lines_paired(const text_changes &texts);

// For each line before that has no pair, the index of one after that has none and begins with the same word,
// wherever it is. Of equal lines that were edited the difference may have taken the wrong ones for kept.
// no_line: there is none, or it has a pair, or is a comment.
std::vector<size_t> lines_paired_far(const text_changes &texts, const std::vector<size_t> &pairs);
