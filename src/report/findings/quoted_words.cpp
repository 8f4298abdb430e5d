#include "report/findings/quoted_words.h"

#include "report/findings/judge_text.h"

static bool has_quote(std::string_view typed)
{
    return typed.find('"') != std::string_view::npos;
}

quoted_words quoted_words_from(const statement_view &statement, int32_t position)
{
    const int32_t count = statement.record->typed_count;
    for (int32_t first = position; first < count; first++) {
        argument_use use = argument_use_of(statement, first, true);
        if (!use.text || argument_is_string(first) || !has_open_string(argument_typed(statement, first)))
            continue;
        quoted_words words{first, first, std::string(use.written), use.line};
        do {
            words.last++;
            words.written.append(", ").append(argument_text(words.last));
        } while (words.last < count && !has_quote(argument_typed(statement, words.last)));
        if (has_quote(argument_typed(statement, words.last)) && !argument_is_string(words.last))
            return words;
    }
    return {};
}
