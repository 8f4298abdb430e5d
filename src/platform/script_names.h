// Script names: what the name of a file says of it, and what an output is called.
#pragma once

#include <stddef.h>

// What an output's name has after its input's, in front of the extension.
inline constexpr char output_suffix[] = "_conv";

// Writes the path of an input's output, X_conv.ext for X.ext, to output, a buffer of strlen(path) + sizeof
// output_suffix bytes.
void output_path_write(char *output, const char *path);

// What the name of a file says of it. A script's extension is .mrl or .mrp, in any case.
enum name_kind {
    NAME_OTHER,  // no script's name
    NAME_SCRIPT, // X.ext
    NAME_OUTPUT, // X_conv.ext with X.ext beside it
    NAME_LONE    // X_conv.ext alone: somebody's own script, or an output whose script is gone
};

// Looks whether the script of an output is beside it, and at no other file. Without memory for that the name
// of an output is a lone one.
name_kind name_kind_of(const char *path);
