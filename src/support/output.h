// Output: the script that is being written.
//
// One output is open at a time. It has a buffer of 64 KB, which is written when it is full and at the close.
// The platform writes a line feed as its own line end. After a failed write nothing more goes to the file, so
// that it has no hole, and no message is printed: a full disk costs the output, not the run.
#pragma once

#include "platform/platform.h"
#include "support/text.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

constexpr size_t out_buffer_size = 65536;

// The output of the file under conversion; it has no meaning between two files.
struct out_state {
    bool open;      // an output is being written
    bool failed;    // a write failed
    plat_file file; // where it goes
    uint64_t start; // bytes written to the file so far: the offset of the buffer's first byte in the output
    size_t used;    // bytes in the buffer, 0 to out_buffer_size
    char buffer[out_buffer_size];
};
extern out_state out_file;

// The hook that receives the output in memory; null: it goes to the file. The converter never sets it.
extern void (*out_sink)(const char *bytes, size_t size);

// Starts an output on an opened file, which out_close closes. With out_sink set the file isn't looked at.
void out_open(plat_file file);

// Bytes written so far, a line feed counting as one on every platform.
inline uint64_t out_tell()
{
    return out_file.start + out_file.used;
}

// Writes the buffer and closes the file.
void out_close();

// Writes the buffer to the file.
void out_flush();

// out_bytes for what does not fit the buffer's rest.
void out_bytes_slow(const char *bytes, size_t size);

// Bytes as they are.
inline void out_bytes(const char *bytes, size_t size)
{
    if (size > out_buffer_size - out_file.used) {
        out_bytes_slow(bytes, size);
        return;
    }
    memcpy(out_file.buffer + out_file.used, bytes, size);
    out_file.used += size;
}

// For many short pieces: reserves size bytes of the buffer, which the caller writes through the pointer. Then
// out_commit takes the pointer after the last byte.
inline char *out_reserve(size_t size)
{
    if (out_buffer_size - out_file.used < size)
        out_flush();
    return out_file.buffer + out_file.used;
}

inline void out_commit(const char *next)
{
    out_file.used = static_cast<size_t>(next - out_file.buffer);
}

// One character, 0 to 255.
inline void out_char(int c)
{
    if (out_file.used == out_buffer_size)
        out_flush();
    out_file.buffer[out_file.used++] = static_cast<char>(c);
}

// A NUL-terminated text.
inline void out_text(const char *text)
{
    out_bytes(text, strlen(text));
}

// Literal text of the program with values in it, written as printf writes them: %s a text of any length, %d
// an int32_t, %f a double with six decimals, %% a percent sign. There are no other conversions.
// A script's text is only ever a value here, never the format.
void out_format(const char *format, ...) __attribute__((format(printf, 1, 2)));
