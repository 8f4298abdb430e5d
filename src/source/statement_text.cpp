#include "source/statement_text.h"

#include "source/src_stream.h"
#include "support/char_masks.h"
#include "support/output.h"

#include <string.h>

char line_buf[line_buf_capacity + 1];
char stmt_text[line_buf_capacity + 4];

const unsigned char *line_ready_end(int32_t word_length)
{
    const unsigned char *end = plain_run_end(src_raw.pos, src_raw.plain_end);
    bool ready = src_is_line_end(end) && end - src_raw.pos < line_buf_capacity - word_length;
    return ready ? end : nullptr;
}

void line_write_ready(const char *word, int32_t length, const unsigned char *end, int line_feeds)
{
    static_assert(line_step <= src_slack);
    auto size = static_cast<size_t>(end - src_raw.pos);
    char *place = out_take_place(line_buf_capacity + 2 * line_step);
    memcpy(place, word, line_step);
    if (static_cast<size_t>(length) > line_step)
        memcpy(place, word, static_cast<size_t>(length));
    place += length;
    size_t at = 0;
    do {
        memcpy(place + at, src_raw.pos + at, line_step);
        at += line_step;
    } while (at < size);
    place[size] = '\n';
    place[size + 1] = '\n';
    out_give_place(place + size + line_feeds);
    src_raw.pos = end;
    src_take_line_end();
}

// Copies a line whose word is written.
static int32_t copy_line(plat_file *stream)
{
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

int32_t rem_copy(plat_file *stream, const char *word)
{
    char start[word_size + line_step];
    auto length = static_cast<int32_t>(strlen(word));
    const unsigned char *end = line_ready_end(length);
    memcpy(start, word, static_cast<size_t>(length));
    start[length++] = ' ';
    if (end == nullptr) {
        out_bytes(start, static_cast<size_t>(length));
        return copy_line(stream);
    }
    line_write_ready(start, length, end, 1);
    return STATEMENT_DONE;
}
