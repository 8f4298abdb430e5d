// Plain marks: the arguments of a line that need no look of their own, found 64 characters at a time.
//
// A plain argument is a number of a sign, digits, a point and digits, a bare name, or nothing at all. There
// are several ways to find them, by what the processor can do; all of them give the same.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr int plain_marks_width = 64; // characters that are looked at; so many have to be readable

// The arguments from a place on that are complete, up to the end of the line. A bit in starts and one in ends
// for each, in order; bit n belongs to the character n behind the place. What an argument that isn't plain
// starts and ends with is only so if it has no comma in parentheses.
struct plain_marks {
    uint64_t starts; // first characters; for an empty argument, of what ends it
    uint64_t ends; // the commas behind them; the last one may be a line end, a line feed or the CR of a CR LF
    uint64_t plain; // those ends whose argument is plain
    uint64_t names; // those of the plain ones that are names
};

// One way to find them: at text, of which ready characters count.
struct plain_marks_way {
    void (*find)(const unsigned char *text, size_t ready, plain_marks *marks);
    bool (*supported)(); // by the processor
};

// The ways, the plainest first and the quickest last. The first one is always supported.
constexpr int plain_marks_ways = 3;
extern const plain_marks_way plain_marks_table[plain_marks_ways];

// The quickest way that is supported. It writes where the marks are read: a copy of numbers just written
// makes the processor wait.
extern void (*plain_marks_find)(const unsigned char *text, size_t ready, plain_marks *marks);
