#include "report/memory/output_state.h"

#include "report/memory/line_diff.h"
#include "report/memory/merge.h"
#include "report/memory/text_lines.h"
#include "report/show.h"

const char *const output_state_words[] = {"none", "same", "cut", "unknown", "old", "edited", "behind"};

// True if a text ends inside a line, before its line end, and is the beginning of another.
static bool is_cut_from(std::string_view text, std::string_view whole)
{
    text = text_body(text);
    if (text.empty() || text.back() == '\n')
        return false;
    equal_lines_drop(&text, &whole);
    std::string_view line, whole_line;
    return !line_take(&text, &line) ||
           (text.empty() && line_take(&whole, &whole_line) &&
            text_trimmed(whole_line).substr(0, text_trimmed(line).size()) == text_trimmed(line));
}

// True if an edited output was cut off: it ends inside a line, and either lacks lines of what was written at
// its end, or that line is the beginning of one of them.
static bool is_cut_short(std::string_view there, std::string_view last)
{
    std::string_view end = text_trimmed(there.substr(there.rfind('\n') + 1));
    text_changes texts = end.empty() ? text_changes{} : text_diff(last, there);
    if (texts.changes.empty())
        return false;
    const line_change &change = texts.changes.back();
    size_t before_end = change.before_at + change.before_count;
    if (before_end != line_count(texts.before))
        return false;
    bool begun = false;
    for (size_t i = change.before_at; i < before_end; i++)
        begun |= line_core(texts.before, i).substr(0, end.size()) == end;
    return begun || live_lines(texts.before, change.before_at, change.before_count) >
                        live_lines(texts.after, change.after_at, change.after_count);
}

// A disk that was full can leave zeros or line ends alone.
static bool is_empty(std::string_view text)
{
    return text_body(text).find_first_not_of(std::string_view(" \t\v\f\r\n\0", 7)) == text.npos;
}

bool output_is_beginning(std::string_view there, std::string_view now, std::optional<std::string_view> memory)
{
    return is_empty(there) || is_cut_from(there, now) || (memory && is_cut_from(there, *memory));
}

output_state output_state_of(std::optional<std::string_view> there, std::string_view now,
                             std::optional<std::string_view> memory)
{
    if (!there)
        return OUTPUT_NONE;
    if (same_text(*there, now))
        return OUTPUT_SAME;
    if (output_is_beginning(*there, now, memory))
        return OUTPUT_CUT;
    if (!memory)
        return OUTPUT_UNKNOWN;
    if (same_text(*there, *memory))
        return OUTPUT_OLD;
    if (is_cut_short(*there, *memory))
        return OUTPUT_CUT;
    if (same_text(*memory, now))
        return OUTPUT_EDITED;
    merge_result merged = merge_texts(*memory, *there, now);
    return merged.conflicts.empty() && merged.taken == 0 ? OUTPUT_EDITED : OUTPUT_BEHIND;
}
