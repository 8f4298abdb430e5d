#include "report/files.h"

#include <errno.h>

#include <algorithm>
#include <fstream>

namespace fs = std::filesystem;

static std::error_code last_fault;

// Notes why a call failed; true if it didn't.
static bool succeeded(const std::error_code &fault)
{
    if (fault)
        last_fault = fault;
    return !fault;
}

static bool failed_by_errno()
{
    last_fault = std::error_code(errno, std::generic_category());
    return false;
}

std::string file_fault()
{
    // The C library's words, which are ASCII everywhere; the system's own may be in any code page.
    std::error_condition reason = last_fault.default_error_condition();
    bool known = reason.category() == std::generic_category();
    return known ? reason.message() : "error " + std::to_string(last_fault.value());
}

file_kind file_kind_of(const std::string &path, bool links)
{
    std::error_code fault;
    fs::file_status status =
        links ? fs::status(path_of(path), fault) : fs::symlink_status(path_of(path), fault);
    switch (status.type()) {
    case fs::file_type::none:
    case fs::file_type::not_found: last_fault = fault; return FILE_NONE;
    case fs::file_type::regular: return FILE_REGULAR;
    case fs::file_type::directory: return FILE_FOLDER;
    case fs::file_type::symlink: return FILE_LINK;
    default: return FILE_OTHER;
    }
}

bool folder_names(const std::string &path, std::vector<std::string> *names)
{
    std::error_code fault;
    fs::directory_iterator entry(path_of(path), fault);
    for (; !fault && entry != fs::directory_iterator(); entry.increment(fault))
        names->push_back(path_text(entry->path().filename()));
    std::sort(names->begin(), names->end());
    return succeeded(fault);
}

bool folder_make(const std::string &path)
{
    std::error_code fault;
    fs::create_directory(path_of(path), fault);
    return succeeded(fault) && file_kind_of(path, false) == FILE_FOLDER;
}

std::string path_join(const std::string &folder, const std::string &name)
{
    return folder.empty() ? name : path_text(path_of(folder) / path_of(name));
}

std::string path_folder(const std::string &path)
{
    return path_text(path_of(path).parent_path());
}

std::string path_name(const std::string &path)
{
    return path_text(path_of(path).filename());
}

std::string path_real(const std::string &path)
{
    constexpr int links_max = 40; // more are a circle
    std::error_code fault;
    fs::path target = path_of(path);
    // A link to a file that isn't there yet isn't followed by the library.
    for (int links = 0; fs::is_symlink(fs::symlink_status(target, fault)) && links < links_max; links++)
        target = target.parent_path() / fs::read_symlink(target, fault);
    fs::path whole = fs::absolute(target, fault);
    fs::path real = fs::weakly_canonical(whole, fault);
    return fault ? path : path_text(real);
}

std::string file_beside(const std::string &path, const char *ending)
{
    std::string beside = path + ending;
    for (int number = 2; file_kind_of(beside, false) != FILE_NONE; number++)
        beside = path + ending + std::to_string(number);
    return beside;
}

bool file_read(const std::string &path, std::string *bytes)
{
    bytes->clear();
    errno = 0;
    std::ifstream file(path_of(path), std::ios::binary);
    if (!file)
        return failed_by_errno();
    char block[65536];
    while (file.read(block, sizeof block), file.gcount() > 0)
        bytes->append(block, static_cast<size_t>(file.gcount()));
    return !file.bad() && file.eof() ? true : failed_by_errno();
}

static bool write_whole(const fs::path &path, std::string_view bytes)
{
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file ? true : failed_by_errno();
}

bool file_replace(const std::string &path, std::string_view bytes, const std::string &like)
{
    std::error_code fault;
    std::string real = path_real(path);
    fs::path target = path_of(real);
    bool there = fs::exists(target, fault);
    if (there && !fs::is_regular_file(target, fault))
        return write_whole(target, bytes);
    std::string temporary = file_beside(real, ".tmp");
    bool written = write_whole(path_of(temporary), bytes);
    if (written)
        file_take_mode(temporary, there ? real : like);
    if (written && file_rename(temporary, real))
        return true;
    fs::remove(path_of(temporary), fault);
    return false;
}

void file_take_mode(const std::string &path, const std::string &like)
{
    std::error_code fault;
    fs::file_status status = fs::status(path_of(like), fault);
    if (fs::exists(status))
        fs::permissions(path_of(path), status.permissions() & fs::perms::all, fault);
}

bool file_rename(const std::string &from, const std::string &to)
{
    std::error_code fault;
    fs::rename(path_of(from), path_of(to), fault);
    return succeeded(fault);
}

FILE *file_open(const std::string &path)
{
#ifdef _WIN32
    FILE *file = _wfopen(path_of(path).c_str(), L"wb");
#else
    FILE *file = fopen(path.c_str(), "wb");
#endif
    if (file == nullptr)
        (void)failed_by_errno();
    return file;
}

bool file_remove(const std::string &path)
{
    std::error_code fault;
    fs::remove(path_of(path), fault);
    return succeeded(fault);
}

bool file_is_older(const std::string &left, const std::string &right)
{
    std::error_code left_fault;
    std::error_code right_fault;
    auto left_time = fs::last_write_time(path_of(left), left_fault);
    auto right_time = fs::last_write_time(path_of(right), right_fault);
    return !left_fault && !right_fault && left_time < right_time;
}
