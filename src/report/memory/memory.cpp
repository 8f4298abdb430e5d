#include "report/memory/memory.h"

#include "report/csv.h"
#include "report/files.h"
#include "report/memory/text_lines.h"
#include "report/messages.h"
#include "report/show.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

static constexpr char written_name[] = "written.csv";
static constexpr char last_ending[] = ".last"; // no name here may end as a script's does
static constexpr char new_ending[] = ".new";
static const csv_row &written_head()
{
    static const csv_row head = {"output", "script_hash", "version", "collect_mode", "basedim_count"};
    return head;
}

static std::string folder_of(const folder_memory &memory)
{
    return path_join(memory.folder, memory_folder_name);
}

std::string memory_path(const folder_memory &memory, const std::string &name)
{
    return path_join(folder_of(memory), name);
}

std::string memory_last_name(const std::string &output)
{
    return output + last_ending;
}

std::string memory_new_name(const std::string &output)
{
    return output + new_ending;
}

constexpr uint64_t hash_start = 0xCBF29CE484222325; // FNV-1a

static uint64_t hash_add(uint64_t hash, std::string_view bytes)
{
    for (char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

std::string hash_of(std::string_view bytes)
{
    return fmt::format("{:016x}", hash_add(hash_start, bytes));
}

std::string script_hash_of(std::string_view script)
{
    uint64_t hash = hash_start;
    std::string_view rest = text_body(script), line;
    while (line_take(&rest, &line))
        hash = hash_add(hash_add(hash, text_trimmed(line)), "\n");
    return fmt::format("{:016x}", hash);
}

// True if a text has a line that version control writes around a conflict. One of them may be gone.
static bool has_conflict_markers(std::string_view text)
{
    for (const std::string marker : {"<<<<<<< ", ">>>>>>> "})
        if (text.substr(0, marker.size()) == marker || text.find("\n" + marker) != text.npos)
            return true;
    return false;
}

bool memory_read(const std::string &path, std::string *text, std::string_view now)
{
    if (!file_read(path, text))
        report_failed("read", path);
    else if (has_conflict_markers(*text) && !has_conflict_markers(now))
        report_trouble(shown(path) + " has conflict markers and isn't used; resolve them");
    else
        return true;
    text->clear();
    return false;
}

bool memory_table(const std::string &path, const csv_row &head, std::vector<csv_row> *rows)
{
    std::string text;
    if (!memory_read(path, &text))
        return false;
    *rows = csv_rows(text);
    std::string fault = "its first line isn't " + csv_text(head);
    fault.pop_back();
    if (!rows->empty() && (*rows)[0] == head) {
        auto whole = [&head](const csv_row &row) { return row.size() == head.size(); };
        auto row = std::find_if_not(rows->begin(), rows->end(), whole);
        if (row == rows->end()) {
            rows->erase(rows->begin());
            return true;
        }
        fault = fmt::format("its row {} doesn't have {} columns", row - rows->begin() + 1, head.size());
    }
    report_trouble(shown(path) + " isn't used: " + fault);
    rows->clear();
    return false;
}

static void read_written(folder_memory *memory)
{
    std::string path = memory_path(*memory, written_name);
    std::vector<csv_row> rows;
    if (file_kind_of(path, true) == FILE_NONE)
        return;
    memory->refused = !memory_table(path, written_head(), &rows);
    for (csv_row &row : rows) {
        rules_run_state started = {csv_number<int32_t>(row[3]), csv_number<int32_t>(row[4])};
        bool numbers =
            row[3] == std::to_string(started.collect_mode) && row[4] == std::to_string(started.basedim_count);
        if (numbers && memory->written.emplace(row[0], written_row{row[1], row[2], started}).second)
            continue;
        memory->refused = true;
        report_trouble(fmt::format("{} isn't used: the row of {} {}", shown(path), shown(row[0]),
                                   numbers ? "is there twice" : "has no numbers"));
        return;
    }
}

folder_memory memory_load(const std::string &folder)
{
    folder_memory memory{folder, false, false, {}};
    switch (file_kind_of(folder_of(memory), false)) {
    case FILE_NONE: break;
    case FILE_FOLDER:
        if (file_kind_of(path_join(folder_of(memory), "."), true) == FILE_FOLDER) {
            read_written(&memory);
            break;
        }
        memory.refused = true;
        report_trouble(shown(folder_of(memory)) + " can't be searched and isn't used");
        break;
    default:
        memory.refused = true;
        report_trouble(shown(folder_of(memory)) + " is a link or no folder and isn't used");
    }
    return memory;
}

std::optional<std::string> memory_last(const folder_memory &memory, const std::string &output,
                                       std::string_view now)
{
    std::string path = memory_path(memory, memory_last_name(output));
    std::string text;
    if (memory.refused || file_kind_of(path, false) != FILE_REGULAR)
        return {};
    if (!memory_read(path, &text, now))
        return {};
    return text;
}

const written_row *memory_row(const folder_memory &memory, const std::string &output)
{
    auto row = memory.written.find(output);
    return row != memory.written.end() ? &row->second : nullptr;
}

bool memory_knows(const folder_memory &memory, const std::string &output)
{
    return memory_row(memory, output) != nullptr ||
           (!memory.refused &&
            file_kind_of(memory_path(memory, memory_last_name(output)), false) != FILE_NONE);
}

bool memory_prepare(const folder_memory &memory)
{
    std::string probe = file_beside(memory_path(memory, "probe"), "");
    if (!memory.refused && folder_make(folder_of(memory)) && file_replace(probe, "", "") &&
        file_remove(probe))
        return true;
    report_trouble("nothing is converted or remembered in " +
                   (memory.folder.empty() ? "this folder" : shown(memory.folder)) + ": " +
                   (memory.refused ? "its .murlreport isn't used"
                                   : "can't write to " + shown(folder_of(memory)) + ": " + file_fault()));
    return false;
}

bool memory_can_write(const folder_memory &memory, const std::string &name)
{
    std::string path = memory_path(memory, name);
    file_kind kind = file_kind_of(path, false);
    if (kind != FILE_NONE && kind != FILE_REGULAR)
        report_trouble("can't write " + shown(path) + ": it is a link or no file");
    return kind == FILE_NONE || kind == FILE_REGULAR;
}

bool memory_write(const folder_memory &memory, const std::string &name, std::string_view text)
{
    std::string path = memory_path(memory, name);
    return memory_can_write(memory, name) && (file_replace(path, text, "") || report_failed("write", path));
}

bool memory_remember(folder_memory *memory, const std::string &output, std::string_view text, written_row row)
{
    if (!memory_write(*memory, memory_last_name(output), text))
        return false;
    memory->written[output] = std::move(row);
    memory->changed = true;
    memory_end_conflict(*memory, output);
    return true;
}

void memory_end_conflict(const folder_memory &memory, const std::string &output)
{
    (void)file_remove(memory_path(memory, memory_new_name(output)));
}

bool memory_save(folder_memory *memory)
{
    if (!std::exchange(memory->changed, false))
        return true;
    std::string text = csv_text(written_head());
    for (const auto &[output, row] : memory->written)
        text += csv_text({output, row.script_hash, row.version, std::to_string(row.started.collect_mode),
                          std::to_string(row.started.basedim_count)});
    return memory_write(*memory, written_name, text);
}

// The outputs of which a memory has something.
static std::set<std::string> outputs_known(const folder_memory &memory)
{
    std::set<std::string> outputs;
    for (const auto &[output, row] : memory.written)
        outputs.insert(output);
    std::vector<std::string> names;
    if (file_kind_of(folder_of(memory), false) == FILE_FOLDER)
        (void)folder_names(folder_of(memory), &names);
    for (const std::string &name : names)
        for (std::string_view ending : {last_ending, new_ending})
            if (size_t at = name.rfind(ending); at != std::string::npos && at + ending.size() == name.size())
                outputs.insert(name.substr(0, at));
    return outputs;
}

void memory_prune(folder_memory *memory)
{
    if (memory->refused)
        return;
    for (const std::string &output : outputs_known(*memory)) {
        std::string script = output;
        if (size_t suffix = output.rfind("_conv"); suffix != std::string::npos)
            script.erase(suffix, 5);
        if (file_kind_of(path_join(memory->folder, script), true) != FILE_NONE)
            continue;
        memory->changed |= memory->written.erase(output) > 0;
        for (const char *ending : {last_ending, new_ending})
            if (std::string path = memory_path(*memory, output + ending); !file_remove(path))
                report_failed("remove", path);
        report_note("forgot " + shown(path_join(memory->folder, output)) + ", whose script is gone");
    }
}
