#include "report/journal.h"

#include "driver/batch.h"
#include "driver/journal.h"
#include "expressions/expr_eval.h"
#include "platform/platform.h"
#include "statements/arg_slots.h"
#include "statements/labels.h"
#include "support/output.h"
#include "support/text.h"

#include <algorithm>

// The conversion that runs.
static struct {
    const journal_listener *listener;
    std::string pending;   // output that belongs to no finished statement, at most output_kept bytes of it
    uint64_t start;        // position of its first byte in the output
    uint64_t line;         // of the output, where it begins
    uint64_t lines_beyond; // line ends in what was too much to keep
    std::string message;
    std::string label; // that was refused
} run;

static uint64_t line_ends(std::string_view text)
{
    return static_cast<uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

static void take_output(const char *bytes, size_t size)
{
    if (run.listener->output != nullptr)
        run.listener->output({bytes, size}, run.listener->context);
    size_t kept = std::min(size, output_kept - run.pending.size());
    run.pending.append(bytes, kept);
    run.lines_beyond += line_ends({bytes + kept, size - kept});
}

static void take_message(const char *message)
{
    if (run.message.empty())
        run.message = message;
}

static void take_label(const char *name)
{
    run.label = name;
}

// Makes what the listener is told out of the converter's record.
static journal_statement statement_of(const statement_record &record)
{
    journal_statement statement{};
    statement.kind = record.head.kind;
    statement.row = record.result >= 0 ? &command_row_at(record.result) : nullptr;
    statement.result = record.result;
    statement.fetched = record.fetched;
    statement.failed_at = record.failed_at;
    statement.line = record.head.line;
    statement.next_line = record.next_line;
    statement.last_line = std::max(record.head.line, record.next_line - 1);
    statement.line_left = record.line_left;
    statement.source_complete = record.source_complete;
    statement.message = run.message;
    return statement;
}

// The statement's part of what is pending: behind the white space in front of it.
static void add_output(journal_statement *statement, uint64_t output_start)
{
    size_t white = std::min<uint64_t>(output_start - run.start, run.pending.size());
    std::string_view pending = run.pending;
    statement->output = pending.substr(white);
    statement->output_line = run.line + line_ends(pending.substr(0, white));
    statement->output_lines = line_ends(statement->output) + run.lines_beyond;
    if (!statement->output.empty() && statement->output.back() != '\n')
        statement->output_lines++;
}

static void take_statement(const statement_record *record)
{
    out_flush();
    journal_statement statement = statement_of(*record);
    add_output(&statement, record->head.output_start);
    run.listener->statement(statement, run.listener->context);
    run.line += line_ends(run.pending) + run.lines_beyond;
    run.start = record->output_end;
    run.pending.clear();
    run.lines_beyond = 0;
    run.message.clear();
}

// The slot of a position; null if the list ended before it.
static const arg_slot *slot_of(int32_t position)
{
    const arg_slot *slot = arg_slots + position;
    return slot <= slots_last ? slot : nullptr;
}

bool journal_given(int32_t position)
{
    return !journal_text(position).empty();
}

std::string_view journal_text(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    return slot != nullptr ? std::string_view(slot->text, slot->text_size) : std::string_view();
}

double journal_value(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    if (slot == nullptr)
        return 0;
    switch (arg_types[position - 1] & ARG_TYPE) {
    case ARG_LONG: return slot_lval(slot);
    case ARG_INT: return slot_ival(slot);
    case ARG_FLOAT: return slot_fval(slot);
    case ARG_DOUBLE: return slot_dval(slot);
    default: return 0;
    }
}

bool journal_is_string(int32_t position)
{
    return (arg_types[position - 1] & ARG_TYPE) == ARG_STR && journal_text(position).substr(0, 1) == "\"";
}

const std::string &journal_refused_label()
{
    return run.label;
}

// A row tells where the line after its label begins.
uint32_t journal_label_line(const std::string &name)
{
    for (const label_row *row = label_table; row < label_table + label_count; row++)
        if (text_compare_nocase(row->name, name.c_str()) == 0)
            return row->line - 1;
    return 0;
}

void journal_convert(const char *path, plat_file *source, const journal_listener &listener)
{
    run.listener = &listener;
    run.pending.clear();
    run.message.clear();
    run.start = run.lines_beyond = 0;
    run.line = 1;
    statement_seen = take_statement;
    expr_error = take_message;
    label_refused = take_label;
    out_sink = take_output;
    out_open(plat_file{});
    convert_file(path, source);
    out_close();
    out_sink = nullptr;
    label_refused = nullptr;
    expr_error = nullptr;
    statement_seen = nullptr;
    plat_close(source);
}
