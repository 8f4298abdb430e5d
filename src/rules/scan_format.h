// The format of INPUT: quoted again for the new line, and followed by the variables that it has conversions
// for.
#pragma once

#include <stdint.h>

// The number of variables that the conversions of a format consume.
int32_t scan_format_variables(const char *format, uint32_t size);

// The format, quoted, and the variables that its conversions consume, with the cursor on the format's slot.
// count is the argument count of the statement, the format itself included.
void emit_scan_format(int32_t count);
