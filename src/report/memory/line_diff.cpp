// A path through the two texts is looked for from both ends at once; from the end it is the same search in
// the mirrored texts. A diagonal is the difference of the positions in before and after; for each, a front
// has the furthest position in before that so many changes reach.
#include "report/memory/line_diff.h"

#include <stdint.h>

#include <algorithm>

using position = ptrdiff_t;

// Beyond so many changes from either end of a stretch the search takes the best that it has.
constexpr position changes_max = 256;

// One of the two texts.
struct diff_text {
    const std::vector<uint32_t> *lines;
    std::vector<char> changed;   // of each line
    std::vector<uint32_t> known; // lines that the other text has too; no other can be part of the path
    std::vector<size_t> known_at;
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
        for (uint32_t line : *side->lines)
            last = std::max(last, line);
    std::vector<char> in_other(size_t{last} + 1);
    for (uint32_t line : *other.lines)
        in_other[line] = 1;
    text->changed.assign(text->lines->size(), 1);
    for (size_t i = 0; i < text->lines->size(); i++) {
        uint32_t line = (*text->lines)[i];
        if (!in_other[line])
            continue;
        text->changed[i] = 0;
        text->known.push_back(line);
        text->known_at.push_back(i);
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

static void mark_changed(path_search *search, const stretch &where)
{
    for (position x = where.x; x < where.x_end; x++)
        search->before.changed[search->before.known_at[static_cast<size_t>(x)]] = 1;
    for (position y = where.y; y < where.y_end; y++)
        search->after.changed[search->after.known_at[static_cast<size_t>(y)]] = 1;
}

static void path_find(path_search *search)
{
    std::vector<stretch> open{{0, static_cast<position>(search->before.known.size()), 0,
                               static_cast<position>(search->after.known.size())}};
    while (!open.empty()) {
        stretch where = open.back();
        open.pop_back();
        position equal = equal_lines(*search, where, false, 0, 0);
        where.x += equal;
        where.y += equal;
        equal = equal_lines(*search, where, true, 0, 0);
        where.x_end -= equal;
        where.y_end -= equal;
        if (where.x == where.x_end || where.y == where.y_end) {
            mark_changed(search, where);
            continue;
        }
        position x = where.x, y = where.y;
        split_find(search, where, &x, &y);
        open.push_back({x, where.x_end, y, where.y_end});
        open.push_back({where.x, x, where.y, y});
    }
}

// A run of changed lines in front of an unchanged one or of the end of the text; it may have no lines. Both
// texts have as many runs, as they have as many unchanged lines.
struct line_run {
    size_t start, end;
};

static void run_grow(const diff_text &text, line_run *run)
{
    while (run->start > 0 && text.changed[run->start - 1])
        run->start--;
    while (run->end < text.changed.size() && text.changed[run->end])
        run->end++;
}

static bool run_next(const diff_text &text, line_run *run)
{
    if (run->end == text.changed.size())
        return false;
    run->start = run->end = run->end + 1;
    run_grow(text, run);
    return true;
}

static void run_previous(const diff_text &text, line_run *run)
{
    if (run->start == 0)
        return;
    run->start = run->end = run->start - 1;
    run_grow(text, run);
}

// Moves a run up by one line, if that changes nothing. It takes in the run that it comes to.
static bool run_up(diff_text *text, line_run *run)
{
    if (run->start == 0 || (*text->lines)[run->start - 1] != (*text->lines)[run->end - 1])
        return false;
    text->changed[--run->start] = 1;
    text->changed[--run->end] = 0;
    run_grow(*text, run);
    return true;
}

static bool run_down(diff_text *text, line_run *run)
{
    if (run->end == text->lines->size() || (*text->lines)[run->start] != (*text->lines)[run->end])
        return false;
    text->changed[run->start++] = 0;
    text->changed[run->end++] = 1;
    run_grow(*text, run);
    return true;
}

// Moves one run, and other, the run opposite it. steps is what may still be spent on moving.
static void run_settle(diff_text *text, line_run *run, const diff_text &opposite, line_run *other,
                       size_t *steps)
{
    size_t size;
    bool paired; // on the last way down the run was opposite a change of the other text
    do {
        size = run->end - run->start;
        while (*steps > 0 && run_up(text, run)) {
            run_previous(opposite, other);
            --*steps;
        }
        paired = other->end > other->start;
        while (*steps > 0 && run_down(text, run)) {
            run_next(opposite, other);
            paired |= other->end > other->start;
            --*steps;
        }
    } while (size != run->end - run->start);
    while (paired && other->end == other->start && run_up(text, run))
        run_previous(opposite, other);
}

static void runs_settle(diff_text *text, const diff_text &opposite)
{
    // Periodic texts could have runs move over each other again and again.
    size_t steps = 64 * text->lines->size() + 1024;
    line_run run{0, 0}, other{0, 0};
    run_grow(*text, &run);
    run_grow(opposite, &other);
    do {
        if (run.end > run.start)
            run_settle(text, &run, opposite, &other, &steps);
        run_next(opposite, &other);
    } while (run_next(*text, &run));
}

std::vector<line_change> line_diff(const std::vector<uint32_t> &before, const std::vector<uint32_t> &after)
{
    path_search search;
    search.before.lines = &before;
    search.after.lines = &after;
    known_find(&search.before, search.after);
    known_find(&search.after, search.before);
    path_find(&search);
    runs_settle(&search.before, search.after);
    runs_settle(&search.after, search.before);

    std::vector<line_change> changes;
    line_run deleted{0, 0}, added{0, 0};
    run_grow(search.before, &deleted);
    run_grow(search.after, &added);
    do {
        if (deleted.end > deleted.start || added.end > added.start)
            changes.push_back(
                {deleted.start, deleted.end - deleted.start, added.start, added.end - added.start});
        run_next(search.after, &added);
    } while (run_next(search.before, &deleted));
    return changes;
}
