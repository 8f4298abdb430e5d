#include "analysis/arg_gather.h"

#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/text.h"

int32_t arg_line_used;

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

int arg_skip_blanks(plat_file *stream)
{
    int c;
    do
        c = src_getc(stream);
    while (c == ' ' || c == '\t');
    return c;
}

static bool line_full()
{
    return arg_line_used == line_buf_capacity;
}

static void line_store(int c)
{
    line_buf[arg_line_used++] = static_cast<char>(c);
}

// Stores the characters that lie ready in the source and need no look.
static void store_ready(uint8_t stored)
{
    const unsigned char *p = src_raw.pos;
    const unsigned char *end = src_raw.plain_end;
    if (end - p > line_buf_capacity - arg_line_used)
        end = p + (line_buf_capacity - arg_line_used);
    char *to = line_buf + arg_line_used;
    while (p < end && (raw_classes.bits[*p] & stored) != 0)
        *to++ = static_cast<char>(*p++);
    if (p > src_raw.pos)
        src_raw.pos = p;
    arg_line_used = static_cast<int32_t>(to - line_buf);
}

bool arg_gather_raw(plat_file *stream, int c, bool counted, int *last)
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
    line_buf[arg_line_used] = 0;
    *last = c;
    return depth == 0;
}

// Decodes the escape behind a backslash in a string and stores its byte.
static void gather_escape(plat_file *stream)
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

bool arg_gather_string(plat_file *stream, int quote, int *last)
{
    bool closed = false;
    int c = src_getc(stream);
    for (; c != -1 && !line_full(); c = src_getc(stream)) {
        // What follows a closing quote is looked at one by one.
        if (!closed && c == quote) {
            line_store(0);
            closed = true;
        } else if (!closed && c == '\\') {
            gather_escape(stream);
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
    line_buf[arg_line_used] = 0;
    *last = c;
    return true;
}
