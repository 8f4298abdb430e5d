#include "analysis/arg_ready.h"

#include "analysis/arg_store.h"
#include "analysis/expr_quick.h"
#include "analysis/plain_marks.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/char_masks.h"

#include <string.h>

// The stretch of the source whose arguments were marked last, as long as the source is read from there.
static struct {
    const unsigned char *text; // null: none
    plain_marks marks;
} stretch;

void arg_ready_restart()
{
    stretch.text = nullptr;
}

// Makes the stretch one that the source stands in. True if it is a new one.
static bool stretch_follow()
{
    const unsigned char *text = src_raw.pos;
    if (stretch.text != nullptr && text - stretch.text < plain_marks_width)
        return false;
    stretch.text = text;
    plain_marks_find(text, static_cast<size_t>(src_raw.plain_end - text), &stretch.marks);
    return true;
}

// The ends of the plain arguments of the stretch from the source's place on, up to the first other one. The
// highest bit may be missing: it is left to the next stretch.
static uint64_t stretch_plain_ends()
{
    const plain_marks &marks = stretch.marks;
    uint64_t behind = UINT64_MAX << (src_raw.pos - stretch.text);
    uint64_t others = marks.ends & ~marks.plain & behind;
    return marks.ends & behind & (up_to_lowest_bit(others) >> 1);
}

// True if the next argument of the stretch isn't plain.
static bool stretch_goes_on()
{
    uint64_t ends = stretch.marks.ends & UINT64_MAX << (src_raw.pos - stretch.text);
    return (up_to_lowest_bit(ends) & ends & ~stretch.marks.plain) != 0;
}

// Stores plain arguments of the stretch, those that end at ends, in the slots from arg_cursor on, where all
// wait for their values: at most count of them, by the positions at spec, as long as these are numeric and
// none that has to be given is empty. Gives the slot behind the last one, and in *end where that one ended in
// the stretch. Nothing in here has to be guessed but when it ends.
static arg_slot *store_plain(uint64_t ends, const uint8_t *spec, int32_t count, unsigned *end)
{
    arg_slot *slot = arg_cursor;
    const arg_slot *limit = slot + count;
    uint8_t *type = arg_type_cursor;
    const char *text = reinterpret_cast<const char *>(stretch.text);
    uint64_t starts = stretch.marks.starts & UINT64_MAX << (src_raw.pos - stretch.text);
    unsigned last = 0;
    for (; ends != 0 && slot < limit; slot++, spec++, type++) {
        unsigned holds = *spec | unsigned{HOLDS_WAITING};
        unsigned start = lowest_bit(starts);
        unsigned behind = lowest_bit(ends);
        unsigned size = behind - start;
        if (!arg_is_numeric(holds ^ HOLDS_WAITING) || (size | (*spec & ARG_OPTIONAL)) == 0)
            break;
        last = behind;
        *type = static_cast<uint8_t>((holds ^ HOLDS_WAITING) | (size == 0 ? unsigned{ARG_ABSENT} : 0));
        slot->text = text + start;
        slot->text_size = size;
        slot->begin_mark = 0;
        slot->state = 0;
        slot->holds = static_cast<uint8_t>(holds);
        starts = without_lowest_bit(starts);
        ends = without_lowest_bit(ends);
    }
    *end = last;
    return slot;
}

int32_t arg_take_plain(const uint8_t *spec, int32_t count, int *last, bool *keep_absent)
{
    if (!arg_is_numeric(*spec & ~ARG_OPTIONAL) || arg_pool_top <= arg_pool_values_max ||
        src_is_line_end(src_raw.pos) || *src_raw.pos == '(')
        return 0;
    const arg_slot *first = arg_cursor;
    int32_t taken = 0;
    bool more = true;
    while (more && taken < count && src_raw.pos < src_raw.plain_end) {
        bool fresh = stretch_follow();
        uint64_t ends = stretch_plain_ends();
        if (ends == 0 && !fresh && stretch_goes_on())
            break;
        unsigned end = 0;
        arg_slot *behind = store_plain(ends, spec + taken, count - taken, &end);
        if (behind == arg_cursor && fresh)
            break;
        if (behind == arg_cursor) {
            stretch.text = nullptr; // perhaps there is more than the stretch shows
            continue;
        }
        uint64_t done = ends & bits_through(end);
        *keep_absent |= (stretch.marks.starts & done) != 0;
        slot_names_wait(waiting_names{reinterpret_cast<const char *>(stretch.text), arg_cursor,
                                      stretch.marks.starts, done, stretch.marks.names & done});
        more = stretch.text[end] == ',';
        *last = more ? arg_comma : arg_line_feed;
        src_raw.pos = stretch.text + end + (more ? 1 : 0);
        arg_type_cursor += behind - arg_cursor;
        arg_cursor = behind;
        taken = static_cast<int32_t>(arg_cursor - first);
    }
    if (taken == 0)
        return 0;
    arg_line_owed = arg_cursor - 1;
    slot_clear();
    if (*last == '\n')
        src_take_line_end();
    return taken;
}

