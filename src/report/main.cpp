// murlreport: tells what is left to do after a conversion.
#include "platform/platform.h"
#include "report/report.h"

#include <CLI/CLI.hpp>

#include <stdio.h>

constexpr const char *description =
    "Tells what is left to do after the conversion of MURL scripts: by file, line and kind.\n"
    "A path is a script, or a folder that is searched for *.mrl and *.mrp.";

constexpr const char *statuses = "Exit status: 0 nothing left, 1 something left, 2 trouble.";

// What the parser of the command line fills in, and what it can't check by itself.
struct command_line {
    report_options options;
    std::vector<std::string> kinds;
};

static void define_options(CLI::App *app, command_line *line)
{
    report_options &options = line->options;
    std::vector<std::string> words;
    for (const kind_row &row : kind_table)
        words.emplace_back(row.word);
    app->add_option("paths", options.paths, "scripts and folders")->type_name("PATH");
    app->add_option("--csv", options.csv, "write the items as CSV; - for standard output")->type_name("FILE");
    app->add_option("--json", options.json, "write the report as JSON; - for standard output")
        ->type_name("FILE");
    app->add_option("--html", options.html, "write the report as a page; - for standard output")
        ->type_name("FILE");
    app->add_flag("--quiet", options.quiet, "no text on standard output");
    app->add_option("--kind", line->kinds, "only items of these kinds")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember(words))
        ->type_name("K,...");
    app->add_option("--command", options.commands, "only items of these commands")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("W,...");
    app->add_flag("--summary", options.summary, "leave the items out of the text");
    app->add_flag("--all", options.all, "list the items that the text sums up by file");
    app->add_flag("--one-run", options.one_run, "carry the SET COLLECT state from script to script");
    app->add_flag("--convert", options.convert, "write each X_conv; one that was edited is kept");
    app->add_flag("--force", options.force, "with --convert: replace those too")->needs("--convert");
    app->set_version_flag("-V,--version", "murlreport " MURL_VERSION);
    app->footer(statuses);
}

static bool settle(command_line *line)
{
    report_options &options = line->options;
    for (const std::string &kind : line->kinds)
        options.kinds.set(static_cast<size_t>(kind_find(kind)));
    if (line->kinds.empty())
        options.kinds.set();
    for (std::string &command : options.commands)
        for (char &c : command)
            c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    if (options.paths.empty())
        report_trouble("a path is missing (murlreport --help tells more)");
    int taken = (options.csv == "-") + (options.json == "-") + (options.html == "-");
    if (taken > 1)
        report_trouble("only one of --csv, --json and --html can go to standard output");
    return taken <= 1 && !options.paths.empty();
}

static int run(int argc, char **argv)
{
    CLI::App app(description, "murlreport");
    app.allow_windows_style_options(false); // a path may begin with a slash there too
    command_line line;
    define_options(&app, &line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &success) {
        return app.exit(success);
    } catch (const CLI::ParseError &error) {
        report_trouble(std::string(error.what()) + " (murlreport --help tells more)");
        return REPORT_TROUBLE;
    }
    return settle(&line) ? report_run(line.options) : REPORT_TROUBLE;
}

int main(int argc, char **argv)
{
    if (plat_start() != 0)
        return REPORT_TROUBLE;
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        report_trouble(error.what());
        return REPORT_TROUBLE;
    }
}
