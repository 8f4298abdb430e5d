#include "driver/batch.h"
#include "platform/platform.h"

#include <stdio.h>

int main(int argc, char **argv)
{
    if (plat_start(&argc, &argv) != 0) {
        fputs("Fatal Error: MFC initialization failed\n", stderr);
        return 1;
    }
    if (conv_main(argc, argv) == BATCH_NO_MEMORY) {
        fputs("murlconv: out of memory\n", stderr);
        return 1;
    }
    return 0;
}
