// The format of INPUT.
#include "rules/scan_format.h"

#include "rules/slot_writer.h"

#include <string.h>

constexpr uint32_t scan_format_max = 1299; // no more of a format is looked at

// What may stand between the percent sign of a scan format and its conversion, and the conversions. The
// bracket at the end of a scan set counts as one.
static constexpr char scan_modifiers[] = "0123456789hl";
static constexpr char scan_conversions[] = "cdiouxeEfgGs]";

int32_t scan_format_variables(const char *format, uint32_t size)
{
    int32_t variables = 0;
    bool in = false;      // after a percent sign, before its conversion
    bool star = false;    // the conversion is suppressed
    bool bracket = false; // in a scan set
    for (uint32_t i = 0; i < size && i < scan_format_max; i++) {
        char c = format[i];
        if (!in) {
            in = c == '%';
            star = bracket = false;
        } else if (bracket && c != ']') {
            continue;
        } else if (c == '*') {
            star = true;
        } else if (c == '[') {
            bracket = true;
        } else if (strchr(scan_conversions, c) != nullptr) {
            // Kept: a suppressed conversion doesn't end its percent sign, so %*d%d consumes nothing.
            if (star)
                continue;
            variables++;
            in = false;
        } else if (strchr(scan_modifiers, c) == nullptr) {
            in = false;
        }
    }
    return variables;
}

// The format between quotes, its line ends spelled as escapes again and nothing else escaped.
static void emit_format_text(const char *format, uint32_t size)
{
    out_text(" \"");
    uint64_t from = out_tell();
    for (uint32_t i = 0; i < size && i < scan_format_max; i++) {
        if (format[i] == '\n')
            out_text("\\n");
        else if (format[i] == '\r')
            out_text("\\r");
        else
            out_char(static_cast<unsigned char>(format[i]));
    }
    emit_tell(arg_slots + 1, false, from, out_tell());
    out_char('"');
}

void emit_scan_format(int32_t count)
{
    uint32_t size = 0;
    const char *format = slot_str(take_text(), &size);
    emit_format_text(format, size);
    for (int32_t left = scan_format_variables(format, size); left > 0 && --count > 0; left--)
        emit_argument(take_text());
}
