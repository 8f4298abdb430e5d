// Arrays, strings and string lists: the blocks that hold their elements.
//
// The payload of all arrays of a file together is limited: dimensions, rows and elements, without spare
// bytes.
#pragma once

#include "support/pool_heap.h"

#include <stdint.h>

// Type codes of a variable, another numbering than the argument types.
enum : int8_t {
    VAR_NONE = 0, // the type of the variable, or of the name's prefix
    VAR_CHAR = 1,
    VAR_UCHAR = 2,
    VAR_SHORT = 3,
    VAR_USHORT = 4,
    VAR_INT = 5,
    VAR_UINT = 6,
    VAR_LONG = 7, // 32 bits, as is ULONG
    VAR_ULONG = 8,
    VAR_FLOAT = 9,
    VAR_DOUBLE = 10,
    VAR_STRING = 11, // characters, always one dimension
    VAR_SLIST = 12   // a list of strings, always two dimensions: items, characters
};

// Bytes of one element, by type code.
inline constexpr uint8_t type_size[] = {0, 1, 1, 2, 2, 4, 4, 4, 4, 4, 8, 1, 4};

constexpr int var_dims_max = 5;
constexpr uint64_t var_payload_max = 256u * 1024 * 1024; // bytes, of all variables of a file together

// The head of a block; table and data follow it.
struct var_block {
    int32_t dims[var_dims_max]; // of a string list only the first, the items, counts
    uint32_t wasted;            // bytes of a string list's data that no item uses any more
    uint32_t initial_size;      // bytes of each item that a string list was made with
    int32_t initial_items;      // number of these items, or 0
    int32_t entries;            // of the table
    uint32_t *table;            // a string list's: offsets of the items
    unsigned char *data;        // the elements, row by row
    unsigned char *end;         // the first byte after the elements
};

// Where the elements of an array are.
struct var_array {
    var_block *block;  // null: not made yet
    uint32_t capacity; // bytes after the block's head
    uint32_t payload;  // bytes that count toward var_payload_max
};

// An item of a string list: size bytes, a NUL the last of them, or none.
struct list_item {
    unsigned char *start;
    uint32_t size;
};

// Starts a file without arrays; heap is for the small blocks.
void arrays_start(pool_heap *heap);

// Makes an array, or changes its dimensions, none of them negative; its elements are zero. False if there is
// no memory or the payload would exceed var_payload_max; then the array is unchanged.
bool array_make(var_array *array, int8_t type, int32_t ndims, const int32_t *dims);

// Frees an array's block.
void array_free(var_array *array);

// An item of a string list, which has it.
list_item list_item_at(const var_block *block, int32_t number);

// Sets the size of an item in bytes; they are zero if the size changes. A list with fewer items gets empty
// ones up to it. False as array_make.
bool list_item_store(var_array *array, int32_t number, uint32_t size);
