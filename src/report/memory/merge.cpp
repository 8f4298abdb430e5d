#include "report/memory/merge.h"

#include "report/memory/line_diff.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <algorithm>
#include <array>

enum merge_side { SIDE_LAST, SIDE_MINE, SIDE_FRESH, side_count };

using side_lines = std::array<text_lines, side_count>;
using side_numbers = std::array<std::vector<uint32_t>, side_count>;

struct line_range {
    size_t first, end;
};

// Lines that one side has changed, or both in ways that overlap or touch.
struct merge_region {
    std::array<line_range, side_count> lines;
    bool by_mine, by_fresh;
};

static size_t shifted(size_t line, ptrdiff_t shift)
{
    return static_cast<size_t>(static_cast<ptrdiff_t>(line) + shift);
}

// Both lists of changes are from last, in order.
static std::vector<merge_region> regions_find(const std::vector<line_change> &mine,
                                              const std::vector<line_change> &fresh)
{
    std::vector<merge_region> regions;
    std::array<ptrdiff_t, side_count> shift{}; // from a line of last to the same line of each side
    auto next_mine = mine.begin(), next_fresh = fresh.begin();
    while (next_mine != mine.end() || next_fresh != fresh.end()) {
        bool is_mine = next_fresh == fresh.end() ||
                       (next_mine != mine.end() && next_mine->before_at <= next_fresh->before_at);
        const line_change &change = is_mine ? *next_mine++ : *next_fresh++;
        if (regions.empty() || change.before_at > regions.back().lines[SIDE_LAST].end) {
            merge_region &added = regions.emplace_back();
            for (size_t side = 0; side < side_count; side++)
                added.lines[side].first = shifted(change.before_at, shift[side]);
        }
        merge_region &region = regions.back();
        (is_mine ? region.by_mine : region.by_fresh) = true;
        shift[is_mine ? SIDE_MINE : SIDE_FRESH] +=
            static_cast<ptrdiff_t>(change.after_count) - static_cast<ptrdiff_t>(change.before_count);
        size_t end = std::max(region.lines[SIDE_LAST].end, change.before_at + change.before_count);
        for (size_t side = 0; side < side_count; side++)
            region.lines[side].end = shifted(end, shift[side]);
    }
    return regions;
}

static bool is_same_in_both(const merge_region &region, const side_numbers &numbers)
{
    line_range mine = region.lines[SIDE_MINE], fresh = region.lines[SIDE_FRESH];
    const uint32_t *mine_numbers = numbers[SIDE_MINE].data(), *fresh_numbers = numbers[SIDE_FRESH].data();
    return std::equal(mine_numbers + mine.first, mine_numbers + mine.end, fresh_numbers + fresh.first,
                      fresh_numbers + fresh.end);
}

static merge_block block_of(const merge_region &region, const side_lines &texts, size_t line)
{
    auto text = [&](merge_side side) {
        return lines_between(texts[side], region.lines[side].first, region.lines[side].end);
    };
    return {line, text(SIDE_LAST), text(SIDE_MINE), text(SIDE_FRESH)};
}

// The line end that most lines of a text have; empty if it has none.
static std::string_view usual_end_of(std::string_view text)
{
    ptrdiff_t with_cr = 0, all = 0;
    std::string_view line;
    while (line_take(&text, &line)) {
        with_cr += line_end(line).size() == 2;
        all += !line_end(line).empty();
    }
    return all == 0 ? "" : 2 * with_cr > all ? "\r\n" : "\n";
}

struct merged_line {
    std::string_view text, end;
};

// Adds lines. Their ends, where they have one, are replaced by another unless that is empty.
static void add_lines(std::vector<merged_line> *merged, std::string_view lines, std::string_view other_end)
{
    std::string_view line;
    while (line_take(&lines, &line)) {
        std::string_view end = line_end(line);
        line.remove_suffix(end.size());
        merged->push_back({line, end.empty() || other_end.empty() ? end : other_end});
    }
}

// Gives each line but the last an end, and the last one an end or none, as mine's has.
static void settle_ends(std::vector<merged_line> *merged, std::string_view mine, std::string_view usual_end)
{
    for (size_t i = 0; i + 1 < merged->size(); i++)
        if ((*merged)[i].end.empty())
            (*merged)[i].end = usual_end.empty() ? "\n" : usual_end;
    if (merged->empty() || mine.empty())
        return;
    merged_line &last = merged->back();
    if (mine.back() != '\n' && !last.text.empty()) // a blank last line is one only because of its end
        last.end = {};
    else if (last.end.empty())
        last.end = usual_end;
}

static void merge_render(merge_result *result, const side_lines &texts,
                         const std::vector<merge_region> &regions)
{
    const text_lines &mine = texts[SIDE_MINE];
    std::string_view usual_end = usual_end_of(mine.body);
    std::vector<merged_line> merged;
    size_t done = 0; // lines of mine
    for (const merge_region &region : regions) {
        line_range ours = region.lines[SIDE_MINE], theirs = region.lines[SIDE_FRESH];
        add_lines(&merged, lines_between(mine, done, ours.first), {});
        done = ours.first;
        if (!region.by_fresh)
            result->kept.push_back(block_of(region, texts, merged.size() + 1));
        if (region.by_mine)
            continue;
        add_lines(&merged, lines_between(texts[SIDE_FRESH], theirs.first, theirs.end), usual_end);
        done = ours.end;
        result->taken++;
    }
    add_lines(&merged, lines_between(mine, done, line_count(mine)), {});
    settle_ends(&merged, mine.body, usual_end);
    for (const merged_line &line : merged)
        result->text.append(line.text).append(line.end);
}

merge_result merge_texts(std::string_view last, std::string_view mine, std::string_view fresh)
{
    merge_result result;
    for (std::string_view text : {last, mine, fresh})
        if (std::count(text.begin(), text.end(), '\n') >= static_cast<ptrdiff_t>(merge_lines_max)) {
            result.conflicts.push_back({1, last, mine, fresh});
            return result;
        }
    const side_lines texts{text_split(last), text_split(mine), text_split(fresh)};
    line_numbering known;
    side_numbers numbers;
    for (size_t side = 0; side < side_count; side++)
        numbers[side] = lines_number(texts[side], &known);
    const std::vector<merge_region> regions =
        regions_find(line_diff(numbers[SIDE_LAST], numbers[SIDE_MINE]),
                     line_diff(numbers[SIDE_LAST], numbers[SIDE_FRESH]));
    for (const merge_region &region : regions)
        if (region.by_mine && region.by_fresh && !is_same_in_both(region, numbers))
            result.conflicts.push_back(block_of(region, texts, region.lines[SIDE_MINE].first + 1));
    if (result.conflicts.empty()) {
        result.text = mine.substr(0, mine.size() - texts[SIDE_MINE].body.size()); // the byte order mark
        merge_render(&result, texts, regions);
    }
    return result;
}
