#include "statements/command_table.h"

#include "support/word_index.h"

#include <array>
#include <stddef.h>

// ---- The table in search order ----

// A name as two numbers that order as the lower-case names do, so that a comparison is one of numbers.
struct command_key {
    uint64_t high; // the first eight characters
    uint32_t low;  // the other four bytes
};

constexpr bool key_less(const command_key &a, const command_key &b)
{
    return a.high < b.high || (a.high == b.high && a.low < b.low);
}

// The key of a name of at most 11 characters.
constexpr command_key key_make(const char *name)
{
    command_key key{0, 0};
    int i = 0;
    for (; name[i] != 0; i++) {
        auto c = static_cast<unsigned char>(char_lower(name[i]));
        if (i < 8)
            key.high |= static_cast<uint64_t>(c) << (56 - 8 * i);
        else
            key.low |= static_cast<uint32_t>(c) << (24 - 8 * (i - 8));
    }
    return key;
}

struct row_order {
    uint16_t place[command_row_count];
};

// The place of each of command_rows: the number of rows whose names come before its own.
constexpr row_order rows_order()
{
    row_order order{};
    command_key keys[command_row_count]{};
    for (int i = 0; i < command_row_count; i++) {
        keys[i] = key_make(command_rows[i].name);
        for (int j = 0; j < i; j++)
            order.place[key_less(keys[i], keys[j]) ? j : i]++;
    }
    return order;
}

// A row's place in this order is its index for everybody; words are found by a hash, not by a search in it.
static constexpr row_order command_order = rows_order();

// ---- The specs as bytes ----

constexpr size_t spec_bytes_total()
{
    size_t total = 0;
    for (const command_source_row &row : command_rows)
        total += static_cast<size_t>(spec_length(row.spec));
    return total;
}

struct spec_store {
    std::array<uint8_t, spec_bytes_total()> bytes;
    std::array<uint16_t, command_row_count> start; // by index in command_rows
};

constexpr spec_store specs_make()
{
    spec_store store{};
    size_t used = 0;
    for (size_t row = 0; row < command_row_count; row++) {
        store.start[row] = static_cast<uint16_t>(used);
        const char *spec = command_rows[row].spec;
        int count = spec_length(spec);
        for (int i = 0; i < count; i++)
            store.bytes[used++] =
                static_cast<uint8_t>(spec_digit(spec[3 * i]) * 16 + spec_digit(spec[3 * i + 1]));
    }
    return store;
}

static constexpr spec_store command_specs = specs_make();

// ---- What is claimed ----

// Names fit and are made of word characters; the type code of every spec byte is known, and a position that
// repeats is the last of its row.
constexpr bool rows_well_formed()
{
    for (const command_source_row &row : command_rows) {
        int length = 0;
        for (const char *c = row.name; *c != 0; c++, length++)
            if ((char_classes.bits[static_cast<unsigned char>(*c)] & CHAR_WORD) == 0)
                return false;
        int count = spec_length(row.spec);
        if (length == 0 || length >= command_name_size || count < 0)
            return false;
        for (int i = 0; i < count; i++) {
            int spec = spec_digit(row.spec[3 * i]) * 16 + spec_digit(row.spec[3 * i + 1]);
            constexpr int flags = ARG_OPTIONAL | ARG_REPEAT | ARG_PRINT;
            if ((spec & ARG_TYPE) > ARG_ITEM || (spec & ~(flags | ARG_TYPE)) != 0 ||
                ((spec & ARG_REPEAT) != 0 && i + 1 < count) ||
                ((spec & ARG_PRINT) != 0 && (spec & ARG_REPEAT) == 0))
                return false;
        }
    }
    return true;
}

// Ids rise within a family, and each family keeps to its range.
constexpr bool ids_in_range()
{
    constexpr struct {
        char initial; // of the family's words; 0 for capitals
        int first;
        int last;
    } ranges[] = {{0, 1, 299},       {0, 300, 399},     {0, 400, 499},
                  {0, 500, 999},     {'r', 1001, 1636}, {'i', 1701, 1755},
                  {'e', 1801, 1817}, {'d', 1828, 1860}, {'u', 1901, 1907}};
    size_t range = 0;
    int last_id = 0;
    for (const command_source_row &row : command_rows) {
        if (row.id < last_id || row.id > ranges[range].last)
            range++;
        bool lower = row.name[0] >= 'a' && row.name[0] <= 'z';
        if (range == sizeof ranges / sizeof ranges[0] || row.id < ranges[range].first ||
            row.id > ranges[range].last || (lower ? row.name[0] : 0) != ranges[range].initial)
            return false;
        last_id = row.id;
    }
    return true;
}

static_assert(command_row_count == command_count, "the number of commands");
static_assert(rows_well_formed(),
              "a name of 1 to 11 word characters, a spec of pairs of digits with known meanings");
static_assert(ids_in_range(), "an id outside its family's range, or out of order");

// ---- The table itself ----

struct command_rows_sorted {
    cmd_row row[command_row_count];
};

constexpr command_rows_sorted rows_make()
{
    command_rows_sorted sorted{};
    for (size_t i = 0; i < command_row_count; i++) {
        const command_source_row &source = command_rows[i];
        cmd_row &row = sorted.row[command_order.place[i]];
        for (int c = 0; source.name[c] != 0; c++)
            row.name[c] = source.name[c];
        row.id = source.id;
        row.spec_count = static_cast<uint8_t>(spec_length(source.spec));
        row.spec = row.spec_count != 0 ? command_specs.bytes.data() + command_specs.start[i] : nullptr;
    }
    return sorted;
}

static constexpr command_rows_sorted cmd_table = rows_make();

static constexpr auto command_index = word_index_make<4096>(cmd_table.row);

const cmd_row &command_row_at(int32_t index)
{
    return cmd_table.row[index];
}

// The row of a word in the table, for constants.
constexpr int32_t row_of(const char *name)
{
    for (int32_t i = 0; i < command_count; i++)
        if (key_make(cmd_table.row[i].name).high == key_make(name).high &&
            key_make(cmd_table.row[i].name).low == key_make(name).low)
            return i;
    return -1;
}

const int32_t command_spline = row_of("SPLINE");
static_assert(row_of("SPLINE3") == row_of("SPLINE") + 1, "SPLINE's other list has the row after SPLINE's");

int32_t command_find(const word_key &key)
{
    return word_index_find(command_index, key);
}
