#include "report/memory/accepted.h"

#include "report/csv.h"
#include "report/files.h"
#include "report/show.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>
#include <vector>

static const csv_row &accepted_head()
{
    static const csv_row head = {"script", "kind",  "command", "statement", "detail",
                                 "before", "after", "count",   "reason"};
    return head;
}
constexpr size_t row_columns = 7; // that tell items apart

std::string accepted_row_of(const std::string &script, const report_item &item)
{
    // Where reading stopped, lines are counted after the reason, and other lines may come and go.
    size_t end = item.kind == ITEM_STOPPED ? item.detail.find(';') : std::string::npos;
    return csv_text({script, kind_table[item.kind].word, item.command, item.source,
                     item.detail.substr(0, end), item.before, item.after});
}

std::string accepted_header()
{
    std::string line = csv_text(accepted_head());
    line.pop_back();
    return line;
}

std::string accepted_script_of(const std::string &row)
{
    return csv_rows(row)[0][0];
}

std::string accepted_row_shown(const std::string &row)
{
    csv_row fields = csv_rows(row)[0];
    return fmt::format("{} {}: {}", shown(fields[1]), shown(fields[2]), shown(fields[4]));
}

bool accepted_read(const std::string &path, accepted_rows *rows)
{
    std::vector<csv_row> table;
    if (!memory_table(path, accepted_head(), &table))
        return false;
    for (csv_row &row : table) {
        csv_row key(row.begin(), row.begin() + row_columns);
        accepted_count &count = rows->rows[csv_text(key)];
        count.count += csv_number<uint64_t>(row[row_columns]);
        count.reason = std::move(row[row_columns + 1]);
        rows->changed = true;
    }
    return true;
}

accepted_rows accepted_load(const folder_memory &memory)
{
    accepted_rows rows;
    std::string path = memory_path(memory, accepted_name);
    if (!memory.refused && file_kind_of(path, true) != FILE_NONE)
        rows.unusable = !accepted_read(path, &rows);
    rows.changed = false;
    return rows;
}

// The items of a script by their rows.
static std::map<std::string, std::vector<report_item *>> items_by_row(script_report *report)
{
    std::map<std::string, std::vector<report_item *>> items;
    for (report_item &item : report->items)
        items[accepted_row_of(path_name(report->path), item)].push_back(&item);
    return items;
}

static uint64_t open_count(const std::vector<report_item *> &items)
{
    auto count =
        std::count_if(items.begin(), items.end(), [](const report_item *item) { return is_open(*item); });
    return static_cast<uint64_t>(count);
}

uint64_t accepted_apply(accepted_rows *rows, script_report *report)
{
    uint64_t settled = 0;
    if (rows->rows.empty())
        return settled;
    for (auto &[row, items] : items_by_row(report)) {
        auto accepted = rows->rows.find(row);
        if (accepted == rows->rows.end())
            continue;
        accepted->second.matched = items.size();
        if (open_count(items) > accepted->second.count)
            continue;
        for (report_item *item : items) {
            settled += is_open(*item);
            item->state = is_open(*item) ? STATE_ACCEPTED : item->state;
        }
    }
    return settled;
}

uint64_t accepted_add(accepted_rows *rows, script_report *report,
                      const std::function<bool(const report_item &)> &chosen, const std::string &reason)
{
    for (auto &[row, items] : items_by_row(report)) {
        auto is_chosen = [&](const report_item *item) { return is_open(*item) && chosen(*item); };
        if (std::none_of(items.begin(), items.end(), is_chosen))
            continue;
        rows->rows[row] = {open_count(items), 0, reason};
        rows->changed = true;
    }
    return accepted_apply(rows, report);
}

// The row of an item in a file of ticks, by as much of the script's path as the file has; null if it has
// none.
static accepted_count *tick_of(accepted_rows *ticks, const script_report &report, const report_item &item)
{
    std::filesystem::path path = path_of(report.path).lexically_normal();
    for (auto part = path.begin(); part != path.end(); ++part) {
        std::filesystem::path script;
        for (auto rest = part; rest != path.end(); ++rest)
            script /= *rest;
        auto tick = ticks->rows.find(accepted_row_of(path_text(script), item));
        if (tick != ticks->rows.end())
            return &tick->second;
    }
    return nullptr;
}

uint64_t accepted_add_ticked(accepted_rows *rows, accepted_rows *ticks, script_report *report)
{
    for (auto &[row, items] : items_by_row(report)) {
        accepted_count *tick = tick_of(ticks, *report, *items.front());
        if (tick == nullptr)
            continue;
        tick->matched += items.size();
        accepted_count &count = rows->rows[row];
        if (items.front()->kind == ITEM_DROPPED || count.count >= tick->count)
            continue;
        count.count = tick->count;
        count.reason = tick->reason;
        rows->changed = true;
    }
    return accepted_apply(rows, report);
}

bool accepted_save(const folder_memory &memory, accepted_rows *rows)
{
    if (!std::exchange(rows->changed, false))
        return true;
    std::string text = csv_text(accepted_head());
    for (const auto &[row, count] : rows->rows)
        text.append(row, 0, row.size() - 1)
            .append("," + csv_text({std::to_string(count.count), count.reason}));
    return memory_write(memory, accepted_name, text);
}
