#include "report/memory/edits.h"

#include "report/findings/judge_text.h"
#include "report/findings/live_form.h"
#include "report/memory/line_words.h"
#include "report/memory/text_lines.h"
#include "report/show.h"
#include "support/text.h"

#include <algorithm>
#include <map>
#include <set>

static std::vector<uint64_t> lines_there(const text_changes &texts)
{
    std::vector<uint64_t> there(line_count(texts.before));
    size_t at = 0;
    uint64_t line = 1;
    auto match_up_to = [&](size_t end) {
        while (at < end)
            there[at++] = line++;
    };
    for (const line_change &change : texts.changes) {
        match_up_to(change.before_at);
        at += change.before_count;
        line += change.after_count;
    }
    match_up_to(there.size());
    return there;
}

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

std::vector<uint64_t> lines_there(std::string_view now, std::string_view there)
{
    return lines_there(text_diff(now, there));
}

// Lines of a change that begin with the same word, in both texts, by their indexes.
struct same_word_lines {
    std::vector<size_t> before, after;
};

// What an edit has added, and the words of its changes.
struct edit_lines {
    std::set<std::string_view> added;
    std::set<std::string> essences;                            // of those added
    std::vector<std::map<std::string, same_word_lines>> words; // by change
};

static edit_lines edit_lines_of(const text_changes &texts)
{
    edit_lines edit;
    for (const line_change &change : texts.changes) {
        auto &words = edit.words.emplace_back();
        for (size_t i = 0; i < change.before_count; i++)
            words[leading_word(line_core(texts.before, change.before_at + i))].before.push_back(
                change.before_at + i);
        for (size_t i = 0; i < change.after_count; i++) {
            std::string_view line = line_core(texts.after, change.after_at + i);
            words[leading_word(line)].after.push_back(change.after_at + i);
            edit.added.insert(line);
            edit.essences.insert((is_comment(line) ? "/" : "") + line_essence(line));
        }
    }
    return edit;
}

constexpr size_t more_lines_max = 64; // that are looked at for one line

// The lines of the output that may be there instead of a line that isn't: the one in the same position where
// a change has as many lines on both sides, else those of the change that begin with the same word. They are
// in the order of those that they stand for: of fewer, each stands for one, and of more, a line may be the
// next few too.
static std::vector<std::string_view> lines_instead(const text_changes &texts, const edit_lines &edit,
                                                   size_t index)
{
    auto is_before = [index](const line_change &change) {
        return change.before_at + change.before_count <= index;
    };
    auto change = std::partition_point(texts.changes.begin(), texts.changes.end(), is_before);
    if (change == texts.changes.end())
        return {};
    if (change->before_count == change->after_count)
        return {line_core(texts.after, change->after_at + index - change->before_at)};
    const auto &words = edit.words[static_cast<size_t>(change - texts.changes.begin())];
    const same_word_lines &same = words.at(leading_word(line_core(texts.before, index)));
    auto number = static_cast<size_t>(std::lower_bound(same.before.begin(), same.before.end(), index) -
                                      same.before.begin());
    size_t more = same.after.size() - std::min(same.after.size(), same.before.size());
    size_t end = std::min(same.after.size(), number + 1 + std::min(more, more_lines_max));
    std::vector<std::string_view> lines;
    for (size_t i = number; i < end; i++)
        lines.push_back(line_core(texts.after, same.after[i]));
    return lines;
}

// True if a line has a text of several as often more as they have it.
static bool has_again(const std::vector<std::string> &texts, const std::string &text, std::string_view was,
                      std::string_view there, size_t replaced = 0)
{
    auto times = static_cast<size_t>(std::count(texts.begin(), texts.end(), text));
    std::string_view content = without_quotes(text).empty() ? text : without_quotes(text);
    return count_in(there, content) + replaced >= count_in(was, content) + times;
}

