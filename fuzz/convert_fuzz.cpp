// Whole files through convert_file, each of them twice: the same bytes have to come out, whatever the first
// pass has left in slots, buffers and tables.
#include "harness.h"

#include "driver/batch.h"
#include "support/pool_heap.h"

#include <stdlib.h>
#include <string.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    harness_reset();
    (void)pools_init();
    convert_file("fuzz.mrl", harness_source(data, size));
    heap_check(nullptr);
    size_t first_size;
    const char *written = harness_output(&first_size);
    char *first = harness_text(reinterpret_cast<const uint8_t *>(written), first_size);

    harness_reset();
    (void)pools_init();
    convert_file("fuzz.mrl", harness_source(data, size));
    size_t second_size;
    written = harness_output(&second_size);
    harness_expect(first_size == second_size && memcmp(first, written, first_size) == 0,
                   "the same output from the same input");
    free(first);
    return 0;
}
