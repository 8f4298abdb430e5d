// A block's payload lies in three pieces behind its head: dims, rows, data. Row tables hold 32-bit numbers
// where one would expect pointers: byte offsets, from the payload's rows for the upper levels and from data
// for the last, so that a block may move.
#include "analysis/var_store.h"

#include "support/name_index.h"
#include "support/number.h"
#include "support/text.h"

#include <stddef.h>
#include <string.h>

var_rec *var_table;
int32_t var_count;
var_selection var_current;
void (*var_unread)();

static pool_heap *var_heap;
static name_index var_names; // over var_table

constexpr char var_owner[] = "Vbuf";

// Bytes of one element, by type code.
static constexpr uint8_t type_size[] = {0, 1, 1, 2, 2, 4, 4, 4, 4, 4, 8, 1, 4};

void vars_start(var_rec *table, pool_heap *heap)
{
    var_table = table;
    var_count = 0;
    var_heap = heap;
    var_current = var_selection{-1, nullptr, VAR_NONE, 0, nullptr};
    var_unread = nullptr;
    name_index_start(&var_names, reinterpret_cast<char *>(table) + offsetof(var_rec, name), sizeof(var_rec),
                     var_name_length, false);
}

// ---- Values in the width of their type ----

template <typename T> static double load(const unsigned char *from)
{
    T value;
    memcpy(&value, from, sizeof value);
    return static_cast<double>(value);
}

static double value_load(int8_t type, const unsigned char *from)
{
    switch (type) {
    case VAR_UCHAR: return load<uint8_t>(from);
    case VAR_SHORT: return load<int16_t>(from);
    case VAR_USHORT: return load<uint16_t>(from);
    case VAR_INT:
    case VAR_LONG: return load<int32_t>(from);
    case VAR_UINT:
    case VAR_ULONG: return load<uint32_t>(from);
    case VAR_FLOAT: return load<float>(from);
    case VAR_DOUBLE: return load<double>(from);
    default: return load<int8_t>(from); // CHAR, and a character of a string or a string list
    }
}

static void value_store(int8_t type, double value, unsigned char *to)
{
    if (type == VAR_DOUBLE) {
        memcpy(to, &value, sizeof value);
    } else if (type == VAR_FLOAT) {
        float narrow = float_from_double(value);
        memcpy(to, &narrow, sizeof narrow);
    } else {
        // The low bits alone count, so the sign of the type plays no part here.
        uint32_t bits = static_cast<uint32_t>(int_from_double(value));
        size_t size = type >= VAR_STRING ? 1 : type_size[type];
        for (size_t i = 0; i < size; i++)
            to[i] = static_cast<unsigned char>(bits >> (8 * i));
    }
}

double var_store_value(double value)
{
    if (var_current.ptr == nullptr)
        return value;
    if (var_current.type == VAR_DOUBLE) {
        memcpy(var_current.ptr, &value, sizeof value);
        return value;
    }
    value_store(var_current.type, value, var_current.ptr);
    return value_load(var_current.type, var_current.ptr);
}

// ---- Reading ----

static int8_t prefix_type(const char *name, size_t size)
{
    if (size > 2 && name[0] == '$' && name[1] == '$' && text_is(name[2], CHAR_LETTER))
        return VAR_SLIST;
    if (size > 1 && name[0] == '$' && text_is(name[1], CHAR_LETTER))
        return VAR_STRING;
    return VAR_DOUBLE;
}

// Reads the names that were put off.
static void read_unread()
{
    void (*read)() = var_unread;
    var_unread = nullptr;
    if (read != nullptr)
        read();
}

static var_rec *var_find(const char *name, size_t size)
{
    uint32_t place;
    int32_t row = name_index_find(&var_names, name, size, &place);
    return row < 0 ? nullptr : var_table + row;
}

// A string list counts as one dimension here: of its dims entries there is only the item count.
static int32_t dims_stored(const var_rec *rec)
{
    return rec->type == VAR_SLIST ? 1 : rec->ndims;
}

static int32_t element_count(const var_rec *rec)
{
    int32_t count = 1;
    for (int32_t i = 0; i < dims_stored(rec); i++)
        count *= rec->array.block->dims[i];
    return count;
}

