#include "report/script_run.h"

#include "report/files.h"
#include "report/findings/conversion.h"
#include "report/findings/judge.h"
#include "report/memory/edits.h"
#include "report/memory/text_lines.h"
#include "report/messages.h"
#include "report/scripts.h"
#include "report/show.h"

#include <algorithm>
#include <numeric>
#include <utility>

// Converts the script from run->started and judges it. *after is the state after it.
static bool script_judge(script_run *run, rules_run_state *after)
{
    run->report.items.clear();
    run->report.statements = run->report.converted = 0;
    *after = run->started;
    if (!file_read(run->report.path, &run->script))
        return report_failed("read", run->report.path);
    const text_lines lines = text_split(run->script);
    judge_start(&run->report, lines);
    return script_convert(run->report.path, after, &run->now, judge_statement) ||
           report_failed("read", run->report.path);
}

// Reads the output that is there. False, and reported, if it is no text that a conversion can be compared
// with.
static bool output_read(const script_run &run, std::string *text)
{
    const std::string path = shown(run.report.output_path);
    if (file_identity(run.report.output_path) == file_identity(run.report.path)) {
        report_trouble("won't use " + path + ": it leads to its script"); // by a link
        return false;
    }
    if (!memory_read(run.report.output_path, text, run.now))
        return false;
    bool wide = text->find('\0') != text->npos && run.now.find('\0') == text->npos &&
                !output_is_beginning(*text, run.now, run.last);
    if (wide)
        report_trouble(path +
                       " has NUL bytes, as a text in UTF-16 has, and isn't used; save it in the "
                       "script's encoding");
    return !wide;
}

static void take_output(script_run *run, const folder_memory &memory)
{
    run->last = memory_last(memory, path_name(run->report.output_path), run->now);
    file_kind kind = file_kind_of(run->report.output_path, true);
    if (kind != FILE_REGULAR && kind != FILE_FOLDER)
        return;
    std::string text;
    run->unreadable = !output_read(*run, &text);
    if (!run->unreadable)
        run->there = std::move(text);
    run->report.output_older = file_is_older(run->report.output_path, run->report.path);
}

static bool same_state(const rules_run_state &a, const rules_run_state &b)
{
    return a.collect_mode == b.collect_mode && a.basedim_count == b.basedim_count;
}

// Moves *carried on to the state after the script, for one that started from another state. True if the
// output, of which nothing is remembered, was written from *carried.
static bool carry_on(const script_run &run, rules_run_state *carried)
{
    std::string written;
    return script_convert(run.report.path, carried, &written, nullptr) && run.there && !run.last &&
           !same_text(*run.there, run.now) && same_text(*run.there, written);
}

bool script_examine(const report_options &options, const std::string &path, const folder_memory &memory,
                    rules_run_state *carried, script_run *run)
{
    run->report.path = path;
    run->report.output_path = output_path_of(path);
    const written_row *row = memory_row(memory, path_name(run->report.output_path));
    run->started = options.one_run ? *carried : row != nullptr ? row->started : rules_run_state{};
    rules_run_state after;
    if (!script_judge(run, &after))
        return false;
    take_output(run, memory);
    rules_run_state before = *carried;
    if (same_state(run->started, before)) {
        *carried = after;
    } else if (carry_on(*run, carried)) {
        run->started = before;
        if (!script_judge(run, &after))
            return false;
    }
    script_compare(memory, run);
    return true;
}

void script_compare(const folder_memory &memory, script_run *run)
{
    script_report &report = run->report;
    report.output = output_state_of(run->there, run->now, run->last);
    const written_row *row = memory_row(memory, path_name(report.output_path));
    report.script_changed =
        report.output == OUTPUT_EDITED && row != nullptr && row->script_hash != script_hash_of(run->script);
    bool compared = report.output == OUTPUT_EDITED || report.output == OUTPUT_UNKNOWN;
    report.there_of.clear();
    if (report.output == OUTPUT_SAME) {
        report.there_of.resize(line_count(text_split(run->now)));
        std::iota(report.there_of.begin(), report.there_of.end(), 1);
    } else if (run->there) {
        edits_find(&report, run->now, *run->there);
    }
    for (report_item &item : report.items) {
        item.there_line = 0;
        uint64_t end = std::min<uint64_t>(item.output_line + item.output_lines, report.there_of.size() + 1);
        for (uint64_t line = item.output_line; item.there_line == 0 && line < end; line++)
            item.there_line = report.there_of[static_cast<size_t>(line - 1)];
        item.doubtful =
            item.state == STATE_CHANGED && (report.output == OUTPUT_UNKNOWN || report.script_changed);
        if (!compared)
            item.state = report.output == OUTPUT_NONE ? STATE_NONE : STATE_OPEN;
    }
}
