#include "report/memory/edits.h"

#include "report/findings/line_text.h"
#include "report/findings/live_form.h"
#include "report/memory/line_pairs.h"
#include "report/memory/line_words.h"
#include "report/memory/text_lines.h"
#include "support/text.h"

#include <algorithm>
#include <iterator>
#include <set>

struct edit_view {
    line_pairs pairs;
    std::set<uint64_t> of_others; // own lines of all items but those that are guarded
    const report_item *frozen;    // of the item's statement, whose values are gone from its line; or null
};

// True if a line has a text of several as often more as they have it.
static bool has_again(const std::vector<std::string> &texts, const std::string &text, std::string_view was,
                      std::string_view there, size_t replaced = 0)
{
    auto times = static_cast<size_t>(std::count(texts.begin(), texts.end(), text));
    std::string_view content = without_quotes(text).empty() ? text : without_quotes(text);
    return count_in(there, content) + replaced >= count_in(was, content) + times;
}

// True if a line has the expression again of which a value was written, or no longer has the value, as an
// item of its list or elsewhere.
static bool has_lost_value(const report_item &item, size_t number, std::string_view was,
                           std::string_view there)
{
    if (number < item.own_typed.size() && has_again(item.own_typed, item.own_typed[number], was, there))
        return true;
    const std::string &text = item.own_texts[number];
    size_t at = number < item.own_items.size() ? item.own_items[number] : SIZE_MAX;
    std::vector<std::string_view> before = list_items(was);
    std::vector<std::string_view> after = list_items(there);
    size_t left = count_in(there, text);
    if (at < before.size() && before[at] == text && before.size() == after.size())
        return count_in(after[at], text) == 0 && left < count_in(was, text);
    auto times = static_cast<size_t>(std::count(item.own_texts.begin(), item.own_texts.end(), text));
    return left == 0 || left + times <= count_in(was, text);
}

static bool has_lost(const report_item &item, std::string_view was, std::string_view there)
{
    size_t number = 0;
    while (number < item.own_texts.size() && has_lost_value(item, number, was, there))
        number++;
    return number == item.own_texts.size();
}

// How many items of a line's list are empty, between the first and the last one that aren't.
static size_t empty_items(std::string_view line)
{
    std::vector<std::string_view> items = list_items(line);
    auto is_empty = [](std::string_view item) { return item.empty(); };
    auto first = std::find_if_not(items.begin(), items.end(), is_empty);
    auto end = std::find_if_not(items.rbegin(), std::make_reverse_iterator(first), is_empty).base();
    return static_cast<size_t>(std::count_if(first, end, is_empty));
}

// True if a line has the texts of arguments that weren't written in it, strings without their quotes, as an
// option of a menu has none; and the empty items that its list lacked. frozen: of the same statement, whose
// values are gone from the line; or null.
static bool has_won(const report_item &item, const report_item *frozen, std::string_view was,
                    std::string_view there)
{
    if (item.own_separators > 0 && empty_items(there) < empty_items(was) + item.own_separators)
        return false;
    return std::all_of(item.own_texts.begin(), item.own_texts.end(), [&](const std::string &text) {
        auto replaced =
            frozen == nullptr ? 0 : std::count(frozen->own_texts.begin(), frozen->own_texts.end(), text);
        return has_again(item.own_texts, text, was, there, static_cast<size_t>(replaced));
    });
}

// True if a line has all texts as they were typed, blank for blank, where the other one had none.
static bool has_typed(const report_item &item, std::string_view was, std::string_view there)
{
    auto is_back = [&](const std::string &typed) {
        return was.find(typed) == was.npos && there.find(typed) != there.npos;
    };
    return !item.own_typed.empty() && std::all_of(item.own_typed.begin(), item.own_typed.end(), is_back);
}

