// Pool heap: memory for variables, zero-filled, from areas that are freed with their heap.
//
// A first-fit allocator with a roving pointer. A heap gets areas from malloc as it fills up and cuts
// blocks from them; every block carries a signed header that names its owner and its heap, so a block
// can be freed, moved or looked at without naming its heap. Sizes inside are counted in granules of 32 bytes,
// the header included. All heaps are chained.
//
// Each heap has two rings of blocks. The item ring holds every block; a split puts the two parts next to
// each other on it, so the neighbours on the ring are the only candidates for a merge. The free ring
// holds the free ones. The base block is on both, is never free and never allocated: the rings are
// never empty.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct pool_heap;

// The header in front of a user's area. Its size is a multiple of heap_granule with 32-bit and with 64-bit
// pointers.
struct heap_block {
    heap_block *next_free; // the free ring; without meaning while the block is allocated
    heap_block *prev_free;
    heap_block *next_item; // the item ring
    heap_block *prev_item;
    uint32_t size;     // granules, header included; 0 in the base block
    const char *owner; // who asked for it: a string constant, held by pointer
    uint16_t free;     // 1 free, 0 allocated
    uint16_t sig;      // heap_signature
    pool_heap *heap;   // the heap it belongs to
};

// A piece of memory that was added to a heap.
struct heap_area {
    void *base;
    uint32_t size;    // bytes
    int32_t can_free; // 1 if heap_alloc got it from the system: heap_destroy returns it
    heap_area *next;  // the one added before
};

struct pool_heap {
    heap_block *rover; // where on the free ring the next search starts
    const char *name;  // a string constant, held by pointer
    uint32_t growth;   // bytes, the least size of a new area; 0: the heap doesn't grow
    heap_area *areas;  // newest first
    pool_heap *next;   // the heap made before
    heap_block *items; // the base block, anchor of the item ring
};

constexpr uint16_t heap_signature = 0xAABB;
constexpr uint32_t heap_granule = 32; // bytes
constexpr uint32_t heap_header_granules = sizeof(heap_block) / heap_granule;

static_assert(sizeof(heap_block) % heap_granule == 0, "a header must fill its granules");
static_assert(heap_granule % alignof(double) == 0 && heap_granule % alignof(heap_block) == 0,
              "user areas must suit pointers and doubles");

// State of the process; heap_create and heap_destroy write the chain, tests the other two.
extern pool_heap *heap_list; // the chain of all heaps, newest first; null before the first
extern int32_t heap_debug; // 0: no checks, no dumps; anything else: heap_check at every call, and dumps print
// Gets memory from the system, zeroed: calloc, unless a test wants it to fail.
extern void *(*heap_calloc)(size_t count, size_t size);

// Makes a heap with no area. Null if there is no memory.
pool_heap *heap_create(const char *name, uint32_t growth);

// Returns a heap and all its blocks to the system, but for areas with can_free 0, which are the caller's.
void heap_destroy(pool_heap *heap);

// Adds size bytes at base as one free block; the heap uses them until it is destroyed. 0, or 1 if they can't
// be added: no memory for the area's record, fewer bytes than a header has, or a base that isn't aligned for
// one.
int heap_add(pool_heap *heap, void *base, uint32_t size, int32_t can_free);

// A block of at least size bytes, all of them zero; for 0 bytes the address is valid too. Null if there is
// no memory or the size can't be counted. The block is the caller's until heap_free.
void *heap_alloc(pool_heap *heap, const char *owner, uint32_t size);

// Frees a block; always 0. A null pointer is ignored, and so is a block that is free already as far as
// its header shows it; a build with checks reports that one.
int heap_free(void *pointer);

// Moves a block to a new one of size bytes on the same heap, under the same owner: contents kept as far
// as they fit, the rest zero. It always moves, also to a smaller size. Null if there is no memory or the
// block isn't allocated; nothing has changed then.
void *heap_realloc(void *pointer, uint32_t size);

// Verifies the blocks of a heap, or with null of all heaps; each fault goes to heap_abort. -1 for one
// heap, 0 for all of them: the result says nothing about faults.
int heap_check(pool_heap *heap);

// Prints areas, blocks and free blocks of a heap, or with null of all heaps, to standard output. Result
// as of heap_check. Does nothing and returns 0 while heap_debug is 0.
int heap_dump(pool_heap *heap);

// Called with each fault that a check finds. It does nothing; in a build with MURL_HEAP_CHECKS it prints the
// text to standard error and aborts.
void heap_abort(pool_heap *heap, const char *text);
