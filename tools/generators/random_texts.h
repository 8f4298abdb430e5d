// Random texts from rules, the same ones in every run.
//
// A rule has a letter (or another character) and alternatives, with a semicolon between two of them; one that
// begins with N* is taken N times as often. In a text
//   %c            stands for an alternative of rule c, %% for a percent sign
//   %(0-15)       for a number of this range, with as many digits as the lower bound at least
//   %<2-5c, >     for 2 to 5 alternatives of rule c, with what follows the letter between two of them
#pragma once

#include <stdint.h>
#include <stdlib.h>

#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

struct random_texts {
    std::mt19937 die;

    explicit random_texts(const std::map<char, std::string> &rules)
    {
        for (const auto &[letter, texts] : rules) {
            std::istringstream list(texts);
            for (std::string text; std::getline(list, text, ';');) {
                size_t star = text.find_first_not_of("0123456789");
                bool weighted = star > 0 && star < text.size() && text[star] == '*';
                rule_of(letter).insert(rule_of(letter).end(),
                                       weighted ? strtoul(text.c_str(), nullptr, 10) : 1,
                                       weighted ? text.substr(star + 1) : text);
            }
        }
    }

    const std::string &pick(char letter)
    {
        const auto &texts = rule_of(letter);
        return texts[die() % texts.size()];
    }

    void expand(const std::string &text, std::string *result)
    {
        for (size_t i = 0; i < text.size(); i++)
            if (text[i] != '%')
                *result += text[i];
            else if (char kind = text[++i]; kind == '(')
                i = expand_number(text, i, result);
            else if (kind == '%')
                *result += kind;
            else if (kind == '<')
                i = expand_list(text, i, result);
            else
                expand(pick(kind), result);
    }

    std::string expand(const std::string &text)
    {
        std::string result;
        expand(text, &result);
        return result;
    }

private:
    std::vector<std::string> alternatives[128]; // of each letter

    std::vector<std::string> &rule_of(char letter)
    {
        return alternatives[letter & 127];
    }

    // A number between the bounds that stand at *from, LOW-HIGH, which is moved behind them.
    uint32_t number_between(const char **from)
    {
        char *end;
        uint32_t low = static_cast<uint32_t>(strtoul(*from, &end, 10));
        uint32_t high = static_cast<uint32_t>(strtoul(end + 1, &end, 10));
        *from = end;
        return low + static_cast<uint32_t>(die() % (high - low + 1));
    }

    // Both return the position of the closing bracket.
    size_t expand_number(const std::string &text, size_t open, std::string *result)
    {
        const char *at = text.c_str() + open + 1;
        std::string digits = std::to_string(number_between(&at));
        size_t wanted = text.find('-', open) - open - 1;
        result->append(wanted > digits.size() ? wanted - digits.size() : 0, '0');
        *result += digits;
        return static_cast<size_t>(at - text.c_str());
    }

    size_t expand_list(const std::string &text, size_t open, std::string *result)
    {
        const char *at = text.c_str() + open + 1;
        uint32_t count = number_between(&at);
        size_t letter = static_cast<size_t>(at - text.c_str());
        size_t close = text.find('>', letter);
        for (uint32_t i = 0; i < count; i++) {
            if (i > 0)
                result->append(text, letter + 1, close - letter - 1);
            expand(pick(text[letter]), result);
        }
        return close;
    }
};
