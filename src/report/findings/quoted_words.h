// Quoted text among words, which a command that takes no strings there takes apart at its commas.
#pragma once

#include "report/findings/statement.h"

#include <stdint.h>

#include <string>
#include <string_view>

struct quoted_words {
    int32_t first = 0, last = 0; // positions of its arguments; 0: there is no such text
    std::string written;
    std::string_view typed; // a part of the script
    uint64_t line = 0;      // of the output, where it is
};

// The next text from a position on that a live line has. source: the statement's lines of the script.
quoted_words quoted_words_from(const statement_view &statement, std::string_view source, int32_t position);
