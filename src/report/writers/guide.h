// The texts that are built into the program: the page, and the guides of docs by section.
#pragma once

#include <map>
#include <set>
#include <string>

extern const char page_html[]; // src/report/page: the whole page but for its data
extern const char commands_md[];
extern const char finishing_md[];

// The guide of what to do about items, by the kinds' words.
std::map<std::string, std::string> guide_kinds();

// The guide of the commands, by name, of those that are wanted.
std::map<std::string, std::string> guide_commands(const std::set<std::string> &wanted);
