#include "report/findings/judge_state.h"

#include <algorithm>
#include <utility>

std::string_view script_lines(const judge_state &state, const statement_view &statement)
{
    size_t end = std::min<size_t>(statement.last_line, line_count(*state.script));
    return lines_between(*state.script, std::min<size_t>(statement.line - 1, end), end);
}

report_item *add_item(judge_state *state, const statement_view &statement, item_kind kind, std::string detail,
                      std::vector<uint64_t> own)
{
    report_item item{};
    item.kind = kind;
    item.line = statement.line;
    item.last_line = statement.last_line;
    item.output_line = statement.output_line;
    item.output_lines = statement.output_lines;
    if (statement.row != nullptr)
        item.command = statement.row->name;
    item.detail = std::move(detail);
    item.own_lines = std::move(own);
    state->report->items.push_back(std::move(item));
    return &state->report->items.back();
}
