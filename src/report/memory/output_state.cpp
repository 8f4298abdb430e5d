#include "report/memory/output_state.h"

#include "report/memory/edits.h"
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
    if (is_cut_short(*memory, *there))
        return OUTPUT_CUT;
    if (same_text(*memory, now))
        return OUTPUT_EDITED;
    merge_result merged = merge_texts(*memory, *there, now);
    return merged.conflicts.empty() && merged.taken == 0 ? OUTPUT_EDITED : OUTPUT_BEHIND;
}
