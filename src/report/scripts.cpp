#include "report/scripts.h"

#include "platform/platform.h"
#include "report/files.h"
#include "report/show.h"
#include "support/text.h"

#include <algorithm>

static bool equal_nocase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return char_lower(a) == char_lower(b); });
}

// Tells whether a name in a folder is a script's, and none of an output.
static bool is_script_name(std::string_view name)
{
    if (name.size() < 4)
        return false;
    std::string_view extension = name.substr(name.size() - 4);
    std::string_view base = name.substr(0, name.size() - 4);
    constexpr std::string_view suffix = output_suffix;
    bool output =
        base.size() >= suffix.size() && equal_nocase(base.substr(base.size() - suffix.size()), suffix);
    return !output && (equal_nocase(extension, ".mrl") || equal_nocase(extension, ".mrp"));
}

std::string output_path_of(const std::string &path)
{
    std::string output = path;
    return output.insert(plat_extension_start(path.c_str()), output_suffix);
}

struct script_walk {
    std::vector<std::string> scripts;
    void (*trouble)(const std::string &line);
};

static void tell_unreadable(const script_walk *walk, const std::string &path)
{
    walk->trouble("can't read " + shown(path) + ": " + file_fault());
}

// Folders below a folder are searched after its files; links to folders aren't followed, so that a walk ends.
static void walk_folder(script_walk *walk, const std::string &folder)
{
    std::vector<std::string> names;
    if (!folder_names(folder, &names)) {
        tell_unreadable(walk, folder);
        return;
    }
    std::vector<std::string> folders;
    for (const std::string &name : names) {
        std::string path = path_join(folder, name);
        if (file_kind_of(path, false) == FILE_FOLDER)
            folders.push_back(path);
        else if (is_script_name(name) && file_kind_of(path, true) == FILE_REGULAR)
            walk->scripts.push_back(path);
    }
    for (const std::string &path : folders)
        walk_folder(walk, path);
}

std::vector<std::string> scripts_find(const std::vector<std::string> &paths,
                                      void (*trouble)(const std::string &line))
{
    script_walk walk{{}, trouble};
    for (const std::string &path : paths)
        switch (file_kind_of(path, true)) {
        case FILE_NONE: tell_unreadable(&walk, path); break;
        case FILE_REGULAR: walk.scripts.push_back(path); break;
        case FILE_FOLDER: walk_folder(&walk, path); break;
        default: trouble(shown(path) + " is neither a script nor a folder"); break;
        }
    return walk.scripts;
}
