#include "run_report.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <set>

namespace fs = std::filesystem;
using json = nlohmann::json;

bool has(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

void report_test::SetUp()
{
    base =
        fresh_folder(std::string("report/") + testing::UnitTest::GetInstance()->current_test_info()->name());
    folder = base / "work";
    fs::create_directories(folder);
}

report_result report_test::run(const std::string &arguments, const std::string &before)
{
    setenv("FOLDER", folder.c_str(), 1);
    setenv("PROGRAM", TEST_PROGRAM, 1);
    setenv("CONVERTER", TEST_CONVERTER, 1);
    std::string command = "cd \"$FOLDER\" && ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0 " + before +
                          " \"$PROGRAM\" " + arguments + " >../out 2>../err </dev/null";
    int status = system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(base / "out"), read_file(base / "err")};
}

void report_test::write(const std::string &name, const std::string &bytes)
{
    write_file(folder / name, bytes);
}

std::string report_test::read(const std::string &name)
{
    return read_file(folder / name);
}

void report_test::edit(const std::string &name, const std::string &from, const std::string &to)
{
    std::string text = read(name);
    size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from << " isn't in " << name << ":\n" << text;
    write(name, text.replace(at, from.size(), to));
}

json report_test::report_of(const std::string &arguments)
{
    return json::parse(run("--json - " + arguments).out)["files"][0];
}

std::string report_test::output_state()
{
    return report_of("a.mrl")["output"];
}

std::string report_test::states()
{
    return states(report_of("a.mrl"));
}

std::string report_test::states(const json &report)
{
    std::string found;
    for (const json &item : report["items"])
        found += std::to_string(item["line"].get<int>()) + " " + item["kind"].get<std::string>() + " " +
                 item["state"].get<std::string>() + "\n";
    return found;
}

void report_test::expect_after_edit(const std::string &from, const std::string &to, const std::string &state)
{
    edit("a_conv.mrl", from, to);
    EXPECT_TRUE(has(states(), state)) << state << "\n" << states() << read("a_conv.mrl");
}

std::string report_test::names(const std::string &inside)
{
    std::set<std::string> sorted;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder / inside))
        sorted.insert(entry.path().filename().string());
    std::string all;
    for (const std::string &name : sorted)
        all += (all.empty() ? "" : " ") + name;
    return all;
}
