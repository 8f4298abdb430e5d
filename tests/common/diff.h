// Diffs of scripts: what a person sees when a conversion isn't what was wanted. Blanks at a line's end and
// bytes that don't print are made visible, since a wrong one of them is a wrong output.
#pragma once

#include <string>

// A text with its unprintable bytes as \n, \r, \t, \xNN, and a backslash doubled.
std::string escaped(const std::string &text);

// A unified diff from want to got, with three lines of context; empty if they are equal.
std::string unified_diff(const std::string &want, const std::string &got);
