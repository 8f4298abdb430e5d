#ifndef _GNU_SOURCE
#define _GNU_SOURCE // memfd_create
#endif
#include "harness.h"

#include "common/heaps.h"
#include "driver/batch.h"
#include "expressions/var_store.h"
#include "rules/rule_table.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/labels.h"
#include "support/output.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

// A quarantine of the usual 256 MB costs more time than it finds.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=16:malloc_context_size=8";
}

// ---- Memory ----

static size_t heap_budget_left;

static void *budget_calloc(size_t count, size_t size)
{
    if (size > heap_budget_left / count)
        return nullptr;
    heap_budget_left -= count * size;
    return calloc(count, size);
}

// ---- Source and output ----

// Puts a file that lies in memory back to its start, with nothing in it.
static void file_empty(const plat_file *file)
{
    bool empty = ftruncate(file->number, 0) == 0 && lseek(file->number, 0, SEEK_SET) == 0;
    harness_expect(empty, "an empty file");
}

plat_file *harness_source(const uint8_t *data, size_t size)
{
    static plat_file source = {memfd_create("source", 0)};
    file_empty(&source);
    plat_write(&source, reinterpret_cast<const char *>(data), size);
    harness_expect(lseek(source.number, 0, SEEK_SET) == 0, "a source");
    return &source;
}

const char *harness_output(size_t *size)
{
    static char output[size_t{1} << 20]; // what comes behind is lost
    out_flush();
    ssize_t got = pread(out_file.file.number, output, sizeof output, 0);
    harness_expect(got >= 0, "an output");
    *size = static_cast<size_t>(got);
    return output;
}

// ---- The run ----

// What is to be done once. Duplicate labels are printed to standard output.
static void start()
{
    heap_calloc = budget_calloc;
    var_table = static_cast<var_rec *>(malloc(var_capacity * sizeof(var_rec)));
    label_table = static_cast<label_row *>(malloc(label_capacity * sizeof(label_row)));
    FILE *printed = freopen("/dev/null", "w", stdout);
    out_open(plat_file{memfd_create("output", 0)});
    harness_expect(out_file.file.number >= 0 && var_table != nullptr && label_table != nullptr &&
                       printed != nullptr,
                   "a start");
}

void harness_reset()
{
    if (var_table == nullptr)
        start();
    static const line_directive_state line_directives_at_start = line_directives;
    vars_end();
    heaps_free();
    Vbuf = nullptr;
    heap_budget_left = harness_heap_budget;
    rules_run = rules_run_state{};
    line_directives = line_directives_at_start;
    out_file.used = 0;
    file_empty(&out_file.file);
}

void harness_start_file()
{
    vars_start(var_table, Vbuf = heap_create("Vbuf", 4096));
    labels_start(label_table);
}

char *harness_text(const uint8_t *data, size_t size, size_t slack)
{
    char *text = static_cast<char *>(malloc(size + 1 + slack));
    harness_expect(text != nullptr, "memory");
    memcpy(text, data, size);
    text[size] = 0;
    memset(text + size + 1, '7', slack);
    return text;
}

void harness_expect(bool condition, const char *what)
{
    if (condition)
        return;
    fprintf(stderr, "expected: %s\n", what);
    abort();
}
