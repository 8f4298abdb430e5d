// Name index: finds the row of a name in a table of up to 1,000 rows without walking it.
//
// The rows belong to the table's owner and are only ever added, each with a name of its own. So the index
// finds what a search from the first row would find. A name's places start at its hash and go on one by
// one; at least half of the places stay empty.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr int name_index_bits = 11; // of a hash, the highest: they depend on all characters
constexpr uint32_t name_index_places = 1 << name_index_bits;

struct name_index {
    const char *names;                      // the name of row 0, NUL-terminated
    size_t stride;                          // bytes from one row's name to the next row's
    size_t length;                          // characters of a name that count
    int32_t rows;                           // rows in the index
    uint64_t hash;                          // of the last name that wasn't found,
    uint32_t place;                         // and where name_index_add puts it
    uint16_t places[name_index_places];     // row number + 1; 0: empty
    uint64_t hashes[name_index_places / 2]; // by row
};

// Empties the index for a new table.
void name_index_start(name_index *index, const void *names, size_t stride, size_t length);

// The row of a name of size characters, or -1. All names of an index are looked up by one of the two: they
// compare as they are, or without regard to case.
int32_t name_index_find(name_index *index, const char *name, size_t size);
int32_t name_index_find_nocase(name_index *index, const char *name, size_t size);

// Adds the next row, of the name that was looked up last and not found.
void name_index_add(name_index *index);
