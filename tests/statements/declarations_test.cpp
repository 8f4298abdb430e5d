// Declarations: how a list is cut up, what a reference says, and what enters the store.
#include "statements/declarations.h"

#include "common/diff.h"
#include "common/run.h"
#include "expressions/expr_lexer.h"
#include "expressions/var_store.h"
#include "source/src_stream.h"
#include "statements/labels.h"
#include "statements/statement_text.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

// The items of a list, each with the delimiter after it, then how it ended: "." regularly, "!REST" badly.
static std::string items_of(std::string text)
{
    std::string result;
    char *next = text.data();
    for (;;) {
        int delimiter = 0;
        char *item = next_item(next, &next, &delimiter);
        if (item == nullptr)
            return result + (next == nullptr ? "." : "!" + std::string(next));
        result += std::string(item) + (delimiter == ITEM_COMMA ? "," : delimiter == ITEM_BLANK ? " " : "$");
        EXPECT_EQ(delimiter == ITEM_LAST, *next == 0 && delimiter != ITEM_COMMA);
    }
}

TEST(declarations, cut_a_list_into_items)
{
    static const struct {
        const char *text, *items;
    } cases[] = {
        {"", "."},
        {"  \n", "."},
        {"a", "a$."},
        {" a \n", "a$."},
        {"a,b\n", "a,b$."},
        {"a , b", "a,b$."},
        {"a,", "a,."},
        {"a,,b", "a,!,b"},
        {",a", "!,a"},
        {"a b", "a b$."},
        {"INT a , b", "INT a,b$."},
        {"a [ 3 ] [x + 1] , b", "a[3][x+1],b$."},
        {"a[1, 2],b", "a[1,2],b$."},
        {"a(1, 2) b", "a(1,2) b$."},
        {"a [3] b", "a[3] b$."},
        {"a\t\v[3]", "a[3]$."},
        {"$a,@b,$$c", "$a,@b,$$c$."},
        {"1a", "!1a"},
        {"_a", "!_a"},
        {"a]b", "!b"},
        {"a)b", "!b"},
        {"a[1", "!"},
        {"a(1", "!"},
        {"a\"b", "!b"},
        {"a`b", "!b"},
        {"a'b", "!b"},
        {"a // note", "a !// note"},
        {"a-b+c", "a-b+c$."},
    };
    for (const auto &c : cases)
        EXPECT_EQ(items_of(c.text), c.items) << escaped(c.text);
}

TEST(declarations, read_a_reference)
{
    static const struct {
        const char *text;
        int32_t max_dims, count;
        const char *name; // the text afterwards, if it is good
        std::vector<int32_t> dims;
    } cases[] = {
        {"v", 5, 0, "v", {}},
        {" v \t", 5, 0, "v", {}},
        {"$s", 5, 0, "$s", {}},
        {"$$l", 5, 0, "$$l", {}},
        {"a_1Z", 5, 0, "a_1Z", {}},
        {"v[3]", 5, 1, "v", {3}},
        {"v [ 1 2 ]", 5, 1, "v", {12}},
        {"v[010]", 5, 1, "v", {10}},
        {"v[1][2][3][4][5]", 5, 5, "v", {1, 2, 3, 4, 5}},
        {"v[1+2*3][two]", 5, 2, "v", {7, 2}},
        {"v[2.9][-1.9]", 5, 2, "v", {2, -1}},
        {"v[4294967296]", 5, 1, "v", {-1}},
        {"v[2147483647]", 5, 1, "v", {2147483647}},
        {"v[99999999999999999999999999]", 5, 1, "v", {-1}},
        {"v[1e300]", 5, 1, "v", {0}},
        {"v[1][2][3][4][5][6]", 5, -1, "", {}},
        {"v[1]", 0, -1, "", {}},
        {"", 5, -1, "", {}},
        {"1", 5, -1, "", {}},
        {"@a", 5, -1, "", {}},
        {"$1", 5, -1, "", {}},
        {"$$$a", 5, -1, "", {}},
        {"_a", 5, -1, "", {}},
        {"v[]", 5, -1, "", {}},
        {"v[1", 5, -1, "", {}},
        {"v[", 5, -1, "", {}},
        {"v]", 5, -1, "", {}},
        {"v[1]x", 5, -1, "", {}},
        {"v-1", 5, -1, "", {}},
        {"v[b[1]]", 5, -1, "", {}},
        {"v[1/0]", 5, -1, "", {}},
        {"v[INT]", 5, -1, "", {}},
        {"v(1)", 5, -1, "", {}},
    };
    file_objects();
    evaluate("two = 2");
    for (const auto &c : cases) {
        std::string text = c.text + std::string(lex_slack, 0);
        int32_t dims[5];
        ASSERT_EQ(parse_var_ref(text.data(), c.max_dims, dims), c.count) << c.text;
        if (c.count < 0)
            continue;
        EXPECT_STREQ(text.c_str(), c.name) << c.text;
        EXPECT_EQ(std::vector<int32_t>(dims, dims + c.count), c.dims) << c.text;
    }
}

