// The page: the parts of src/report/page with the report as data between them, so that it needs nothing but
// itself. Each script comes with its items and, apart from them, with its lines, which the page reads when
// they are opened.
#include "report/lines.h"
#include "report/page_parts.h"
#include "report/show.h"
#include "report/writers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

using json = nlohmann::ordered_json;

constexpr size_t line_shown = 2000; // characters of a line
constexpr std::string_view css_mark = "/* CSS */";
constexpr std::string_view js_mark = "/* JS */";
constexpr std::string_view data_mark = "<!-- DATA -->";

// The commands whose sections of the guide the page needs.
static std::set<std::string> commands_used;

static void put(FILE *file, std::string_view text)
{
    fwrite(text.data(), 1, text.size(), file);
}

// Data in a script element: nothing in it may look like a tag or like the end of the element.
static void put_data(FILE *file, const char *kind, const json &value)
{
    std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    std::string safe;
    safe.reserve(text.size() + text.size() / 8);
    for (size_t at = 0; at < text.size(); at++) {
        std::string_view rest = std::string_view(text).substr(at, 3);
        if (rest[0] == '<' || rest[0] == '>' || rest[0] == '&') {
            safe += rest[0] == '<' ? "\\u003c" : rest[0] == '>' ? "\\u003e" : "\\u0026";
        } else if (rest == "\xE2\x80\xA8" || rest == "\xE2\x80\xA9") {
            safe += rest[2] == '\xA8' ? "\\u2028" : "\\u2029";
            at += 2;
        } else {
            safe += rest[0];
        }
    }
    put(file, "<script type=\"application/json\" class=\"");
    put(file, kind);
    put(file, "\">");
    put(file, safe);
    put(file, "</script>\n");
}

void page_start(FILE *file)
{
    std::string_view page = page_html;
    size_t css = page.find(css_mark);
    put(file, page.substr(0, css));
    put(file, page_css);
    page.remove_prefix(css + css_mark.size());
    put(file, page.substr(0, page.find(data_mark)));
}

// ---- One script ----

static json page_item(const report_item &item)
{
    return {item.kind,    item.line,      item.last_line, item.output_line,       item.output_lines,
            item.command, item.statement, item.detail,    state_words[item.state]};
}

static void add_line(json *lines, std::string_view line)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    std::string text = shown_whole(line.substr(0, line_shown));
    lines->push_back(line.size() > line_shown ? text + " ..." : text);
}

// The lines of a script; null if it is too long to be shown.
static json source_body(const std::string &path)
{
    struct body {
        json lines = json::array();
        size_t size = 0;
    } body;
    (void)lines_read(
        path,
        [](uint64_t, std::string_view line, void *context) {
            auto *taken = static_cast<struct body *>(context);
            taken->size += line.size() + 1;
            if (taken->size <= body_kept)
                add_line(&taken->lines, line);
        },
        &body);
    return body.size <= body_kept ? body.lines : json();
}

static json output_body(std::string_view output)
{
    if (output.size() >= body_kept)
        return {};
    json lines = json::array();
    while (!output.empty()) {
        size_t end = std::min(output.find('\n'), output.size());
        add_line(&lines, output.substr(0, end));
        output.remove_prefix(std::min(end + 1, output.size()));
    }
    return lines;
}

static json pairs_body(const script_bodies &bodies)
{
    json pairs = json::array();
    for (const script_bodies::pair &pair : bodies.pairs) {
        pairs.push_back(pair.line);
        pairs.push_back(pair.output_line);
    }
    return pairs;
}

void page_script(FILE *file, const script_report &script, const script_bodies &bodies)
{
    json items = json::array();
    for (const report_item &item : script.items) {
        items.push_back(page_item(item));
        commands_used.insert(item.command);
    }
    put_data(file, "script",
             {{"path", shown(script.path)},
              {"output", shown(script.output_path)},
              {"statements", script.statements},
              {"older", script.output_older},
              {"items", std::move(items)}});
    if (script.items.empty()) {
        put_data(file, "body", {});
        return;
    }
    put_data(file, "body",
             {{"old", source_body(script.path)},
              {"new", output_body(bodies.output)},
              {"pairs", pairs_body(bodies)}});
}

// ---- The guides ----

// The sections of a guide under headings of a level, by heading; a heading may name several, with commas.
static json guide_sections(std::string_view guide, std::string_view level,
                           const std::set<std::string> &wanted)
{
    json sections = json::object();
    while (!guide.empty()) {
        size_t start = guide.find("\n" + std::string(level));
        if (start == std::string_view::npos)
            break;
        guide.remove_prefix(start + 1 + level.size());
        size_t title_end = std::min(guide.find('\n'), guide.size());
        std::string_view titles = guide.substr(0, title_end);
        std::string_view text = guide.substr(title_end);
        text = text_trimmed(
            text.substr(0, std::min({text.find("\n## "), text.find("\n### "), text.find("\n<a id=")})));
        while (!titles.empty()) {
            size_t end = std::min(titles.find(", "), titles.size());
            std::string title(titles.substr(0, end));
            if (wanted.count(title) != 0)
                sections[title] = text;
            titles.remove_prefix(std::min(end + 2, titles.size()));
        }
    }
    return sections;
}

void page_end(FILE *file, const report_totals &totals)
{
    json kinds = json::array();
    std::set<std::string> words;
    for (const kind_row &row : kind_table) {
        kinds.push_back(
            {{"word", row.word}, {"title", row.title}, {"to_do", row.to_do}, {"mend", row.mend_in_script}});
        words.insert(row.word);
    }
    put_data(file, "report",
             {{"scripts", totals.scripts},
              {"statements", totals.statements},
              {"done", totals.done},
              {"kinds", std::move(kinds)},
              {"commands", guide_sections(commands_md, "### ", commands_used)},
              {"guide", guide_sections(finishing_md, "## ", words)}});
    commands_used.clear();
    std::string_view page = page_html;
    page.remove_prefix(page.find(data_mark) + data_mark.size());
    size_t js = page.find(js_mark);
    put(file, page.substr(0, js));
    put(file, page_js);
    put(file, page.substr(js + js_mark.size()));
}
