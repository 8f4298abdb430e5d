// The fetcher: slots and types by spec, and each way to fail with what it leaves.
#include "statements/arg_fetcher.h"
#include "statements/arg_text.h"

#include "common/diff.h"
#include "common/run.h"
#include "expressions/var_store.h"
#include "source/src_stream.h"
#include "statements/arg_slots.h"
#include "statements/statement_text.h"

#include <gtest/gtest.h>

#include <string.h>

using spec_bytes = std::vector<uint8_t>;

static const spec_bytes print_spec{0x00, 0x68};
static const spec_bytes optional_longs{0x11, 0x11, 0x11};

// Fetches the arguments of the source's next statement, as the loop does after a command word.
static int32_t fetch(script_source *, const spec_bytes &spec)
{
    slot_set_word("WORD", 4);
    return fetch_args(static_cast<int32_t>(spec.size()), spec.data());
}

static std::string text_of(const arg_slot &slot)
{
    return {slot.text, slot.text_size};
}

// The slots up to the end of the list: text, then what other fields hold.
static std::string slots_now()
{
    std::string result;
    for (int i = 1; i < arg_slots_size && (arg_slots[i].state == 0 || arg_slots[i].text_size != 0); i++) {
        const arg_slot &slot = arg_slots[i];
        if (i > 1)
            result += " | ";
        std::string text = text_of(slot);
        result += text;
        uint32_t str_size;
        const char *str = slot_str(&slot, &str_size);
        if (str != nullptr && text != std::string(str, str_size))
            result += " str:" + std::string(str, str_size);
        if (str == nullptr && !text.empty())
            result += " nostr";
        char value[60];
        if (slot_lval(&slot) != 0 || slot_ival(&slot) != 0 || slot_fval(&slot) != 0) {
            snprintf(value, sizeof value, " =%d,%d,%g", slot_lval(&slot), slot_ival(&slot),
                     static_cast<double>(slot_fval(&slot)));
            result += value;
        }
        if (slot_holds(&slot, HOLDS_DOUBLE)) {
            snprintf(value, sizeof value, " d%g", slot_dval(&slot));
            result += value;
        }
    }
    return result;
}

static std::string types_now(int32_t walked)
{
    std::string result;
    for (int32_t i = 0; i < walked; i++) {
        char type[8];
        snprintf(type, sizeof type, "%s%02x", i == 0 ? "" : " ", arg_types[i]);
        result += type;
    }
    return result;
}

static std::string rest_of(script_source *)
{
    std::string rest;
    for (int c; (c = src_getc()) != -1;)
        rest += static_cast<char>(c);
    return rest;
}

