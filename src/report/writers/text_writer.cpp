// The text: one line an item, in the form by which editors jump to a place, and tables of counts at the end.
#include "platform/platform.h"
#include "report/show.h"
#include "report/writers/writers.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

// Gravest kinds in red, what a person has to write in yellow, the others in blue.
static const char *color_of(item_kind kind)
{
    return kind <= ITEM_GUARDED ? "\033[31m" : kind <= ITEM_CHECK ? "\033[33m" : "\033[34m";
}

static std::string kind_shown(item_kind kind, bool color)
{
    const char *word = kind_table[kind].word;
    return color ? fmt::format("{}{}\033[0m", color_of(kind), word) : word;
}

static void put(FILE *file, const std::string &text)
{
    if (file == stdout)
        plat_print(text.c_str()); // a console may need more than the bytes
    else
        fwrite(text.data(), 1, text.size(), file);
}

static void text_item(FILE *file, const std::string &path, const report_item &item, bool color)
{
    put(file, fmt::format("{}:{}: {}{}{}: {}{}\n", path, item.line, kind_shown(item.kind, color),
                          item.command.empty() ? "" : " ", item.command, item.detail,
                          item.state == STATE_CHANGED || item.state == STATE_ACCEPTED
                              ? " [" + item_state_word(item) + "]"
                              : ""));
}

static const char *summed_words(item_kind kind)
{
    switch (kind) {
    case ITEM_DROPPED: return "system commands";
    default: return "statements without their first attributes";
    }
}

// The items of a kind that are reported in one line.
static void text_summed(FILE *file, const std::string &path, const std::vector<const report_item *> &items,
                        bool color)
{
    std::map<std::string, int> commands;
    for (const report_item *item : items)
        commands[item->command]++;
    std::vector<std::pair<std::string, int>> counts(commands.begin(), commands.end());
    std::stable_sort(counts.begin(), counts.end(),
                     [](const auto &a, const auto &b) { return a.second > b.second; });
    std::string list;
    for (size_t i = 0; i < counts.size() && i < 6; i++)
        list += fmt::format("{}{} {}", i > 0 ? ", " : "", counts[i].first, counts[i].second);
    if (counts.size() > 6)
        list += ", ...";
    const report_item *first = items.front();
    put(file, fmt::format("{}:{}: {}: {} {} (--all lists them): {}\n", path, first->line,
                          kind_shown(first->kind, color), items.size(), summed_words(first->kind), list));
}

// What there is to do about an output that isn't what is written now; null if nothing, or if there is none.
static const char *output_words(output_state state)
{
    switch (state) {
    case OUTPUT_CUT: return "it is empty or cut off; --convert writes it again";
    case OUTPUT_UNKNOWN:
        return "it isn't known what murlconv wrote there; --adopt takes it as an edited conversion";
    case OUTPUT_OLD: return "the script or murlconv has changed since; --convert writes it again";
    case OUTPUT_BEHIND:
        return "it was edited, and the script or murlconv has changed since; --convert merges them";
    default: return nullptr;
    }
}

void text_script(FILE *file, const script_report &script, const report_options &options, bool color)
{
    std::string path = shown(script.path);
    if (options.summary)
        return;
    std::vector<const report_item *> summed;
    auto flush = [&] {
        if (summed.size() == 1)
            text_item(file, path, *summed.front(), color);
        else if (!summed.empty())
            text_summed(file, path, summed, color);
        summed.clear();
    };
    item_kind kind = ITEM_STOPPED;
    for (const report_item &item : script.items) {
        if (item.kind != kind)
            flush();
        kind = item.kind;
        if (item.kind == ITEM_FORM && !options.all)
            continue;
        if (item.summed && !options.all)
            summed.push_back(&item);
        else
            text_item(file, path, item, color);
    }
    flush();
    if (const char *words = output_words(script.output); words != nullptr)
        put(file, fmt::format("{}: output {}: {}\n", shown(script.output_path),
                              output_state_words[script.output], words));
}

static void text_kinds(FILE *file, const report_totals &totals)
{
    for (int kind = 0; kind < item_kind_count; kind++)
        if (totals.by_kind[kind] > 0)
            put(file, fmt::format("{:>8}  {:<8}  {}\n", totals.by_kind[kind], kind_table[kind].word,
                                  kind_table[kind].title));
    put(file, "\n");
    for (const auto &command : totals.by_command)
        put(file, fmt::format("{:>8}  {}\n", command.second, command.first));
    put(file, "\n");
}

// Tips are the two kinds that have one.
void text_totals(FILE *file, const report_totals &totals)
{
    if (totals.by_command.size() > 0) {
        put(file, "\n");
        text_kinds(file, totals);
    }
    for (const auto &[form, count] : totals.by_form)
        put(file, fmt::format("form: {}, in {} {} (--all lists them)\n", form, count,
                              count == 1 ? "line" : "lines"));
    std::string line = fmt::format("{} {}:", totals.scripts, totals.scripts == 1 ? "script" : "scripts");
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
    line += fmt::format("{} {} {}", line.back() == ':' ? "" : ";",
                        totals.done == 1 ? "1 has" : fmt::format("{} have", totals.done),
                        totals.filtered ? "none of these" : "nothing left to do");
    uint64_t none = totals.by_output[OUTPUT_NONE];
    if (none > 0)
        line += fmt::format(", {} not converted yet", none == 1 ? "1 is" : fmt::format("{} are", none));
    line += "\n";
    put(file, line);
}
