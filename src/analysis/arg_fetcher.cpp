#include "analysis/arg_fetcher.h"

#include "analysis/arg_slots.h"
#include "analysis/expr_eval.h"
#include "analysis/expr_lexer.h"
#include "analysis/expr_quick.h"
#include "analysis/plain_marks.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/char_masks.h"
#include "support/number.h"
#include "support/output.h"
#include "support/text.h"

#include <string.h>

char *arg_pool;

static int32_t pool_top;          // where in arg_pool the strings begin that have room from above
static int32_t line_used;         // characters gathered in line_buf
static const arg_slot *line_owed; // the slot whose text line_buf should hold and doesn't yet; null: it does

// What ends an argument, whichever line end the source has.
constexpr int comma = ',';
constexpr int line_feed = '\n';

// How a character of raw text is taken: stored at once, or looked at.
enum : uint8_t { RAW_STORED = 1, RAW_STORED_COUNTED = 2, STRING_STORED = 4 };

struct raw_class_map {
    uint8_t bits[256];
};

// In raw text printable characters and the blank are stored, the comma ends the argument, parentheses are
// looked at where they are counted. In a string all is stored up to a quote or a NUL. The backslash isn't in
// it: the source has to see whether it joins two lines.
static constexpr raw_class_map raw_classes_make()
{
    raw_class_map map{};
    for (int c = 0; c < 256; c++) {
        unsigned bits = 0;
        if (src_plain.plain[c] && c != '"' && c != '`' && c != 0)
            bits |= STRING_STORED;
        if (c >= ' ' && c < 127 && c != ',' && c != '\\')
            bits |= c == '(' || c == ')' ? RAW_STORED : RAW_STORED | RAW_STORED_COUNTED;
        map.bits[c] = static_cast<uint8_t>(bits);
    }
    return map;
}
static constexpr raw_class_map raw_classes = raw_classes_make();

