#include "report/findings/line_text.h"

#include "report/show.h"
#include "support/text.h"

#include <algorithm>

// ---- Comments and strings ----

static bool is_quote(char c)
{
    return c == '"' || c == '`';
}

bool is_comment(std::string_view line)
{
    if (line.substr(0, 2) == "//")
        return true;
    return line.size() >= 3 && char_lower(line[0]) == 'r' && char_lower(line[1]) == 'e' &&
           char_lower(line[2]) == 'm' && (line.size() == 3 || !text_is(line[3], CHAR_WORD));
}

bool is_live(std::string_view line)
{
    line = text_trimmed(line);
    return !line.empty() && !is_comment(line);
}

// The end of the string or the sign of inches that begins at a quote: the character after it. npos if the
// string isn't closed. A backslash takes its meaning from the character after it.
static size_t string_end(std::string_view line, size_t at)
{
    char before = at > 0 ? line[at - 1] : ' ';
    bool inches =
        line[at] == '"' && (text_is(before, CHAR_DIGIT) || before == '.' || before == ')' || before == ']');
    for (size_t end = at + 1; !inches && end < line.size(); end++)
        if (line[end] == line[at])
            return end + 1;
        else if (line[end] == '\\')
            end++;
    return inches ? at + 1 : std::string_view::npos;
}

// Where a line has something outside of strings: a comment, or a string that isn't closed. npos if it has
// neither.
static size_t comment_or_open_string_in(std::string_view line)
{
    for (size_t at = 0; at < line.size();) {
        size_t end = is_quote(line[at]) ? string_end(line, at) : at + 1;
        if (end == std::string_view::npos || line.substr(at, 2) == "//")
            return at;
        at = end;
    }
    return std::string_view::npos;
}

size_t comment_in(std::string_view line)
{
    bool may_have = line.find("//") != std::string_view::npos;
    size_t at = may_have ? comment_or_open_string_in(line) : std::string_view::npos;
    return at != std::string_view::npos && line[at] == '/' ? at : std::string_view::npos;
}

std::string_view without_quotes(std::string_view text)
{
    bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

bool has_open_string(std::string_view line)
{
    size_t at = comment_or_open_string_in(line);
    return at != std::string_view::npos && line[at] != '/';
}

std::string escapes_decoded(std::string_view text)
{
    std::string decoded;
    for (size_t at = 0; at < text.size(); at++) {
        size_t size = 0;
        char c = text[at];
        if (c == '\\' && at + 1 < text.size())
            c = escape_decode(text.data() + at + 1, text.data() + text.size(), false, &size);
        decoded += c;
        at += size;
    }
    return decoded;
}

// ---- Words and lists ----

std::string first_word(std::string_view text)
{
    return shown_cut(text.substr(0, text.find_first_of(" \t\r\n=(,", 1)), 40);
}

// Takes the next item off a list: up to a comma outside of quotes and parentheses.
static std::string_view take_item(std::string_view *list, bool *more)
{
    int open = 0;
    size_t at = 0;
    while (at < list->size()) {
        char c = (*list)[at];
        if (c == ',' && open <= 0)
            break;
        open += (c == '(' || c == '[') - (c == ')' || c == ']');
        at = std::min(is_quote(c) ? string_end(*list, at) : at + 1, list->size());
    }
    std::string_view item = list->substr(0, at);
    *more = at < list->size();
    list->remove_prefix(std::min(at + 1, list->size()));
    return text_trimmed(item);
}

std::vector<std::string_view> list_items(std::string_view line)
{
    std::vector<std::string_view> items;
    items.reserve(16);
    for (bool more = true; more;)
        items.push_back(take_item(&line, &more));
    items[0].remove_prefix(std::min(items[0].find_first_of(" \t"), items[0].size()));
    items[0] = text_trimmed(items[0]);
    return items;
}

bool item_is_string(std::string_view item)
{
    return !item.empty() && is_quote(item.front()) && string_end(item, 0) == item.size();
}
