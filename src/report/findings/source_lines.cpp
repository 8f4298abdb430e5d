#include "report/findings/source_lines.h"

#include "report/findings/line_text.h"
#include "report/show.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>
#include <vector>

constexpr size_t statement_kept = 300; // characters of a line that an item holds
constexpr std::string_view magic("Murivo\0", 7);

// A line of the script by its number from 1, trimmed and cut to a size; empty before the first and after the
// last one.
static std::string_view line_of(const text_lines &script, size_t number, size_t size = statement_kept)
{
    if (number == 0 || number > line_count(script))
        return {};
    std::string_view line = line_core(script, number - 1);
    if (number == 1 && line.substr(0, magic.size()) == magic)
        line = text_trimmed(line.substr(magic.size()));
    return text_begin(line, size);
}

// The nearest line with a text, in steps of 1 or -1.
static std::string_view near_line(const text_lines &script, size_t number, int step)
{
    std::string_view line;
    do {
        number += static_cast<size_t>(step);
        line = line_of(script, number);
    } while (line.empty() && number > 0 && number <= line_count(script));
    return line;
}

bool unread_shown(const text_lines &script, const source_end &end, std::string *shown)
{
    constexpr std::string_view empty(" \t\r\n\v\f\0\x1a", 8);
    size_t count = line_count(script), first = std::min<size_t>(end.line - 1, count);
    size_t unread = count - first;
    if (end.by_byte) {
        std::string_view line = lines_between(script, first, std::min(first + 1, count));
        size_t at = std::min(line.find('\x1a'), line.size());
        if (lines_between(script, first, count).find_first_not_of(empty, at) == line.npos)
            return false;
        unread -= line.find_first_not_of(empty, at) == line.npos;
    }
    if (unread > 0)
        *shown = fmt::format("; {} {} not read", counted(unread, "line"), unread == 1 ? "was" : "were");
    return true;
}

// Many of the converter's routines take a NUL byte for the end of the text: what follows it on the line may
// be missing in the output.
static void add_nuls(script_report *report, const text_lines &script, const source_end &end)
{
    size_t last = end.line != 0 ? end.line - 1 : line_count(script);
    std::vector<size_t> found;
    for (size_t number = 1; number <= last; number++)
        if (line_of(script, number, SIZE_MAX).find('\0') != std::string_view::npos)
            found.push_back(number);
    if (found.empty())
        return;
    report_item item{};
    item.kind = ITEM_LOST;
    item.output_line = 1;
    item.line = item.last_line = static_cast<uint32_t>(found[0]);
    std::string where = found.size() == 1
                            ? "is on the line"
                            : fmt::format("here and in {} more", counted(found.size() - 1, "line"));
    item.detail = "a NUL byte, as a text in UTF-16 has, " + where + ": what follows it may be gone";
    report->items.push_back(std::move(item));
}

void source_lines_add(script_report *report, const text_lines &script, const source_end &end)
{
    bool has_nul = script.body.find('\0') != std::string_view::npos;
    if (report->items.empty() && !has_nul)
        return;
    if (has_nul)
        add_nuls(report, script, end);
    for (report_item &item : report->items) {
        item.source = line_of(script, item.line);
        item.before = near_line(script, item.line, -1);
        item.after = near_line(script, item.last_line, 1);
        if (item.command.empty() && !(item.kind == ITEM_STOPPED && end.by_byte))
            item.command = first_word(item.source);
    }
}
