// The pool heap: how blocks are split and merged, and that no bytes of a user change.
#include "support/pool_heap.h"

#include "common/heaps.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>
#include <vector>

// Granules of a header: 1 with 32-bit pointers, 2 with 64-bit ones.
static constexpr uint32_t H = heap_header_granules;

static heap_block *header_of(void *pointer)
{
    return reinterpret_cast<heap_block *>(static_cast<char *>(pointer) - sizeof(heap_block));
}

static size_t user_bytes(void *pointer)
{
    return size_t{header_of(pointer)->size - H} * heap_granule;
}

static char *end_of(heap_block *block)
{
    return reinterpret_cast<char *>(block) + size_t{block->size} * heap_granule;
}

static bool all_are(const void *pointer, char byte, size_t size)
{
    const char *bytes = static_cast<const char *>(pointer);
    for (size_t i = 0; i < size; i++)
        if (bytes[i] != byte)
            return false;
    return true;
}

// Calls of heap_calloc that still succeed.
static int callocs_left;

static void *failing_calloc(size_t count, size_t size)
{
    return callocs_left-- > 0 ? calloc(count, size) : nullptr;
}

// Each test has a chain of its own; its memory goes back at the end, so that a leak report means one.
class pool_heap_test : public testing::Test {
protected:
    void SetUp() override
    {
        heap_list = nullptr;
        heap_debug = 0;
    }

    void TearDown() override
    {
        heap_calloc = calloc;
        heaps_free();
        heap_debug = 0;
    }

    // Memory for heap_add, in granules; not filled with zeros.
    char *memory(size_t granules)
    {
        blocks_of_memory.emplace_back(granules * heap_granule / sizeof(double), 1.5);
        return reinterpret_cast<char *>(blocks_of_memory.back().data());
    }

private:
    std::vector<std::vector<double>> blocks_of_memory;
};

static int free_blocks(pool_heap *heap)
{
    int count = 0;
    for (heap_block *b = heap->items->next_free; b != heap->items; b = b->next_free)
        count++;
    return count;
}

// What holds of every heap between two calls.
static void expect_sound(pool_heap *heap)
{
    size_t granules = 0, area_granules = 0;
    int flagged = 0;
    for (heap_block *b = heap->items->next_item; b != heap->items; b = b->next_item) {
        ASSERT_EQ(b->sig, heap_signature);
        ASSERT_EQ(b->heap, heap);
        ASSERT_EQ(b->next_item->prev_item, b);
        granules += b->size;
        flagged += b->free;
        ASSERT_FALSE(b->free && b->next_item->free && end_of(b) == reinterpret_cast<char *>(b->next_item))
            << "two free blocks that touch";
    }
    for (heap_area *area = heap->areas; area != nullptr; area = area->next)
        area_granules += area->size / heap_granule;
    bool rover_on_ring = heap->rover == heap->items;
    for (heap_block *b = heap->items->next_free; b != heap->items; b = b->next_free) {
        ASSERT_EQ(b->free, 1);
        ASSERT_EQ(b->next_free->prev_free, b);
        rover_on_ring |= b == heap->rover;
    }
    EXPECT_EQ(granules, area_granules) << "memory lost or counted twice";
    EXPECT_EQ(flagged, free_blocks(heap));
    EXPECT_TRUE(rover_on_ring);
    heap_check(heap);
}

TEST_F(pool_heap_test, first_block_is_cut_from_the_top_of_a_new_area)
{
    pool_heap *heap = heap_create("t", 4096);
    void *pointer = heap_alloc(heap, "cl_setup", 3008);
    heap_area *area = heap->areas;
    ASSERT_NE(area, nullptr);
    EXPECT_EQ(area->size, 4096u);
    EXPECT_EQ(header_of(pointer)->size, 94 + H);
    EXPECT_STREQ(header_of(pointer)->owner, "cl_setup");
    EXPECT_EQ(static_cast<char *>(pointer) + 3008, static_cast<char *>(area->base) + 4096);
    EXPECT_EQ(static_cast<void *>(heap->rover), area->base);
    EXPECT_EQ(heap->rover->size, 34 - H);
    expect_sound(heap);
}

