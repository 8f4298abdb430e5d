// What the tests of the evaluator share.
#pragma once

#include "common/run.h"
#include "expressions/expr_eval.h"
#include "expressions/expr_lexer.h"

#include <stdio.h>
#include <stdlib.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

inline std::vector<std::string> messages; // of the evaluator, since the last value_of

inline void keep_message(const char *message)
{
    messages.push_back(message);
}

class expr_values_test : public testing::Test {
protected:
    void SetUp() override
    {
        file_objects();
        messages.clear();
        expr_error = keep_message;
    }

    void TearDown() override
    {
        reset_run();
    }
};

// The value of a text in the shortest form that keeps it, or "null" and the messages.
inline std::string value_of(const std::string &text)
{
    messages.clear();
    std::string bytes = text + "1\"])" + std::string(lex_slack, '0');
    const std::string before = bytes;
    const double *value = eval_expr(bytes.data(), text.size());
    EXPECT_EQ(bytes, before);
    if (value != nullptr) {
        char number[40];
        for (int digits = 15; digits <= 17; digits++) {
            snprintf(number, sizeof number, "%.*g", digits, *value);
            if (strtod(number, nullptr) == *value)
                break;
        }
        return number;
    }
    std::string result = "null";
    for (const std::string &message : messages)
        result += ": " + message;
    return result;
}
