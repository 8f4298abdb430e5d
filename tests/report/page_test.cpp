// What the page holds as data, and the file from which a browser shows it.
#include "report/desktop.h"
#include "report/writers/writers.h"

#include "common/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using json = nlohmann::json;

// The page of one script.
static std::string page_of(const script_run &run)
{
    fs::path path = fresh_folder("report_page") / "page.html";
    FILE *file = fopen(path.c_str(), "wb");
    report_options options;
    options.folder_key = "k3y";
    page_writer.start(file, options);
    page_writer.script(file, run);
    page_writer.end(file, {});
    fclose(file);
    return read_file(path);
}

// What a page holds in the data element of a class.
static json data_of(const std::string &page, const std::string &name)
{
    std::string start = "<script type=\"application/json\" class=\"" + name + "\">";
    size_t from = page.find(start) + start.size();
    return json::parse(page.substr(from, page.find("</script>", from) - from));
}

static report_item item_of(item_kind kind, uint32_t line, uint64_t written, uint64_t lines)
{
    report_item item{};
    item.kind = kind;
    item.state = STATE_OPEN;
    item.line = item.last_line = line;
    item.output_line = written;
    item.output_lines = lines;
    item.command = "LINE";
    return item;
}

static std::string numbered(const std::string &word, int count)
{
    std::string text;
    for (int i = 1; i <= count; i++)
        text += word + std::to_string(i) + "\n";
    return text;
}

// Written line 5 is edited, line 6 is gone, and two lines are new before line 7.
TEST(page, holds_the_lines_that_are_shown_and_no_others)
{
    script_run run;
    script_report &script = run.report;
    script.items = {item_of(ITEM_FROZEN, 5, 5, 1), item_of(ITEM_LOST, 5, 5, 1), item_of(ITEM_LOST, 20, 20, 2),
                    item_of(ITEM_GONE, 40, 40, 0)};
    script.items[0].command = "ARC";
    run.script = numbered("s", 50);
    run.now = numbered("w", 50);
    run.there = "";
    for (uint64_t i = 1; i <= 50; i++) {
        script.there_of.push_back(i < 5 ? i : i < 7 ? 0 : i + 1);
        *run.there += i == 5 ? "mine\n" : i == 6 ? "n1\nn2\n" : " w" + std::to_string(i) + " \r\n";
    }
    std::string page = page_of(run);
    json rows = data_of(page, "script")["rows"];
    ASSERT_EQ(rows.size(), 4u); // two commands in line 5
    EXPECT_EQ(rows[0].dump().substr(0, 9), R"([5,5,"ARC)");
    json body = data_of(page, "body");
    ASSERT_EQ(body.size(), 4u);
    EXPECT_EQ(body[0].dump(), R"([[3,["s3","s4","s5","s6","s7"]],[5,["mine","n1","n2"]],[5,["w5"]]])")
        << "three lines for the one that was written";
    EXPECT_EQ(body[2].dump(), R"([[18,["s18","s19","s20","s21","s22"]],[21,[" w20 "," w21 "]],[20,[]]])")
        << "the same but for blanks";
    EXPECT_EQ(body[3].dump(), R"([[38,["s38","s39","s40","s41","s42"]],[0,[]],[40,[]]])");
}

// Items that begin or end beyond the texts, no text at all, and a statement of very many lines.
TEST(page, takes_items_beyond_the_texts)
{
    script_run run;
    script_report &script = run.report;
    script.items = {item_of(ITEM_LOST, 1, 3, 9), item_of(ITEM_LOST, 9, 9, UINT64_MAX),
                    item_of(ITEM_STOPPED, 2, 0, 0)};
    script.items[2].last_line = UINT32_MAX;
    run.script = "a\nb\nc";
    run.now = "x\ny\nz";
    json body = data_of(page_of(run), "body");
    EXPECT_EQ(body.dump(), R"([[[1,["a","b","c"]],[0,[]],[3,["z"]]],[[1,["a","b","c"]],[0,[]],[0,[]]],)"
                           R"([[7,[]],[0,[]],[9,[]]]])");
    run.script = "";
    EXPECT_TRUE(data_of(page_of(run), "body").is_null());
}

