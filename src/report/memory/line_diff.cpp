// A path through the two texts is looked for from both ends at once; from the end it is the same search in
// the mirrored texts. A diagonal is the difference of the positions in before and after; for each, a front
// has the furthest position in before that so many changes reach.
#include "report/memory/line_diff.h"

#include <stdint.h>

#include <algorithm>

using position = ptrdiff_t;

// Beyond so many changes from either end of a stretch the search takes the best that it has.
constexpr position changes_max = 256;

// One of the two texts. Between its unchanged lines are gaps of changed ones: gap i is between the unchanged
// lines i - 1 and i. Both texts have as many, in the same order.
struct diff_text {
    const std::vector<uint32_t> &lines;
    std::vector<uint32_t> known{}; // lines that the other text has too; no other can be part of the path
    std::vector<position> known_at{};
    std::vector<position> at{-1}; // of the unchanged lines; the first is before the text, the last behind it

    bool is_equal(position a, position b) const
    {
        return lines[static_cast<size_t>(a)] == lines[static_cast<size_t>(b)];
    }
    position gap_size(size_t gap) const
    {
        return at[gap] - at[gap - 1] - 1;
    }
};

// A stretch of known lines: those of before from x to x_end, those of after from y to y_end.
struct stretch {
    position x, x_end, y, y_end;
};

// What the search from one end of a stretch has reached; positions are counted from that end.
struct front {
    bool mirrored; // from the end
    std::vector<position> furthest = std::vector<position>(2 * changes_max + 3);
    position &at(position diagonal)
    {
        return furthest[static_cast<size_t>(diagonal + changes_max + 1)];
    }
};
constexpr position nowhere = PTRDIFF_MIN / 4;

struct path_search {
    diff_text before, after;
    front forward{false}, backward{true};
};

static void known_find(diff_text *text, const diff_text &other)
{
    uint32_t last = 0;
    for (const diff_text *side : {static_cast<const diff_text *>(text), &other})
        for (uint32_t line : side->lines)
            last = std::max(last, line);
    std::vector<char> in_other(size_t{last} + 1);
    for (uint32_t line : other.lines)
        in_other[line] = 1;
    for (size_t i = 0; i < text->lines.size(); i++)
        if (in_other[text->lines[i]]) {
            text->known.push_back(text->lines[i]);
            text->known_at.push_back(static_cast<position>(i));
        }
}

// How many lines are equal in both texts from two positions on, which are counted from an end of the stretch.
static position equal_lines(const path_search &search, const stretch &where, bool mirrored, position x,
                            position y)
{
    const uint32_t *before = search.before.known.data(), *after = search.after.known.data();
    position most = std::min(where.x_end - where.x - x, where.y_end - where.y - y);
    position count = 0;
    while (count < most &&
           (mirrored ? before[where.x_end - 1 - x - count] == after[where.y_end - 1 - y - count]
                     : before[where.x + x + count] == after[where.y + y + count]))
        count++;
    return count;
}

// The furthest that a front reaches on a diagonal with one more change.
static position front_reach(path_search *search, const stretch &where, front *ends, position diagonal)
{
    position deleted = ends->at(diagonal - 1) + 1;
    position added = ends->at(diagonal + 1);
    if (deleted > where.x_end - where.x)
        deleted = nowhere;
    if (added - diagonal > where.y_end - where.y)
        added = nowhere;
    position x = std::max(deleted, added);
    return x < 0 ? nowhere : x + equal_lines(*search, where, ends->mirrored, x, x - diagonal);
}

// Moves a front on by one change, the last of so many. True if it meets the other front: the path leads
// through *split_x and *split_y.
static bool front_move(path_search *search, const stretch &where, bool mirrored, position changes,
                       position *split_x, position *split_y)
{
    front &ends = mirrored ? search->backward : search->forward;
    front &other = mirrored ? search->forward : search->backward;
    position width = where.x_end - where.x;
    position across =
        width - (where.y_end - where.y); // a diagonal of one front is this less one of the other
    bool may_meet = (across % 2 != 0) != mirrored;
    // Both fronts go from the highest diagonal of the texts down: of paths of one length git takes the same.
    for (position i = 0; i <= changes; i++) {
        position diagonal = mirrored ? 2 * i - changes : changes - 2 * i;
        position x = ends.at(diagonal) = front_reach(search, where, &ends, diagonal);
        position opposite = across - diagonal;
        if (may_meet && std::abs(opposite) <= changes && x + other.at(opposite) >= width) {
            *split_x = mirrored ? where.x_end - x : where.x + x;
            *split_y = mirrored ? where.y_end - (x - diagonal) : where.y + x - diagonal;
            return true;
        }
    }
    return false;
}

