// Memory: what is kept of the conversions of a folder's scripts, in the folder .murlreport beside them.
//
// X_conv.mrl.last is what was written last for X.mrl, written.csv says of which script and by which version
// and run state, accepted.csv what somebody has accepted (accepted.h). They are plain sorted files, for a
// team's version control. A report alone writes none of them.
#pragma once

#include "report/csv.h"
#include "rules/rule_table.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr char memory_folder_name[] = ".murlreport";

// What written.csv has of an output.
struct written_row {
    std::string script_hash; // of the script's lines
    std::string version;     // of murlconv
    rules_run_state started; // the run's state before the script
};

// The memory of one folder.
struct folder_memory {
    std::string folder;                         // of the scripts; empty for the current one
    bool refused;                               // it is there and can't be used: nothing is read or written
    bool changed;                               // written differs from the file
    std::map<std::string, written_row> written; // by the output's name
};

// Reads the memory of a folder of scripts. What can't be used is reported.
folder_memory memory_load(const std::string &folder);

// Reads a file of a memory, or an output. False, and reported, if it can't be read, or if version control has
// left conflict markers in it, unless the text that is written now has such lines, too.
bool memory_read(const std::string &path, std::string *text, std::string_view now = {});

// Reads the rows of a table of a memory, which has a head and as many columns in each row. False, and
// reported, if it can't be read or is none.
bool memory_table(const std::string &path, const csv_row &head, std::vector<csv_row> *rows);

// The path of a file of the memory.
std::string memory_path(const folder_memory &memory, const std::string &name);

// Names in the memory: of what was written last to an output, and of what is written now for one that
// couldn't be merged.
std::string memory_last_name(const std::string &output);
std::string memory_new_name(const std::string &output);

// What was written last to an output, by its name; none if that isn't known, or if version control has left
// conflict markers in it, which is reported. now: what is written now, which may have such lines, too.
std::optional<std::string> memory_last(const folder_memory &memory, const std::string &output,
                                       std::string_view now);

// True if something was written to an output before.
bool memory_knows(const folder_memory &memory, const std::string &output);

// What written.csv has of an output; null if it has nothing. Good until the memory changes.
const written_row *memory_row(const folder_memory &memory, const std::string &output);

// Makes the folder, and tries whether it can be written to. False, and reported, if not.
bool memory_prepare(const folder_memory &memory);

// True if a name in the memory is free or that of a file; else that is reported.
bool memory_can_write(const folder_memory &memory, const std::string &name);

// Writes a file of the memory, which may not be a link. False, and reported, if that can't be done.
bool memory_write(const folder_memory &memory, const std::string &name, std::string_view text);

// Remembers what was written to an output, which ends a conflict. written.csv is written by memory_save.
// False, and reported, if it can't be kept.
bool memory_remember(folder_memory *memory, const std::string &output, std::string_view text,
                     written_row row);

// Removes what is written now for an output that couldn't be merged, if it is there.
void memory_end_conflict(const folder_memory &memory, const std::string &output);

// Writes written.csv if it has changed. False, and reported, if that can't be done.
bool memory_save(folder_memory *memory);

// Forgets the outputs whose scripts are gone, and reports each.
void memory_prune(folder_memory *memory);

// A hash in hexadecimal digits: of bytes, and of a script without what the habits of editors change, as
// written.csv has it.
std::string hash_of(std::string_view bytes);
std::string script_hash_of(std::string_view script);
