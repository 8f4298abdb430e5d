#include "analysis/arg_fetcher.h"

#include "analysis/arg_slots.h"
#include "analysis/expr_eval.h"
#include "analysis/expr_lexer.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/number.h"
#include "support/output.h"
#include "support/text.h"

#include <string.h>

char *arg_pool;

static int32_t pool_bottom;   // bytes of arg_pool that values have taken from below
static int32_t pool_top;      // where the strings begin that were stored from above
static int32_t line_used;     // characters gathered in line_buf
static const char *line_owed; // a text that line_buf should hold and doesn't yet; null: it does

// How a character of raw text is taken: stored at once, or looked at.
enum : uint8_t { RAW_STORED = 1, RAW_STORED_COUNTED = 2, STRING_STORED = 4 };

struct raw_class_map {
    uint8_t bits[256];
};

// In raw text printable characters and the blank are stored, the comma ends the argument, parentheses are
// looked at where they are counted. In a string all is stored up to a quote. The backslash isn't in it: the
// source has to see whether it joins two lines.
static constexpr raw_class_map raw_classes_make()
{
    raw_class_map map{};
    for (int c = 0; c < 256; c++) {
        unsigned bits = 0;
        if (src_plain.plain[c] && c != '"' && c != '`')
            bits |= STRING_STORED;
        if (c >= ' ' && c < 127 && c != ',' && c != '\\')
            bits |= c == '(' || c == ')' ? RAW_STORED : RAW_STORED | RAW_STORED_COUNTED;
        map.bits[c] = static_cast<uint8_t>(bits);
    }
    return map;
}
static constexpr raw_class_map raw_classes = raw_classes_make();

static int skip_blanks(FILE *stream)
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
static bool collect_raw(FILE *stream, int c, bool counted, int *last)
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
static void collect_escape(FILE *stream)
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
static bool collect_string(FILE *stream, int quote, int *last)
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

// Stores a text argument. The text of an empty string is empty, but it has a str.
static bool store_text(bool quoted)
{
    uint32_t size = static_cast<uint32_t>(strlen(line_buf));
    int32_t taken = static_cast<int32_t>(size) + 1;
    if (pool_top - taken < pool_bottom)
        return false;
    pool_top -= taken;
    slot_set_text(line_buf, size, quoted && size > 0);
    arg_cursor->str = static_cast<char *>(memcpy(arg_pool + pool_top, line_buf, size + 1));
    return true;
}

// Stores the value of a numeric type in a slot. There is room in the pool.
static inline void store_value(arg_slot *slot, uint8_t type, double value)
{
    switch (type) {
    case ARG_LONG: slot->lval = int_from_double(value); break;
    case ARG_INT: slot->ival = int_from_double(value); break;
    case ARG_FLOAT: slot->fval = float_from_double(value); break;
    default:
        slot->dval = static_cast<double *>(memcpy(arg_pool + pool_bottom, &value, sizeof value));
        pool_bottom += 8;
        break;
    }
}

// Stores a numeric argument that isn't empty.
static bool store_number(uint8_t type)
{
    if (line_used > arg_text_room)
        return false;
    slot_set_text(line_buf, static_cast<uint32_t>(line_used), false);
    const double *value = eval_expr(line_buf);
    if (value == nullptr || (type == ARG_DOUBLE && pool_bottom + 8 >= pool_top))
        return false;
    store_value(arg_cursor, type, *value);
    return true;
}