int32_t var_read(const char *name, size_t name_size, int32_t *size_out)
{
    var_rec *rec = var_find(name, name_size);
    if (rec == nullptr) {
        read_unread();
        return VAR_UNKNOWN;
    }
    var_unread = nullptr;
    var_current.type = rec->type;
    if (rec->ndims == 0) {
        if (rec->type == VAR_DOUBLE)
            memcpy(&var_current.value, rec->value, sizeof(double));
        else
            var_current.value = value_load(rec->type, rec->value);
        var_current.ptr = rec->value;
    } else {
        var_current.var = static_cast<int32_t>(rec - var_table);
        var_current.block = rec->array.block;
        var_current.value = 0;
        var_current.ptr = nullptr;
    }
    if (size_out != nullptr)
        *size_out = element_count(rec);
    return rec->ndims;
}

static uint32_t table_load(const unsigned char *table, int32_t index)
{
    uint32_t entry;
    memcpy(&entry, table + static_cast<size_t>(index) * sizeof entry, sizeof entry);
    return entry;
}

static void table_store(unsigned char *table, int32_t index, uint32_t entry)
{
    memcpy(table + static_cast<size_t>(index) * sizeof entry, &entry, sizeof entry);
}

// Bytes of a string list's item.
static uint32_t item_size(const var_block *block, int32_t item)
{
    uint32_t next = item + 1 < block->dims[0] ? table_load(block->rows, item + 1)
                                              : static_cast<uint32_t>(block->end - block->data);
    return next - table_load(block->rows, item);
}

static int32_t read_list_character(int32_t item, int32_t character)
{
    uint32_t size = item_size(var_current.block, item);
    if (character < 0 || static_cast<uint32_t>(character) + 1 >= size)
        return VAR_BAD_SUBSCRIPT;
    var_current.ptr = var_current.block->data + table_load(var_current.block->rows, item) + character;
    var_current.value = value_load(VAR_SLIST, var_current.ptr);
    return 0;
}

int32_t var_read_element(const char *name, size_t name_size, int32_t count, const int32_t *subscripts)
{
    int32_t ndims = var_read(name, name_size, nullptr);
    if (ndims == VAR_UNKNOWN)
        return VAR_UNKNOWN;
    if (ndims != count)
        return VAR_BAD_SUBSCRIPT;
    if (ndims == 0)
        return 0;
    const var_block *block = var_current.block;
    for (int32_t i = 0; i < dims_stored(var_table + var_current.var); i++)
        if (subscripts[i] < 0 || subscripts[i] >= block->dims[i])
            return VAR_BAD_SUBSCRIPT;
    if (var_current.type == VAR_SLIST)
        return read_list_character(subscripts[0], subscripts[1]);
    unsigned char *row = block->rows;
    for (int32_t i = 0; i + 1 < count; i++)
        row = (i + 2 < count ? block->rows : block->data) + table_load(row, subscripts[i]);
    var_current.ptr = row + static_cast<size_t>(subscripts[count - 1]) * type_size[var_current.type];
    var_current.value = value_load(var_current.type, var_current.ptr);
    return 0;
}

// ---- Making ----

// Bytes of the three pieces of a payload.
struct payload_sizes {
    uint64_t dims;
    uint64_t rows;
    uint64_t data;
};

constexpr uint64_t round_up_8(uint64_t size)
{
    return (size + 7) / 8 * 8;
}

// The pieces for a type and its dimensions, none negative. False if they pass var_payload_max, no sum or
// product having left 64 bits.
static bool payload_measure(int8_t type, int32_t ndims, const int32_t *dims, payload_sizes *sizes)
{
    if (type == VAR_SLIST) {
        uint64_t items = static_cast<uint64_t>(dims[0]);
        uint64_t characters = static_cast<uint64_t>(dims[1]);
        *sizes = payload_sizes{4, 4 * items, characters != 0 ? items * (characters + 1) : 0};
    } else {
        uint64_t rows = 0;
        uint64_t level = 1; // elements down to this dimension
        for (int32_t i = 0; i < ndims; i++) {
            level *= static_cast<uint64_t>(dims[i]);
            // Also on a level above the last the table entries alone would be too many.
            if (level > var_payload_max)
                return false;
            if (i + 1 < ndims)
                rows += 4 * level;
        }
        uint64_t data = type == VAR_STRING ? level + 1 : type_size[type] * level;
        *sizes = payload_sizes{round_up_8(4 * static_cast<uint64_t>(ndims)), round_up_8(rows), data};
    }
    return sizes->dims + sizes->rows + sizes->data <= var_payload_max;
}

