#include "statements/command_table.h"

#include "support/text.h"

#include <stddef.h>

#include <array>
#include <string_view>

// ---- The specs as bytes ----

constexpr size_t spec_bytes_total()
{
    size_t total = 0;
    for (const command_source_row &row : command_rows)
        total += static_cast<size_t>(spec_length(row.spec));
    return total;
}

// Row after row.
constexpr auto specs_make()
{
    std::array<uint8_t, spec_bytes_total()> bytes{};
    size_t used = 0;
    for (const command_source_row &row : command_rows)
        for (int i = 0; i < spec_length(row.spec); i++)
            bytes[used++] = spec_byte(row.spec, i);
    return bytes;
}

static constexpr auto command_specs = specs_make();

// ---- Checks ----

// Names fit and are made of word characters; the type code of every spec byte is known, and a position that
// repeats is the last of its row.
constexpr bool rows_well_formed()
{
    for (const command_source_row &row : command_rows) {
        std::string_view name = row.name;
        for (char c : name)
            if (!text_is(c, CHAR_WORD))
                return false;
        int count = spec_length(row.spec);
        if (name.empty() || name.size() >= word_size_max || count < 0)
            return false;
        for (int i = 0; i < count; i++) {
            int spec = spec_byte(row.spec, i);
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

static_assert(rows_well_formed(),
              "a name of 1 to 11 word characters, a spec of pairs of digits with known meanings");
static_assert(ids_in_range(), "an id outside its family's range, or out of order");

// ---- The table itself ----

constexpr auto rows_make()
{
    std::array<cmd_row, command_count> rows{};
    const uint8_t *spec = command_specs.data();
    for (size_t i = 0; i < rows.size(); i++) {
        const command_source_row &source = command_rows[i];
        auto count = static_cast<uint8_t>(spec_length(source.spec));
        rows[i] = cmd_row{source.name, source.id, count != 0 ? spec : nullptr, count};
        spec += count;
    }
    return rows;
}

static constexpr auto cmd_rows = rows_make();

static constexpr auto command_index = word_index_make<4096>(command_rows);

const cmd_row &command_row_at(int32_t index)
{
    return cmd_rows[static_cast<size_t>(index)];
}

// Index of the row of a name. For constants: a name that no row has doesn't compile.
constexpr int32_t row_of(std::string_view name)
{
    int32_t index = 0;
    while (command_rows[index].name != name)
        index++;
    return index;
}

const int32_t command_spline = row_of("SPLINE");
const int32_t command_spline3 = row_of("SPLINE3");

int32_t command_find(const word_key &key)
{
    return word_index_find(command_index, key);
}
