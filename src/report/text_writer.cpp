// The text: one line an item, in the form by which editors jump to a place, and tables of counts at the end.
#include "report/show.h"
#include "report/writers.h"

#include <fmt/format.h>

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
    fwrite(text.data(), 1, text.size(), file);
}

static void text_item(FILE *file, const std::string &path, const report_item &item, bool color)
{
    put(file, fmt::format("{}:{}: {}{}{}: {}{}\n", path, item.line, kind_shown(item.kind, color),
                          item.command.empty() ? "" : " ", item.command, item.detail,
                          item.state == STATE_CHANGED ? " [changed]" : ""));
}

// The items of a kind that are told in one line.
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
                          kind_shown(first->kind, color), items.size(),
                          first->kind == ITEM_DROPPED ? "system commands"
                                                      : "statements without their first attributes",
                          list));
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
        if (item.summed && !options.all)
            summed.push_back(&item);
        else
            text_item(file, path, item, color);
    }
    flush();
    if (script.output_older)
        put(file, fmt::format("{}: {} is older than its script\n", path, shown(script.output_path)));
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
    line += fmt::format("{} {} nothing left to do\n", line.back() == ':' ? "" : ";",
                        totals.done == 1 ? "1 has" : fmt::format("{} have", totals.done));
    put(file, line);
}
