#include "report/findings/statement.h"

#include "report/findings/line_text.h"
#include "report/show.h"

#include <algorithm>
#include <utility>

statement_view statement;
script_report *judged_report;

static void split_lines()
{
    uint64_t start = statement.record->done.head.output_start;
    std::string_view rest = statement.output;
    statement.lines.clear();
    for (uint64_t number = statement.output_line; !rest.empty(); number++) {
        size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view text = rest.substr(0, end);
        statement.lines.push_back({start, number, text, is_live(text), false, false});
        size_t taken = std::min(end + 1, rest.size());
        start += taken;
        rest.remove_prefix(taken);
    }
}

const written_line *line_at(uint64_t offset)
{
    const std::vector<written_line> &lines = statement.lines;
    auto after = std::upper_bound(lines.begin(), lines.end(), offset,
                                  [](uint64_t at, const written_line &line) { return at < line.start; });
    return after == lines.begin() ? nullptr : &after[-1];
}

static void mark_lines_inside()
{
    std::vector<written_line> &lines = statement.lines;
    for (const emit_write &write : statement.writes) {
        const written_line *line = line_at(write.from);
        if (line == nullptr)
            continue;
        bool of_live = line->live && !line->rest;
        for (auto at = static_cast<size_t>(line - lines.data()) + 1;
             at < lines.size() && lines[at].start <= write.to; at++) {
            lines[at].inside = true;
            lines[at].live |= of_live;
            lines[at].rest |= !of_live;
        }
    }
}

void statement_take(const journal_record &record, std::string_view output, uint64_t output_line)
{
    statement.record = &record;
    statement.row = record.done.result >= 0 ? &command_row_at(record.done.result) : nullptr;
    bool converted = statement.row != nullptr && !arguments_failed() &&
                     rule_find(statement.row->id)->effect != EFFECT_SYSTEM;
    statement.rule = converted ? rule_last.row : nullptr;
    statement.line = record.done.head.line;
    statement.last_line = std::max(record.done.head.line, record.done.next_line - 1);
    statement.output = output;
    statement.output_line = output_line;
    statement.writes.assign(record.writes, record.writes + record.write_count);
    split_lines();
    mark_lines_inside();
    statement.output_lines = statement.lines.size();
}

bool arguments_failed()
{
    return statement.row != nullptr && statement.record->done.fetched < 0;
}

std::vector<live_line> joined_live_lines()
{
    std::vector<live_line> found;
    for (const written_line &line : statement.lines)
        if (line.inside && !found.empty() && found.back().last + 1 == &line)
            found.back().last = &line;
        else if (line.live)
            found.push_back({&line, &line});
    return found;
}

std::string_view output_between(uint64_t from, uint64_t to)
{
    return statement.output.substr(static_cast<size_t>(from - statement.record->done.head.output_start),
                                   static_cast<size_t>(to - from));
}

std::vector<uint64_t> lines_written(bool live)
{
    std::vector<uint64_t> numbers;
    for (const written_line &line : statement.lines)
        if (line.live == live && !text_trimmed(line.text).empty())
            numbers.push_back(line.number);
    return numbers;
}

// ---- Items ----

report_item *add_item(report_item item)
{
    item.line = statement.line;
    item.last_line = statement.last_line;
    item.output_line = statement.output_line;
    item.output_lines = statement.output_lines;
    if (statement.row != nullptr)
        item.command = statement.row->name;
    judged_report->items.push_back(std::move(item));
    return &judged_report->items.back();
}

report_item *add_item(item_kind kind, std::string detail, std::vector<uint64_t> own)
{
    report_item item{};
    item.kind = kind;
    item.detail = std::move(detail);
    item.own_lines = std::move(own);
    return add_item(std::move(item));
}

void own_heads(report_item *item)
{
    const std::vector<written_line> &lines = statement.lines;
    std::vector<uint64_t> heads;
    for (uint64_t number : item->own_lines) {
        auto at = static_cast<size_t>(number - lines.front().number);
        while (at > 0 && lines[at].inside)
            at--;
        if (std::find(heads.begin(), heads.end(), lines[at].number) == heads.end())
            heads.push_back(lines[at].number);
    }
    item->own_lines = std::move(heads);
    if (item->own_lines.size() != 1)
        return;
    auto next = lines.begin() + static_cast<ptrdiff_t>(item->own_lines[0] - lines.front().number) + 1;
    auto end = std::find_if_not(next, lines.end(), [](const written_line &line) { return line.inside; });
    item->own_more = static_cast<uint32_t>(end - next);
}
