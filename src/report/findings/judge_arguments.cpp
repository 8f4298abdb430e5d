#include "report/findings/judge_arguments.h"

#include "report/findings/arguments.h"
#include "report/findings/line_text.h"
#include "report/findings/live_form.h"
#include "report/findings/statement.h"
#include "report/show.h"
#include "rules/rule_table.h"
#include "support/text.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

static void add_detail(std::string *detail, const std::string &text)
{
    *detail += detail->empty() ? "" : ", ";
    *detail += text;
}

// True if an argument is the word that its row stands for, such as dotprod: the row's form has it.
static bool is_row_word(int32_t position)
{
    if (position != 1 || statement.rule == nullptr || statement.rule->when == nullptr)
        return false;
    std::string_view when = statement.rule->when;
    std::string_view text = argument_text(position);
    std::string word(when.substr(when.rfind(' ') + 1));
    return text_is_word(text.data(), text.size(), word.c_str()) && argument_name(1) == word;
}

static std::string surplus_shown()
{
    std::string surplus = shown_cut(surplus_text(), text_shown);
    return surplus.empty() ? surplus : "not an argument of this command: " + surplus;
}

// ---- Statements that have become comments ----

std::string arguments_in_detail()
{
    bool comment = !lines_written(false).empty();
    std::string there, lacking, empty; // empty: the commas before the next one that is there
    auto add_there = [&](const std::string &text) { add_detail(&there, std::exchange(empty, {}) + text); };
    for (int32_t position = 1; position <= argument_last(); position++) {
        std::string typed = shown_cut(argument_typed(position), text_shown);
        argument_use use = argument_use_of(position, false);
        bool is_left = !argument_text(position).empty(); // the fetcher leaves nothing of some that were typed
        if (typed.empty())
            empty += ", ";
        else if (!comment || (is_left && (use.text || (use.value && is_whole_value(position, use)))))
            add_there(typed + (comment && has_dropped(position)
                                   ? " (the comment has " + shown_cut(use.written, text_shown) + ")"
                                   : ""));
        else if (!is_left || !is_default(position))
            add_detail(&lacking, argument_shown(position) +
                                     (is_left && use.value ? " (it has " + shown(use.written) + ")" : ""));
    }
    std::string detail = there.empty() ? "" : ": " + there;
    if (!lacking.empty())
        detail += "; the comment lacks argument " + lacking;
    std::string surplus = surplus_shown();
    return detail + (surplus.empty() ? "" : "; ") + surplus;
}

// ---- Statements that are carried out ----

// True of a string that goes on to the end of the script.
static bool is_unclosed(std::string_view typed)
{
    return typed.size() < 2 || typed.back() != typed.front();
}

// True if a string can't be read back as it was typed.
static bool is_decoded(int32_t position, std::string_view written)
{
    constexpr const char *line_ends = "\n\r\x1a"; // the last one ends the script
    if (!argument_is_string(position))
        return false;
    std::string_view content = without_quotes(written);
    std::string_view typed = argument_typed(position);
    size_t backslashes = content.size() - (content.find_last_not_of('\\') + 1);
    if (is_unclosed(typed) || content.find('"') != content.npos || backslashes % 2 != 0)
        return true; // a backslash at the end would take the closing quote
    typed = typed.substr(1, typed.size() - 2);
    bool new_line =
        content.find_first_of(line_ends) != content.npos && typed.find_first_of(line_ends) == typed.npos;
    return new_line || escapes_decoded(content) != escapes_decoded(typed);
}

// The items of the statement's arguments, as far as they are found. Between statements they are empty.
static struct {
    report_item frozen, decoded, lost;
} findings;

// text decides whether an edit counts.
static void add_finding(report_item *item, const std::string &detail, std::string_view text,
                        const std::vector<uint64_t> &lines)
{
    add_detail(&item->detail, detail);
    item->own_texts.emplace_back(text);
    for (uint64_t line : lines)
        if (std::find(item->own_lines.begin(), item->own_lines.end(), line) == item->own_lines.end())
            item->own_lines.push_back(line);
}

// Which item of its line's list a use is; SIZE_MAX if it is none.
static size_t item_of(const argument_use &use)
{
    auto number = static_cast<size_t>(use.line - statement.lines.front().number);
    std::vector<std::string_view> items = list_items(statement.lines[number].text);
    auto holds = [&use](std::string_view item) {
        return item.data() <= use.written.data() && use.written.data() < item.data() + item.size();
    };
    auto item = std::find_if(items.begin(), items.end(), holds);
    return item != items.end() ? static_cast<size_t>(item - items.begin()) : SIZE_MAX;
}

