// The walk over the spec, one position after the other.
#include "analysis/arg_fetcher.h"

#include "analysis/arg_gather.h"
#include "analysis/arg_slots.h"
#include "analysis/arg_store.h"
#include "source/src_stream.h"
#include "source/statement_text.h"

char *arg_pool;

// Reads one argument into the slot under arg_cursor. *last is the character that ended it, *empty tells an
// empty argument. False if it fails.
static bool fetch_one(uint8_t type, int *last, bool *empty)
{
    *empty = false;
    arg_line_used = 0;
    int c = arg_skip_blanks();
    bool quote = c == '"' || c == '`';
    if (quote && (type == ARG_STR || type == ARG_ITEM)) {
        *arg_type_cursor = ARG_STR;
        return arg_gather_string(c, last) && arg_store_text(true);
    }
    if (!arg_gather_raw(c, arg_is_numeric(type) || type == ARG_ITEM, last))
        return false;
    *empty = arg_line_used == 0;
    if (*empty) {
        arg_cursor->state = 0;
        return true;
    }
    return arg_is_numeric(type) ? arg_store_number(type) : arg_store_text(false);
}

static int32_t fetch_failed()
{
    slots_abandon_list();
    return -1;
}

static void skip_line(int c)
{
    while (c != '\n' && c != -1)
        c = src_getc();
}

// The positions one by one, see fetch_args.
static int32_t fetch_list(int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    bool more = spec_count != 0; // the list goes on
    int32_t walked = 0;
    int c = 0;
    for (int32_t p = 0;; p++) {
        if (p == spec_count) {
            if (!more)
                break;
            p--; // the last position again: it repeats
        }
        if (walked == arg_types_size)
            return fetch_failed();
        bool repeats = (spec[p] & ARG_REPEAT) != 0;
        *arg_type_cursor = spec[p] & ARG_TYPE;
        bool empty = true;
        if (more) {
            if (!fetch_one(spec[p] & ARG_TYPE, &c, &empty))
                return fetch_failed();
            more = c == ',' && (p + 1 < spec_count || repeats);
            keep_absent |= empty;
        }
        if (empty && repeats && !more) {
            arg_cursor->state = slot_mark;
            break;
        }
        if (!empty || keep_absent)
            slot_advance();
        if (empty && (spec[p] & (ARG_OPTIONAL | ARG_PRINT)) == 0)
            return fetch_failed();
        if (empty)
            *arg_type_cursor |= ARG_ABSENT;
        walked++;
        arg_type_cursor++;
    }
    skip_line(c);
    slots_end_list();
    arg_type_cursor = arg_types;
    arg_cursor = arg_slots;
    return walked;
}

int32_t fetch_args(int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    slot_clear();
    arg_store_start();
    return fetch_list(spec_count, spec, keep_absent);
}
