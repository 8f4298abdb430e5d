#include "report/outputs.h"

#include "platform/script_names.h"
#include "report/files.h"
#include "report/memory/memory.h"
#include "report/messages.h"
#include "report/show.h"

#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

// ---- What isn't written over ----

static bool is_in_memory(const std::string &path)
{
    std::filesystem::path real = path_of(path_real(path));
    return std::find(real.begin(), real.end(), path_of(memory_folder_name)) != real.end();
}

static bool is_script_name(const std::string &path)
{
    return name_kind_of(path.c_str()) != NAME_OTHER || name_kind_of(path_real(path).c_str()) != NAME_OTHER;
}

// The files that no output may be: the scripts, their outputs, what is in their memories, and the ticks.
static std::unordered_set<std::string> files_taken(const report_options &options,
                                                   const std::vector<script_path> &scripts)
{
    std::unordered_set<std::string> taken;
    std::set<std::string> memories;
    auto take = [&taken](const std::string &path) {
        if (std::string identity = file_identity(path); !identity.empty())
            taken.insert(identity);
    };
    take(options.accept_from);
    for (const script_path &script : scripts) {
        take(script.path);
        take(output_path_of(script.path));
        taken.insert(path_real(output_path_of(script.path))); // that may not be there yet
        memories.insert(path_join(path_folder(script.path), memory_folder_name));
    }
    for (const std::string &memory : memories) {
        std::vector<std::string> names;
        if (file_kind_of(memory, true) == FILE_FOLDER && folder_names(memory, &names))
            for (const std::string &name : names)
                take(path_join(memory, name));
    }
    return taken;
}

// Why a path can't be an output; null if it can. It is added to those that are used.
static const char *refusal(const std::string &path, const std::unordered_set<std::string> &taken,
                           std::unordered_set<std::string> *used)
{
    std::string identity = file_identity(path), real = path_real(path);
    if (is_script_name(path) || taken.count(identity) != 0 || taken.count(real) != 0)
        return "it is a script, the output of one, the file of ticks, or a file in .murlreport";
    if (is_in_memory(path))
        return "it is a file in .murlreport";
    bool regular = file_kind_of(path, true) == FILE_REGULAR; // one file may have two names
    bool is_new = used->insert(real).second && (!regular || used->insert(identity).second);
    return is_new ? nullptr : "it is another output";
}

static bool paths_allowed(const report_options &options, const std::vector<script_path> &scripts)
{
    std::vector<std::string> paths;
    for (const std::string &path : {options.csv, options.json, options.html, options.sarif})
        if (!path.empty() && path != "-")
            paths.push_back(path);
    if (paths.empty())
        return true;
    const std::unordered_set<std::string> taken = files_taken(options, scripts);
    std::unordered_set<std::string> used;
    for (const std::string &path : paths)
        if (const char *reason = refusal(path, taken, &used); reason != nullptr) {
            report_trouble("won't write " + shown(path) + ": " + reason);
            return false;
        }
    return true;
}

// ---- Opening and closing ----

static bool output_open(report_output *output)
{
    const std::string &path = output->path;
    if (path == "-") {
        output->file = stdout;
        return true;
    }
    file_kind kind = file_kind_of(path, true);
    if (kind == FILE_REGULAR || kind == FILE_NONE)
        output->temporary = file_beside(path_real(path), ".part");
    output->is_new = kind == FILE_NONE;
    output->file = file_open(output->temporary.empty() ? path : output->temporary);
    if (output->file == nullptr)
        report_failed("write", path);
    else if (!output->temporary.empty())
        file_take_mode(output->temporary, path);
    return output->file != nullptr;
}

// Closes an output, which replaces what was there if it is whole.
static void output_close(const report_output &output, bool whole)
{
    bool failed = ferror(output.file) != 0;
    failed |= (output.file == stdout ? fflush(stdout) : fclose(output.file)) != 0;
    if (whole && output.is_new && file_kind_of(output.path, true) != FILE_NONE) {
        report_trouble("won't write " + shown(output.path) + ": this run has written something else there");
        whole = false;
    }
    if (!output.temporary.empty()) {
        if (failed || !whole)
            (void)file_remove(output.temporary);
        else
            failed = !file_rename(output.temporary, path_real(output.path));
    }
    if (failed)
        report_trouble("can't write " + (output.path == "-" ? "standard output" : shown(output.path)));
}

void outputs_abandon(report_outputs *outputs)
{
    for (const report_output &output : *outputs)
        output_close(output, false);
    outputs->clear();
}

// Standard output carries the text unless something else goes there.
bool outputs_open(const report_options &options, const std::vector<script_path> &scripts,
                  report_outputs *outputs)
{
    std::vector<std::pair<const report_writer *, std::string>> wanted = {{&csv_writer, options.csv},
                                                                         {&json_writer, options.json},
                                                                         {&page_writer, options.html},
                                                                         {&sarif_writer, options.sarif}};
    if (!paths_allowed(options, scripts))
        return false;
    auto is_standard = [](const auto &output) { return output.second == "-"; };
    if (!options.quiet && std::none_of(wanted.begin(), wanted.end(), is_standard))
        wanted.emplace_back(&text_writer, "-");
    for (const auto &[writer, path] : wanted) {
        report_output output{writer, path, nullptr, {}, false};
        if (!path.empty() && !output_open(&output)) {
            outputs_abandon(outputs);
            return false;
        }
        if (!path.empty())
            outputs->push_back(std::move(output));
    }
    for (const report_output &output : *outputs)
        output.writer->start(output.file, options);
    return true;
}

// ---- Writing ----

void outputs_script(const report_outputs &outputs, const script_run &run)
{
    for (const report_output &output : outputs)
        output.writer->script(output.file, run);
}

void outputs_end(report_outputs *outputs, const report_totals &totals)
{
    for (const report_output &output : *outputs) {
        output.writer->end(output.file, totals);
        output_close(output, true);
    }
    outputs->clear();
}
