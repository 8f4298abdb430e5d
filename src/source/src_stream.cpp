// The window is part of one buffer: bytes in front for what is put back, the main part that one read fills,
// and a reserve for the statement that runs past the main part's end. There the source is read in small
// chunks, each after the text that has to stay, so that less than a chunk is lost for each kept piece and the
// reserve is never used up.
#include "source/src_stream.h"

#include "platform/platform.h"
#include "support/scan.h"

#include <assert.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

constexpr size_t main_size = 131072;
constexpr size_t chunk_size = 4096;
constexpr size_t reserve_size = (src_kept_pieces + 3) * chunk_size + src_kept_max;
constexpr size_t window_size = main_size + reserve_size;
constexpr size_t slide_below = 512; // characters that are left of the window when it slides

constexpr char src_magic[] = "Murivo";              // with its NUL, in front of an enciphered source
constexpr size_t src_magic_size = sizeof src_magic; // 7 bytes

key_record src_key;
void (*key_load)(const char *name, key_record *key);
src_window src;
size_t src_read_limit = SIZE_MAX;

static_assert(src_unread_max + chunk_size <= main_size, "a chunk fits after the unread text");

static unsigned char src_buffer[src_front + window_size + src_slack];
static unsigned char *const window_start = src_buffer + src_front;
static unsigned char *const main_end = window_start + main_size;

static plat_file *src_stream; // the current source, which its opener closes
static bool file_ended;       // the file has no more bytes, as far as was read
static bool source_ended;     // the window has the last text: the file has ended, or byte 26 was met
static bool cut_short;        // byte 26 was met, and bytes of the file are left
static unsigned char tail[2]; // bytes that can't be folded without the next one
static size_t tail_size;      // 0 to 2

// The continuations that the fold removed before one character.
struct fold_record {
    uint32_t offset; // of the character, from window_start
    uint32_t joins;  // continuations
    bool across_lf;  // one of them across a lone line feed
};

// In order of their offsets, which differ; of the unread text, and of what was read since the window slid.
static fold_record folds[window_size + 1];
static size_t folds_used;

// The first record at or after an offset; folds + folds_used if there is none.
static fold_record *fold_lower_bound(size_t offset)
{
    auto before = [](const fold_record &fold, size_t wanted) { return fold.offset < wanted; };
    return std::lower_bound(folds, folds + folds_used, offset, before);
}

// Lines counted so far.
static struct {
    uint32_t line;             // at the pointer
    const unsigned char *upto; // everything before it is counted
    size_t folds;              // records that are counted
} line_counter;

// ---- Reading ----

void src_close()
{
    free(src_key.key_bytes);
    src_key.key_bytes = nullptr;
    src_key.key_len = 0;
}

static void decipher(unsigned char *bytes, size_t size)
{
    if (src_key.key_bytes == nullptr)
        return;
    for (size_t i = 0; i < size; i++) {
        bytes[i] ^= src_key.key_bytes[src_key.key_pos];
        if (++src_key.key_pos == src_key.key_len)
            src_key.key_pos = src_key.key_restart;
    }
}

// Reads bytes of the file to a buffer, at most size. Returns their number.
static size_t read_bytes(unsigned char *buffer, size_t size)
{
    size = std::min(size, src_read_limit);
    size_t got = plat_read(src_stream, buffer, size);
    file_ended = got < size;
    return got;
}

// Writes a character that was looked at and put back. Returns false at byte 26, which ends the source.
static bool fold_returned(unsigned char **to, unsigned char c)
{
    if (c == 26)
        return false;
    if (c != 0)
        *(*to)++ = c;
    return true;
}

// Records a continuation at the end of the text that the fold has written.
static void fold_join(const unsigned char *to, bool lf)
{
    auto offset = static_cast<uint32_t>(to - window_start);
    if (folds_used == 0 || folds[folds_used - 1].offset != offset) {
        assert(folds_used == 0 || folds[folds_used - 1].offset < offset);
        assert(offset <= window_size);
        folds[folds_used++] = fold_record{offset, 0, false};
    }
    folds[folds_used - 1].joins++;
    folds[folds_used - 1].across_lf |= lf;
}

