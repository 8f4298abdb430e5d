#include "report/memory/line_pairs.h"

#include "report/memory/line_words.h"

#include <algorithm>
#include <map>
#include <string>

// A line of a change that has no pair yet.
struct single_line {
    size_t index;
    std::string essence;
};

using single_lines = std::vector<single_line>;

constexpr size_t compared_max = 4096; // pairs of lines that are compared; where there are more, order decides

static void add_single(const text_lines &text, size_t index, single_lines *lines)
{
    lines->push_back({index, line_essence(line_core(text, index))});
}

// Lines of both texts by the word that they begin with.
using lines_by_word = std::map<std::string, std::pair<single_lines, single_lines>>;

static lines_by_word sort_by_word(const text_changes &texts, single_lines *before, single_lines *after)
{
    lines_by_word by_word;
    for (single_line &line : *before)
        by_word[leading_word(line_core(texts.before, line.index))].first.push_back(std::move(line));
    for (single_line &line : *after)
        by_word[leading_word(line_core(texts.after, line.index))].second.push_back(std::move(line));
    before->clear();
    after->clear();
    return by_word;
}

struct line_candidate {
    size_t alike; // characters in a thousand
    size_t apart; // lines between their positions
    size_t before, after;
};

static std::vector<line_candidate> candidates_of(const single_lines &before, const single_lines &after,
                                                 size_t alike_min)
{
    std::vector<line_candidate> candidates;
    for (size_t b = 0; b < before.size(); b++)
        for (size_t a = 0; a < after.size(); a++) {
            const std::string &was = before[b].essence, &is = after[a].essence;
            size_t size = std::max<size_t>(std::max(was.size(), is.size()), 1);
            size_t alike = likeness(was, is) * 1000 / size;
            if (alike >= alike_min)
                candidates.push_back({alike, b > a ? b - a : a - b, b, a});
        }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const line_candidate &x, const line_candidate &y) {
                         return x.alike != y.alike ? x.alike > y.alike : x.apart < y.apart;
                     });
    return candidates;
}

static void remove_paired(single_lines *lines, const std::vector<char> &is_paired)
{
    single_lines left;
    for (size_t i = 0; i < lines->size(); i++)
        if (is_paired[i] == 0)
            left.push_back(std::move((*lines)[i]));
    *lines = std::move(left);
}

// Makes pairs of the lines that are most alike, and takes them off both sides.
static void pair_alike(single_lines *before, single_lines *after, size_t alike_min,
                       std::vector<size_t> *pairs)
{
    std::vector<char> before_paired(before->size()), after_paired(after->size());
    auto pair = [&](size_t b, size_t a) {
        (*pairs)[(*before)[b].index] = (*after)[a].index;
        before_paired[b] = after_paired[a] = 1;
    };
    if (before->size() * after->size() > compared_max) {
        for (size_t i = 0; alike_min == 0 && i < std::min(before->size(), after->size()); i++)
            pair(i, i);
    } else {
        for (const line_candidate &candidate : candidates_of(*before, *after, alike_min))
            if (before_paired[candidate.before] == 0 && after_paired[candidate.after] == 0)
                pair(candidate.before, candidate.after);
    }
    remove_paired(before, before_paired);
    remove_paired(after, after_paired);
}

static void pair_change(const text_changes &texts, const line_change &change, std::vector<size_t> *pairs)
{
    single_lines before, after;
    for (size_t i = 0; i < change.before_count; i++)
        add_single(texts.before, change.before_at + i, &before);
    for (size_t i = 0; i < change.after_count; i++)
        add_single(texts.after, change.after_at + i, &after);
    pair_alike(&before, &after, 1000, pairs); // lines that have become comments are the same
    lines_by_word by_word = sort_by_word(texts, &before, &after);
    for (auto &[word, lines] : by_word) {
        pair_alike(&lines.first, &lines.second, 0, pairs);
        std::move(lines.first.begin(), lines.first.end(), std::back_inserter(before));
        std::move(lines.second.begin(), lines.second.end(), std::back_inserter(after));
    }
    auto by_index = [](const single_line &a, const single_line &b) { return a.index < b.index; };
    std::sort(before.begin(), before.end(), by_index);
    std::sort(after.begin(), after.end(), by_index);
    pair_alike(&before, &after, 500, pairs);
}

std::vector<size_t> lines_kept(const text_changes &texts)
{
    std::vector<size_t> kept(line_count(texts.before), no_line);
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

static std::vector<char> paired_after(const text_changes &texts, const line_pairs &pairs)
{
    std::vector<char> is_paired(line_count(texts.after));
    for (const std::vector<size_t> *some : {&pairs.near, &pairs.far})
        for (size_t pair : *some)
            if (pair != no_line)
                is_paired[pair] = 1;
    return is_paired;
}

// Makes pairs of lines in different changes, comments apart.
static void pair_far(const text_changes &texts, line_pairs *pairs)
{
    const std::vector<char> is_paired = paired_after(texts, *pairs);
    single_lines before, after;
    for (size_t i = 0; i < pairs->near.size(); i++)
        if (pairs->near[i] == no_line && live_lines(texts.before, i, 1) > 0)
            add_single(texts.before, i, &before);
    for (size_t i = 0; i < is_paired.size(); i++)
        if (is_paired[i] == 0 && live_lines(texts.after, i, 1) > 0)
            add_single(texts.after, i, &after);
    lines_by_word by_word = sort_by_word(texts, &before, &after);
    for (auto &[word, lines] : by_word)
        pair_alike(&lines.first, &lines.second, 0, &pairs->far);
}

// Makes pairs of what is left of a change, if it is as much on both sides.
static void pair_rest(const line_change &change, const std::vector<char> &is_paired, line_pairs *pairs)
{
    std::vector<size_t> before, after;
    for (size_t i = change.before_at; i < change.before_at + change.before_count; i++)
        if (pairs->near[i] == no_line && pairs->far[i] == no_line)
            before.push_back(i);
    for (size_t i = change.after_at; i < change.after_at + change.after_count; i++)
        if (is_paired[i] == 0)
            after.push_back(i);
    for (size_t i = 0; before.size() == after.size() && i < before.size(); i++)
        pairs->near[before[i]] = after[i];
}

line_pairs lines_paired(const text_changes &texts)
{
    line_pairs pairs{lines_kept(texts), std::vector<size_t>(line_count(texts.before), no_line)};
    for (const line_change &change : texts.changes)
        pair_change(texts, change, &pairs.near);
    pair_far(texts, &pairs);
    const std::vector<char> is_paired = paired_after(texts, pairs);
    for (const line_change &change : texts.changes)
        pair_rest(change, is_paired, &pairs);
    return pairs;
}
