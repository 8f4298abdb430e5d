// SARIF 2.1.0: the kinds as rules, the items as results, for tools that show findings of many programs.
#include "report/files.h"
#include "report/memory/accepted.h"
#include "report/memory/memory.h"
#include "report/writers/guide.h"
#include "report/writers/json_text.h"
#include "report/writers/writers.h"

#include <fmt/core.h>

#include <ctype.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <utility>

static bool first_result;
static std::map<std::string, uint64_t> prints; // of the script's results, how many alike

static json rules()
{
    json rules = json::array();
    std::map<std::string, std::string> sections = guide_kinds();
    for (const kind_row &row : kind_table) {
        std::string whole = fmt::format("{}. {}", row.title, row.to_do);
        const std::string &section = sections[row.word].empty() ? whole : sections[row.word];
        rules.push_back({{"id", row.word},
                         {"name", row.label},
                         {"shortDescription", {{"text", row.title}}},
                         {"fullDescription", {{"text", whole}}},
                         {"help", {{"text", section}, {"markdown", section}}},
                         {"defaultConfiguration", {{"level", row.level}}}});
    }
    return rules;
}

// A path as a relative reference or, if it is absolute, as a file: address.
static std::string uri_of(const std::string &path)
{
    std::filesystem::path normal = path_of(path).lexically_normal();
    std::string uri = normal.is_absolute() ? "file://" : "";
    std::string text = path_text(normal);
    if (normal.is_absolute() && text[0] != '/' && text[0] != '\\')
        uri += '/';
    for (char c : text) {
        bool plain = isalnum(static_cast<unsigned char>(c)) != 0 || strchr("-._~/", c) != nullptr;
        if (c == '\\' && std::filesystem::path::preferred_separator == '\\')
            uri += '/';
        else if (plain || (c == ':' && normal.is_absolute()))
            uri += c;
        else
            uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return uri;
}

static void sarif_start(FILE *file, const report_options &)
{
    first_result = true;
    fputs(
        "{\"version\":\"2.1.0\",\"$schema\":"
        "\"https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json\","
        "\"runs\":[{\"tool\":{\"driver\":",
        file);
    put_json(file, {{"name", "murlreport"}, {"version", MURL_VERSION}, {"rules", rules()}});
    fputs("},\"columnKind\":\"utf16CodeUnits\",\"results\":[", file);
}

static void sarif_script(FILE *file, const script_run &run)
{
    const script_report &script = run.report;
    std::string uri = uri_of(script.path);
    std::string name = path_name(script.path);
    prints.clear();
    for (const report_item &item : script.items) {
        json suppressions = json::array();
        if (item.state == STATE_ACCEPTED)
            suppressions.push_back({{"kind", "external"}, {"status", "accepted"}});
        std::string print = hash_of(accepted_row_of(name, item));
        uint64_t alike = ++prints[print];
        json region = {{"startLine", item.line}, {"endLine", std::max(item.line, item.last_line)}};
        fputs(std::exchange(first_result, false) ? "\n" : ",\n", file);
        put_json(
            file,
            {{"ruleId", kind_table[item.kind].word},
             {"ruleIndex", static_cast<int>(item.kind)},
             {"level", kind_table[item.kind].level},
             {"message",
              {{"text", fmt::format("{}{}{}", item.command, item.command.empty() ? "" : ": ", item.detail)}}},
             {"locations",
              {{{"physicalLocation",
                 {{"artifactLocation", {{"uri", uri}}}, {"region", std::move(region)}}}}}},
             {"partialFingerprints", {{"item/v1", fmt::format("{}:{}", print, alike)}}},
             {"suppressions", std::move(suppressions)}});
    }
}

static void sarif_end(FILE *file, const report_totals &)
{
    fputs("\n]}]}\n", file);
}

const report_writer sarif_writer = {sarif_start, sarif_script, sarif_end};
