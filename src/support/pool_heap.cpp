// A block is on the free ring exactly if its free flag is set, the base block apart. Two blocks merge only if
// their addresses touch: neighbours on the ring can be of two areas.
#include "support/pool_heap.h"

#include "support/number.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

pool_heap *heap_list;
int32_t heap_debug;
void *(*heap_calloc)(size_t count, size_t size) = calloc;

// A ring: the links of a block to the next one on it and to the one before.
struct heap_ring {
    heap_block *heap_block::*next;
    heap_block *heap_block::*prev;
};

static constexpr heap_ring item_ring{&heap_block::next_item, &heap_block::prev_item};
static constexpr heap_ring free_ring{&heap_block::next_free, &heap_block::prev_free};

static heap_block *block_at(void *address)
{
    return static_cast<heap_block *>(address);
}

static size_t bytes_of(const heap_block *block)
{
    return static_cast<size_t>(block->size) * heap_granule;
}

static size_t user_bytes_of(const heap_block *block)
{
    return bytes_of(block) - sizeof(heap_block);
}

// The address after a block, where the next one begins if it touches this one.
static heap_block *end_of(heap_block *block)
{
    return block_at(reinterpret_cast<char *>(block) + bytes_of(block));
}

// Inserts a block into a ring after anchor.
static void ring_insert(const heap_ring &ring, heap_block *anchor, heap_block *block)
{
    heap_block *after = anchor->*ring.next;
    block->*ring.next = after;
    block->*ring.prev = anchor;
    after->*ring.prev = block;
    anchor->*ring.next = block;
}

// Takes a block off a ring. Its own links stay as they are.
static void ring_unlink(const heap_ring &ring, heap_block *block)
{
    heap_block *before = block->*ring.prev;
    heap_block *after = block->*ring.next;
    before->*ring.next = after;
    after->*ring.prev = before;
}

void heap_abort(pool_heap *, [[maybe_unused]] const char *text)
{
#ifdef MURL_HEAP_CHECKS
    fprintf(stderr, "%s\n", text);
    abort();
#endif
}

// False, and a report, if a block that is to be freed or moved isn't allocated. The header of one that was
// merged into its neighbour keeps its free flag until the neighbour's bytes are allocated.
static bool expect_allocated(heap_block *block)
{
    if (block->sig == heap_signature && block->free == 0)
        return true;
    heap_dump(nullptr);
    heap_abort(block->heap, "Block not allocated");
    return false;
}

// Moves the rover off a block that leaves the free ring. The base block is always on the ring.
static void rover_leave(heap_block *block)
{
    if (block->heap->rover == block)
        block->heap->rover = block->next_free;
}

pool_heap *heap_create(const char *name, uint32_t growth)
{
    auto *heap = static_cast<pool_heap *>(heap_calloc(1, sizeof(pool_heap)));
    heap_block *base = heap != nullptr ? block_at(heap_calloc(1, sizeof(heap_block))) : nullptr;
    if (base == nullptr) {
        free(heap);
        return nullptr;
    }
    *base = {base, base, base, base, 0, "HEAP_BASE", 0, heap_signature, heap};
    *heap = {base, name, growth, nullptr, heap_list, base};
    heap_list = heap;
    return heap;
}

void heap_destroy(pool_heap *heap)
{
    pool_heap **link = &heap_list;
    while (*link != heap)
        link = &(*link)->next;
    *link = heap->next;
    while (heap->areas != nullptr) {
        heap_area *area = heap->areas;
        heap->areas = area->next;
        if (area->can_free != 0)
            free(area->base);
        free(area);
    }
    free(heap->items);
    free(heap);
}

