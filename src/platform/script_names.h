// Script names: tells scripts and outputs apart by their names, and names outputs.
#pragma once

#include <stddef.h>

// Comes between the stem of an input's name and its extension in the output's name.
inline constexpr char output_suffix[] = "_conv";

// Writes the path of an input's output, X_conv.ext for X.ext, to output, a buffer of strlen(path) + sizeof
// output_suffix bytes.
void output_path_write(char *output, const char *path);

// The kind of a file by its name. A script's extension is .mrl or .mrp, in any case.
enum name_kind {
    NAME_OTHER,  // no script's name
    NAME_SCRIPT, // X.ext
    NAME_OUTPUT, // X_conv.ext with X.ext beside it
    NAME_LONE    // X_conv.ext alone: somebody's own script, or an output whose script is gone
};

// Looks in the folder only for the script of an output. Without memory for its path the output counts as
// alone.
name_kind name_kind_of(const char *path);
