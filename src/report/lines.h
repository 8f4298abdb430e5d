// Lines of a file, one after the other, whatever their number and length.
#pragma once

#include "platform/platform.h"

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

constexpr size_t line_kept = 4096; // characters of a line that a reader is given

// Reads a file and calls take with the number of each line, from 1, and its text without its line end. False
// if the file can't be opened.
bool lines_read(const std::string &path, void (*take)(uint64_t number, std::string_view line, void *context),
                void *context);

// Lines known by a number each, made of their characters; a CR before a line end doesn't count. Texts come
// piece by piece.
struct line_prints {
    bool kept = false;            // each line's number, not only their sum
    std::vector<uint64_t> prints; // of the lines that have ended
    uint64_t sum = 0;             // of all of them in their order
    uint64_t print = 0;           // of the one that goes on
    bool begun = false;           // it has a character
    bool cr = false;              // a CR is in hand
};
void prints_add(line_prints *lines, std::string_view bytes);
void prints_end(line_prints *lines);

// Adds the lines of a file. False if it can't be opened.
bool prints_of_file(const std::string &path, line_prints *lines);