// The variables of the store, each as name:type[dims]=value.
static std::string store_now()
{
    std::string result;
    for (int32_t i = 0; i < var_count; i++) {
        const var_rec &rec = var_table[i];
        result += (i > 0 ? " " : "") + std::string(rec.name) + ":" + std::to_string(rec.type);
        int32_t dims = rec.type == VAR_SLIST ? 1 : rec.ndims;
        for (int32_t k = 0; k < dims; k++)
            result += "[" + std::to_string(rec.array.block->dims[k]) + "]";
    }
    return result;
}

TEST(declarations, enter_the_store)
{
    static const struct {
        const char *word, *text;
        int32_t result;
        const char *written, *store; // after a DOUBLE d, an INT i[2] and a STRING s[4] that are known
    } cases[] = {
        {"INT", "a, b[3], c\n", -2, "INT a, b[3], c\n", " a:5 b:5[3] c:5"},
        {"int", " a\n", -2, "int  a\n", " a:5"},
        {"INT", "a", -2, "INT a", " a:5"},
        {"INT", "", STATEMENT_END, "", ""},
        {"INT", "\n", STOP_DECL_EMPTY, "INT \n", ""},
        {"INT", "a,\n", -2, "INT a,\n", " a:5"},
        {"INT", "a b\n", STOP_DECL_COMMA, "INT a b\n", ""},
        {"INT", "a,b c\n", STOP_DECL_COMMA, "INT a,b c\n", " a:5"},
        {"INT", "a // x\n", STOP_DECL_COMMA, "INT a // x\n", ""},
        {"INT", "a,,b\n", STOP_DECL_ITEM, "INT a,,b\n", " a:5"},
        {"INT", "a\rb\n", STOP_DECL_COMMA, "INT a\\rb\n", ""},
        {"INT", "%s%n\n", STOP_DECL_ITEM, "INT %s%n\n", ""},
        {"INT", "@a\n", STOP_DECL_REFERENCE, "INT @a\n", ""},
        {"INT", "a[1][2][3][4][5]\n", -2, "INT a[1][2][3][4][5]\n", " a:5[1][2][3][4][5]"},
        {"INT", "a[1][2][3][4][5][6]\n", STOP_DECL_REFERENCE, "INT a[1][2][3][4][5][6]\n", ""},
        {"INT", "a[-1]\n", STOP_STORE - VAR_NO_MEMORY, "INT a[-1]\n", ""},
        {"INT", "d\n", STOP_STORE - VAR_TYPE, "INT d\n", ""},
        {"DOUBLE", "d\n", -2, "DOUBLE d\n", ""},
        {"DOUBLE", "d[2]\n", STOP_STORE - VAR_SCALAR, "DOUBLE d[2]\n", ""},
        {"INT", "i\n", STOP_STORE - VAR_SCALAR, "INT i\n", ""},
        {"INT", "i[2], i[0], a\n", -2, "INT i[2], i[0], a\n", " a:5"},
        {"FLOAT", "i[2]\n", STOP_STORE - VAR_TYPE, "FLOAT i[2]\n", ""},
        {"STRING", "t\n", STOP_STORE - VAR_DIMENSIONS, "STRING t\n", ""},
        {"STRING", "s[4], $t[9]\n", -2, "STRING s[4], $t[9]\n", " $t:11[9]"},
        {"SLIST", "$$l[10][80]\n", -2, "SLIST $$l[10][80]\n", " $$l:12[10]"},
        {"SLIST", "$l[10][80]\n", STOP_STORE - VAR_TYPE, "SLIST $l[10][80]\n", ""},
        {"UCHAR", "a, $b\n", STOP_STORE - VAR_TYPE, "UCHAR a, $b\n", " a:2"},
        {"local", "a\n", -2, "LOCAL a\n\n", ""},
        {"LOCAL", "a, b\n", -2, "LOCAL a, b\n\n", ""},
        {"LOCAL", "a", -2, "LOCAL a\n", ""},
        {"LOCAL", "a b\n", STOP_DECL_COMMA, "LOCAL a b\n\n", ""},
        {"LOCAL", "a[2]\n", STOP_DECL_REFERENCE, "LOCAL a[2]\n\n", ""},
        {"LOCAL", "int a[2], b\n", -2, "LOCAL int a[2], b\n\n", " a:5[2] b:5"},
        {"LOCAL", "INT\n", STOP_DECL_COMMA, "LOCAL INT\n\n", ""},
        {"LOCAL", "INT,a\n", STOP_DECL_COMMA, "LOCAL INT,a\n\n", ""},
        {"LOCAL", "INT a b\n", STOP_DECL_COMMA, "LOCAL INT a b\n\n", ""},
        {"LOCAL", "\n", STOP_DECL_EMPTY, "LOCAL \n\n", ""},
        {"LOCAL", "a,\n", -2, "LOCAL a,\n\n", ""},
    };
    const std::string known = "d:10 i:5[2] s:11[4]";
    for (const auto &c : cases) {
        script_source source(c.text);
        const int32_t two = 2, four = 4;
        var_make("d", 1, VAR_DOUBLE, 0, nullptr);
        var_make("i", 1, VAR_INT, 1, &two);
        var_make("s", 1, VAR_STRING, 1, &four);
        output_capture output;
        char word[word_size];
        snprintf(word, sizeof word, "%s", c.word);
        EXPECT_EQ(decl_statement(word), c.result) << c.word << " " << c.text;
        EXPECT_EQ(escaped(output.text()), escaped(c.written)) << c.word << " " << c.text;
        EXPECT_EQ(store_now(), known + c.store) << c.word << " " << c.text;
    }
}

