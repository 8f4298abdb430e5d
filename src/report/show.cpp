#include "report/show.h"

#include "support/text.h"

#include <fmt/core.h>

#include <algorithm>

// Length of the legal UTF-8 sequence at an offset, 0 if there is none; *point is the character.
static size_t utf8_sequence(std::string_view text, size_t at, uint32_t *point)
{
    auto lead = static_cast<unsigned char>(text[at]);
    size_t size = lead < 0x80 ? 1 : lead >= 0xC2 && lead < 0xE0 ? 2 : lead >= 0xE0 && lead < 0xF0 ? 3 : 4;
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || at + size > text.size())
        return 0;
    *point = size == 1 ? lead : lead & (0x7Fu >> size);
    for (size_t i = 1; i < size; i++) {
        auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0) != 0x80)
            return 0;
        *point = *point << 6 | (next & 0x3Fu);
    }
    bool too_long = (size == 3 && *point < 0x800) || (size == 4 && *point < 0x10000);
    bool surrogate = *point >= 0xD800 && *point < 0xE000;
    return too_long || surrogate || *point > 0x10FFFF ? 0 : size;
}

// Characters that steer a terminal, or turn the direction of the text around them.
static bool is_control(uint32_t point)
{
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || (point >= 0x202A && point <= 0x202E) ||
           (point >= 0x2066 && point <= 0x2069);
}

bool is_utf8(std::string_view text)
{
    uint32_t point;
    for (size_t at = 0; at < text.size();) {
        size_t size = utf8_sequence(text, at, &point);
        if (size == 0)
            return false;
        at += size;
    }
    return true;
}

std::string bytes_shown(std::string_view bytes)
{
    std::string text;
    for (char c : bytes) {
        auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
    }
    return text;
}

static std::string show(std::string_view text, bool whole)
{
    auto plain = [](char c) { return c >= ' ' && c < 0x7F; };
    if (std::all_of(text.begin(), text.end(), plain))
        return std::string(text);
    bool legal = is_utf8(text);
    std::string result;
    for (size_t at = 0; at < text.size();) {
        auto c = static_cast<unsigned char>(text[at]);
        uint32_t point = c;
        size_t size = legal ? utf8_sequence(text, at, &point) : 1;
        if (whole && (c == '\t' || c == '\n'))
            result += text[at];
        else if (is_control(point))
            result += point < 0x100 ? fmt::format("\\x{:02x}", point) : fmt::format("\\u{:04x}", point);
        else
            result += legal ? std::string(text.substr(at, size)) : bytes_shown(text.substr(at, 1));
        at += size;
    }
    return result;
}

std::string shown(std::string_view text)
{
    return show(text, false);
}

std::string shown_whole(std::string_view text)
{
    return show(text, true);
}

std::string_view text_trimmed(std::string_view text)
{
    auto is_white = [](char c) { return text_is(c, CHAR_WHITE); };
    while (!text.empty() && is_white(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_white(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string_view text_begin(std::string_view text, size_t size)
{
    if (text.size() <= size)
        return text;
    size_t begin = size;
    while (begin > 0 && size - begin < 4 && (static_cast<unsigned char>(text[begin]) & 0xC0) == 0x80)
        begin--;
    return text.substr(0, size - begin < 4 ? begin : size);
}

std::string counted(uint64_t count, const char *thing)
{
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::vector<std::pair<std::string, uint64_t>> most_first(const std::map<std::string, uint64_t> &counts)
{
    std::vector<std::pair<std::string, uint64_t>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto &a, const auto &b) { return a.second > b.second; });
    return sorted;
}

std::string text_upper(std::string text)
{
    for (char &c : text)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

std::string shown_cut(std::string_view text, size_t size)
{
    return shown(text_begin(text, size)) + (text.size() <= size ? "" : "...");
}