// item: which one of its line's list the text is.
static void add_frozen(const std::string &detail, std::string_view text, uint64_t line, size_t item,
                       std::string_view typed)
{
    add_finding(&findings.frozen, detail, text, {line});
    findings.frozen.own_items.push_back(item);
    findings.frozen.own_typed.emplace_back(typed);
}

static void add_decoded(int32_t position, const argument_use &use)
{
    std::string_view typed = argument_typed(position);
    std::string fault = is_unclosed(typed)
                            ? "no closing quote"
                            : fmt::format("become {}; write it as {}", shown_cut(use.written, text_shown),
                                          shown_cut(typed, text_shown));
    std::vector<uint64_t> lines = {use.line};
    for (char c : use.written)
        if (c == '\n')
            lines.push_back(lines.back() + 1);
    add_finding(&findings.decoded, argument_shown(position) + " has " + fault,
                use.written.substr(0, use.written.find('\n')), lines);
    findings.decoded.own_typed.emplace_back(typed);
}

// An argument that was typed and of which the fetcher has left nothing: an empty string, or letters that it
// drops. In a menu an empty option is between bars, and what a line has as "" is there.
static void add_empty(int32_t position)
{
    std::string_view typed = argument_typed(position);
    if (typed.empty() || is_option(position))
        return;
    bool there = argument_is_string(position) &&
                 std::any_of(statement.lines.begin(), statement.lines.end(), [](const written_line &line) {
                     return line.live && line.text.find("\"\"") != std::string_view::npos;
                 });
    if (!there)
        add_finding(&findings.lost, argument_shown(position), typed, lines_written(true));
}

// True if what was written of an argument that is no string is in quotes, and so is a string now.
static bool is_quoted(int32_t position, const argument_use &use)
{
    const char *first = statement.output.data();
    const char *end = use.written.data() + use.written.size();
    return !argument_is_string(position) && use.written.data() > first && use.written.data()[-1] == '"' &&
           end < first + statement.output.size() && *end == '"';
}

// True if the value that an expression had when the script was read chose the row of the command, and no tip
// says so.
static bool has_chosen(int32_t position)
{
    return position == 1 && statement.rule->when != nullptr && statement.rule->effect != EFFECT_TIP &&
           is_numeric(position) && !expression_is_constant(argument_text(position));
}

// What has become of an argument in the lines that are carried out.
static void judge_live(int32_t position, const argument_use &use)
{
    std::string_view text = argument_text(position), written = text_trimmed(use.written);
    auto argument = [&] { return argument_shown(position); };
    if (use.text ? !is_quoted(position, use) : use.value && is_whole_value(position, use)) {
        if (has_chosen(position))
            add_frozen(
                fmt::format("{} has chosen this form by its value, {}", argument(), argument_value(position)),
                written, use.line, item_of(use), {});
    } else if (use.text) {
        add_frozen(
            fmt::format("{} is written as the text \"{}\"", argument(), shown_cut(use.written, text_shown)),
            fmt::format("\"{}\"", use.written), use.line, SIZE_MAX, text);
    } else if (use.value && use.written.empty()) {
        findings.lost.summed = false;
        add_finding(&findings.lost, argument() + " (what follows it has moved up)", text, {use.line});
    } else if (use.value) {
        add_frozen(fmt::format("{} is fixed as {}", argument(), shown(written)), written, use.line,
                   item_of(use), text);
    } else if (!is_default(position)) {
        findings.lost.summed &= is_attribute(position);
        add_finding(&findings.lost, argument(), text, lines_written(true));
    }
}

static void judge_argument(int32_t position, bool carried_out)
{
    argument_use use = carried_out ? argument_use_of(position, true) : argument_use{};
    argument_use comment = argument_is_string(position) ? argument_use_of(position, false) : argument_use{};
    bool broken_comment = comment.text && comment.written.find('\n') != std::string_view::npos;
    if (use.text && is_decoded(position, use.written))
        add_decoded(position, use);
    else if (broken_comment && is_decoded(position, comment.written))
        add_decoded(position, comment);
    if (carried_out)
        judge_live(position, use);
}

// ---- What is lost or changed apart from whole arguments ----

static void add_clause(const std::string &clause, std::string_view text, std::vector<uint64_t> lines)
{
    findings.lost.summed = false;
    findings.lost.detail += (findings.lost.detail.empty() ? "" : "; ") + clause;
    findings.lost.own_lines = std::move(lines);
    if (!text.empty())
        findings.lost.own_texts.emplace_back(text);
}