// Folds a backslash, a CR or byte 26 at from. Returns the number of bytes folded; 0: byte 26, or too few
// bytes were read.
static size_t fold_special(unsigned char **to, const unsigned char *from, size_t left)
{
    if (*from == 26 || (left == 1 && !file_ended) ||
        (left == 2 && !file_ended && from[0] == '\\' && from[1] == '\r'))
        return 0;
    size_t size = 1;
    if (from[0] == '\\' && left > 1) {
        if (from[1] == '\n') {
            fold_join(*to, true);
            return 2;
        }
        if (left > 2 && from[1] == '\r' && from[2] == '\n') {
            fold_join(*to, false);
            return 3;
        }
        if (from[1] == '\r') {
            *(*to)++ = '\\';
            size = 2;
        }
    } else if (left > 1 && from[1] == '\n') {
        *(*to)++ = '\n';
        return 2;
    }
    *(*to)++ = from[size - 1];
    if (size == left)
        return size;
    return fold_returned(to, from[size]) ? size + 1 : size;
}

// Folds the bytes from from up to raw_end onto src.end, which is at or before from, and moves src.end.
static void fold(const unsigned char *from, const unsigned char *raw_end)
{
    unsigned char *to = src.end;
    tail_size = 0;
    while (from < raw_end) {
        size_t run = scan_fold(from, static_cast<size_t>(raw_end - from));
        if (to != from)
            memmove(to, from, run);
        to += run;
        from += run;
        if (from == raw_end)
            break;
        size_t taken = fold_special(&to, from, static_cast<size_t>(raw_end - from));
        from += taken;
        if (taken > 0)
            continue;
        if (*from == 26) {
            source_ended = true;
            cut_short = raw_end - from > 1;
            break;
        }
        tail_size = static_cast<size_t>(raw_end - from);
        memcpy(tail, from, tail_size);
        break;
    }
    source_ended |= file_ended;
    src.end = to;
    *src.end = '\n';
    src.low = source_ended ? src.end : std::min(src.end - slide_below, main_end);
}

void src_open(const char *name, plat_file *stream)
{
    src_stream = stream;
    src.pos = src.end = window_start;
    source_ended = cut_short = false;
    folds_used = 0;
    line_counter = {1, window_start, 0};
    window_start[-1] = 0;
    if (key_load != nullptr)
        key_load(name, &src_key);

    size_t size = 0;
    do
        size += read_bytes(window_start + size, main_size - size);
    while (size < src_magic_size && !file_ended);
    unsigned char head[src_magic_size] = "";
    memcpy(head, window_start, std::min(size, src_magic_size));
    decipher(head, src_magic_size);
    bool magic = size >= src_magic_size && memcmp(head, src_magic, src_magic_size) == 0;
    if (!magic)
        src_close();
    unsigned char *text = window_start + (magic ? src_magic_size : 0);
    decipher(text, static_cast<size_t>(window_start + size - text));
    fold(text, window_start + size);
}

// Counts the lines before a pointer that aren't counted yet.
static void count_lines(const unsigned char *upto)
{
    assert(upto >= line_counter.upto);
    line_counter.line += static_cast<uint32_t>(count_line_feeds(line_counter.upto, upto));
    line_counter.upto = upto;
    auto offset = static_cast<uint32_t>(upto - window_start);
    for (; line_counter.folds < folds_used && folds[line_counter.folds].offset <= offset;
         line_counter.folds++)
        line_counter.line += folds[line_counter.folds].joins;
}

// Moves the unread text down to a pointer, which becomes pos.
static void move_unread(unsigned char *to)
{
    assert(src.pos > to);
    count_lines(src.pos);
    auto distance = static_cast<uint32_t>(src.pos - to);
    auto pos_offset = static_cast<uint32_t>(src.pos - window_start);
    auto passed = static_cast<size_t>(fold_lower_bound(pos_offset) - folds);
    folds_used -= passed;
    memmove(folds, folds + passed, folds_used * sizeof *folds);
    for (size_t i = 0; i < folds_used; i++)
        folds[i].offset -= distance;
    auto size = static_cast<size_t>(src.end - src.pos);
    // unjoin and the statement loop look at the last character that was read.
    if (to == window_start)
        to[-1] = src.pos[-1];
    memmove(to, src.pos, size);
    src.pos = to;
    src.end = to + size;
    line_counter.upto = to;
    line_counter.folds -= passed;
}

