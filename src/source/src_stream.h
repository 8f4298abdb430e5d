// Source stream: the script as one logical text.
//
// A window of the file is read, deciphered and folded in place, once: CR LF becomes a line feed, a backslash
// at a line's end joins two lines and leaves nothing, byte 26 ends the source. The text is between src.pos
// and src.end; its readers know nothing of blocks, keys or continuations. After the last character is a line
// feed that isn't part of the text, a sentinel at which every search stops.
//
// A character that was looked at can be put back into the source, and isn't folded again; but a NUL can't be
// put back: it is lost. So two backslashes at a line's end join nothing, and a NUL after a backslash or after
// a CR without a line feed is lost.
//
// The window slides between statements. A statement that runs past its end calls src_more, and says which
// text has to stay where it is.
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

// The hook that may fill the key for a source: key_bytes, key_len, key_restart and key_pos. It gets only the
// file's name. Null: no source is enciphered.
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

// For tests: the most bytes that one read asks for, so that the window can end anywhere.
extern size_t src_read_limit;

// Starts a source on an opened stream, which the caller closes: key hook, magic test, first window.
void src_open(const char *name, plat_file *stream);

// Frees the key of the source that ends, if it has one.
void src_close();

// Reads more of the source. The unread characters move down to keep, which becomes pos; the text before keep
// stays. Null: nothing has to stay, and then at most src_unread_max characters may be unread. The texts that
// one statement keeps may have src_kept_max bytes in src_kept_pieces pieces. Returns false at the end of the
// source: then nothing was read, and pos and end are equal if they were.
bool src_more(unsigned char *keep);
constexpr size_t src_unread_max = 65536 + 2;
constexpr size_t src_kept_max = 40960;
constexpr size_t src_kept_pieces = 101;

// Changes text that was read: size characters at to become those at from, which may overlap them. All text
// before taken counts as read; line feeds count where the source had them. Returns the end of the new text.
unsigned char *src_rewrite(unsigned char *to, const void *from, size_t size, const unsigned char *taken);

// At the end of the source: adds a character to the text that was read.
void src_append(unsigned char c);

// The character at a pointer, at or after pos, was looked at and is put back into the source: a NUL is lost.
// The characters from pos up to it move up by one, and pos with them. Returns true if one was lost.
bool src_lose_nul(unsigned char *at);

// Between two statements: slides the window if little of it is left.
inline void src_start_statement()
{
    if (src.pos > src.low)
        (void)src_more(nullptr);
}

// The next character, 0 to 255, or -1 at the end of the source. No text that was read has to stay.
inline int src_peek()
{
    return src.pos < src.end || src_more(nullptr) ? *src.pos : -1;
}

// The same, and reads over it. The text before keep stays.
inline int src_getc(unsigned char *keep = nullptr)
{
    return src.pos < src.end || src_more(keep) ? *src.pos++ : -1;
}

// Reads over blanks and tabs. The text before keep stays; null: none has to.
inline void src_skip_blanks(unsigned char *keep)
{
    do {
        unsigned char *p = src.pos;
        while (*p == ' ' || *p == '\t')
            p++;
        src.pos = p;
    } while (src.pos == src.end && src_more(keep));
}

// A piece of the text, which stays in the window until the source is read on.
struct src_piece {
    const unsigned char *text;
    size_t size;
    bool ends_line; // its last character is a line feed
};

// Takes the next characters of a line, at most size, as far as the window has them; none at the end of the
// source. The text before keep stays.
src_piece src_take_line(size_t size, unsigned char *keep);

// Takes the rest of a line, its line feed too, at most size characters, and calls take with each piece. keep
// is read before each of them: with src.pos they stay together in the window. Returns whether the line ended.
template <typename function> bool src_take_rest(size_t size, unsigned char *const &keep, function take)
{
    src_piece piece;
    do {
        piece = src_take_line(size, keep);
        size -= piece.size;
        take(piece);
    } while (size > 0 && piece.size > 0 && !piece.ends_line);
    return piece.ends_line;
}

// Reads a line into buffer, its line feed too, at most size characters, and a NUL after them (so the buffer
// has size + 1 bytes). Returns the number of characters stored; 0 at the end of the source.
int32_t src_read_line(char *buffer, int32_t size);

// The same, but a backslash joins lines only across CR LF: before a lone line feed the line ends, with its
// backslash. Joins before the line's first character stay, since that was looked at; unless a NUL was lost
// there, which was looked at instead.
int32_t src_read_line_crlf(char *buffer, int32_t size);

// ---- Positions ----

// Line of the file on which the next character is, from 1.
uint32_t src_line();

// True if the whole file was read: false while text is left, or if byte 26 or a statement ended it early.
bool src_ended();
