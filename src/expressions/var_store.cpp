#include "expressions/var_store.h"

#include "support/name_index.h"
#include "support/number.h"
#include "support/text.h"

#include <stddef.h>
#include <string.h>

var_rec *var_table;
int32_t var_count;
var_block *cur_block;
int8_t cur_type;
double cur_value;
unsigned char *cur_ptr;

static name_index var_names; // over var_table

void vars_start(var_rec *table, pool_heap *heap)
{
    arrays_start(heap);
    var_table = table;
    var_count = 0;
    cur_block = nullptr;
    cur_type = VAR_NONE;
    cur_value = 0;
    cur_ptr = nullptr;
    name_index_start(&var_names, reinterpret_cast<char *>(table) + offsetof(var_rec, name), sizeof(var_rec),
                     var_name_length);
}

void vars_end()
{
    for (int32_t i = 0; i < var_count; i++)
        if (var_table[i].ndims > 0)
            array_free(&var_table[i].array);
    var_count = 0;
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

static inline void value_store(int8_t type, double value, unsigned char *to)
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
    if (cur_ptr == nullptr)
        return value;
    value_store(cur_type, value, cur_ptr);
    return value_load(cur_type, cur_ptr);
}

// ---- Reading ----

// The type that a name's prefix means.
static int8_t prefix_type(const char *name, size_t size)
{
    if (size > 2 && name[0] == '$' && name[1] == '$' && text_is(name[2], CHAR_LETTER))
        return VAR_SLIST;
    if (size > 1 && name[0] == '$' && text_is(name[1], CHAR_LETTER))
        return VAR_STRING;
    return VAR_DOUBLE;
}

static var_rec *var_find(const char *name, size_t size)
{
    int32_t row = name_index_find(&var_names, name, size);
    return row < 0 ? nullptr : var_table + row;
}

// Makes a variable the current one. The value of an array has yet to be set.
static void select(var_rec *rec)
{
    cur_type = rec->type;
    if (rec->ndims == 0) {
        cur_ptr = rec->value;
        cur_value = value_load(cur_type, cur_ptr);
    } else {
        cur_ptr = nullptr;
        cur_block = rec->array.block;
    }
}

int32_t var_read(const char *name, size_t name_size, int32_t *size_out)
{
    var_rec *rec = var_find(name, name_size);
    if (rec == nullptr)
        return VAR_UNKNOWN;
    select(rec);
    if (rec->ndims > 0)
        cur_value = 0;
    if (size_out != nullptr) {
        *size_out = 1;
        int32_t counted = rec->type == VAR_SLIST ? 1 : rec->ndims; // of a string list its items alone
        for (int32_t i = 0; i < counted; i++)
            *size_out *= cur_block->dims[i];
    }
    return rec->ndims;
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
    if (cur_type == VAR_SLIST) {
        list_item item{nullptr, 0};
        if (subscripts[0] >= 0 && subscripts[0] < cur_block->dims[0])
            item = list_item_at(cur_block, subscripts[0]);
        if (subscripts[1] < 0 || static_cast<uint32_t>(subscripts[1]) + 1 >= item.size)
            return VAR_BAD_SUBSCRIPT;
        cur_ptr = item.start + subscripts[1];
    } else {
        size_t element = 0;
        for (int32_t i = 0; i < ndims; i++) {
            if (subscripts[i] < 0 || subscripts[i] >= cur_block->dims[i])
                return VAR_BAD_SUBSCRIPT;
            element = element * static_cast<size_t>(cur_block->dims[i]) + static_cast<size_t>(subscripts[i]);
        }
        cur_ptr = cur_block->data + element * type_size[cur_type];
    }
    cur_value = value_load(cur_type, cur_ptr);
    return 0;
}

// ---- Making ----

// Takes the next record for a name that name_index_find didn't find. Null if all are in use.
static var_rec *record_take(const char *name, size_t name_size, int8_t type)
{
    if (var_count == var_capacity)
        return nullptr;
    var_rec *rec = var_table + var_count++;
    if (name_size > var_name_length)
        name_size = var_name_length;
    memcpy(rec->name, name, name_size);
    rec->name[name_size] = 0;
    rec->type = type;
    name_index_add(&var_names);
    return rec;
}

int32_t var_make(const char *name, size_t name_size, int8_t type, int32_t ndims, const int32_t *dims)
{
    if (name_size > 0 && name[0] == '@')
        return VAR_SYSTEM_NAME;
    if (ndims > var_dims_max)
        return VAR_NO_MEMORY;
    for (int32_t i = 0; i < ndims; i++)
        if (dims[i] < 0)
            return VAR_NO_MEMORY;

    var_rec *rec = var_find(name, name_size);
    if (rec == nullptr) {
        int8_t prefix = prefix_type(name, name_size);
        if (type == VAR_NONE)
            type = prefix;
        else if (prefix != VAR_DOUBLE && type != prefix) // a plain name may take any type
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
    var_array array{}; // of a new variable
    if (ndims > 0 && !array_make(rec != nullptr ? &rec->array : &array, type, ndims, dims))
        return VAR_NO_MEMORY;
    if (rec == nullptr) {
        if ((rec = record_take(name, name_size, type)) == nullptr) {
            array_free(&array);
            return VAR_TABLE_FULL;
        }
        rec->array = array; // all zero for a scalar, its value too
    }
    rec->ndims = static_cast<int8_t>(ndims);
    select(rec);
    return 0;
}

void var_fill_start()
{
    cur_ptr = cur_block->data;
}

void var_fill_next(double value)
{
    size_t size = type_size[cur_type];
    if (static_cast<size_t>(cur_block->end - cur_ptr) < size)
        return;
    value_store(cur_type, value, cur_ptr);
    cur_ptr += size;
}

// ---- Strings ----

// Sets the size of a string list's item to length bytes, and selects it. Makes the list if there is none.
static int32_t store_item(const char *name, size_t name_size, int32_t number, int32_t length)
{
    var_rec *rec = var_find(name, name_size);
    if (rec != nullptr && number < 0)
        return -1;
    if (number == INT32_MAX) // no dimension can be larger
        return VAR_NO_MEMORY;
    if (rec == nullptr) {
        int32_t dims[2] = {number + 1, 0};
        int32_t code = var_make(name, name_size, VAR_SLIST, 2, dims);
        if (code != 0)
            return code;
        rec = var_table + var_count - 1;
    }
    if (!list_item_store(&rec->array, number, static_cast<uint32_t>(length) + 1))
        return VAR_NO_MEMORY;
    cur_block = rec->array.block;
    cur_ptr = list_item_at(cur_block, number).start;
    return 0;
}

int32_t var_store_string(const char *name, size_t name_size, int32_t subscript, int32_t length)
{
    int8_t type = subscript == -1 ? VAR_STRING : VAR_SLIST;
    bool known = var_read(name, name_size, nullptr) != VAR_UNKNOWN;
    if ((known ? cur_type : prefix_type(name, name_size)) != type)
        return -1;
    if (type == VAR_SLIST)
        return store_item(name, name_size, subscript, length);
    if (!known || cur_block->dims[0] != length) {
        int32_t code = var_make(name, name_size, VAR_STRING, 1, &length);
        if (code != 0)
            return code;
    }
    cur_ptr = cur_block->data;
    return 0;
}
