#include "report/memory/change_positions.h"

#include <algorithm>
#include <numeric>
#include <vector>

// Where items are in the lines that are deleted from, by a line's number.
struct item_positions {
    std::vector<size_t> begun,
        over;                 // items whose own lines begin up to there, and those that have no later one
    std::vector<char> is_end; // a statement's output begins there, or has ended before it
};

static item_positions positions_of(const script_report &report, size_t count)
{
    item_positions positions{std::vector<size_t>(count + 2), std::vector<size_t>(count + 2),
                             std::vector<char>(count + 2)};
    auto limited = [count](uint64_t line) {
        return static_cast<size_t>(std::min<uint64_t>(line, count + 1));
    };
    for (const report_item &item : report.items) {
        for (uint64_t line : {item.output_line, item.output_line + item.output_lines})
            positions.is_end[limited(line)] = 1;
        if (item.own_lines.empty())
            continue;
        auto [first, last] = std::minmax_element(item.own_lines.begin(), item.own_lines.end());
        positions.begun[limited(*first)]++;
        positions.over[limited(*last)]++;
    }
    for (std::vector<size_t> *sums : {&positions.begun, &positions.over})
        std::partial_sum(sums->begin(), sums->end(), sums->begin());
    return positions;
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

// The best way to move lines that a change deletes beyond those that it adds, by at most as many as there are
// kept before them.
static line_move best_move(const item_positions &positions, const text_lines &before,
                           const line_change &change, size_t most)
{
    auto touched = [&](size_t begin, size_t end) {
        return begin < end ? positions.begun[end] - positions.over[begin] : 0;
    };
    auto move_of = [&](size_t count, size_t by) {
        size_t at = change.before_at - by, rest = change.before_at + count;
        size_t end = change.before_at + change.before_count;
        int ends = change.after_count == 0 ? positions.is_end[at + 1] + positions.is_end[at + count + 1] : 0;
        // Where no line is kept between the two parts, an item of both counts once.
        size_t all = std::min(touched(at, at + count) + touched(rest, end), touched(at, end));
        return line_move{count, by, all, ends};
    };
    // The line that enters the deletion takes the place of one that leaves it.
    auto can_move = [&](size_t count, size_t by) {
        size_t at = change.before_at - by;
        return by <= most && line_core(before, at) == line_core(before, at + count);
    };
    line_move best = move_of(change.before_count, 0);
    size_t surplus = change.before_count - std::min(change.after_count, change.before_count);
    for (size_t count = surplus; count > 0; count = std::min(count - 1, moved_max)) {
        if (!can_move(count, 1))
            continue;
        for (size_t by = 0; by == 0 || can_move(count, by); by++) {
            line_move move = move_of(count, by);
            // Of as good ones the first: an IF goes with what it governs.
            bool first = count == change.before_count && move.ends > 0 && !is_better(best, move);
            if (first || is_better(move, best))
                best = move;
        }
    }
    return best;
}

void changes_move(const script_report &report, text_changes *texts)
{
    const item_positions positions = positions_of(report, line_count(texts->before));
    std::vector<line_change> moved;
    for (line_change change : texts->changes) {
        size_t kept_from = moved.empty() ? 0 : moved.back().before_at + moved.back().before_count;
        size_t most = change.before_at - kept_from;
        line_move best = best_move(positions, texts->before, change, most);
        if (best.by > 0) {
            if (best.by == most && !moved.empty())
                moved.back().before_count += best.count;
            else
                moved.push_back({change.before_at - best.by, best.count, change.after_at - best.by, 0});
            change.before_at += best.count;
            change.before_count -= best.count;
        }
        if (change.before_count + change.after_count > 0)
            moved.push_back(change);
    }
    texts->changes = std::move(moved);
}
