#include "report/memory/edits.h"

#include "report/findings/form_mended.h"
#include "report/findings/judge_text.h"
#include "report/findings/live_form.h"
#include "report/memory/change_positions.h"
#include "report/memory/line_pairs.h"
#include "report/memory/line_words.h"
#include "report/memory/text_lines.h"
#include "report/show.h"
#include "support/text.h"

#include <algorithm>
#include <map>
#include <set>

size_t lines_missing(std::string_view now, std::string_view there, size_t *differing)
{
    text_changes texts = text_diff(now, there);
    *differing = 0;
    for (const line_change &change : texts.changes)
        *differing += std::max(change.before_count, change.after_count);
    if (texts.changes.empty())
        return 0;
    const line_change &last = texts.changes.back();
    if (last.before_at + last.before_count != line_count(texts.before))
        return 0;
    size_t written = live_lines(texts.before, last.before_at, last.before_count);
    size_t left = live_lines(texts.after, last.after_at, last.after_count);
    return last.after_count == 0 ? last.before_count : written - std::min(written, left);
}

// How a script's output that is there has come from what is written now.
static text_changes output_changes(const script_report &report, std::string_view now, std::string_view there)
{
    text_changes texts = text_diff(now, there);
    changes_move(report, &texts);
    return texts;
}

std::vector<uint64_t> lines_there(const script_report &report, std::string_view now, std::string_view there)
{
    std::vector<size_t> kept = lines_kept(output_changes(report, now, there));
    std::vector<uint64_t> lines;
    lines.reserve(kept.size());
    for (size_t index : kept)
        lines.push_back(index + 1); // no_line becomes 0
    return lines;
}

// Two texts, how their lines belong together, and what the edit has added.
struct edit_view {
    text_changes texts;
    std::vector<size_t> kept, pairs, far;     // as lines_kept and lines_paired have them
    std::map<std::string_view, size_t> added; // with the index of the last one
    std::set<std::string> essences;           // of those added; of comments with a slash before it
    std::set<uint64_t> of_others;             // own lines of all items but those that are guarded
};

static edit_view edit_view_of(const script_report &report, std::string_view now, std::string_view there)
{
    edit_view view{output_changes(report, now, there), {}, {}, {}, {}, {}, {}};
    view.kept = lines_kept(view.texts);
    line_pairs pairs = lines_paired(view.texts);
    view.pairs = std::move(pairs.near);
    view.far = std::move(pairs.far);
    for (const line_change &change : view.texts.changes)
        for (size_t i = change.after_at; i < change.after_at + change.after_count; i++) {
            std::string_view line = line_core(view.texts.after, i);
            view.added[line] = i;
            view.essences.insert((is_comment(line) ? "/" : "") + line_essence(line));
        }
    for (const report_item &item : report.items)
        if (item.kind != ITEM_GUARDED)
            view.of_others.insert(item.own_lines.begin(), item.own_lines.end());
    return view;
}

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

