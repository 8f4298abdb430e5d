#include "report/findings/conversion.h"

#include "driver/batch.h"
#include "platform/platform.h"
#include "report/files.h"
#include "report/findings/arguments.h"
#include "report/findings/statement.h"
#include "statements/labels.h"
#include "support/output.h"
#include "support/text.h"

#include <new>

// The conversion that runs.
static struct {
    std::string *output;
    size_t counted; // bytes of the output whose lines are counted
    uint64_t line;  // of the output, where the next byte goes
    void (*statement_finished)();
    std::string label; // that was refused
} converting;

static void take_output(const char *bytes, size_t size)
{
    converting.output->append(bytes, size);
}

static void take_label(const char *name)
{
    converting.label = name;
}

static void take_record(const journal_record &record)
{
    out_flush();
    const std::string &output = *converting.output;
    auto start = static_cast<size_t>(record.done.head.output_start);
    for (size_t at = converting.counted; (at = output.find('\n', at)) < start; at++)
        converting.line++;
    converting.counted = start;
    std::string_view written = std::string_view(output).substr(start);
    statement_take(record, written, converting.line);
    arguments_take();
    converting.statement_finished();
}

bool script_convert(const std::string &path, rules_run_state *state, std::string *output,
                    void (*statement_finished)())
{
    plat_file source;
    output->clear();
    if (plat_open_input(path.c_str(), &source) != 0) {
        (void)file_read(path, output); // says why
        return false;
    }
    if (pools_init() != 0)
        throw std::bad_alloc();
    converting = {output, 0, 1, statement_finished, {}};
    rules_run = *state;
    label_refused = take_label;
    out_sink = take_output;
    out_open(plat_file{});
    if (statement_finished != nullptr)
        journal_start(take_record);
    convert_file(path.c_str(), &source);
    journal_stop();
    out_close();
    out_sink = nullptr;
    label_refused = nullptr;
    plat_close(&source);
    *state = rules_run;
    return true;
}

const std::string &refused_label()
{
    return converting.label;
}

// A row has the line after its label's.
uint32_t label_line(const std::string &name)
{
    for (const label_row *row = label_table; row < label_table + label_count; row++)
        if (text_is_word(name.data(), name.size(), row->name))
            return row->line - 1;
    return 0;
}
