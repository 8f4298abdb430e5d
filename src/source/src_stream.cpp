// The window is part of one buffer: room in front for what is put back, the main part that one read fills,
// and after it a reserve for the statement that runs past the main part's end. There the source is read on in
// small chunks, each after the text that has to stay, so that of each chunk at most the gap before the next
// kept piece is lost and the reserve is never used up.
#include "source/src_stream.h"

#include "platform/platform.h"
#include "support/scan.h"
#include "support/text.h"

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

static unsigned char src_buffer[src_front + window_size + src_slack];
static unsigned char *const window_start = src_buffer + src_front;
static unsigned char *const main_end = window_start + main_size;

static plat_file *src_stream; // the current source; not ours
static bool file_ended;       // the file has no more bytes, as far as was read
static bool source_ended;     // no more text comes: the file has ended, or byte 26 was met
static bool cut_short;        // byte 26 was met, and bytes of the file are left
static int64_t window_offset; // position of window_start in the logical text
static unsigned char tail[2]; // bytes that the fold can't decide on without the next one
static size_t tail_size;      // 0 to 2

// What the fold took out, by place. At most one mark stands at a place, and two bytes at least were taken out
// for each, but for a lost NUL, which a backslash or CR in the text has.
static src_fold_mark marks[window_size / 2 + 1];
static size_t marks_used;

// Lines counted so far.
static struct {
    uint32_t line;              // at the place counted
    const unsigned char *place; // everything before it is counted
    size_t marks;               // marks that are counted
} counted;

// ---- Reading ----

static void key_free()
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

// Reads bytes of the file to a place, at most size. Gives their number.
static size_t read_bytes(unsigned char *place, size_t size)
{
    if (size > src_read_limit)
        size = src_read_limit;
    size_t got = plat_read(src_stream, place, size);
    file_ended = got < size;
    return got;
}

// The mark at the end of the text that the fold has written.
static src_fold_mark *mark_here(const unsigned char *to)
{
    auto place = static_cast<uint32_t>(to - window_start);
    if (marks_used == 0 || marks[marks_used - 1].place != place)
        marks[marks_used++] = src_fold_mark{place, 0, false, false};
    return &marks[marks_used - 1];
}

// Writes a character that isn't looked at. Gives false at byte 26, which ends the source.
static bool fold_protected(unsigned char **to, unsigned char c)
{
    if (c == 26)
        return false;
    if (c == 0)
        mark_here(*to)->lost_nul = true;
    else
        *(*to)++ = c;
    return true;
}

static void fold_join(const unsigned char *to, bool lf)
{
    src_fold_mark *mark = mark_here(to);
    mark->joins++;
    mark->joined_lf |= lf;
}

// Folds what begins at from, a backslash, a CR or byte 26. Gives the bytes that it takes; 0: byte 26, or too
// few of them are there.
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
    return fold_protected(to, from[size]) ? size + 1 : size;
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
    src.low = source_ended ? src.end : src.end - slide_below;
    if (!source_ended && src.low > main_end)
        src.low = main_end;
}

void src_open(const char *name, plat_file *stream)
{
    src_stream = stream;
    src.pos = src.end = window_start;
    source_ended = cut_short = false;
    window_offset = 0;
    marks_used = 0;
    counted = {1, window_start, 0};
    if (key_load != nullptr)
        key_load(name, &src_key);

    size_t size = 0;
    do
        size += read_bytes(window_start + size, main_size - size);
    while (size < src_magic_size && !file_ended);
    unsigned char head[src_magic_size] = "";
    memcpy(head, window_start, size < src_magic_size ? size : src_magic_size);
    decipher(head, src_magic_size);
    bool magic = size >= src_magic_size && memcmp(head, src_magic, src_magic_size) == 0;
    if (!magic)
        key_free();
    unsigned char *text = window_start + (magic ? src_magic_size : 0);
    decipher(text, static_cast<size_t>(window_start + size - text));
    fold(text, window_start + size);
}

void src_close()
{
    key_free();
}

// Moves the unread text down to a place, which becomes pos.
static void move_unread(unsigned char *place)
{
    src_settle_lines(src.pos);
    auto distance = static_cast<uint32_t>(src.pos - place);
    auto pos_place = static_cast<uint32_t>(src.pos - window_start);
    size_t kept = 0;
    size_t kept_counted = 0;
    for (size_t i = 0; i < marks_used; i++) {
        if (marks[i].place < pos_place)
            continue;
        kept_counted += i < counted.marks;
        marks[kept] = marks[i];
        marks[kept++].place -= distance;
    }
    marks_used = kept;
    auto size = static_cast<size_t>(src.end - src.pos);
    // One character of what was read goes along, so that a reader of single characters can take a step back.
    if (place == window_start)
        place[-1] = src.pos[-1];
    memmove(place, src.pos, size);
    window_offset += distance;
    src.pos = place;
    src.end = place + size;
    counted.place = place;
    counted.marks = kept_counted;
}

