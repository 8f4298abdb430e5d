#include "report/findings/judge_arguments.h"

#include "report/findings/argument_names.h"
#include "report/findings/argument_values.h"
#include "report/findings/live_form.h"
#include "report/findings/quoted_words.h"
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
    if (position != 1 || rule_last.row == nullptr || rule_last.row->when == nullptr)
        return false;
    std::string_view when = rule_last.row->when;
    std::string_view text = argument_text(position);
    std::string word(when.substr(when.rfind(' ') + 1));
    return text_is_word(text.data(), text.size(), word.c_str()) && argument_name(rule_last.row, 1) == word;
}

// What the line has after the last argument that the command takes, without commas that nothing follows.
static std::string_view surplus_of(const statement_view &statement)
{
    std::string_view text(statement.record->surplus.text, statement.record->surplus.size);
    size_t end = text.find_last_not_of(", \t\r\n\v\f");
    return end == text.npos ? std::string_view() : text_trimmed(text.substr(0, end + 1));
}

static std::string surplus_shown(const statement_view &statement)
{
    return shown_cut(surplus_of(statement), text_shown);
}

// True if the fetcher has dropped characters: outside of strings it keeps printable ASCII and blanks alone.
// White space counts where it kept two words apart.
static bool has_dropped(const statement_view &statement, int32_t position)
{
    std::string_view typed = argument_typed(statement, position);
    auto is_word = [&](size_t at) { return at < typed.size() && text_is(typed[at], CHAR_WORD); };
    for (size_t at = 0; at < typed.size() && !argument_is_string(position); at++)
        if (!text_is(typed[at], CHAR_GRAPH) && typed[at] != ' ' &&
            (!text_is(typed[at], CHAR_WHITE) || (is_word(at - 1) && is_word(at + 1))))
            return true;
    return false;
}

// ---- Statements that have become comments ----

// A constant 0 where nothing could be as well.
static bool is_default(const statement_view &statement, int32_t position, bool attribute)
{
    uint8_t spec = argument_spec(statement, position);
    uint8_t type = spec & ARG_TYPE;
    return ((spec & ARG_OPTIONAL) != 0 || attribute) && type >= ARG_LONG && type <= ARG_DOUBLE &&
           is_constant_zero(position);
}

std::string arguments_in_detail(const statement_view &statement)
{
    const rule_row *row = rule_find(statement.row->id)->effect == EFFECT_SYSTEM ? nullptr : rule_last.row;
    bool comment = !lines_of(statement, false).empty();
    std::string there, lacking, empty; // the last: places after which something may come
    auto add_there = [&](const std::string &text) { add_detail(&there, std::exchange(empty, {}) + text); };
    for (int32_t position = 1; position <= argument_last(statement); position++) {
        std::string typed = shown_cut(argument_typed(statement, position), text_shown);
        argument_use use = argument_use_of(statement, position, false);
        bool is_left = !argument_text(position).empty(); // the fetcher leaves nothing of some that were typed
        if (typed.empty())
            empty += ", ";
        else if (!comment || (is_left && (use.text || (use.value && is_whole_value(position, use)))))
            add_there(typed + (comment && has_dropped(statement, position)
                                   ? " (the comment has " + shown_cut(use.written, text_shown) + ")"
                                   : ""));
        else if (!is_left || !is_default(statement, position, is_attribute(argument_name(row, position))))
            add_detail(&lacking, argument_shown(statement, position, row) +
                                     (is_left && use.value ? " (it has " + shown(use.written) + ")" : ""));
    }
    std::string detail = there.empty() ? "" : ": " + there;
    if (!lacking.empty())
        detail += "; the comment lacks argument " + lacking;
    if (std::string surplus = surplus_shown(statement); !surplus.empty())
        detail += "; not an argument of this command: " + surplus;
    return detail;
}

// ---- Statements that are carried out ----

// True of a string that goes on to the end of the script.
static bool is_unclosed(std::string_view typed)
{
    return typed.size() < 2 || typed.back() != typed.front();
}

