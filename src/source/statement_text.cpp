#include "source/statement_text.h"

#include "source/src_stream.h"
#include "support/output.h"

char line_buf[line_buf_capacity + 1];
char stmt_text[line_buf_capacity + 16];

int32_t rem_copy(plat_file *stream, const char *word)
{
    out_text(word);
    out_char(' ');
    for (;;) {
        const char *run;
        size_t size = src_take_plain(&run, SIZE_MAX);
        if (size > 0) {
            out_bytes(run, size);
            continue;
        }
        int c = src_getc(stream);
        if (c == -1)
            return STATEMENT_END;
        out_char(c);
        if (c == '\n')
            return STATEMENT_DONE;
    }
}
