// Quoted text among words, which a command that takes no strings there takes apart at its commas.
#pragma once

#include "report/findings/statement.h"

#include <stdint.h>

#include <string>

struct quoted_words {
    int32_t first = 0, last = 0; // positions of its arguments; 0: there is no such text
    std::string written;
    uint64_t line = 0; // of the output, where it is
};

// The next text from a position on that a live line has.
quoted_words quoted_words_from(const statement_view &statement, int32_t position);