// True if a string can't be read back as it was typed.
static bool is_decoded(const statement_view &statement, int32_t position, std::string_view written)
{
    constexpr const char *line_ends = "\n\r\x1a"; // the last one ends the script
    if (!argument_is_string(position))
        return false;
    std::string_view content = without_quotes(written);
    std::string_view typed = argument_typed(statement, position);
    size_t backslashes = content.size() - (content.find_last_not_of('\\') + 1);
    if (is_unclosed(typed) || content.find('"') != content.npos || backslashes % 2 != 0)
        return true; // a backslash at the end would take the closing quote
    typed = typed.substr(1, typed.size() - 2);
    bool new_line =
        content.find_first_of(line_ends) != content.npos && typed.find_first_of(line_ends) == typed.npos;
    return new_line || escapes_decoded(content) != escapes_decoded(typed);
}

// The findings of one statement's arguments, by kind.
struct argument_findings {
    std::string detail;
    std::vector<std::string> texts; // that decide whether an edit counts
    std::vector<size_t> items;
    std::vector<std::string> typed;
    std::vector<uint64_t> lines;
    size_t places = 0; // empty ones that the line lacks
    bool attributes_only = true;
};

static void add_finding(argument_findings *findings, const std::string &detail, std::string_view text,
                        const std::vector<uint64_t> &lines)
{
    add_detail(&findings->detail, detail);
    findings->texts.emplace_back(text);
    for (uint64_t line : lines)
        if (std::find(findings->lines.begin(), findings->lines.end(), line) == findings->lines.end())
            findings->lines.push_back(line);
}

static void add_decoded(const statement_view &statement, int32_t position, const argument_use &use,
                        argument_findings *findings)
{
    std::string_view typed = argument_typed(statement, position);
    std::string fault = is_unclosed(typed)
                            ? "no closing quote"
                            : fmt::format("become {}; write it as {}", shown_cut(use.written, text_shown),
                                          shown_cut(typed, text_shown));
    std::vector<uint64_t> lines = {use.line};
    for (char c : use.written)
        if (c == '\n')
            lines.push_back(lines.back() + 1);
    add_finding(findings, argument_shown(statement, position, rule_last.row) + " has " + fault,
                text_cut(use.written, SIZE_MAX), lines);
    findings->typed.emplace_back(typed);
}

// An argument that was typed and of which the fetcher has left nothing: an empty string, or letters that it
// drops. In a menu an empty option is between bars, and what a line has as "" is there.
static void add_empty(const statement_view &statement, int32_t position, bool carried_out,
                      argument_findings *lost)
{
    std::string_view typed = argument_typed(statement, position);
    if (!carried_out || typed.empty() || is_option(statement, position))
        return;
    bool there = argument_is_string(position) &&
                 std::any_of(statement.lines.begin(), statement.lines.end(), [](const written_line &line) {
                     return line.live && line.text.find("\"\"") != std::string_view::npos;
                 });
    if (!there)
        add_finding(lost, argument_shown(statement, position, rule_last.row), typed,
                    lines_of(statement, true));
}

static void take_findings(judge_state *state, const statement_view &statement, item_kind kind,
                          const char *start, argument_findings *findings)
{
    if (findings->detail.empty())
        return;
    size_t more = 0;
    std::vector<uint64_t> lines =
        kind == ITEM_DECODED ? findings->lines : line_heads(statement, findings->lines, &more);
    report_item *item = add_item(state, statement, kind, start + findings->detail, std::move(lines));
    item->own_more = static_cast<uint32_t>(more);
    item->own_typed = std::move(findings->typed);
    item->own_texts = std::move(findings->texts);
    item->own_items = std::move(findings->items);
    item->own_places = static_cast<uint32_t>(findings->places);
    item->summed = kind == ITEM_LOST && findings->attributes_only;
}

// What is lost beside arguments that no live line has.
static void add_clause(argument_findings *lost, const std::string &clause, std::vector<uint64_t> lines)
{
    lost->attributes_only = false;
    lost->detail += (lost->detail.empty() ? "" : "; ") + clause;
    lost->lines = std::move(lines);
}

