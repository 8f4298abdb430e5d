#include "source/statement_text.h"

#include "source/src_stream.h"
#include "support/output.h"
#include "support/scan.h"

#include <string.h>

char line_buf[line_buf_capacity + 16];
char stmt_text[line_buf_capacity + 16];

statement_span statement_read(int32_t length)
{
    unsigned char *start = src.pos - length;
    const unsigned char *limit = start + line_buf_capacity;
    const unsigned char *nul = nullptr; // the first one: the text ends there, though the line goes on
    const unsigned char *p = start;
    for (;;) {
        p += scan_line(p);
        if (p >= limit) {
            p = limit;
            break;
        }
        if (p == src.end) {
            src.pos = src.end;
            if (!src_more(src.pos))
                break;
        } else if (*p++ == '\n') {
            break;
        } else if (nul == nullptr) {
            nul = p - 1;
        }
    }
    src.pos = start + (p - start);
    auto size = static_cast<size_t>((nul != nullptr && nul < p ? nul : p) - start);
    return statement_span{reinterpret_cast<const char *>(start), size};
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
