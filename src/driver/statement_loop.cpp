#include "driver/statement_loop.h"

#include "rules/rule_table.h"
#include "source/src_stream.h"
#include "statements/arg_fetcher.h"
#include "statements/command_table.h"
#include "statements/recogniser.h"
#include "statements/statement_text.h"
#include "support/output.h"

void (*statement_done)(const statement_result &done);

// Fetches the arguments of a command and converts it. Returns the result of fetch_args.
static int32_t command_convert(const cmd_row &row)
{
    int32_t count = fetch_args(row.spec_count, row.spec);
    if (count >= 0)
        rule_run(row.id, count);
    else if (line_buf[0] != 0)
        out_format(" %s\n", line_buf); // the rest of the line is the next statement
    return count;
}

// Calls the hook with the result of a statement.
static void report_done(const statement_head &head, int32_t result, int32_t fetched)
{
    statement_result done{};
    done.head = head;
    done.result = result;
    done.fetched = fetched;
    done.failed_at = fetched < 0 ? fetch_failed_at : 0;
    done.next_line = src_line();
    done.line_left = fetched < 0 && src.pos[-1] != '\n';
    done.source_complete = src_ended();
    done.output_end = out_tell();
    statement_done(done);
}

void statement_loop()
{
    int32_t result;
    do {
        statement_head head{};
        result = next_statement(statement_done != nullptr ? &head : nullptr);
        int32_t fetched = result >= 0 ? command_convert(command_row_at(result)) : 0;
        if (statement_done != nullptr)
            report_done(head, result, fetched);
    } while (!statement_stops(result));
    src_close();
}
