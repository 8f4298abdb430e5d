// The variable store: what may be made of what, widths, and blocks that grow and move.
#include "expressions/var_store.h"

#include "common/run.h"
#include "driver/batch.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <math.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <random>

class var_store_test : public testing::Test {
protected:
    void SetUp() override
    {
        file_objects();
    }

    void TearDown() override
    {
        heap_check(Vbuf);
    }
};

using dims_list = std::vector<int32_t>;

static int32_t make(const std::string &name, int8_t type, const dims_list &dims = {})
{
    return var_make(name.c_str(), name.size(), type, static_cast<int32_t>(dims.size()), dims.data());
}

static int32_t element(const std::string &name, const dims_list &subscripts)
{
    return var_read_element(name.c_str(), name.size(), static_cast<int32_t>(subscripts.size()),
                            subscripts.data());
}

static int32_t size_of(const std::string &name)
{
    int32_t size = -99;
    var_read(name.c_str(), name.size(), &size);
    return size;
}

static int32_t store_string(const std::string &name, int32_t subscript, const std::string &text)
{
    int32_t code =
        var_store_string(name.c_str(), name.size(), subscript, static_cast<int32_t>(text.size()) + 1);
    if (code == 0)
        strcpy(reinterpret_cast<char *>(cur_ptr), text.c_str());
    return code;
}

TEST_F(var_store_test, makes_and_refuses)
{
    static const struct {
        const char *name;
        int8_t type;
        dims_list dims;
        int32_t code;
        int32_t size; // elements afterwards, -99 if it isn't known
    } cases[] = {
        {"a", VAR_INT, {}, 0, 1},
        {"a", VAR_FLOAT, {}, VAR_TYPE, 1},
        {"a", VAR_INT, {}, VAR_SCALAR, 1},
        {"a", VAR_INT, {3}, VAR_SCALAR, 1},
        {"A", VAR_FLOAT, {}, 0, 1},
        {"b", VAR_DOUBLE, {3}, 0, 3},
        {"b", VAR_DOUBLE, {4, 2}, 0, 8},
        {"b", VAR_NONE, {5}, 0, 5},
        {"b", VAR_DOUBLE, {}, VAR_SCALAR, 5},
        {"b", VAR_INT, {4}, VAR_TYPE, 5},
        {"b", VAR_DOUBLE, {-1}, VAR_NO_MEMORY, 5},
        {"c", VAR_INT, {1, 2, 3, 4, 5}, 0, 120},
        {"d", VAR_INT, {1, 2, 3, 4, 5, 6}, VAR_NO_MEMORY, -99},
        {"d", VAR_INT, {2, INT_MIN}, VAR_NO_MEMORY, -99},
        {"d", VAR_DOUBLE, {INT_MAX}, VAR_NO_MEMORY, -99},
        {"d", VAR_CHAR, {65536, 65536}, VAR_NO_MEMORY, -99},
        {"d", VAR_CHAR, {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}, VAR_NO_MEMORY, -99},
        {"d", VAR_CHAR, {0, INT_MAX}, 0, 0},
        {"e", VAR_CHAR, {0}, 0, 0},
        {"@a", VAR_INT, {}, VAR_SYSTEM_NAME, -99},
        {"s", VAR_STRING, {}, VAR_DIMENSIONS, -99},
        {"s", VAR_STRING, {2, 2}, VAR_DIMENSIONS, -99},
        {"s", VAR_STRING, {80}, 0, 80},
        {"l", VAR_SLIST, {3}, VAR_DIMENSIONS, -99},
        {"l", VAR_SLIST, {3, 4}, 0, 3},
        {"l2", VAR_SLIST, {INT_MAX, INT_MAX}, VAR_NO_MEMORY, -99},
        {"$x", VAR_DOUBLE, {}, VAR_TYPE, -99},
        {"$x", VAR_SLIST, {2, 2}, VAR_TYPE, -99},
        {"$x", VAR_NONE, {}, VAR_DIMENSIONS, -99},
        {"$x", VAR_STRING, {5}, 0, 5},
        {"$$x", VAR_STRING, {5}, VAR_TYPE, -99},
        {"$$x", VAR_SLIST, {10, 80}, 0, 10},
        {"$$x", VAR_SLIST, {2, 0}, 0, 2},
        {"n", VAR_NONE, {}, 0, 1},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(make(c.name, c.type, c.dims), c.code) << c.name << " " << int{c.type};
        EXPECT_EQ(size_of(c.name), c.size) << c.name;
    }
    size_of("n");
    EXPECT_EQ(cur_type, VAR_DOUBLE);
    size_of("A");
    EXPECT_EQ(cur_type, VAR_FLOAT);
}