static bool is_numeric(uint8_t type)
{
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

static int skip_blanks(plat_file *stream)
{
    int c;
    do
        c = src_getc(stream);
    while (c == ' ' || c == '\t');
    return c;
}

static bool line_full()
{
    return line_used == line_buf_capacity;
}

static void line_store(int c)
{
    line_buf[line_used++] = static_cast<char>(c);
}

// Stores the characters that lie ready in the source and need no look.
static void store_ready(uint8_t stored)
{
    const unsigned char *p = src_raw.pos;
    const unsigned char *end = src_raw.plain_end;
    if (end - p > line_buf_capacity - line_used)
        end = p + (line_buf_capacity - line_used);
    char *to = line_buf + line_used;
    while (p < end && (raw_classes.bits[*p] & stored) != 0)
        *to++ = static_cast<char>(*p++);
    if (p > src_raw.pos)
        src_raw.pos = p;
    line_used = static_cast<int32_t>(to - line_buf);
}

// Gathers raw text from c on, up to a comma, a line feed or the end of the source; *last is the character
// that ended it. With parentheses counted, a comma inside them is text. False if they don't pair up.
static bool collect_raw(plat_file *stream, int c, bool counted, int *last)
{
    int32_t depth = 0;
    for (; c != -1 && !line_full(); c = src_getc(stream)) {
        if ((c == ',' && depth == 0) || c == '\n')
            break;
        if (!char_is(c, CHAR_GRAPH) && c != ' ')
            continue;
        line_store(c);
        if (counted && c == '(')
            depth++;
        if (counted && c == ')' && --depth < 0)
            break;
        store_ready(counted ? RAW_STORED_COUNTED : RAW_STORED);
    }
    line_buf[line_used] = 0;
    *last = c;
    return depth == 0;
}

// Decodes the escape behind a backslash in a string and stores its byte.
static void collect_escape(plat_file *stream)
{
    int c = src_getc(stream);
    if (char_is(c, CHAR_OCTAL)) {
        int second = src_getc(stream);
        int third = char_is(second, CHAR_OCTAL) ? src_getc(stream) : -1;
        if (char_is(third, CHAR_OCTAL)) {
            line_store((c - '0') * 64 + (second - '0') * 8 + (third - '0'));
            return;
        }
        if (char_is(second, CHAR_OCTAL))
            src_ungetc(third);
        src_ungetc(second);
        line_store(c);
        return;
    }
    switch (c) {
    case -1: line_store('\\'); break;
    case 'b': line_store('\b'); break;
    case 'f': line_store('\f'); break;
    case 'n': line_store('\n'); break;
    case 'r': line_store('\r'); break;
    case 't': line_store('\t'); break;
    default: line_store(c); break;
    }
}

// Gathers a string behind its opening quote, line ends included, and reads on behind its closing quote to
// what ends the argument. What was gathered ends at its first NUL. False if something but blanks stands
// behind the closing quote.
static bool collect_string(plat_file *stream, int quote, int *last)
{
    bool closed = false;
    int c = src_getc(stream);
    for (; c != -1 && !line_full(); c = src_getc(stream)) {
        // What follows a closing quote is looked at one by one.
        if (!closed && c == quote) {
            line_store(0);
            closed = true;
        } else if (!closed && c == '\\') {
            collect_escape(stream);
        } else if (!closed) {
            line_store(c);
            store_ready(STRING_STORED);
        } else if (c == ' ') {
            line_store(c);
        } else if (c == ',' || c == '\n') {
            break;
        } else if (char_is(c, CHAR_GRAPH)) {
            return false;
        }
    }
    line_buf[line_used] = 0;
    *last = c;
    return true;
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

// Bytes of arg_pool that the values of type 4 have taken from below. Few statements ask: it takes many
// strings to reach them.
static int32_t pool_bottom()
{
    int32_t bottom = 0;
    for (const uint8_t *type = arg_types; type < arg_type_cursor; type++)
        bottom += *type == ARG_DOUBLE ? 8 : 0;
    return bottom;
}

constexpr int32_t pool_values_max = 8 * arg_types_size; // bytes that values can take

// True if arg_pool has no room for another value of type 4.
static bool pool_lacks_value()
{
    return pool_top <= pool_values_max && pool_bottom() + 8 >= pool_top;
}

// Takes the room in arg_pool for a string of size characters and a NUL. False if there is none.
static bool pool_take_string(uint32_t size)
{
    auto taken = static_cast<int32_t>(size) + 1;
    if (pool_top - taken < pool_values_max && pool_top - taken < pool_bottom())
        return false;
    pool_top -= taken;
    return true;
}

// Stores a text argument. The text of an empty string is empty, but it has a str.
static bool store_text(bool quoted)
{
    auto size = static_cast<uint32_t>(strlen(line_buf));
    if (!pool_take_string(size))
        return false;
    slot_set_text(line_buf, size, quoted && size > 0);
    arg_cursor->holds = quoted ? HOLDS_STRING : HOLDS_RAW;
    return true;
}

// Evaluates the number in line_buf, whose text the slot has by now.
static bool evaluate_number(uint8_t type)
{
    slot_names_read();
    const double *value = eval_expr(line_buf);
    if (value == nullptr || (type == ARG_DOUBLE && pool_lacks_value()))
        return false;
    slot_store_value(arg_cursor, type, *value);
    return true;
}

// Stores a numeric argument that isn't empty.
static bool store_number(uint8_t type)
{
    if (line_used > arg_text_room)
        return false;
    slot_set_text(line_buf, static_cast<uint32_t>(line_used), false);
    return evaluate_number(type);
}

// ---- Arguments that lie ready in the source ----
// Most arguments need no change and lie in the source's buffer with what ends them: such a text stays there.
// Whatever isn't ready is gathered from its first character on, in the way further below.

// The stretch of the source whose arguments were marked last, as long as the source is read from there.
static struct {
    const unsigned char *text; // null: none
    plain_marks marks;
} stretch;

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
static arg_slot *store_plain(uint64_t ends, const uint8_t *spec, int32_t count, int *end)
{
    arg_slot *slot = arg_cursor;
    const arg_slot *limit = slot + count;
    uint8_t *type = arg_type_cursor;
    const char *text = reinterpret_cast<const char *>(stretch.text);
    uint64_t starts = stretch.marks.starts & UINT64_MAX << (src_raw.pos - stretch.text);
    for (; ends != 0 && slot < limit; slot++, spec++, type++) {
        uint8_t holds = *spec | HOLDS_WAITING;
        int start = lowest_bit(starts);
        int behind = lowest_bit(ends);
        auto size = static_cast<uint32_t>(behind - start);
        if (!is_numeric(holds ^ HOLDS_WAITING) || (size | (*spec & ARG_OPTIONAL)) == 0)
            break;
        *end = behind;
        *type = static_cast<uint8_t>((holds ^ HOLDS_WAITING) | (size == 0 ? unsigned{ARG_ABSENT} : 0));
        slot->text = text + start;
        slot->text_size = size;
        slot->begin_mark = 0;
        slot->state = 0;
        slot->holds = holds;
        starts = without_lowest_bit(starts);
        ends = without_lowest_bit(ends);
    }
    return slot;
}

// Takes plain arguments, as long as one follows the other: at most count of them, by the positions at spec,
// as long as these are numeric. Gives how many it took, each stored and stepped behind; *last is the comma or
// line feed that ended the last of them.
static int32_t take_plain_arguments(const uint8_t *spec, int32_t count, int *last, bool *keep_absent)
{
    if (!is_numeric(*spec & ~ARG_OPTIONAL) || pool_top <= pool_values_max || src_is_line_end(src_raw.pos))
        return 0;
    const arg_slot *first = arg_cursor;
    int32_t taken = 0;
    bool more = true;
    while (more && taken < count && src_raw.pos < src_raw.plain_end) {
        bool fresh = stretch_follow();
        uint64_t ends = stretch_plain_ends();
        if (ends == 0 && !fresh && stretch_goes_on())
            break;
        int end = 0;
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
        *last = more ? comma : line_feed;
        src_raw.pos = stretch.text + end + (more ? 1 : 0);
        arg_type_cursor += behind - arg_cursor;
        arg_cursor = behind;
        taken = static_cast<int32_t>(arg_cursor - first);
    }
    if (taken == 0)
        return 0;
    line_owed = arg_cursor - 1;
    slot_clear();
    if (*last == '\n')
        src_take_line_end();
    return taken;
}

// Takes what ends an argument at end, a comma or a line feed, and all before it.
static void take_through(const unsigned char *end, int *last)
{
    *last = *end == ',' ? comma : line_feed;
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
    const unsigned char *end = raw_end(start, is_numeric(type) || type == ARG_ITEM);
    if (end == nullptr)
        return false;
    auto size = static_cast<uint32_t>(end - start);
    if (is_numeric(type) ? size > arg_text_room : !pool_take_string(size))
        return false;
    slot_set_stretch(start, end, is_numeric(type) ? uint8_t{HOLDS_NOTHING} : uint8_t{HOLDS_RAW});
    take_through(end, last);
    line_owed = arg_cursor;
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
    auto size = static_cast<uint32_t>(quote - start - 1);
    if (!pool_take_string(size))
        return false;
    // The text of an empty string is empty.
    slot_set_stretch(start, size > 0 ? quote + 1 : start, HOLDS_STRING);
    take_through(end, last);
    line_owed = arg_cursor;
    return true;
}

// Evaluates the ready text of the slot under arg_cursor. False if that fails.
static bool evaluate_ready(uint8_t type)
{
    slot_names_read();
    double value;
    if (!pool_lacks_value() &&
        quick_expr(arg_cursor->text, arg_cursor->text + arg_cursor->text_size, &value)) {
        slot_store_value(arg_cursor, type, value);
        return true;
    }
    line_owed = nullptr;
    memcpy(line_buf, arg_cursor->text, arg_cursor->text_size);
    line_buf[arg_cursor->text_size] = 0;
    return evaluate_number(type);
}

// Takes an argument that lies ready, an empty one too. 1 if it did, 0 if it doesn't lie ready and nothing was
// taken, -1 if it did and can't be evaluated.
static int take_ready(uint8_t type, int *last, bool *empty)
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
        line_owed = arg_cursor;
        *empty = true;
        return 1;
    }
    if (!take_ready_raw(start, type, last))
        return 0;
    return !is_numeric(type) || evaluate_ready(type) ? 1 : -1;
}

