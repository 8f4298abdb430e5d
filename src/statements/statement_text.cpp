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
    (void)src_take_rest(line_buf_capacity - length, src.pos,
                        [&](const src_piece &piece) { size += piece.size; });
    return statement_span{text, strnlen(text, size)};
}

int32_t rem_copy(const char *word)
{
    out_text(word);
    out_char(' ');
    bool ended = src_take_rest(SIZE_MAX, nullptr, [](const src_piece &piece) {
        out_bytes(reinterpret_cast<const char *>(piece.text), piece.size);
    });
    return ended ? STATEMENT_DONE : STATEMENT_END;
}
