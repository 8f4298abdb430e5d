#include "report/memory/line_pairs.h"

#include "report/memory/line_words.h"

#include <algorithm>
#include <map>
#include <string>

using line_indexes = std::vector<size_t>;

struct pairing {
    const text_changes &texts;
    line_pairs pairs;
    std::vector<char> is_paired; // of lines after
};

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

// The lines of both sides of changes that have no pair yet, by their keys.
static std::map<std::string, std::pair<line_indexes, line_indexes>>
lines_left(const pairing &pairing, const std::vector<line_change> &changes, line_key key)
{
    std::map<std::string, std::pair<line_indexes, line_indexes>> left;
    for (const line_change &change : changes) {
        for (size_t i = change.before_at; i < change.before_at + change.before_count; i++)
            if (pairing.pairs.near[i] == no_line && pairing.pairs.far[i] == no_line)
                left[key(line_core(pairing.texts.before, i))].first.push_back(i);
        for (size_t i = change.after_at; i < change.after_at + change.after_count; i++)
            if (pairing.is_paired[i] == 0)
                left[key(line_core(pairing.texts.after, i))].second.push_back(i);
    }
    return left;
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
            const std::string &is = after_essences[a];
            size_t size = std::max<size_t>(std::max(was.size(), is.size()), 1);
            size_t alike = likeness(was, is) * 1000 / size;
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
    auto pair = [&](size_t before, size_t after) {
        if ((*pairs)[before] != no_line || pairing->is_paired[after] != 0)
            return;
        (*pairs)[before] = after;
        pairing->is_paired[after] = 1;
    };
    for (const auto &[shared, lines] : lines_left(*pairing, changes, key)) {
        const auto &[before, after] = lines;
        const size_t compared = before.size() * after.size();
        if (compared > 0 && compared <= compared_max) {
            for (const line_candidate &candidate : candidates_of(pairing->texts, before, after, alike_min))
                pair(candidate.before, candidate.after);
        } else if (alike_min == 0) {
            for (size_t i = 0; i < std::min(before.size(), after.size()); i++)
                pair(before[i], after[i]);
        }
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

line_pairs lines_paired(const text_changes &texts)
{
    pairing pairing{texts, {}, std::vector<char>(line_count(texts.after))};
    auto &[kept, near, far] = pairing.pairs;
    near = kept = lines_kept(texts);
    far.assign(kept.size(), no_line);
    pair_lines(&pairing, texts.changes, whole_text, 0, &far);
    for (const line_change &change : texts.changes) {
        pair_lines(&pairing, {change}, line_essence, 0, &near);
        pair_lines(&pairing, {change}, leading_word, 0, &near);
        pair_lines(&pairing, {change}, nothing, 500, &near);
    }
    pair_lines(&pairing, texts.changes, line_essence, 0, &far);
    pair_lines(&pairing, texts.changes, leading_word, 0, &far);
    for (const line_change &change : texts.changes)
        pair_rest(&pairing, change);
    return std::move(pairing.pairs);
}
