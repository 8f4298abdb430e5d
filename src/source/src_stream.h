// Source stream: the script as one logical text.
//
// A window of the file is read, deciphered and folded in place, once: CR LF becomes a line feed, a backslash
// at a line's end joins two lines and leaves nothing, byte 26 ends the source. From then on everybody reads
// characters between src.pos and src.end, one after the other; no reader knows blocks, keys
// or continuations. After the last one stands a line feed that isn't part of the text, so that a search for
// the end of anything stops there.
//
// The fold keeps the order in which characters have always been looked at: the character after a backslash or
// after a CR that no line feed follows is taken as it is, so two backslashes at a line's end join nothing;
// and a NUL there is lost.
//
// The window slides between statements. A statement that runs past its end reads on by src_more, which says
// what of the text has to stay where it is.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct plat_file;

// ---- The key ----

// The key of an enciphered source. The key runs once from 0 to key_len - 1 and then cycles from key_restart
// on, so 0 <= key_restart < key_len. Without a key, key_bytes is null and key_len 0.
struct key_record {
    unsigned char head[12];   // belongs to key_load
    unsigned char *key_bytes; // from malloc
    int16_t key_len;
    int16_t key_restart;
    int16_t key_pos; // index of the next key byte
};
extern key_record src_key;

// The hook that may fill the key for a source: key_bytes, key_len, key_restart and key_pos. It goes by the
// file's name alone. Null: no source is enciphered.
extern void (*key_load)(const char *name, key_record *key);

// ---- The window ----

struct src_window {
    unsigned char *pos; // the next character
    unsigned char *end; // after the last character: a line feed that is no part of the text
    unsigned char *low; // a statement that begins after this place begins with src_more
};
extern src_window src;

// Bytes after end that may be read, whatever they hold.
constexpr size_t src_slack = 64;

// Bytes before pos that may always be written: what was read stands there, or nothing.
constexpr size_t src_front = 4608;

// A limit for tests on the bytes that one read asks for, so that the window's end is met anywhere.
extern size_t src_read_limit;

// Starts a source on an opened stream: key hook, magic test, first window. The stream stays its opener's.
void src_open(const char *name, plat_file *stream);

// Frees the key of the source that ends, if it has one.
void src_close();

// Reads more of the source. The unread characters move down to keep, which becomes pos; what stands before
// keep stays as it is. Null: nothing has to stay. Kept texts of one statement may come to src_kept_max bytes
// in src_kept_pieces pieces. False at the end of the source: then nothing was read, and pos and end are the
// same if they were.
bool src_more(unsigned char *keep);
constexpr size_t src_kept_max = 40960;
constexpr size_t src_kept_pieces = 101;

// At the end of the source, with nothing left to read: makes room for one character at src.end, which is read
// by then.
void src_append();

// Between two statements: slides the window if little of it is left.
inline void src_start_statement()
{
    if (src.pos > src.low)
        (void)src_more(nullptr);
}

// The next character, 0 to 255, left in the source or taken; -1 at the end of the source, which stays the
// end. Nothing that was read before has to stay.
inline int src_peek()
{
    return src.pos < src.end || src_more(nullptr) ? *src.pos : -1;
}

inline int src_getc()
{
    return src.pos < src.end || src_more(nullptr) ? *src.pos++ : -1;
}

// A piece of the text, which stands in the window until the source is read on.
struct src_piece {
    const unsigned char *text;
    size_t size;
    bool ends_line; // its last character is a line feed
};

// Takes the next characters of a line, at most size; none of them at the end of the source. What stands
// before keep stays where it is.
src_piece src_take_line(size_t size, unsigned char *keep);

// Reads a line into buffer, its line feed too, at most size characters, and a NUL after them (so the buffer
// has size + 1 bytes). Gives the number of characters stored; 0 at the end of the source.
int32_t src_read_line(char *buffer, int32_t size);

// The same for a line that goes on after a backslash only across CR LF: a line that was joined across a lone
// line feed ends there, with its backslash. The first character was looked at before.
int32_t src_read_line_crlf(char *buffer, int32_t size);

// Reads over white space and gives the first other character, which stays in the source; a NUL doesn't.
int src_skip_space();

// ---- Where the source is read ----

// Line of the file on which the next character stands, from 1. Counted when asked for.
uint32_t src_line();

// Counts the lines up to a place at or after pos; for who is going to change the text before it.
void src_settle_lines(const unsigned char *place);

// Position of the next character in the logical text, from 0.
int64_t src_tell();

// True if the whole file was read: false while text is left, or if byte 26 or a statement ended it early.
bool src_ended();

// What the fold took out before a character of the window, as far as somebody may have to know.
struct src_fold_mark {
    uint32_t place; // of the character, from the window's start
    uint32_t joins; // continuations
    bool joined_lf; // one of them across a lone line feed
    bool lost_nul;  // a NUL
};

// What was taken out before the character at a place from pos on; null: nothing.
src_fold_mark *src_fold_mark_at(const unsigned char *place);