TEST(arg_fetcher, fills_slots_by_spec)
{
    static const struct {
        spec_bytes spec;
        std::string text;
        int32_t walked;
        const char *slots, *types;
        const char *rest = "";
    } cases[] = {
        {{}, " a, b\nnext", 0, "", "", "next"},
        {{0x04}, "1.5\nnext", 1, "1.5 nostr d1.5", "04", "next"},
        {{0x01, 0x02, 0x03, 0x04},
         "1.9,-2.9,.5,3",
         4,
         "1.9 nostr =1,0,0 | -2.9 nostr =0,-2,0 | .5 nostr =0,0,0.5 | 3 nostr d3",
         "01 02 03 04"},
        {{0x05, 0x06, 0x07}, "a(1,b),c", 3, "a(1 | b) | c", "05 06 07"},
        {{0x01}, " atan2(1,2) ,c\nn", 1, "atan2(1,2)  nostr =26,0,0", "01", "n"},
        {{0x00}, "\"abc\"", 1, "\"abc\" str:abc", "00"},
        {{0x00}, "`a\"b`", 1, "\"a\"b\" str:a\"b", "00"},
        {{0x00}, "\"a`b\"", 1, "\"a`b\" str:a`b", "00"},
        {{0x00}, "abc \"d\"", 1, "abc \"d\"", "00"},
        {{0x00}, "\"\"", 1, "", "00"},
        {{0x05}, "\"a,b\"\nn", 1, "\"a", "05", "n"},
        {{0x00, 0x08}, "\"abc\" , d", 2, "\"abc\" str:abc | d", "00 08"},
        {{0x00}, "\"a\\101b\\12b\\0\\q\\\"\\\\\"", 1, "\"aAb12b0q\"\\\" str:aAb12b0q\"\\", "00"},
        {{0x00}, "\"a\\000b\" ", 1, "\"a\" str:a", "00"},
        {{0x00}, "\"\\1" + nul + "23\\12" + nul + "3\"", 1, "\"123123\" str:123123", "00"},
        {{0x00}, "\"\\7x\\77\"", 1, "\"7x77\" str:7x77", "00"},
        {{0x00}, "\"\\1\\2\"", 1, "\"12\" str:12", "00"},
        {{0x00}, "\"\\b\\f\\n\\r\\t\"", 1, "\"\b\f\n\r\t\" str:\b\f\n\r\t", "00"},
        {{0x00, 0x11}, "\"a\nb\",2\nn", 2, "\"a\nb\" str:a\nb | 2 nostr =2,0,0", "00 01", "n"},
        {{0x00}, "\"a\\\nb\"", 1, "\"ab\" str:ab", "00"},
        {{0x00}, "\"open, never closed\nx", 1, "\"open, never closed\nx\" str:open, never closed\nx", "00"},
        {{0x00}, "\"a\\", 1, "\"a\\\" str:a\\", "00"},
        {{0x05}, "a\tb\x01\x80 c", 1, "ab c", "05"},
        {{0x05}, " \t  a b  ", 1, "a b  ", "05"},
        {{0x04, 0x04, 0x11, 0x11}, "1,2,,4", 4, "1 nostr d1 | 2 nostr d2 |  | 4 nostr =4,0,0", "04 04 11 01"},
        {{0x04, 0x11, 0x11, 0x11}, "1", 4, "1 nostr d1", "04 11 11 11"},
        {{0x04, 0x11, 0x11, 0x11}, "1,", 4, "1 nostr d1 | ", "04 11 11 11"},
        {optional_longs, "", 3, "", "11 11 11"},
        {optional_longs, "1,2,3,4,foo(\nn", 3, "1 nostr =1,0,0 | 2 nostr =2,0,0 | 3 nostr =3,0,0", "01 01 01",
         "n"},
        {print_spec, "\"a\", x, y", 3, "\"a\" str:a | x | y", "00 08 08"},
        {print_spec, "\"a\",", 1, "\"a\" str:a", "00"},
        {print_spec, "\"a\"", 1, "\"a\" str:a", "00"},
        {print_spec, "\"a\", , b", 3, "\"a\" str:a |  | b", "00 18 08"},
        {print_spec, "\"a\",,", 2, "\"a\" str:a | ", "00 18"},
        {print_spec, "x, \"q\", f(1,2), ``", 4, "x | \"q\" str:q | f(1,2) | ", "00 00 08 00"},
        {{0x27}, "a,b,c", 3, "a | b | c", "07 07 07"},
        {{0x12, 0x31}, "1,2,,4", 4, "1 nostr =0,1,0 | 2 nostr =2,0,0 |  | 4 nostr =4,0,0", "02 01 11 01"},
        {{0x01}, "08", 1, "08 nostr =8,0,0", "01"},
        {{0x01}, "017", 1, "017 nostr =15,0,0", "01"},
        {{0x01}, "- 1", 1, "- 1 nostr =-1,0,0", "01"},
        {{0x01}, "1 \\\n+1", 1, "1 +1 nostr =2,0,0", "01"},
        {{0x01}, "2147483648", 1, "2147483648 nostr =-2147483648,0,0", "01"},
        {{0x04}, ".", 1, ". nostr d0", "04"},
        {{0x04}, "1.", 1, "1. nostr d1", "04"},
        {{0x04}, "1e3", 1, "1e3 nostr d1000", "04"},
        {{0x01}, "5'", 1, "5' nostr", "01"},
        {{0x01}, "1\t2", 1, "12 nostr =12,0,0", "01"},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        EXPECT_EQ(fetch(&source, c.spec), c.walked) << escaped(c.text);
        EXPECT_EQ(escaped(slots_now()), escaped(c.slots)) << escaped(c.text);
        EXPECT_EQ(types_now(c.walked), c.types) << escaped(c.text);
        EXPECT_EQ(rest_of(&source), c.rest) << escaped(c.text);
        EXPECT_STREQ(arg_slots[0].text, "WORD");
    }
}

