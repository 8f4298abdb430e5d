#include "report/report.h"

#include "report/desktop.h"
#include "report/files.h"
#include "report/memory/accepted.h"
#include "report/memory/renew.h"
#include "report/messages.h"
#include "report/outputs.h"
#include "report/script_run.h"
#include "report/show.h"
#include "statements/command_table.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>

// The memory of one folder, and how the run has dealt with it.
struct folder_run {
    folder_memory memory;
    accepted_rows accepted;
    std::set<std::string> scripts; // that were looked at
    std::optional<bool> writable;  // once that was tried
};

struct report_state {
    const report_options *options;
    report_outputs outputs;
    report_totals totals;
    std::map<std::string, folder_run> folders; // by identity
    rules_run_state carried{};
    accepted_rows ticks;   // of --accept-from
    uint64_t accepted = 0; // items of this run
};

// ---- Totals ----

static bool is_done(const report_options &options, const script_report &report, uint64_t open)
{
    bool written = report.output == OUTPUT_SAME || report.output == OUTPUT_EDITED;
    return options.filtered ? report.items.empty() : written && open == 0;
}

static void totals_add(report_state *state, const script_run &run)
{
    const script_report &report = run.report;
    report_totals &totals = state->totals;
    uint64_t open = 0;
    for (const report_item &item : report.items) {
        totals.by_kind[item.kind]++;
        totals.by_command[item.command]++;
        open += is_open(item);
        totals.settled += !is_open(item) && item.kind != ITEM_DROPPED;
        if (item.kind == ITEM_FORM && is_open(item))
            totals.by_form[item.command + ": " + item.detail.substr(0, item.detail.find(": "))]++;
    }
    totals.scripts++;
    totals.statements += report.statements;
    totals.open += open;
    totals.by_output[report.output]++;
    totals.written += run.written;
    totals.conflicts += run.conflict;
    totals.unused += run.unreadable;
    totals.done += is_done(*state->options, report, open);
}

// ---- One script ----

static folder_run *folder_of(report_state *state, const std::string &path)
{
    std::string folder = path_folder(path);
    auto [entry, is_new] = state->folders.emplace(file_identity(folder.empty() ? "." : folder), folder_run{});
    folder_run *known = &entry->second;
    if (is_new) {
        known->memory = memory_load(folder);
        known->accepted = accepted_load(known->memory);
    }
    return known;
}

// Tries once whether a folder's memory can be written to.
static bool can_write(folder_run *folder)
{
    if (!folder->writable)
        folder->writable = memory_prepare(folder->memory);
    return *folder->writable;
}

// True if an item is one of those that the options select.
static bool is_selected(const report_options &options, const report_item &item)
{
    const std::vector<std::string> &commands = options.commands;
    return options.kinds[item.kind] &&
           (commands.empty() ||
            std::find(commands.begin(), commands.end(), text_upper(item.command)) != commands.end());
}

// What --accept selects: items of the kinds and commands that were named, or of the lines.
static bool is_named(const report_options &options, const std::vector<uint32_t> &lines,
                     const report_item &item)
{
    bool grave = item.kind <= ITEM_GUARDED;
    bool line_named = lines.empty() || std::find(lines.begin(), lines.end(), item.line) != lines.end();
    bool kind_named = options.kinds.count() < item_kind_count;
    return item.kind != ITEM_DROPPED && line_named && is_selected(options, item) && (!grave || kind_named);
}

// Reports the lines in which nothing was accepted, and why.
static void report_unaccepted(const script_report &report, const std::vector<uint32_t> &lines)
{
    for (uint32_t line : lines) {
        auto here = [line](const report_item &item) {
            return item.line == line && item.kind != ITEM_DROPPED;
        };
        auto accepted = [&](const report_item &item) { return here(item) && item.state == STATE_ACCEPTED; };
        if (std::any_of(report.items.begin(), report.items.end(), accepted))
            continue;
        bool any = std::any_of(report.items.begin(), report.items.end(), here);
        report_note(
            fmt::format("nothing is accepted in {}:{}: {}", shown(report.path), line,
                        any ? "name the kind of its item by --kind, if it is open" : "it has no item"));
    }
}

