// eval_expr alone: each line of the input is a text, and all of them share one variable store.
#include "harness.h"

#include "expressions/expr_eval.h"
#include "expressions/expr_lexer.h"
#include "expressions/var_store.h"
#include "support/pool_heap.h"

#include <stdlib.h>
#include <string.h>

constexpr size_t enclosed_most = 40; // characters; beyond that, nesting may reach the parser's bound

// True if a text means the same in parentheses: numbers and operators only. The letters are those inside a
// number; a name reads as the last value read where it isn't known, so that it may change between two looks.
static bool may_be_enclosed(const uint8_t *text, size_t size)
{
    if (size > enclosed_most)
        return false;
    for (size_t i = 0; i < size; i++) {
        bool in_number = i > 0 && ((text[i - 1] >= '0' && text[i - 1] <= '9') || text[i - 1] == '.');
        const char *allowed = in_number ? "0123456789. +-*/%^<>&|#~?:eEdDxX" : "0123456789. +-*/%^<>&|#~?:";
        if (text[i] == 0 || strchr(allowed, text[i]) == nullptr)
            return false;
    }
    return true;
}

// Evaluates a text that is followed by other characters. It stays as it is. Gives where its first name ends,
// too.
static bool evaluate(const uint8_t *data, size_t size, double *value, size_t *name_end)
{
    char *text = harness_text(data, size, lex_slack);
    const char *last_token = nullptr;
    const double *result = eval_expr(text, size, &last_token);
    if (result != nullptr)
        *value = *result;
    harness_expect(memcmp(text, data, size) == 0, "a text isn't changed");
    *name_end = eval_name_end(text, size, last_token);
    harness_expect(*name_end <= size, "a first name ends inside its text");
    free(text);
    return result != nullptr;
}

static bool same_number(double a, double b)
{
    return memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

// Parentheses around a text change nothing, though they take it off any short cut for plain numbers.
static void check_enclosed(const uint8_t *data, size_t size, bool valid, double value)
{
    uint8_t enclosed[enclosed_most + 2];
    enclosed[0] = '(';
    memcpy(enclosed + 1, data, size);
    enclosed[size + 1] = ')';
    double other = 0;
    size_t name_end;
    bool other_valid = evaluate(enclosed, size + 2, &other, &name_end);
    harness_expect(valid == other_valid, "a text is as valid in parentheses");
    harness_expect(!valid || same_number(value, other), "a text has the same value in parentheses");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    harness_reset();
    harness_start_file();
    const uint8_t *end = data + size;
    while (data < end) {
        auto *line_end = static_cast<const uint8_t *>(memchr(data, '\n', static_cast<size_t>(end - data)));
        if (line_end == nullptr)
            line_end = end;
        auto length = static_cast<size_t>(line_end - data);
        double value = 0;
        size_t name_end;
        bool valid = evaluate(data, length, &value, &name_end);
        if (may_be_enclosed(data, length))
            check_enclosed(data, length, valid, value);
        // The variables may have changed, the text hasn't.
        size_t name_end_again;
        (void)evaluate(data, length, &value, &name_end_again);
        harness_expect(name_end_again == name_end, "a text has one first name");
        data = line_end + 1;
    }
    heap_check(nullptr);
    return 0;
}