TEST(arg_fetcher, leaves_the_fault_in_line_buf_and_the_rest_in_the_source)
{
    static const struct {
        spec_bytes spec;
        int32_t fault;
        std::string text, line, rest;
    } cases[] = {
        {{0x04}, FETCH_MISSING, "\nnext", "", "next"},
        {{0x04}, FETCH_MISSING, " , 2\nn", "", " 2\nn"},
        {{0x04, 0x04}, FETCH_MISSING, "1\nn", "1", "n"},
        {{0x04, 0x04}, FETCH_MISSING, "12.5\nn", "12.5", "n"},
        {{0x04, 0x04}, FETCH_MISSING, "x+1\nn", "x", "n"},
        {{0x01, 0x01, 0x01}, FETCH_MISSING, "1,22\nn", "22", "n"},
        {{0x01, 0x01, 0x01}, FETCH_MISSING, "1,,3\nn", "", "3\nn"},
        {{0x05, 0x05}, FETCH_MISSING, "ab\nn", "ab", "n"},
        {{0x00}, FETCH_AFTER_QUOTE, "\"abc\"x,y\nn", "abc", ",y\nn"},
        {{0x00}, FETCH_AFTER_QUOTE, "\"abc\" x\nn", "abc", "\nn"},
        {{0x01}, FETCH_PARENTHESES, "abc),d\nn", "abc)", ",d\nn"},
        {{0x01, 0x01}, FETCH_PARENTHESES, "1,foo(\nn", "foo(", "n"},
        {{0x01}, FETCH_PARENTHESES, "(1,2\nn", "(1,2", "n"},
        {{0x01}, FETCH_PARENTHESES, "((1)", "((1)", ""},
        {{0x01}, FETCH_EXPRESSION, "1 + nosuch + (2) 3 , 4\n", "1 + nosuch", " 4\n"},
        {{0x01}, FETCH_EXPRESSION, "foo(1,2),3\nn", "foo", "3\nn"},
        {{0x01}, FETCH_EXPRESSION, "1 2,3\nn", "1 2", "3\nn"},
        {{0x01}, FETCH_EXPRESSION, "1/0,3\nn", "1/0", "3\nn"},
        {{0x01}, FETCH_EXPRESSION, "x=1/0,3\nn", "x", "3\nn"},
        {{0x01, 0x11}, FETCH_EXPRESSION, "1,2 3\nn", "2 3", "n"},
        {{0x08}, FETCH_PARENTHESES, "f(1\nn", "f(1", "n"},
        {{0x08}, FETCH_PARENTHESES, "f)1\nn", "f)", "1\nn"},
        {{0x27}, FETCH_MISSING, "a,,b\nn", "", "b\nn"},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        EXPECT_EQ(fetch(&source, c.spec), c.fault) << escaped(c.text);
        EXPECT_EQ(line_buf, c.line) << escaped(c.text);
        EXPECT_EQ(escaped(rest_of(&source)), escaped(c.rest)) << escaped(c.text);
    }
}

TEST(arg_fetcher, takes_as_much_as_its_stores_hold)
{
    static const struct {
        spec_bytes spec;
        std::string text;
        bool fits;
    } cases[] = {
        {{0x00}, "\"" + times(3000, "a") + "\"", true},
        {{0x00}, "\"" + times(3001, "a") + "\"", false},
        {{0x05}, times(3000, "a"), true},
        {{0x05}, times(3001, "a"), false},
        {{0x00, 0x00}, "\"" + times(1500, "a") + "\",\"" + times(1499, "b") + "\"", true},
        {{0x00, 0x00}, "\"" + times(1500, "a") + "\",\"" + times(1500, "b") + "\"", false},
        {{0x04, 0x00}, "1,\"" + times(2992, "a") + "\"", true},
        {{0x04, 0x00}, "1,\"" + times(2993, "a") + "\"", false},
        {{0x00, 0x04}, "\"" + times(2991, "a") + "\",1", true},
        {{0x00, 0x04}, "\"" + times(2992, "a") + "\",1", false},
        {{0x00, 0x04}, "\"" + times(2992, "a") + "\",1+1", false},
        {{0x01}, times(251, "1"), true},
        {{0x01}, times(252, "1"), false},
        {{0x01}, times(250, " ") + times(251, "1"), true},
        {{0x01}, "1" + times(250, " "), true},
        {{0x01}, "1" + times(251, " "), false},
        {{0x01}, times(125, "1+") + "1", true},
        {{0x01}, times(125, "1+") + "11", false},
        {{0x27}, times(99, "a,") + "a", true},
        {{0x27}, times(100, "a,") + "a", false},
        {{0x27}, times(100, "a,"), false},
        {{0x31}, times(99, "1,") + "1", true},
        {{0x31}, times(100, "1,") + "1", false},
        {print_spec, times(99, "a,") + "a", true},
        {print_spec, times(100, "a,") + "a", false},
    };
    for (const auto &c : cases) {
        script_source source(c.text);
        EXPECT_EQ(fetch(&source, c.spec) >= 0, c.fits) << c.text.substr(0, 20) << "... " << c.text.size();
    }
}

