#include "report/edits.h"

#include <dtl/dtl.hpp>

#include <algorithm>
#include <unordered_map>

// Beyond so many lines on both sides that are neither the same nor alone, the diff library would take too
// long.
constexpr size_t diff_lines_max = 3000;

constexpr size_t no_match = SIZE_MAX;

// A line of either side, and where it stands there.
struct placed_line {
    uint64_t print;
    size_t place;
};

// Where the lines that stand there have come from: an index in what was written, or no_match.
using line_matches = std::vector<size_t>;

// The lines from first to last, in order, that the other side has too: no other can be part of a match.
static std::vector<placed_line> shared_lines(const std::vector<uint64_t> &lines, size_t first, size_t last,
                                             const std::unordered_map<uint64_t, int> &others)
{
    std::vector<placed_line> shared;
    for (size_t i = first; i < last; i++)
        if (others.count(lines[i]) != 0)
            shared.push_back({lines[i], i});
    return shared;
}

static void match_by_diff(const std::vector<placed_line> &written, const std::vector<placed_line> &there,
                          line_matches *matches)
{
    auto prints = [](const std::vector<placed_line> &lines) {
        std::vector<uint64_t> result(lines.size());
        std::transform(lines.begin(), lines.end(), result.begin(),
                       [](const placed_line &line) { return line.print; });
        return result;
    };
    dtl::Diff<uint64_t> diff(prints(written), prints(there));
    diff.compose();
    for (const auto &step : diff.getSes().getSequence())
        if (step.second.type == dtl::SES_COMMON)
            (*matches)[there[static_cast<size_t>(step.second.afterIdx) - 1].place] =
                written[static_cast<size_t>(step.second.beforeIdx) - 1].place;
}

// Each line is taken for the next one like it after the last match.
static void match_in_order(const std::vector<placed_line> &written, const std::vector<placed_line> &there,
                           line_matches *matches)
{
    std::unordered_map<uint64_t, std::vector<size_t>> places;
    for (size_t i = 0; i < written.size(); i++)
        places[written[i].print].push_back(i);
    size_t next = 0;
    for (const placed_line &line : there) {
        const std::vector<size_t> &candidates = places[line.print];
        auto place = std::lower_bound(candidates.begin(), candidates.end(), next);
        // A match far ahead would give up all lines between.
        if (place == candidates.end() || *place > next + diff_lines_max)
            continue;
        (*matches)[line.place] = written[*place].place;
        next = *place + 1;
    }
}

static std::unordered_map<uint64_t, int> lines_counted(const std::vector<uint64_t> &lines, size_t first,
                                                       size_t last)
{
    std::unordered_map<uint64_t, int> counted;
    for (size_t i = first; i < last; i++)
        counted[lines[i]]++;
    return counted;
}

static line_matches match_lines(const std::vector<uint64_t> &written, const std::vector<uint64_t> &there)
{
    line_matches matches(there.size(), no_match);
    size_t same = std::min(written.size(), there.size());
    size_t head = 0;
    while (head < same && written[head] == there[head]) {
        matches[head] = head;
        head++;
    }
    size_t tail = 0;
    while (tail < same - head && written[written.size() - 1 - tail] == there[there.size() - 1 - tail]) {
        matches[there.size() - 1 - tail] = written.size() - 1 - tail;
        tail++;
    }
    auto left =
        shared_lines(written, head, written.size() - tail, lines_counted(there, head, there.size() - tail));
    auto right =
        shared_lines(there, head, there.size() - tail, lines_counted(written, head, written.size() - tail));
    if (left.size() <= diff_lines_max && right.size() <= diff_lines_max)
        match_by_diff(left, right, &matches);
    else
        match_in_order(left, right, &matches);
    return matches;
}

// What has become of the lines that were written.
struct line_fates {
    std::vector<char> kept;    // the line stands there still
    std::vector<char> widened; // something new stands in front of it, or in its place; one more for the end
};

static line_fates fates_of(const line_matches &matches, size_t written)
{
    line_fates fates{std::vector<char>(written), std::vector<char>(written + 1)};
    size_t last = 0; // after the last match
    bool added = false;
    auto close_gap = [&](size_t end) {
        if (added)
            std::fill(fates.widened.begin() + static_cast<long>(last),
                      fates.widened.begin() + static_cast<long>(end) + 1, 1);
        added = false;
    };
    for (size_t match : matches) {
        if (match == no_match) {
            added = true;
            continue;
        }
        fates.kept[match] = 1;
        close_gap(match);
        last = match + 1;
    }
    close_gap(written);
    return fates;
}

static bool is_changed(const report_item &item, const line_fates &fates)
{
    size_t first = std::min<size_t>(item.output_line - 1, fates.kept.size());
    size_t last = std::min<size_t>(first + item.output_lines, fates.kept.size());
    if (first == last)
        return fates.widened[first] != 0;
    return std::find(fates.kept.begin() + static_cast<long>(first),
                     fates.kept.begin() + static_cast<long>(last),
                     0) != fates.kept.begin() + static_cast<long>(last);
}

void edits_find(script_report *report, const line_prints &written, const line_prints &there)
{
    line_fates fates = fates_of(match_lines(written.prints, there.prints), written.prints.size());
    for (report_item &item : report->items)
        if (is_changed(item, fates))
            item.state = STATE_CHANGED;
}