// Takes what ends an argument at end, a comma or a line feed, and all before it.
static void take_through(const unsigned char *end, int *last)
{
    *last = *end == ',' ? arg_comma : arg_line_feed;
    src_raw.pos = end;
    if (*end == ',')
        src_raw.pos++;
    else
        src_take_line_end();
}

// Makes a stretch of the source the slot's text.
static void slot_set_stretch(const unsigned char *start, const unsigned char *end, uint8_t holds)
{
    arg_cursor->text = reinterpret_cast<const char *>(start);
    arg_cursor->text_size = static_cast<uint32_t>(end - start);
    arg_cursor->holds = holds;
    arg_cursor->state = 0;
}

// The end of a raw text, a comma or a line feed, if all of it lies ready; else null.
static const unsigned char *raw_end(const unsigned char *start, bool counted)
{
    int32_t depth = 0;
    for (const unsigned char *c = start; c < src_raw.plain_end; c += 16) {
        for (uint64_t marks = raw_marks(c); marks != 0; marks = without_lowest_bit(marks)) {
            const unsigned char *mark = c + lowest_bit(marks);
            if (mark >= src_raw.plain_end)
                return nullptr;
            if (src_is_line_end(mark) || (*mark == ',' && depth == 0))
                return depth == 0 ? mark : nullptr;
            bool parenthesis = *mark == '(' || *mark == ')';
            if (!parenthesis && *mark != ',')
                return nullptr;
            if (parenthesis && counted && (depth += *mark == '(' ? 1 : -1) < 0)
                return nullptr;
        }
    }
    return nullptr;
}

// Takes raw text that lies ready from start on. True if it did.
static bool take_ready_raw(const unsigned char *start, uint8_t type, int *last)
{
    const unsigned char *end = raw_end(start, arg_is_numeric(type) || type == ARG_ITEM);
    if (end == nullptr)
        return false;
    auto size = static_cast<uint32_t>(end - start);
    if (arg_is_numeric(type) ? size > arg_text_room : !arg_pool_take_string(size))
        return false;
    slot_set_stretch(start, end, arg_is_numeric(type) ? uint8_t{HOLDS_NOTHING} : uint8_t{HOLDS_RAW});
    take_through(end, last);
    arg_line_owed = arg_cursor;
    return true;
}

// Takes a string in double quotes that lies ready from start on, if nothing in it has to be decoded.
static bool take_ready_string(const unsigned char *start, int *last)
{
    const unsigned char *quote = string_run_end(start + 1, src_raw.plain_end);
    if (quote == src_raw.plain_end || *quote != '"')
        return false;
    const unsigned char *end = quote + 1;
    while (end < src_raw.plain_end && *end == ' ')
        end++;
    if (end == src_raw.plain_end || (*end != ',' && !src_is_line_end(end)))
        return false;
    // Gathered, the string, its NUL and the blanks would fill line_buf: the argument is cut there.
    if (end - start - 1 > line_buf_capacity)
        return false;
    auto size = static_cast<uint32_t>(quote - start - 1);
    if (!arg_pool_take_string(size))
        return false;
    // The text of an empty string is empty.
    slot_set_stretch(start, size > 0 ? quote + 1 : start, HOLDS_STRING);
    take_through(end, last);
    arg_line_owed = arg_cursor;
    return true;
}

// Evaluates the ready text of the slot under arg_cursor. False if that fails.
static bool evaluate_ready(uint8_t type)
{
    slot_names_read();
    double value;
    if (!arg_pool_lacks_value() &&
        quick_expr(arg_cursor->text, arg_cursor->text + arg_cursor->text_size, &value)) {
        slot_store_value(arg_cursor, type, value);
        return true;
    }
    arg_line_owed = nullptr;
    memcpy(line_buf, arg_cursor->text, arg_cursor->text_size);
    line_buf[arg_cursor->text_size] = 0;
    return arg_evaluate(type);
}

int arg_take_ready(uint8_t type, int *last, bool *empty)
{
    const unsigned char *start = src_raw.pos + blank_run(src_raw.pos);
    if (start >= src_raw.plain_end || *start == ' ' || *start == '\t')
        return 0;
    bool quote = *start == '"' || *start == '`';
    if (quote && (type == ARG_STR || type == ARG_ITEM)) {
        if (*start == '`' || !take_ready_string(start, last))
            return 0;
        *arg_type_cursor = ARG_STR;
        return 1;
    }
    if (*start == ',' || src_is_line_end(start)) {
        slot_set_stretch(start, start, HOLDS_NOTHING);
        take_through(start, last);
        arg_line_owed = arg_cursor;
        *empty = true;
        return 1;
    }
    if (!take_ready_raw(start, type, last))
        return 0;
    return !arg_is_numeric(type) || evaluate_ready(type) ? 1 : -1;
}
