#include "analysis/arg_store.h"

#include "analysis/arg_gather.h"
#include "analysis/expr_eval.h"
#include "source/statement_text.h"
#include "support/output.h"

#include <string.h>

int32_t arg_pool_top;
const arg_slot *arg_line_owed;

// Copies a text to the statement's texts and makes it the slot's, between double quotes if it was a string.
static void slot_set_text(const char *text, uint32_t size, bool quoted)
{
    uint32_t quotes = quoted ? 1 : 0;
    char *room = slot_text_room(size + 2 * quotes);
    room[0] = '"';
    bytes_copy(room + quotes, text, size);
    room[quotes + size] = '"';
    room[2 * quotes + size] = 0;
    arg_cursor->text = room;
    arg_cursor->text_size = size + 2 * quotes;
    arg_cursor->state = 0;
}

// Bytes of arg_pool that the values of type 4 have taken from below. Few statements ask: it takes many
// strings to reach them.
static int32_t pool_bottom()
{
    int32_t bottom = 0;
    for (const uint8_t *type = arg_types; type < arg_type_cursor; type++)
        bottom += *type == ARG_DOUBLE ? 8 : 0;
    return bottom;
}

bool arg_pool_lacks_value()
{
    return arg_pool_top <= arg_pool_values_max && pool_bottom() + 8 >= arg_pool_top;
}

bool arg_pool_take_string(uint32_t size)
{
    auto taken = static_cast<int32_t>(size) + 1;
    if (arg_pool_top - taken < arg_pool_values_max && arg_pool_top - taken < pool_bottom())
        return false;
    arg_pool_top -= taken;
    return true;
}

bool arg_store_text(bool quoted)
{
    auto size = static_cast<uint32_t>(strlen(line_buf));
    if (!arg_pool_take_string(size))
        return false;
    slot_set_text(line_buf, size, quoted && size > 0);
    arg_cursor->holds = quoted ? HOLDS_STRING : HOLDS_RAW;
    return true;
}

bool arg_evaluate(uint8_t type)
{
    slot_names_read();
    const double *value = eval_expr(line_buf);
    if (value == nullptr || (type == ARG_DOUBLE && arg_pool_lacks_value()))
        return false;
    slot_store_value(arg_cursor, type, *value);
    return true;
}

bool arg_store_number(uint8_t type)
{
    if (arg_line_used > arg_text_room)
        return false;
    slot_set_text(line_buf, static_cast<uint32_t>(arg_line_used), false);
    return arg_evaluate(type);
}
