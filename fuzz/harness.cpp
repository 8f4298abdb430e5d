#ifndef _GNU_SOURCE
#define _GNU_SOURCE // fopencookie, memfd_create
#endif
#include "harness.h"

#include "analysis/arg_fetcher.h"
#include "analysis/var_store.h"
#include "common/heaps.h"
#include "driver/batch.h"
#include "rules/rules.h"
#include "source/labels.h"
#include "source/src_stream.h"
#include "support/output.h"

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

static void *budget_malloc(size_t size)
{
    if (size > heap_budget_left)
        return nullptr;
    heap_budget_left -= size;
    return malloc(size);
}

// ---- Source and output ----

static const uint8_t *source_data;
static size_t source_size;
static size_t source_at;

static ssize_t source_read(void *, char *buffer, size_t size)
{
    size_t left = source_size - source_at;
    size_t part = size < left ? size : left;
    memcpy(buffer, source_data + source_at, part);
    source_at += part;
    return static_cast<ssize_t>(part);
}

static int source_seek(void *, off64_t *offset, int whence)
{
    int64_t base =
        whence == SEEK_SET ? 0 : static_cast<int64_t>(whence == SEEK_CUR ? source_at : source_size);
    int64_t place = base + *offset;
    if (place < 0 || place > static_cast<int64_t>(source_size))
        return -1;
    source_at = static_cast<size_t>(place);
    *offset = place;
    return 0;
}

FILE *harness_source(const uint8_t *data, size_t size)
{
    static FILE *stream;
    if (stream == nullptr) {
        stream = fopencookie(nullptr, "rb", {source_read, nullptr, source_seek, nullptr});
        setvbuf(stream, nullptr, _IONBF, 0);
    }
    rewind(stream);
    source_data = data;
    source_size = size;
    source_at = 0;
    return stream;
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

static void output_forget()
{
    out_file.used = 0;
    bool empty = ftruncate(out_file.file.number, 0) == 0 && lseek(out_file.file.number, 0, SEEK_SET) == 0;
    harness_expect(empty, "an empty output");
}

// ---- The run ----

// What is to be done once. Duplicate labels are printed to standard output.
static void start()
{
    heap_malloc = budget_malloc;
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
    heaps_free();
    heap_budget_left = harness_heap_budget;
    rules_run = rules_run_state{};
    line_directives = line_directives_at_start;
    src_count_lines();
    output_forget();
}

void harness_start_file()
{
    static char pool[arg_pool_block];
    arg_pool = pool;
    vars_start(var_table, heap_create("Vbuf", 4096));
    labels_start(label_table);
}

char *harness_text(const uint8_t *data, size_t size)
{
    char *text = static_cast<char *>(malloc(size + 1));
    harness_expect(text != nullptr, "memory");
    memcpy(text, data, size);
    text[size] = 0;
    return text;
}

void harness_expect(bool condition, const char *what)
{
    if (condition)
        return;
    fprintf(stderr, "expected: %s\n", what);
    abort();
}