// An argument that doesn't fit line_buf ends there; the next character is read, and is no comma.
TEST(arg_fetcher, ends_an_argument_at_3900_characters)
{
    script_source source("\"" + times(3900, "a") + "\",1\nn");
    EXPECT_EQ(fetch(&source, {0x00, 0x11}), FETCH_STORE_FULL);
    EXPECT_EQ(line_buf, times(3900, "a"));
    script_source nested("(" + times(3899, "1") + ")\nn");
    EXPECT_EQ(fetch(&nested, {0x01}), FETCH_PARENTHESES);
    EXPECT_EQ(strlen(line_buf), 3900u);
}

TEST(arg_fetcher, tells_an_empty_argument_from_one_left_out)
{
    script_source source("1,,\n\n1\n");
    EXPECT_EQ(fetch(&source, {0x01, 0x11, 0x11, 0x11}), 4);
    for (int i = 1; i <= 4; i++)
        EXPECT_EQ(arg_slots[i].state, i < 4 ? 0 : slot_unfilled) << i;
    EXPECT_EQ(fetch(&source, {0x11, 0x11}), 2);
    EXPECT_EQ(arg_slots[1].state, 0) << "nothing after the word is an empty argument";
    EXPECT_EQ(arg_slots[2].state, slot_unfilled);
    EXPECT_EQ(fetch(&source, {0x01, 0x11}), 2);
    EXPECT_EQ(arg_slots[2].state, slot_unfilled);
    EXPECT_EQ(text_of(arg_slots[2]), "");
}

// Rules read a fixed number of slots, more than a statement has.
TEST(arg_fetcher, leaves_no_trace_of_an_earlier_statement)
{
    static const struct {
        const char *first; // with twelve arguments
        int32_t walked;
    } cases[] = {
        {"11,12,13,14,15,16,17,18,19,20,21,22\n", 12},
        {"11,12,13,14,15,16,17,18,19,20,21,22+1\n", 12},
        {"11,12,13,14,15,16,17,18,19,20,21,22 22\n", FETCH_EXPRESSION},
        {"a,b,c,d,e,f,g,h,i,j,k,l)\n", FETCH_PARENTHESES},
    };
    for (const auto &c : cases)
        for (const char *second : {"1\n", "\n", "1,,\n", "x\n", "\"s\"\n"}) {
            script_source source(std::string("1\n") + c.first + second);
            EXPECT_EQ(fetch(&source, {0x01}), 1);
            EXPECT_EQ(fetch(&source, spec_bytes(12, 0x11)), c.walked) << c.first;
            spec_bytes spec{second[0] == '"' ? uint8_t{0x10} : uint8_t{0x11}, 0x11, 0x11};
            EXPECT_EQ(fetch(&source, spec), 3) << second;
            for (int i = 4; i < arg_slots_size; i++) {
                EXPECT_EQ(text_of(arg_slots[i]), "") << c.first << second << i;
                EXPECT_EQ(arg_slots[i].state, slot_unfilled) << c.first << second << i;
                EXPECT_EQ(arg_slots[i].holds, HOLDS_NOTHING) << c.first << second << i;
            }
        }
}

TEST(arg_fetcher, evaluates_with_effects)
{
    script_source source("x=5,x+1\n");
    EXPECT_EQ(fetch(&source, {0x01, 0x01}), 2);
    EXPECT_EQ(slot_lval(arg_slots + 1), 5);
    EXPECT_EQ(slot_lval(arg_slots + 2), 6);
    EXPECT_EQ(text_of(arg_slots[1]), "x=5") << "the text stays as typed";
    EXPECT_EQ(var_count, 1);
}