TEST_F(pool_heap_test, sizes_are_rounded_up_to_granules)
{
    pool_heap *heap = heap_create("t", 4096);
    struct {
        uint32_t size, granules;
    } cases[] = {{0, 0}, {1, 1}, {31, 1}, {32, 1}, {33, 2}, {64, 2}, {65, 3}};
    for (auto &c : cases) {
        void *pointer = heap_alloc(heap, "t", c.size);
        ASSERT_NE(pointer, nullptr) << c.size;
        EXPECT_EQ(header_of(pointer)->size, c.granules + H) << c.size;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pointer) % alignof(double), 0u) << c.size;
    }
    expect_sound(heap);
}

TEST_F(pool_heap_test, request_above_the_growth_gets_an_area_of_its_own_whole)
{
    pool_heap *heap = heap_create("t", 4096);
    for (uint32_t size = 4097 - 32 * H; size < 4200; size++) {
        void *pointer = heap_alloc(heap, "t", size);
        ASSERT_NE(pointer, nullptr) << size;
        EXPECT_GE(user_bytes(pointer), size);
    }
    void *pointer = heap_alloc(heap, "t", 5000);
    EXPECT_EQ(heap->areas->size, 5000 + sizeof(heap_block) + heap_granule);
    EXPECT_EQ(header_of(pointer)->size, heap->areas->size / heap_granule);
    expect_sound(heap);
}

TEST_F(pool_heap_test, rest_too_small_for_a_user_goes_with_the_block)
{
    struct {
        uint32_t rest, granules, left;
    } cases[] = {{0, 128, 0}, {1, 128, 0}, {H, 128, 0}, {H + 1, 127 - H, 1}};
    for (auto &c : cases) {
        pool_heap *heap = heap_create("t", 0);
        ASSERT_EQ(heap_add(heap, memory(128), 128 * heap_granule, 0), 0);
        void *pointer = heap_alloc(heap, "t", (128 - H - c.rest) * heap_granule);
        EXPECT_EQ(header_of(pointer)->size, c.granules) << c.rest;
        EXPECT_EQ(free_blocks(heap), static_cast<int>(c.left)) << c.rest;
        EXPECT_TRUE(all_are(pointer, 0, user_bytes(pointer)));
        expect_sound(heap);
    }
}

TEST_F(pool_heap_test, refuses_a_size_that_is_too_large)
{
    pool_heap *heap = heap_create("t", 4096);
    for (uint32_t size : {UINT32_MAX, UINT32_MAX - 31, UINT32_MAX - heap_granule * H - 31})
        EXPECT_EQ(heap_alloc(heap, "t", size), nullptr) << size;
    EXPECT_EQ(heap->areas, nullptr);

    pool_heap *fixed = heap_create("fixed", 0);
    EXPECT_EQ(heap_alloc(fixed, "t", 1), nullptr);
    char *base = memory(9);
    EXPECT_EQ(heap_add(fixed, base, sizeof(heap_block) - 1, 0), 1);
    EXPECT_EQ(heap_add(fixed, base + 1, 7 * heap_granule, 0), 1);
    EXPECT_EQ(heap_add(fixed, base, 8 * heap_granule + 31, 0), 0);
    EXPECT_EQ(heap_alloc(fixed, "t", (8 - H) * heap_granule + 1), nullptr);
    EXPECT_NE(heap_alloc(fixed, "t", (8 - H) * heap_granule), nullptr);
    EXPECT_EQ(heap_alloc(fixed, "t", 0), nullptr);
    expect_sound(fixed);
}

TEST_F(pool_heap_test, failing_calloc_leaves_nothing_half_made)
{
    heap_calloc = failing_calloc;
    for (int good = 0; good < 2; good++) {
        callocs_left = good;
        EXPECT_EQ(heap_create("t", 4096), nullptr);
        EXPECT_EQ(heap_list, nullptr);
    }
    callocs_left = 2;
    pool_heap *heap = heap_create("t", 4096);
    ASSERT_NE(heap, nullptr);
    for (int good = 0; good < 2; good++) {
        callocs_left = good;
        EXPECT_EQ(heap_alloc(heap, "t", 10), nullptr);
        EXPECT_EQ(heap->areas, nullptr);
    }
    callocs_left = 2;
    char *pointer = static_cast<char *>(heap_alloc(heap, "t", 10));
    ASSERT_NE(pointer, nullptr);
    memset(pointer, 'k', 10);
    EXPECT_EQ(heap_realloc(pointer, 9000), nullptr);
    EXPECT_TRUE(all_are(pointer, 'k', 10)) << "the old block was touched";
    expect_sound(heap);
}

