#include "analysis/arg_gather.h"

#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/text.h"

int32_t arg_line_used;

int arg_skip_blanks()
{
    int c;
    do
        c = src_getc();
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

bool arg_gather_raw(int c, bool counted, int *last)
{
    int32_t depth = 0;
    for (; c != -1 && !line_full(); c = src_getc()) {
        if ((c == ',' && depth == 0) || c == '\n')
            break;
        if (!char_is(c, CHAR_GRAPH) && c != ' ')
            continue;
        line_store(c);
        if (counted && c == '(')
            depth++;
        if (counted && c == ')' && --depth < 0)
            break;
    }
    line_buf[arg_line_used] = 0;
    *last = c;
    return depth == 0;
}

// Decodes the escape behind a backslash in a string and stores its byte.
static void gather_escape()
{
    int c = src_getc();
    if (char_is(c, CHAR_OCTAL)) {
        int second = src_peek();
        src.pos += char_is(second, CHAR_OCTAL) || second == 0;
        if (char_is(second, CHAR_OCTAL)) {
            int third = src_peek();
            if (char_is(third, CHAR_OCTAL)) {
                src.pos++;
                line_store((c - '0') * 64 + (second - '0') * 8 + (third - '0'));
                return;
            }
            // Kept: a NUL can't be given back, so the second digit takes its place.
            if (third == 0)
                *src.pos = static_cast<unsigned char>(second);
            else
                src.pos--;
        }
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

bool arg_gather_string(int quote, int *last)
{
    bool closed = false;
    int c = src_getc();
    for (; c != -1 && !line_full(); c = src_getc()) {
        // What follows a closing quote is looked at one by one.
        if (!closed && c == quote) {
            line_store(0);
            closed = true;
        } else if (!closed && c == '\\') {
            gather_escape();
        } else if (!closed) {
            line_store(c);
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
