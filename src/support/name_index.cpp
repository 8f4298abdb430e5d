#include "support/name_index.h"

#include <string.h>

#include <algorithm>

void name_index_start(name_index *index, const void *names, size_t stride, size_t length)
{
    if (index->rows > 0)
        memset(index->slots, 0, sizeof index->slots);
    index->names = static_cast<const char *>(names);
    index->stride = stride;
    index->length = length;
    index->rows = 0;
}

int32_t name_index_find(name_index *index, const char *name, size_t size)
{
    size = std::min(size, index->length);
    uint64_t hash = 0;
    for (size_t i = 0; i < size; i++)
        hash = (hash + static_cast<unsigned char>(name[i])) * 0x9E3779B97F4A7C15u;
    auto slot = static_cast<uint32_t>(hash >> (64 - name_index_bits));
    for (; index->slots[slot] != 0; slot = (slot + 1) % name_index_slots) {
        const int32_t row = index->slots[slot] - 1;
        const char *known = index->names + static_cast<size_t>(row) * index->stride;
        if (memcmp(known, name, size) == 0 && (size == index->length || known[size] == 0))
            return row;
    }
    index->free_slot = slot;
    return -1;
}

void name_index_add(name_index *index)
{
    index->slots[index->free_slot] = static_cast<uint16_t>(++index->rows);
}
