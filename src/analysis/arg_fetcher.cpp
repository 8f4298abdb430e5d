#include "analysis/arg_fetcher.h"

#include "analysis/arg_slots.h"
#include "analysis/expr_eval.h"
#include "analysis/expr_lexer.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/number.h"
#include "support/text.h"

#include <string.h>

char *arg_pool;

static int32_t pool_bottom; // bytes of arg_pool that values have taken from below
static int32_t pool_top;    // where the strings begin that were stored from above
static int32_t line_used;   // characters gathered in line_buf
static double plain_value;  // what number_is_plain read

// How a character of raw text is taken: stored at once, or looked at.
enum : uint8_t { RAW_STORED = 1, RAW_STORED_COUNTED = 2 };

struct raw_class_map {
    uint8_t bits[256];
};

// Printable characters and the blank are stored, the comma ends the argument, parentheses are looked at where
// they are counted. The backslash isn't in it: the source has to see whether it joins two lines.
static constexpr raw_class_map raw_classes_make()
{
    raw_class_map map{};
    for (int c = ' '; c < 127; c++) {
        if (c == ',' || c == '\\')
            continue;
        map.bits[c] = RAW_STORED;
        if (c != '(' && c != ')')
            map.bits[c] = RAW_STORED | RAW_STORED_COUNTED;
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
        if (!closed && c == quote) {
            line_store(0);
            closed = true;
        } else if (!closed && c == '\\') {
            collect_escape(stream);
        } else if (!closed || c == ' ') {
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
    memcpy(room + quotes, text, size);
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
    slot_set_text(line_buf, size, quoted && size > 0);
    int32_t taken = static_cast<int32_t>(size) + 1;
    if (pool_top - taken < pool_bottom)
        return false;
    pool_top -= taken;
    arg_cursor->str = static_cast<char *>(memcpy(arg_pool + pool_top, line_buf, size + 1));
    return true;
}

// Reads the commonest numeric argument, a plain decimal number with a sign at the most, as the evaluator
// would; false for any other text. 15 digits are exact in a double.
static bool number_is_plain(const char *text)
{
    bool minus = *text == '-';
    if (minus)
        text++;
    if (text[0] == '0' && text_is(text[1], CHAR_DIGIT))
        return false; // octal, perhaps
    const char *start = text;
    uint64_t mantissa = 0;
    for (; text_is(*text, CHAR_DIGIT); text++)
        mantissa = mantissa * 10 + static_cast<uint64_t>(*text - '0');
    int32_t fraction_digits = 0;
    if (*text == '.')
        for (text++; text_is(*text, CHAR_DIGIT); text++, fraction_digits++)
            mantissa = mantissa * 10 + static_cast<uint64_t>(*text - '0');
    if (text == start || text - start > 15)
        return false;
    while (*text == ' ')
        text++;
    if (*text != 0)
        return false;
    double value = static_cast<double>(mantissa) * power_of_ten(-fraction_digits);
    plain_value = minus ? -value : value;
    return true;
}

static const double *evaluate()
{
    return number_is_plain(line_buf) ? &plain_value : eval_expr(line_buf);
}

static bool store_double(double value)
{
    if (pool_bottom + 8 >= pool_top)
        return false;
    arg_cursor->dval = static_cast<double *>(memcpy(arg_pool + pool_bottom, &value, sizeof value));
    pool_bottom += 8;
    return true;
}

// Stores a numeric argument that isn't empty.
static bool store_number(uint8_t type)
{
    if (line_used > arg_text_room)
        return false;
    slot_set_text(line_buf, static_cast<uint32_t>(line_used), false);
    const double *value = evaluate();
    if (value == nullptr)
        return false;
    switch (type) {
    case ARG_LONG: arg_cursor->lval = int_from_double(*value); return true;
    case ARG_INT: arg_cursor->ival = int_from_double(*value); return true;
    case ARG_FLOAT: arg_cursor->fval = float_from_double(*value); return true;
    default: return store_double(*value);
    }
}

static bool is_numeric(uint8_t type)
{
    return type >= ARG_LONG && type <= ARG_DOUBLE;
}

// Reads one argument into the slot under arg_cursor. *last is the character that ended it, *empty tells an
// empty argument. False if it fails.
static bool fetch_one(FILE *stream, uint8_t type, int *last, bool *empty)
{
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

static void skip_line(FILE *stream, int c)
{
    while (c != '\n' && c != -1)
        c = src_getc(stream);
}

int32_t fetch_args(FILE *stream, int32_t spec_count, const uint8_t *spec, bool keep_absent)
{
    slot_clear();
    pool_bottom = 0;
    pool_top = arg_pool_size;
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
            return -1;
        bool repeats = (spec[p] & ARG_REPEAT) != 0;
        *arg_type_cursor = spec[p] & ARG_TYPE;
        bool empty = true;
        if (more) {
            if (!fetch_one(stream, spec[p] & ARG_TYPE, &c, &empty))
                return -1;
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
            return -1;
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
