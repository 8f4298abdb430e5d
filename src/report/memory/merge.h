// The three-way merge of a converted script: what was written last, what somebody made of it, and what is
// written now.
//
// The rule is that of `git merge-file`: changes of the two sides that overlap or touch each other are a
// conflict, unless both come to the same lines. Lines are compared as text_lines.h has it, and those that the
// sides have alike stay as they are in the edited output, byte for byte.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

// Texts with more lines aren't taken apart: they are one conflict.
constexpr size_t merge_lines_max = 1000000;

// Lines that at least one side has changed. The texts are whole lines of the three texts, views into them;
// none of them has a text where lines were only added or deleted.
struct merge_block {
    size_t line; // from 1
    std::string_view last, mine, fresh;
};

// Without a conflict text is the merged text; with one, conflicts is all that there is.
struct merge_result {
    std::vector<merge_block> conflicts; // line is counted in mine
    std::vector<merge_block> kept;      // only mine has changed them; line is counted in text
    size_t taken = 0;                   // blocks that only fresh has changed; 0: text is mine
    std::string text;
};

// Merges the changes from last to mine and from last to fresh. The text has mine's byte order mark and line
// ends, and its last line has an end if mine's has. Views in the result are good as long as the three texts
// are.
merge_result merge_texts(std::string_view last, std::string_view mine, std::string_view fresh);
