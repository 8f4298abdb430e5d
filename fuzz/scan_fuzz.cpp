// The scan format: INPUT's format string and the variables that its conversions take. The first byte is the
// number of arguments, the rest the decoded format.
#include "harness.h"

#include "rules/tails.h"
#include "statements/arg_slots.h"

#include <stdlib.h>
#include <string.h>

// Slot 1 with the format, and a variable in each slot behind it.
static void fill_slots(const char *format, int32_t count)
{
    static const char variable[2 + slot_text_slack] = "v";
    slot_set_word("INPUT", 5);
    for (int32_t i = 1; i <= count; i++) {
        const char *text = i == 1 ? format : variable;
        arg_slots[i] = {text, 0, static_cast<uint32_t>(strlen(text)), 0, HOLDS_RAW};
    }
    slots_end_list(arg_slots + count + 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    harness_reset();
    int32_t count = 1 + data[0] % arg_types_size;
    char *format = harness_text(data + 1, size - 1);
    fill_slots(format, count);
    emit_scan_format(arg_slots + 1, count);

    size_t written;
    const char *text = harness_output(&written);
    int32_t variables = scan_format_variables(format, arg_slots[1].text_size);
    size_t taken = static_cast<size_t>(variables < count ? variables : count - 1) * strlen(", v");
    harness_expect(written >= 3 + taken && memcmp(text, " \"", 2) == 0 && text[written - taken - 1] == '"',
                   "the format between quotes and the variables taken");
    free(format);
    return 0;
}