// Sets the pointers of a block's head, also after the block has moved.
static void block_point(var_block *block, uint64_t dims_size, uint64_t rows_size, uint64_t data_size)
{
    unsigned char *payload = reinterpret_cast<unsigned char *>(block + 1);
    block->dims = reinterpret_cast<int32_t *>(payload);
    block->rows = payload + dims_size;
    block->data = block->rows + rows_size;
    block->end = block->data + data_size;
}

// Gives a variable's block room for a payload of size bytes, its contents kept. A block that grows gets
// half as much again as it had, so that a list that grows item by item doesn't copy itself each time.
// Null and the old block untouched if there is no memory. The caller has seen to var_payload_max.
static var_block *block_resize(var_block *block, uint64_t size, uint32_t *room)
{
    if (block != nullptr && size <= *room)
        return block;
    uint64_t wanted = size;
    if (block != nullptr && wanted < static_cast<uint64_t>(*room) + *room / 2)
        wanted = static_cast<uint64_t>(*room) + *room / 2;
    // Beyond the largest payload there are a list's spare entries.
    uint64_t most = size > var_payload_max ? var_payload_max / 2 * 3 : var_payload_max;
    if (wanted > most)
        wanted = most;
    uint32_t bytes = static_cast<uint32_t>(sizeof(var_block) + wanted);
    void *moved = block != nullptr ? heap_realloc(block, bytes) : heap_alloc(var_heap, var_owner, bytes);
    if (moved == nullptr)
        return nullptr;
    *room = static_cast<uint32_t>(wanted);
    return static_cast<var_block *>(moved);
}

// Links the row tables of an array of two or more dimensions, level by level. Each table of a level starts
// where the one before ends.
static void rows_link(var_block *block, int32_t ndims, const int32_t *dims, uint32_t element)
{
    uint32_t tables = 1; // tables of this level
    uint32_t start = 0;  // entry where they begin, counted from rows
    for (int32_t i = 0; i + 1 < ndims; i++) {
        uint32_t entries = tables * static_cast<uint32_t>(dims[i]);
        uint32_t below = static_cast<uint32_t>(dims[i + 1]);
        bool last = i + 2 == ndims;
        for (uint32_t entry = 0; entry < entries; entry++) {
            uint32_t offset = last ? entry * below * element : (start + entries + entry * below) * 4;
            table_store(block->rows, static_cast<int32_t>(start + entry), offset);
        }
        start += entries;
        tables = entries;
    }
}

static void list_link(var_block *block, int32_t items, int32_t characters)
{
    for (int32_t item = 0; item < items; item++) {
        uint32_t offset = static_cast<uint32_t>(item) * (static_cast<uint32_t>(characters) + 1);
        table_store(block->rows, item, characters != 0 ? offset : 0);
    }
}

// Takes the next record for a name that name_index_find didn't find. Null if all are in use.
static var_rec *record_take(const char *name, size_t name_size, int8_t type, int32_t ndims, uint32_t place)
{
    if (var_count == var_capacity)
        return nullptr;
    var_rec *rec = var_table + var_count++;
    if (name_size > var_name_length)
        name_size = var_name_length;
    memcpy(rec->name, name, name_size);
    rec->name[name_size] = 0;
    rec->type = type;
    rec->ndims = static_cast<int8_t>(ndims);
    name_index_add(&var_names, place);
    return rec;
}

static int32_t make_scalar(const char *name, size_t name_size, int8_t type, uint32_t place)
{
    var_rec *rec = record_take(name, name_size, type, 0, place);
    if (rec == nullptr)
        return VAR_TABLE_FULL;
    memset(rec->value, 0, sizeof rec->value);
    var_current.type = type;
    var_current.value = 0;
    var_current.ptr = rec->value;
    return 0;
}

