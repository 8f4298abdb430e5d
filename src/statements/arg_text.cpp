// In both readers p is the next character to look at, and the characters from from up to p belong to the text
// that ends at to. As long as nothing was dropped or decoded, to and from are the same place.
#include "statements/arg_text.h"

#include "source/src_stream.h"
#include "statements/statement_text.h"
#include "support/scan.h"
#include "support/text.h"

#include <string.h>

// Moves the characters between from and p to to. Gives the end of the text.
static unsigned char *close_up(unsigned char *to, const unsigned char *from, const unsigned char *p)
{
    auto size = static_cast<size_t>(p - from);
    if (to != from)
        memmove(to, from, size);
    return to + size;
}

// Reads one character at p whatever it is, with the text before keep kept: the character that no longer fits
// the argument. -1 at the end of the source.
static int take_one(unsigned char *p, unsigned char *keep)
{
    src.pos = p;
    return src.pos < src.end || src_more(keep) ? *src.pos++ : -1;
}

// ---- Raw text ----

// Tells whether a character ends a raw text: a comma outside of parentheses, or a line feed. Which of the two
// it is can't be foreseen, so nothing branches on it.
static inline bool ends_raw(unsigned char c, int32_t depth)
{
    return (c == '\n') | ((c == ',') & (depth <= 0));
}

static int32_t read_raw(bool counted, arg_text *arg)
{
    unsigned char *start = src.pos;
    unsigned char *to = start;
    unsigned char *from = start;
    unsigned char *p = start;
    int32_t depth = 0;
    arg->text = start;
    arg->quoted = false;
    for (;;) {
        p += scan_raw(p);
        if ((to - start) + (p - from) >= line_buf_capacity) {
            p = from + (line_buf_capacity - (to - start));
            to = close_up(to, from, p);
            arg->last = take_one(p, to);
            break;
        }
        if (ends_raw(*p, depth)) {
            to = close_up(to, from, p);
            arg->last = *p;
            src.pos = p + 1;
            if (p != src.end)
                break;
            arg->last = -1;
            src.pos = p;
            if (!src_more(to))
                break;
            p = from = src.pos;
        } else if (*p == ',' || *p == '(' || *p == ')') {
            if (counted)
                depth += (*p == '(') - (*p == ')');
            p++;
            if (depth < 0) {
                to = close_up(to, from, p);
                src.pos = p;
                break;
            }
        } else {
            to = close_up(to, from, p);
            from = ++p;
        }
    }
    arg->size = static_cast<uint32_t>(to - start);
    return depth != 0 ? FETCH_PARENTHESES : 0;
}

// ---- Strings ----

// Kept: digits that make no octal escape go back to the source, and a NUL that ended them is lost. p is on
// the first digit; where that is so it moves one place on, onto the same digit. True if it was so.
static bool lose_nul(unsigned char *p)
{
    bool second = src.end - p > 2 && char_is(p[1], CHAR_OCTAL);
    if (second ? p[2] != 0 : src.end - p < 2 || p[1] != 0)
        return false;
    if (second)
        p[2] = p[1];
    p[1] = p[0];
    return true;
}

// Decodes the escape whose backslash p is on, and puts its byte at to. Gives the place after the escape.
static unsigned char *read_escape(unsigned char *p, unsigned char *to)
{
    src.pos = p;
    while (src.end - src.pos < 4 && src_more(to)) {
    }
    unsigned char *text = src.pos + 1;
    size_t size = 1;
    unsigned char c = *text;
    if (text < src.end && char_is(c, CHAR_OCTAL) && lose_nul(text))
        text++;
    else
        c = static_cast<unsigned char>(escape_decode(reinterpret_cast<const char *>(text),
                                                     reinterpret_cast<const char *>(src.end), false, &size));
    src_settle_lines(text + size); // a decoded line feed is none of the source
    *to = c;
    return text + size;
}

// Reads what follows a string's closing quote: blanks, and the end of the argument. stored characters of the
// string were counted; the blanks count too.
static int32_t read_after_quote(unsigned char *p, unsigned char *keep, int64_t stored, arg_text *arg)
{
    for (src.pos = p; src.pos < src.end || src_more(keep);) {
        int c = *src.pos++;
        arg->last = c;
        if (stored >= line_buf_capacity || c == ',' || c == '\n')
            return 0;
        if (char_is(c, CHAR_GRAPH))
            return FETCH_AFTER_QUOTE;
        stored += c == ' ';
    }
    arg->last = -1;
    return 0;
}

static int32_t read_string(arg_text *arg)
{
    const unsigned char quote = *src.pos;
    unsigned char *start = src.pos + 1;
    unsigned char *to = start;
    unsigned char *from = start;
    unsigned char *p = start;
    int32_t fault = 0;
    bool nul = false;
    for (;;) {
        p += scan_string(p);
        int64_t stored = (to - start) + (p - from);
        bool full = stored >= line_buf_capacity;
        if (full)
            p = from + (line_buf_capacity - (to - start));
        else if (p < src.end && *p != quote && *p != '\\') {
            nul |= *p++ == 0; // a line feed, the other quote
            continue;
        }
        if (to != from)
            src_settle_lines(p); // moved line feeds are counted where they were
        to = close_up(to, from, p);
        if (full) {
            arg->last = take_one(p, to);
            break;
        }
        if (p == src.end) {
            src.pos = p;
            arg->last = -1;
            if (!src_more(to))
                break;
            p = from = src.pos;
        } else if (*p == quote) {
            fault = read_after_quote(p + 1, to + 1, stored + 1, arg);
            break;
        } else {
            p = from = read_escape(p, to);
            nul |= *to++ == 0;
        }
    }
    arg->text = start;
    arg->size = static_cast<uint32_t>(to - start);
    if (nul)
        arg->size = static_cast<uint32_t>(strnlen(reinterpret_cast<char *>(start), arg->size));
    arg->quoted = true;
    return fault;
}

int32_t arg_text_read(unsigned char *keep, bool strings, bool counted, arg_text *arg)
{
    do {
        unsigned char *p = src.pos;
        p += *p == ' ';
        while (*p == ' ' || *p == '\t')
            p++;
        src.pos = p;
    } while (src.pos == src.end && src_more(keep));
    if (strings && (*src.pos == '"' || *src.pos == '`') && src.pos < src.end)
        return read_string(arg);
    return read_raw(counted, arg);
}
