// Random texts, the same ones in every run.
#pragma once

#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

struct random_texts {
    std::mt19937 die;
    std::vector<std::string> alternatives[128]; // of each letter

    // Takes the alternatives with a semicolon behind each but the last.
    explicit random_texts(const std::map<char, std::string> &rules)
    {
        for (const auto &[letter, texts] : rules) {
            std::istringstream list(texts);
            for (std::string text; std::getline(list, text, ';');)
                alternatives[letter & 127].push_back(text);
        }
    }

    const std::string &pick(char letter)
    {
        const auto &texts = alternatives[letter & 127];
        return texts[die() % texts.size()];
    }

    // A text in which % and a letter stand for one of its alternatives.
    std::string expand(const std::string &text)
    {
        std::string result;
        for (size_t i = 0; i < text.size(); i++)
            result += text[i] == '%' ? expand(pick(text[++i])) : std::string(1, text[i]);
        return result;
    }
};