TEST_F(pool_heap_test, rover_streams_down_and_passes_what_is_too_small)
{
    pool_heap *heap = heap_create("t", 4096);
    heap_block *last = header_of(heap_alloc(heap, "t", 100));
    void *hole = nullptr;
    for (int i = 0; i < 5; i++) {
        void *pointer = heap_alloc(heap, "t", 100);
        EXPECT_EQ(end_of(header_of(pointer)), reinterpret_cast<char *>(last));
        last = header_of(pointer);
        hole = i == 2 ? pointer : hole;
    }
    // A hole that would fit is left alone as long as the rover's block serves.
    heap_free(hole);
    void *pointer = heap_alloc(heap, "t", 100);
    EXPECT_EQ(end_of(header_of(pointer)), reinterpret_cast<char *>(last));
    // With the rover's block taken whole, the rover has moved on and the hole serves.
    ASSERT_NE(heap_alloc(heap, "t", (heap->rover->size - H) * heap_granule), nullptr);
    EXPECT_EQ(heap_alloc(heap, "t", 100), hole);
    EXPECT_EQ(heap->rover, heap->items);
    expect_sound(heap);
}

TEST_F(pool_heap_test, rover_stays_on_the_block_that_served)
{
    pool_heap *heap = heap_create("t", 0);
    char *large = memory(100), *small = memory(10);
    ASSERT_EQ(heap_add(heap, large, 100 * heap_granule, 0), 0);
    ASSERT_EQ(heap_add(heap, small, 10 * heap_granule, 0), 0);
    ASSERT_NE(heap_alloc(heap, "t", 50 * heap_granule), nullptr);
    char *pointer = static_cast<char *>(heap_alloc(heap, "t", 0));
    EXPECT_TRUE(pointer > large && pointer < large + 100 * heap_granule) << "searched from the start again";
    expect_sound(heap);
}

TEST_F(pool_heap_test, touching_blocks_merge_in_every_order)
{
    int orders[][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto &order : orders) {
        pool_heap *heap = heap_create("t", 4096);
        void *pointers[3];
        for (void *&pointer : pointers)
            pointer = heap_alloc(heap, "t", 500);
        for (int i : order) {
            EXPECT_EQ(heap_free(pointers[i]), 0);
            expect_sound(heap);
        }
        EXPECT_EQ(free_blocks(heap), 1);
        EXPECT_EQ(heap->rover->size, 128u);
        EXPECT_STREQ(header_of(pointers[1])->owner, "POOL FREE");
    }
}

TEST_F(pool_heap_test, areas_merge_only_where_they_touch)
{
    // Taken whole, so that the two blocks are ring neighbours and nothing else is free.
    for (size_t gap : {0u, 1u}) {
        pool_heap *heap = heap_create("t", 0);
        char *base = memory(40 + gap);
        ASSERT_EQ(heap_add(heap, base + (20 + gap) * heap_granule, 20 * heap_granule, 0), 0);
        ASSERT_EQ(heap_add(heap, base, 20 * heap_granule, 0), 0);
        void *first = heap_alloc(heap, "t", (20 - H) * heap_granule);
        void *second = heap_alloc(heap, "t", (20 - H) * heap_granule);
        ASSERT_NE(second, nullptr);
        heap_free(first);
        heap_free(second);
        EXPECT_EQ(free_blocks(heap), gap == 0 ? 1 : 2);
        expect_sound(heap);
    }
}

