#include "driver/statement_loop.h"

#include "analysis/arg_fetcher.h"
#include "rules/rules.h"
#include "source/command_table.h"
#include "source/recogniser.h"
#include "source/src_stream.h"
#include "source/statement_text.h"
#include "support/output.h"

constexpr int32_t handler_stops_source = -2; // a handler's result; no rule gives it

// Sends a command with fetched arguments to its family. The system commands are dropped.
static int32_t dispatch(int32_t id, int32_t count)
{
    if (id >= 1000 && id <= 1999)
        return 0;
    if (id < 300)
        return conv_entity(id);
    if (id <= 399)
        return conv_setting(id, count);
    if (id <= 499)
        return conv_input(id, count);
    return conv_flow(id, count);
}

// Writes what a failed fetch has left of its statement; the rest of the line is the next statement.
static void write_failed_argument()
{
    if (line_buf[0] != 0)
        out_format(" %s\n", line_buf);
}

void statement_loop(plat_file *stream)
{
    src_count_lines();
    for (;;) {
        int32_t result = next_statement(stream);
        if (result == STATEMENT_END)
            break;
        if (result < 0)
            continue;
        const cmd_row &row = command_row_at(result);
        int32_t count = fetch_args(stream, row.spec_count, row.spec, false);
        if (count < 0)
            write_failed_argument();
        else if (dispatch(row.id, count) == handler_stops_source)
            break;
    }
    src_close();
}
