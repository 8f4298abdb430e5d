// Giving all pool heaps back, which the program never does: tests and fuzz targets make them by the thousand.
#pragma once

#include "support/pool_heap.h"

#include <stdlib.h>

inline void heaps_free()
{
    while (heap_list != nullptr) {
        pool_heap *heap = heap_list;
        heap_list = heap->next;
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
}