TEST_F(pool_heap_test, realloc_moves_keeps_and_zeroes)
{
    pool_heap *heap = heap_create("t", 4096);
    // Taken whole with a header's granules more than asked for.
    void *pointer = heap_alloc(heap, "Vbuf", (128 - 2 * H) * heap_granule);
    size_t size = user_bytes(pointer);
    ASSERT_EQ(size, (128 - H) * heap_granule);
    memset(pointer, 'v', size);

    void *larger = heap_realloc(pointer, 6000);
    EXPECT_STREQ(header_of(larger)->owner, "Vbuf");
    EXPECT_TRUE(all_are(larger, 'v', size))
        << "the granules beyond the size asked for belong to the user too";
    EXPECT_TRUE(all_are(static_cast<char *>(larger) + size, 0, user_bytes(larger) - size));

    void *smaller = heap_realloc(larger, 100);
    EXPECT_NE(smaller, larger);
    EXPECT_TRUE(all_are(smaller, 'v', 100));
    EXPECT_TRUE(all_are(static_cast<char *>(smaller) + 100, 0, user_bytes(smaller) - 100));
    EXPECT_NE(heap_realloc(smaller, 100), smaller);
    EXPECT_EQ(heap_realloc(nullptr, 100), nullptr);
    EXPECT_EQ(heap_free(nullptr), 0);
    expect_sound(heap);
}

TEST_F(pool_heap_test, any_sequence_keeps_contents_and_rings)
{
    struct held {
        char *pointer;
        size_t size;
        char byte;
    };
    for (unsigned seed = 1; seed <= 20; seed++) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
        pool_heap *heaps[] = {heap_create("a", 4096), heap_create("b", seed % 3 == 0 ? 0u : 700u)};
        ASSERT_EQ(heap_add(heaps[1], memory(300), 300 * heap_granule, 0), 0);
        std::vector<held> model;
        heap_debug = seed % 3 != 0; // a check inside of every call, where no heap runs full
        for (int step = 0; step < 1500; step++) {
            uint32_t size = below(below(8) == 0 ? 9000 : 200);
            uint32_t at = model.empty() ? 0 : below(static_cast<uint32_t>(model.size()));
            uint32_t action = below(5);
            char byte = static_cast<char>('a' + below(26));
            if (model.empty() || action <= 1) {
                held h = {static_cast<char *>(heap_alloc(heaps[below(2)], "t", size)), 0, byte};
                if (h.pointer == nullptr)
                    continue;
                h.size = user_bytes(h.pointer);
                ASSERT_GE(h.size, size);
                ASSERT_TRUE(all_are(h.pointer, 0, h.size)) << "not zeroed";
                memset(h.pointer, h.byte, h.size);
                model.push_back(h);
            } else if (action <= 3) {
                ASSERT_TRUE(all_are(model[at].pointer, model[at].byte, model[at].size)) << "overwritten";
                heap_free(model[at].pointer);
                model[at] = model.back();
                model.pop_back();
            } else {
                held &h = model[at];
                char *moved = static_cast<char *>(heap_realloc(h.pointer, size));
                if (moved != nullptr) {
                    size_t kept = size < h.size ? size : h.size;
                    ASSERT_TRUE(all_are(moved, h.byte, kept)) << "lost in the move";
                    ASSERT_TRUE(all_are(moved + kept, 0, user_bytes(moved) - kept)) << "not zeroed";
                    h = {moved, user_bytes(moved), byte};
                }
                ASSERT_TRUE(moved != nullptr || all_are(h.pointer, h.byte, h.size));
                memset(h.pointer, h.byte, h.size);
            }
            ASSERT_NO_FATAL_FAILURE(expect_sound(heaps[0]));
            ASSERT_NO_FATAL_FAILURE(expect_sound(heaps[1]));
        }
        for (held &h : model) {
            ASSERT_TRUE(all_are(h.pointer, h.byte, h.size)) << "overwritten";
            heap_free(h.pointer);
        }
        for (pool_heap *heap : heaps) {
            expect_sound(heap);
            for (heap_area *area = heap->areas; area != nullptr; area = area->next) {
                heap_block *whole = static_cast<heap_block *>(area->base);
                EXPECT_EQ(whole->free, 1);
                EXPECT_EQ(whole->size, area->size / heap_granule) << "an area did not come together again";
            }
        }
    }
}

// A damaged heap: reported in a build with checks, walked to the end in any other.
static void expect_fault(pool_heap *heap, const char *text)
{
#ifdef MURL_HEAP_CHECKS
    EXPECT_DEATH(heap_check(heap), text);
#else
    EXPECT_EQ(heap_check(heap), -1) << text;
#endif
}

