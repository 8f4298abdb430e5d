// The CSV: a header and one row an item.
#include "report/csv.h"
#include "report/show.h"
#include "report/writers/writers.h"

#include <string.h>

// A text that a spreadsheet would take for a formula gets an apostrophe in front.
static std::string plain_cell(const std::string &text)
{
    bool formula = !text.empty() && strchr("=+-@\t\r", text[0]) != nullptr;
    return formula ? "'" + text : text;
}

static void csv_start(FILE *file, const report_options &)
{
    fputs("file,line,output_line,written_line,kind,command,statement,detail,state\n", file);
}

static void csv_script(FILE *file, const script_run &run)
{
    const script_report &script = run.report;
    std::string path = plain_cell(shown(script.path));
    for (const report_item &item : script.items) {
        std::string row = csv_text(
            {path, std::to_string(item.line), item.there_line == 0 ? "" : std::to_string(item.there_line),
             std::to_string(item.output_line), kind_table[item.kind].word, plain_cell(item.command),
             plain_cell(shown(item.source)), plain_cell(item.detail), item_state_word(item)});
        fwrite(row.data(), 1, row.size(), file);
    }
}

static void csv_end(FILE *, const report_totals &) {}

const report_writer csv_writer = {csv_start, csv_script, csv_end};
