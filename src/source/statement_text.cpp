#include "source/statement_text.h"

#include "source/src_stream.h"
#include "support/output.h"

#include <string.h>

char line_buf[line_buf_capacity + 16];
char stmt_text[line_buf_capacity + 16];

statement_span statement_read(const char *word, int32_t length)
{
    unsigned char *start = src.pos - length;
    memcpy(start, word, static_cast<size_t>(length));
    int32_t left = line_buf_capacity - length;
    for (;;) {
        auto ready = static_cast<int32_t>(src.end - src.pos < left ? src.end - src.pos : left);
        const void *found = memchr(src.pos, '\n', static_cast<size_t>(ready));
        if (found != nullptr)
            ready = static_cast<int32_t>(static_cast<const unsigned char *>(found) - src.pos) + 1;
        src.pos += ready;
        left -= ready;
        if (found != nullptr || left == 0 || !src_more(src.pos))
            break;
    }
    auto size = static_cast<size_t>(src.pos - start);
    const void *nul = memchr(start, 0, size);
    if (nul != nullptr)
        size = static_cast<size_t>(static_cast<const unsigned char *>(nul) - start);
    return statement_span{reinterpret_cast<const char *>(start), size};
}

int32_t rem_copy(const char *word)
{
    out_text(word);
    out_char(' ');
    while (src.pos < src.end || src_more(nullptr)) {
        auto size = static_cast<size_t>(src.end - src.pos);
        const void *found = memchr(src.pos, '\n', size);
        if (found != nullptr)
            size = static_cast<size_t>(static_cast<const unsigned char *>(found) - src.pos) + 1;
        out_bytes(reinterpret_cast<const char *>(src.pos), size);
        src.pos += size;
        if (found != nullptr)
            return STATEMENT_DONE;
    }
    return STATEMENT_END;
}
