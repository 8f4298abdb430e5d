// The page: the parts of src/report/page with the report as data between them, so that it needs nothing but
// itself. Each script comes with its statements and, apart from them, with the lines that they show, which
// the page reads when one of them is opened.
#include "report/files.h"
#include "report/memory/accepted.h"
#include "report/memory/text_lines.h"
#include "report/show.h"
#include "report/writers/guide.h"
#include "report/writers/json_text.h"
#include "report/writers/writers.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

constexpr size_t text_max = 4u << 20; // bytes of a text of which lines are shown
constexpr size_t line_shown = 1000;   // bytes of a line
constexpr uint64_t lines_shown = 40;  // lines of a statement in an output
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
    for (char c : json_text(value))
        if (c == '<' || c == '>' || c == '&')
            safe += fmt::format("\\u{:04x}", c);
        else
            safe += c;
    put(file, fmt::format("<script type=\"application/json\" class=\"{}\">{}</script>\n", kind, safe));
}

static void page_start(FILE *file, const report_options &options)
{
    page_folder = options.folder_key;
    std::string_view page = page_html;
    put(file, page.substr(0, page.find(data_mark)));
}

// ---- What a statement has become ----

// Lines from one on. Numbers count from 1.
struct page_range {
    uint64_t from = 0;
    uint64_t count = 0;
};

struct page_texts {
    text_lines script, there, written;
    // For each line written, and for the end, the last line of the output that is there which stands for one
    // before it; 0: there is none.
    std::vector<uint64_t> before;
};

// A text that the page shows lines of; empty if that would be too long.
static text_lines limited_lines(std::string_view text)
{
    return text_split(text.size() <= text_max ? text : std::string_view());
}

static page_texts texts_of(const script_run &run)
{
    std::string_view there = run.there ? *run.there : std::string_view();
    page_texts texts{limited_lines(run.script), limited_lines(there), limited_lines(run.now), {0}};
    for (uint64_t line : run.report.there_of)
        texts.before.push_back(std::max(line, texts.before.back()));
    texts.before.resize(line_count(texts.written) + 1, texts.before.back());
    return texts;
}

// The lines of a range that there are.
static std::vector<std::string_view> lines_in(const text_lines &text, page_range range)
{
    std::vector<std::string_view> lines;
    for (uint64_t line = range.from; line > 0 && line - range.from < range.count && line <= line_count(text);
         line++) {
        auto index = static_cast<size_t>(line - 1);
        lines.push_back(lines_between(text, index, index + 1));
    }
    return lines;
}

// What stands for a statement in the output that is there: its own lines, and what is between its
// neighbours'.
static page_range there_range(const page_texts &texts, const report_item &item)
{
    size_t count = line_count(texts.written);
    if (item.output_line == 0 || item.output_line > count)
        return {};
    auto first = static_cast<size_t>(item.output_line - 1);
    size_t end = first + static_cast<size_t>(std::min<uint64_t>(item.output_lines, count - first));
    const std::vector<uint64_t> &before = texts.before;
    bool starts = first < end && before[first + 1] > before[first]; // the first line is there
    uint64_t from = starts ? before[first + 1] : before[first] + 1;
    uint64_t to = before[end] + 1;
    if (first == end || before[end] == before[end - 1]) { // the last line isn't there
        auto next = std::upper_bound(before.begin(), before.end(), before[end]);
        to = next != before.end() ? *next : line_count(texts.there) + 1;
    }
    return to <= from ? page_range{} : page_range{from, std::min(to - from, lines_shown)};
}

// ---- One script ----

// Lines as the page has them: the number of the first one, and their texts.
static json page_lines(uint64_t from, const std::vector<std::string_view> &lines)
{
    json texts = json::array();
    for (std::string_view line : lines) {
        line.remove_suffix(line_end(line).size());
        texts.push_back(shown_whole(line.substr(0, line_shown)) + (line.size() > line_shown ? " ..." : ""));
    }
    return json::array({from, std::move(texts)});
}

// The lines that a statement shows: of the script, of the output that is there, and where they differ what
// would be written.
static json page_body(const page_texts &texts, const report_item &item, uint64_t last)
{
    uint64_t from = item.line > context_lines ? item.line - context_lines : 1;
    page_range there = there_range(texts, item);
    std::vector<std::string_view> there_lines = lines_in(texts.there, there);
    std::vector<std::string_view> written =
        lines_in(texts.written, {item.output_line, std::min(item.output_lines, lines_shown)});
    if (std::equal(there_lines.begin(), there_lines.end(), written.begin(), written.end(),
                   [](auto a, auto b) { return text_trimmed(a) == text_trimmed(b); }))
        written.clear();
    return json::array({page_lines(from, lines_in(texts.script, {from, last + context_lines + 1 - from})),
                        page_lines(there.from, there_lines), page_lines(item.output_line, written)});
}

// The row of accepted.csv that a tick saves; the page has bytes as characters.
static std::string row_of(const std::string &path, const report_item &item)
{
    std::string row = accepted_row_of(path, item);
    row.pop_back(); // the line end
    return bytes_shown(row);
}

static void page_script(FILE *file, const script_run &run)
{
    const script_report &script = run.report;
    std::string path = path_text(path_of(script.path).lexically_normal());
    page_texts texts = texts_of(run);
    std::map<std::pair<uint32_t, std::string>, std::vector<const report_item *>> rows; // by line and command
    for (const report_item &item : script.items)
        rows[{item.line, item.command}].push_back(&item);
    json list = json::array();
    json body = json::array();
    json accepts = json::array();
    for (const auto &[key, items] : rows) {
        const report_item &first = *items.front();
        uint64_t last = std::clamp<uint64_t>(first.last_line, first.line, first.line + lines_shown - 1);
        commands_used.insert(key.second);
        body.push_back(page_body(texts, first, last));
        json kinds = json::array();
        for (const report_item *item : items) {
            kinds.push_back(json::array({item->kind, item_state_word(*item), item->detail, item->summed}));
            accepts.push_back(row_of(path, *item));
        }
        list.push_back(json::array({first.line, last, first.command, shown(first.source), std::move(kinds)}));
    }
    put_data(file, "script",
             {{"path", shown(script.path)},
              {"outputPath", shown(script.output_path)},
              {"output", output_state_words[script.output]},
              {"older", script.output_older},
              {"rows", std::move(list)}});
    put_data(file, "body", texts.script.body.empty() ? json() : std::move(body));
    put_data(file, "accept", accepts);
}

static void page_end(FILE *file, const report_totals &totals)
{
    json kinds = json::array();
    for (const kind_row &row : kind_table)
        kinds.push_back({{"word", row.word},
                         {"label", row.label},
                         {"title", row.title},
                         {"to_do", row.to_do},
                         {"mend", row.mend_in_script}});
    put_data(file, "report",
             {{"folder", page_folder},
              {"header", accepted_header()},
              {"statements", totals.statements},
              {"kinds", std::move(kinds)},
              {"commands", guide_commands(commands_used)},
              {"guide", guide_kinds()}});
    commands_used.clear();
    std::string_view page = page_html;
    put(file, page.substr(page.find(data_mark) + data_mark.size()));
}

const report_writer page_writer = {page_start, page_script, page_end};
