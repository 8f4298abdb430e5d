// The page: the parts of src/report/page with the report as data between them, so that it needs nothing but
// itself. Each script comes with its statements and, apart from them, with the lines that they show, which
// the page reads when one of them is opened.
#include "report/memory/accepted.h"
#include "report/show.h"
#include "report/writers/guide.h"
#include "report/writers/page_parts.h"
#include "report/writers/writers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <set>

using json = nlohmann::ordered_json;

constexpr size_t line_shown = 1000;   // bytes of a line
constexpr uint64_t lines_shown = 40;  // lines of a statement on a side
constexpr uint64_t context_lines = 2; // lines of the script before and after a statement
constexpr std::string_view data_mark = "<!-- DATA -->";

static std::set<std::string> commands_used; // whose sections of the guide the page needs
static std::string page_folder;             // the key of the ticks

static void put(FILE *file, std::string_view text)
{
    fwrite(text.data(), 1, text.size(), file);
}

// Data in a script element: nothing in it may look like a tag or like the end of the element.
static void put_data(FILE *file, const char *kind, const json &value)
{
    std::string safe;
    for (char c : value.dump(-1, ' ', false, json::error_handler_t::replace)) {
        if (c == '<' || c == '>' || c == '&')
            safe += c == '<' ? "\\u003c" : c == '>' ? "\\u003e" : "\\u0026";
        else
            safe += c;
    }
    put(file, "<script type=\"application/json\" class=\"");
    put(file, kind);
    put(file, "\">");
    put(file, safe);
    put(file, "</script>\n");
}

void page_start(FILE *file, const std::string &folder_key)
{
    page_folder = folder_key;
    std::string_view page = page_html;
    put(file, page.substr(0, page.find(data_mark)));
}

// ---- Lines ----

using text_lines = std::vector<std::string_view>;

static text_lines lines_of(std::string_view text)
{
    text_lines lines;
    while (!text.empty()) {
        size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

// Lines from one on. Numbers count from 1.
struct line_range {
    uint64_t from = 0;
    uint64_t count = 0;
};

static json line_shown_of(std::string_view line)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    std::string text = shown_whole(line.substr(0, line_shown));
    return line.size() > line_shown ? text + " ..." : text;
}

// The lines that some ranges hold, each once, as runs: the first one's number and their texts.
static json line_runs(const text_lines &lines, std::vector<line_range> ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const line_range &a, const line_range &b) { return a.from < b.from; });
    json runs = json::array();
    uint64_t next = 1; // the first line that no run holds
    for (const line_range &range : ranges) {
        uint64_t end = std::min<uint64_t>(range.from + range.count, lines.size() + 1);
        uint64_t from = std::max(range.from, next);
        if (from < end && (runs.empty() || from > next))
            runs.push_back(json::array({from, json::array()}));
        for (; from < end; from++)
            runs.back()[1].push_back(line_shown_of(lines[from - 1]));
        next = std::max(next, end);
    }
    return runs;
}

// ---- What a statement has become ----

// The texts of a script, as views of its bodies, and for each line written the nearest ones that the output
// that is there holds too.
struct page_texts {
    text_lines script;
    text_lines there;
    text_lines written;
    std::vector<uint64_t> there_of; // for each line written its line in the output that is there, or 0
    std::vector<uint64_t> before;   // the last such line before it
    std::vector<uint64_t> after; // the first such line from it on; lines of the output + 1 if there is none
};

static page_texts texts_of(const script_bodies &bodies)
{
    page_texts texts{
        lines_of(bodies.script), lines_of(bodies.there), lines_of(bodies.written), bodies.there_of, {}, {}};
    size_t count = texts.written.size();
    texts.there_of.resize(count);
    texts.before.resize(count + 1);
    texts.after.assign(count + 1, texts.there.size() + 1);
    for (size_t i = 0; i < count; i++)
        texts.before[i + 1] = texts.there_of[i] != 0 ? texts.there_of[i] : texts.before[i];
    for (size_t i = count; i > 0; i--)
        texts.after[i - 1] = texts.there_of[i - 1] != 0 ? texts.there_of[i - 1] : texts.after[i];
    return texts;
}

static line_range written_range(const page_texts &texts, const report_item &item)
{
    if (item.output_lines == 0 || item.output_line == 0 || item.output_line > texts.written.size())
        return {};
    uint64_t left = texts.written.size() + 1 - item.output_line;
    return {item.output_line, std::min({item.output_lines, left, lines_shown})};
}