// Rows are bytes, which the page gives back as they are; nothing that a script holds becomes an element.
TEST(page, keeps_bytes_and_escapes_tags)
{
    script_run run;
    script_report &script = run.report;
    script.path = "</script><b>.mrl";
    script.items = {item_of(ITEM_UNKNOWN, 1, 1, 1)};
    script.items[0].source = "\xE9\xFF<!--\xC3\xA9";
    run.script = "<!-- \x01\xE9\n";
    run.now = "</SCRIPT>\n";
    std::string page = page_of(run);
    EXPECT_EQ(page.find("</script><b>"), std::string::npos);
    EXPECT_EQ(page.find("<!-- \\"), std::string::npos);
    EXPECT_EQ(page.find("</SCRIPT>"), std::string::npos);
    EXPECT_EQ(data_of(page, "accept")[0], "</script><b>.mrl,unknown,LINE,\u00E9\u00FF<!--\u00C3\u00A9,,,");
    EXPECT_EQ(data_of(page, "body")[0][0][1][0], "<!-- \\x01\u00E9");
    EXPECT_EQ(data_of(page, "report")["folder"], "k3y");
}

#ifndef _WIN32

static mode_t mode_of(const fs::path &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST(open_page, keeps_its_file_to_the_user)
{
    fs::path folder = fresh_folder("report_open");
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    std::string path = open_page_path("k3y");
    EXPECT_EQ(path, folder / "murlreport/k3y.html");
    EXPECT_EQ(mode_of(folder / "murlreport"), 0700u);
    EXPECT_EQ(mode_of(path), 0600u);
    // A file of before is replaced, a link to elsewhere not followed.
    fs::remove(path);
    write_file(folder / "other", "kept");
    fs::create_symlink(folder / "other", path);
    EXPECT_EQ(open_page_path("k3y"), path);
    EXPECT_EQ(mode_of(path), 0600u);
    EXPECT_FALSE(fs::is_symlink(path));
    EXPECT_EQ(read_file(folder / "other"), "kept");
    // A folder that others can read, or that is a link, isn't used.
    chmod((folder / "murlreport").c_str(), 0755);
    EXPECT_EQ(open_page_path("k3y"), "");
    fs::rename(folder / "murlreport", folder / "elsewhere");
    chmod((folder / "elsewhere").c_str(), 0700);
    fs::create_directory_symlink(folder / "elsewhere", folder / "murlreport");
    EXPECT_EQ(open_page_path("k3y"), "");
    // Without a runtime folder it is one of the user's name among the temporary ones.
    unsetenv("XDG_RUNTIME_DIR");
    setenv("TMPDIR", folder.c_str(), 1);
    EXPECT_EQ(open_page_path("k3y"), folder / ("murlreport-" + std::to_string(geteuid())) / "k3y.html");
    unsetenv("TMPDIR");
}

TEST(open_page, starts_the_browser_and_reports_its_failure)
{
    fs::path folder = fresh_folder("report_opener");
    const char *path = getenv("PATH");
    std::string before = path != nullptr ? path : "";
    auto opens = [&](const std::string &script) {
        for (const char *name : {"xdg-open", "open"}) {
            write_file(folder / name, "#!/bin/sh\n" + script);
            fs::permissions(folder / name, fs::perms::owner_all);
        }
        return open_page("/some where/x.html");
    };
    setenv("PATH", (folder.string() + ":" + before).c_str(), 1);
    EXPECT_TRUE(opens("printf %s \"$1\" >'" + (folder / "opened").string() + "'\necho noise\n"));
    EXPECT_EQ(read_file(folder / "opened"), "/some where/x.html");
    EXPECT_FALSE(opens("exit 3\n"));
    setenv("PATH", "/nowhere", 1);
    EXPECT_FALSE(open_page("/x.html"));
    setenv("PATH", before.c_str(), 1);
}

#endif
