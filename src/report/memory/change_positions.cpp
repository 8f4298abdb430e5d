#include "report/memory/change_positions.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

// The lines that are deleted from, and what items have of them.
struct deletion_view {
    const text_lines *before;
    std::vector<std::pair<size_t, size_t>> owners; // index of a line, and of an item that is about it; sorted
    std::vector<size_t> ends;                      // of statements' outputs, with their beginnings; sorted
};

static deletion_view deletion_view_of(const script_report &report, const text_changes &texts)
{
    deletion_view view{&texts.before, {}, {}};
    for (size_t number = 0; number < report.items.size(); number++) {
        const report_item &item = report.items[number];
        for (uint64_t line : item.own_lines)
            view.owners.emplace_back(static_cast<size_t>(line - 1), number);
        for (uint64_t line : {item.output_line, item.output_line + item.output_lines})
            view.ends.push_back(static_cast<size_t>(line - 1));
    }
    std::sort(view.owners.begin(), view.owners.end());
    std::sort(view.ends.begin(), view.ends.end());
    return view;
}

static bool is_end(const deletion_view &view, size_t line)
{
    return std::binary_search(view.ends.begin(), view.ends.end(), line);
}

// The items that lines are about, with how many of the lines each.
using touched_items = std::map<size_t, size_t>;

static void touch(const deletion_view &view, size_t line, bool enters, touched_items *touched)
{
    auto owner = std::lower_bound(view.owners.begin(), view.owners.end(), std::pair<size_t, size_t>(line, 0));
    for (; owner != view.owners.end() && owner->first == line; ++owner) {
        size_t &count = (*touched)[owner->second];
        count += enters ? 1 : SIZE_MAX;
        if (count == 0)
            touched->erase(owner->second);
    }
}

// A way to move the first lines of a change up, over lines that are kept then in their place.
struct line_move {
    size_t count, by;
    size_t touched; // items that lose lines
    int ends;       // of outputs, where the lines begin and end
};

static bool is_better(const line_move &a, const line_move &b)
{
    return a.touched != b.touched ? a.touched < b.touched : a.ends > b.ends;
}

constexpr size_t moved_max = 64; // lines that are moved without all others; a tip has fewer

// Looks for a better way to move a number of lines, by at most as many as there are kept before them.
static void find_move(const deletion_view &view, const line_change &change, size_t count, size_t most,
                      line_move *best)
{
    // The line that enters the deletion takes the place of one that leaves it.
    auto can_move = [&](size_t by) {
        auto line = [&](size_t at) { return line_core(*view.before, at); };
        return by <= most && line(change.before_at - by) == line(change.before_at - by + count);
    };
    if (!can_move(1))
        return;
    touched_items touched;
    for (size_t i = 0; i < change.before_count; i++)
        touch(view, change.before_at + i, true, &touched);
    auto move_by = [&](size_t by) {
        size_t at = change.before_at - by;
        int ends = change.after_count == 0 ? is_end(view, at) + is_end(view, at + count) : 0;
        return line_move{count, by, touched.size(), ends};
    };
    const bool all = change.before_count == count;
    if (line_move stays = move_by(0); best->count == 0 || (best->by == 0 && is_better(stays, *best)))
        *best = stays;
    for (size_t by = 1; can_move(by); by++) {
        touch(view, change.before_at - by + count, false, &touched);
        touch(view, change.before_at - by, true, &touched);
        line_move move = move_by(by);
        // Of as good ones the first: an IF goes with what it governs.
        if (is_better(move, *best) || (all && move.ends > 0 && !is_better(*best, move)))
            *best = move;
    }
}

// Each change may give up lines that it deletes beyond those that it adds.
void changes_move(const script_report &report, text_changes *texts)
{
    if (texts->changes.empty())
        return;
    const deletion_view view = deletion_view_of(report, *texts);
    std::vector<line_change> moved;
    for (line_change change : texts->changes) {
        size_t kept_from = moved.empty() ? 0 : moved.back().before_at + moved.back().before_count;
        size_t surplus = change.before_count - std::min(change.after_count, change.before_count);
        size_t most = change.before_at - kept_from;
        line_move best{};
        for (size_t count = surplus; count > 0; count = std::min(count - 1, moved_max))
            find_move(view, change, count, most, &best);
        if (best.by > 0 && best.by == most && !moved.empty())
            moved.back().before_count += best.count;
        else if (best.by > 0)
            moved.push_back({change.before_at - best.by, best.count, change.after_at - best.by, 0});
        if (best.by > 0) {
            change.before_at += best.count;
            change.before_count -= best.count;
        }
        if (change.before_count + change.after_count > 0)
            moved.push_back(change);
    }
    texts->changes = std::move(moved);
}
