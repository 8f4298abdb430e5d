#include "common/diff.h"

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <vector>

static std::string escaped_byte(unsigned char c)
{
    switch (c) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    case '\\': return "\\\\";
    default: break;
    }
    if (c >= ' ' && c < 127)
        return std::string(1, static_cast<char>(c));
    char text[8];
    snprintf(text, sizeof text, "\\x%02X", c);
    return text;
}

std::string escaped(const std::string &text)
{
    std::string result;
    for (char c : text)
        result += escaped_byte(static_cast<unsigned char>(c));
    return result;
}

// A line as it is shown: blanks at its end as middle dots, and a note for a missing line feed.
static std::string shown(std::string line)
{
    bool complete = !line.empty() && line.back() == '\n';
    if (complete)
        line.pop_back();
    size_t blanks = line.size() - (line.find_last_not_of(' ') + 1);
    line.resize(line.size() - blanks);
    line = escaped(line);
    for (size_t i = 0; i < blanks; i++)
        line += "\u00B7";
    return line + "\n" + (complete ? "" : "\\ no line feed at the end\n");
}

static std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

struct edit {
    char sign; // ' ', '-' or '+'
    std::string line;
};

// The edits from want to got by their longest common subsequence.
static std::vector<edit> edits_of(const std::vector<std::string> &want, const std::vector<std::string> &got)
{
    size_t rows = want.size() + 1;
    size_t columns = got.size() + 1;
    std::vector<uint32_t> common(rows * columns); // of the tails that begin at row and column
    for (size_t i = want.size(); i-- > 0;)
        for (size_t k = got.size(); k-- > 0;)
            common[i * columns + k] =
                want[i] == got[k] ? common[(i + 1) * columns + k + 1] + 1
                                  : std::max(common[(i + 1) * columns + k], common[i * columns + k + 1]);
    std::vector<edit> edits;
    size_t i = 0;
    size_t k = 0;
    while (i < want.size() || k < got.size()) {
        if (i < want.size() && k < got.size() && want[i] == got[k])
            edits.push_back({' ', want[i]}), i++, k++;
        else if (i < want.size() &&
                 (k == got.size() || common[(i + 1) * columns + k] >= common[i * columns + k + 1]))
            edits.push_back({'-', want[i++]});
        else
            edits.push_back({'+', got[k++]});
    }
    return edits;
}

std::string unified_diff(const std::string &want, const std::string &got)
{
    constexpr size_t context = 3;
    if (want == got)
        return "";
    std::vector<edit> edits = edits_of(lines_of(want), lines_of(got));
    std::vector<bool> kept(edits.size());
    for (size_t i = 0; i < edits.size(); i++)
        if (edits[i].sign != ' ')
            for (size_t k = i - std::min(i, context); k < std::min(edits.size(), i + context + 1); k++)
                kept[k] = true;
    std::string result = "--- want\n+++ got\n";
    size_t want_line = 1;
    size_t got_line = 1;
    for (size_t i = 0; i < edits.size(); i++) {
        if (kept[i] && (i == 0 || !kept[i - 1]))
            result += "@@ -" + std::to_string(want_line) + " +" + std::to_string(got_line) + " @@\n";
        if (kept[i])
            result += edits[i].sign + shown(edits[i].line);
        want_line += edits[i].sign != '+';
        got_line += edits[i].sign != '-';
    }
    return result;
}
