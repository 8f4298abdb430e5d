// Declarations: each line of the input begins with a letter that says who reads the rest of it.
//
//     a to m   a declaration by the word of that place in words
//     n        ARRAY
//     o        next_item, over and over
//     others   parse_var_ref
#include "harness.h"

#include "expressions/expr_lexer.h"
#include "expressions/var_store.h"
#include "source/src_stream.h"
#include "statements/declarations.h"
#include "support/pool_heap.h"

#include <stdlib.h>
#include <string.h>

static const char *const words[] = {"CHAR",  "DOUBLE", "float", "INT",  "LOCAL", "LONG",  "SHORT",
                                    "SLIST", "STRING", "Uchar", "UINT", "ULONG", "USHORT"};
constexpr int words_count = sizeof words / sizeof words[0];

static void split_list(char *text)
{
    char *end = text + strlen(text);
    char *at = text;
    while (at != nullptr) {
        char *before = at;
        int delimiter = 0;
        char *item = next_item(at, &at, &delimiter);
        if (item == nullptr)
            break; // the list is finished or bad
        harness_expect(item >= text && item + strlen(item) <= end, "an item lies in its text");
        harness_expect(item[0] != 0 && at > before && at <= end, "an item, and a step on");
    }
}

static void read_reference(char *text)
{
    int32_t dims[var_dims_max];
    int32_t count = parse_var_ref(text, var_dims_max, dims);
    harness_expect(count >= -1 && count <= var_dims_max, "a number of subscripts");
    int32_t size;
    if (count == 0)
        (void)var_read(text, strlen(text), &size);
    else if (count > 0)
        (void)var_read_element(text, strlen(text), count, dims);
}

// The rest of a line as a text of its own.
static char *rest_of_line()
{
    static char line[4096];
    int32_t size = src_read_line(line, sizeof line - 1);
    return harness_text(reinterpret_cast<const uint8_t *>(line), static_cast<size_t>(size), lex_slack);
}

static void run_line(int reader)
{
    char word[128] = "ARRAY";
    if (reader >= 0 && reader < words_count) {
        strcpy(word, words[reader]);
        (void)decl_statement(word);
    } else if (reader == words_count) {
        (void)array_statement(word);
    } else {
        char *text = rest_of_line();
        if (reader == words_count + 1)
            split_list(text);
        else
            read_reference(text);
        free(text);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    harness_reset();
    harness_start_file();
    plat_file *source = harness_source(data, size);
    src_open("", source);
    for (int c = src_getc(); c != -1; c = src_getc())
        run_line(c - 'a');
    heap_check(nullptr);
    return 0;
}