// True if a line has a string that differs from the typed one by backslashes and quotes alone, and has
// backslashes: some of its escapes are still decoded.
static bool is_half_typed(const report_item &item, std::string_view there)
{
    auto bare = [](std::string_view text) {
        std::string result;
        std::copy_if(text.begin(), text.end(), std::back_inserter(result),
                     [](char c) { return c != '\\' && c != '"'; });
        return result;
    };
    auto is_half = [&](const std::string &typed) {
        std::string content =
            typed.substr(1, std::max<size_t>(typed.size(), 2) - 2); // a menu has it without quotes
        return there.find(content) == there.npos && bare(there).find(bare(content)) != std::string::npos;
    };
    return there.find('\\') != there.npos &&
           std::any_of(item.own_typed.begin(), item.own_typed.end(), is_half);
}

// True if a line says something else than the one that an item is about.
static bool says_another(const report_item &item, std::string_view was, std::string_view there)
{
    std::string before = line_essence(was), after = line_essence(there);
    if (is_comment(was) && is_comment(there)) // more words in a comment say the same
        return after.find(before) == std::string::npos;
    if (is_comment(was) || before != after)
        return true;
    // The value of an assignment isn't taken because of a remark.
    bool had_remark = item.kind == ITEM_UNKNOWN && was.find('=') < comment_in(was) &&
                      comment_in(was) != std::string_view::npos;
    return had_remark && !is_comment(there) && comment_in(there) == std::string_view::npos;
}

// True if a line does what an item asks for, as one that is there instead of its own. A line that has the
// statement as it was typed has all of its arguments.
static bool is_done(const report_item &item, const report_item *frozen, std::string_view was,
                    std::string_view there)
{
    std::string_view live = there.substr(0, comment_in(there));
    auto is_typed = [&] { return count_in(there, item.source) > 0; };
    switch (item.kind) {
    case ITEM_FROZEN:
        return !is_comment(there) && says_another(item, was, there) &&
               (is_typed() || has_lost(item, was, live));
    case ITEM_DECODED: // of a string over several lines, each of them has an open one
        return !is_comment(there) && !has_open_string(there) && !is_half_typed(item, there) &&
               (has_typed(item, was, there) ||
                (says_another(item, was, there) && (has_open_string(was) || has_lost(item, was, live))));
    case ITEM_LOST: return !is_comment(there) && (is_typed() || has_won(item, frozen, was, live));
    case ITEM_FORM: return form_is_mended(item, was, there);
    default: return says_another(item, was, there);
    }
}

// What has become of an own line that isn't there any more.
enum line_fate { FATE_OPEN, FATE_GONE, FATE_DONE };

// A line with those after it that belong to it.
static std::string whole_line(const text_lines &text, size_t index, size_t more)
{
    std::string line;
    for (size_t i = index; i <= index + more && i < line_count(text); i++)
        line.append(line.empty() ? "" : " ").append(line_core(text, i));
    return line;
}

static size_t pair_of(const edit_view &view, size_t index)
{
    size_t near = view.pairs.near[index];
    return near != no_line ? near : view.pairs.far[index];
}

// A line that was moved, and one that has become a comment or is only spelt otherwise, is still to be done.
static line_fate fate_of(const report_item &item, const edit_view &view, size_t index)
{
    const auto &[before, after, changes] = view.pairs.texts;
    std::string_view first = line_core(before, index);
    std::string essence = line_essence(first);
    if (essence.empty() && is_comment(first))
        return FATE_OPEN;
    size_t pair = pair_of(view, index);
    bool near = pair == view.pairs.near[index];
    if (pair == no_line ||
        (item.kind == ITEM_GUARDED && !near && line_essence(line_core(after, pair)) != essence))
        return FATE_GONE;
    if (line_core(after, pair) == first && item.own_more == 0)
        return FATE_OPEN;
    // The rest of a text that goes on over lines may have stayed as it is.
    size_t last = std::min(index + item.own_more, view.pairs.near.size() - 1);
    bool in_lines = pair_of(view, last) == pair + item.own_more;
    std::string was = whole_line(before, index, item.own_more);
    std::string there = whole_line(after, pair, in_lines ? item.own_more : 0);
    return is_done(item, view.frozen, was, there) ? FATE_DONE : FATE_OPEN;
}

