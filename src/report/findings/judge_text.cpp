#include "report/findings/judge_text.h"

#include "report/findings/line_text.h"
#include "report/findings/statement.h"
#include "report/show.h"
#include "statements/arg_text.h"
#include "statements/statement_text.h"
#include "support/text.h"

#include <fmt/core.h>

#include <algorithm>

// ---- Arguments that failed ----

static std::string fetch_fault(const statement_result &done, std::string_view message)
{
    if (!message.empty())
        return fmt::format("argument {}: {}", done.failed_at, shown(message));
    switch (done.fetched) {
    case FETCH_MISSING: return fmt::format("argument {} is missing", done.failed_at);
    case FETCH_AFTER_QUOTE:
        return fmt::format("argument {}: something follows the closing quote", done.failed_at);
    case FETCH_PARENTHESES: return fmt::format("argument {}: the parentheses don't pair up", done.failed_at);
    case FETCH_TOO_LONG: return fmt::format("argument {} has more than 251 characters", done.failed_at);
    case FETCH_STORE_FULL: return fmt::format("argument {}: the statement is too long", done.failed_at);
    case FETCH_TOO_MANY: return "the statement has more than 100 arguments";
    default: return fmt::format("argument {}: syntax error", done.failed_at);
    }
}

std::string broken_detail()
{
    const statement_result &done = statement.record->done;
    std::string fault = fetch_fault(done, statement.record->message);
    // A quote that nobody closed takes all lines up to the next one.
    uint32_t more = done.next_line - (done.line_left ? 0 : 1) - statement.line;
    if (done.fetched == FETCH_AFTER_QUOTE && more > 0)
        fault += fmt::format("; the string goes on over {}",
                             more == 1 ? "the next line" : fmt::format("the next {} lines", more));
    return fault;
}

static bool is_command(std::string_view word)
{
    return !word.empty() && command_find(word_key_make(word.data(), word.size())) >= 0;
}

static std::string_view word_at(std::string_view text, size_t at)
{
    size_t end = at;
    while (end < text.size() && text_is(text[end], CHAR_WORD))
        end++;
    return text.substr(at, end - at);
}

// The first word of a text that is a command, empty if there is none.
static std::string_view command_in(std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        std::string_view word = word_at(text, at);
        if (is_command(word))
            return word;
        at += word.size() + 1;
    }
    return {};
}

std::string broken_hint(std::string_view command, std::string_view source)
{
    if (comment_in(source) != std::string_view::npos)
        return "; a comment on the command's line: give it a line of its own";
    std::string_view text = text_trimmed(source);
    text.remove_prefix(std::min(command.size(), text.size()));
    std::string_view word = command == "IF" ? command_in(text) : std::string_view();
    return word.empty() ? "" : fmt::format("; {} on the line of an IF: give it a line of its own", word);
}

// ---- Lines that weren't recognised ----

// True if a text has an equals sign that assigns.
static bool has_assignment(std::string_view text)
{
    for (size_t at = text.find('='); at != text.npos; at = text.find('=', at + 1))
        if (text.substr(at + 1, 1) == "=")
            at++;
        else if (at == 0 || std::string_view("=<>!").find(text[at - 1]) == text.npos)
            return true;
    return false;
}

static std::string unknown_reason(std::string_view text, bool evaluated)
{
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        return "a byte order mark begins the line";
    std::string_view word = word_at(text, 0);
    char next = word.size() < text.size() ? text[word.size()] : '\0';
    if (!word.empty() && text_is(word[0], CHAR_DIGIT) && !command_in(text.substr(word.size())).empty())
        return fmt::format("a number precedes {}", command_in(text.substr(word.size())));
    size_t second = text.find_first_not_of(" \t", word.size());
    if (is_command(word) && second != text.npos && text[second] == '[')
        return fmt::format("a bracket after {}", word);
    if ((is_command(word) || word == "ON") && (next == '(' || next == ','))
        return fmt::format("a {} directly after {}", next == '(' ? "parenthesis" : "comma", word);
    if (has_assignment(text)) {
        if (comment_in(text) != text.npos)
            return "the value wasn't taken: // on the line";
        const char *message = statement.record->message;
        return "its value couldn't be computed: " + (message[0] == '\0' ? "syntax error" : shown(message));
    }
    if (evaluated)
        return "an expression that no variable gets";
    bool no_word = word.empty() || text_is(word[0], CHAR_DIGIT);
    return no_word ? "it begins with no word" : first_word(text) + " is no command";
}

constexpr size_t word_max = 127; // characters of a first word; the one after it may be gone

// What has become of a line that doesn't fit the converter's buffers; empty if it does.
static std::string overlong(statement_kind kind, std::string_view text)
{
    if (is_comment(text))
        return kind == KIND_TEXT && text.size() >= static_cast<size_t>(line_buf_capacity)
                   ? "of a comment of more than 3,900 characters the rest is read as a statement"
                   : "";
    bool fits = text.size() < word_max || text.find_first_of(" \t\r\n") < word_max;
    size_t at = fits ? text.npos : statement.source.find(text.substr(0, word_max));
    if (at == text.npos)
        return {};
    std::string_view left = text.substr(word_max, 8), rest = statement.source.substr(at + word_max);
    bool whole = rest.empty() || text_is(rest[0], CHAR_WHITE) ||
                 (!left.empty() && rest.substr(0, left.size()) == left);
    return whole ? "" : "of a word of more than 126 characters one is gone";
}

std::string unknown_detail()
{
    statement_kind kind = statement.record->done.head.kind;
    std::string_view text = text_trimmed(statement.output);
    bool evaluated = kind == KIND_EXPRESSION;
    // A declaration writes a carriage return as an escape, which names nothing.
    if (kind == KIND_KEYWORD && !is_comment(text) && text.find("\\r") < comment_in(text))
        return "of a carriage return inside the line \\r is left";
    if (evaluated || kind == KIND_LABEL || kind == KIND_TEXT || kind == KIND_UNKNOWN)
        if (std::string fault = overlong(kind, text); !fault.empty())
            return fault;
    if ((!evaluated && kind != KIND_TEXT && kind != KIND_UNKNOWN) || text.empty() || is_comment(text))
        return {};
    bool one_word = word_at(text, 0).size() == text.size() && text_is(text[0], CHAR_LETTER);
    if (evaluated && has_assignment(text))
        return {};
    return unknown_reason(text, evaluated && !one_word) + "; it went through unchanged";
}