int heap_add(pool_heap *heap, void *base, uint32_t size, int32_t can_free)
{
    if (size < sizeof(heap_block) || reinterpret_cast<uintptr_t>(base) % alignof(heap_block) != 0)
        return 1;
    heap_area *area = static_cast<heap_area *>(heap_calloc(1, sizeof(heap_area)));
    if (area == nullptr)
        return 1;
    *area = {base, size, can_free, heap->areas};
    heap->areas = area;

    heap_block *block = block_at(base);
    *block = {nullptr, nullptr, nullptr, nullptr, size / heap_granule, "HEAP_ADD", 1, heap_signature, heap};
    ring_insert(item_ring, heap->items, block);
    ring_insert(free_ring, heap->rover, block);
    heap->rover = block;
    return 0;
}

// The first free block of at least need granules from the rover on, or null. A damaged one is skipped.
static heap_block *find_free(pool_heap *heap, uint32_t need)
{
    heap_block *block = heap->rover;
    do {
        if (block->sig != heap_signature) {
            heap_dump(nullptr);
            heap_abort(heap, "Non magic block");
        } else if (block->free != 0 && block->size >= need) {
            return block;
        }
        block = block->next_free;
    } while (block != heap->rover);
    return nullptr;
}

// Adds an area that a block of size bytes is sure to fit into. False if the heap doesn't grow, there is
// no memory, or the area can't be counted in 32 bits.
static bool heap_grow(pool_heap *heap, uint32_t size)
{
    if (heap->growth == 0)
        return false;
    uint64_t bytes = std::max<uint64_t>(heap->growth, uint64_t{size} + sizeof(heap_block) + heap_granule);
    void *memory = bytes <= UINT32_MAX ? heap_calloc(1, static_cast<size_t>(bytes)) : nullptr;
    if (memory != nullptr && heap_add(heap, memory, static_cast<uint32_t>(bytes), 1) == 0)
        return true;
    free(memory);
    return false;
}

// Takes a free block for an allocation of need granules, whole or its upper end. Cutting from the upper
// end leaves its links on the free ring as they are, and the rover on it lets the next allocations go on
// downward without a search.
static heap_block *take_block(heap_block *block, uint32_t need)
{
    // A remainder of a header or less is of no use.
    if (block->size - need <= heap_header_granules) {
        rover_leave(block);
        ring_unlink(free_ring, block);
        return block;
    }
    block->heap->rover = block;
    block->size -= need;
    heap_block *upper = end_of(block);
    upper->next_free = nullptr;
    upper->prev_free = nullptr;
    upper->size = need;
    ring_insert(item_ring, block, upper);
    return upper;
}

void *heap_alloc(pool_heap *heap, const char *owner, uint32_t size)
{
    // At most 2^27 granules and the header's: no overflow.
    uint32_t need = size / heap_granule + (size % heap_granule != 0 ? 1 : 0) + heap_header_granules;
    heap_block *block = nullptr;
    while (block == nullptr) {
        if (heap_debug != 0)
            heap_check(heap);
        block = find_free(heap, need);
        if (block == nullptr && !heap_grow(heap, size)) {
            heap_dump(heap);
            return nullptr;
        }
    }
    block = take_block(block, need);
    block->free = 0;
    block->owner = owner;
    block->sig = heap_signature;
    block->heap = heap;
    return memset(block + 1, 0, user_bytes_of(block));
}

// Sets the header of a free block, and of one that was merged into its neighbour: expect_allocated reads it.
static void set_free(heap_block *block)
{
    block->free = 1;
    block->owner = "POOL FREE";
}

int heap_free(void *pointer)
{
    if (pointer == nullptr)
        return 0;
    heap_block *block = block_at(pointer) - 1;
    pool_heap *heap = block->heap;
    if (heap_debug != 0)
        heap_check(heap);
    if (!expect_allocated(block))
        return 0;

    heap_block *below = block->prev_item;
    if (below->free != 0 && end_of(below) == block) {
        ring_unlink(item_ring, block);
        below->size += block->size;
        set_free(block);
        block = below;
    }
    heap_block *above = block->next_item;
    if (above->free != 0 && end_of(block) == above) {
        block->size += above->size;
        rover_leave(above);
        ring_unlink(item_ring, above);
        ring_unlink(free_ring, above);
    }
    // Merged into the block below it is on the free ring already.
    if (block->free == 0) {
        ring_insert(free_ring, heap->rover, block);
        set_free(block);
    }
    return 0;
}

