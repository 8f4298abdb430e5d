// Source stream: every character of a script comes from here.
//
// Three things lie over the plain bytes of the file: an optional rolling XOR with a magic in front, the
// logical characters (CR LF is one line feed, a backslash at a line's end joins two lines), and a pushback
// of three characters. Lines are counted along. Characters are 0 to 255; -1 is the end of the source, which
// the byte 26 is too, wherever it stands: the position stays on it, and nothing behind it is ever read.
//
// The bytes are read in blocks into one buffer. A plain character costs one comparison and one table look-up;
// whatever is odd (pushback, a key, the character behind a line end) shortens the stretch of the buffer that
// may be read so, down to nothing, and then goes the slow way.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct plat_file;

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

// Line counters of the source. They reflect the characters handed out and not taken back, and wrap at 32
// bits.
struct src_line_state {
    uint32_t line_physical;  // line feeds read, plus 1
    uint32_t line_current;   // the same while line_counting is set
    uint32_t line_statement; // line_current where the logical line being read began
    uint8_t line_counting;   // line_current and line_statement run
    uint8_t line_pending;    // a line end was read: line_statement takes over at the next character
};
extern src_line_state src_lines;

// The buffer of raw bytes. Bytes from pos to plain_end may be taken as they are if they are plain
// characters; plain_end is pos or below while anything odd is in force, else end.
struct src_buffer {
    const unsigned char *pos;
    const unsigned char *plain_end;
    const unsigned char *end;
};
extern src_buffer src_raw;

// Characters that stand for themselves in a source: all but backslash, CR, line feed and byte 26.
struct src_plain_map {
    bool plain[256];
};
constexpr src_plain_map src_plain_make()
{
    src_plain_map map{};
    for (int c = 0; c < 256; c++)
        map.plain[c] = c != '\\' && c != '\r' && c != '\n' && c != 26;
    return map;
}
inline constexpr src_plain_map src_plain = src_plain_make();

// Bytes behind the buffer that may be read, whatever they hold.
constexpr size_t src_slack = 64;

// Starts a source on an opened stream: key hook, reset, magic test. The stream stays its opener's.
void src_open(const char *name, plat_file *stream);

// Frees the key of the source that ends, if it has one.
void src_close();

// Starts the line counters: the source's first line is line 1.
void src_count_lines();

// One byte, decoded.
int src_rawc(plat_file *stream);

// src_getc for whatever is no plain character in the buffer.
int src_getc_slow(plat_file *stream);

// One logical character.
inline int src_getc(plat_file *stream)
{
    if (src_raw.pos < src_raw.plain_end && src_plain.plain[*src_raw.pos])
        return *src_raw.pos++;
    return src_getc_slow(stream);
}

// Settles the line counters as asking for the next character does.
void src_settle();

// True if a line end, a line feed or CR LF, lies ready at a place in the buffer.
inline bool src_is_line_end(const unsigned char *place)
{
    return place < src_raw.plain_end &&
           (*place == '\n' || (*place == '\r' && place + 1 < src_raw.plain_end && place[1] == '\n'));
}

// Takes the line end that lies ready at the source's place.
inline void src_take_line_end()
{
    src_raw.pos += *src_raw.pos == '\r' ? 2 : 1;
    src_lines.line_physical++;
    if (src_lines.line_counting == 0)
        return;
    src_lines.line_pending = 1;
    src_lines.line_current++;
    src_raw.plain_end = src_raw.pos;
}

// Takes the plain characters that lie ready in the buffer, at most limit of them, as one run inside the
// buffer, which stays there until the next read. Gives its length, 0 if the next character isn't plain or
// has to be read singly.
size_t src_take_plain(const char **run, size_t limit);

// One logical character, where only backslash CR LF continues a line, not backslash LF.
int src_getc_crlf(plat_file *stream);

// Pushes one character back, -1 too. Three fit; one more overwrites the last.
void src_ungetc(int c);

// Empties the pushback and clears line_pending.
void src_reset();

// Moves to a position that src_tell gave, the key position following. 0, or another value if the stream
// can't be moved. The line counters stay as they are: lines passed twice count twice.
int src_seek(plat_file *stream, int64_t offset);

// Position of the next logical character in bytes, as nearly as a byte count can tell: the raw position,
// less one for each character pushed back.
int64_t src_tell(plat_file *stream);

// Position of the raw bytes, whatever is pushed back.
int64_t src_raw_tell();

// True if every byte of the file has been read: false when a byte 26 or a statement ended the source early.
bool src_ended();

// Reads a line into buffer, its line feed too, at most size characters, and a NUL behind (so the buffer has
// size + 1 bytes). Gives the number of characters stored; 0 at the end of the source.
int32_t src_read_line(char *buffer, int32_t size, plat_file *stream);
int32_t src_read_line_crlf(char *buffer, int32_t size, plat_file *stream);

// Reads the next word, delimited by white space, at most size - 1 characters, and a NUL behind. At the end
// of the source the buffer stays as it is.
void src_read_word(plat_file *stream, char *buffer, int32_t size);

// Reads over white space and gives the first other character, which stays in the source.
int src_skip_space(plat_file *stream);