TEST_F(var_store_test, stores_in_the_width_of_the_type)
{
    static const struct {
        int8_t type;
        double value, stored;
    } cases[] = {
        {VAR_CHAR, 300, 44},
        {VAR_CHAR, 200, -56},
        {VAR_UCHAR, -1, 255},
        {VAR_UCHAR, 256, 0},
        {VAR_SHORT, 32768, -32768},
        {VAR_SHORT, -1.9, -1},
        {VAR_USHORT, 65537, 1},
        {VAR_USHORT, -1, 65535},
        {VAR_INT, 5.7, 5},
        {VAR_INT, -5.7, -5},
        {VAR_INT, 2147483648.0, -2147483648.0},
        {VAR_INT, 1e300, 0},
        {VAR_INT, NAN, 0},
        {VAR_UINT, -1, 4294967295.0},
        {VAR_UINT, 4294967297.0, 1},
        {VAR_LONG, 4294967295.0, -1},
        {VAR_ULONG, -1, 4294967295.0},
        {VAR_FLOAT, 1.5, 1.5},
        {VAR_FLOAT, 0.1, 0.1f},
        {VAR_FLOAT, 1e300, HUGE_VAL},
        {VAR_FLOAT, -0x1.ffffffp127, -HUGE_VAL}, // half a step beyond the largest
        {VAR_DOUBLE, 0.1, 0.1},
    };
    for (const auto &c : cases) {
        file_objects();
        make("s", c.type);
        EXPECT_EQ(cur_value, 0);
        EXPECT_EQ(var_store_value(c.value), c.stored) << int{c.type} << ": " << c.value;
        var_read("s", 1, nullptr);
        EXPECT_EQ(cur_value, c.stored) << int{c.type} << ": " << c.value;
        make("a", c.type, {2, 3});
        EXPECT_EQ(element("a", {1, 1}), 0);
        EXPECT_EQ(var_store_value(c.value), c.stored) << int{c.type} << ": " << c.value;
        for (int32_t i = 0; i < 6; i++) {
            EXPECT_EQ(element("a", {i / 3, i % 3}), 0);
            EXPECT_EQ(cur_value, i == 4 ? c.stored : 0) << int{c.type} << ": element " << i;
        }
    }
}

TEST_F(var_store_test, keeps_the_value_when_a_name_is_not_found)
{
    make("x", VAR_DOUBLE);
    var_store_value(7);
    EXPECT_EQ(cur_value, 0) << "storing doesn't change it";
    var_read("x", 1, nullptr);
    EXPECT_EQ(var_read("nosuch", 6, nullptr), VAR_UNKNOWN);
    EXPECT_EQ(var_read("@x", 2, nullptr), VAR_UNKNOWN);
    EXPECT_EQ(cur_value, 7);
    make("a", VAR_INT, {3});
    EXPECT_EQ(var_read("a", 1, nullptr), 1);
    EXPECT_EQ(cur_value, 0);
    EXPECT_EQ(cur_ptr, nullptr);
    EXPECT_EQ(var_store_value(5), 5) << "nothing is selected";
}