void *heap_realloc(void *pointer, uint32_t size)
{
    if (pointer == nullptr)
        return nullptr;
    heap_block *block = block_at(pointer) - 1;
    if (heap_debug != 0)
        heap_check(block->heap);
    if (!expect_allocated(block))
        return nullptr;
    void *moved = heap_alloc(block->heap, block->owner, size);
    if (moved == nullptr)
        return nullptr;
    memcpy(moved, pointer, std::min<size_t>(size, user_bytes_of(block)));
    heap_free(pointer);
    return moved;
}

static void expect_signed(pool_heap *heap, const heap_block *block, const char *text)
{
    if (block->sig != heap_signature)
        heap_abort(heap, text);
}

static void check_one(pool_heap *heap)
{
    heap_block *block = heap->rover;
    do {
        expect_signed(heap, block, "Non magic block");
        if (block->heap != heap)
            heap_abort(heap, "internal heap field bad");
        expect_signed(heap, block->next_item, "next item field fubar");
        expect_signed(heap, block->prev_item, "prev item field fubar");
        if (block->free != 0) {
            expect_signed(heap, block->next_free, "next free field fubar");
            expect_signed(heap, block->prev_free, "prev free field fubar");
        }
        block = block->next_item;
    } while (block != heap->rover);
}

int heap_check(pool_heap *heap)
{
    if (heap != nullptr) {
        check_one(heap);
        return -1;
    }
    for (heap = heap_list; heap != nullptr; heap = heap->next)
        check_one(heap);
    return 0;
}

// Two lines for each block of one ring from the rover on, then the sums in bytes.
static void dump_ring(pool_heap *heap, heap_block *heap_block::*next)
{
    uint64_t allocated = 0;
    uint64_t unused = 0;
    heap_block *block = heap->rover;
    do {
        printf("%p: nfree %p, pfree = %p, nitem = %p, pitem = %p\n", static_cast<void *>(block),
               static_cast<void *>(block->next_free), static_cast<void *>(block->prev_free),
               static_cast<void *>(block->next_item), static_cast<void *>(block->prev_item));
        printf("  sz = %ld, own = '%s', free = %d, sig = %hx\n", static_cast<long>(bytes_of(block)),
               block->owner, block->free, block->sig);
        (block->free != 0 ? unused : allocated) += bytes_of(block);
        block = block->*next;
    } while (block != heap->rover);
    printf("balloc = %d, bfree = %d, tot = %d\n", wrap_int32(allocated), wrap_int32(unused),
           wrap_int32(allocated + unused));
}

static void dump_one(pool_heap *heap)
{
    void *address = heap;
    printf("\nHEAP %s %p: BLOCK MAP\n", heap->name, address);
    for (const heap_area *area = heap->areas; area != nullptr; area = area->next)
        printf("  base %p, size %8lx, can_free = %d\n", area->base, static_cast<unsigned long>(area->size),
               area->can_free);
    printf("\nHEAP %s %p: ALLOC/FREE LIST\n", heap->name, address);
    dump_ring(heap, &heap_block::next_item);
    printf("\nHEAP %s %p: FREE LIST\n", heap->name, address);
    dump_ring(heap, &heap_block::next_free);
}

int heap_dump(pool_heap *heap)
{
    if (heap_debug == 0)
        return 0;
    if (heap != nullptr) {
        dump_one(heap);
        return -1;
    }
    for (heap = heap_list; heap != nullptr; heap = heap->next) {
        dump_one(heap);
        if (heap->next != nullptr)
            printf("\n");
    }
    return 0;
}
