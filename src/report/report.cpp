#include "report/report.h"

#include "driver/batch.h"
#include "platform/platform.h"
#include "report/edits.h"
#include "report/files.h"
#include "report/journal.h"
#include "report/judge.h"
#include "report/lines.h"
#include "report/scripts.h"
#include "report/show.h"
#include "report/source_lines.h"
#include "report/writers.h"
#include "rules/rule_table.h"
#include "support/output.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <unordered_map>

static bool in_trouble; // something could not be done

void report_trouble(const std::string &line)
{
    fmt::print(stderr, "murlreport: {}\n", line);
    in_trouble = true;
}

// ---- Outputs ----

// An output of the report: standard output, a file, or none.
struct report_output {
    FILE *file = nullptr;
    std::string path;
};

struct report_outputs {
    report_output text;
    report_output csv;
    report_output json;
    report_output html;
    bool color = false;
};

static bool output_open(report_output *output, const std::string &path)
{
    output->path = path;
    if (path.empty())
        return true;
    output->file = path == "-" ? stdout : fopen(path.c_str(), "wb");
    if (output->file == nullptr)
        report_trouble("can't write " + shown(path) + ": " + file_fault());
    return output->file != nullptr;
}

static void output_close(report_output *output)
{
    if (output->file == nullptr)
        return;
    bool failed = ferror(output->file) != 0;
    failed |= (output->file == stdout ? fflush(stdout) : fclose(output->file)) != 0;
    if (failed)
        report_trouble("can't write " + (output->path == "-" ? "standard output" : shown(output->path)));
}

// Standard output carries the text unless something else goes there.
static bool outputs_open(const report_options &options, report_outputs *outputs)
{
    bool taken = options.csv == "-" || options.json == "-" || options.html == "-";
    bool opened = output_open(&outputs->text, options.quiet || taken ? "" : "-");
    opened &= output_open(&outputs->csv, options.csv);
    opened &= output_open(&outputs->json, options.json);
    opened &= output_open(&outputs->html, options.html);
    const char *no_color = getenv("NO_COLOR");
    outputs->color = is_terminal(stdout) && (no_color == nullptr || *no_color == 0);
    return opened;
}

static void outputs_start(const report_outputs &outputs)
{
    if (outputs.csv.file != nullptr)
        csv_start(outputs.csv.file);
    if (outputs.json.file != nullptr)
        json_start(outputs.json.file);
    if (outputs.html.file != nullptr)
        page_start(outputs.html.file);
}

static void outputs_script(const report_outputs &outputs, const report_options &options,
                           const script_report &script, const script_bodies &bodies, bool first)
{
    if (outputs.text.file != nullptr)
        text_script(outputs.text.file, script, options, outputs.color);
    if (outputs.csv.file != nullptr)
        csv_script(outputs.csv.file, script);
    if (outputs.json.file != nullptr)
        json_script(outputs.json.file, script, first);
    if (outputs.html.file != nullptr)
        page_script(outputs.html.file, script, bodies);
}

static void outputs_end(report_outputs *outputs, const report_totals &totals)
{
    if (outputs->text.file != nullptr)
        text_totals(outputs->text.file, totals);
    if (outputs->json.file != nullptr)
        json_end(outputs->json.file, totals);
    if (outputs->html.file != nullptr)
        page_end(outputs->html.file, totals);
    for (report_output *output : {&outputs->text, &outputs->csv, &outputs->json, &outputs->html})
        output_close(output);
}

// ---- Progress ----

// A line on standard error that tells how far a long run has come.
struct progress_line {
    bool wanted;
    std::chrono::steady_clock::time_point next;
    bool there = false;
};

static void progress_clear(progress_line *progress)
{
    if (progress->there)
        fputs("\r\033[K", stderr);
    progress->there = false;
}

static void progress_tell(progress_line *progress, size_t done, size_t scripts)
{
    if (!progress->wanted || std::chrono::steady_clock::now() < progress->next)
        return;
    fmt::print(stderr, "\r{} of {} scripts\033[K", done, scripts);
    fflush(stderr);
    progress->there = true;
    progress->next = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
}

// ---- One script ----

// What follows a conversion.
struct script_run {
    script_report report;
    script_bodies bodies;
    judge_state judge;
    line_prints written; // lines of the output
    bool keeps_body;
};

static void take_statement(const journal_statement &statement, void *context)
{
    auto *run = static_cast<script_run *>(context);
    judge_statement(&run->judge, statement);
    if (run->keeps_body)
        run->bodies.pairs.push_back({statement.line, statement.output_line});
}

static void take_output(std::string_view bytes, void *context)
{
    auto *run = static_cast<script_run *>(context);
    if (run->keeps_body)
        run->bodies.output += bytes.substr(0, body_kept - run->bodies.output.size());
    if (run->report.output_there)
        prints_add(&run->written, bytes);
}

// Opens a script and makes what its conversion needs.
static bool script_open(const std::string &path, plat_file *source)
{
    if (plat_open_input(path.c_str(), source) != 0) {
        report_trouble("can't read " + shown(path) + ": " + file_fault());
        return false;
    }
    if (pools_init() != 0)
        throw std::bad_alloc();
    return true;
}

// Converts the script in memory and judges it. False if it can't be read.
static bool script_judge(script_run *run)
{
    plat_file source;
    if (!script_open(run->report.path, &source))
        return false;
    run->judge.report = &run->report;
    bool taken = run->keeps_body || run->report.output_there;
    journal_listener listener{take_statement, taken ? take_output : nullptr, run};
    journal_convert(run->report.path.c_str(), &source, listener);
    prints_end(&run->written);
    source_lines_add(&run->report, run->judge.end);
    return true;
}