TEST_F(pool_heap_test, check_finds_each_kind_of_damage)
{
    pool_heap *heap = heap_create("t", 4096);
    EXPECT_EQ(heap_check(nullptr), 0);
    ASSERT_EQ(heap_add(heap, memory(8), 8 * heap_granule, 0), 0);
    heap_block *block = heap->rover;

    block->sig = 1;
    expect_fault(heap, "Non magic block");
    block->sig = heap_signature;
    block->heap = nullptr;
    expect_fault(heap, "internal heap field bad");
    block->heap = heap;

    // A block with a wrong signature and right links.
    heap_block impostor = *heap->items;
    impostor.sig = 1;
    struct {
        heap_block **link;
        const char *text;
    } cases[] = {{&block->next_item, "next item field fubar"},
                 {&block->prev_item, "prev item field fubar"},
                 {&block->next_free, "next free field fubar"},
                 {&block->prev_free, "prev free field fubar"}};
    for (auto &c : cases) {
        *c.link = &impostor;
        expect_fault(heap, c.text);
        *c.link = heap->items;
    }
    expect_sound(heap);
}

// Freed alone, and merged into the block below, the block above, or both.
TEST_F(pool_heap_test, block_that_is_freed_again_changes_nothing)
{
    for (int neighbours = 0; neighbours < 4; neighbours++) {
        SCOPED_TRACE(neighbours);
        pool_heap *heap = heap_create("t", 0);
        ASSERT_EQ(heap_add(heap, memory(128), 128 * heap_granule, 0), 0);
        void *above = heap_alloc(heap, "t", 10);
        void *pointer = heap_alloc(heap, "t", 10);
        void *below = heap_alloc(heap, "t", 10);
        if ((neighbours & 1) != 0)
            heap_free(below);
        if ((neighbours & 2) != 0)
            heap_free(above);
        heap_free(pointer);
        heap_block *rover = heap->rover;
        int blocks = free_blocks(heap);
#ifdef MURL_HEAP_CHECKS
        EXPECT_DEATH(heap_free(pointer), "Block not allocated");
        EXPECT_DEATH(heap_realloc(pointer, 20), "Block not allocated");
#else
        EXPECT_EQ(heap_free(pointer), 0);
        EXPECT_EQ(heap_realloc(pointer, 20), nullptr);
#endif
        EXPECT_EQ(heap->rover, rover);
        EXPECT_EQ(free_blocks(heap), blocks);
        expect_sound(heap);
    }
}

static std::string dump_text(pool_heap *heap, int expected_result)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(heap_dump(heap), expected_result);
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

TEST_F(pool_heap_test, dump_shows_areas_blocks_and_sums_when_asked_for)
{
    pool_heap *heap = heap_create("Vbuf", 0);
    EXPECT_EQ(dump_text(heap, 0), "");
    ASSERT_EQ(heap_add(heap, memory(128), 4096, 0), 0);
    heap_alloc(heap, "cl_setup", 3008);
    heap_debug = 1;
    std::string text = dump_text(heap, -1);
    auto used = static_cast<int>(3008 + sizeof(heap_block)), rest = 4096 - used;
    char sums[200];
    snprintf(sums, sizeof sums, "balloc = %d, bfree = %d, tot = 4096\n", used, rest);
    size_t free_list = text.find("FREE LIST\n", text.find(sums));
    ASSERT_NE(free_list, std::string::npos) << text;
    EXPECT_LT(text.find("size     1000, can_free = 0"), text.find("own = 'cl_setup', free = 0, sig = aabb"));
    snprintf(sums, sizeof sums, "balloc = 0, bfree = %d, tot = %d\n", rest, rest);
    EXPECT_NE(text.find(sums, free_list), std::string::npos) << text;
    EXPECT_EQ(text.find("cl_setup", free_list), std::string::npos) << text;

    testing::internal::CaptureStdout();
    EXPECT_EQ(heap_alloc(heap, "t", 4096), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), text) << "a heap that is full is dumped";
    pool_heap *newer = heap_create("G3buf", 4096);
    EXPECT_EQ(dump_text(nullptr, 0), dump_text(newer, -1) + "\n" + text);
}
