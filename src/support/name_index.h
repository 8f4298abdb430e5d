// Name index: finds the row of a name in a table of up to 1,000 rows without walking it.
//
// The rows belong to the table's owner. Rows are only added, each with a different name. The hash of a name
// selects the slot at which the search begins; at least half of the slots are empty.
#pragma once

#include "support/text.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>

constexpr int name_index_bits = 11; // the highest bits of a hash select the slot
constexpr uint32_t name_index_slots = 1 << name_index_bits;

struct name_index {
    const char *names;                     // the name of row 0, NUL-terminated
    size_t stride;                         // bytes from one row's name to the next row's
    size_t length;                         // characters of a name that count
    int32_t rows;                          // rows in the index
    uint32_t free_slot;                    // for the last name that wasn't found
    uint64_t hash;                         // of that name
    uint16_t slots[name_index_slots];      // row number + 1; 0: empty
    uint64_t hashes[name_index_slots / 2]; // by row
};

// Empties the index for a new table.
inline void name_index_start(name_index *index, const void *names, size_t stride, size_t length)
{
    if (index->rows > 0)
        memset(index->slots, 0, sizeof index->slots);
    index->names = static_cast<const char *>(names);
    index->stride = stride;
    index->length = length;
    index->rows = 0;
}

// The row of a name of size characters, or -1.
inline int32_t name_index_find(name_index *index, const char *name, size_t size)
{
    size = std::min(size, index->length);
    uint64_t hash = 0; // unique for names of up to eight characters
    for (size_t at = 0; at < size; at += 8)
        hash = (hash + characters_load(name + at, size - at)) * 0x9E3779B97F4A7C15u;
    auto slot = static_cast<uint32_t>(hash >> (64 - name_index_bits));
    for (; index->slots[slot] != 0; slot = (slot + 1) % name_index_slots) {
        const int32_t row = index->slots[slot] - 1;
        const char *known = index->names + static_cast<size_t>(row) * index->stride;
        if (index->hashes[row] == hash && (size == index->length || known[size] == 0) &&
            (size <= 8 || std::mismatch(name, name + size, known).first == name + size))
            return row;
    }
    index->free_slot = slot;
    index->hash = hash;
    return -1;
}

// Adds the next row, of the name that was looked up last and not found.
inline void name_index_add(name_index *index)
{
    index->hashes[index->rows] = index->hash;
    index->slots[index->free_slot] = static_cast<uint16_t>(++index->rows);
}
