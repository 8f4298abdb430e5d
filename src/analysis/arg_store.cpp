#include "analysis/arg_store.h"

#include "analysis/arg_fetcher.h"
#include "analysis/arg_gather.h"
#include "analysis/expr_eval.h"
#include "source/statement_text.h"
#include "support/output.h"

#include <string.h>

static int32_t pool_bottom; // bytes of arg_pool that values of type 4 have taken from below
static int32_t pool_top;    // where in arg_pool the strings begin

void arg_store_start()
{
    pool_bottom = 0;
    pool_top = arg_pool_size;
}

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

bool arg_store_text(bool quoted)
{
    auto size = static_cast<uint32_t>(strlen(line_buf));
    pool_top -= static_cast<int32_t>(size) + 1;
    if (pool_top < pool_bottom)
        return false;
    slot_set_text(line_buf, size, quoted && size > 0);
    arg_cursor->holds = quoted ? HOLDS_STRING : HOLDS_RAW;
    return true;
}

bool arg_store_number(uint8_t type)
{
    if (arg_line_used > arg_text_room)
        return false;
    slot_set_text(line_buf, static_cast<uint32_t>(arg_line_used), false);
    const double *value = eval_expr(line_buf, static_cast<size_t>(arg_line_used));
    line_buf[eval_first_name_end] = 0;
    if (value == nullptr)
        return false;
    if (type == ARG_DOUBLE) {
        if (pool_bottom + 8 >= pool_top)
            return false;
        pool_bottom += 8;
    }
    arg_cursor->value = *value;
    arg_cursor->holds = type;
    return true;
}