static void add_dropped()
{
    for (int32_t position = 1; position <= argument_last(); position++) {
        if (!has_dropped(position))
            continue;
        argument_use use = argument_use_of(position, true);
        std::string_view typed = argument_typed(position);
        if (use.text && !use.written.empty())
            add_clause(fmt::format("argument {}: {} is written as {}: characters were dropped", position,
                                   shown_cut(typed, text_shown), shown_cut(use.written, text_shown)),
                       typed, {use.line});
    }
}

// How many commas are missing between two arguments that a live line has one after the other, for the empty
// ones between them. Those that it lacks are listed by themselves.
static size_t commas_missing(const emit_write &before, const emit_write &write)
{
    if (before.slot == 0 || write.slot < before.slot + 2 || write.from < before.to ||
        write.from == write.to || write.source == EMIT_OPTION)
        return 0;
    std::string_view between = output_between(before.to, write.from);
    auto commas = static_cast<size_t>(std::count(between.begin(), between.end(), ','));
    if (between.find_first_not_of(", ") != std::string_view::npos ||
        argument_use_of(write.slot, true).line == 0)
        return 0;
    size_t wanted = 1;
    for (int32_t position = before.slot + 1; position < write.slot; position++)
        if (argument_use_of(position, true).line != 0)
            return 0;
        else
            wanted += argument_text(position).empty();
    return wanted - std::min(commas, wanted);
}

static void add_moved()
{
    for (size_t i = 1; i < statement.writes.size(); i++) {
        const emit_write &write = statement.writes[i];
        size_t missing = commas_missing(statement.writes[i - 1], write);
        if (missing > 0 && findings.lost.own_separators == 0)
            add_clause(
                fmt::format("argument {} has moved up: the empty one before it has no comma", write.slot), {},
                lines_written(true));
        findings.lost.own_separators += static_cast<uint32_t>(missing);
    }
}

static bool has_quote(std::string_view typed)
{
    return typed.find('"') != std::string_view::npos;
}

// A text from the one where it begins to the one where it ends.
static std::string_view text_between(std::string_view text, std::string_view first, std::string_view last)
{
    size_t begin = text.find(first);
    size_t end = begin == text.npos ? begin : text.find(last, begin + first.size());
    return end == text.npos ? first : text.substr(begin, end + last.size() - begin);
}

// Quoted text among words, which a command that takes no strings there takes apart at its commas. It is
// written with one blank behind each of them, whatever the script has there.
static void add_parted()
{
    const int32_t count = statement.record->typed_count;
    for (int32_t first = 1, last; first < count; first++) {
        argument_use use = argument_use_of(first, true);
        std::string_view begin = argument_typed(first), end;
        if (!use.text || argument_is_string(first) || !has_open_string(begin))
            continue;
        std::string written(use.written);
        for (last = first; last == first || (last < count && !has_quote(end));) {
            end = argument_typed(++last);
            written.append(", ").append(argument_text(last));
        }
        if (!has_quote(end) || argument_is_string(last))
            continue;
        first = last;
        if (statement.source.find(written) != std::string_view::npos)
            continue;
        std::string_view typed = text_between(statement.source, begin, end);
        add_finding(&findings.decoded,
                    fmt::format("{} has the blanks behind its commas changed; write it as {}",
                                shown_cut(written, text_shown), shown_cut(typed, text_shown)),
                    written, {use.line});
        findings.decoded.own_typed.emplace_back(typed);
    }
}

// ---- All arguments of a statement ----

static void take_findings(item_kind kind, const char *start, report_item *item)
{
    if (item->detail.empty())
        return;
    item->kind = kind;
    item->detail.insert(0, start);
    if (kind != ITEM_DECODED)
        own_heads(item);
    add_item(std::exchange(*item, {}));
}

void judge_arguments(bool carried_out)
{
    findings.lost.summed = true; // until something else than an attribute is lost
    for (int32_t position = 1; position <= argument_last(); position++) {
        if (is_row_word(position))
            continue;
        if (!argument_text(position).empty())
            judge_argument(position, carried_out);
        else if (carried_out)
            add_empty(position);
    }
    bool arguments_lost = !findings.lost.detail.empty();
    if (carried_out) {
        add_parted();
        add_moved();
        add_dropped();
        if (std::string surplus = surplus_shown(); !surplus.empty())
            add_clause(surplus, surplus_text(), lines_written(true));
    }
    take_findings(ITEM_FROZEN, "argument ", &findings.frozen);
    take_findings(ITEM_LOST, arguments_lost ? "no live line has argument " : "", &findings.lost);
    take_findings(ITEM_DECODED, "argument ", &findings.decoded);
}
