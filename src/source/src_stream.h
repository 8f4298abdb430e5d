// Source stream: the script as one logical text.
//
// A window of the file is read, deciphered and folded in place, once: CR LF becomes a line feed, a backslash
// at a line's end joins two lines and leaves nothing, byte 26 ends the source. From then on everybody reads
// characters between src.pos and src.end, one after the other; no reader knows blocks, keys
// or continuations. After the last one is a line feed that isn't part of the text, so that a search for
// the end of anything stops there.
//
// A character that was looked at can be returned to the source, and is then taken as it is; but a NUL can't
// be returned: it is lost. So the character after a backslash or after a CR that no line feed follows, which
// was looked at, is taken as it is: two backslashes at a line's end join nothing, and a NUL there is lost.
//
// The window slides between statements. A statement that runs past its end reads on by src_more, whose caller
// says what of the text has to stay where it is.
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
    unsigned char *low; // a statement that begins after this begins with src_more
};
extern src_window src;

// Bytes after end that may be read, whatever they hold.
constexpr size_t src_slack = 64;

// Bytes before pos that can always be written: the word of a statement and what is put back.
constexpr size_t src_front = 256;

// A limit for tests on the bytes that one read asks for, so that the window's end is met anywhere.
extern size_t src_read_limit;

// Starts a source on an opened stream: key hook, magic test, first window. The stream stays its opener's.
void src_open(const char *name, plat_file *stream);

// Frees the key of the source that ends, if it has one.
void src_close();

// Reads more of the source. The unread characters move down to keep, which becomes pos; what is before keep
// stays as it is. Null: nothing has to stay, and then src_unread_max characters may be unread. The texts that
// one statement keeps may come to src_kept_max bytes in src_kept_pieces pieces. Returns false at the end of
// the source: then nothing was read, and pos and end are the same if they were.
bool src_more(unsigned char *keep);
constexpr size_t src_unread_max = 65536 + 2;
constexpr size_t src_kept_max = 40960;
constexpr size_t src_kept_pieces = 101;

// Changes text that was read: size characters at to become those at from, which may overlap them. All text
// before taken counts as read; line feeds count where the source had them. Returns the end of the new text.
unsigned char *src_rewrite(unsigned char *to, const void *from, size_t size, const unsigned char *taken);

// At the end of the source, with nothing left to read: adds a character to the text, as one that was read.
void src_append(unsigned char c);

// The character at a pointer, at or after pos, was looked at and is returned to the source: if it is a NUL,
// it is lost. The characters from pos up to it move up by one, and pos with them. Returns true if one was
// lost.
bool src_lose_nul(unsigned char *at);

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

// The same, and reads over it. What is before keep stays as it is.
inline int src_getc(unsigned char *keep = nullptr)
{
    return src.pos < src.end || src_more(keep) ? *src.pos++ : -1;
}

// Reads over blanks and tabs. What is before keep stays as it is; null: nothing has to stay.
inline void src_skip_blanks(unsigned char *keep)
{
    do {
        unsigned char *p = src.pos;
        while (*p == ' ' || *p == '\t')
            p++;
        src.pos = p;
    } while (src.pos == src.end && src_more(keep));
}

// Reads over white space. Returns the next character, which goes back to the source.
int src_skip_space();

// A piece of the text, which stays in the window until the source is read on.
struct src_piece {
    const unsigned char *text;
    size_t size;
    bool ends_line; // its last character is a line feed
};

// Takes the next characters of a line, at most size; none of them at the end of the source. What is before
// keep stays as it is.
src_piece src_take_line(size_t size, unsigned char *keep);

// Reads a line into buffer, its line feed too, at most size characters, and a NUL after them (so the buffer
// has size + 1 bytes). Returns the number of characters stored; 0 at the end of the source.
int32_t src_read_line(char *buffer, int32_t size);

// The same for a line that goes on after a backslash only across CR LF: a line that was joined across a lone
// line feed ends there, with its backslash. But what comes before its first character is joined already, for
// that character was looked at; unless a NUL was lost there, which was looked at in its stead.
int32_t src_read_line_crlf(char *buffer, int32_t size);

// ---- Where the source is read ----

// Line of the file on which the next character is, from 1. Counted when asked for.
uint32_t src_line();

// Position of the next character in the logical text, from 0.
int64_t src_tell();

// True if the whole file was read: false while text is left, or if byte 26 or a statement ended it early.
bool src_ended();
