// Benchmarks of the pieces that a statement passes through. bench/run measures the whole; these tell where
// a change has shown.
#include "expressions/expr_eval.h"
#include "expressions/var_store.h"
#include "platform/platform.h"
#include "rules/rule_table.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/arg_slots.h"
#include "statements/command_table.h"
#include "support/output.h"
#include "support/pool_heap.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

constexpr char line_arguments[] = " 12.5, v1, 0, 100.25, -3, 0, 3, 1, 2\n";
constexpr size_t block_size = 65536;

static char block[block_size];

// A source that holds one text over and over.
static plat_file source_of(const char *text)
{
    size_t length = strlen(text);
    size_t used = 0;
    for (; used + length <= block_size; used += length)
        memcpy(block + used, text, length);
    plat_file source = {memfd_create("source", 0)};
    plat_write(&source, block, used);
    return source;
}

static void source_restart(plat_file *source)
{
    lseek(source->number, 0, SEEK_SET);
    src_open("", source);
}

// A text to evaluate, with the bytes after it that have to be readable.
struct expr_text {
    explicit expr_text(const char *text) : size(strlen(text))
    {
        memcpy(bytes, text, size + 1);
    }

    char bytes[256];
    size_t size;
};

static void evaluate(const char *text)
{
    expr_text copy(text);
    (void)eval_expr(copy.bytes, copy.size);
}

// A store with a few variables in it, and the block that the fetcher keeps values in.
static void store_start()
{
    static auto *records = static_cast<var_rec *>(malloc(var_capacity * sizeof(var_rec)));
    static pool_heap *heap = heap_create("Vbuf", 4096);
    vars_end();
    vars_start(records, heap);
    for (const char *text : {"v1 = 2.5", "width = 40", "height = 30", "i = 2", "DOUBLE a[9]"})
        evaluate(text);
}

// Fetches the arguments of one LINE, as the statement loop does it.
static int32_t fetch_line(const cmd_row &row)
{
    slot_set_word("LINE", 4);
    return fetch_args(row.spec_count, row.spec);
}

static void getc_block(benchmark::State &state)
{
    plat_file source = source_of(line_arguments);
    int64_t characters = 0;
    for (auto _ : state) {
        source_restart(&source);
        int sum = 0;
        for (int c = src_getc(); c != -1; c = src_getc(), characters++)
            sum += c;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(characters);
    plat_close(&source);
}
BENCHMARK(getc_block);

static void eval_text(benchmark::State &state, const char *text)
{
    store_start();
    expr_text copy(text);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(eval_expr(copy.bytes, copy.size));
    }
}
BENCHMARK_CAPTURE(eval_text, number, "12.5");
BENCHMARK_CAPTURE(eval_text, variable, "width");
BENCHMARK_CAPTURE(eval_text, negative, "-5.5");
BENCHMARK_CAPTURE(eval_text, assignment, "r = v1 + 0.5*r");
BENCHMARK_CAPTURE(eval_text, element, "a[i+1]");
BENCHMARK_CAPTURE(eval_text, long,
                  "(width / 2 - 0.5 * sin(30 + v1)) * (height > 20 && width <= 50) + 12.25 - v1");
BENCHMARK_CAPTURE(eval_text, deep,
                  "((((((((((((((((((((((((((((((((((((((((((((((((1))))))))))))))))"
                  "))))))))))))))))))))))))))))))))");

static void find_command(benchmark::State &state, const char *word)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(word);
        benchmark::DoNotOptimize(command_find(word_key_make(word, strlen(word))));
    }
}
BENCHMARK_CAPTURE(find_command, line, "LINE");
BENCHMARK_CAPTURE(find_command, lower_case, "polyline");
BENCHMARK_CAPTURE(find_command, unknown, "thickness");

static void fetch_line_arguments(benchmark::State &state)
{
    store_start();
    plat_file source = source_of(line_arguments);
    const cmd_row &row = command_row_at(command_find(word_key_make("LINE", 4)));
    size_t statements = block_size / strlen(line_arguments);
    size_t left = 0;
    for (auto _ : state) {
        if (left-- == 0) {
            source_restart(&source);
            left = statements - 1;
        }
        benchmark::DoNotOptimize(fetch_line(row));
    }
    plat_close(&source);
}
BENCHMARK(fetch_line_arguments);

static void write_line_rule(benchmark::State &state)
{
    store_start();
    plat_file source = source_of(line_arguments);
    const cmd_row &row = command_row_at(command_find(word_key_make("LINE", 4)));
    out_open(plat_file{open("/dev/null", O_WRONLY)});
    source_restart(&source);
    int32_t count = fetch_line(row);
    for (auto _ : state)
        rule_run(row.id, count);
    out_close();
    plat_close(&source);
}
BENCHMARK(write_line_rule);

// Among so many other blocks, every second of which is free again.
static void alloc_and_free(benchmark::State &state)
{
    pool_heap *heap = heap_create("bench", 4096);
    for (int64_t i = 0; i < state.range(0); i++) {
        void *freed = heap_alloc(heap, "bench", 40);
        benchmark::DoNotOptimize(heap_alloc(heap, "bench", 40));
        heap_free(freed);
    }
    for (auto _ : state) {
        void *taken = heap_alloc(heap, "bench", 100);
        benchmark::DoNotOptimize(taken);
        heap_free(taken);
    }
}
BENCHMARK(alloc_and_free)->Arg(0)->Arg(100)->Arg(1000);

BENCHMARK_MAIN();
