#include "support/output.h"

#include <stdarg.h>

#include <algorithm>
#include <charconv>

out_state out_file;
void (*out_sink)(const char *bytes, size_t size);

void out_open(plat_file file)
{
    out_file.open = true;
    out_file.failed = false;
    out_file.file = file;
    out_file.start = out_file.used = 0;
}

void out_flush()
{
    if (out_sink != nullptr)
        out_sink(out_file.buffer, out_file.used);
    else if (!out_file.failed)
        out_file.failed = plat_write(&out_file.file, out_file.buffer, out_file.used) != 0;
    out_file.start += out_file.used;
    out_file.used = 0;
}

void out_close()
{
    out_flush();
    if (out_sink == nullptr)
        plat_close(&out_file.file);
    out_file.open = false;
}

void out_bytes_slow(const char *bytes, size_t size)
{
    while (size > 0) {
        if (out_file.used == out_buffer_size)
            out_flush();
        size_t part = std::min(size, out_buffer_size - out_file.used);
        memcpy(out_file.buffer + out_file.used, bytes, part);
        out_file.used += part;
        bytes += part;
        size -= part;
    }
}

static void out_integer(int32_t value)
{
    constexpr size_t size_max = 11;
    char *digits = out_reserve(size_max);
    out_commit(std::to_chars(digits, digits + size_max, value).ptr);
}

static void out_float(double value)
{
    if (value != value) {
        out_text("nan"); // the C library's sign of it differs by the machine
        return;
    }
    // The largest double has 309 digits in front of its point.
    char digits[400];
    int size = snprintf(digits, sizeof digits, "%f", value);
    out_bytes(digits, static_cast<size_t>(size));
}

void out_format(const char *format, ...)
{
    va_list values;
    va_start(values, format);
    for (const char *percent = strchr(format, '%'); percent != nullptr; percent = strchr(format, '%')) {
        out_bytes(format, static_cast<size_t>(percent - format));
        switch (percent[1]) {
        case 's': out_text(va_arg(values, const char *)); break;
        case 'd': out_integer(va_arg(values, int32_t)); break;
        case 'f': out_float(va_arg(values, double)); break;
        default: out_char(percent[1]); break;
        }
        format = percent + 2;
    }
    va_end(values);
    out_text(format);
}