static bool is_numeric(uint8_t type)
{
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

// An argument that lies ready in the source and needs no more than a look: a number of a sign, digits, point
// and digits, or a bare name.
struct plain_argument {
    const unsigned char *start; // its first character
    const unsigned char *end;   // the comma or line feed behind it
    double value;               // of a name; a number's stays in its text
    bool name;
};

constexpr int plain_look = 24; // characters from its first on that have to lie ready

static inline bool ends_plainly(const plain_argument *argument)
{
    return *argument->end == ',' || *argument->end == '\n';
}

static inline int lowest_byte_set(uint64_t marks)
{
    return __builtin_ctzll(marks) / 8;
}

// Reads a number of at most seven characters behind its sign, all eight bytes at once: how long the next
// number is can't be foreseen, and a wrong guess costs more than all the rest. Byte n of a word is character
// n of the text here, so on a machine with the other byte order no number is plain.
static inline bool read_plain_number(plain_argument *argument)
{
    constexpr uint64_t ones = 0x0101010101010101;
    constexpr bool first_is_lowest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

    unsigned minus = *argument->start == '-';
    uint64_t characters;
    memcpy(&characters, argument->start + minus, sizeof characters);
    uint64_t digits = characters ^ '0' * ones; // 0 to 9 in the bytes of digits
    uint64_t others = (((digits & 0x7F * ones) + (0x80 - 10) * ones) | digits) & 0x80 * ones;
    if (!first_is_lowest || others == 0)
        return false;
    int whole = lowest_byte_set(others);
    unsigned point = (characters >> 8 * whole & 0xFF) == '.';
    uint64_t ends = point != 0 ? others & (others - 1) : others;
    if (ends == 0)
        return false;
    int length = lowest_byte_set(ends);
    int count = length - static_cast<int>(point);
    argument->end = argument->start + minus + length;
    bool octal = (digits & 0xFF) == 0 && whole > 1; // perhaps
    if (count == 0 || octal || !ends_plainly(argument))
        return false;
    return true;
}

static inline bool read_plain_name(plain_argument *argument)
{
    const unsigned char *p = argument->start;
    while (p < argument->start + slot_text_slack && char_is(*p, CHAR_WORD))
        p++;
    argument->end = p;
    return ends_plainly(argument);
}

// Takes the commonest arguments straight from the source, as long as one plain argument follows the other: at
// most count of them, by the positions at spec. Gives how many it took, each stored and stepped behind; *last
// is the comma or line feed that ended the last of them. All that moves is kept at hand until the end.
static int32_t take_plain_arguments(FILE *stream, const uint8_t *spec, int32_t count, int *last)
{
    if (pool_bottom + 8 * count >= pool_top)
        return 0;
    const unsigned char *p = src_raw.pos;
    const unsigned char *limit = src_raw.plain_end;
    if (limit - p < plain_look)
        return 0;
    limit -= plain_look;
    char *text = slot_texts + slot_texts_used;
    arg_slot *slot = arg_cursor;
    int32_t taken = 0;
    bool line_end = false;
    while (taken < count && !line_end) {
        auto type = static_cast<uint8_t>(spec[taken] & ~ARG_OPTIONAL);
        if (!is_numeric(type))
            break;
        p += p < limit && *p == ' ';
        while (p < limit && (*p == ' ' || *p == '\t'))
            p++;
        if (p >= limit)
            break;
        plain_argument argument;
        argument.start = p;
        argument.name = char_is(*p, CHAR_LETTER);
        if (!(argument.name ? read_plain_name(&argument) : read_plain_number(&argument)))
            break;
        auto size = static_cast<uint32_t>(argument.end - argument.start);
        memcpy(text, argument.start, slot_text_slack); // of one size for all: what lies behind is free
        text[size] = 0;
        if (argument.name && !eval_bare_name(text, &argument.value))
            break;
        *slot = arg_slot{text, nullptr, nullptr, size, 0, 0, 0, 0, 0, argument.name ? uint8_t{0} : type};
        if (argument.name)
            store_value(slot, type, argument.value);
        else if (type == ARG_DOUBLE)
            pool_bottom += 8; // its place, though it stays empty
        slot++;
        arg_type_cursor[taken++] = type;
        text += size + 1;
        line_end = *argument.end == '\n';
        p = argument.end + 1;
    }
    if (taken == 0)
        return 0;
    constexpr int comma = ',';
    constexpr int line_feed = '\n';
    *last = line_end ? line_feed : comma;
    line_owed = slot[-1].text;
    slot_texts_used = static_cast<uint32_t>(text - slot_texts);
    arg_type_cursor += taken;
    arg_cursor = slot;
    slot_clear();
    src_raw.pos = line_end ? p - 1 : p;
    if (line_end)
        (void)src_getc(stream);
    return taken;
}

// Reads one argument into the slot under arg_cursor. *last is the character that ended it, *empty tells an
// empty argument. False if it fails.
static bool fetch_one(FILE *stream, uint8_t type, int *last, bool *empty)
{
    line_owed = nullptr;
    line_used = 0;
    int c = skip_blanks(stream);
    bool quote = c == '"' || c == '`';
    if (quote && (type == ARG_STR || type == ARG_ITEM)) {
        *arg_type_cursor = ARG_STR;
        *empty = false;
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
// slot. Gives how many there were.
static int32_t pass_absent(const uint8_t *spec, int32_t count, int32_t *walked)
{
    int32_t passed = 0;
    while (passed < count && (spec[passed] & (ARG_OPTIONAL | ARG_REPEAT)) == ARG_OPTIONAL)
        *arg_type_cursor++ = static_cast<uint8_t>((spec[passed++] & ARG_TYPE) | ARG_ABSENT);
    *walked += passed;
    return passed;
}

// Gives line_buf the text that it is owed, for the statement loop to print.
static int32_t fetch_failed()
{
    slots_abandon_list();
    if (line_owed != nullptr)
        strcpy(line_buf, line_owed);
    return -1;
}

static void skip_line(FILE *stream, int c)
{
    while (c != '\n' && c != -1)
        c = src_getc(stream);
}

int32_t fetch_args(FILE *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    slot_clear();
    line_owed = nullptr;
    pool_bottom = 0;
    pool_top = arg_pool_size;
    bool more = spec_count != 0; // the list goes on
    int32_t walked = 0;
    int c = 0;
    for (int32_t p = 0;; p++) {
        if (more) {
            int32_t taken = take_plain_arguments(stream, spec + p, spec_count - p, &c);
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
