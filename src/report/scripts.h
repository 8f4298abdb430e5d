// Scripts: which files a report is about, from the paths on the command line.
#pragma once

#include <string>
#include <vector>

// Walks the paths in their order: a file is a script whatever its name, a folder is searched for *.mrl and
// *.mrp in any case. An output that is beside its script is left out; a lone one is a script. What can't be
// read is reported to trouble, and the walk goes on.
std::vector<std::string> scripts_find(const std::vector<std::string> &paths,
                                      void (*trouble)(const std::string &line));

// The path of a script's output.
std::string output_path_of(const std::string &path);
