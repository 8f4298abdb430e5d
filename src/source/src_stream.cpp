// The pushback and the counters are kept exactly as the slow path tells it; the fast paths here and in the
// header only ever run over characters for which the slow path would do nothing but hand them out.
#include "source/src_stream.h"

#include "platform/platform.h"
#include "support/char_masks.h"
#include "support/text.h"

#include <stdlib.h>
#include <string.h>

constexpr size_t src_block_size = 65536; // bytes of one read
constexpr size_t src_kept_size = 4096;   // bytes in front of a block that can still be gone back to in a pipe
constexpr char src_magic[] = "Murivo";   // with its NUL, in front of an enciphered source
constexpr size_t src_magic_size = sizeof src_magic; // 7 bytes

key_record src_key;
void (*key_load)(const char *name, key_record *key);
src_line_state src_lines;
src_buffer src_raw;

static unsigned char src_block[src_kept_size + src_block_size + src_slack];
static int64_t src_block_offset; // position in the file of src_raw.end
static bool src_block_last;      // nothing follows the block

// The pushback: a character that was pushed back, 0 for an empty slot. Filled in the order A, B, C and
// emptied in the order C, B, A.
static int32_t pushback_a;
static int32_t pushback_b;
static int32_t pushback_c;

// Lets the fast path run, or keeps it out while something odd is in force.
static void plain_update()
{
    bool odd = pushback_a != 0 || src_lines.line_pending != 0 || src_key.key_bytes != nullptr;
    src_raw.plain_end = odd ? src_raw.pos : src_raw.end;
}

// Reads the next block behind the last bytes of the one before. False at the end of the file; a read error
// counts as that. A block that isn't full is the last one, and nobody asks again. It stays out of the code of
// its callers, which are hot.
__attribute__((noinline)) static bool block_fill(plat_file *stream)
{
    if (src_block_last)
        return false;
    size_t kept = static_cast<size_t>(src_raw.end - src_block);
    if (kept > src_kept_size)
        kept = src_kept_size;
    memmove(src_block, src_raw.end - kept, kept);
    size_t size = plat_read(stream, src_block + kept, src_block_size);
    src_raw.pos = src_block + kept;
    src_raw.end = src_raw.pos + size;
    src_block_offset += static_cast<int64_t>(size);
    src_block_last = size < src_block_size;
    plain_update();
    return size > 0;
}

int64_t src_raw_tell()
{
    return src_block_offset - (src_raw.end - src_raw.pos);
}

bool src_ended()
{
    return src_block_last && src_raw.pos == src_raw.end;
}

// Moves the raw position, inside the block if it lies there.
static int raw_seek(plat_file *stream, int64_t offset)
{
    int64_t block_start = src_block_offset - (src_raw.end - src_block);
    if (offset >= block_start && offset <= src_block_offset) {
        src_raw.pos = src_block + (offset - block_start);
        return 0;
    }
    int result = plat_seek(stream, offset);
    if (result == 0) {
        src_raw.pos = src_raw.end = src_block;
        src_block_offset = offset;
        src_block_last = false;
    }
    return result;
}

// The next byte, decoded, left in the source. -1 at the end.
static int raw_peek(plat_file *stream)
{
    if (src_raw.pos == src_raw.end && !block_fill(stream))
        return -1;
    int c = *src_raw.pos;
    if (src_key.key_bytes != nullptr)
        c ^= src_key.key_bytes[src_key.key_pos];
    return c == 26 ? -1 : c;
}

// Steps over the byte that raw_peek gave.
static void raw_step()
{
    src_raw.pos++;
    if (src_key.key_bytes == nullptr)
        return;
    src_key.key_pos++;
    if (src_key.key_pos == src_key.key_len)
        src_key.key_pos = src_key.key_restart;
}

int src_rawc(plat_file *stream)
{
    int c = raw_peek(stream);
    if (c != -1)
        raw_step();
    return c;
}

static void key_free()
{
    free(src_key.key_bytes);
    src_key.key_bytes = nullptr;
    src_key.key_len = 0;
}

void src_open(const char *name, plat_file *stream)
{
    src_raw = src_buffer{src_block, src_block, src_block};
    src_block_offset = 0;
    src_block_last = false;
    if (key_load != nullptr)
        key_load(name, &src_key);
    src_reset();
    char head[src_magic_size + 1];
    for (size_t i = 0; i < src_magic_size; i++)
        head[i] = static_cast<char>(src_rawc(stream));
    head[src_magic_size] = 0;
    if (memcmp(head, src_magic, src_magic_size) != 0) {
        key_free();
        (void)raw_seek(stream, 0);
    }
    plain_update();
}

void src_close()
{
    key_free();
}

void src_count_lines()
{
    src_lines = src_line_state{1, 1, 1, 1, 0};
    plain_update();
}

void src_reset()
{
    pushback_a = pushback_b = pushback_c = 0;
    src_lines.line_pending = 0;
    plain_update();
}

// Counts a line feed that is handed out.
static void count_line_end()
{
    src_lines.line_physical++;
    if (src_lines.line_counting == 0)
        return;
    src_lines.line_pending = 1;
    src_lines.line_current++;
}

// A character is asked for: a line end that stood before it is settled.
static void settle_line_end()
{
    if (src_lines.line_pending == 0 || src_lines.line_counting == 0)
        return;
    src_lines.line_pending = 0;
    src_lines.line_statement = src_lines.line_current;
}

void src_settle()
{
    settle_line_end();
    plain_update();
}