// Makes the array of a new variable (rec null), or gives a known one its new dimensions.
static int32_t make_array(var_rec *rec, const char *name, size_t name_size, int8_t type, int32_t ndims,
                          const int32_t *dims, uint32_t place)
{
    payload_sizes sizes;
    if (!payload_measure(type, ndims, dims, &sizes))
        return VAR_NO_MEMORY;
    uint64_t size = sizes.dims + sizes.rows + sizes.data;
    uint32_t room = rec != nullptr ? rec->array.block_room : 0;
    var_block *block = block_resize(rec != nullptr ? rec->array.block : nullptr, size, &room);
    if (block == nullptr)
        return VAR_NO_MEMORY;
    if (rec == nullptr && (rec = record_take(name, name_size, type, ndims, place)) == nullptr) {
        heap_free(block);
        return VAR_TABLE_FULL;
    }
    rec->ndims = static_cast<int8_t>(ndims);
    rec->array.block = block;
    rec->array.block_room = room;
    block_point(block, sizes.dims, sizes.rows, sizes.data);
    memcpy(block->dims, dims, static_cast<size_t>(dims_stored(rec)) * sizeof *dims);
    if (type == VAR_SLIST)
        list_link(block, dims[0], dims[1]);
    else
        rows_link(block, ndims, dims, type_size[type]);
    memset(block->data, 0, sizes.data);
    var_current.var = static_cast<int32_t>(rec - var_table);
    var_current.block = block;
    var_current.type = type;
    var_current.ptr = nullptr;
    return 0;
}

// True if a type that is given suits the prefix of a new name. A plain name may take any type.
static bool type_suits_prefix(const char *name, size_t size, int8_t type)
{
    if (size == 0 || name[0] != '$')
        return true;
    return type == (size > 1 && name[1] == '$' ? VAR_SLIST : VAR_STRING);
}

int32_t var_make(const char *name, size_t name_size, int8_t type, int32_t ndims, const int32_t *dims)
{
    if (name_size > 0 && name[0] == '@')
        return VAR_SYSTEM_NAME;
    read_unread();
    if (ndims > var_dims_max)
        return VAR_NO_MEMORY;
    for (int32_t i = 0; i < ndims; i++)
        if (dims[i] < 0)
            return VAR_NO_MEMORY;

    uint32_t place = 0;
    int32_t row = name_index_find(&var_names, name, name_size, &place);
    var_rec *rec = row < 0 ? nullptr : var_table + row;
    if (rec == nullptr) {
        if (type == VAR_NONE)
            type = prefix_type(name, name_size);
        else if (!type_suits_prefix(name, name_size, type))
            return VAR_TYPE;
    } else {
        if (type != VAR_NONE && type != rec->type)
            return VAR_TYPE;
        if (ndims == 0 || rec->ndims == 0)
            return VAR_SCALAR;
        type = rec->type;
    }
    if ((type == VAR_STRING && ndims != 1) || (type == VAR_SLIST && ndims != 2))
        return VAR_DIMENSIONS;
    return ndims == 0 ? make_scalar(name, name_size, type, place)
                      : make_array(rec, name, name_size, type, ndims, dims, place);
}

void var_fill_start()
{
    var_current.ptr = var_current.block->data;
}

void var_fill_next(double value)
{
    size_t size = type_size[var_current.type];
    if (static_cast<size_t>(var_current.block->end - var_current.ptr) < size)
        return;
    value_store(var_current.type, value, var_current.ptr);
    var_current.ptr += size;
}

// ---- Strings ----

// Bytes of a string list's offset table. It has entries to spare, so that the items behind it needn't move
// for each new one.
static uint64_t list_rows_size(const var_block *block)
{
    return static_cast<uint64_t>(block->data - block->rows);
}

static uint64_t list_data_size(const var_block *block)
{
    return static_cast<uint64_t>(block->end - block->data);
}

// Gives a list's block room for another size of table and data; what lies in them is the caller's. False and
// all as it was if there is no memory or the payload, spare entries not counted, is too large.
static bool list_resize(var_rec *rec, int32_t items, uint64_t rows_size, uint64_t data_size)
{
    uint64_t payload = 4 + 4 * static_cast<uint64_t>(items) + data_size;
    if (payload > var_payload_max)
        return false;
    var_block *block = block_resize(rec->array.block, 4 + rows_size + data_size, &rec->array.block_room);
    if (block == nullptr)
        return false;
    block_point(block, 4, rows_size, data_size);
    rec->array.block = block;
    return true;
}