// True if what was written of an argument that is no string stands in quotes, and so is a string now.
static bool is_quoted(const statement_view &statement, int32_t position, const argument_use &use)
{
    const char *first = statement.output.data();
    const char *end = use.written.data() + use.written.size();
    return !argument_is_string(position) && use.written.data() > first && use.written.data()[-1] == '"' &&
           end < first + statement.output.size() && *end == '"';
}

// Which item of its line's list a use is; SIZE_MAX if it is none.
static size_t item_of(const statement_view &statement, const argument_use &use)
{
    auto number = static_cast<size_t>(use.line - statement.lines.front().number);
    std::vector<std::string_view> items = list_items(statement.lines[number].text);
    auto holds = [&use](std::string_view item) {
        return item.data() <= use.written.data() && use.written.data() < item.data() + item.size();
    };
    auto item = std::find_if(items.begin(), items.end(), holds);
    return item != items.end() ? static_cast<size_t>(item - items.begin()) : SIZE_MAX;
}

static void add_surplus(const statement_view &statement, argument_findings *lost)
{
    std::string surplus = surplus_shown(statement);
    if (surplus.empty())
        return;
    add_clause(lost, "not an argument of this command: " + surplus, lines_of(statement, true));
    lost->texts.emplace_back(surplus_of(statement));
}

static void add_dropped(const statement_view &statement, argument_findings *lost)
{
    for (int32_t position = 1; position <= argument_last(statement); position++) {
        argument_use use =
            has_dropped(statement, position) ? argument_use_of(statement, position, true) : argument_use{};
        if (!use.text || use.written.empty())
            continue;
        add_clause(lost,
                   fmt::format("argument {}: {} is written as {}: characters were dropped", position,
                               shown_cut(argument_typed(statement, position), text_shown),
                               shown_cut(use.written, text_shown)),
                   {use.line});
        lost->texts.emplace_back(argument_typed(statement, position));
    }
}

// How many commas are missing between two arguments that a live line has one after the other, for the empty
// ones between them. Those that it lacks are listed by themselves.
static size_t commas_missing(const statement_view &statement, const emit_write &before,
                             const emit_write &write)
{
    if (before.slot == 0 || write.slot < before.slot + 2 || write.from < before.to ||
        write.from == write.to || write.source == EMIT_OPTION)
        return 0;
    auto begin = static_cast<size_t>(before.to - statement.lines.front().start);
    std::string_view between = statement.output.substr(begin, static_cast<size_t>(write.from - before.to));
    auto commas = static_cast<size_t>(std::count(between.begin(), between.end(), ','));
    if (between.find_first_not_of(", ") != std::string_view::npos ||
        argument_use_of(statement, write.slot, true).line == 0)
        return 0;
    size_t wanted = 1;
    for (int32_t position = before.slot + 1; position < write.slot; position++)
        if (argument_use_of(statement, position, true).line != 0)
            return 0;
        else
            wanted += argument_text(position).empty();
    return wanted - std::min(commas, wanted);
}

static void add_moved(const statement_view &statement, argument_findings *lost)
{
    for (int32_t i = 1; i < statement.record->write_count; i++) {
        const emit_write &write = statement.record->writes[i];
        size_t missing = commas_missing(statement, statement.record->writes[i - 1], write);
        if (missing > 0 && lost->places == 0)
            add_clause(
                lost,
                fmt::format("argument {} has moved up: the empty one before it has no comma", write.slot),
                lines_of(statement, true));
        lost->places += missing;
    }
}

// The findings of a statement's arguments, by kind.
struct findings_by_kind {
    argument_findings frozen, decoded, lost;
};

