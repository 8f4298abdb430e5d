// What has become of a command's arguments: which failed, which were frozen, which are gone.
#pragma once

#include "report/item.h"
#include "report/journal.h"

// The id of IF, whose statement is the next one.
constexpr int32_t id_if = 503;

// Why the arguments of a statement failed and what is left of it.
std::string broken_detail(const journal_statement &statement);

// The hint for a statement whose arguments failed, from its lines of the script; empty if the cause isn't
// plain.
std::string broken_hint(std::string_view command, std::string_view source);

// Adds the items of a converted command's arguments to a list, of the kinds frozen and lost. summed is set
// where nothing but first attributes are gone.
struct argument_item {
    item_kind kind;
    bool summed;
    std::string detail;
};
void judge_arguments(const journal_statement &statement, std::vector<argument_item> *items);

// Tells whether an expression has the same value wherever it stands: it names no variable.
bool expression_is_constant(std::string_view text);
