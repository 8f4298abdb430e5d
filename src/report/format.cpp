// fmt, compiled here once. The other files include fmt/core.h, which only declares it: a file that includes
// all of fmt takes ten times as long to compile.
#define FMT_HEADER_ONLY
#include <fmt/format.h>

#include <stdio.h>

#include <string>

// The functions are inline in the header; that their addresses are kept makes the compiler emit them.
extern std::string (*const fmt_format)(fmt::string_view, fmt::format_args);
std::string (*const fmt_format)(fmt::string_view, fmt::format_args) = fmt::vformat;
extern void (*const fmt_print)(FILE *, fmt::string_view, fmt::format_args);
void (*const fmt_print)(FILE *, fmt::string_view, fmt::format_args) = fmt::vprint;
