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
    whole = text_body(whole);
    std::string_view line, whole_line;
    while (line_take(&text, &line)) {
        if (!line_take(&whole, &whole_line))
            return false;
        std::string_view core = text_trimmed(line), whole_core = text_trimmed(whole_line);
        if (line.back() != '\n')
            return whole_core.substr(0, core.size()) == core;
        if (core != whole_core)
            return false;
    }
    return false;
}

static size_t lines_with_text(const text_lines &text, size_t first, size_t count)
{
    size_t with_text = 0;
    for (size_t i = first; i < first + count; i++)
        with_text += line_core(text, i).empty() ? 0 : 1;
    return with_text;
}

// True if an edited output was cut off: it ends inside a line, as the beginning of one of those of what was
// written that it lacks at its end, and lacks more than that one.
static bool is_cut_short(std::string_view there, std::string_view last)
{
    std::string_view end = text_trimmed(there.substr(there.rfind('\n') + 1));
    text_changes texts = end.empty() ? text_changes{} : text_diff(last, there);
    if (texts.changes.empty())
        return false;
    const line_change &change = texts.changes.back();
    size_t last_end = change.before_at + change.before_count;
    bool at_end = last_end == line_count(texts.before) && change.after_count > 0 &&
                  change.after_at + change.after_count == line_count(texts.after);
    bool lacking = lines_with_text(texts.before, change.before_at, change.before_count) >
                   lines_with_text(texts.after, change.after_at, change.after_count);
    for (size_t i = change.before_at; at_end && lacking && i < last_end; i++) {
        std::string_view line = line_core(texts.before, i);
        if (line.size() > end.size() && line.substr(0, end.size()) == end)
            return true;
    }
    return false;
}

// A disk that was full can leave zeros or line ends alone.
static bool is_empty(std::string_view text)
{
    return text_body(text).find_first_not_of(std::string_view(" \t\v\f\r\n\0", 7)) == text.npos;
}

output_state output_state_of(std::optional<std::string_view> there, std::string_view now,
                             std::optional<std::string_view> memory)
{
    if (!there)
        return OUTPUT_NONE;
    if (same_text(*there, now))
        return OUTPUT_SAME;
    if (is_empty(*there) || is_cut_from(*there, now) || (memory && is_cut_from(*there, *memory)))
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
