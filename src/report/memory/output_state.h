// What the output of a script is, compared with what was written last and what is written now.
#pragma once

#include <stdint.h>

#include <optional>
#include <string_view>

// In the order in which they are tested.
enum output_state : uint8_t {
    OUTPUT_NONE,    // there is no output
    OUTPUT_SAME,    // it is what is written now
    OUTPUT_CUT,     // it is empty, or ends inside a line and lacks what was written from there on
    OUTPUT_UNKNOWN, // it isn't known what was written
    OUTPUT_OLD,     // it is what was written last, which isn't what is written now
    OUTPUT_EDITED,  // it was edited, and lacks nothing of what is written now
    OUTPUT_BEHIND   // it was edited, and what is written has changed since
};
constexpr int output_state_count = OUTPUT_BEHIND + 1;

// The states' words are part of the interface: people and programs select by them.
extern const char *const output_state_words[output_state_count];

// True if an output is empty, or ends inside a line as the beginning of what is or was written: no edit
// is in it.
bool output_is_beginning(std::string_view there, std::string_view now,
                         std::optional<std::string_view> memory);

// The state of the output that is there, or isn't, when now is written for its script, and memory was written
// last if that is known.
output_state output_state_of(std::optional<std::string_view> there, std::string_view now,
                             std::optional<std::string_view> memory);
