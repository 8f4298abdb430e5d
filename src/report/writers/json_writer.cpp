// The JSON, script by script. docs/report.schema.json has its form.
#include "report/show.h"
#include "report/writers/json_text.h"
#include "report/writers/writers.h"

#include <utility>

constexpr int json_version = 2; // of the form

static bool first_script;

static json json_item(const report_item &item)
{
    return {{"line", item.line},
            {"last_line", item.last_line},
            {"output_line", item.there_line == 0 ? json() : json(item.there_line)},
            {"written_line", item.output_line},
            {"written_lines", item.output_lines},
            {"kind", kind_table[item.kind].word},
            {"command", item.command},
            {"statement", shown(item.source)},
            {"detail", item.detail},
            {"state", item_state_word(item)}};
}

static void json_start(FILE *file, const report_options &)
{
    first_script = true;
    fputs("{\"version\":", file);
    put_json(file, json_version);
    fputs(",\"files\":[", file);
}

static void json_script(FILE *file, const script_run &run)
{
    const script_report &script = run.report;
    json items = json::array();
    for (const report_item &item : script.items)
        items.push_back(json_item(item));
    fputs(std::exchange(first_script, false) ? "\n" : ",\n", file);
    put_json(file, {{"path", shown(script.path)},
                    {"statements", script.statements},
                    {"converted", script.converted},
                    {"output", output_state_words[script.output]},
                    {"edited", script.output == OUTPUT_EDITED || script.output == OUTPUT_BEHIND},
                    {"current", script.output == OUTPUT_SAME || script.output == OUTPUT_EDITED},
                    {"output_older", script.output_older},
                    {"items", std::move(items)}});
}

static void json_end(FILE *file, const report_totals &totals)
{
    json outputs = json::object();
    for (int state = 0; state < output_state_count; state++)
        outputs[output_state_words[state]] = totals.by_output[state];
    json kinds = json::object();
    for (int kind = 0; kind < item_kind_count; kind++)
        kinds[kind_table[kind].word] = totals.by_kind[kind];
    json commands = json::object();
    for (const auto &command : most_first(totals.by_command))
        commands[command.first] = command.second;
    fputs("\n],\"totals\":", file);
    put_json(file, {{"scripts", totals.scripts},
                    {"done", totals.done},
                    {"statements", totals.statements},
                    {"open", totals.open},
                    {"outputs", std::move(outputs)},
                    {"kinds", std::move(kinds)},
                    {"commands", std::move(commands)}});
    fputs("}\n", file);
}

const report_writer json_writer = {json_start, json_script, json_end};
