#include "statements/arg_fetcher.h"

#include "expressions/expr_eval.h"
#include "source/src_stream.h"
#include "statements/arg_slots.h"
#include "statements/arg_text.h"
#include "statements/statement_text.h"
#include "support/scan.h"

#include <string.h>

#include <algorithm>

void (*arg_begins)(int32_t position);
int32_t fetch_failed_at;

// One list of arguments while it is fetched.
struct arg_list {
    arg_slot *slot;         // the next one to fill
    uint8_t *type;          // the arg_types byte of the next position
    unsigned char *keep;    // end of the slots' texts; null: none
    const char *last_token; // the last one evaluated of the text read last; null: it wasn't evaluated

    // The old system's argument store has arg_pool_size bytes: values of type 4 fill it from the bottom,
    // strings from the top, and where they meet the fetch fails. Here only its limits are needed.
    int32_t bottom;
    int32_t top;
};

// ---- Storing ----

// Fills a slot with a text.
static void slot_fill(arg_slot *slot, const unsigned char *text, uint32_t size, uint8_t holds)
{
    slot->text = reinterpret_cast<const char *>(text);
    slot->text_size = size;
    slot->state = 0;
    slot->holds = holds;
}

// Puts a string between double quotes. If the source ended inside the string, the closing one is appended.
static void quote(const arg_text &arg)
{
    unsigned char *after = arg.text + arg.size;
    arg.text[-1] = '"';
    if (after == src.end)
        src_append('"');
    else
        (void)src_rewrite(after, "\"", 1, src.pos);
}

static int32_t store_text(arg_list *list, const arg_text &arg)
{
    list->top -= static_cast<int32_t>(arg.size) + 1;
    if (list->top < list->bottom)
        return FETCH_STORE_FULL;
    if (!arg.quoted) {
        slot_fill(list->slot, arg.text, arg.size, HOLDS_RAW);
    } else if (arg.size == 0) {
        // Kept: the text of an empty string has no quotes. Users see it in `TEXT 1,2,""`, whose converted
        // line has an empty argument; with quotes each such line would differ from its last conversion.
        slot_fill(list->slot, arg.text, 0, HOLDS_STRING);
    } else {
        quote(arg);
        list->keep = arg.text + arg.size + 1;
        slot_fill(list->slot, arg.text - 1, arg.size + 2, HOLDS_STRING);
    }
    return 0;
}

static int32_t store_number(arg_list *list, const arg_text &arg, uint8_t type)
{
    if (arg.size > numeric_text_max)
        return FETCH_TOO_LONG;
    auto *text = reinterpret_cast<const char *>(arg.text);
    if (arg.size <= 16 && scan_is_number(text, arg.size)) {
        slot_fill(list->slot, arg.text, arg.size, type | HOLDS_PLAIN);
    } else {
        slot_fill(list->slot, arg.text, arg.size, type);
        const double *value = eval_expr(text, arg.size, &list->last_token);
        if (value == nullptr)
            return FETCH_EXPRESSION;
        list->slot->value = *value;
    }
    if (type != ARG_DOUBLE)
        return 0;
    list->bottom += 8;
    return list->bottom >= list->top ? FETCH_STORE_FULL : 0;
}

// ---- The walk ----

// Reads the argument of a position into the list's slot; an empty one fills the slot too.
static int32_t fetch_one(arg_list *list, uint8_t type, arg_text *arg)
{
    bool numeric = type >= ARG_LONG && type <= ARG_DOUBLE;
    bool item = type == ARG_ITEM;
    if (arg_begins != nullptr)
        arg_begins(static_cast<int32_t>(list->slot - arg_slots));
    int32_t fault = arg_text_read(list->keep, item || type == ARG_STR, item || numeric, arg);
    list->keep = arg->text + arg->size;
    list->last_token = nullptr;
    *list->type = arg->quoted ? uint8_t{ARG_STR} : type;
    if (fault != 0)
        return fault;
    if (numeric && arg->size > 0)
        return store_number(list, *arg, type);
    if (arg->quoted || arg->size > 0)
        return store_text(list, *arg);
    slot_fill(list->slot, arg->text, 0, HOLDS_NOTHING);
    return 0;
}

// True if a position can be without an argument: an empty one, or one left out at the list's end.
static bool may_be_absent(uint8_t position)
{
    return (position & (ARG_OPTIONAL | ARG_PRINT)) != 0;
}

// Leaves the text that the statement loop prints after a failure in line_buf. last is the text read last.
static int32_t fetch_failed(arg_list list, arg_text last, int32_t fault)
{
    auto *text = reinterpret_cast<const char *>(last.text);
    size_t left = list.last_token != nullptr ? eval_name_end(text, last.size, list.last_token) : last.size;
    memcpy(line_buf, text, left);
    line_buf[left] = 0;
    fetch_failed_at = static_cast<int32_t>(list.type - arg_types) + 1;
    slots_last = std::max(slots_last, list.slot); // for the next slots_end_list to clear
    return fault;
}

// Reads over the rest of the line, of which c was the last character read.
static void skip_line(int c, unsigned char *keep)
{
    if (arg_begins != nullptr)
        arg_begins(0);
    if (c == '\n' || c == -1)
        return;
    (void)src_take_rest(SIZE_MAX, keep, [](const src_piece &piece) {
        if (arg_typed != nullptr)
            arg_typed(piece.text, piece.size);
    });
}

int32_t fetch_args(int32_t spec_count, const uint8_t *spec)
{
    arg_list list{arg_slots + 1, arg_types, nullptr, nullptr, 0, arg_pool_size};
    arg_text arg{};
    const uint8_t *const types_end = arg_types + arg_types_size;
    int32_t p = 0;
    bool more = spec_count != 0; // the list goes on
    bool gap = false;            // an argument was empty: from then on every position takes a slot
    while (more) {
        uint8_t position = spec[p];
        if (list.type == types_end)
            return fetch_failed(list, arg, FETCH_TOO_MANY);
        int32_t fault = fetch_one(&list, position & ARG_TYPE, &arg);
        if (fault != 0)
            return fetch_failed(list, arg, fault);
        more = arg.last == ',' && (p + 1 < spec_count || (position & ARG_REPEAT) != 0);
        if (arg.size == 0 && !arg.quoted) {
            // An empty text after the last comma of a list that repeats is no item.
            if ((position & ARG_REPEAT) != 0 && !more)
                break;
            if (!may_be_absent(position))
                return fetch_failed(list, arg, FETCH_MISSING);
            gap = true;
            *list.type |= ARG_ABSENT;
        }
        list.slot++;
        list.type++;
        p += p + 1 < spec_count || !more; // the last position repeats
    }
    // The positions that were left out at the end; one that repeats has no more items.
    for (; p < spec_count && (spec[p] & ARG_REPEAT) == 0; p++) {
        if (!may_be_absent(spec[p]))
            return fetch_failed(list, arg, FETCH_MISSING);
        if (gap)
            *list.slot++ = slot_cleared;
        *list.type++ = (spec[p] & ARG_TYPE) | ARG_ABSENT;
    }
    skip_line(arg.last, list.keep);
    slots_end_list(list.slot);
    return static_cast<int32_t>(list.type - arg_types);
}
