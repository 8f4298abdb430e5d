// The CSV: a header and one row an item. A field is quoted if it holds what would end it.
#include "report/show.h"
#include "report/writers.h"

#include <fmt/format.h>

static std::string csv_field(std::string_view text)
{
    if (text.find_first_of(",\"\n\r") == std::string_view::npos)
        return std::string(text);
    std::string field = "\"";
    for (char c : text)
        field += c == '"' ? "\"\"" : std::string(1, c);
    return field + "\"";
}

void csv_start(FILE *file)
{
    fputs("file,line,output_line,kind,command,statement,detail,state\n", file);
}

void csv_script(FILE *file, const script_report &script)
{
    std::string path = csv_field(shown(script.path));
    for (const report_item &item : script.items) {
        std::string row =
            fmt::format("{},{},{},{},{},{},{},{}\n", path, item.line, item.output_line,
                        kind_table[item.kind].word, csv_field(item.command), csv_field(item.statement),
                        csv_field(item.detail), state_words[item.state]);
        fwrite(row.data(), 1, row.size(), file);
    }
}
