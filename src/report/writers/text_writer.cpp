// The text: one line an item, in the form by which editors jump to a place, and tables of counts at the end.
#include "platform/platform.h"
#include "report/files.h"
#include "report/show.h"
#include "report/writers/writers.h"

#include <fmt/core.h>

#include <stdlib.h>

#include <algorithm>
#include <map>

static const report_options *asked; // what the text is to have
static bool color;

// Gravest kinds in red, what a person has to write in yellow, the others in blue.
static std::string kind_shown(item_kind kind)
{
    int code = kind <= ITEM_GUARDED ? 31 : kind <= ITEM_CHECK ? 33 : 34;
    const char *word = kind_table[kind].word;
    return color ? fmt::format("\033[{}m{}\033[0m", code, word) : word;
}

// Text goes to standard output alone; a console may need more than the bytes.
static void put(const std::string &text)
{
    plat_print(text.c_str());
}

static void text_start(FILE *file, const report_options &options)
{
    asked = &options;
    const char *no_color = getenv("NO_COLOR");
    color = is_terminal(file) && (no_color == nullptr || *no_color == 0);
}

static void text_item(const std::string &path, const report_item &item)
{
    bool settled = item.state == STATE_CHANGED || item.state == STATE_ACCEPTED;
    put(fmt::format("{}:{}: {}{}{}: {}{}\n", path, item.line, kind_shown(item.kind),
                    item.command.empty() ? "" : " ", item.command, item.detail,
                    settled ? " [" + item_state_word(item) + "]" : ""));
}

// Items of one kind that are reported in one line, unless there is only one.
static void text_summed(const std::string &path, const std::vector<const report_item *> &items)
{
    if (items.size() == 1)
        text_item(path, *items.front());
    if (items.size() < 2)
        return;
    std::map<std::string, uint64_t> commands;
    for (const report_item *item : items)
        commands[item->command]++;
    const auto counts = most_first(commands);
    std::string list;
    for (size_t i = 0; i < counts.size() && i < 6; i++)
        list += fmt::format("{}{} {}", i > 0 ? ", " : "", counts[i].first, counts[i].second);
    const report_item *first = items.front();
    put(fmt::format("{}:{}: {}: {} {} (--all lists them): {}{}\n", path, first->line, kind_shown(first->kind),
                    items.size(),
                    first->kind == ITEM_DROPPED ? "system commands"
                                                : "statements without one of their attributes",
                    list, counts.size() > 6 ? ", ..." : ""));
}

// What there is to do about an output that isn't what is written now; null if nothing, or if there is none.
static const char *output_words(output_state state)
{
    switch (state) {
    case OUTPUT_CUT: return "it is empty or cut off; --convert writes it again, or says why not";
    case OUTPUT_UNKNOWN:
        return "it isn't known what murlconv wrote there; --adopt takes it as an edited conversion";
    case OUTPUT_OLD: return "the script or murlconv has changed since; --convert writes it again";
    case OUTPUT_BEHIND:
        return "it was edited, and the script or murlconv has changed since; --convert merges them, or "
               "says how to end a conflict";
    default: return nullptr;
    }
}

static void text_script(FILE *, const script_run &run)
{
    const script_report &script = run.report;
    std::string path = shown(script.path);
    if (asked->summary)
        return;
    std::vector<const report_item *> summed;
    for (const report_item &item : script.items) {
        if (!summed.empty() && summed.back()->kind != item.kind) {
            text_summed(path, summed);
            summed.clear();
        }
        if (asked->all || !item.summed)
            text_item(path, item);
        else if (item.kind == ITEM_DROPPED || (item.kind != ITEM_FORM && is_open(item)))
            summed.push_back(&item); // the totals have those of the kind form
    }
    text_summed(path, summed);
    if (const char *words = output_words(script.output); words != nullptr)
        put(fmt::format("{}: output {}: {}\n", shown(script.output_path), output_state_words[script.output],
                        words));
    auto is_doubtful = [](const report_item &item) { return item.doubtful; };
    if (script.output == OUTPUT_EDITED && std::any_of(script.items.begin(), script.items.end(), is_doubtful))
        put(fmt::format(
            "{}: output edited: the script has changed since, though what is written of it hasn't; "
            "--convert takes note of it\n",
            shown(script.output_path)));
}

static void text_kinds(const report_totals &totals)
{
    for (int kind = 0; kind < item_kind_count; kind++)
        if (totals.by_kind[kind] > 0)
            put(fmt::format("{:>8}  {:<8}  {}\n", totals.by_kind[kind], kind_table[kind].word,
                            kind_table[kind].title));
    put("\n");
    for (const auto &command : most_first(totals.by_command))
        put(fmt::format("{:>8}  {}\n", command.second, command.first));
    put("\n");
}

// Tips are the two kinds that have one.
static void text_end(FILE *, const report_totals &totals)
{
    if (!totals.by_command.empty()) {
        put("\n");
        text_kinds(totals);
    }
    for (const auto &[form, count] : totals.by_form)
        if (!asked->all)
            put(fmt::format("form: {}, in {} (--all lists them)\n", form, counted(count, "line")));
    for (int state = 0; asked->summary && state < output_state_count; state++)
        if (const char *words = output_words(static_cast<output_state>(state));
            words != nullptr && totals.by_output[state] > 0)
            put(fmt::format("output {}, of {}: {}\n", output_state_words[state],
                            counted(totals.by_output[state], "script"), words));
    if (totals.written > 0)
        put(counted(totals.written, "output") + " written\n");
    std::string line = counted(totals.scripts, "script") + ":";
    auto add = [&line](uint64_t count, const char *word) {
        if (count > 0)
            line += fmt::format("{} {} {}", line.back() == ':' ? "" : ",", count, word);
    };
    for (int kind = 0; kind < item_kind_count; kind++) {
        uint64_t tips = totals.by_kind[ITEM_BYHAND] + totals.by_kind[ITEM_CHECK];
        if (kind == ITEM_BYHAND)
            add(tips, tips == 1 ? "tip" : "tips");
        else if (kind != ITEM_CHECK)
            add(totals.by_kind[kind], kind_table[kind].word);
    }
    add(totals.settled, "of them changed or accepted");
    line += fmt::format("{} {} {}", line.back() == ':' ? "" : ";",
                        totals.done == 1 ? "1 has" : fmt::format("{} have", totals.done),
                        asked->filtered ? "none of these" : "nothing left to do");
    uint64_t none = totals.by_output[OUTPUT_NONE] - totals.unused;
    if (none > 0)
        line += fmt::format(", {} not converted yet", none == 1 ? "1 is" : fmt::format("{} are", none));
    if (totals.unused > 0)
        line += fmt::format(", {} not used", counted(totals.unused, "output"));
    line += "\n";
    put(line);
}

const report_writer text_writer = {text_start, text_script, text_end};
