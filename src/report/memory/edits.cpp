#include "report/memory/edits.h"

#include "report/findings/judge_text.h"
#include "report/findings/live_form.h"
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

// ---- Lines that were edited ----

// True of a character that makes one name or number with another beside it.
static bool is_joining(char c)
{
    return text_is(c, CHAR_WORD) || c == '.' || c == '$' || c == '@';
}

// A text without what people write as they like: the case of letters, and blanks beside commas and operators.
static std::string plain_spelling(std::string_view text)
{
    std::string result;
    for (size_t at = 0, next; (next = text.find_first_not_of(" \t", at)) != std::string_view::npos;
         at = next + 1) {
        if (next > at && !result.empty() && is_joining(result.back()) && is_joining(text[next]))
            result += ' ';
        result += static_cast<char>(char_lower(text[next]));
    }
    return result;
}

// A line without what an edit that does nothing changes: the above, the signs of a comment, a remark behind a
// statement, and letters beyond ASCII, whose bytes depend on the encoding.
static std::string line_essence(std::string_view line)
{
    while (is_comment(line))
        line = text_trimmed(line.substr(line[0] == '/' ? 2 : 3));
    std::string text = plain_spelling(text_trimmed(line.substr(0, comment_in(line))));
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }), text.end());
    return text;
}

static std::string_view leading_word(std::string_view line)
{
    return line.substr(0, line.find_first_of(" \t,=([/"));
}

// Lines of a change that begin with the same word, in both texts, by their indexes.
struct same_word_lines {
    std::vector<size_t> before, after;
};

// What an edit has added, and the words of its changes.
struct edit_lines {
    std::set<std::string_view> added;
    std::set<std::string> essences;                                 // of those added
    std::vector<std::map<std::string_view, same_word_lines>> words; // by change
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
            edit.essences.insert(line_essence(line));
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

// How often a text is in a line, and no part of a longer name or number.
static size_t count_in(std::string_view there, std::string_view wanted)
{
    std::string line = plain_spelling(there), text = plain_spelling(text_trimmed(wanted));
    size_t count = 0;
    for (size_t at = line.find(text); !text.empty() && at != std::string_view::npos;
         at = line.find(text, at + 1)) {
        size_t end = at + text.size();
        bool begins = at == 0 || !is_joining(line[at - 1]) || !is_joining(text.front());
        count += begins && (end == line.size() || !is_joining(line[end]) || !is_joining(text.back())) ? 1 : 0;
    }
    return count;
}

// True if a line no longer has a value that was written in it, as an item of its list or elsewhere.
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
    return left == 0 || left + times <= count_in(was, text);
}

static bool has_lost(const report_item &item, std::string_view was, std::string_view there)
{
    size_t number = 0;
    while (number < item.own_texts.size() && has_lost_value(item, number, was, there))
        number++;
    return number == item.own_texts.size();
}

// Items of a line's list up to the last one that isn't empty.
static size_t list_size(std::string_view line)
{
    std::vector<std::string_view> items = list_items(line);
    while (!items.empty() && items.back().empty())
        items.pop_back();
    return items.size();
}

// True if a line has the texts of arguments that weren't written in it, strings without their quotes, as an
// option of a menu has none; and the empty places that its list lacked.
static bool has_won(const report_item &item, std::string_view was, std::string_view there)
{
    const std::vector<std::string> &texts = item.own_texts;
    size_t more = item.own_places > 0 ? item.own_places + texts.size() : 0;
    bool enough = more == 0 || list_size(there) >= list_size(was) + more;
    return enough && std::all_of(texts.begin(), texts.end(), [&](const std::string &text) {
               auto times = static_cast<size_t>(std::count(texts.begin(), texts.end(), text));
               std::string_view content = without_quotes(text).empty() ? text : without_quotes(text);
               return count_in(there, content) >= count_in(was, content) + times;
           });
}

// True if a line does what an item asks for, as one that is there instead of its own.
static bool is_done(const report_item &item, std::string_view was, std::string_view there)
{
    std::string_view live = there.substr(0, comment_in(there));
    bool same = line_essence(there) == line_essence(was);
    switch (item.kind) {
    case ITEM_FROZEN: return !same && !is_comment(there) && has_lost(item, was, live);
    case ITEM_DECODED:
        return !same && !is_comment(there) && !has_open_string(there) && has_lost(item, was, live);
    case ITEM_LOST: return !is_comment(there) && has_won(item, was, live);
    case ITEM_FORM: return !is_comment(there) && form_is_mended(there, item.own_texts[0], item.own_places);
    default: {
        // A comment that has got longer says the same.
        bool longer = is_comment(was) && is_comment(there) &&
                      line_essence(there).compare(0, line_essence(was).size(), line_essence(was)) == 0;
        return !same && !longer;
    }
    }
}

// True if the edit of an own line is one that the item asks for. A line that was added elsewhere was moved,
// and one that has become a comment is still to be done.
static bool has_changed(const report_item &item, const text_changes &texts, const edit_lines &edit,
                        size_t index)
{
    std::vector<std::string_view> lines = lines_instead(texts, edit, index);
    std::string_view was = line_core(texts.before, index);
    std::string essence = line_essence(was);
    auto done = [&](std::string_view line) { return is_done(item, was, line); };
    auto another = [&](std::string_view line) { return leading_word(line) != leading_word(was); };
    if (edit.added.count(was) != 0 || (essence.empty() && is_comment(was)))
        return false;
    bool texts_decide = item.kind == ITEM_FROZEN || item.kind == ITEM_DECODED || item.kind == ITEM_LOST ||
                        item.kind == ITEM_FORM;
    if ((lines.empty() || !texts_decide) && edit.essences.count(essence) != 0)
        return false;
    bool guarded = item.kind == ITEM_GUARDED && index + 1 != item.own_lines[0];
    if (item.kind == ITEM_LOST && !lines.empty())
        return std::any_of(lines.begin(), lines.end(), done);
    return std::all_of(lines.begin(), lines.end(), done) &&
           (!guarded || std::all_of(lines.begin(), lines.end(), another));
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

void edits_find(script_report *report, std::string_view now, std::string_view there)
{
    text_changes texts = text_diff(now, there);
    std::vector<uint64_t> matched = lines_there(texts);
    edit_lines edit = edit_lines_of(texts);
    for (report_item &item : report->items) {
        auto changed = [&](uint64_t line) {
            auto index = static_cast<size_t>(line - 1);
            return line > 0 && line <= matched.size() && matched[index] == 0 &&
                   has_changed(item, texts, edit, index);
        };
        // Of a statement that failed, all that is left of it has to go.
        const std::vector<uint64_t> &own = item.own_lines;
        bool edited = item.kind == ITEM_BROKEN ? !own.empty() && std::all_of(own.begin(), own.end(), changed)
                                               : std::any_of(own.begin(), own.end(), changed);
        edited |= guards_another(item, texts, matched);
        item.state = edited ? STATE_CHANGED : STATE_OPEN;
        for (uint64_t line = item.output_line; line < item.output_line + item.output_lines; line++)
            if (item.there_line == 0 && line <= matched.size())
                item.there_line = matched[static_cast<size_t>(line - 1)];
    }
}
