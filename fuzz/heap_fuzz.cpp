// The pool heap under a stream of operations. After each of them the blocks are compared with a model, and
// both rings are walked.
#include "harness.h"

#include "support/pool_heap.h"

#include <string.h>

constexpr size_t held_most = 48;   // blocks
constexpr int heaps_count = 2;     // the second doesn't grow
constexpr size_t given_most = 4;   // areas of ours, in order
constexpr size_t given_size = 512; // bytes

struct held_block {
    unsigned char *pointer; // null: none
    uint32_t size;
    unsigned char fill; // every byte of it
};

static pool_heap *heaps[heaps_count];
static held_block held[held_most];
alignas(heap_block) static char given[given_most * given_size];
static size_t given_used;

static bool holds_only(const unsigned char *bytes, size_t size, unsigned char value)
{
    return size == 0 || (bytes[0] == value && memcmp(bytes, bytes + 1, size - 1) == 0);
}

static void hold(held_block *block, void *pointer, uint32_t size, unsigned char fill)
{
    *block = {static_cast<unsigned char *>(pointer), pointer != nullptr ? size : 0, fill};
    if (pointer != nullptr)
        memset(pointer, fill, size);
}

static void expect_intact(const held_block *block)
{
    harness_expect(block->pointer == nullptr || holds_only(block->pointer, block->size, block->fill),
                   "a block keeps what was written to it");
}

static void take(pool_heap *heap, held_block *block, uint32_t size, unsigned char fill)
{
    if (block->pointer != nullptr)
        return;
    auto *pointer = static_cast<unsigned char *>(heap_alloc(heap, "fuzz", size));
    harness_expect(pointer == nullptr || holds_only(pointer, size, 0), "a new block is all zero");
    harness_expect(reinterpret_cast<uintptr_t>(pointer) % alignof(double) == 0, "a new block suits a double");
    hold(block, pointer, size, fill);
}

static void move(held_block *block, uint32_t size, unsigned char fill)
{
    auto *pointer = static_cast<unsigned char *>(heap_realloc(block->pointer, size));
    if (pointer == nullptr)
        return; // the old block is still there
    uint32_t kept = size < block->size ? size : block->size;
    harness_expect(holds_only(pointer, kept, block->fill), "a moved block keeps its contents");
    // Behind them the old block's rest was zero, and the new one's is.
    harness_expect(holds_only(pointer + kept, size - kept, 0), "a moved block's new part is zero");
    hold(block, pointer, size, fill);
}

static void give(pool_heap *heap, uint32_t size)
{
    if (given_used == given_most)
        return;
    char *base = given + given_size * given_used++;
    int failed = heap_add(heap, base, size, 0);
    harness_expect(failed == 0 || size < sizeof(heap_block), "an area with room for a header is taken");
}

// Walks the rings: links in both directions, blocks that don't overlap in number, all memory accounted for.
static void check_rings(pool_heap *heap)
{
    uint64_t bytes = 0;
    uint32_t free_items = 0;
    for (heap_block *block = heap->items->next_item; block != heap->items; block = block->next_item) {
        harness_expect(block->next_item->prev_item == block && block->prev_item->next_item == block,
                       "the item ring is linked in both directions");
        harness_expect(block->size >= heap_header_granules && block->heap == heap, "a block of this heap");
        bytes += uint64_t{block->size} * heap_granule;
        free_items += block->free;
    }
    uint64_t area_bytes = 0;
    for (const heap_area *area = heap->areas; area != nullptr; area = area->next)
        area_bytes += area->size / heap_granule * heap_granule;
    harness_expect(bytes == area_bytes, "the blocks fill the areas");

    bool rover_met = heap->rover == heap->items;
    for (heap_block *block = heap->items->next_free; block != heap->items; block = block->next_free) {
        harness_expect(block->next_free->prev_free == block && block->prev_free->next_free == block,
                       "the free ring is linked in both directions");
        harness_expect(block->free == 1 && free_items-- > 0, "the free ring holds the free blocks");
        rover_met = rover_met || block == heap->rover;
    }
    harness_expect(free_items == 0, "every free block is on the free ring");
    harness_expect(rover_met, "the rover stands on the free ring");
}

// Sizes of all magnitudes out of one byte.
static uint32_t size_of_byte(uint8_t byte)
{
    static const uint32_t sizes[] = {0, 1, 31, 32, 33, 64, 500, 3968, 4000, 4064, 4096, 20000};
    if (byte < 200)
        return byte * 3u;
    if (byte >= 254)
        return byte == 254 ? UINT32_MAX : 3u << 16;
    return sizes[byte % (sizeof sizes / sizeof sizes[0])];
}

static void run_operation(uint8_t operation, uint8_t place, uint8_t size)
{
    held_block *block = &held[place % held_most];
    pool_heap *heap = heaps[operation / 128];
    expect_intact(block);
    switch (operation % 8) {
    case 0:
    case 1:
    case 2:
    case 3: take(heap, block, size_of_byte(size), static_cast<unsigned char>(place | 1)); break;
    case 4:
    case 5:
        heap_free(block->pointer);
        block->pointer = nullptr;
        break;
    case 6: move(block, size_of_byte(size), static_cast<unsigned char>(size | 1)); break;
    default: give(heap, size_of_byte(size) % (given_size + 1)); break;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    harness_reset();
    memset(held, 0, sizeof held);
    given_used = 0;
    for (int i = 0; i < heaps_count; i++)
        heaps[i] = heap_create("fuzz", i == 0 ? 4096 : 0);
    for (; size >= 3; data += 3, size -= 3) {
        run_operation(data[0], data[1], data[2]);
        heap_check(nullptr);
        for (pool_heap *heap : heaps)
            check_rings(heap);
    }
    for (const held_block &block : held)
        expect_intact(&block);
    return 0;
}
