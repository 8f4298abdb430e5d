// murlreport: lists what is left to do after a conversion.
#include "platform/platform.h"
#include "report/desktop.h"
#include "report/messages.h"
#include "report/report.h"
#include "report/show.h"

#include <CLI/CLI.hpp>

#include <stdio.h>

#include <algorithm>
#include <exception>
#include <utility>

constexpr const char *description =
    "Lists what is left to do after the conversion of MURL scripts: by file, line and kind.\n"
    "A path is a script, or a folder that is searched for *.mrl and *.mrp.";

constexpr const char *statuses =
    "Exit status: 0 nothing is left, 1 something is left or an output isn't up to date, 2 something could "
    "not be done.";

static void define_options(CLI::App *app, report_options *asked)
{
    report_options &options = *asked;
    std::vector<std::string> words;
    for (const kind_row &row : kind_table)
        words.emplace_back(row.word);
    auto file = [app](const char *name, std::string *path, const char *help) {
        app->add_option(name, *path, help)->type_name("FILE");
    };
    app->add_option("paths", options.paths, "scripts and folders; with --accept also FILE:LINE")
        ->type_name("PATH");
    app->add_flag("--convert", options.convert, "convert what has changed; edited outputs are merged");
    app->add_flag("--open", options.open, "show the report in the browser");
    file("--html", &options.html, "write the report as a page; - for standard output");
    file("--csv", &options.csv, "write the items as CSV; - for standard output");
    file("--json", &options.json, "write the report as JSON; - for standard output");
    file("--sarif", &options.sarif, "write the items as SARIF 2.1.0; - for standard output");
    app->add_flag("--quiet", options.quiet, "no text on standard output");
    app->add_flag("--summary", options.summary, "leave the items out of the text");
    app->add_flag("--all", options.all, "list the items that the text sums up");
    auto take_kinds = [asked](const std::vector<std::string> &kinds) {
        for (const std::string &kind : kinds)
            asked->kinds.set(static_cast<size_t>(kind_find(kind)));
    };
    app->add_option_function<std::vector<std::string>>("--kind", take_kinds, "only items of these kinds")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember(words))
        ->type_name("K,...");
    app->add_option("--command", options.commands, "only items of these commands")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("W,...");
    app->add_flag("--accept", options.accept,
                  "accept the open items that --kind, --command or FILE:LINE select");
    app->add_option("--reason", options.reason, "with --accept: why")->needs("--accept")->type_name("TEXT");
    file("--accept-from", &options.accept_from, "accept the items that were ticked in the page and saved");
    app->add_flag("--prune", options.prune, "forget what was accepted or remembered of what is gone");
    app->add_flag("--adopt", options.adopt, "say that the outputs have all that is written now");
    app->add_flag("--one-run", options.one_run, "carry the SET COLLECT state from script to script");
    app->add_flag(
        "--force", options.force,
        "with --convert replace any output that can be read, with --adopt refuse none; read named outputs");
    app->set_version_flag("-V,--version", "murlreport " MURL_VERSION);
    app->footer(statuses);
}

// True if --accept says which items are meant.
static bool accept_is_narrow(const report_options &options)
{
    const std::vector<std::string> &paths = options.paths;
    auto has_line = [](const std::string &path) {
        size_t colon = path.find_last_not_of("0123456789");
        return colon != std::string::npos && colon + 1 < path.size() && path[colon] == ':';
    };
    bool lines = !paths.empty() && std::all_of(paths.begin(), paths.end(), has_line);
    return options.kinds.any() || !options.commands.empty() || lines;
}

static bool settle(report_options *asked)
{
    report_options &options = *asked;
    const char *fault = nullptr;
    if (options.paths.empty())
        fault = "a path is missing";
    else if ((options.csv == "-") + (options.json == "-") + (options.html == "-") + (options.sarif == "-") >
             1)
        fault = "only one of --csv, --json, --html and --sarif can go to standard output";
    else if (options.accept && !accept_is_narrow(options))
        fault = "--accept needs --kind, --command or FILE:LINE";
    else if (options.convert && options.adopt)
        fault = "--convert and --adopt exclude each other";
    if (fault != nullptr)
        report_trouble(std::string(fault) + " (murlreport --help lists the options)");
    options.filtered = (options.kinds.any() || !options.commands.empty()) && !options.accept;
    if (options.kinds.none())
        options.kinds.set();
    for (std::string &command : options.commands)
        command = text_upper(command);
    return fault == nullptr;
}

// A start from the desktop: what was dropped, or a folder that the user picks, is converted and the page
// shown. False if nothing was picked.
static bool take_desktop(report_options *options)
{
    options->convert = options->open = options->quiet = true;
    if (options->paths.empty())
        options->paths = {desktop_pick_folder()};
    return !options->paths.front().empty();
}

static int run(int argc, char **argv, bool desktop)
{
    CLI::App app(description, "murlreport");
    app.allow_windows_style_options(false); // a path may begin with a slash there too
    report_options options;
    define_options(&app, &options);
    try {
        app.parse(argc, argv);
        if (options.paths == std::vector<std::string>{"/?"})
            throw CLI::CallForHelp();
        if (desktop && !take_desktop(&options))
            return REPORT_DONE;
        return settle(&options) ? report_run(std::move(options)) : REPORT_TROUBLE;
    } catch (const CLI::Success &success) {
        return app.exit(success);
    } catch (const CLI::ParseError &error) {
        report_trouble(std::string(error.what()) + " (murlreport --help lists the options)");
    }
    return REPORT_TROUBLE;
}

int main(int argc, char **argv)
{
    if (plat_start(&argc, &argv) != 0)
        return REPORT_TROUBLE;
    // The desktop has paths for a program, no options.
    bool desktop = plat_is_own_console() &&
                   std::none_of(argv + 1, argv + argc, [](const char *word) { return word[0] == '-'; });
    int status = REPORT_TROUBLE;
    try {
        status = run(argc, argv, desktop);
    } catch (const std::exception &error) {
        report_trouble(error.what());
    }
    if (desktop && status == REPORT_TROUBLE)
        desktop_show_console();
    return status;
}
