// Edits of lines that were no well-formed lists.
#pragma once

#include "report/item.h"

#include <string_view>

// True if the line that is there no longer has the fault of an item of the kind form, nor another one
// instead.
bool form_is_mended(const report_item &item, std::string_view was, std::string_view there);
