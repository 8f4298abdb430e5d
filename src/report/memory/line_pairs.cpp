#include "report/memory/line_pairs.h"

#include "report/memory/line_words.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <string>
#include <utility>

// ---- Where deleted lines were ----

// Where items are in the lines that are deleted from, by a line's number.
struct item_positions {
    std::vector<size_t> begun; // items whose own lines begin up to there
    std::vector<size_t> over;  // items that have no own line after it
    std::vector<char> is_end;  // a statement's output begins there, or has ended before it
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

// Moves deleted lines over lines that are equal to them, to where people are most likely to have deleted
// them: where as few items as possible lose lines, then from where the output of a statement begins to where
// one ends. Statements may begin with the same lines, as tips do, and an item that counts as changed without
// reason would be forgotten.
static void changes_move(const script_report &report, text_changes *texts)
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

// ---- Pairs ----

using line_indexes = std::vector<size_t>;

struct pairing {
    line_pairs pairs;
    std::vector<char> is_paired; // of lines after
};

static bool has_pair(const pairing &pairing, size_t before)
{
    return pairing.pairs.near[before] != no_line || pairing.pairs.far[before] != no_line;
}

// Makes two lines a pair, unless one of them has one.
static void make_pair(pairing *pairing, line_indexes *pairs, size_t before, size_t after)
{
    if (has_pair(*pairing, before) || pairing->is_paired[after] != 0)
        return;
    (*pairs)[before] = after;
    pairing->is_paired[after] = 1;
}

// What lines have alike that may be pairs.
using line_key = std::string (*)(std::string_view line);

static std::string whole_text(std::string_view line)
{
    return std::string(line);
}

static std::string nothing(std::string_view)
{
    return {};
}

constexpr size_t compared_max = 4096; // pairs of lines that are compared; where there are more, order decides

// The lines of both sides of changes that have no pair yet, by their keys; empty ones are no pairs.
static std::map<std::string, std::pair<line_indexes, line_indexes>>
lines_left(const pairing &pairing, const std::vector<line_change> &changes, line_key key)
{
    const auto &[before, after, all] = pairing.pairs.texts;
    std::map<std::string, std::pair<line_indexes, line_indexes>> left;
    for (const line_change &change : changes) {
        for (size_t i = change.before_at; i < change.before_at + change.before_count; i++)
            if (!has_pair(pairing, i) && !line_core(before, i).empty())
                left[key(line_core(before, i))].first.push_back(i);
        for (size_t i = change.after_at; i < change.after_at + change.after_count; i++)
            if (pairing.is_paired[i] == 0 && !line_core(after, i).empty())
                left[key(line_core(after, i))].second.push_back(i);
    }
    return left;
}

// How much two texts have in common at their beginnings and at their ends, in characters of a thousand.
static size_t alike_of(std::string_view a, std::string_view b)
{
    size_t most = std::min(a.size(), b.size()), begin = 0, end = 0;
    while (begin < most && a[begin] == b[begin])
        begin++;
    while (end < most - begin && a[a.size() - 1 - end] == b[b.size() - 1 - end])
        end++;
    return (begin + end) * 1000 / std::max<size_t>(std::max(a.size(), b.size()), 1);
}

struct line_candidate {
    size_t alike; // characters in a thousand
    size_t apart; // lines between their positions
    size_t before, after;
};

// Pairs of lines, those that are most alike first.
static std::vector<line_candidate> candidates_of(const text_changes &texts, const line_indexes &before,
                                                 const line_indexes &after, size_t alike_min)
{
    std::vector<std::string> after_essences;
    for (size_t line : after)
        after_essences.push_back(line_essence(line_core(texts.after, line)));
    std::vector<line_candidate> candidates;
    for (size_t b = 0; b < before.size(); b++) {
        const std::string was = line_essence(line_core(texts.before, before[b]));
        for (size_t a = 0; a < after.size(); a++) {
            size_t alike = alike_of(was, after_essences[a]);
            if (alike >= alike_min)
                candidates.push_back({alike, b > a ? b - a : a - b, before[b], after[a]});
        }
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const line_candidate &x, const line_candidate &y) {
                         return x.alike != y.alike ? x.alike > y.alike : x.apart < y.apart;
                     });
    return candidates;
}

// Makes pairs of lines of changes that have the same key.
static void pair_lines(pairing *pairing, const std::vector<line_change> &changes, line_key key,
                       size_t alike_min, line_indexes *pairs)
{
    for (const auto &[shared, lines] : lines_left(*pairing, changes, key)) {
        if (shared.empty() && key != nothing)
            continue;
        const auto &[before, after] = lines;
        const size_t compared = before.size() * after.size();
        if (compared > 0 && compared <= compared_max) {
            for (const line_candidate &candidate :
                 candidates_of(pairing->pairs.texts, before, after, alike_min))
                make_pair(pairing, pairs, candidate.before, candidate.after);
        } else if (alike_min == 0) {
            for (size_t i = 0; i < std::min(before.size(), after.size()); i++)
                make_pair(pairing, pairs, before[i], after[i]);
        }
    }
}

// Makes pairs of lines that are much alike and in the same position of a change that has as many on both
// sides.
static void pair_in_place(pairing *pairing, const line_change &change)
{
    constexpr size_t much_alike = 800; // characters in a thousand
    const auto &[before, after, all] = pairing->pairs.texts;
    for (size_t i = 0; change.before_count == change.after_count && i < change.before_count; i++) {
        size_t was = change.before_at + i, is = change.after_at + i;
        if (alike_of(line_essence(line_core(before, was)), line_essence(line_core(after, is))) >= much_alike)
            make_pair(pairing, &pairing->pairs.near, was, is);
    }
}

// Makes pairs of what is left of a change, if it is as much on both sides.
static void pair_rest(pairing *pairing, const line_change &change)
{
    for (const auto &[shared, lines] : lines_left(*pairing, {change}, nothing))
        for (size_t i = 0; lines.first.size() == lines.second.size() && i < lines.first.size(); i++)
            pairing->pairs.near[lines.first[i]] = lines.second[i];
}

static line_indexes lines_kept(const text_changes &texts)
{
    line_indexes kept(line_count(texts.before), no_line);
    size_t before = 0, after = 0;
    auto keep_up_to = [&](size_t end) {
        while (before < end)
            kept[before++] = after++;
    };
    for (const line_change &change : texts.changes) {
        keep_up_to(change.before_at);
        before += change.before_count;
        after += change.after_count;
    }
    keep_up_to(kept.size());
    return kept;
}

line_pairs lines_paired(const script_report &report, std::string_view now, std::string_view there)
{
    pairing pairing{{text_diff(now, there), {}, {}, {}}, {}};
    auto &[texts, kept, near, far] = pairing.pairs;
    changes_move(report, &texts);
    near = kept = lines_kept(texts);
    far.assign(kept.size(), no_line);
    pairing.is_paired.resize(line_count(texts.after));
    pair_lines(&pairing, texts.changes, whole_text, 0, &far);
    for (const line_change &change : texts.changes)
        pair_lines(&pairing, {change}, line_essence, 0, &near);
    pair_lines(&pairing, texts.changes, line_essence, 0, &far);
    for (const line_change &change : texts.changes) {
        pair_in_place(&pairing, change);
        pair_lines(&pairing, {change}, leading_word, 0, &near);
        pair_lines(&pairing, {change}, nothing, 500, &near);
    }
    pair_lines(&pairing, texts.changes, leading_word, 0, &far);
    for (const line_change &change : texts.changes)
        pair_rest(&pairing, change);
    return std::move(pairing.pairs);
}