// What has become of an argument in the line that is carried out.
static void judge_live(const statement_view &statement, int32_t position, const argument_use &use,
                       findings_by_kind *findings)
{
    std::string_view text = argument_text(position);
    auto argument = [&] { return argument_shown(statement, position, rule_last.row); };
    if (use.text) {
        add_finding(
            &findings->frozen,
            fmt::format("{} is written as the text \"{}\"", argument(), shown_cut(use.written, text_shown)),
            fmt::format("\"{}\"", use.written), {use.line});
        findings->frozen.items.push_back(SIZE_MAX);
        findings->frozen.typed.emplace_back(text);
    } else if (use.value && use.written.empty()) {
        findings->lost.attributes_only = false;
        add_finding(&findings->lost, argument() + " (what follows it has moved up)", text, {use.line});
    } else if (use.value) {
        add_finding(&findings->frozen,
                    fmt::format("{} is fixed as {}", argument(), shown(text_trimmed(use.written))),
                    text_trimmed(use.written), {use.line});
        findings->frozen.items.push_back(item_of(statement, use));
        findings->frozen.typed.emplace_back(text);
    } else if (bool attribute = is_attribute(argument_name(rule_last.row, position));
               !is_default(statement, position, attribute)) {
        findings->lost.attributes_only &= attribute;
        add_finding(&findings->lost, argument(), text, lines_of(statement, true));
    }
}

// True if the value that an expression had when the script was read chose the row of the command, and no tip
// says so.
static bool has_chosen(const statement_view &statement, int32_t position)
{
    uint8_t type = argument_spec(statement, position) & ARG_TYPE;
    return position == 1 && rule_last.row->when != nullptr && rule_last.row->effect != EFFECT_TIP &&
           type >= ARG_LONG && type <= ARG_DOUBLE && !expression_is_constant(argument_text(position));
}

static void judge_argument(const statement_view &statement, int32_t position, bool carried_out,
                           findings_by_kind *findings)
{
    argument_use use = carried_out ? argument_use_of(statement, position, true) : argument_use{};
    if (argument_is_string(position)) {
        argument_use comment = argument_use_of(statement, position, false);
        bool broken_comment = comment.text && comment.written.find('\n') != std::string_view::npos;
        if (use.text && is_decoded(statement, position, use.written))
            add_decoded(statement, position, use, &findings->decoded);
        else if (broken_comment && is_decoded(statement, position, comment.written))
            add_decoded(statement, position, comment, &findings->decoded);
    }
    bool written =
        use.text ? !is_quoted(statement, position, use) : use.value && is_whole_value(position, use);
    if (carried_out && !written)
        judge_live(statement, position, use, findings);
    else if (carried_out && has_chosen(statement, position)) {
        add_finding(&findings->frozen,
                    fmt::format("{} has chosen this form by its value, {}",
                                argument_shown(statement, position, rule_last.row), argument_value(position)),
                    text_trimmed(use.written), {use.line});
        findings->frozen.items.push_back(item_of(statement, use));
        findings->frozen.typed.emplace_back();
    }
}

// Such a text is written with one blank behind each of its commas, whatever the script has there.
static void add_parted(const judge_state &state, const statement_view &statement, argument_findings *decoded)
{
    std::string_view source = script_lines(state, statement);
    for (quoted_words words = quoted_words_from(statement, source, 1); words.last > 0;
         words = quoted_words_from(statement, source, words.last + 1)) {
        if (source.find(words.written) != source.npos)
            continue;
        add_finding(decoded,
                    fmt::format("{} has the blanks behind its commas changed; write it as {}",
                                shown_cut(words.written, text_shown), shown_cut(words.typed, text_shown)),
                    words.written, {words.line});
        decoded->typed.emplace_back(words.typed);
    }
}

void judge_arguments(judge_state *state, const statement_view &statement, bool carried_out)
{
    findings_by_kind findings;
    for (int32_t position = 1; position <= argument_last(statement); position++) {
        if (is_row_word(position))
            continue;
        if (argument_text(position).empty())
            add_empty(statement, position, carried_out, &findings.lost);
        else
            judge_argument(statement, position, carried_out, &findings);
    }
    take_findings(state, statement, ITEM_FROZEN, "argument ", &findings.frozen);
    bool arguments_lost = !findings.lost.detail.empty();
    if (carried_out) {
        add_parted(*state, statement, &findings.decoded);
        add_moved(statement, &findings.lost);
        add_dropped(statement, &findings.lost);
        add_surplus(statement, &findings.lost);
    }
    take_findings(state, statement, ITEM_LOST, arguments_lost ? "no live line has argument " : "",
                  &findings.lost);
    take_findings(state, statement, ITEM_DECODED, "argument ", &findings.decoded);
}
