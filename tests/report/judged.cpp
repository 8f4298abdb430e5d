#include "report/judged.h"

#include "common/run.h"
#include "report/findings/conversion.h"
#include "report/findings/judge.h"
#include "report/findings/statement.h"

#include <gtest/gtest.h>

#include <ctype.h>
#include <strings.h>

static judged_script *judging_to;

// A line that the new system reads over.
static bool is_skipped(const std::string &line)
{
    size_t at = line.find_first_not_of(" \t\r");
    if (at == std::string::npos || line.compare(at, 2, "//") == 0)
        return true;
    bool word = at + 3 >= line.size() || isalnum(static_cast<unsigned char>(line[at + 3])) == 0;
    return word && strncasecmp(line.c_str() + at, "REM", 3) == 0;
}

static void take_statement()
{
    for (const written_line &line : statement.lines)
        if (std::string text(line.text); line.inside ? !line.rest : !is_skipped(text))
            judging_to->live[statement.line].push_back(text);
    judge_statement();
}

judged_script judged(const std::string &script, rules_run_state state)
{
    static const std::filesystem::path path = fresh_folder("judged") / "a.mrl";
    judged_script result;
    const text_lines lines = text_split(script);
    judge_start(&result.report, lines);
    judging_to = &result;
    reset_run();
    write_file(path, script);
    EXPECT_TRUE(script_convert(path, &state, &result.output, take_statement));
    return result;
}

std::string items_of(const std::string &script, rules_run_state state)
{
    std::string items;
    for (const report_item &item : judged(script, state).report.items)
        items += std::to_string(item.line) + ": " + kind_table[item.kind].word + " " + item.command + ": " +
                 item.detail + "\n";
    return items;
}
