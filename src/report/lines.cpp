#include "report/lines.h"

#include <string.h>

#include <algorithm>
#include <array>

constexpr size_t block_size = 65536;

// Reads a file in blocks. False if it can't be opened.
template <typename take_block> static bool blocks_read(const std::string &path, take_block take)
{
    plat_file file;
    if (plat_open_input(path.c_str(), &file) != 0)
        return false;
    static std::array<char, block_size> block;
    while (size_t size = plat_read(&file, block.data(), block.size()))
        take(std::string_view(block.data(), size));
    plat_close(&file);
    return true;
}

bool lines_read(const std::string &path, void (*take)(uint64_t number, std::string_view line, void *context),
                void *context)
{
    std::string begun; // a line that goes on in the next block
    uint64_t number = 1;
    bool open = false;
    auto take_part = [&](std::string_view part, bool whole) {
        if (whole && begun.empty()) {
            take(number++, part.substr(0, line_kept), context);
            return;
        }
        begun.append(part.substr(0, line_kept - begun.size()));
        if (whole) {
            take(number++, begun, context);
            begun.clear();
        }
    };
    bool opened = blocks_read(path, [&](std::string_view block) {
        while (!block.empty()) {
            size_t end = block.find('\n');
            take_part(block.substr(0, end), end != std::string_view::npos);
            open = end == std::string_view::npos;
            block.remove_prefix(open ? block.size() : end + 1);
        }
    });
    if (open)
        take_part({}, true);
    return opened;
}

// Makes a number go on with one more value.
static void print_add(uint64_t *print, uint64_t value)
{
    *print = (*print ^ value) * 0x9E3779B97F4A7C15 + 0x632BE59BD9B4E019;
    *print ^= *print >> 29;
}

static void prints_add_line(line_prints *lines)
{
    print_add(&lines->sum, lines->print);
    if (lines->kept)
        lines->prints.push_back(lines->print);
    lines->print = 0;
    lines->begun = lines->cr = false;
}

void prints_add(line_prints *lines, std::string_view bytes)
{
    for (char c : bytes) {
        if (c == '\n') {
            prints_add_line(lines);
            continue;
        }
        if (lines->cr)
            print_add(&lines->print, '\r');
        lines->begun = true;
        lines->cr = c == '\r';
        if (!lines->cr)
            print_add(&lines->print, static_cast<unsigned char>(c));
    }
}

void prints_end(line_prints *lines)
{
    if (lines->begun)
        prints_add_line(lines);
}

bool prints_of_file(const std::string &path, line_prints *lines)
{
    bool opened = blocks_read(path, [lines](std::string_view block) { prints_add(lines, block); });
    prints_end(lines);
    return opened;
}
