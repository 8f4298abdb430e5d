#include "report/source_lines.h"

#include "report/judge_arguments.h"
#include "report/lines.h"
#include "report/show.h"

#include <fmt/format.h>

#include <algorithm>

constexpr uint32_t hint_lines = 8;     // lines of a statement that are searched for a hint
constexpr size_t statement_kept = 300; // characters of a statement that an item holds
constexpr std::string_view magic("Murivo\0", 7);

// A line of the script that an item needs.
struct wanted_line {
    uint64_t number;
    std::string text;
};

// The lines that items need, in their order, and what is left after the end of the reading.
struct source_reading {
    std::vector<wanted_line> wanted;
    size_t next; // of the wanted ones
    source_end end;
    uint64_t unread; // lines from the end on
    bool text_left;  // they hold more than white space
};

// The part of a line that was not read.
static std::string_view unread_part(const source_end &end, uint64_t number, std::string_view line)
{
    if (end.by_byte && number == end.line)
        line.remove_prefix(std::min(line.find('\x1a'), line.size()));
    return line;
}

static void take_line(uint64_t number, std::string_view line, void *context)
{
    auto *reading = static_cast<source_reading *>(context);
    if (number == 1 && line.substr(0, magic.size()) == magic)
        line.remove_prefix(magic.size());
    if (reading->next < reading->wanted.size() && reading->wanted[reading->next].number == number)
        reading->wanted[reading->next++].text = text_trimmed(line);
    if (reading->end.line == 0 || number < reading->end.line)
        return;
    constexpr std::string_view empty(" \t\r\n\v\f\0\x1a", 8);
    bool text = unread_part(reading->end, number, line).find_first_not_of(empty) != std::string_view::npos;
    reading->text_left |= text;
    reading->unread += text || number > reading->end.line || !reading->end.by_byte ? 1 : 0;
}

// The last line that a broken statement's hint is searched in.
static uint32_t hint_end(const report_item &item)
{
    return std::min(item.last_line, item.line + hint_lines);
}

static void want_lines(const script_report &report, source_reading *reading)
{
    for (const report_item &item : report.items) {
        uint32_t last = item.kind == ITEM_BROKEN ? hint_end(item) : item.line;
        for (uint32_t line = item.line; line <= last; line++)
            reading->wanted.push_back({line, {}});
    }
    auto before = [](const wanted_line &a, const wanted_line &b) { return a.number < b.number; };
    auto same = [](const wanted_line &a, const wanted_line &b) { return a.number == b.number; };
    std::sort(reading->wanted.begin(), reading->wanted.end(), before);
    reading->wanted.erase(std::unique(reading->wanted.begin(), reading->wanted.end(), same),
                          reading->wanted.end());
}

static const std::string &line_text(const source_reading &reading, uint64_t number)
{
    auto before = [](const wanted_line &line, uint64_t wanted) { return line.number < wanted; };
    return std::lower_bound(reading.wanted.begin(), reading.wanted.end(), number, before)->text;
}

static std::string first_word(std::string_view text)
{
    return shown(text_cut(text.substr(0, text.find_first_of(" \t\r\n=(,")), 40));
}

static void add_hint(report_item *item, const source_reading &reading)
{
    std::string source;
    for (uint32_t line = item->line; line <= hint_end(*item); line++)
        source += line_text(reading, line) + " ";
    std::string hint = broken_hint(item->command, source);
    if (!hint.empty())
        item->detail += "; " + hint;
}

static void add_unread(report_item *item, const source_reading &reading)
{
    item->detail += reading.unread == 1 ? "; 1 line was not read"
                                        : fmt::format("; {} lines were not read", reading.unread);
}

void source_lines_add(script_report *report, const source_end &end)
{
    if (report->items.empty())
        return;
    source_reading reading{{}, 0, end, 0, false};
    want_lines(*report, &reading);
    (void)lines_read(report->path, take_line, &reading);
    if (end.by_byte && !reading.text_left)
        report->items.pop_back();
    for (report_item &item : report->items) {
        const std::string &line = line_text(reading, item.line);
        item.statement = shown(text_cut(line, statement_kept));
        if (item.command.empty() && !(item.kind == ITEM_STOPPED && end.by_byte))
            item.command = first_word(line);
        if (item.kind == ITEM_BROKEN)
            add_hint(&item, reading);
        if (item.kind == ITEM_STOPPED)
            add_unread(&item, reading);
    }
}
