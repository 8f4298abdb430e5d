#include "report/scripts.h"

#include "platform/script_names.h"
#include "report/files.h"
#include "report/show.h"

std::string output_path_of(const std::string &path)
{
    std::string output(path.size() + sizeof output_suffix, '\0');
    output_path_write(output.data(), path.c_str());
    output.resize(path.size() + sizeof output_suffix - 1);
    return output;
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
        if (file_kind_of(path, false) == FILE_FOLDER) {
            folders.push_back(path);
            continue;
        }
        name_kind kind = name_kind_of(path.c_str());
        if ((kind == NAME_SCRIPT || kind == NAME_LONE) && file_kind_of(path, true) == FILE_REGULAR)
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
