// The items of a string list follow each other in its data in the order in which they were stored, each after
// its size in four bytes. The table in front of the data holds the offset of each item whose size was
// changed, 0 for the others: those that the list was made with, which all have the size in the block's head,
// and those without bytes. An item that grows is written again at the end of the data, and its old bytes are
// wasted. When the block is full, the list moves to a new one, without the waste and with a quarter of its
// size to spare.
#include "expressions/var_array.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

static pool_heap *array_heap;
static uint64_t payload_used; // of all arrays

constexpr uint32_t item_head = 4; // bytes of the size in front of an item

void arrays_start(pool_heap *heap)
{
    array_heap = heap;
}

// ---- Blocks ----

// A block of at least so many bytes comes from the C library and is freed when it isn't needed any more. The
// pool frees nothing before the file's end, and there a small block could keep a large one from reuse.
constexpr size_t block_large = 64 * 1024;

static bool block_is_large(uint64_t capacity)
{
    return sizeof(var_block) + capacity >= block_large;
}

// A block with so many bytes after its head, all zero. Null if there is no memory.
static var_block *block_make(uint64_t capacity)
{
    size_t bytes = sizeof(var_block) + static_cast<size_t>(capacity);
    void *block = block_is_large(capacity) ? heap_calloc(1, bytes)
                                           : heap_alloc(array_heap, "Vbuf", static_cast<uint32_t>(bytes));
    return static_cast<var_block *>(block);
}

static void block_free(var_block *block, uint64_t capacity)
{
    if (block_is_large(capacity))
        free(block);
    else
        heap_free(block);
}

// Sets the pointers to a block's table and data. Only a string list's table has entries.
static void block_lay_out(var_block *block, uint64_t entries, uint64_t data_size)
{
    block->table = reinterpret_cast<uint32_t *>(block + 1);
    block->entries = static_cast<int32_t>(entries);
    block->data = reinterpret_cast<unsigned char *>(block->table + entries);
    block->end = block->data + data_size;
    block->wasted = 0;
    block->initial_items = 0;
}

// Replaces an array's block, which is freed.
static void block_replace(var_array *array, var_block *block, uint64_t capacity)
{
    if (array->block != nullptr && array->block != block)
        block_free(array->block, array->capacity);
    array->block = block;
    array->capacity = static_cast<uint32_t>(capacity);
}

// True if an array's payload may change to so many bytes.
static bool payload_fits(const var_array *array, uint64_t payload)
{
    return payload_used - array->payload + payload <= var_payload_max;
}

static void payload_set(var_array *array, uint64_t payload)
{
    payload_used += payload - array->payload;
    array->payload = static_cast<uint32_t>(payload);
}

void array_free(var_array *array)
{
    block_free(array->block, array->capacity);
    payload_set(array, 0);
    array->block = nullptr;
}

// ---- Making ----

struct block_sizes {
    uint64_t entries; // of the table
    uint64_t data;    // bytes
    uint64_t payload; // bytes that count toward var_payload_max
};

constexpr uint64_t round_up_8(uint64_t size)
{
    return (size + 7) / 8 * 8;
}

// The sizes of a list: items, and characters of each of them.
static block_sizes list_measure(uint64_t items, uint64_t characters)
{
    uint64_t bytes = characters != 0 ? items * (characters + 1) : 0;
    uint64_t heads = characters != 0 ? items * item_head : 0;
    return {items, bytes + heads, 4 + 4 * items + bytes};
}

// The sizes of any other array. No sum or product leaves 64 bits. Besides its elements there count four bytes
// for each dimension and four for each row, on every level, as if tables led to the rows.
static block_sizes elements_measure(int8_t type, int32_t ndims, const int32_t *dims)
{
    uint64_t rows = 0;
    uint64_t level = 1; // elements down to this dimension
    for (int32_t i = 0; i < ndims; i++) {
        level *= static_cast<uint64_t>(dims[i]);
        if (level > var_payload_max) // too many, and also too many rows where it is an upper level
            return {0, 0, level};
        if (i + 1 < ndims)
            rows += level;
    }
    uint64_t data = type == VAR_STRING ? level + 1 : type_size[type] * level;
    return {0, data, round_up_8(4 * static_cast<uint64_t>(ndims)) + round_up_8(4 * rows) + data};
}

// Spare bytes of a list that takes so many.
constexpr uint64_t list_spare(uint64_t size)
{
    return size / 4 + 256;
}

