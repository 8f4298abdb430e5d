// Destroys all pool heaps: tests and fuzz targets make them by the thousand.
#pragma once

#include "support/pool_heap.h"

inline void heaps_free()
{
    while (heap_list != nullptr)
        heap_destroy(heap_list);
}
