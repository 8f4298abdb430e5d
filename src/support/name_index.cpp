#include "support/name_index.h"

#include "support/text.h"

#include <string.h>

void name_index_start(name_index *index, const void *names, size_t stride, int32_t length, bool nocase)
{
    if (index->rows > 0)
        memset(index->places, 0, sizeof index->places);
    index->names = static_cast<const char *>(names);
    index->stride = stride;
    index->length = length;
    index->nocase = nocase;
    index->rows = 0;
}

static uint32_t name_hash(const char *name, int32_t length, bool nocase)
{
    uint32_t hash = 2166136261u;
    for (int32_t i = 0; i < length && name[i] != 0; i++) {
        int c = static_cast<unsigned char>(name[i]);
        hash = (hash ^ static_cast<uint32_t>(nocase ? char_lower(c) : c)) * 16777619u;
    }
    return hash ^ hash >> 15;
}

static bool name_equals(const char *known, const char *name, int32_t length, bool nocase)
{
    for (int32_t i = 0; i < length; i++) {
        int a = static_cast<unsigned char>(known[i]);
        int b = static_cast<unsigned char>(name[i]);
        if (nocase ? char_lower(a) != char_lower(b) : a != b)
            return false;
        if (a == 0)
            return true;
    }
    return true;
}

int32_t name_index_find(const name_index *index, const char *name, uint32_t *place)
{
    uint32_t at = name_hash(name, index->length, index->nocase) % name_index_places;
    for (; index->places[at] != 0; at = (at + 1) % name_index_places) {
        const char *known = index->names + static_cast<size_t>(index->places[at] - 1) * index->stride;
        if (name_equals(known, name, index->length, index->nocase))
            return index->places[at] - 1;
    }
    *place = at;
    return -1;
}

void name_index_add(name_index *index, uint32_t place)
{
    index->places[place] = static_cast<uint16_t>(++index->rows);
}