// True if a line no longer has a value that was written in it, as an item of its list or elsewhere, or has
// the expression that the value is of.
static bool has_lost_value(const report_item &item, size_t number, std::string_view was,
                           std::string_view there)
{
    const std::string &text = item.own_texts[number];
    size_t at = number < item.own_items.size() ? item.own_items[number] : SIZE_MAX;
    std::vector<std::string_view> before = list_items(was);
    std::vector<std::string_view> after = list_items(there);
    if (at < before.size() && before[at] == text && before.size() == after.size())
        return count_in(after[at], text) == 0;
    auto times = static_cast<size_t>(std::count(item.own_texts.begin(), item.own_texts.end(), text));
    size_t left = count_in(there, text);
    return left == 0 || left + times <= count_in(was, text) ||
           (number < item.own_typed.size() && has_again(item.own_typed, item.own_typed[number], was, there));
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

// True if a line says something else than the one that an item is about.
static bool says_another(const report_item &item, std::string_view was, std::string_view there)
{
    std::string before = line_essence(was), after = line_essence(there);
    if (is_comment(was) && is_comment(there)) // more words in a comment say the same
        return after.find(before) == std::string::npos;
    bool remark_mended = item.kind == ITEM_UNKNOWN &&
                         item.detail.find(": // on the line") != std::string::npos &&
                         comment_in(there) == std::string_view::npos;
    return before != after || (is_comment(was) != is_comment(there) && is_comment(was)) ||
           (remark_mended && !is_comment(there));
}

// True if a line does what an item asks for, as one that is there instead of its own.
static bool is_done(const report_item &item, const report_item *frozen, std::string_view was,
                    std::string_view there)
{
    std::string_view live = there.substr(0, comment_in(there));
    switch (item.kind) {
    case ITEM_FROZEN:
        return !is_comment(there) && says_another(item, was, there) && has_lost(item, was, live);
    case ITEM_DECODED: // of a string over several lines, each of them has an open one
        return !is_comment(there) && says_another(item, was, there) && !has_open_string(there) &&
               (has_open_string(was) || has_lost(item, was, live));
    case ITEM_LOST: return !is_comment(there) && has_won(item, frozen, was, live);
    case ITEM_FORM: return form_is_mended(item, was, there);
    default: return says_another(item, was, there);
    }
}

// What has become of an own line that isn't there any more.
enum line_fate { FATE_OPEN, FATE_GONE, FATE_DONE };

// A line that was added elsewhere was moved, and one that has become a comment is still to be done.
static line_fate fate_of(const report_item &item, const report_item *frozen, const text_changes &texts,
                         const edit_lines &edit, size_t index)
{
    std::vector<std::string_view> lines = lines_instead(texts, edit, index);
    std::string_view first = line_core(texts.before, index);
    std::string essence = line_essence(first);
    if (edit.added.count(first) != 0 || (essence.empty() && is_comment(first)))
        return FATE_OPEN;
    bool still_there =
        edit.essences.count("/" + essence) != 0 || (!is_comment(first) && edit.essences.count(essence) != 0);
    if (lines.empty())
        return still_there ? FATE_OPEN : FATE_GONE;
    std::string was(first);
    for (size_t more = 1; more <= item.own_more && index + more < line_count(texts.before); more++)
        was.append(" ").append(line_core(texts.before, index + more));
    auto like = [&was](std::string_view a, std::string_view b) {
        return likeness(a, was) < likeness(b, was);
    };
    return is_done(item, frozen, was, *std::max_element(lines.begin(), lines.end(), like)) ? FATE_DONE
                                                                                           : FATE_OPEN;
}

// Own lines of all items but those that are guarded.
static std::set<uint64_t> lines_of_others(const script_report &report)
{
    std::set<uint64_t> lines;
    for (const report_item &item : report.items)
        if (item.kind != ITEM_GUARDED)
            lines.insert(item.own_lines.begin(), item.own_lines.end());
    return lines;
}

// True if the output has a new statement between an IF and what it guarded.
static bool guards_another(const report_item &item, const text_changes &texts,
                           const std::vector<uint64_t> &matched)
{
    if (item.kind != ITEM_GUARDED || item.own_lines.back() > matched.size())
        return false;
    bool at_end = item.own_lines.size() < 2; // nothing comes after the IF
    auto matched_of = [&](uint64_t line) {
        return static_cast<size_t>(matched[static_cast<size_t>(line - 1)]);
    };
    size_t end = at_end ? line_count(texts.after) + 1 : matched_of(item.own_lines[1]);
    for (size_t line = matched_of(item.own_lines[0]); line > 0 && line + 1 < end; line++) {
        if (live_lines(texts.after, line, 1) > 0)
            return true;
    }
    return false;
}

// The texts of a comparison, what an edit has made of their lines, and the items' lines.
struct edit_view {
    text_changes texts;
    std::vector<uint64_t> matched;
    edit_lines edit;
    std::set<uint64_t> of_others;
};

// True if the edits of an item's own lines are those that it asks for.
static bool is_settled(const report_item &item, const report_item *frozen, const edit_view &view)
{
    size_t gone = 0, done = 0;
    for (size_t i = 0; i < item.own_lines.size(); i++) {
        uint64_t line = item.own_lines[i];
        auto index = static_cast<size_t>(line - 1);
        if (line == 0 || line > view.matched.size() || view.matched[index] != 0)
            continue;
        line_fate fate = fate_of(item, frozen, view.texts, view.edit, index);
        gone += fate == FATE_GONE ? 1 : 0;
        // What an IF guards now may be mended for another item, or be the same statement in other words.
        bool of_guarded = item.kind == ITEM_GUARDED && i > 0;
        if (fate == FATE_DONE && of_guarded) {
            std::vector<std::string_view> lines = lines_instead(view.texts, view.edit, index);
            std::string word = leading_word(line_core(view.texts.before, index));
            auto same = [&word](std::string_view there) { return leading_word(there) == word; };
            if (view.of_others.count(line) != 0 || std::any_of(lines.begin(), lines.end(), same))
                continue;
        }
        done += fate == FATE_DONE ? 1 : 0;
    }
    switch (item.kind) {
    case ITEM_BROKEN:
    case ITEM_DECODED: return gone + done > 0 && gone + done == item.own_lines.size();
    case ITEM_FROZEN:
    case ITEM_LOST:
    case ITEM_FORM: return done > 0 || (gone > 0 && gone == item.own_lines.size());
    default: return gone + done > 0 || guards_another(item, view.texts, view.matched);
    }
}

void edits_find(script_report *report, std::string_view now, std::string_view there)
{
    edit_view view{text_diff(now, there), {}, {}, lines_of_others(*report)};
    view.matched = lines_there(view.texts);
    view.edit = edit_lines_of(view.texts);
    const report_item *frozen = nullptr;
    for (report_item &item : report->items) {
        bool of_frozen = frozen != nullptr && frozen->output_line == item.output_line;
        item.state = is_settled(item, of_frozen ? frozen : nullptr, view) ? STATE_CHANGED : STATE_OPEN;
        if (item.kind == ITEM_FROZEN && item.state == STATE_CHANGED)
            frozen = &item;
        for (uint64_t line = item.output_line; line < item.output_line + item.output_lines; line++)
            if (item.there_line == 0 && line <= view.matched.size())
                item.there_line = view.matched[static_cast<size_t>(line - 1)];
    }
}
