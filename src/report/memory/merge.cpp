#include "report/memory/merge.h"

#include "report/memory/line_diff.h"
#include "report/memory/text_lines.h"

#include <stdint.h>

#include <algorithm>
#include <array>
#include <functional>

enum merge_side { SIDE_LAST, SIDE_MINE, SIDE_FRESH, side_count };

using side_lines = std::array<text_lines, side_count>;
using side_numbers = std::array<std::vector<uint32_t>, side_count>;

// Gives equal lines equal numbers. They are sorted, because a hash table is slow for lines of one hash, and
// somebody may have made such.
static side_numbers lines_number(const side_lines &texts)
{
    struct numbered_line {
        size_t hash;
        std::string_view core;
        uint32_t *number;
    };
    side_numbers numbers;
    std::vector<numbered_line> lines;
    for (size_t side = 0; side < side_count; side++) {
        numbers[side].resize(line_count(texts[side]));
        for (size_t i = 0; i < numbers[side].size(); i++) {
            std::string_view core = line_core(lines_between(texts[side], i, i + 1));
            lines.push_back({std::hash<std::string_view>()(core), core, &numbers[side][i]});
        }
    }
    std::sort(lines.begin(), lines.end(), [](const numbered_line &a, const numbered_line &b) {
        return a.hash != b.hash ? a.hash < b.hash : a.core < b.core;
    });
    uint32_t number = 0;
    const numbered_line *before = nullptr;
    for (const numbered_line &line : lines) {
        number += before != nullptr && before->core != line.core;
        *line.number = number;
        before = &line;
    }
    return numbers;
}

struct line_range {
    size_t first, end;
};

// Lines that one side has changed, or both in ways that overlap or touch.
struct merge_region {
    std::array<line_range, side_count> lines;
    bool by_mine, by_fresh;
};

// The changes of one side, in order.
struct side_changes {
    std::vector<line_change> changes;
    size_t next = 0;
    ptrdiff_t shift = 0; // from a line of last to the same line of this side, after the changes up to next
};

static bool change_touches(const side_changes &side, size_t end)
{
    return side.next < side.changes.size() && side.changes[side.next].before_at <= end;
}

// Takes the next change if it touches what is before end, and moves end on. False if it doesn't.
static bool change_take(side_changes *side, size_t *end)
{
    if (!change_touches(*side, *end))
        return false;
    const line_change &change = side->changes[side->next++];
    *end = std::max(*end, change.before_at + change.before_count);
    side->shift += static_cast<ptrdiff_t>(change.after_count) - static_cast<ptrdiff_t>(change.before_count);
    return true;
}

static size_t shifted(size_t line, ptrdiff_t shift)
{
    return static_cast<size_t>(static_cast<ptrdiff_t>(line) + shift);
}

static std::vector<merge_region> regions_find(std::vector<line_change> mine_changes,
                                              std::vector<line_change> fresh_changes)
{
    side_changes mine{std::move(mine_changes)}, fresh{std::move(fresh_changes)};
    std::vector<merge_region> regions;
    for (;;) {
        size_t first = SIZE_MAX;
        for (const side_changes *side : {&mine, &fresh})
            if (side->next < side->changes.size())
                first = std::min(first, side->changes[side->next].before_at);
        if (first == SIZE_MAX)
            return regions;
        merge_region region{};
        size_t mine_first = shifted(first, mine.shift), fresh_first = shifted(first, fresh.shift);
        size_t end = first;
        // The side whose change comes first begins: what only touches the beginning belongs to it too.
        for (bool more = true; more;) {
            bool mine_took = change_take(&mine, &end);
            bool fresh_took = change_take(&fresh, &end);
            region.by_mine |= mine_took;
            region.by_fresh |= fresh_took;
            more = mine_took || fresh_took;
        }
        region.lines = {line_range{first, end}, line_range{mine_first, shifted(end, mine.shift)},
                        line_range{fresh_first, shifted(end, fresh.shift)}};
        regions.push_back(region);
    }
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
static std::string_view line_end_of(std::string_view text)
{
    size_t all = 0, with_cr = 0;
    for (size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1)) {
        all++;
        with_cr += at > 0 && text[at - 1] == '\r';
    }
    if (all == 0)
        return {};
    return 2 * with_cr > all ? "\r\n" : "\n";
}

