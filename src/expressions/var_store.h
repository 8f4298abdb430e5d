// Variable store: the variables that a script declares or assigns, with type, dimensions and value.
//
// The store is one flat table, empty at the start of each file. Scalars are in their record, arrays, strings
// and string lists in a block. Reading a variable selects it: the result is in the cur_ fields, and the next
// store goes there. Names compare with case. Names that start with @ are system variables of the running CAD
// system: there is none here, so none is ever found.
#pragma once

#include "expressions/var_array.h"

#include <stddef.h>
#include <stdint.h>

constexpr int var_name_length = 255;
constexpr int32_t var_capacity = 1000; // variables of one file

// The failures of var_make, positive. Only messages show which it was.
enum : int32_t {
    VAR_TABLE_FULL = 1,
    VAR_NO_MEMORY = 3,   // or beyond var_payload_max, more than 5 dimensions, or a negative one
    VAR_SYSTEM_NAME = 4, // the name starts with @
    VAR_SCALAR = 5,      // the variable exists, and the new declaration or the old one is a scalar
    VAR_DIMENSIONS = 6,  // a string without exactly one dimension, a string list without exactly two
    VAR_TYPE = 7         // the type doesn't fit the variable or the name's prefix
};

// The failures of reading a variable.
enum : int32_t {
    VAR_UNKNOWN = -1,
    VAR_BAD_SUBSCRIPT = -2 // wrong count of subscripts, or one out of range
};

// The hot fields come first, together with the first characters of the name.
struct var_rec {
    union {
        unsigned char value[8]; // a scalar, in the width of its type
        var_array array;
    };
    int8_t type;
    int8_t ndims; // 0 scalar, 1 to 5 array, 1 string, 2 string list
    char name[var_name_length + 1];
};

extern var_rec *var_table; // var_capacity records from malloc; null before the first file
extern int32_t var_count;  // records in use

// The current variable: the one that was read last, or made.
extern var_block *cur_block;   // of the last array that was current; null: none was
extern int8_t cur_type;        // type code
extern double cur_value;       // the value read; storing and making an array don't change it
extern unsigned char *cur_ptr; // of the scalar or element, where the next store goes; null: a whole array

// Starts a file without variables; table has var_capacity records, and heap is for small blocks.
void vars_start(var_rec *table, pool_heap *heap);

// Removes the file's variables and frees their blocks.
void vars_end();

// A name has name_size characters, none of them a NUL; 255 of them count.

// Reads a variable: returns its number of dimensions, or VAR_UNKNOWN. If size_out isn't null it receives the
// element count: 1 for a scalar, the product of the dimensions, a string's length with its NUL, a string
// list's items.
int32_t var_read(const char *name, size_t name_size, int32_t *size_out);

// Reads an element. 0, or VAR_UNKNOWN or VAR_BAD_SUBSCRIPT. A character of a string list's item has two
// subscripts, item and character.
int32_t var_read_element(const char *name, size_t name_size, int32_t count, const int32_t *subscripts);

// Makes a variable, or changes the dimensions of an array, its elements zero. 0, or one of the codes above;
// then a known variable is as it was.
int32_t var_make(const char *name, size_t name_size, int8_t type, int32_t ndims, const int32_t *dims);

// Stores a value where cur_ptr points, in the width of its type, and returns the stored value.
double var_store_value(double value);

// Sets the size of a string variable (subscript -1) or of a string list's item to length bytes, NUL included,
// and selects it. 0, -1 if the variable is of another kind, or a code of var_make.
int32_t var_store_string(const char *name, size_t name_size, int32_t subscript, int32_t length);

// Filling the array that var_make has just selected, in the order of its storage: start, then a value at a
// time. Values beyond the array's end are ignored.
void var_fill_start();
void var_fill_next(double value);