// What stands for a statement in the output that is there: its own lines, and what is between its
// neighbours'.
static line_range there_range(const page_texts &texts, const report_item &item)
{
    if (item.output_line == 0 || item.output_line > texts.written.size() || texts.there.empty())
        return {};
    size_t first = item.output_line - 1;
    size_t end = first + std::min<uint64_t>(item.output_lines, texts.written.size() - first);
    bool starts = first < end && texts.there_of[first] != 0;
    uint64_t from = starts ? texts.there_of[first] : texts.before[first] + 1;
    bool ends = first < end && texts.there_of[end - 1] != 0;
    uint64_t to = ends ? texts.there_of[end - 1] + 1 : texts.after[end];
    return to <= from ? line_range{} : line_range{from, std::min(to - from, lines_shown)};
}

// The lines of the ranges are the same but for white space at their ends.
static bool ranges_same(const page_texts &texts, line_range there, line_range written)
{
    auto left = texts.there.begin() + static_cast<ptrdiff_t>(there.count != 0 ? there.from - 1 : 0);
    auto right = texts.written.begin() + static_cast<ptrdiff_t>(written.count != 0 ? written.from - 1 : 0);
    return there.count == written.count &&
           std::equal(left, left + static_cast<ptrdiff_t>(there.count), right,
                      [](auto a, auto b) { return text_trimmed(a) == text_trimmed(b); });
}

// ---- One script ----

// A row of bytes: each becomes the character of its number, as which the page saves it.
static std::string bytes_shown(const std::string &bytes)
{
    std::string text;
    for (char c : bytes) {
        auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
    }
    return text;
}

// The lines that statements show, of the script, of the output that is there, and of what would be written.
using shown_ranges = std::array<std::vector<line_range>, 3>;

// A statement's row of the page, still without its items.
static json page_row(const page_texts &texts, const report_item &item, shown_ranges *ranges)
{
    uint64_t last = std::clamp<uint64_t>(item.last_line, item.line, item.line + lines_shown - 1);
    line_range written = written_range(texts, item);
    line_range there = there_range(texts, item);
    if (ranges_same(texts, there, written))
        written = {};
    uint64_t from = item.line > context_lines ? item.line - context_lines : 1;
    (*ranges)[0].push_back({from, last + context_lines + 1 - from});
    (*ranges)[1].push_back(there);
    (*ranges)[2].push_back(written);
    return json::array({item.line, last, there.from, there.count, written.from, written.count, item.command,
                        item.statement, json::array()});
}

static json page_item(const report_item &item)
{
    return json::array({item.kind, item_state_word(item), item.detail, item.summed});
}

void page_script(FILE *file, const script_report &script, const script_bodies &bodies)
{
    static const script_bodies none;
    page_texts texts = texts_of(script.items.empty() ? none : bodies);
    shown_ranges ranges;
    std::map<std::pair<uint32_t, std::string>, std::vector<const report_item *>> rows; // by line and command
    for (const report_item &item : script.items)
        rows[{item.line, item.command}].push_back(&item);
    json list = json::array();
    json accepts = json::array();
    for (const auto &[key, items] : rows) {
        commands_used.insert(key.second);
        list.push_back(page_row(texts, *items.front(), &ranges));
        for (const report_item *item : items) {
            list.back().back().push_back(page_item(*item));
            accepts.push_back(bytes_shown(item->row));
        }
    }
    put_data(file, "script",
             {{"path", shown(script.path)},
              {"outputPath", shown(script.output_path)},
              {"output", output_state_words[script.output]},
              {"older", script.output_older},
              {"rows", std::move(list)}});
    json body;
    if (!texts.script.empty())
        body = {{"old", line_runs(texts.script, ranges[0])},
                {"there", line_runs(texts.there, ranges[1])},
                {"written", line_runs(texts.written, ranges[2])}};
    put_data(file, "body", body);
    put_data(file, "accept", accepts);
}

void page_end(FILE *file, const report_totals &totals)
{
    json kinds = json::array();
    std::set<std::string> words;
    for (const kind_row &row : kind_table) {
        kinds.push_back({{"word", row.word},
                         {"label", row.label},
                         {"title", row.title},
                         {"to_do", row.to_do},
                         {"mend", row.mend_in_script}});
        words.insert(row.word);
    }
    put_data(file, "report",
             {{"folder", page_folder},
              {"header", accepted_header()},
              {"statements", totals.statements},
              {"kinds", std::move(kinds)},
              {"commands", guide_sections(commands_md, "### ", commands_used)},
              {"guide", guide_sections(finishing_md, "## ", words)}});
    commands_used.clear();
    std::string_view page = page_html;
    put(file, page.substr(page.find(data_mark) + data_mark.size()));
}
