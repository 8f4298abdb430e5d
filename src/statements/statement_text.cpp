#include "statements/statement_text.h"

#include "source/src_stream.h"
#include "support/output.h"

#include <string.h>

char line_buf[line_buf_capacity + 16];
char stmt_text[line_buf_capacity + 16];

statement_span statement_read(const char *word, size_t length)
{
    unsigned char *start = src.pos - length;
    (void)src_rewrite(start, word, length, src.pos);
    auto *text = reinterpret_cast<const char *>(start);
    size_t size = length;
    src_piece piece;
    do {
        piece = src_take_line(line_buf_capacity - size, src.pos);
        size += piece.size;
    } while (size < line_buf_capacity && piece.size > 0 && !piece.ends_line);
    return statement_span{text, strnlen(text, size)};
}

int32_t rem_copy(const char *word)
{
    out_text(word);
    out_char(' ');
    src_piece piece;
    do {
        piece = src_take_line(SIZE_MAX, nullptr);
        out_bytes(reinterpret_cast<const char *>(piece.text), piece.size);
    } while (piece.size > 0 && !piece.ends_line);
    return piece.ends_line ? STATEMENT_DONE : STATEMENT_END;
}
