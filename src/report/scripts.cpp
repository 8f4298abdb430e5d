#include "report/scripts.h"

#include "platform/script_names.h"
#include "report/files.h"
#include "report/memory/memory.h"
#include "report/messages.h"
#include "report/show.h"

#include <charconv>
#include <unordered_map>
#include <utility>

std::string output_path_of(const std::string &path)
{
    std::string output(path.size() + sizeof output_suffix, '\0');
    output_path_write(output.data(), path.c_str());
    output.pop_back();
    return output;
}

struct script_walk {
    scripts_found found;
    std::unordered_map<std::string, size_t> known; // index in found.scripts by the file's identity
    bool all;
    size_t met = 0; // scripts and lone outputs, those among them that were met before
};

// Reports a path that is nothing to read from.
static void report_no_script(const std::string &path)
{
    if (file_kind_of(path, true) == FILE_NONE)
        report_failed("read", path);
    else
        report_trouble(shown(path) + " is neither a script nor a folder");
}

// Adds a script, unless it was named before; lines that are named add up.
static void add_script(script_walk *walk, const std::string &path, uint32_t line)
{
    walk->met++;
    auto [known, is_new] = walk->known.emplace(file_identity(path), walk->found.scripts.size());
    if (is_new)
        walk->found.scripts.push_back({path, {}});
    else if (std::string first = walk->found.scripts[known->second].path; path_name(first) != path_name(path))
        report_note("skipped " + shown(path) + ", which is the same file as " + shown(first));
    std::vector<uint32_t> &lines = walk->found.scripts[known->second].lines;
    if (line == 0)
        lines.clear();
    else if (is_new || !lines.empty())
        lines.push_back(line);
}

// Folders below a folder are searched after its files; links to folders aren't followed, so that a walk ends.
static void walk_folder(script_walk *walk, const std::string &folder)
{
    std::vector<std::string> names;
    if (!folder_names(folder, &names)) {
        report_failed("read", folder);
        return;
    }
    std::vector<std::string> folders;
    for (const std::string &name : names) {
        std::string path = path_join(folder, name);
        file_kind kind = file_kind_of(path, false);
        if (kind == FILE_FOLDER && name == memory_folder_name)
            walk->found.folders.push_back(folder);
        else if (kind == FILE_FOLDER)
            folders.push_back(path);
        file_kind target = kind == FILE_LINK ? file_kind_of(path, true) : kind;
        if (target == FILE_FOLDER)
            continue;
        name_kind named = name_kind_of(path.c_str());
        if (named == NAME_SCRIPT && target == FILE_REGULAR) {
            add_script(walk, path, 0);
        } else if (named == NAME_SCRIPT) {
            report_no_script(path);
        } else if (named == NAME_LONE) {
            walk->met++;
            walk->found.lone.push_back(path);
        }
    }
    for (const std::string &path : folders)
        walk_folder(walk, path);
}

// FILE:LINE as its file, if it is one.
static std::string line_taken(const std::string &path, uint32_t *line)
{
    size_t colon = path.rfind(':');
    if (colon == std::string::npos || file_kind_of(path, true) != FILE_NONE)
        return path;
    const char *end = path.data() + path.size();
    auto result = std::from_chars(path.data() + colon + 1, end, *line);
    return result.ptr == end && result.ec == std::errc() && *line > 0 ? path.substr(0, colon) : path;
}

static void take_path(script_walk *walk, const std::string &path, uint32_t line)
{
    size_t before = walk->met;
    switch (file_kind_of(path, true)) {
    case FILE_REGULAR:
        if (!walk->all && name_kind_of(path.c_str()) == NAME_OUTPUT)
            report_note("skipped " + shown(path) + ", the output of a script beside it (--force reads it)");
        else
            add_script(walk, path, line);
        break;
    case FILE_FOLDER:
        walk_folder(walk, path);
        if (walk->met == before)
            report_trouble("no script in " + shown(path));
        break;
    default: report_no_script(path); break;
    }
}

scripts_found scripts_find(const std::vector<std::string> &paths, bool lines, bool all)
{
    script_walk walk{{}, {}, all};
    for (const std::string &path : paths) {
        uint32_t line = 0;
        std::string file = lines ? line_taken(path, &line) : path;
        take_path(&walk, file, line);
    }
    return std::move(walk.found);
}