// The text that a merge builds, line by line.
struct merged_text {
    std::string *text;
    size_t begin;              // of the first line, after the byte order mark
    std::string_view line_end; // that of mine; empty: lines keep theirs
};

// Ends a last line that has no end, before another comes.
static void line_close(merged_text *merged)
{
    if (merged->text->size() > merged->begin && merged->text->back() != '\n')
        merged->text->append(merged->line_end.empty() ? "\n" : merged->line_end);
}

static void append_mine(merged_text *merged, std::string_view lines)
{
    if (lines.empty())
        return;
    line_close(merged);
    merged->text->append(lines);
}

static void append_fresh(merged_text *merged, std::string_view lines)
{
    std::string_view line;
    while (line_take(&lines, &line)) {
        line_close(merged);
        if (line.back() == '\n' && !merged->line_end.empty()) {
            line.remove_suffix(line.size() > 1 && line[line.size() - 2] == '\r' ? 2 : 1);
            merged->text->append(line).append(merged->line_end);
        } else {
            merged->text->append(line);
        }
    }
}

// Makes the last line have an end, or none, as mine's has.
static void settle_last_end(merged_text *merged, std::string_view mine)
{
    if (mine.empty())
        return;
    if (mine.back() == '\n') {
        line_close(merged);
        return;
    }
    std::string_view text = std::string_view(*merged->text).substr(merged->begin);
    if (text.empty() || text.back() != '\n')
        return;
    text.remove_suffix(text.size() > 1 && text[text.size() - 2] == '\r' ? 2 : 1);
    // A blank last line is one only because of its end.
    if (!text.empty() && text.back() != '\n')
        merged->text->resize(merged->begin + text.size());
}

static void merge_render(merge_result *result, const side_lines &texts,
                         const std::vector<merge_region> &regions, std::string_view mark)
{
    const text_lines &mine = texts[SIDE_MINE];
    result->text.assign(mark);
    merged_text merged{&result->text, mark.size(), line_end_of(mine.body)};
    size_t done = 0;     // lines of mine
    ptrdiff_t shift = 0; // from a line of mine to the same line of the result
    for (const merge_region &region : regions) {
        line_range ours = region.lines[SIDE_MINE], theirs = region.lines[SIDE_FRESH];
        if (region.by_mine) {
            if (!region.by_fresh)
                result->kept.push_back(block_of(region, texts, shifted(ours.first, shift) + 1));
            continue;
        }
        append_mine(&merged, lines_between(mine, done, ours.first));
        append_fresh(&merged, lines_between(texts[SIDE_FRESH], theirs.first, theirs.end));
        done = ours.end;
        shift +=
            static_cast<ptrdiff_t>(theirs.end - theirs.first) - static_cast<ptrdiff_t>(ours.end - ours.first);
        result->taken++;
    }
    append_mine(&merged, lines_between(mine, done, line_count(mine)));
    settle_last_end(&merged, mine.body);
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
    const side_numbers numbers = lines_number(texts);
    const std::vector<merge_region> regions =
        regions_find(line_diff(numbers[SIDE_LAST], numbers[SIDE_MINE]),
                     line_diff(numbers[SIDE_LAST], numbers[SIDE_FRESH]));
    for (const merge_region &region : regions)
        if (region.by_mine && region.by_fresh && !is_same_in_both(region, numbers))
            result.conflicts.push_back(block_of(region, texts, region.lines[SIDE_MINE].first + 1));
    if (result.conflicts.empty())
        merge_render(&result, texts, regions, mine.substr(0, mine.size() - texts[SIDE_MINE].body.size()));
    return result;
}
