// The walk over the spec. Each position takes plain arguments as far as they go, then one that lies ready,
// and at last what has to be gathered.
#include "analysis/arg_fetcher.h"

#include "analysis/arg_gather.h"
#include "analysis/arg_ready.h"
#include "analysis/arg_slots.h"
#include "analysis/arg_store.h"
#include "analysis/expr_lexer.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/char_masks.h"
#include "support/text.h"

#include <string.h>

char *arg_pool;

// Reads one argument into the slot under arg_cursor. *last is the character that ended it, *empty tells an
// empty argument. False if it fails.
static bool fetch_one(plat_file *stream, uint8_t type, int *last, bool *empty)
{
    *empty = false;
    int ready = arg_take_ready(type, last, empty);
    if (ready != 0)
        return ready > 0;
    arg_ready_restart();
    arg_line_owed = nullptr;
    arg_line_used = 0;
    int c = arg_skip_blanks(stream);
    bool quote = c == '"' || c == '`';
    if (quote && (type == ARG_STR || type == ARG_ITEM)) {
        *arg_type_cursor = ARG_STR;
        return arg_gather_string(stream, c, last) && arg_store_text(true);
    }
    if (!arg_gather_raw(stream, c, arg_is_numeric(type) || type == ARG_ITEM, last))
        return false;
    *empty = arg_line_used == 0;
    if (*empty) {
        arg_cursor->state = 0;
        return true;
    }
    return arg_is_numeric(type) ? arg_store_number(type) : arg_store_text(false);
}

// The list has ended: passes the optional positions that follow, at most count of them, none of which takes a
// slot. Gives how many there were. Eight positions go at a time.
static int32_t pass_absent(const uint8_t *spec, int32_t count, int32_t *walked)
{
    constexpr uint64_t ones = 0x0101010101010101;
    int32_t passed = 0;
    while (passed < count) {
        uint64_t bytes = characters_load(reinterpret_cast<const char *>(spec) + passed,
                                         static_cast<size_t>(count - passed));
        uint64_t others = ((bytes ^ ARG_OPTIONAL * ones) & (ARG_OPTIONAL | ARG_REPEAT) * ones);
        bytes = (bytes & ARG_TYPE * ones) | ARG_ABSENT * ones;
        memcpy(arg_type_cursor, &bytes, 8);
        auto run = static_cast<int32_t>(others == 0 ? 8 : lowest_bit(others) / 8);
        if (run > count - passed)
            run = count - passed;
        arg_type_cursor += run;
        passed += run;
        if (run < 8)
            break;
    }
    *walked += passed;
    return passed;
}

// Gives line_buf the text that it is owed, for the statement loop to print. Of a string this is what it
// holds.
static int32_t fetch_failed()
{
    slots_abandon_list();
    if (arg_line_owed != nullptr) {
        uint32_t size = arg_line_owed->text_size;
        const char *text = arg_line_owed->text;
        if (arg_line_owed->holds == HOLDS_STRING)
            text = slot_str(arg_line_owed, &size);
        memcpy(line_buf, text, size);
        line_buf[size] = 0;
        // The evaluation of an expression leaves its text cut behind its first name.
        if (arg_is_numeric(arg_line_owed->holds))
            lex_cut(line_buf);
    }
    return -1;
}

static void skip_line(plat_file *stream, int c)
{
    while (c != '\n' && c != -1) {
        const char *run;
        (void)src_take_plain(&run, SIZE_MAX);
        c = src_getc(stream);
    }
}

// The positions one by one, see fetch_args.
static int32_t fetch_list(plat_file *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    bool more = spec_count != 0; // the list goes on
    int32_t walked = 0;
    int c = 0;
    for (int32_t p = 0;; p++) {
        if (more && p < spec_count) {
            int32_t taken = arg_take_plain(spec + p, spec_count - p, &c, &keep_absent);
            walked += taken;
            p += taken;
            more = taken == 0 || (c == ',' && p < spec_count);
        }
        if (!more && !keep_absent)
            p += pass_absent(spec + p, spec_count - p, &walked);
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
            if (!fetch_one(stream, spec[p] & ARG_TYPE, &c, &empty))
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
    skip_line(stream, c);
    slots_end_list();
    arg_type_cursor = arg_types;
    arg_cursor = arg_slots;
    return walked;
}

int32_t fetch_args(plat_file *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    slot_clear();
    arg_ready_restart();
    arg_line_owed = nullptr;
    arg_pool_top = arg_pool_size;
    src_leave = slots_leave_source;
    slots_filling = true;
    int32_t walked = fetch_list(stream, spec_count, spec, keep_absent);
    slots_filling = false;
    return walked;
}
