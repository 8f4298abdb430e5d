// Harness of the fuzz targets: one source, one output and the state of a run, made anew for each input.
//
// The converter keeps the objects of a file until the process ends, and a few settings from file to file.
// A target does without both: harness_reset gives everything back, so that an input finds what a new process
// would find, and memory stays in bounds.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct plat_file;

// Bytes that the pool heaps may take for one input; beyond that they meet a system without memory.
constexpr size_t harness_heap_budget = size_t{4} << 20;

// Forgets the last input: heaps, tables, settings, output. To be called in front of each input.
void harness_reset();

// Makes the heap and the tables of a file, for targets that don't go through convert_file.
void harness_start_file();

// The source, standing at the start of the given bytes, which stay the caller's. One at a time.
plat_file *harness_source(const uint8_t *data, size_t size);

// What was written since the last reset.
const char *harness_output(size_t *size);

// A copy of a text with a NUL and slack bytes after it, and nothing that may be touched after those; to be
// freed.
char *harness_text(const uint8_t *data, size_t size, size_t slack = 0);

// Ends the process with a report if condition is false.
void harness_expect(bool condition, const char *what);