TEST_F(var_store_test, checks_subscripts)
{
    make("a", VAR_DOUBLE, {2, 2});
    make("x", VAR_INT);
    make("s", VAR_STRING, {4});
    make("l", VAR_SLIST, {2, 3});
    static const struct {
        const char *name;
        dims_list subscripts;
        int32_t code;
    } cases[] = {
        {"a", {1, 1}, 0},
        {"a", {1}, VAR_BAD_SUBSCRIPT},
        {"a", {1, 1, 1}, VAR_BAD_SUBSCRIPT},
        {"a", {2, 0}, VAR_BAD_SUBSCRIPT},
        {"a", {0, 2}, VAR_BAD_SUBSCRIPT},
        {"a", {-1, 0}, VAR_BAD_SUBSCRIPT},
        {"a", {0, -1}, VAR_BAD_SUBSCRIPT},
        {"x", {0}, VAR_BAD_SUBSCRIPT},
        {"nosuch", {0}, VAR_UNKNOWN},
        {"s", {3}, 0},
        {"s", {4}, VAR_BAD_SUBSCRIPT},
        {"l", {1, 2}, 0},
        {"l", {1, 3}, VAR_BAD_SUBSCRIPT},
        {"l", {2, 0}, VAR_BAD_SUBSCRIPT},
        {"l", {0, -1}, VAR_BAD_SUBSCRIPT},
        {"l", {0}, VAR_BAD_SUBSCRIPT},
        {"x", {}, 0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(element(c.name, c.subscripts), c.code)
            << c.name << " " << testing::PrintToString(c.subscripts);
}

TEST_F(var_store_test, reaches_every_element_of_five_dimensions)
{
    dims_list dims{2, 3, 4, 5, 6};
    make("a", VAR_SHORT, dims);
    var_fill_start();
    for (int i = 0; i < 720 + 5; i++) // five too many
        var_fill_next(i);
    for (int32_t i = 0; i < 720; i++) {
        dims_list at{i / 360, i / 120 % 3, i / 30 % 4, i / 6 % 5, i % 6};
        ASSERT_EQ(element("a", at), 0);
        ASSERT_EQ(cur_value, i);
    }
    make("a", VAR_SHORT, {3, 2});
    EXPECT_EQ(element("a", {2, 1}), 0);
    EXPECT_EQ(cur_value, 0) << "zero again with new dimensions";
    EXPECT_EQ(element("a", {0, 0, 0, 0, 0}), VAR_BAD_SUBSCRIPT);
}

TEST_F(var_store_test, fits_a_string_to_its_value)
{
    EXPECT_EQ(store_string("$s", -1, "abc"), 0);
    EXPECT_EQ(size_of("$s"), 4);
    EXPECT_EQ(store_string("$s", -1, "ab"), 0);
    EXPECT_EQ(size_of("$s"), 3);
    EXPECT_EQ(element("$s", {1}), 0);
    EXPECT_EQ(cur_value, 'b');
    make("plain", VAR_STRING, {80});
    EXPECT_EQ(store_string("plain", -1, "\xFF"), 0);
    EXPECT_EQ(size_of("plain"), 2);
    element("plain", {0});
    EXPECT_EQ(cur_value, -1) << "a signed byte";
}

TEST_F(var_store_test, refuses_strings_where_they_do_not_fit)
{
    make("x", VAR_INT);
    make("a", VAR_CHAR, {5});
    make("s", VAR_STRING, {5});
    make("l", VAR_SLIST, {2, 5});
    static const struct {
        const char *name;
        int32_t subscript, code;
    } cases[] = {
        {"x", -1, -1},
        {"a", -1, -1},
        {"a", 0, -1},
        {"s", 0, -1},
        {"l", -1, -1},
        {"l", -2, -1},
        {"unknown", -1, -1},
        {"unknown", 0, -1},
        {"$u", 0, -1},
        {"$$u", -1, -1},
        {"$$u", -2, VAR_NO_MEMORY},
        {"@u", -1, -1},
        {"@u", 0, -1},
        {"$$u", INT_MAX, VAR_NO_MEMORY},
        {"l", INT_MAX, VAR_NO_MEMORY},
        {"l", 200000000, VAR_NO_MEMORY},
        {"l", 1, 0},
        {"l", 2, 0},
        {"s", -1, 0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(store_string(c.name, c.subscript, "t"), c.code) << c.name << " " << c.subscript;
    EXPECT_EQ(size_of("l"), 3);
}

static std::string item_text(const std::string &name, int32_t item)
{
    std::string text;
    for (int32_t i = 0; element(name, {item, i}) == 0 && cur_value != 0; i++)
        text += static_cast<char>(cur_value);
    return text;
}

// A list against a plain model, through growing, shrinking and filling gaps.
TEST_F(var_store_test, keeps_the_items_of_a_list_that_changes)
{
    std::mt19937 random(7);
    std::vector<std::string> model(3);
    EXPECT_EQ(store_string("$$l", 2, "abc"), 0);
    EXPECT_EQ(size_of("$$l"), 3);
    model[2] = "abc";
    for (int step = 0; step < 2000; step++) {
        size_t item = random() % (model.size() + 2);
        std::string text(random() % 40 * (step % 97 == 0 ? 100 : 1), static_cast<char>('a' + step % 26));
        ASSERT_EQ(store_string("$$l", static_cast<int32_t>(item), text), 0);
        if (item >= model.size())
            model.resize(item + 1);
        model[item] = text;
        for (size_t i = 0; step % 50 == 0 && i < model.size(); i++)
            ASSERT_EQ(item_text("$$l", static_cast<int32_t>(i)), model[i]) << step << ": " << i;
        ASSERT_EQ(size_of("$$l"), static_cast<int32_t>(model.size()));
    }
}

// CPU time since the clock showed a start.
static double seconds_since(clock_t start)
{
    return static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
}

// Each of these took minutes when a store moved all items after its own.
TEST_F(var_store_test, stores_items_in_any_order)
{
    constexpr int32_t count = 300000;
    clock_t start = clock();
    for (int32_t i = count; i-- > 0;)
        ASSERT_EQ(store_string("$$down", i, "x"), 0);
    for (int32_t i = 0; i < count; i++)
        ASSERT_EQ(store_string("$$down", i, "longer"), 0);
    for (int32_t i = 0; i < count; i++)
        ASSERT_EQ(store_string("$$down", static_cast<int32_t>(i * int64_t{7919} % count), "s"), 0);
    EXPECT_EQ(item_text("$$down", count / 2), "s");
    EXPECT_EQ(size_of("$$down"), count);
    ASSERT_EQ(store_string("$$long", 30000000, "x"), 0);
    for (int32_t i = 0; i < count; i++)
        ASSERT_EQ(store_string("$$long", 5, i % 2 == 0 ? "ab" : "abcdef"), 0);
    EXPECT_EQ(item_text("$$long", 30000000), "x");
    EXPECT_LT(seconds_since(start), 20);
}

// Bytes of this process that are in memory.
static size_t resident_bytes()
{
    size_t size = 0, resident = 0;
    FILE *file = fopen("/proc/self/statm", "r");
    EXPECT_EQ(fscanf(file, "%zu %zu", &size, &resident), 2);
    fclose(file);
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// A large array's memory serves again, also when a small one was made in between.
TEST_F(var_store_test, takes_no_more_memory_than_its_variables)
{
    size_t before = resident_bytes();
    for (int i = 0; i < 10; i++) {
        ASSERT_EQ(make("a", VAR_CHAR, {50000000}), 0);
        ASSERT_EQ(make("a", VAR_CHAR, {1}), 0);
        ASSERT_EQ(make("b" + std::to_string(i), VAR_CHAR, {100}), 0);
        ASSERT_EQ(make("l", VAR_SLIST, {1, 50000000}), 0);
        ASSERT_EQ(store_string("l", 0, "x"), 0);
        ASSERT_EQ(store_string("$$m" + std::to_string(i), 100, "x"), 0);
        ASSERT_EQ(make("c", VAR_CHAR, {50000000 + i}), 0);
        file_objects();
    }
    EXPECT_LT(resident_bytes(), before + 800000000u);
}

// Elements are zero in a block that is used again, in a new one and in one from memory that was freed.
TEST_F(var_store_test, starts_elements_at_zero_without_clearing_large_blocks)
{
    for (int32_t size : {100, 90, 5000, 4000, 300000, 5000, 200000, 300000, 100}) {
        ASSERT_EQ(make("a", VAR_UCHAR, {size}), 0);
        for (int32_t i = 0; i < size; i += 7) {
            ASSERT_EQ(element("a", {i}), 0);
            ASSERT_EQ(cur_value, 0) << size << ": " << i;
            var_store_value(255);
        }
    }
    // The address sanitizer's library clears memory itself.
#ifdef __SANITIZE_ADDRESS__
    constexpr int rounds = 3;
#else
    constexpr int rounds = 300;
#endif
    clock_t start = clock();
    for (int i = 0; i < rounds; i++) {
        ASSERT_EQ(make("c", VAR_CHAR, {260000000}), 0);
        ASSERT_EQ(make("c", VAR_CHAR, {i % 2 == 0 ? 1 : 200000000}), 0);
    }
    EXPECT_LT(seconds_since(start), 5) << "each of them takes 0.03 seconds to clear";
}

TEST_F(var_store_test, limits_all_payloads_together)
{
    ASSERT_EQ(make("l", VAR_SLIST, {3, 4}), 0);  // 4 + 3 * 4 + 3 * 5
    ASSERT_EQ(store_string("$s", -1, "abc"), 0); // 8 + 5
    ASSERT_EQ(make("m", VAR_INT, {2, 3}), 0);    // 8 + 2 * 4 + 24
    int32_t rest = static_cast<int32_t>(var_payload_max) - 31 - 13 - 40;
    ASSERT_EQ(make("a", VAR_DOUBLE, {rest / 2 / 8}), 0);
    rest -= 8 + rest / 2 / 8 * 8;
    EXPECT_EQ(make("b", VAR_CHAR, {rest - 8 + 1}), VAR_NO_MEMORY);
    EXPECT_EQ(var_read("b", 1, nullptr), VAR_UNKNOWN);
    ASSERT_EQ(make("b", VAR_CHAR, {rest - 8}), 0);
    // All of it is in use.
    EXPECT_EQ(make("x", VAR_INT), 0) << "a scalar takes nothing";
    EXPECT_EQ(make("c", VAR_CHAR, {0}), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("$t", -1, ""), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("$s", -1, "abcd"), VAR_NO_MEMORY);
    EXPECT_EQ(size_of("$s"), 4);
    EXPECT_EQ(store_string("$s", -1, "xyz"), 0);
    EXPECT_EQ(store_string("l", 1, "abcd"), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("l", 3, ""), VAR_NO_MEMORY);
    EXPECT_EQ(size_of("l"), 3);
    EXPECT_EQ(store_string("l", 1, "abc"), 0);
    // What a shorter string leaves serves another one, byte for byte.
    EXPECT_EQ(store_string("$s", -1, "ab"), 0);
    EXPECT_EQ(store_string("l", 0, "abcde"), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("l", 0, "abcd"), 0);
    EXPECT_EQ(store_string("l", 2, ""), 0);
    EXPECT_EQ(store_string("l", 0, "abcdefg"), 0);
    EXPECT_EQ(store_string("$s", -1, "abc"), VAR_NO_MEMORY);
    // An array counts with its new size alone.
    EXPECT_EQ(make("b", VAR_CHAR, {rest - 8}), 0);
    EXPECT_EQ(make("b", VAR_CHAR, {rest - 8 + 1}), VAR_NO_MEMORY);
    EXPECT_EQ(size_of("b"), rest - 8);
    EXPECT_EQ(make("b", VAR_CHAR, {8, rest / 8 - 16}), 0);
    EXPECT_EQ(make("c", VAR_CHAR, {40}), 0);
    file_objects();
    EXPECT_EQ(make("b", VAR_CHAR, {rest}), 0) << "the next file starts anew";
}

TEST_F(var_store_test, tells_names_apart_by_255_characters)
{
    std::string name = times(255, "n");
    EXPECT_EQ(make(name, VAR_INT), 0);
    EXPECT_EQ(make(name + "x", VAR_INT), VAR_SCALAR);
    EXPECT_EQ(make(name.substr(0, 254) + "x", VAR_INT), 0);
    EXPECT_EQ(make("Abc", VAR_INT), 0);
    EXPECT_EQ(make("abc", VAR_INT), 0);
}

static int callocs_left;

static void *failing_calloc(size_t count, size_t size)
{
    return callocs_left-- > 0 ? calloc(count, size) : nullptr;
}

TEST_F(var_store_test, gives_a_small_array_new_dimensions_in_its_old_block)
{
    make("a", VAR_DOUBLE, {1000});
    make("a", VAR_DOUBLE, {2000});
    callocs_left = 0;
    heap_calloc = failing_calloc;
    for (int i = 0; i < 10; i++) {
        EXPECT_EQ(make("a", VAR_DOUBLE, {i % 2 == 0 ? 1000 : 2000}), 0);
    }
    heap_calloc = calloc;
}

TEST_F(var_store_test, keeps_a_variable_that_finds_no_memory_to_grow)
{
    make("a", VAR_INT, {3});
    element("a", {1});
    var_store_value(5);
    store_string("$s", -1, "ab");
    store_string("$$l", 1, "abc");
    callocs_left = 0;
    heap_calloc = failing_calloc;
    EXPECT_EQ(make("a", VAR_INT, {100000}), VAR_NO_MEMORY);
    EXPECT_EQ(make("b", VAR_INT, {100000}), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("$s", -1, times(100000, "x")), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("$$l", 1, times(100000, "x")), VAR_NO_MEMORY);
    EXPECT_EQ(store_string("$$l", 100000, "x"), VAR_NO_MEMORY);
    heap_calloc = calloc;
    EXPECT_EQ(size_of("a"), 3);
    element("a", {1});
    EXPECT_EQ(cur_value, 5);
    EXPECT_EQ(size_of("$s"), 3);
    EXPECT_EQ(size_of("$$l"), 2);
    EXPECT_EQ(item_text("$$l", 1), "abc");
    EXPECT_EQ(var_read("b", 1, nullptr), VAR_UNKNOWN);
}
