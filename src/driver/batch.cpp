#include "driver/batch.h"

#include "driver/statement_loop.h"
#include "expressions/var_store.h"
#include "platform/platform.h"
#include "platform/script_names.h"
#include "source/src_stream.h"
#include "statements/labels.h"
#include "support/output.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

constexpr uint32_t heap_growth = 4096; // bytes

pool_heap *Vbuf;

// ---- One file ----

// The tables are allocated for the first file and used by all.
int pools_init()
{
    if (var_table == nullptr)
        var_table = static_cast<var_rec *>(malloc(var_capacity * sizeof(var_rec)));
    if (var_table != nullptr && label_table == nullptr)
        label_table = static_cast<label_row *>(malloc(label_capacity * sizeof(label_row)));
    if (label_table != nullptr && Vbuf == nullptr) // else a file whose output couldn't be opened left it
        Vbuf = heap_create("Vbuf", heap_growth);
    if (Vbuf == nullptr)
        return 1;
    vars_start(var_table, Vbuf);
    labels_start(label_table);
    return 0;
}

void pools_free()
{
    vars_end();
    heap_destroy(Vbuf);
    Vbuf = nullptr;
}

void convert_file(const char *source_name, plat_file *source_stream)
{
    src_open(source_name, source_stream);
    statement_loop();
    pools_free();
}

// ---- The run ----

// The state of a run.
struct batch_run {
    bool dialog; // files were picked: messages are shown; else they go to standard output
    int result;  // BATCH_DONE or BATCH_NO_MEMORY
};

// Reports that a file can't be opened. On standard output the message has no line end.
static void report(const batch_run *run, const char *text, const char *path)
{
    if (!run->dialog) {
        plat_print(text);
        plat_print(path);
        return;
    }
    auto *line = static_cast<char *>(malloc(strlen(text) + strlen(path) + 1));
    if (line == nullptr)
        return;
    strcat(strcpy(line, text), path);
    plat_show_line(line);
    free(line);
}

static int convert_pair(const batch_run *run, const char *input_path, const char *output_path)
{
    plat_file input;
    if (plat_open_input(input_path, &input) != 0) {
        report(run, "Unable to open ", input_path);
        return BATCH_DONE;
    }
    // Before the opening, which empties an earlier output.
    if (pools_init() != 0) {
        plat_close(&input);
        return BATCH_NO_MEMORY;
    }
    plat_file output;
    if (plat_open_output(output_path, &input, &output) != 0) {
        report(run, run->dialog ? "Unable to open " : "Unable to Open file ", output_path);
        plat_close(&input);
        return BATCH_DONE;
    }
    out_open(output);
    convert_file(input_path, &input);
    out_close();
    plat_close(&input);
    return BATCH_DONE;
}

// Converts one input path, unless the run is out of memory.
static void convert_path(const char *input_path, void *context)
{
    auto *run = static_cast<batch_run *>(context);
    if (run->result != BATCH_DONE)
        return;
    auto *output_path = static_cast<char *>(malloc(strlen(input_path) + sizeof output_suffix));
    if (output_path == nullptr) {
        run->result = BATCH_NO_MEMORY;
        return;
    }
    output_path_write(output_path, input_path);
    run->result = convert_pair(run, input_path, output_path);
    free(output_path);
}

int conv_main(int arg_count, char **arg_vector)
{
    batch_run run{arg_count <= 1, BATCH_DONE};
    if (run.dialog && plat_select_files(convert_path, &run) != 0)
        return BATCH_CANCELLED;
    for (int i = 1; i < arg_count; i++)
        convert_path(arg_vector[i], &run);
    return run.result;
}
