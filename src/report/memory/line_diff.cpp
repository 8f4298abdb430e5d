// A path through the two texts is looked for from both ends at once. A diagonal is the difference of the
// positions in before and after; for each, a front has the furthest position in before that so many changes
// reach.
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

struct front {
    position centre, low, high; // diagonals
    std::vector<position> furthest = std::vector<position>(2 * changes_max + 3);
    position &at(position diagonal)
    {
        return furthest[static_cast<size_t>(diagonal - centre + changes_max + 1)];
    }
};

constexpr position nowhere_forward = PTRDIFF_MIN / 4;
constexpr position nowhere_backward = PTRDIFF_MAX / 4;

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

static void front_begin(front *ends, position diagonal, position x)
{
    ends->centre = ends->low = ends->high = diagonal;
    ends->at(diagonal) = x;
}

// One more change: the front reaches one diagonal further on both sides, unless that is out of the stretch.
static void front_widen(front *ends, const stretch &where, position nowhere)
{
    if (ends->low > where.x - where.y_end)
        ends->at(--ends->low - 1) = nowhere;
    else
        ends->low++;
    if (ends->high < where.x_end - where.y)
        ends->at(++ends->high + 1) = nowhere;
    else
        ends->high--;
}

struct path_search {
    diff_text before, after;
    front forward, backward;
};

// The furthest that the forward front reaches on a diagonal with one more change.
static position step_forward(path_search *search, const stretch &where, position diagonal)
{
    position deleted = search->forward.at(diagonal - 1) + 1;
    position added = search->forward.at(diagonal + 1);
    if (deleted > where.x_end)
        deleted = nowhere_forward;
    if (added - diagonal > where.y_end)
        added = nowhere_forward;
    position x = std::max(deleted, added);
    if (x < where.x)
        return nowhere_forward;
    const uint32_t *before = search->before.known.data();
    const uint32_t *after = search->after.known.data();
    while (x < where.x_end && x - diagonal < where.y_end && before[x] == after[x - diagonal])
        x++;
    return x;
}

static position step_backward(path_search *search, const stretch &where, position diagonal)
{
    position added = search->backward.at(diagonal - 1);
    position deleted = search->backward.at(diagonal + 1) - 1;
    if (added - diagonal < where.y)
        added = nowhere_backward;
    if (deleted < where.x)
        deleted = nowhere_backward;
    position x = std::min(added, deleted);
    if (x > where.x_end)
        return nowhere_backward;
    const uint32_t *before = search->before.known.data();
    const uint32_t *after = search->after.known.data();
    while (x > where.x && x - diagonal > where.y && before[x - 1] == after[x - 1 - diagonal])
        x--;
    return x;
}

// The forward front's point that is furthest from the beginning of the stretch.
static void furthest_point(path_search *search, position *split_x, position *split_y)
{
    front &ends = search->forward;
    position best = nowhere_forward;
    for (position diagonal = ends.low; diagonal <= ends.high; diagonal += 2) {
        position x = ends.at(diagonal);
        if (2 * x - diagonal <= best)
            continue;
        best = 2 * x - diagonal;
        *split_x = x;
        *split_y = x - diagonal;
    }
}

// Finds the point where the two fronts meet: the path leads through it.
static void split_find(path_search *search, const stretch &where, position *split_x, position *split_y)
{
    front &forward = search->forward;
    front &backward = search->backward;
    front_begin(&forward, where.x - where.y, where.x);
    front_begin(&backward, where.x_end - where.y_end, where.x_end);
    bool odd = ((forward.centre - backward.centre) & 1) != 0;
    auto meet = [&](const front &other, position diagonal, position x) {
        *split_x = x;
        *split_y = x - diagonal;
        return other.low <= diagonal && diagonal <= other.high &&
               backward.at(diagonal) <= forward.at(diagonal);
    };
    for (position changes = 1; changes <= changes_max; changes++) {
        front_widen(&forward, where, nowhere_forward);
        for (position diagonal = forward.high; diagonal >= forward.low; diagonal -= 2) {
            position x = forward.at(diagonal) = step_forward(search, where, diagonal);
            if (odd && meet(backward, diagonal, x))
                return;
        }
        front_widen(&backward, where, nowhere_backward);
        for (position diagonal = backward.high; diagonal >= backward.low; diagonal -= 2) {
            position x = backward.at(diagonal) = step_backward(search, where, diagonal);
            if (!odd && meet(forward, diagonal, x))
                return;
        }
    }
    furthest_point(search, split_x, split_y);
}

static void mark_changed(path_search *search, const stretch &where)
{
    for (position x = where.x; x < where.x_end; x++)
        search->before.changed[search->before.known_at[static_cast<size_t>(x)]] = 1;
    for (position y = where.y; y < where.y_end; y++)
        search->after.changed[search->after.known_at[static_cast<size_t>(y)]] = 1;
}

// Leaves out the equal lines at both ends.
static void stretch_trim(const path_search &search, stretch *where)
{
    const uint32_t *before = search.before.known.data();
    const uint32_t *after = search.after.known.data();
    while (where->x < where->x_end && where->y < where->y_end && before[where->x] == after[where->y])
        where->x++, where->y++;
    while (where->x < where->x_end && where->y < where->y_end &&
           before[where->x_end - 1] == after[where->y_end - 1])
        where->x_end--, where->y_end--;
}

static void path_find(path_search *search)
{
    std::vector<stretch> open{{0, static_cast<position>(search->before.known.size()), 0,
                               static_cast<position>(search->after.known.size())}};
    while (!open.empty()) {
        stretch where = open.back();
        open.pop_back();
        stretch_trim(*search, &where);
        if (where.x == where.x_end || where.y == where.y_end) {
            mark_changed(search, where);
            continue;
        }
        position x = where.x, y = where.y;
        split_find(search, where, &x, &y);
        bool inside = where.x <= x && x <= where.x_end && where.y <= y && y <= where.y_end;
        if (!inside || (x == where.x && y == where.y) || (x == where.x_end && y == where.y_end)) {
            mark_changed(search, where);
            continue;
        }
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