TEST(declarations, give_an_array_new_dimensions)
{
    script_source source("a[4]\n");
    output_capture output;
    const int32_t three = 3;
    var_make("a", 1, VAR_INT, 1, &three);
    char word[] = "INT";
    evaluate("a[1] = 5");
    EXPECT_EQ(decl_statement(word), STATEMENT_TEXT);
    EXPECT_EQ(store_now(), "a:5[4]");
    EXPECT_EQ(*evaluate("a[1]"), 0);
}

TEST(declarations, fill_arrays)
{
    static const struct {
        const char *declared, *text;
        int32_t result;
        const char *written;
        std::vector<double> values; // the array's, in the order of storage
        const char *rest = "";
    } cases[] = {
        {"", " v[3]\nnext", -4, "ARRAY v[3]\n", {0, 0, 0}, "next"},
        {"", "\n\n  v[3] \n", -4, "ARRAY v[3] \n", {0, 0, 0}},
        {"", "v [ 2 ]", -4, "ARRAY v [ 2 ]\n", {0, 0}},
        {"", "v[2] = {1, 2}\nn", -4, "ARRAY v[2] = {1, 2}\n", {1, 2}, "n"},
        {"", "v[2]={1.5e1 , -2} tail\n", -4, "ARRAY v[2]={1.5e1 , -2} tail\n", {15, -2}},
        {"", "v[3] =\n{1, 2,\n3}\n", -4, "ARRAY v[3] =\n{1, 2,\n3}\n", {1, 2, 3}},
        {"", "v[2][2] = {1,2,3,\n\n   \n4}\n", -4, "ARRAY v[2][2] = {1,2,3,\n\n   \n4}\n", {1, 2, 3, 4}},
        {"", "v[3] = {1, x, 2\n3}\n", -4, "ARRAY v[3] = {1, x, 2\n3}\n", {1, 3, 0}},
        {"", "v[3] = {1 2, 3}\n", -4, "ARRAY v[3] = {1 2, 3}\n", {1, 3, 0}},
        {"", "v[2] = {1,2,3,4}\n", -4, "ARRAY v[2] = {1,2,3,4}\n", {1, 2}},
        {"", "v[2] = {}\n", -4, "ARRAY v[2] = {}\n", {0, 0}},
        {"",
         "v[4] = {0x10, inf, 1e5, .5}\n",
         -4,
         "ARRAY v[4] = {0x10, inf, 1e5, .5}\n",
         {16, HUGE_VAL, 1e5, .5}},
        {"", "v[2] = {1,\n#LINE 7 <f>\n2}\n", -4, "ARRAY v[2] = {1,\n#LINE 7 <f>\n2}\n", {1, 2}},
        {"", "v[2] = {1,\n#line 7\n2}\n", -4, "ARRAY v[2] = {1,\n#line 7\n2}\n", {1, 2}},
        {"", "v[2] = {1,\n#LINES\n2}\n", STOP_ARRAY_VALUES, "ARRAY v[2] = {1,\n#LINES\n", {1, 0}, "2}\n"},
        {"", "v[2] = {1,\n#\n2}\n", STOP_ARRAY_VALUES, "ARRAY v[2] = {1,\n#\n", {1, 0}, "2}\n"},
        {"", "v[2] = 1, 2\n", STOP_ARRAY_VALUES, "ARRAY v[2] = 1, 2\n", {0, 0}},
        {"", "v[2] = {1,\n2\n", -1, "ARRAY v[2] = {1,\n2\n", {1, 2}},
        {"", "v[2] =", -1, "ARRAY v[2] =", {0, 0}},
        {"", "v = {1}\n", STOP_DECL_REFERENCE, "ARRAY v =", {}, " {1}\n"},
        {"", "v\n", STOP_DECL_REFERENCE, "ARRAY v", {}},
        {"", "v[x=2]\n", -4, "ARRAY v[x=2]\n", {0, 0}},
        {"", "v[2)] = {1}\n", STOP_DECL_REFERENCE, "ARRAY v[2)] =", {}, " {1}\n"},
        {"", "v[nosuch[1]]\n", STOP_DECL_REFERENCE, "ARRAY v[nosuch[1]]", {}},
        {"", "@v[2]\n", STOP_DECL_REFERENCE, "ARRAY @v[2]", {}},
        {"", "$$v[2][2]\n", STOP_ARRAY_VALUES, "ARRAY $$v[2][2]", {}},
        {"", "%s%n[2]\n", STOP_DECL_REFERENCE, "ARRAY %s%n[2]", {}},
        {"INT v[2]", "v[2] = {1.9, -1.9}\n", -4, "ARRAY v[2] = {1.9, -1.9}\n", {1, -1}},
        {"CHAR v[2]", "v[2] = {300, -1}\n", -4, "ARRAY v[2] = {300, -1}\n", {44, -1}},
        {"USHORT v[3]", "v[2] = {65537, -1}\n", -4, "ARRAY v[2] = {65537, -1}\n", {1, 65535}},
        {"FLOAT v[3]", "v[1] = {0.1}\n", -4, "ARRAY v[1] = {0.1}\n", {0.1f}},
        {"STRING v[3]", "v[2] = {65, 66}\n", -4, "ARRAY v[2] = {65, 66}\n", {65, 66}},
        {"INT v", "v[2]\n", STOP_STORE - VAR_SCALAR, "ARRAY v[2]", {}},
    };
    for (const auto &c : cases) {
        reset_run();
        script_source source(c.text);
        evaluate(c.declared);
        output_capture output;
        char word[word_size] = "ARRAY";
        EXPECT_EQ(array_statement(word), c.result) << escaped(c.text);
        EXPECT_EQ(escaped(output.text()), escaped(c.written)) << escaped(c.text);
        std::vector<double> values;
        int32_t ndims = var_read("v", 1, nullptr);
        if (ndims > 0) {
            int32_t size[2] = {cur_block->dims[0], ndims == 2 ? cur_block->dims[1] : 1};
            for (int32_t i = 0; i < size[0] * size[1]; i++) {
                int32_t at[2] = {i / size[1], i % size[1]};
                var_read_element("v", 1, ndims, at);
                values.push_back(cur_value);
            }
        }
        EXPECT_EQ(values, c.values) << escaped(c.text);
        std::string rest;
        for (int ch; (ch = src_getc()) != -1;)
            rest += static_cast<char>(ch);
        EXPECT_EQ(escaped(rest), escaped(c.rest)) << escaped(c.text);
        bool directs = std::string(c.text).find(" 7") != std::string::npos;
        EXPECT_EQ(line_directives.line_number, directs ? 7 : 1) << escaped(c.text);
    }
    reset_run();
}

TEST(declarations, read_a_long_line_of_values_in_pieces)
{
    std::string values = "{" + times(254, "1,") + "1234,8}"; // the seam cuts 1234 in two
    script_source source("v[300] =" + values + "\nn");
    output_capture output;
    char word[word_size] = "ARRAY";
    EXPECT_EQ(array_statement(word), STATEMENT_DONE);
    EXPECT_EQ(output.text(), "ARRAY v[300] =" + values + "\n");
    EXPECT_EQ(*evaluate("v[254] * 100 + v[255] * 10 + v[256]"), 1548);
    EXPECT_EQ(src_getc(), 'n');
}

TEST(declarations, cut_the_head_of_an_array_at_3899_characters)
{
    script_source source("v[" + times(3897, "1") + "]\nn");
    output_capture output;
    char word[word_size] = "ARRAY";
    EXPECT_EQ(array_statement(word), STOP_DECL_REFERENCE);
    EXPECT_EQ(output.text(), "ARRAY v[" + times(3897, "1"));
    EXPECT_EQ(src_getc(), 'n');
}
