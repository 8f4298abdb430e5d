#include "report/findings/argument_names.h"

#include "report/show.h"
#include "support/text.h"

#include <fmt/core.h>

#include <algorithm>

// Takes the next name off an old form, such as "x, y [, a1..a5]".
static std::string_view take_name(std::string_view *form)
{
    auto parts = [](char c) { return c == ' ' || c == ',' || c == '[' || c == ']'; };
    auto begin = std::find_if_not(form->begin(), form->end(), parts);
    auto end = std::find_if(begin, form->end(), parts);
    auto at = static_cast<size_t>(begin - form->begin());
    std::string_view name = form->substr(at, static_cast<size_t>(end - begin));
    form->remove_prefix(at + name.size());
    return name;
}

std::string argument_name(const rule_row *row, int32_t position)
{
    std::string_view form = row != nullptr ? row->old_form : "";
    for (int32_t at = 1; !form.empty();) {
        std::string_view name = take_name(&form);
        if (name == "...")
            return {};
        size_t range = name.find("..");
        if (range == std::string_view::npos) {
            if (at++ == position)
                return std::string(name);
            continue;
        }
        // a1..a5 stands for five names.
        size_t digits = std::min(name.find_first_of("0123456789"), range);
        int first = std::atoi(name.data() + digits);
        int last = std::atoi(name.data() + range + 2 + digits);
        if (position <= at + last - first)
            return fmt::format("{}{}", name.substr(0, digits), first + position - at);
        at += last - first + 1;
    }
    return {};
}

// A letter and a number: it says no more than the position, but that a is an attribute.
static bool is_numbered(const std::string &name)
{
    return name.size() >= 2 && text_is(name[0], CHAR_LETTER) &&
           std::all_of(name.begin() + 1, name.end(), [](char c) { return text_is(c, CHAR_DIGIT); }) &&
           name[0] != 'x' && name[0] != 'y' && name[0] != 'z';
}

bool is_attribute(const std::string &name)
{
    return is_numbered(name) && name[0] == 'a';
}

std::string argument_shown(const statement_view &statement, int32_t position, const rule_row *row)
{
    std::string name = argument_name(row, position);
    std::string text = shown_cut(argument_typed(statement, position), text_shown);
    if (is_attribute(name))
        return fmt::format("{} (attribute): {}", position, text);
    bool plain = name.empty() || is_numbered(name) || !text_is(name[0], CHAR_LETTER);
    return plain ? fmt::format("{}: {}", position, text) : fmt::format("{} ({}): {}", position, name, text);
}