// True if a line has the texts of arguments that weren't written in it, strings without their quotes, as an
// option of a menu has none; and the empty places that its list lacked. frozen: of the same statement, whose
// values are gone from the line; or null.
static bool has_won(const report_item &item, const report_item *frozen, std::string_view was,
                    std::string_view there)
{
    if (item.own_places > 0 && empty_items(there) < empty_items(was) + item.own_places)
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
        return !is_comment(there) && !has_open_string(there) &&
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

// A line that was added elsewhere was moved, and one that has become a comment or is only spelt otherwise is
// still to be done.
static line_fate fate_of(const report_item &item, const report_item *frozen, const edit_view &view,
                         size_t index)
{
    std::string_view first = line_core(view.texts.before, index);
    std::string essence = line_essence(first);
    if (view.added.count(first) != 0 || (essence.empty() && is_comment(first)))
        return FATE_OPEN;
    bool still_there =
        view.essences.count("/" + essence) != 0 || (!is_comment(first) && view.essences.count(essence) != 0);
    size_t pair = view.pairs[index];
    if (pair == no_line && item.kind != ITEM_GUARDED)
        pair = view.far[index];
    if (pair == no_line)
        return still_there ? FATE_OPEN : FATE_GONE;
    // The rest of a text that goes on over lines may have stayed as it is.
    bool in_lines =
        view.pairs[std::min(index + item.own_more, view.pairs.size() - 1)] == pair + item.own_more;
    std::string was = whole_line(view.texts.before, index, item.own_more);
    std::string there = whole_line(view.texts.after, pair, in_lines ? item.own_more : 0);
    return is_done(item, frozen, was, there) ? FATE_DONE : FATE_OPEN;
}

// True if the output has a new statement between an IF and what it guarded.
static bool guards_another(const report_item &item, const edit_view &view)
{
    if (item.own_lines.back() > view.pairs.size())
        return false;
    auto pair_of = [&](uint64_t line) { return view.pairs[static_cast<size_t>(line - 1)]; };
    bool at_end = item.own_lines.size() < 2; // nothing comes after the IF
    size_t begin = pair_of(item.own_lines[0]);
    size_t end = at_end ? line_count(view.texts.after) : pair_of(item.own_lines[1]);
    return begin != no_line && end != no_line && begin < end &&
           live_lines(view.texts.after, begin + 1, end - begin - 1) > 0;
}

// True if the edit of what an IF guards now makes it another statement. It may have been mended for another
// item, or be the same one in other words.
static bool guarded_changed(const report_item &item, const edit_view &view, size_t index)
{
    size_t pair = view.pairs[index];
    bool of_other = view.of_others.count(index + 1) != 0 && !item.guards_itself;
    return !of_other && (pair == no_line || leading_word(line_core(view.texts.after, pair)) !=
                                                leading_word(line_core(view.texts.before, index)));
}

// True if what an IF guards is gone, and one that is equal to it comes next.
static bool guards_equal(const report_item &item, const edit_view &view, size_t index)
{
    size_t next = view.pairs[static_cast<size_t>(item.own_lines[0] - 1)];
    if (next == no_line)
        return false;
    do
        next++;
    while (next < line_count(view.texts.after) && live_lines(view.texts.after, next, 1) == 0);
    return next < line_count(view.texts.after) &&
           line_core(view.texts.after, next) == line_core(view.texts.before, index);
}

// True if a line or one after it that belongs to it isn't there any more.
static bool is_touched(const report_item &item, const edit_view &view, size_t index)
{
    for (size_t i = index; i <= index + item.own_more && i < view.kept.size(); i++)
        if (view.kept[i] == no_line)
            return true;
    return false;
}

// True if the own lines of an item stand as they are around one that is there. They begin as those of others
// do, and the difference may have taken their copies for kept.
static bool stands(const report_item &item, const edit_view &view)
{
    auto index_of = [](uint64_t line) { return static_cast<size_t>(line - 1); };
    auto is_line = [&view](uint64_t line) { return line > 0 && line <= view.kept.size(); };
    auto stands_at = [&](size_t index, size_t there) {
        return std::all_of(item.own_lines.begin(), item.own_lines.end(), [&](uint64_t line) {
            size_t at = there + index_of(line) - index; // wraps if it would be before the first one
            return is_line(line) && at < line_count(view.texts.after) &&
                   line_core(view.texts.after, at) == line_core(view.texts.before, index_of(line));
        });
    };
    return std::any_of(item.own_lines.begin(), item.own_lines.end(), [&](uint64_t line) {
        size_t index = index_of(line);
        if (!is_line(line))
            return false;
        auto added = view.added.find(line_core(view.texts.before, index));
        return (view.kept[index] != no_line && stands_at(index, view.kept[index])) ||
               (added != view.added.end() && stands_at(index, added->second));
    });
}

// True if the edits of an item's own lines are those that it asks for.
static bool is_settled(const report_item &item, const report_item *frozen, const edit_view &view)
{
    size_t gone = 0, done = 0;
    for (size_t i = 0; i < item.own_lines.size(); i++) {
        uint64_t line = item.own_lines[i];
        auto index = static_cast<size_t>(line - 1);
        if (line == 0 || line > view.kept.size() || !is_touched(item, view, index))
            continue;
        line_fate fate = fate_of(item, frozen, view, index);
        bool guarded = item.kind == ITEM_GUARDED && i > 0;
        gone += fate == FATE_GONE && !(guarded && guards_equal(item, view, index));
        bool counts = !guarded || guarded_changed(item, view, index);
        done += fate == FATE_DONE && counts;
    }
    switch (item.kind) {
    case ITEM_BROKEN:
    case ITEM_DECODED: return gone + done > 0 && gone + done == item.own_lines.size();
    case ITEM_FROZEN:
    case ITEM_LOST:
    case ITEM_FORM: return done > 0 || (gone > 0 && gone == item.own_lines.size());
    case ITEM_GUARDED: return gone + done > 0 || guards_another(item, view);
    default: return gone + done > 0 && !stands(item, view);
    }
}

void edits_find(script_report *report, std::string_view now, std::string_view there)
{
    const edit_view view = edit_view_of(*report, now, there);
    const report_item *frozen = nullptr;
    for (report_item &item : report->items) {
        bool of_frozen = frozen != nullptr && frozen->output_line == item.output_line;
        item.state = is_settled(item, of_frozen ? frozen : nullptr, view) ? STATE_CHANGED : STATE_OPEN;
        if (item.kind == ITEM_FROZEN && item.state == STATE_CHANGED)
            frozen = &item;
        for (uint64_t line = item.output_line; line < item.output_line + item.output_lines; line++)
            if (item.there_line == 0 && line <= view.kept.size())
                item.there_line = view.kept[static_cast<size_t>(line - 1)] + 1; // no_line becomes 0
    }
}