// Finds a point through which the path leads: where the two fronts meet, or after too many changes the
// forward front's point that is furthest from the beginning.
static void split_find(path_search *search, const stretch &where, position *split_x, position *split_y)
{
    for (front *ends : {&search->forward, &search->backward}) {
        std::fill(ends->furthest.begin(), ends->furthest.end(), nowhere);
        ends->at(0) = 0;
    }
    for (position changes = 1; changes <= changes_max; changes++)
        for (bool mirrored : {false, true})
            if (front_move(search, where, mirrored, changes, split_x, split_y))
                return;
    position best = nowhere;
    for (position diagonal = -changes_max; diagonal <= changes_max; diagonal += 2) {
        position x = search->forward.at(diagonal);
        if (2 * x - diagonal <= best)
            continue;
        best = 2 * x - diagonal;
        *split_x = where.x + x;
        *split_y = where.y + x - diagonal;
    }
}

// Finds the unchanged lines, from the beginning to the end.
static void path_find(path_search *search)
{
    std::vector<stretch> open{{0, static_cast<position>(search->before.known.size()), 0,
                               static_cast<position>(search->after.known.size())}};
    while (!open.empty()) {
        stretch where = open.back();
        open.pop_back();
        for (position equal = equal_lines(*search, where, false, 0, 0); equal > 0; equal--) {
            search->before.at.push_back(search->before.known_at[static_cast<size_t>(where.x++)]);
            search->after.at.push_back(search->after.known_at[static_cast<size_t>(where.y++)]);
        }
        position equal = equal_lines(*search, where, true, 0, 0);
        if (equal > 0)
            open.push_back({where.x_end - equal, where.x_end, where.y_end - equal, where.y_end});
        where.x_end -= equal;
        where.y_end -= equal;
        if (where.x == where.x_end || where.y == where.y_end)
            continue;
        position x = where.x, y = where.y;
        split_find(search, where, &x, &y);
        open.push_back({x, where.x_end, y, where.y_end});
        open.push_back({where.x, x, where.y, y});
    }
    for (diff_text *text : {&search->before, &search->after})
        text->at.push_back(static_cast<position>(text->lines.size()));
}

// Moves the changed lines of a gap up or down by one line, if that changes nothing: they are then in the gap
// before or after it, with those that are there.
static bool gap_move(diff_text *text, size_t *gap, bool up)
{
    std::vector<position> &at = text->at;
    if (up ? *gap == 1 : *gap + 1 == at.size())
        return false;
    position &unchanged = up ? at[*gap - 1] : at[*gap];
    position other_end = up ? at[*gap] - 1 : at[*gap - 1] + 1;
    if (!text->is_equal(unchanged, other_end))
        return false;
    unchanged = other_end;
    *gap = up ? *gap - 1 : *gap + 1;
    return true;
}

// Moves the changed lines of all gaps of one text.
static void gaps_settle(diff_text *text, const diff_text &opposite)
{
    // Periodic texts could have lines move over each other again and again.
    size_t steps = 64 * text->lines.size() + 1024;
    for (size_t gap = 1; gap < text->at.size(); gap++) {
        if (text->gap_size(gap) == 0)
            continue;
        position size;
        bool paired; // on the last way down they were opposite a change of the other text
        do {
            size = text->gap_size(gap);
            while (steps > 0 && gap_move(text, &gap, true))
                steps--;
            paired = opposite.gap_size(gap) > 0;
            while (steps > 0 && gap_move(text, &gap, false)) {
                paired |= opposite.gap_size(gap) > 0;
                steps--;
            }
        } while (size != text->gap_size(gap));
        while (paired && opposite.gap_size(gap) == 0 && gap_move(text, &gap, true)) {
        }
    }
}

std::vector<line_change> line_diff(const std::vector<uint32_t> &before, const std::vector<uint32_t> &after)
{
    path_search search{{before}, {after}};
    known_find(&search.before, search.after);
    known_find(&search.after, search.before);
    path_find(&search);
    const diff_text &deleted = search.before, &added = search.after;
    gaps_settle(&search.before, added);
    gaps_settle(&search.after, deleted);
    std::vector<line_change> changes;
    for (size_t gap = 1; gap < deleted.at.size(); gap++)
        if (deleted.gap_size(gap) > 0 || added.gap_size(gap) > 0)
            changes.push_back(
                {static_cast<size_t>(deleted.at[gap - 1] + 1), static_cast<size_t>(deleted.gap_size(gap)),
                 static_cast<size_t>(added.at[gap - 1] + 1), static_cast<size_t>(added.gap_size(gap))});
    return changes;
}

text_changes text_diff(std::string_view before, std::string_view after)
{
    text_changes texts{text_split(before), text_split(after), {}};
    line_numbering known;
    std::vector<uint32_t> numbers = lines_number(texts.before, &known);
    texts.changes = line_diff(numbers, lines_number(texts.after, &known));
    return texts;
}
