// The JSON, script by script. Its form is told in docs/report.schema.json.
#include "report/show.h"
#include "report/writers.h"

#include <nlohmann/json.hpp>

using json = nlohmann::ordered_json;

constexpr int json_version = 1; // of the form

static void put_json(FILE *file, const json &value)
{
    std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    fwrite(text.data(), 1, text.size(), file);
}

static json json_item(const report_item &item)
{
    return {{"line", item.line},
            {"last_line", item.last_line},
            {"output_line", item.output_line},
            {"output_lines", item.output_lines},
            {"kind", kind_table[item.kind].word},
            {"command", item.command},
            {"statement", item.statement},
            {"detail", item.detail},
            {"state", state_words[item.state]}};
}

static const char *output_word(const script_report &script)
{
    return !script.output_there ? "none" : script.output_same ? "same" : "changed";
}

void json_start(FILE *file)
{
    fputs("{\"version\":", file);
    put_json(file, json_version);
    fputs(",\"files\":[", file);
}

void json_script(FILE *file, const script_report &script, bool first)
{
    json items = json::array();
    for (const report_item &item : script.items)
        items.push_back(json_item(item));
    fputs(first ? "\n" : ",\n", file);
    put_json(file, {{"path", shown(script.path)},
                    {"statements", script.statements},
                    {"converted", script.converted},
                    {"output", output_word(script)},
                    {"output_older", script.output_older},
                    {"items", std::move(items)}});
}

void json_end(FILE *file, const report_totals &totals)
{
    json kinds = json::object();
    for (int kind = 0; kind < item_kind_count; kind++)
        kinds[kind_table[kind].word] = totals.by_kind[kind];
    json commands = json::object();
    for (const auto &command : totals.by_command)
        commands[command.first] = command.second;
    fputs("\n],\"totals\":", file);
    put_json(file, {{"scripts", totals.scripts},
                    {"done", totals.done},
                    {"statements", totals.statements},
                    {"open", totals.open},
                    {"kinds", std::move(kinds)},
                    {"commands", std::move(commands)}});
    fputs("}\n", file);
}
