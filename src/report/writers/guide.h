// The guides of docs, by section.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

// The texts under a guide's headings of a level ("## "), by heading, of those that are wanted. A heading may
// name several things, with commas.
std::map<std::string, std::string> guide_sections(std::string_view guide, std::string_view level,
                                                  const std::set<std::string> &wanted);
