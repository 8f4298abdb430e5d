#include "platform/script_names.h"

#include "platform/platform.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

void output_path_write(char *output, const char *path)
{
    size_t stem = plat_extension_start(path);
    memcpy(output, path, stem);
    strcpy(output + stem, output_suffix);
    strcat(output + stem, path + stem);
}

name_kind name_kind_of(const char *path)
{
    constexpr size_t suffix = sizeof output_suffix - 1;
    size_t stem = plat_extension_start(path);
    if (strcasecmp(path + stem, ".mrl") != 0 && strcasecmp(path + stem, ".mrp") != 0)
        return NAME_OTHER;
    if (stem < suffix || !plat_names_equal(path + stem - suffix, output_suffix, suffix))
        return NAME_SCRIPT;
    char *input = static_cast<char *>(malloc(strlen(path) + 1));
    if (input == nullptr)
        return NAME_LONE;
    memcpy(input, path, stem - suffix);
    strcpy(input + stem - suffix, path + stem);
    bool found = plat_exists(input);
    free(input);
    return found ? NAME_OUTPUT : NAME_LONE;
}
