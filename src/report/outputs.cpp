#include "report/outputs.h"

#include "platform/script_names.h"
#include "report/files.h"
#include "report/memory/memory.h"
#include "report/messages.h"
#include "report/show.h"
#include "report/writers/writers.h"

#include <stdlib.h>

#include <algorithm>
#include <set>
#include <unordered_set>

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

// The files that no output may be: the scripts, their outputs and what is in their memories.
static std::unordered_set<std::string> files_taken(const std::vector<script_path> &scripts)
{
    std::unordered_set<std::string> taken;
    std::set<std::string> memories;
    auto take = [&taken](const std::string &path) {
        if (std::string identity = file_identity(path); !identity.empty())
            taken.insert(identity);
    };
    for (const script_path &script : scripts) {
        take(script.path);
        take(output_path_of(script.path));
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

// Why a path can't be an output; null if it can.
static const char *refusal(const std::string &path, const std::unordered_set<std::string> &taken)
{
    if (is_script_name(path) || taken.count(file_identity(path)) != 0)
        return "it is a script, the output of one, or in a memory of conversions";
    return is_in_memory(path) ? "it is in a memory of conversions" : nullptr;
}

static bool paths_allowed(const std::vector<std::string> &paths, const std::vector<script_path> &scripts)
{
    std::unordered_set<std::string> taken = files_taken(scripts);
    std::unordered_set<std::string> used;
    for (const std::string &path : paths) {
        if (path.empty() || path == "-")
            continue;
        const char *reason = refusal(path, taken);
        bool twice = !used.insert(path_real(path)).second;
        std::string identity = file_identity(path);
        twice |=
            !identity.empty() && file_kind_of(path, true) == FILE_REGULAR && !used.insert(identity).second;
        if (reason != nullptr || twice) {
            report_trouble("won't write " + shown(path) + ": " +
                           (reason != nullptr ? reason : "it is another output"));
            return false;
        }
    }
    return true;
}

// ---- Opening and closing ----

static bool output_open(report_output *output, const std::string &path)
{
    output->path = path;
    if (path.empty())
        return true;
    if (path == "-") {
        output->file = stdout;
        return true;
    }
    file_kind kind = file_kind_of(path, true);
    if (kind == FILE_REGULAR || kind == FILE_NONE)
        output->temporary = file_beside(path_real(path), ".part");
    output->file = file_open(output->temporary.empty() ? path : output->temporary);
    if (output->file == nullptr)
        report_trouble("can't write " + shown(path) + ": " + file_fault());
    else if (!output->temporary.empty())
        file_take_mode(output->temporary, path);
    return output->file != nullptr;
}

// Ends an output; whole tells whether it is to take the place of what was there.
static void output_close(report_output *output, bool whole)
{
    if (output->file == nullptr)
        return;
    bool failed = ferror(output->file) != 0;
    failed |= (output->file == stdout ? fflush(stdout) : fclose(output->file)) != 0;
    output->file = nullptr;
    if (!output->temporary.empty()) {
        if (failed || !whole)
            (void)file_remove(output->temporary);
        else
            failed = !file_rename(output->temporary, path_real(output->path));
    }
    if (failed)
        report_trouble("can't write " + (output->path == "-" ? "standard output" : shown(output->path)));
}

static std::vector<report_output *> all_of(report_outputs *outputs)
{
    return {&outputs->text, &outputs->csv, &outputs->json, &outputs->html, &outputs->sarif};
}

void outputs_abandon(report_outputs *outputs)
{
    for (report_output *output : all_of(outputs))
        output_close(output, false);
}

// Standard output carries the text unless something else goes there.
bool outputs_open(const report_options &options, const std::vector<script_path> &scripts,
                  report_outputs *outputs)
{
    std::vector<std::string> paths = {options.csv, options.json, options.html, options.sarif};
    bool taken = std::find(paths.begin(), paths.end(), "-") != paths.end();
    if (!paths_allowed(paths, scripts))
        return false;
    bool opened = output_open(&outputs->text, options.quiet || taken ? "" : "-") &&
                  output_open(&outputs->csv, options.csv) && output_open(&outputs->json, options.json) &&
                  output_open(&outputs->html, options.html) && output_open(&outputs->sarif, options.sarif);
    const char *no_color = getenv("NO_COLOR");
    outputs->color = is_terminal(stdout) && (no_color == nullptr || *no_color == 0);
    if (!opened)
        outputs_abandon(outputs);
    return opened;
}

// ---- Writing ----

void outputs_start(const report_outputs &outputs, const std::string &folder_key)
{
    if (outputs.csv.file != nullptr)
        csv_start(outputs.csv.file);
    if (outputs.json.file != nullptr)
        json_start(outputs.json.file);
    if (outputs.html.file != nullptr)
        page_start(outputs.html.file, folder_key);
    if (outputs.sarif.file != nullptr)
        sarif_start(outputs.sarif.file);
}

void outputs_script(const report_outputs &outputs, const report_options &options, const script_report &script,
                    const script_bodies &bodies, bool first)
{
    if (outputs.text.file != nullptr)
        text_script(outputs.text.file, script, options, outputs.color);
    if (outputs.csv.file != nullptr)
        csv_script(outputs.csv.file, script);
    if (outputs.json.file != nullptr)
        json_script(outputs.json.file, script, first);
    if (outputs.html.file != nullptr)
        page_script(outputs.html.file, script, bodies);
    if (outputs.sarif.file != nullptr)
        sarif_script(outputs.sarif.file, script);
}

void outputs_end(report_outputs *outputs, const report_totals &totals)
{
    if (outputs->text.file != nullptr)
        text_totals(outputs->text.file, totals);
    if (outputs->json.file != nullptr)
        json_end(outputs->json.file, totals);
    if (outputs->html.file != nullptr)
        page_end(outputs->html.file, totals);
    if (outputs->sarif.file != nullptr)
        sarif_end(outputs->sarif.file);
    for (report_output *output : all_of(outputs))
        output_close(output, true);
}