// Counts a line feed that a continuation swallows. The two kinds of continuation differ in whether they
// look at line_counting.
static void count_continuation(bool always)
{
    src_lines.line_physical++;
    if (always || src_lines.line_counting != 0)
        src_lines.line_current++;
}

static int pushback_take()
{
    int32_t *slot = pushback_c != 0 ? &pushback_c : pushback_b != 0 ? &pushback_b : &pushback_a;
    int c = *slot;
    *slot = 0;
    return c;
}

static void pushback_put(int c)
{
    if (pushback_a == 0)
        pushback_a = c;
    else if (pushback_b != 0)
        pushback_c = c;
    else
        pushback_b = c;
}

// Joins lines: c was read from the source; while it is a backslash at a line's end, the next line's first
// byte takes its place. What stands behind any other backslash is pushed back.
static int join_lines(int c, bool lf_continues, plat_file *stream)
{
    while (c == '\\') {
        int d = src_rawc(stream);
        if (d == '\n' && lf_continues) {
            count_continuation(true);
        } else if (d == '\r') {
            int e = src_rawc(stream);
            if (e != '\n') {
                pushback_put(e);
                pushback_put(d);
                return c;
            }
            count_continuation(false);
        } else {
            pushback_put(d);
            return c;
        }
        c = src_rawc(stream);
    }
    return c;
}

static int getc_logical(bool lf_continues, plat_file *stream)
{
    settle_line_end();
    if (pushback_a != 0) {
        int c = pushback_take();
        if (c == '\n')
            count_line_end();
        return c;
    }
    int c = join_lines(src_rawc(stream), lf_continues, stream);
    if (c == '\r') {
        int e = src_rawc(stream);
        if (e != '\n') {
            pushback_put(e);
            return c;
        }
        c = e;
    }
    if (c == '\n')
        count_line_end();
    return c;
}

int src_getc_slow(plat_file *stream)
{
    // The commonest odd characters by far are a line feed and the first one of the next line.
    bool ready = src_raw.pos < src_raw.end && pushback_a == 0 && src_key.key_bytes == nullptr;
    if (ready && src_lines.line_pending != 0 && src_plain.plain[*src_raw.pos]) {
        settle_line_end();
        plain_update();
        return *src_raw.pos++;
    }
    if (ready && *src_raw.pos == '\n') {
        src_settle();
        src_take_line_end();
        return '\n';
    }
    int c = getc_logical(true, stream);
    plain_update();
    return c;
}

int src_getc_crlf(plat_file *stream)
{
    int c = getc_logical(false, stream);
    plain_update();
    return c;
}

void src_ungetc(int c)
{
    if (c == '\n') {
        src_lines.line_physical--;
        if (src_lines.line_counting != 0) {
            src_lines.line_current--;
            if (src_lines.line_pending != 0)
                src_lines.line_pending = 0;
            else
                src_lines.line_statement--;
        }
    }
    pushback_put(c);
    plain_update();
}

int src_seek(plat_file *stream, int64_t offset)
{
    src_reset();
    int result = raw_seek(stream, offset);
    plain_update();
    if (result != 0 || src_key.key_len == 0)
        return result;
    int64_t p = src_raw_tell();
    int64_t cycle = src_key.key_len - src_key.key_restart;
    if (p >= src_key.key_restart)
        p = src_key.key_restart + (p - src_key.key_restart) % cycle;
    src_key.key_pos = static_cast<int16_t>(p);
    return 0;
}

int64_t src_tell(plat_file *)
{
    return src_raw_tell() - (pushback_a != 0) - (pushback_b != 0) - (pushback_c != 0);
}

size_t src_take_plain(const char **run, size_t limit)
{
    const unsigned char *start = src_raw.pos;
    const unsigned char *end = src_raw.plain_end;
    if (end <= start)
        return 0;
    if (static_cast<size_t>(end - start) > limit)
        end = start + limit;
    const unsigned char *p = plain_run_end(start, end);
    src_raw.pos = p;
    *run = reinterpret_cast<const char *>(start);
    return static_cast<size_t>(p - start);
}

static int32_t read_line(char *buffer, int32_t size, bool lf_continues, plat_file *stream)
{
    int32_t stored = 0;
    while (stored < size) {
        const char *run;
        size_t length = src_take_plain(&run, static_cast<size_t>(size - stored));
        if (length > 0) {
            memcpy(buffer + stored, run, length);
            stored += static_cast<int32_t>(length);
            continue;
        }
        int c = lf_continues ? src_getc(stream) : src_getc_crlf(stream);
        if (c == -1)
            break;
        buffer[stored++] = static_cast<char>(c);
        if (c == '\n')
            break;
    }
    if (size > 0)
        buffer[stored] = 0;
    return stored;
}

int32_t src_read_line(char *buffer, int32_t size, plat_file *stream)
{
    return read_line(buffer, size, true, stream);
}

int32_t src_read_line_crlf(char *buffer, int32_t size, plat_file *stream)
{
    return read_line(buffer, size, false, stream);
}

void src_read_word(plat_file *stream, char *buffer, int32_t size)
{
    int c;
    do
        c = src_getc(stream);
    while (char_is(c, CHAR_WHITE));
    if (c == -1)
        return;
    int32_t stored = 0;
    for (; c != -1; c = src_getc(stream)) {
        if (char_is(c, CHAR_WHITE) || stored == size - 1) {
            src_ungetc(c);
            break;
        }
        buffer[stored++] = static_cast<char>(c);
    }
    buffer[stored] = 0;
}

int src_skip_space(plat_file *stream)
{
    int c;
    do
        c = src_getc(stream);
    while (char_is(c, CHAR_WHITE));
    src_ungetc(c);
    return c;
}
