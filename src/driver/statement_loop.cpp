#include "driver/statement_loop.h"

#include "driver/journal.h"
#include "rules/rule_table.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/arg_slots.h"
#include "statements/command_table.h"
#include "statements/recogniser.h"
#include "statements/statement_text.h"
#include "support/output.h"

void (*statement_seen)(const statement_record *record);

// Writes what a failed fetch has left of its statement; the rest of the line is the next statement.
static void write_failed_argument()
{
    if (line_buf[0] != 0)
        out_format(" %s\n", line_buf);
}

// Fetches the arguments of a command and converts it. Returns what fetch_args returned.
static int32_t command_convert(const cmd_row &row)
{
    int32_t count = fetch_args(row.spec_count, row.spec);
    if (count < 0)
        write_failed_argument();
    else
        rule_run(row.id, count);
    return count;
}

// Tells statement_seen of a finished statement.
static void journal_tell(const statement_head &head, int32_t result, int32_t fetched)
{
    statement_record record{};
    record.head = head;
    record.result = result;
    record.fetched = fetched;
    record.failed_at = fetched < 0 ? static_cast<int32_t>(arg_type_cursor - arg_types) + 1 : 0;
    record.next_line = src_line();
    record.line_left = fetched < 0 && src.pos[-1] != '\n';
    record.output_end = out_tell();
    record.source_complete = src_ended();
    statement_seen(&record);
}

void statement_loop()
{
    int32_t result;
    do {
        statement_head head{};
        result = next_statement(statement_seen != nullptr ? &head : nullptr);
        int32_t fetched = result >= 0 ? command_convert(command_row_at(result)) : 0;
        if (statement_seen != nullptr)
            journal_tell(head, result, fetched);
    } while (!statement_stops(result));
    src_close();
}
