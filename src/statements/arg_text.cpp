// In both readers the text of an argument ends at to; the characters from from up to p belong to it too, and
// p is the next character to look at. As long as nothing was dropped or decoded, to and from are the same.
#include "statements/arg_text.h"

#include "source/src_stream.h"
#include "statements/statement_text.h"
#include "support/scan.h"
#include "support/text.h"

#include <string.h>

void (*arg_typed)(const unsigned char *text, size_t size);

// The text of an argument while it is read, in the source's window.
struct text_reader {
    unsigned char *start;
    unsigned char *to;
    unsigned char *from;
    unsigned char *p;
};

// Passes a piece of the script's text of an argument to the hook.
static void report_typed(const unsigned char *text, size_t size)
{
    if (arg_typed != nullptr)
        arg_typed(text, size);
}

// Characters of the text up to p.
static ptrdiff_t reader_size(const text_reader &text)
{
    return (text.to - text.start) + (text.p - text.from);
}

// Moves the characters between from and p to the text's end.
static void close_up(text_reader *text)
{
    auto size = static_cast<size_t>(text->p - text->from);
    report_typed(text->from, size);
    text->to = text->to == text->from ? text->p : src_rewrite(text->to, text->from, size, text->p);
    text->from = text->p;
}

constexpr int reader_more = -2; // no character: there is more of the text

// Handles a text that is full or reaches the window's end. Returns reader_more if the window got more of it;
// else the character that no longer fits, which is read, or -1 at the end of the source. It isn't inlined and
// callers pass a copy, so that the reader in their loops stays in registers.
__attribute__((noinline)) static int reader_at_end(text_reader *text)
{
    ptrdiff_t excess = reader_size(*text) - line_buf_capacity;
    if (excess > 0)
        text->p -= excess;
    close_up(text);
    src.pos = text->p;
    if (excess >= 0)
        return src_getc(text->to);
    if (!src_more(text->to))
        return -1;
    text->p = text->from = src.pos;
    return reader_more;
}

// Moves p to the next character at which scan stops. Returns reader_more; or what reader_at_end returns if
// the text ends before one.
template <typename function> static inline int reader_next(text_reader *text, function scan)
{
    for (;;) {
        text->p += scan(text->p);
        if (reader_size(*text) < line_buf_capacity && text->p < src.end)
            return reader_more;
        text_reader here = *text;
        int last = reader_at_end(&here);
        *text = here;
        if (last != reader_more)
            return last;
    }
}

// ---- Raw text ----

static int32_t read_raw(bool counted, arg_text *arg)
{
    text_reader text{src.pos, src.pos, src.pos, src.pos};
    int32_t depth = 0;
    arg->text = text.start;
    arg->quoted = false;
    int last;
    while ((last = reader_next(&text, [](const unsigned char *p) { return scan_raw(p); })) == reader_more) {
        const unsigned char c = *text.p;
        if (c == '\n' || (c == ',' && depth <= 0)) {
            close_up(&text);
            last = c;
            src.pos = text.p + 1;
            break;
        }
        if (c == ',' || c == '(' || c == ')') {
            if (counted)
                depth += (c == '(') - (c == ')');
            text.p++;
            if (depth < 0) {
                close_up(&text);
                src.pos = text.p;
                last = c;
                break;
            }
        } else {
            close_up(&text);
            report_typed(text.p, 1);
            text.from = ++text.p;
        }
    }
    arg->last = last;
    arg->size = static_cast<uint32_t>(text.to - text.start);
    return depth != 0 ? FETCH_PARENTHESES : 0;
}

// ---- Strings ----

// Decodes the escape whose backslash p is on, and appends its byte to the text.
static void read_escape(text_reader *text)
{
    src.pos = text->p;
    while (src.end - src.pos < 4 && src_more(text->to)) {
    }
    // Kept: digits that make no octal escape are put back into the source, and so is the character after
    // them, which is lost if it is a NUL. Users see the string's rest; with the NUL the string would end
    // there.
    const unsigned char *digit = src.pos + 1;
    size_t digits = char_is(digit[0], CHAR_OCTAL) ? 1 + char_is(digit[1], CHAR_OCTAL) : 0;
    bool lost = digits > 0 && src_lose_nul(src.pos + 1 + digits);
    unsigned char *escape = src.pos + 1;
    size_t size = 1;
    unsigned char c = *escape;
    if (!lost)
        c = static_cast<unsigned char>(escape_decode(reinterpret_cast<const char *>(escape),
                                                     reinterpret_cast<const char *>(src.end), false, &size));
    text->p = text->from = escape + size;
    report_typed(src.pos, static_cast<size_t>(text->p - src.pos));
    text->to = src_rewrite(text->to, &c, 1, text->p);
}

// Reads over blanks after a string's closing quote to the end of the argument. stored is the number of the
// string's characters; the blanks count too.
static int32_t read_after_quote(unsigned char *keep, int64_t stored, arg_text *arg)
{
    while ((arg->last = src_getc(keep)) != -1) {
        if (stored >= line_buf_capacity || arg->last == ',' || arg->last == '\n')
            return 0;
        if (char_is(arg->last, CHAR_GRAPH))
            return FETCH_AFTER_QUOTE;
        stored += arg->last == ' ';
    }
    return 0;
}

static int32_t read_string(arg_text *arg)
{
    const unsigned char quote = *src.pos;
    unsigned char *start = src.pos + 1;
    text_reader text{start, start, start, start};
    int32_t fault = 0;
    report_typed(&quote, 1);
    while ((arg->last = reader_next(&text, [](const unsigned char *p) { return scan_string(p); })) ==
           reader_more) {
        if (*text.p == quote) {
            close_up(&text);
            report_typed(&quote, 1);
            src.pos = text.p + 1;
            fault = read_after_quote(text.to + 1, text.to + 1 - text.start, arg);
            break;
        }
        if (*text.p == '\\') {
            close_up(&text);
            read_escape(&text);
        } else {
            text.p++; // a line feed, the other quote, a NUL
        }
    }
    arg->text = start;
    auto *decoded = reinterpret_cast<const char *>(start);
    arg->size = static_cast<uint32_t>(strnlen(decoded, static_cast<size_t>(text.to - start)));
    arg->quoted = true;
    return fault;
}

int32_t arg_text_read(unsigned char *keep, bool strings, bool counted, arg_text *arg)
{
    src_skip_blanks(keep);
    if (strings && (*src.pos == '"' || *src.pos == '`') && src.pos < src.end)
        return read_string(arg);
    return read_raw(counted, arg);
}
