// Nothing is lost untold: over generated statements of every command, each argument that was typed is in a
// live line of its statement or in the detail of one of its items.
#include "report/judged.h"
#include "statements/command_table.h"

#include <gtest/gtest.h>

#include <random>

constexpr int rounds = 12; // statements of each command that isn't a system command

struct typed_argument {
    std::string text;  // as typed, without quotes; it occurs in no other statement
    std::string value; // what may stand for it: of a constant its integer, of a string the decoded one
    bool zero = false; // a constant 0 where nothing could be as well: nobody misses it
};

struct typed_statement {
    std::string line;
    std::vector<typed_argument> arguments;
};

class generator {
public:
    typed_statement statement(const cmd_row &row, int round)
    {
        typed_statement made{row.name, {}};
        int count = count_of(row, round);
        for (int i = 0; i < count; i++) {
            made.line += i == 0 ? " " : below(3) == 0 ? "," : ", ";
            add(row, i, round, &made);
        }
        if (below(8) == 0) {
            std::string comment = "// com" + unique();
            made.line += " " + comment;
            made.arguments.push_back({comment, "", false});
        }
        return made;
    }

private:
    int below(int limit)
    {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    }

    std::string unique()
    {
        return std::to_string(100000 + used++);
    }

    int count_of(const cmd_row &row, int round)
    {
        int count = row.spec_count;
        bool repeats = count > 0 && (row.spec[count - 1] & ARG_REPEAT) != 0;
        if (round == 0)
            return count; // all of them
        if (round == 1)
            return count + 2; // more than there are
        if (repeats && below(2) == 0)
            return count + below(28);
        int needed = 0;
        for (int i = 0; i < count; i++)
            needed = (row.spec[i] & ARG_OPTIONAL) == 0 && (row.spec[i] & ARG_REPEAT) == 0 ? i + 1 : needed;
        return needed + below(count - needed + 1);
    }

    void add(const cmd_row &row, int i, int round, typed_statement *made)
    {
        int at = std::min(i, row.spec_count - 1);
        uint8_t spec = at >= 0 ? row.spec[at] : 0;
        bool optional = (spec & ARG_OPTIONAL) != 0;
        if (optional && round > 0 && below(3) == 0)
            return; // a gap
        uint8_t type = spec & ARG_TYPE;
        typed_argument argument;
        std::string typed;
        if (i == 0 && round % 3 == 2 && special(row, &argument))
            typed = argument.text;
        else if (type >= ARG_LONG && type <= ARG_DOUBLE) {
            typed = argument.text = number(&argument.value);
            argument.zero = optional && argument.value == "0";
            if (is_translated(row, i + 1) && !argument.value.empty())
                argument.value = ", ";
        } else if ((type == ARG_STR || type == ARG_ITEM) && below(4) > 0)
            typed = string(&argument.text, &argument.value);
        else
            typed = argument.text = "$v" + unique();
        made->line += typed;
        made->arguments.push_back(argument);
    }

    // First arguments that a rule looks at, and what is written for them.
    static bool special(const cmd_row &row, typed_argument *argument)
    {
        static const struct {
            const char *command, *text, *value;
        } words[] = {{"CALL", "dotprod", "DOTPROD"},
                     {"SET", "Collect", ""},
                     {"DELENT", "-1.000", "-1"},
                     {"VIEW", "9.000", ""},
                     {"POLYGON", "2.000", ", "}};
        for (const auto &word : words)
            if (std::string(row.name) == word.command)
                *argument = {word.text, word.value, false};
        return !argument->text.empty();
    }

    // Arguments whose value is written as a number or word for it: the mode of a polygon, styles of a text.
    static bool is_translated(const cmd_row &row, int position)
    {
        return (row.id == 6 && position == 1) || ((row.id == 15 || row.id == 22) && position == 10) ||
               (row.id == 20 && position == 16);
    }

    std::string number(std::string *value)
    {
        std::string name = "n" + unique();
        std::string digits = unique();
        switch (below(5)) {
        case 0: return name;
        case 1: return digits + "+" + name;
        case 2: *value = std::to_string(stoi(digits) * 3); return "(" + digits + " * 3)";
        case 3: *value = "0"; return "0*" + digits;
        default: *value = digits; return digits;
        }
    }

