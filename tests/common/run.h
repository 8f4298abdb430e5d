// Runs the converter in the test's own process, and sets up what a unit needs.
#pragma once

#include "platform/platform.h"
#include "source/src_stream.h"

#include <stdio.h>

#include <filesystem>
#include <string>
#include <vector>

std::string read_file(const std::filesystem::path &path);
void write_file(const std::filesystem::path &path, const std::string &bytes);

// True for a script of the tree. A name that ends in _conv is an output that somebody has made there.
bool is_script(const std::filesystem::path &path);

// A text of one NUL, to be joined with others.
inline const std::string nul(1, '\0');

// Text repeated.
std::string times(size_t count, const std::string &text);

// The result of eval_expr for a text, with the bytes after it that have to be readable.
const double *evaluate(const std::string &text);

// An empty folder under the build folder, which stays for a person to look at.
std::filesystem::path fresh_folder(const std::string &name);

// Puts all state that outlives a file back to what it is when the process starts.
void reset_run();

// Number of this process's open files.
int open_files();

struct run_result {
    int status;          // of conv_main
    std::string printed; // standard output
};

// A whole run over paths, with folder as current directory. State isn't reset.
run_result run_converter(const std::filesystem::path &folder, const std::vector<std::string> &paths);

// The output for one script, from a state that is reset first. key may be a hook that enciphered sources
// need, read_limit the bytes that are read of it at a time.
std::string converted(const std::string &script, void (*key)(const char *, key_record *) = nullptr,
                      size_t read_limit = SIZE_MAX);

// An open file that holds text, closed at the end.
struct source_stream {
    explicit source_stream(const std::string &text);
    ~source_stream();
    source_stream(const source_stream &) = delete;
    plat_file *stream;

private:
    FILE *file;
    plat_file opened;
};

// Gathers what is written to out_file from its making until text().
struct output_capture {
    output_capture();
    ~output_capture();
    output_capture(const output_capture &) = delete;
    std::string text();

private:
    FILE *file;
    bool open = true;
};

// Makes the per-file objects anew, as the driver does for each file, so that a unit can work without a
// driver.
void file_objects();

// Opens text as the current source, with fresh per-file objects. The stream is at the first statement.
struct script_source : source_stream {
    explicit script_source(const std::string &text);
};