// ---- Arguments by the spec ----

// Reads one argument into the slot under arg_cursor. *last is the character that ended it, *empty tells an
// empty argument. False if it fails.
static bool fetch_one(plat_file *stream, uint8_t type, int *last, bool *empty)
{
    *empty = false;
    int ready = take_ready(type, last, empty);
    if (ready != 0)
        return ready > 0;
    stretch.text = nullptr;
    line_owed = nullptr;
    line_used = 0;
    int c = skip_blanks(stream);
    bool quote = c == '"' || c == '`';
    if (quote && (type == ARG_STR || type == ARG_ITEM)) {
        *arg_type_cursor = ARG_STR;
        return collect_string(stream, c, last) && store_text(true);
    }
    if (!collect_raw(stream, c, is_numeric(type) || type == ARG_ITEM, last))
        return false;
    *empty = line_used == 0;
    if (*empty) {
        arg_cursor->state = 0;
        return true;
    }
    return is_numeric(type) ? store_number(type) : store_text(false);
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
        int32_t run = others == 0 ? 8 : lowest_bit(others) / 8;
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
    if (line_owed != nullptr) {
        uint32_t size = line_owed->text_size;
        const char *text = line_owed->text;
        if (line_owed->holds == HOLDS_STRING)
            text = slot_str(line_owed, &size);
        memcpy(line_buf, text, size);
        line_buf[size] = 0;
        // The evaluation of an expression leaves its text cut behind its first name.
        if (is_numeric(line_owed->holds))
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
            int32_t taken = take_plain_arguments(spec + p, spec_count - p, &c, &keep_absent);
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
    stretch.text = nullptr;
    line_owed = nullptr;
    pool_top = arg_pool_size;
    src_leave = slots_leave_source;
    slots_filling = true;
    int32_t walked = fetch_list(stream, spec_count, spec, keep_absent);
    slots_filling = false;
    return walked;
}