    std::string string(std::string *content, std::string *value)
    {
        static const struct {
            const char *typed, *decoded; // null: it can't be read back
        } middles[] = {{"", ""},         {" ", " "},         {"%d", "%d"},      {"|", "|"},
                       {"\\t", "\t"},    {"\\x41", "x41"},   {"\\\\", nullptr}, {"\\n", nullptr},
                       {"\\0", "0"},     {"\\000", nullptr}, {"\\101", "A"},    {"\\134", nullptr},
                       {"\\\"", nullptr}};
        const auto &middle = middles[below(13)];
        std::string quote = below(6) == 0 ? "`" : "\"";
        std::string start = "s" + unique();
        std::string end = "e" + unique();
        *content = start + middle.typed + end;
        if (middle.decoded != nullptr)
            *value = start + middle.decoded + end;
        return quote + *content + quote;
    }

    std::mt19937 random{17};
    int used = 0;
};

static bool is_in(const std::vector<std::string> &texts, const std::string &text)
{
    for (const std::string &one : texts)
        if (one.find(text) != std::string::npos)
            return true;
    return false;
}

struct property_counts {
    int broken, arguments, by_text, by_value, told, lost, zeros;
};

// What was found in one statement.
struct statement_findings {
    std::vector<std::string> details;
    std::vector<std::string> lost;
    bool losing = false; // it lost something, or decoded it
    bool broken = false;
};

static void add_finding(statement_findings *found, const report_item &item)
{
    bool moved = item.detail.find(" has moved up: ") != std::string::npos;
    found->details.push_back(item.detail);
    found->broken |= item.kind == ITEM_BROKEN;
    found->losing |=
        (item.kind == ITEM_LOST && !moved) || item.kind == ITEM_DECODED || item.kind == ITEM_FROZEN;
    if (item.kind == ITEM_LOST)
        found->lost.push_back(item.detail);
}

static void check_statement(const typed_statement &typed, const statement_findings &found,
                            const std::vector<std::string> &live_lines, property_counts *counts)
{
    bool all_live = true;
    std::string about = typed.line + "\n";
    for (const std::string &text : found.details)
        about += "  item: " + text + "\n";
    for (const std::string &text : live_lines)
        about += "  live: " + text + "\n";
    for (const typed_argument &argument : typed.arguments) {
        bool text = is_in(live_lines, argument.text);
        bool live = text || (!argument.value.empty() && is_in(live_lines, argument.value));
        bool told = is_in(found.details, argument.text);
        bool lost = is_in(found.lost, argument.text);
        counts->arguments++;
        counts->by_text += text;
        counts->by_value += live && !text;
        counts->told += told;
        counts->lost += lost;
        counts->zeros += !live && !told && argument.zero;
        // A variable between quotes is a text, and no variable any more.
        bool quoted = argument.text[0] == '$' && is_in(live_lines, "\"" + argument.text + "\"");
        all_live &= text ? !quoted : live && argument.value != "0" && argument.value != ", ";
        EXPECT_TRUE(live || told || argument.zero) << argument.text << " is nowhere: " << about;
        EXPECT_FALSE(text && lost) << argument.text << " isn't lost: " << about;
    }
    EXPECT_FALSE(all_live && found.losing && !live_lines.empty()) << "nothing was lost: " << about;
}

TEST(property, nothing_is_lost_untold)
{
    generator make;
    std::vector<typed_statement> statements;
    std::string script = "SET COLLECT, 1\n";
    for (int i = 0; i < command_count; i++)
        for (int round = 0; round < (command_row_at(i).id < 1000 ? rounds : 2); round++) {
            statements.push_back(make.statement(command_row_at(i), round));
            script += statements.back().line + "\n";
        }
    judged_script result = judged(script);
    std::map<uint32_t, statement_findings> found;
    for (const report_item &item : result.report.items)
        add_finding(&found[item.line], item);
    property_counts counts{};
    for (size_t i = 0; i < statements.size(); i++) {
        auto line = static_cast<uint32_t>(i + 2);
        counts.broken += found[line].broken;
        if (!found[line].broken)
            check_statement(statements[i], found[line], result.live[line], &counts);
    }
    printf(
        "%zu statements, %d of them broken; of %d arguments of the others %d are in a live line, %d by their "
        "value, %d in an item, %d of them as lost, and %d are a 0 that nobody needs\n",
        statements.size(), counts.broken, counts.arguments, counts.by_text, counts.by_value, counts.told,
        counts.lost, counts.zeros);
    EXPECT_LT(counts.broken * 4, static_cast<int>(statements.size()));
    EXPECT_GT(counts.arguments, 3000);
}
