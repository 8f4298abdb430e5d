// The comparison of texts, and the states of an output that follow from it.
#include "report/memory/output_state.h"
#include "report/memory/text_lines.h"

#include <gtest/gtest.h>

TEST(text_lines, know_texts_that_differ_in_spelling_alone)
{
    static const struct {
        const char *a, *b;
        bool same;
    } cases[] = {
        {"", "", true},
        {"", "\n", true},
        {"", "\r\n", true},
        {"", " \t", true},
        {"", "\n\n", false},
        {"", "a", false},
        {"a", "a\n", true},
        {"a\n", "a\r\n", true},
        {"a\n", "a\n\n", false},
        {"a\n", "\na\n", false},
        {"a\n", " a\t", true},
        {"a\n\n", "a\r\n \r\n", true},
        {"a b\n", "a  b", false},
        {"a\rb\n", "ab\n", false},
        {"a\n", "b\n", false},
        {"a\nb", "a\r\n\tb\r", true},
        {"\xEF\xBB\xBF"
         "a",
         "a\n", true},
        {"\xEF\xBB\xBF", "", true},
        {"a\xEF\xBB\xBF", "a", false},
        {"a\v\f\n", "a", true},
        {"\n", "\n\n", false},
        {"a\nb\n", "a\nb\nc", false},
    };
    for (const auto &texts : cases) {
        EXPECT_EQ(same_text(texts.a, texts.b), texts.same) << texts.a << "|" << texts.b;
        EXPECT_EQ(same_text(texts.b, texts.a), texts.same) << texts.b << "|" << texts.a;
    }
}

TEST(output_states, follow_from_the_texts)
{
    static const struct {
        std::optional<std::string_view> there;
        const char *now;
        std::optional<std::string_view> memory;
        const char *state;
    } cases[] = {
        {{}, "a\n", {}, "none"},
        {{}, "", "", "none"},
        {"a\n", "a\n", {}, "same"},
        {" a\r\n", "a\n", "b\n", "same"},
        {"", "", {}, "same"},
        {"", "\n", "a\n", "same"},
        {"", "a\n", {}, "cut"},
        {"\xEF\xBB\xBF\r\n", "a\n", "", "cut"},
        {"LINE 1,2\nPOI", "LINE 1,2\nPOINT 1\n", {}, "cut"},
        {"LINE 1,2\nPOI", "x\n", "LINE 1,2\nPOINT 1\n", "cut"},
        {"LINE 1,2\r\nPOINT 1\r", "LINE 1,2\nPOINT 1\nCLS\n", "x\n", "cut"},
        {"LINE 1,2\nPOINT 1, ", "LINE 1,2\nPOINT 1, 2\n", {}, "cut"},
        {"LINE 1,2\nPOI\n", "LINE 1,2\nPOINT 1\n", {}, "unknown"},
        {"LINE 1,3\nPOI", "LINE 1,2\nPOINT 1\n", {}, "unknown"},
        {"a\n", "a\nb\n", {}, "unknown"},
        {"a\nb\nc", "a\nb\n", {}, "unknown"},
        {"a\n", "b\n", "a\r\n", "old"},
        {"a", "b\n", "a\n", "cut"},            // it can't be known from one that was cut before the line end
        {"a\n", "a\nb\n", "a\nb\n", "edited"}, // lines deleted at the end
        {"x\n", "a\n", "a\n", "edited"},
        {"a\nx\nPOI", "a\nb\nPOINT 1\nc\n", "a\nb\nPOINT 1\nc\n", "cut"}, // edited, and then cut off
        {"a\nx\nPOI\n", "a\nb\nPOINT 1\nc\n", "a\nb\nPOINT 1\nc\n", "edited"},
        {"a\nx\nPOI", "a\nb\nPOINT 1\n\n", "a\nb\nPOINT 1\n\n", "cut"},
        {"x\nLINE", "a\nLINE\nLINE 1\nc\n", "a\nLINE\nLINE 1\nc\n", "cut"}, // at the end of a line
        {"x\nLINE\n", "a\nLINE\nLINE 1\nc\n", "a\nLINE\nLINE 1\nc\n", "edited"},
        {"x\nc", "a\nLINE\nc\n", "a\nLINE\nc\n", "edited"},
        {"x\nNEW", "a\n// tip\n// LINE\n", "a\n// tip\n// LINE\n", "edited"},
        {"a\nx\n", "y\nx\n", "a\nb\n", "behind"},
        {"a\nb\nx\n", "a\nb\nc\n", "a\nb\n", "behind"},             // a conflict
        {"y\nb\nc\nx\n", "y\nb\nc\nd\n", "a\nb\nc\nd\n", "edited"}, // it has the change that now brings
        {"a\nb\nc\nx\n", "y\nb\nc\nd\n", "a\nb\nc\nd\n", "behind"},
    };
    for (const auto &texts : cases)
        EXPECT_STREQ(output_state_words[output_state_of(texts.there, texts.now, texts.memory)], texts.state)
            << "there:\n"
            << texts.there.value_or("-") << "\nnow:\n"
            << texts.now << "memory:\n"
            << texts.memory.value_or("-");
}