// True if an IF that is there governs another statement than the one that it does in what is written now.
// That may have been mended for another item, or be the same one in other words.
static bool guards_another(const report_item &item, const edit_view &view)
{
    const auto &[before, after, changes] = view.pairs.texts;
    size_t next = view.pairs.near[static_cast<size_t>(item.own_lines[0] - 1)];
    if (next == no_line)
        return false;
    do
        next++;
    while (next < line_count(after) && live_lines(after, next, 1) == 0);
    if (item.own_lines.size() < 2) // nothing came after the IF
        return next < line_count(after);
    auto index = static_cast<size_t>(item.own_lines[1] - 1);
    size_t near = view.pairs.near[index];
    if (near != no_line && next < near)
        return true;
    switch (fate_of(item, view, index)) {
    case FATE_GONE: // one that is equal to it may come next
        return next == line_count(after) || line_core(after, next) != line_core(before, index);
    case FATE_DONE:
        return (item.guards_itself || view.of_others.count(index + 1) == 0) &&
               leading_word(line_core(after, pair_of(view, index))) != leading_word(line_core(before, index));
    default: return false;
    }
}

// True if a line or one after it that belongs to it isn't there any more.
static bool is_touched(const report_item &item, const edit_view &view, size_t index)
{
    for (size_t i = index; i <= index + item.own_more && i < view.pairs.kept.size(); i++)
        if (view.pairs.kept[i] == no_line)
            return true;
    return false;
}

// True if the output has the own lines of an item unchanged around one that has a pair. They begin as those
// of others do, and the difference may have taken their copies for kept.
static bool has_copy(const report_item &item, const edit_view &view)
{
    const text_lines &before = view.pairs.texts.before, &after = view.pairs.texts.after;
    return std::any_of(item.own_lines.begin(), item.own_lines.end(), [&](uint64_t one) {
        size_t pair = pair_of(view, static_cast<size_t>(one - 1));
        return pair != no_line &&
               std::all_of(item.own_lines.begin(), item.own_lines.end(), [&](uint64_t line) {
                   auto at =
                       static_cast<size_t>(pair + line - one); // wraps if it would be before the first one
                   return at < line_count(after) &&
                          line_core(after, at) == line_core(before, static_cast<size_t>(line - 1));
               });
    });
}

// True if the edits of an item's own lines are those that it asks for.
static bool is_settled(const report_item &item, const edit_view &view)
{
    size_t gone = 0, done = 0;
    for (uint64_t line : item.own_lines) {
        auto index = static_cast<size_t>(line - 1);
        if (!is_touched(item, view, index) || (item.kind == ITEM_GUARDED && line != item.own_lines[0]))
            continue;
        line_fate fate = fate_of(item, view, index);
        gone += fate == FATE_GONE;
        done += fate == FATE_DONE;
    }
    switch (item.kind) {
    case ITEM_BROKEN:
    case ITEM_DECODED: return gone + done > 0 && gone + done == item.own_lines.size();
    case ITEM_FROZEN:
    case ITEM_LOST:
    case ITEM_FORM: return done > 0 || (gone > 0 && gone == item.own_lines.size());
    case ITEM_GUARDED: return gone + done > 0 || guards_another(item, view);
    default: return gone + done > 0 && !has_copy(item, view);
    }
}

void edits_find(script_report *report, std::string_view now, std::string_view there)
{
    edit_view view{lines_paired(*report, now, there), {}, nullptr};
    report->there_of.clear();
    for (size_t index : view.pairs.kept)
        report->there_of.push_back(index + 1); // no_line becomes 0
    for (const report_item &item : report->items)
        if (item.kind != ITEM_GUARDED)
            view.of_others.insert(item.own_lines.begin(), item.own_lines.end());
    auto is_written = [&view](uint64_t line) { return line > 0 && line <= view.pairs.kept.size(); };
    for (report_item &item : report->items) {
        if (view.frozen != nullptr && view.frozen->output_line != item.output_line)
            view.frozen = nullptr;
        bool known = std::all_of(item.own_lines.begin(), item.own_lines.end(), is_written);
        item.state = known && is_settled(item, view) ? STATE_CHANGED : STATE_OPEN;
        if (item.kind == ITEM_FROZEN && item.state == STATE_CHANGED)
            view.frozen = &item;
    }
}
