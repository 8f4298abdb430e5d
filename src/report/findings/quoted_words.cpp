#include "report/findings/quoted_words.h"

#include "report/findings/judge_text.h"

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

quoted_words quoted_words_from(const statement_view &statement, std::string_view source, int32_t position)
{
    const int32_t count = statement.record->typed_count;
    for (int32_t first = position; first < count; first++) {
        argument_use use = argument_use_of(statement, first, true);
        if (!use.text || argument_is_string(first) || !has_open_string(argument_typed(statement, first)))
            continue;
        quoted_words words{first, first, std::string(use.written), {}, use.line};
        do {
            words.last++;
            words.written.append(", ").append(argument_text(words.last));
        } while (words.last < count && !has_quote(argument_typed(statement, words.last)));
        words.typed =
            text_between(source, argument_typed(statement, first), argument_typed(statement, words.last));
        if (has_quote(argument_typed(statement, words.last)) && !argument_is_string(words.last))
            return words;
    }
    return {};
}
