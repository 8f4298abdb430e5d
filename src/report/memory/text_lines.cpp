#include "report/memory/text_lines.h"

#include "report/findings/line_text.h"
#include "report/show.h"

#include <functional>

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

std::string_view text_body(std::string_view text)
{
    if (text.substr(0, byte_order_mark.size()) == byte_order_mark)
        text.remove_prefix(byte_order_mark.size());
    return text;
}

bool line_take(std::string_view *rest, std::string_view *line)
{
    if (rest->empty())
        return false;
    size_t end = rest->find('\n');
    *line = rest->substr(0, end == std::string_view::npos ? end : end + 1);
    rest->remove_prefix(line->size());
    return true;
}

std::string_view line_end(std::string_view line)
{
    if (line.empty() || line.back() != '\n')
        return {};
    return line.substr(line.size() - (line.size() > 1 && line[line.size() - 2] == '\r' ? 2 : 1));
}

void equal_lines_drop(std::string_view *a, std::string_view *b)
{
    std::string_view rest_a = text_body(*a), rest_b = text_body(*b), line_a, line_b;
    do {
        *a = rest_a;
        *b = rest_b;
    } while (line_take(&rest_a, &line_a) && line_take(&rest_b, &line_b) &&
             text_trimmed(line_a) == text_trimmed(line_b));
}

bool same_text(std::string_view a, std::string_view b)
{
    // Without its last line end, a text of one blank line is empty.
    std::string_view rest = text_body(text_body(a).empty() ? b : a), line;
    if (text_body(a).empty() || text_body(b).empty())
        return !line_take(&rest, &line) || (rest.empty() && text_trimmed(line).empty());
    equal_lines_drop(&a, &b);
    return a.empty() && b.empty();
}

text_lines text_split(std::string_view text)
{
    text_lines lines{text_body(text), {0}};
    std::string_view rest = lines.body, line;
    while (line_take(&rest, &line))
        lines.starts.push_back(lines.starts.back() + line.size());
    return lines;
}

size_t line_count(const text_lines &text)
{
    return text.starts.size() - 1;
}

std::string_view lines_between(const text_lines &text, size_t first, size_t end)
{
    return text.body.substr(text.starts[first], text.starts[end] - text.starts[first]);
}

std::string_view line_core(const text_lines &text, size_t index)
{
    return text_trimmed(lines_between(text, index, index + 1));
}

size_t live_lines(const text_lines &text, size_t first, size_t count)
{
    size_t live = 0;
    for (size_t i = first; i < first + count; i++)
        live += is_live(line_core(text, i));
    return live;
}

std::vector<uint32_t> lines_number(const text_lines &text, line_numbering *known)
{
    std::vector<uint32_t> numbers;
    for (size_t i = 0; i < line_count(text); i++) {
        std::string_view core = line_core(text, i);
        size_t hash = std::hash<std::string_view>()(core);
        numbers.push_back(known->emplace(std::pair(hash, core), known->size()).first->second);
    }
    return numbers;
}
