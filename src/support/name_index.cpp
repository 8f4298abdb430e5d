#include "support/name_index.h"

#include "support/text.h"

#include <string.h>

void name_index_start(name_index *index, const void *names, size_t stride, size_t length)
{
    if (index->rows > 0)
        memset(index->places, 0, sizeof index->places);
    index->names = static_cast<const char *>(names);
    index->stride = stride;
    index->length = length;
    index->rows = 0;
}

// The hash of a name.
static inline uint64_t name_hash(const char *name, size_t size, bool nocase)
{
    constexpr uint64_t factor = 0x9E3779B97F4A7C15u;
    uint64_t hash = characters_load(name, size);
    if (nocase)
        hash = characters_lower(hash);
    hash *= factor;
    for (size_t at = 8; at < size; at += 8) {
        uint64_t characters = characters_load(name + at, size - at);
        hash = (hash ^ hash >> 32 ^ (nocase ? characters_lower(characters) : characters)) * factor;
    }
    return hash;
}

// Tells whether the name of a row, of the same hash, is the name of size characters.
static bool name_equals(const char *known, const char *name, size_t size, size_t length, bool nocase)
{
    if (size < length && known[size] != 0)
        return false;
    for (size_t i = 0; i < size; i++) {
        int a = static_cast<unsigned char>(known[i]);
        int b = static_cast<unsigned char>(name[i]);
        if (nocase ? char_lower(a) != char_lower(b) : a != b)
            return false;
    }
    return true;
}

static inline int32_t find(name_index *index, const char *name, size_t size, bool nocase)
{
    if (size > index->length)
        size = index->length;
    uint64_t hash = name_hash(name, size, nocase);
    uint32_t at = static_cast<uint32_t>(hash >> (64 - name_index_bits));
    for (; index->places[at] != 0; at = (at + 1) % name_index_places) {
        auto row = static_cast<size_t>(index->places[at] - 1);
        const char *known = index->names + row * index->stride;
        if (index->hashes[row] == hash && name_equals(known, name, size, index->length, nocase))
            return index->places[at] - 1;
    }
    index->place = at;
    index->hash = hash;
    return -1;
}

int32_t name_index_find(name_index *index, const char *name, size_t size)
{
    return find(index, name, size, false);
}

int32_t name_index_find_nocase(name_index *index, const char *name, size_t size)
{
    return find(index, name, size, true);
}

void name_index_add(name_index *index)
{
    index->hashes[index->rows] = index->hash;
    index->places[index->place] = static_cast<uint16_t>(++index->rows);
}