static void accept_items(report_state *state, const script_path &script, folder_run *folder, script_run *run)
{
    const report_options &options = *state->options;
    uint64_t added = 0;
    if (!options.accept_from.empty())
        added += accepted_add_ticked(&folder->accepted, &state->ticks, &run->report);
    auto chosen = [&](const report_item &item) { return is_named(options, script.lines, item); };
    if (options.accept)
        added += accepted_add(&folder->accepted, &run->report, chosen, options.reason);
    report_unaccepted(run->report, script.lines);
    state->accepted += added;
    if (added > 0)
        report_note(fmt::format("accepted {} of {}", counted(added, "item"), shown(run->report.path)));
}

// Gravest first, then by line.
static void items_settle(const report_options &options, std::vector<report_item> *items)
{
    auto is_left_out = [&options](const report_item &item) { return !is_selected(options, item); };
    if (options.filtered)
        items->erase(std::remove_if(items->begin(), items->end(), is_left_out), items->end());
    auto before = [](const report_item &a, const report_item &b) {
        return a.kind != b.kind ? a.kind < b.kind : a.line < b.line;
    };
    std::stable_sort(items->begin(), items->end(), before);
}

static void take_script(report_state *state, const script_path &script)
{
    const report_options &options = *state->options;
    folder_run *folder = folder_of(state, script.path);
    script_run run;
    if (!script_examine(options, script.path, folder->memory, &state->carried, &run))
        return;
    folder->scripts.insert(path_name(script.path));
    if (options.convert && can_write(folder))
        output_renew(&run, &folder->memory, options.force);
    if (options.adopt && can_write(folder))
        output_adopt(&run, &folder->memory, options.force);
    accepted_apply(&folder->accepted, &run.report);
    bool accepts = options.accept || !options.accept_from.empty();
    if (accepts && !folder->accepted.unusable && can_write(folder))
        accept_items(state, script, folder, &run);
    items_settle(options, &run.report.items);
    progress_clear();
    outputs_script(state->outputs, run);
    totals_add(state, run);
}

// ---- The run ----

// Commands of a filter that are neither commands of the language nor words of items.
static void check_commands(const report_state &state)
{
    for (const std::string &word : state.options->commands) {
        const auto &commands = state.totals.by_command;
        bool seen = std::any_of(commands.begin(), commands.end(),
                                [&](const auto &command) { return text_upper(command.first) == word; });
        if (!seen && command_find(word_key_make(word.data(), word.size())) < 0)
            report_trouble("there is no command " + shown(word));
    }
}

// Rows that accept what isn't there any more, of scripts that were looked at in whole or are gone.
static void report_unmatched(report_state *state, folder_run *folder)
{
    const report_options &options = *state->options;
    auto &rows = folder->accepted.rows;
    for (auto row = rows.begin(); row != rows.end();) {
        std::string script = accepted_script_of(row->first);
        bool gone = file_kind_of(path_join(folder->memory.folder, script), true) == FILE_NONE;
        if (row->second.matched > 0 || (folder->scripts.count(script) == 0 && !gone)) {
            ++row;
            continue;
        }
        report_note(fmt::format("{}: what was accepted of {} matches nothing any more: {}{}",
                                shown(memory_path(folder->memory, accepted_name)), shown(script),
                                accepted_row_shown(row->first),
                                options.prune ? " (removed)" : " (--prune removes it)"));
        folder->accepted.changed |= options.prune;
        row = options.prune ? rows.erase(row) : std::next(row);
    }
}

