#include "report/memory/renew.h"

#include "platform/platform.h"
#include "report/files.h"
#include "report/memory/line_diff.h"
#include "report/memory/merge.h"
#include "report/memory/text_lines.h"
#include "report/messages.h"
#include "report/show.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

constexpr size_t block_lines_shown = 20;

// A text with the platform's line ends.
static std::string platform_text(std::string_view text)
{
    if (plat_line_end[1] == '\0')
        return std::string(text);
    std::string result;
    for (char c : text)
        if (c == '\n')
            result += plat_line_end;
        else
            result += c;
    return result;
}

// ---- Writing ----

// Keeps a copy of the output that is there, unless it is remembered byte for byte. False, and reported, if it
// can't.
static bool keep_copy(const script_run &run)
{
    if (!run.there || (run.last && *run.there == *run.last))
        return true;
    std::string path = file_beside(run.report.output_path, ".bak");
    if (!file_replace(path, *run.there, run.report.output_path))
        return report_failed("write", path);
    report_note("kept what was there as " + shown(path));
    return true;
}

static bool remember(script_run *run, folder_memory *memory)
{
    std::string text = platform_text(run->now);
    if (!memory_remember(memory, path_name(run->report.output_path), text,
                         {script_hash_of(run->script), MURL_VERSION, run->started}))
        return false;
    run->last = std::move(text);
    return true;
}

// Replaces the output, and then remembers what is written now.
static bool write_output(script_run *run, folder_memory *memory, std::string text)
{
    if (!memory_can_write(*memory, memory_last_name(path_name(run->report.output_path))) || !keep_copy(*run))
        return false;
    if (!file_replace(run->report.output_path, text, ""))
        return report_failed("write", run->report.output_path);
    run->there = std::move(text);
    run->written = true;
    run->report.output_older = false;
    return remember(run, memory);
}

// ---- Merging ----

static std::string lines_shown(std::string_view text, const char *start)
{
    if (text.empty())
        return fmt::format("\n{}(deleted)", start);
    std::string result;
    std::string_view line;
    for (size_t i = 0; line_take(&text, &line); i++) {
        if (i == block_lines_shown)
            return result + fmt::format("\n{}...", start);
        result += fmt::format("\n{}{}", start, shown_cut(text_trimmed(line), 200));
    }
    return result;
}

static void merge_output(script_run *run, folder_memory *memory)
{
    merge_result merged = merge_texts(*run->last, *run->there, run->now);
    std::string path = shown(run->report.output_path);
    for (const merge_block &block : merged.kept)
        report_note(fmt::format("{}:{}: kept your edit{}", path, block.line, lines_shown(block.mine, "  ")));
    for (const merge_block &block : merged.conflicts)
        report_note(fmt::format("{}:{}: conflict{}{}", path, block.line, lines_shown(block.mine, "  yours: "),
                                lines_shown(block.fresh, "  now:   ")));
    bool recoded = is_utf8(*run->there) && !is_utf8(merged.text);
    run->conflict = !merged.conflicts.empty() || recoded;
    if (!run->conflict) {
        if (write_output(run, memory, std::move(merged.text)))
            report_note(fmt::format("merged {} into {}", counted(merged.taken, "change"), path));
        return;
    }
    std::string fresh = memory_new_name(path_name(run->report.output_path));
    (void)memory_write(*memory, fresh, platform_text(run->now));
    report_note(fmt::format("kept {}: {}; bring in what is new from {}, then run with --adopt", path,
                            merged.conflicts.empty()
                                ? "it was saved in UTF-8, in which its script isn't"
                                : "your edits and what has changed are in the same lines",
                            shown(memory_path(*memory, fresh))));
}

void output_renew(script_run *run, folder_memory *memory, bool force)
{
    std::string path = shown(run->report.output_path);
    if (run->unreadable)
        return;
    output_state state = run->report.output;
    if (force && state != OUTPUT_SAME)
        state = OUTPUT_OLD;
    switch (state) {
    case OUTPUT_CUT:
        if (!output_is_beginning(*run->there, run->now, run->last)) {
            report_note(
                fmt::format("kept {}: it was edited, and is cut off; complete it, and end its last line; "
                            "--force replaces it",
                            path));
            break;
        }
        [[fallthrough]];
    case OUTPUT_NONE:
    case OUTPUT_OLD: (void)write_output(run, memory, platform_text(run->now)); break;
    case OUTPUT_SAME:
        if (!run->last || !same_text(*run->last, run->now) ||
            memory_row(*memory, path_name(run->report.output_path)) == nullptr)
            (void)remember(run, memory);
        break;
    case OUTPUT_EDITED:
        memory_end_conflict(*memory, path_name(run->report.output_path));
        if (run->report.script_changed && remember(run, memory))
            report_note(
                fmt::format("{}: the script has changed, and what is written of it hasn't: look whether your "
                            "edits still fit",
                            path));
        break;
    case OUTPUT_BEHIND: merge_output(run, memory); break;
    case OUTPUT_UNKNOWN:
        report_note(
            fmt::format("kept {}: it isn't known what murlconv wrote there; --adopt takes it as an edited "
                        "conversion, --force replaces it",
                        path));
        break;
    default: break;
    }
    script_compare(*memory, run);
}

// ---- Adopting ----

// How many lines of what is written now an output lacks at its end: all but empty ones of a run that was
// deleted, and of one that was replaced as many as it has fewer that are carried out. *differing: lines that
// differ in all.
static size_t lines_missing(std::string_view now, std::string_view there, size_t *differing)
{
    text_changes texts = text_diff(now, there);
    *differing = 0;
    for (const line_change &change : texts.changes)
        *differing += std::max(change.before_count, change.after_count);
    if (texts.changes.empty())
        return 0;
    const line_change &last = texts.changes.back();
    if (last.before_at + last.before_count != line_count(texts.before))
        return 0;
    size_t lacking = 0;
    for (size_t i = 0; last.after_count == 0 && i < last.before_count; i++)
        lacking += !line_core(texts.before, last.before_at + i).empty();
    size_t written = live_lines(texts.before, last.before_at, last.before_count);
    size_t left = live_lines(texts.after, last.after_at, last.after_count);
    return last.after_count == 0 ? lacking : written - std::min(written, left);
}

void output_adopt(script_run *run, folder_memory *memory, bool force)
{
    std::string path = shown(run->report.output_path);
    if (run->unreadable)
        return;
    if (!run->there) {
        report_note("there is no " + path + " to adopt");
        return;
    }
    size_t differing;
    size_t missing = lines_missing(run->now, *run->there, &differing);
    std::string refusal;
    if (run->report.output == OUTPUT_CUT)
        refusal = "it is cut off";
    else if (run->report.output != OUTPUT_SAME && run->report.output_older)
        refusal = "it is older than its script";
    else if (missing > 0)
        refusal = fmt::format("it lacks {} of what is written now at its end", counted(missing, "line"));
    if (!refusal.empty() && !force) {
        report_trouble(fmt::format("{} isn't adopted: {} (--force overrides)", path, refusal));
        return;
    }
    if (!remember(run, memory))
        return;
    report_note(fmt::format("adopted {}, of which {} {} from what is written now", path,
                            counted(differing, "line"), differing == 1 ? "differs" : "differ"));
    script_compare(*memory, run);
}
