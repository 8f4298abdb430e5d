#include "report/findings/line_text.h"
#include "report/findings/live_form.h"
#include "report/show.h"

#include <algorithm>

// True if a list has a comma between the two values that had a blank there. Of other values it has to have
// one item more than it had.
static bool has_comma_between(const std::vector<std::string> &values, std::string_view was,
                              std::string_view there)
{
    std::vector<std::string_view> before = list_items(was), after = list_items(there);
    if (values.size() != 2)
        return after.size() > before.size();
    std::string_view first = text_trimmed(values[0]), second = text_trimmed(values[1]);
    for (size_t i = 1; i < after.size(); i++)
        if (after[i - 1] == first && after[i] == second)
            return true;
    bool still = std::any_of(after.begin(), after.end(), [&](std::string_view item) {
        return item.substr(0, first.size()) == first && text_trimmed(item.substr(first.size())) == second;
    });
    return !still && after.size() > before.size();
}

// The menu of a line: the last of its strings.
static std::string_view menu_in(std::string_view line)
{
    std::vector<std::string_view> items = list_items(line.substr(0, comment_in(line)));
    auto menu = std::find_if(items.rbegin(), items.rend(), item_is_string);
    return menu != items.rend() ? *menu : std::string_view();
}

static bool menu_is_mended(const report_item &item, std::string_view was, std::string_view there)
{
    auto bars = [](std::string_view menu) {
        return static_cast<size_t>(std::count(menu.begin(), menu.end(), '|'));
    };
    std::string_view before = menu_in(was), after = menu_in(there);
    if (item.own_texts[0] == option_added)
        return bars(after) <= item.own_places && bars(after) < bars(before);
    auto is_gone = [after](const std::string &option) { return after.find(option) == after.npos; };
    return bars(after) == item.own_places &&
           std::all_of(item.own_typed.begin(), item.own_typed.end(), is_gone);
}

bool form_is_mended(const report_item &item, std::string_view was, std::string_view there)
{
    const std::string &fault = item.own_texts[0];
    if (fault == joins_next)
        return there.empty() || there.back() != '\\';
    if (fault == rest_of_text || is_comment(there))
        return fault == rest_of_text && is_comment(there);
    if (fault == option_added || fault == option_missing || fault == option_divided)
        return menu_is_mended(item, was, there);
    if (fault != comment_inside)
        there = there.substr(0, comment_in(there));
    if ((fault == values_without_comma && !has_comma_between(item.own_typed, was, there)) ||
        (fault == comma_after_word && list_items(there)[0].empty()))
        return false;
    std::vector<std::string_view> arguments(item.own_texts.begin() + 1, item.own_texts.end());
    return live_form_fault(there, arguments).empty();
}