// Gives a string list more items: the new ones are empty and stand at the end.
static int32_t list_grow(var_rec *rec, int32_t items)
{
    uint64_t data_size = list_data_size(rec->array.block);
    uint64_t old_rows_size = list_rows_size(rec->array.block);
    uint64_t rows_size = 4 * static_cast<uint64_t>(items);
    if (rows_size <= old_rows_size)
        rows_size = old_rows_size;
    else
        rows_size += rows_size / 8 * 4;
    if (!list_resize(rec, items, rows_size, data_size))
        return VAR_NO_MEMORY;
    var_block *block = rec->array.block;
    if (rows_size != old_rows_size)
        memmove(block->data, block->rows + old_rows_size, data_size);
    for (int32_t item = block->dims[0]; item < items; item++)
        table_store(block->rows, item, static_cast<uint32_t>(data_size));
    block->dims[0] = items;
    return 0;
}

// Gives an item of a string list another size in bytes: what lies behind it moves, and it is zeroed.
static int32_t item_resize(var_rec *rec, int32_t item, uint32_t new_size)
{
    uint32_t old_size = item_size(rec->array.block, item);
    if (old_size == new_size)
        return 0;
    int32_t items = rec->array.block->dims[0];
    uint64_t data_size = list_data_size(rec->array.block);
    if (!list_resize(rec, items, list_rows_size(rec->array.block), data_size - old_size + new_size))
        return VAR_NO_MEMORY;
    var_block *block = rec->array.block;
    uint32_t offset = table_load(block->rows, item);
    unsigned char *start = block->data + offset;
    memmove(start + new_size, start + old_size, data_size - offset - old_size);
    memset(start, 0, new_size);
    for (int32_t behind = item + 1; behind < items; behind++)
        table_store(block->rows, behind, table_load(block->rows, behind) - old_size + new_size);
    return 0;
}

// Makes the variable of a string assignment to a name that isn't known: the prefix says what it may be.
static int32_t make_for_string(const char *name, size_t name_size, int32_t subscript, int32_t length)
{
    if (subscript == -1) {
        if (prefix_type(name, name_size) != VAR_STRING)
            return -1;
        return var_make(name, name_size, VAR_NONE, 1, &length);
    }
    if (prefix_type(name, name_size) != VAR_SLIST)
        return -1;
    // The largest subscript can't have an item behind it; a negative dimension is refused alike.
    int32_t dims[2] = {subscript == INT32_MAX ? -1 : subscript + 1, 0};
    return var_make(name, name_size, VAR_NONE, 2, dims);
}

static int32_t store_item(var_rec *rec, int32_t subscript, int32_t length)
{
    if (subscript < 0)
        return -1;
    if (subscript == INT32_MAX)
        return VAR_NO_MEMORY;
    if (subscript >= rec->array.block->dims[0] && list_grow(rec, subscript + 1) != 0)
        return VAR_NO_MEMORY;
    if (item_resize(rec, subscript, static_cast<uint32_t>(length) + 1) != 0)
        return VAR_NO_MEMORY;
    var_current.block = rec->array.block;
    var_current.ptr = rec->array.block->data + table_load(rec->array.block->rows, subscript);
    var_current.ptr[length] = 0;
    return 0;
}

int32_t var_store_string(const char *name, size_t name_size, int32_t subscript, int32_t length)
{
    if (name_size > 0 && name[0] == '@')
        return -1;
    int32_t ndims = var_read(name, name_size, nullptr);
    if (ndims == VAR_UNKNOWN) {
        int32_t code = make_for_string(name, name_size, subscript, length);
        if (code != 0)
            return code;
    } else if (ndims == 0 || var_current.type != (subscript == -1 ? VAR_STRING : VAR_SLIST)) {
        return -1;
    }
    var_rec *rec = var_table + var_current.var;
    if (subscript != -1)
        return store_item(rec, subscript, length);
    if (rec->array.block->dims[0] != length) {
        int32_t code = var_make(name, name_size, VAR_STRING, 1, &length);
        if (code != 0)
            return code;
    }
    var_current.ptr = rec->array.block->rows;
    return 0;
}