// A block of so many bytes, all zero, for new contents of an array. A small one is reused unless it is far
// too large; if it is a little too small, the new one gets half as much again, or a string that grows by one
// character each time would leave the pool blocks of every size. A large one is never reused: the system has
// zeroed pages, while a script of a few bytes could make every statement clear 256 MB. Null without memory.
static var_block *block_obtain(const var_array *array, uint64_t size, uint64_t *capacity)
{
    *capacity = size;
    if (array->block != nullptr && !block_is_large(array->capacity)) {
        uint64_t known = array->capacity;
        if (size <= known && known / 2 <= size + 1024) {
            *capacity = known;
            memset(array->block, 0, sizeof(var_block) + static_cast<size_t>(known));
            return array->block;
        }
        if (size > known && size < known + known / 2)
            *capacity = known + known / 2;
    }
    return block_make(*capacity);
}

bool array_make(var_array *array, int8_t type, int32_t ndims, const int32_t *dims)
{
    bool list = type == VAR_SLIST;
    block_sizes sizes = list ? list_measure(static_cast<uint64_t>(dims[0]), static_cast<uint64_t>(dims[1]))
                             : elements_measure(type, ndims, dims);
    if (!payload_fits(array, sizes.payload))
        return false;
    uint64_t size = 4 * sizes.entries + sizes.data;
    if (list)
        size += list_spare(size);
    uint64_t capacity;
    var_block *block = block_obtain(array, size, &capacity);
    if (block == nullptr)
        return false;
    block_replace(array, block, capacity);
    payload_set(array, sizes.payload);
    block_lay_out(block, sizes.entries, sizes.data);
    memcpy(block->dims, dims, static_cast<size_t>(ndims) * sizeof *dims);
    if (list && dims[1] != 0) {
        block->initial_items = dims[0];
        block->initial_size = static_cast<uint32_t>(dims[1]) + 1;
    }
    return true;
}

// ---- Items of a list ----

list_item list_item_at(const var_block *block, int32_t number)
{
    uint32_t offset = block->table[number];
    if (offset != 0) {
        uint32_t size;
        memcpy(&size, block->data + offset - item_head, item_head);
        return {block->data + offset, size};
    }
    if (number >= block->initial_items)
        return {block->data, 0};
    size_t first = static_cast<size_t>(number) * (block->initial_size + item_head) + item_head;
    return {block->data + first, block->initial_size};
}

// Moves a list to a new block, for so many items and so many bytes more than its items have. False without
// memory.
static bool list_move(var_array *array, int32_t items, uint64_t more)
{
    const var_block *old = array->block;
    uint64_t entries = static_cast<uint64_t>(items <= old->entries ? old->entries : items + items / 4);
    uint64_t capacity = 4 * entries + static_cast<uint64_t>(old->end - old->data) - old->wasted + more;
    capacity += list_spare(capacity);
    var_block *block = block_make(capacity);
    if (block == nullptr)
        return false;
    block_lay_out(block, entries, 0);
    block->dims[0] = old->dims[0];
    for (int32_t number = 0; number < old->dims[0]; number++) {
        list_item item = list_item_at(old, number);
        if (item.size == 0)
            continue;
        block->table[number] = static_cast<uint32_t>(block->end - block->data) + item_head;
        memcpy(block->end, &item.size, item_head);
        memcpy(block->end + item_head, item.start, item.size);
        block->end += item_head + item.size;
    }
    block_replace(array, block, capacity);
    return true;
}

// Changes the size of an item, its bytes zero. The block has enough bytes for one that grows.
static void item_resize(var_block *block, int32_t number, uint32_t size)
{
    list_item item = list_item_at(block, number);
    if (size < item.size) {
        block->wasted += item.size - size;
    } else {
        block->wasted += item.size != 0 ? item_head + item.size : 0;
        item.start = block->end + item_head;
        block->end = item.start + size;
    }
    block->table[number] = static_cast<uint32_t>(item.start - block->data);
    memcpy(item.start - item_head, &size, item_head);
    memset(item.start, 0, size);
}

bool list_item_store(var_array *array, int32_t number, uint32_t size)
{
    int32_t known = array->block->dims[0];
    int32_t items = number < known ? known : number + 1;
    uint32_t old_size = number < known ? list_item_at(array->block, number).size : 0;
    uint64_t payload = array->payload + 4 * static_cast<uint64_t>(items - known) - old_size + size;
    uint64_t more = size > old_size ? uint64_t{item_head} + size : 0;
    if (!payload_fits(array, payload))
        return false;
    const var_block *block = array->block;
    const unsigned char *block_end = reinterpret_cast<const unsigned char *>(block + 1) + array->capacity;
    bool fits = items <= block->entries && more <= static_cast<uint64_t>(block_end - block->end);
    if (!fits && !list_move(array, items, more))
        return false;
    payload_set(array, payload);
    array->block->dims[0] = items;
    if (size != old_size)
        item_resize(array->block, number, size);
    // Many items became shorter: move without the waste. Without memory the waste stays.
    if (array->block->wasted > payload + 4096)
        (void)list_move(array, items, 0);
    return true;
}
