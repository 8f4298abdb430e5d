// Accepted items: what somebody has looked at and said to be all right as it is, in accepted.csv of a
// folder's memory.
//
// A row speaks of items that are alike: of one script, kind, command, statement and detail, between the same
// statements. It accepts as many of them as its count says; where there are more, all of them are open.
#pragma once

#include "report/item.h"
#include "report/memory/memory.h"

#include <stdint.h>

#include <functional>
#include <map>
#include <string>

inline constexpr char accepted_name[] = "accepted.csv";

struct accepted_count {
    uint64_t count;   // items that are accepted
    uint64_t matched; // items of this run that the row speaks of
    std::string reason;
};

// By the row's columns up to before and after, as one row of CSV.
struct accepted_rows {
    std::map<std::string, accepted_count> rows;
    bool changed = false;
    bool unusable = false; // the file is there and can't be used: it is left as it is
};

// The first line of such a file, without its line end.
std::string accepted_header();

// The row of an item, in the script's own bytes. In a folder's memory a script goes by its name, in a file of
// ticks by its path.
std::string accepted_row_of(const std::string &script, const report_item &item);

// Reads the rows of a file, and adds them to those that are there, counts and all. False, and reported, if it
// can't be read or is no such file.
bool accepted_read(const std::string &path, accepted_rows *rows);

// The rows of a folder's memory; none if there are none. What can't be used is reported.
accepted_rows accepted_load(const folder_memory &memory);

// Accepts the items of a script that the rows speak of, and notes how many they matched. Returns how many
// open items that settles.
uint64_t accepted_apply(accepted_rows *rows, script_report *report);

// Adds rows for the items that are chosen and open, and accepts them, and with each what can't be told from
// it. Returns how many there were.
uint64_t accepted_add(accepted_rows *rows, script_report *report,
                      const std::function<bool(const report_item &)> &chosen, const std::string &reason);

// The same for the items whose rows are in a file of ticks, as many as each says.
uint64_t accepted_add_ticked(accepted_rows *rows, accepted_rows *ticks, script_report *report);

// Writes the rows, sorted, if they have changed. False, and reported, if that can't be done.
bool accepted_save(const folder_memory &memory, accepted_rows *rows);

// The script of a row, and what the row says for people.
std::string accepted_script_of(const std::string &row);
std::string accepted_row_shown(const std::string &row);