static void report_unmatched_ticks(const accepted_rows &ticks)
{
    for (const auto &[row, count] : ticks.rows)
        if (count.matched == 0)
            report_note(fmt::format("a tick of {} matches nothing that is open: {}",
                                    shown(accepted_script_of(row)), accepted_row_shown(row)));
}

static void folders_settle(report_state *state)
{
    for (auto &[path, folder] : state->folders) {
        if (!folder.accepted.unusable)
            report_unmatched(state, &folder);
        if (state->options->prune)
            memory_prune(&folder.memory);
        (void)memory_save(&folder.memory);
        if (!folder.accepted.unusable)
            (void)accepted_save(folder.memory, &folder.accepted);
    }
}

// Outputs without a script that a walk has met.
static void report_lone(report_state *state, const std::vector<std::string> &lone)
{
    for (const std::string &path : lone) {
        bool known = memory_knows(folder_of(state, path)->memory, path_name(path));
        report_note(shown(path) + (known ? " is an output whose script is gone"
                                         : " looks like an output; name it to have it read"));
    }
    state->totals.lone = lone.size();
}

// What tells the folders of a run apart from others without saying what they are called.
static std::string folder_key_of(const std::vector<std::string> &paths)
{
    std::string real;
    for (const std::string &path : paths)
        real += path_real(path) + "\n";
    return hash_of(real);
}

static int status_of(const report_totals &totals)
{
    if (report_in_trouble())
        return REPORT_TROUBLE;
    uint64_t written = totals.by_output[OUTPUT_SAME] + totals.by_output[OUTPUT_EDITED];
    return totals.open > 0 || totals.conflicts > 0 || totals.lone > 0 || written < totals.scripts
               ? REPORT_LEFT
               : REPORT_DONE;
}

// Where --open has the page if no file was named.
static bool choose_page(report_options *options)
{
    if (options->open && options->html.empty())
        options->html = open_page_path(options->folder_key);
    if (options->open && options->html.empty())
        report_trouble("there is no folder for the page that only you can write to; name a file with --html");
    return !options->open || !options->html.empty();
}

static void take_scripts(report_state *state, const scripts_found &found)
{
    for (size_t i = 0; i < found.scripts.size(); i++) {
        take_script(state, found.scripts[i]);
        progress_show(i + 1, found.scripts.size());
    }
    progress_clear();
    report_lone(state, found.lone);
    for (const std::string &folder : found.folders)
        (void)folder_of(state, path_join(folder, memory_folder_name));
    report_unmatched_ticks(state->ticks);
    auto has_lines = [](const script_path &script) { return !script.lines.empty(); };
    if (state->options->accept && state->accepted == 0 &&
        std::none_of(found.scripts.begin(), found.scripts.end(), has_lines))
        report_note("nothing is accepted: no open item is selected");
    folders_settle(state);
    check_commands(*state);
}

// Finds the scripts before anything is opened, and opens the outputs.
static bool run_start(report_state *state, report_options *options, scripts_found *found)
{
    options->folder_key = folder_key_of(options->paths);
    *found = scripts_find(options->paths, options->accept, options->force);
    if (found->scripts.empty() && found->lone.empty()) {
        if (!report_in_trouble())
            report_trouble("there is no script to read");
        if (found->folders.empty())
            return false;
    }
    if ((!options->accept_from.empty() && !accepted_read(options->accept_from, &state->ticks)) ||
        !choose_page(options))
        return false;
    return outputs_open(*options, found->scripts, &state->outputs);
}

int report_run(report_options options)
{
    report_state state{};
    state.options = &options;
    scripts_found found;
    bool started = run_start(&state, &options, &found);
    try {
        if (started)
            take_scripts(&state, found);
    } catch (...) {
        outputs_abandon(&state.outputs);
        throw;
    }
    if (started)
        outputs_end(&state.outputs, state.totals);
    if (started && options.open && !open_page(options.html))
        report_trouble("can't start a browser; the page is " + shown(options.html));
    return status_of(state.totals);
}
