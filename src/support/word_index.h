// Word index: finds the row of a word in a constant table, in any case, usually with one probe.
//
// Words consist of letters, digits and underscores, perhaps after a #. The compiler makes the index, a hash
// table with linear probing.
#pragma once

#include "support/text.h"

#include <stddef.h>
#include <stdint.h>

constexpr size_t word_size_max = 12; // characters of a table's word; a longer word is in no table

// Lowers eight characters of a word at once. The underscore becomes byte 127, which no word has.
constexpr uint64_t characters_lower(uint64_t characters)
{
    return characters | (characters & 0x4040404040404040) >> 1;
}

// The characters of a word, lowered, as two numbers.
struct word_key {
    uint64_t first; // eight characters, the first one lowest
    uint32_t rest;  // the others
};

// The key of a word; {0, 0}, which no row has, for a word that is too long.
inline word_key word_key_make(const char *word, size_t size)
{
    if (size > word_size_max)
        return word_key{0, 0};
    uint64_t rest = size > 8 ? characters_load(word + 8, size - 8) : 0;
    return word_key{characters_lower(characters_load(word, size)),
                    static_cast<uint32_t>(characters_lower(rest))};
}

constexpr bool word_key_equals(const word_key &a, const word_key &b)
{
    return a.first == b.first && a.rest == b.rest;
}

constexpr uint32_t word_hash(const word_key &key)
{
    uint64_t mixed = (key.first ^ key.rest * 0x9E3779B97F4A7C15u) * 0xFF51AFD7ED558CCDu;
    return static_cast<uint32_t>(mixed >> 48);
}

template <size_t slots, size_t rows> struct word_index {
    int16_t row[slots];     // row number + 1; 0: empty
    word_key key[1 + rows]; // by row number + 1
};

// word_index_make calls it if two rows have the same word. It has no body: the compiler refuses the call in a
// constant.
void word_is_duplicate();

// The index over rows that have a name.
template <size_t slots, typename table_row, size_t rows>
constexpr word_index<slots, rows> word_index_make(const table_row (&table)[rows])
{
    word_index<slots, rows> index{};
    int16_t number = 0;
    for (const table_row &row : table) {
        word_key key{0, 0};
        for (size_t i = 0; row.name[i] != 0; i++) {
            uint64_t c = static_cast<unsigned char>(row.name[i]);
            if (i < 8)
                key.first |= characters_lower(c) << 8 * i;
            else
                key.rest |= static_cast<uint32_t>(characters_lower(c) << 8 * (i - 8));
        }
        size_t slot = word_hash(key) % slots;
        for (; index.row[slot] != 0; slot = (slot + 1) % slots)
            if (word_key_equals(index.key[index.row[slot]], key))
                word_is_duplicate();
        index.row[slot] = ++number;
        index.key[number] = key;
    }
    return index;
}

// Number of the row of a key, or -1.
template <size_t slots, size_t rows>
inline int32_t word_index_find(const word_index<slots, rows> &index, const word_key &key)
{
    size_t slot = word_hash(key) % slots;
    while (index.row[slot] != 0 && !word_key_equals(index.key[index.row[slot]], key))
        slot = (slot + 1) % slots;
    return index.row[slot] - 1;
}