bool src_more(unsigned char *keep)
{
    if (source_ended)
        return false;
    move_unread(keep != nullptr ? keep : window_start);
    const unsigned char *before = src.end;
    do {
        unsigned char *raw = src.end;
        if (raw + 2 * chunk_size > window_start + window_size)
            return false; // somebody looks further ahead than the window reaches; what is kept always fits
        size_t room = raw + chunk_size < main_end ? static_cast<size_t>(main_end - raw) : chunk_size;
        size_t undecided = tail_size;
        memcpy(raw, tail, undecided);
        size_t size = read_bytes(raw + undecided, room - undecided);
        decipher(raw + undecided, size);
        fold(raw, raw + undecided + size);
    } while (src.end == before && !source_ended);
    return src.end > before;
}

void src_append()
{
    src.pos = ++src.end;
    *src.end = '\n';
}

bool src_ended()
{
    if (!source_ended || src.pos < src.end || cut_short)
        return false;
    unsigned char byte;
    return file_ended || plat_read(src_stream, &byte, 1) == 0;
}

// ---- Lines and marks ----

void src_settle_lines(const unsigned char *place)
{
    if (place < counted.place)
        counted.line -= static_cast<uint32_t>(count_line_feeds(place, counted.place));
    else
        counted.line += static_cast<uint32_t>(count_line_feeds(counted.place, place));
    counted.place = place;
    auto number = static_cast<uint32_t>(place - window_start);
    for (; counted.marks < marks_used && marks[counted.marks].place <= number; counted.marks++)
        counted.line += marks[counted.marks].joins;
}

uint32_t src_line()
{
    src_settle_lines(src.pos);
    return counted.line;
}

int64_t src_tell()
{
    return window_offset + (src.pos - window_start);
}

// Index of the first mark at or after a place.
static size_t mark_lower_bound(size_t place)
{
    auto before = [](const src_fold_mark &mark, size_t wanted) { return mark.place < wanted; };
    return static_cast<size_t>(std::lower_bound(marks, marks + marks_used, place, before) - marks);
}

src_fold_mark *src_fold_mark_at(const unsigned char *place)
{
    auto number = static_cast<size_t>(place - window_start);
    size_t i = mark_lower_bound(number);
    return i < marks_used && marks[i].place == number ? &marks[i] : nullptr;
}

// ---- Lines and words ----

// Characters from pos on up to the next one before which a line was joined across a lone line feed; size if
// there is none among so many.
static size_t joined_lf_distance(size_t size)
{
    auto pos_place = static_cast<size_t>(src.pos - window_start);
    for (size_t i = mark_lower_bound(pos_place + 1); i < marks_used && marks[i].place - pos_place < size; i++)
        if (marks[i].joined_lf)
            return marks[i].place - pos_place;
    return size;
}

// Puts the backslash and the line feed of a continuation before pos back into the text.
static void unjoin(src_fold_mark *mark)
{
    src_settle_lines(src.pos);
    counted.line--; // the line feed is counted when it is read
    mark->joined_lf = false;
    *--src.pos = '\n';
    *--src.pos = '\\';
    counted.place = src.pos;
}

src_piece src_take_line(size_t size, unsigned char *keep)
{
    if (src.pos == src.end && !src_more(keep))
        return {src.pos, 0, false};
    auto left = static_cast<size_t>(src.end - src.pos);
    size_t limit = size < left ? size : left;
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
        auto room = static_cast<size_t>(size - stored);
        (void)src_peek(); // at the window's end only more of the source tells
        src_fold_mark *mark = src_fold_mark_at(src.pos);
        if (!lf_continues && stored > 0 && mark != nullptr && mark->joined_lf)
            unjoin(mark);
        piece = src_take_line(lf_continues ? room : joined_lf_distance(room), nullptr);
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

int src_skip_space()
{
    int c = src_peek();
    for (; char_is(c, CHAR_WHITE); c = src_peek())
        src.pos++;
    // Kept: a NUL can't be given back to the source.
    if (c == 0)
        src.pos++;
    return c;
}
