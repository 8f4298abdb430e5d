#include "report/memory/line_words.h"

#include "report/findings/line_text.h"
#include "report/show.h"
#include "support/text.h"

#include <algorithm>
#include <utility>

// True of a character that makes one name or number with another beside it.
static bool is_joining(char c)
{
    return text_is(c, CHAR_WORD) || c == '.' || c == '$' || c == '@';
}

// A text without blanks beside commas and operators, and with one blank for several.
static std::string plain_spelling(std::string_view text)
{
    std::string result;
    for (size_t at = 0, next; (next = text.find_first_not_of(" \t", at)) != std::string_view::npos;
         at = next + 1) {
        if (next > at && !result.empty() && is_joining(result.back()) && is_joining(text[next]))
            result += ' ';
        result += text[next];
    }
    return result;
}

// What a comment says.
static std::string_view without_comment_marks(std::string_view line)
{
    while (is_comment(line))
        line = text_trimmed(line.substr(line[0] == '/' ? 2 : 3));
    return line;
}

std::string line_essence(std::string_view line)
{
    line = without_comment_marks(line);
    std::string text = plain_spelling(text_trimmed(line.substr(0, comment_in(line))));
    for (char &c : text)
        c = static_cast<char>(char_lower(c));
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }), text.end());
    return text;
}

std::string leading_word(std::string_view line)
{
    line = without_comment_marks(line);
    std::string word(line.substr(0, line.find_first_of(" \t,=([/")));
    return text_upper(std::move(word));
}

size_t count_in(std::string_view there, std::string_view wanted)
{
    std::string line = plain_spelling(there), text = plain_spelling(text_trimmed(wanted));
    size_t count = 0;
    for (size_t at = line.find(text); !text.empty() && at != std::string_view::npos;
         at = line.find(text, at + 1)) {
        size_t end = at + text.size();
        bool begins = at == 0 || !is_joining(line[at - 1]) || !is_joining(text.front());
        count += begins && (end == line.size() || !is_joining(line[end]) || !is_joining(text.back()));
    }
    return count;
}