// Converts the script once more, for the lines of the output.
static line_prints script_lines(const script_report &report, const rules_run_state &before)
{
    line_prints lines;
    lines.kept = true;
    plat_file source;
    if (!script_open(report.path, &source))
        return lines;
    rules_run_state after = rules_run;
    rules_run = before;
    auto ignore = [](const journal_statement &, void *) {};
    auto take = [](std::string_view bytes, void *context) {
        prints_add(static_cast<line_prints *>(context), bytes);
    };
    journal_convert(report.path.c_str(), &source, {ignore, take, &lines});
    prints_end(&lines);
    rules_run = after;
    return lines;
}

// Compares the output that stands beside the script with what was written. Only where they differ do lines
// count, and have to be remembered.
static void script_compare(script_run *run, const rules_run_state &before)
{
    script_report &report = run->report;
    line_prints there;
    if (!report.output_there || !prints_of_file(report.output_path, &there))
        return;
    report.output_older = file_is_older(report.output_path, report.path);
    report.output_same = there.sum == run->written.sum;
    for (report_item &item : report.items)
        item.state = STATE_OPEN;
    if (report.output_same || report.items.empty())
        return;
    there = line_prints{};
    there.kept = true;
    if (prints_of_file(report.output_path, &there))
        edits_find(&report, script_lines(report, before), there);
}

// Writes the output beside the script, as the converter does.
static void script_convert(const script_report &report)
{
    plat_file source;
    plat_file output;
    if (!script_open(report.path, &source))
        return;
    if (plat_open_output(report.output_path.c_str(), &source, &output) == 0) {
        out_open(output);
        convert_file(report.path.c_str(), &source);
        out_close();
    } else {
        report_trouble("can't write " + shown(report.output_path) + ": " + file_fault());
    }
    plat_close(&source);
}

// An output that was edited by hand is kept.
static void script_convert_safely(const report_options &options, script_report *report,
                                  const rules_run_state &before)
{
    if (report->output_there && !report->output_same && !options.force) {
        fmt::print(stderr, "murlreport: kept {}, which is not what murlconv writes (--force replaces it)\n",
                   shown(report->output_path));
        return;
    }
    rules_run_state after = rules_run;
    rules_run = before;
    script_convert(*report);
    rules_run = after;
    for (report_item &item : report->items)
        item.state = STATE_OPEN;
    report->output_there = report->output_same = true;
    report->output_older = false;
}

static bool is_selected(const report_options &options, const report_item &item)
{
    const std::vector<std::string> &commands = options.commands;
    std::string command = item.command;
    std::transform(command.begin(), command.end(), command.begin(),
                   [](unsigned char c) { return toupper(c); });
    return options.kinds[item.kind] &&
           (commands.empty() || std::find(commands.begin(), commands.end(), command) != commands.end());
}

// Gravest first, then by line.
static void items_settle(const report_options &options, std::vector<report_item> *items)
{
    auto is_left_out = [&options](const report_item &item) { return !is_selected(options, item); };
    items->erase(std::remove_if(items->begin(), items->end(), is_left_out), items->end());
    auto before = [](const report_item &a, const report_item &b) {
        return a.kind != b.kind ? a.kind < b.kind : a.line < b.line;
    };
    std::stable_sort(items->begin(), items->end(), before);
}

// ---- The run ----

using command_counts = std::unordered_map<std::string, uint64_t>;

static void totals_add(report_totals *totals, command_counts *commands, const script_report &report)
{
    uint64_t open = 0;
    for (const report_item &item : report.items) {
        totals->by_kind[item.kind]++;
        (*commands)[item.command]++;
        open += item.state != STATE_CHANGED ? 1 : 0;
    }
    totals->scripts++;
    totals->statements += report.statements;
    totals->open += open;
    totals->done += open == 0 ? 1 : 0;
}

static void totals_settle(report_totals *totals, const command_counts &commands)
{
    totals->by_command.assign(commands.begin(), commands.end());
    std::sort(totals->by_command.begin(), totals->by_command.end(), [](const auto &a, const auto &b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
}

// False if the script can't be read.
static bool script_report_make(const report_options &options, const std::string &path, script_run *run)
{
    rules_run_state before = rules_run;
    if (!options.one_run)
        before = rules_run = rules_run_state{};
    run->report.path = path;
    run->report.output_path = output_path_of(path);
    run->report.output_there = file_kind_of(run->report.output_path, true) == FILE_REGULAR;
    run->keeps_body = !options.html.empty();
    if (!script_judge(run))
        return false;
    script_compare(run, before);
    if (options.convert)
        script_convert_safely(options, &run->report, before);
    items_settle(options, &run->report.items);
    return true;
}

int report_run(const report_options &options)
{
    report_outputs outputs;
    if (!outputs_open(options, &outputs))
        return REPORT_TROUBLE;
    std::vector<std::string> scripts = scripts_find(options.paths, report_trouble);
    progress_line progress{is_terminal(stderr), std::chrono::steady_clock::now() + std::chrono::seconds(1)};
    report_totals totals;
    command_counts commands;
    outputs_start(outputs);
    for (size_t i = 0; i < scripts.size(); i++) {
        script_run run{};
        if (!script_report_make(options, scripts[i], &run))
            continue;
        progress_clear(&progress);
        outputs_script(outputs, options, run.report, run.bodies, totals.scripts == 0);
        totals_add(&totals, &commands, run.report);
        progress_tell(&progress, i + 1, scripts.size());
    }
    progress_clear(&progress);
    totals_settle(&totals, commands);
    outputs_end(&outputs, totals);
    return in_trouble ? REPORT_TROUBLE : totals.open > 0 ? REPORT_LEFT : REPORT_DONE;
}