bool src_more(unsigned char *keep)
{
    if (source_ended)
        return false;
    // pos may be before the window after an unjoin: then nothing moves.
    unsigned char *to = keep != nullptr ? keep : window_start;
    if (src.pos > to)
        move_unread(to);
    const unsigned char *before = src.end;
    do {
        unsigned char *raw = src.end;
        assert(raw + chunk_size <= window_start + window_size);
        size_t wanted = raw + chunk_size < main_end ? static_cast<size_t>(main_end - raw) : chunk_size;
        size_t undecided = tail_size;
        memcpy(raw, tail, undecided);
        size_t size = read_bytes(raw + undecided, wanted - undecided);
        decipher(raw + undecided, size);
        fold(raw, raw + undecided + size);
    } while (src.end == before && !source_ended);
    return src.end > before;
}

unsigned char *src_rewrite(unsigned char *to, const void *from, size_t size, const unsigned char *taken)
{
    assert(to >= src_buffer && to + size <= src.end);
    // Most text doesn't move.
    if (memcmp(to, from, size) != 0) {
        count_lines(taken);
        memmove(to, from, size);
    }
    return to + size;
}

void src_append(unsigned char c)
{
    assert(src.pos == src.end && source_ended);
    *src.end++ = c;
    src.pos = src.end;
    *src.end = '\n';
}

bool src_lose_nul(unsigned char *at)
{
    assert(at >= src.pos && at <= src.end);
    if (at == src.end || *at != 0)
        return false;
    memmove(src.pos + 1, src.pos, static_cast<size_t>(at - src.pos));
    *src.pos++ = 0;
    return true;
}

bool src_ended()
{
    if (!source_ended || src.pos < src.end || cut_short)
        return false;
    unsigned char byte;
    return file_ended || plat_read(src_stream, &byte, 1) == 0;
}

// ---- Lines ----

uint32_t src_line()
{
    count_lines(src.pos);
    return line_counter.line;
}

// Characters from pos on up to the next one before which a line was joined across a lone line feed; size if
// there is none among so many.
static size_t joined_lf_distance(size_t size)
{
    auto offset = static_cast<size_t>(src.pos - window_start);
    for (auto *fold = fold_lower_bound(offset + 1); fold < folds + folds_used && fold->offset - offset < size;
         fold++)
        if (fold->across_lf)
            return fold->offset - offset;
    return size;
}

// Puts the backslash and the line feed of a continuation before pos back into the text, if there is one
// across a lone line feed.
static void unjoin()
{
    auto offset = static_cast<size_t>(src.pos - window_start);
    fold_record *fold = fold_lower_bound(offset);
    if (fold == folds + folds_used || fold->offset != offset || !fold->across_lf)
        return;
    count_lines(src.pos);
    line_counter.line--; // the line feed is counted when it is read
    fold->across_lf = false;
    src.pos -= 2;
    memcpy(src.pos, "\\\n", 2);
    line_counter.upto = src.pos;
}

src_piece src_take_line(size_t size, unsigned char *keep)
{
    if (src.pos == src.end && !src_more(keep))
        return {src.pos, 0, false};
    auto left = static_cast<size_t>(src.end - src.pos);
    size_t limit = std::min(size, left);
    size_t line = scan_line(src.pos, limit);
    src_piece piece{src.pos, line + (line < limit), line < limit};
    src.pos += piece.size;
    return piece;
}

static int32_t read_line(char *buffer, int32_t size, bool lf_continues)
{
    int32_t stored = 0;
    src_piece piece{};
    do {
        auto left = static_cast<size_t>(size - stored);
        (void)src_peek(); // so that the continuations before it are known
        // A NUL was lost if it was read last; the character after it wasn't looked at yet.
        if (!lf_continues && (stored > 0 || src.pos[-1] == 0))
            unjoin();
        piece = src_take_line(lf_continues ? left : joined_lf_distance(left), nullptr);
        memcpy(buffer + stored, piece.text, piece.size);
        stored += static_cast<int32_t>(piece.size);
    } while (stored < size && piece.size > 0 && !piece.ends_line);
    buffer[stored] = 0;
    return stored;
}

int32_t src_read_line(char *buffer, int32_t size)
{
    return read_line(buffer, size, true);
}

int32_t src_read_line_crlf(char *buffer, int32_t size)
{
    return read_line(buffer, size, false);
}
