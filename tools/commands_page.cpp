// Writes docs/commands.md, the guide to what becomes of each command, from the rule tables and a file of
// example statements, which it converts.
//   commands_page EXAMPLES PAGE           writes the page
//   commands_page --check EXAMPLES PAGE   exit status 1 if the page isn't what would be written
//
// In the file of examples a line "== WORD" opens the examples of a command word, lines that begin with "> "
// are prose for its section, and all others are the statements.
#include "driver/batch.h"
#include "platform/platform.h"
#include "rules/rule_table.h"
#include "rules/tails.h"
#include "support/output.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using texts = std::vector<std::string>;

struct example {
    std::string prose;
    std::string source;
};

static int faults;

static void fault(const std::string &what)
{
    fprintf(stderr, "commands_page: %s\n", what.c_str());
    faults++;
}

static std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        fault("can't read " + path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The parts of a text between separators.
static texts split(const std::string &text, const std::string &separator)
{
    texts parts;
    size_t start = 0;
    for (size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + separator.size())
        parts.push_back(text.substr(start, end - start));
    parts.push_back(text.substr(start));
    return parts;
}

static std::string lower(std::string word)
{
    for (char &c : word)
        c = static_cast<char>(tolower(c));
    return word;
}

// ---- Examples ----

static std::map<std::string, example> read_examples(const std::string &path)
{
    std::map<std::string, example> examples;
    example *current = nullptr;
    std::istringstream lines(read_file(path));
    for (std::string line; std::getline(lines, line);) {
        if (line.substr(0, 3) == "== ") {
            current = &examples[line.substr(3)];
            if (!current->source.empty())
                fault("two examples of " + line.substr(3));
        } else if (current == nullptr) {
            fault("a line in front of the first example: " + line);
        } else if (line.substr(0, 2) == "> ") {
            current->prose += line.substr(2) + "\n";
        } else {
            current->source += line + "\n";
        }
    }
    return examples;
}

static std::string sunk;

static void sink(const char *bytes, size_t size)
{
    sunk.append(bytes, size);
}

// What the converter makes of a script, in a run of its own.
static std::string converted(const std::string &script)
{
    FILE *file = tmpfile();
    if (file == nullptr) {
        fault("can't make a temporary file");
        return "";
    }
    fwrite(script.data(), 1, script.size(), file);
    rewind(file);
    plat_file source{fileno(file)};
    sunk.clear();
    out_sink = sink;
    rules_run = {};
    out_open(plat_file{-1});
    if (pools_init() == 0)
        convert_file("example.mrl", &source);
    else
        fault("out of memory");
    out_close();
    fclose(file);
    return sunk;
}

// ---- Forms ----

// The spec byte of an argument, counted from 0, of the commands of an id.
static uint8_t spec_of(int id, int position)
{
    for (const command_source_row &row : command_rows)
        if (row.id == id)
            return spec_byte(row.spec, std::min(position, spec_length(row.spec) - 1));
    return 0;
}

// Adds the names that one part of an old form stands for: a3..a5 stands for a3, a4, a5.
static void add_names(const std::string &part, texts *names)
{
    size_t range = part.find("..");
    size_t digits = part.find_first_of("0123456789");
    if (range == std::string::npos) {
        names->push_back(part);
        return;
    }
    int to = atoi(part.c_str() + range + 2 + digits);
    for (int i = atoi(part.c_str() + digits); i <= to; i++)
        names->push_back(part.substr(0, digits) + std::to_string(i));
}

// Compares the argument at a position, from 0, with the spec of its command: a name that is a letter and a
// number has the argument's position and type, and what may be left out stands in brackets.
static void check_argument(const rule_row &row, int position, const std::string &name, bool optional)
{
    uint8_t spec = spec_of(row.id, position);
    static const char *const letters[] = {"s", "na", "na", "n", "na", "w", "w", "v", "s"};
    bool numbered = name.size() > 1 && isalpha(name[0]) != 0 && isdigit(name[1]) != 0;
    if (numbered && (name.substr(1) != std::to_string(position + 1) ||
                     strchr(letters[spec & ARG_TYPE], name[0]) == nullptr))
        fault(std::string(row.command) + ": the argument in position " + std::to_string(position + 1) +
              " is called " + name);
    if (optional != ((spec & (ARG_OPTIONAL | ARG_REPEAT)) != 0) && name != "-1")
        fault(std::string(row.command) + ": brackets around " + name);
}

// The names of the arguments of an old form.
static texts argument_names(const rule_row &row)
{
    texts names;
    bool optional = false;
    std::string part;
    for (const char *c = row.old_form;; c++) {
        if (*c == '[')
            optional = true;
        if (*c != 0 && strchr("[], ", *c) == nullptr) {
            part += *c;
            continue;
        }
        size_t known = names.size();
        if (!part.empty() && part != "...")
            add_names(part, &names);
        for (; known < names.size(); known++)
            check_argument(row, static_cast<int>(known), names[known], optional);
        part.clear();
        if (*c == ']')
            optional = false;
        if (*c == 0)
            break;
    }
    int slots = command_spec_count(row.id);
    int count = static_cast<int>(names.size());
    if (count != slots && !(command_repeats(row.id) && count > slots))
        fault(std::string(row.command) + ": the old form names " + std::to_string(count) + " arguments of " +
              std::to_string(slots));
    return names;
}

// The name of the argument in a slot; empty if the command has none there.
static std::string name_of(const texts &names, int slot)
{
    return slot >= 1 && slot <= static_cast<int>(names.size()) ? names[static_cast<size_t>(slot) - 1] : "";
}

// The names of the arguments in slots from first to last, each with the separator in front.
static std::string run_of(const texts &names, int first, int last, const std::string &separator = ", ")
{
    std::string run;
    for (int slot = first; slot <= last; slot++)
        if (std::string name = name_of(names, slot); !name.empty())
            run += separator + name;
    return run;
}

static std::string times(int count, const std::string &text)
{
    std::string all;
    for (int i = 0; i < count; i++)
        all += text;
    return all;
}

static std::string menu_of(const texts &names, int first)
{
    return ", \"" + name_of(names, first) + "|...|" + name_of(names, first + 8) + "\"";
}

static std::string tail_text(const form_piece &piece, const texts &names)
{
    int at = piece.slot;
    switch (piece.kind) {
    case TAIL_ATTR_COMMENT: return run_of(names, at, at + attr_count - 2);
    case TAIL_ATTR: return run_of(names, at + 1, at + attr_count - 1);
    case TAIL_TEXT_COMMENT:
        return "[" + run_of(names, at, at + 9) + run_of(names, at + 11, at + text_attr_count - 1) + "]";
    case TAIL_TEXT:
        return run_of(names, at + 3, at + 3) + run_of(names, at, at + 2) + run_of(names, at + 4, at + 5) +
               ", (" + name_of(names, at + 6) + ")" + run_of(names, at + 7, at + text_attr_count - 1) +
               times(at + text_attr_count - 1 - static_cast<int>(names.size()), ", ");
    case TAIL_MENU_MODE:
    case TAIL_GETMENU: return "[, ]";
    case TAIL_MENU_COMMENT: return run_of(names, at, at + 8, ",");
    case TAIL_MENU: return menu_of(names, at);
    case TAIL_GETMENU_COMMENT: return run_of(names, at, at + 10, ",");
    case TAIL_GETCUR_COMMENT:
        return "[" + run_of(names, at, at + 4) + "]" + run_of(names, at + 5, at + 13, ",") + "[, " +
               name_of(names, at + 15) + "]";
    case TAIL_GETCUR: return "[" + run_of(names, at, at + 4) + "]" + menu_of(names, at + 5);
    case TAIL_SCAN: return " " + name_of(names, at) + "[, " + name_of(names, at + 1) + ", ...]";
    default: return "";
    }
}

static std::string piece_text(const form_code &form, const form_piece &piece, const std::string &word,
                              const texts &names)
{
    std::string literal(form.text + piece.start, piece.size);
    std::string name = piece.slot == 0 ? word : name_of(names, piece.slot);
    switch (piece.kind) {
    case PUT_LITERAL: return literal;
    case PUT_TEXT: return literal + name;
    case PUT_LVAL:
    case PUT_IVAL:
    case PUT_DVAL:
    case PUT_NUMBER: return literal + "(" + name + ")";
    case PUT_IF_ANY: return name.empty() ? "" : "[" + literal + name + "]";
    case PUT_IF_SET: return "[" + literal + "(" + name + ")]";
    case PUT_LIST:
    case PUT_ITEMS: return "[" + literal + "...]";
    default: return literal + tail_text(piece, names);
    }
}

// A form with the names of the arguments in the places of their slots.
static std::string form_text(const form_code &form, const std::string &word, const texts &names)
{
    std::string text;
    for (int i = 0; i < form.pieces_used; i++)
        text += piece_text(form, form.pieces[i], word, names);
    return text;
}

// ---- The page ----

static const char page_head[] = R"(# What becomes of each command

For each command this page shows its arguments in the old dialect, a word for what becomes of it, the new form, and an
example before and after. In the old form, brackets enclose what may be left out, and `...` means any number more like
the last. An argument without a name of its own is named by a letter and its position: `n` is a number, `s` a string or
a print item, `v` a variable, `w` a word, `a` an attribute; `a4..a6` means `a4`, `a5`, `a6`. In the new form

- a name means the text of that argument, copied as it was typed, an expression as the expression. In a quoted string
  the escapes are decoded, so that a `\n` becomes a line end, except in INPUT's format; backquotes become quotes;
- a name in parentheses means a number or a word made from the argument's value;
- each argument in brackets is written only if it was given, and `[, ]` only if the last argument isn't 0;
- any other argument that was left out leaves its comma, so a line may end in a comma and a blank;
- the command word is written as it was typed, in the same case. New words are in capitals, and so are these, however
  they were typed: )";

static const char effects_head[] = R"(.

These words say what becomes of a command:

| word | meaning |
|---|---|
)";

static const char entity_prose[] = R"(
The arguments of an entity command that are called `a` are attributes, moved by their position alone. On a new line the
first one is gone, and the constant 0 is in its position; the others follow up to the last one that was given, with a
comma for each that was left out. With the first one alone the line ends in the 0; with none at all six commas follow
it. A comment has the first seven attributes, the first one as typed, and with none at all seven commas. These commands
have rules of their own: )";

static const char input_prose[] = R"(
Up to nine menu strings become one string, joined by bars. A string that was left out leaves a bar, but where several
were left out, in a row or not, there may be fewer bars; the report then lists the line as `form`. A comment has the
strings with commas between them, without blanks.

In these commands an item that was left out ends the list, and those after it are gone: )";

static const char page_foot[] = R"(## System commands

Commands that are usually written with an `r`, `i`, `e`, `d` or `u` in lower case in front, such as `rLNENDP` or
`ePICK`, are menu operations of the system and answers to its prompts. Like all commands they are recognised in any
case. Their arguments are read, and nothing is written.

## Other statements

"The line" in this table has one blank after its first word, however many the script has.

| statement | what is written |
|---|---|
| `REM`, a label `:name` | the line; a second label of the same name, or the 1,001st label of a script, ends the output |
| `ON x GOTO a, b` | the line; without a `GOTO` it ends the output |
| `#LINE` | nothing |
| `INT a, b[3]` and the other types, `LOCAL`, `ARRAY` | the line (an empty line follows `LOCAL`); a fault in it ends the output |
| an assignment | the line, and an empty line if its value could be computed |
| anything else | the line |
| a command with a wrong argument | a blank and what is left of that argument; the rest of the line is read as the next statement |

Where something ends the output, what has been written so far stays, and nothing more is written. The run goes on with
the next script.
)";

static const char *effect_meaning(int effect)
{
    switch (effect) {
    case EFFECT_COPIED: return "the same word with the same arguments";
    case EFFECT_REBUILT: return "the same word; arguments are moved, joined, dropped or made constant";
    case EFFECT_RENAMED: return "another word instead";
    case EFFECT_TIP: return "a tip, and the new command below it: check it";
    case EFFECT_BY_HAND: return "a tip; the new form is a comment, or there is none: finish it";
    case EFFECT_BY_HAND_NO_TIP: return "the new form is a comment, and no tip says so: finish it";
    case EFFECT_COMMENTED: return "a comment, with neither tip nor warning";
    case EFFECT_NOT_IMPLEMENTED: return "a comment that says so: the new dialect has no such command";
    case EFFECT_DROPPED: return "nothing is left of it but empty lines, if any";
    default: return "a system command: nothing is left";
    }
}

static std::string code_block(const std::string &text)
{
    return "```\n" + text + (text.empty() || text.back() == '\n' ? "" : "\n") + "```\n";
}

// An old form, or a new one with its effect, of one row of a command.
static std::string row_text(const rule_row &row, const std::string &word)
{
    texts names = argument_names(row);
    std::string text = "\n";
    if (row.when != nullptr)
        text += "When " + std::string(row.when) + ":\n\n";
    std::string old_form = row.old_form;
    text += "`" + word + (old_form.empty() ? "" : " " + old_form) + "` - **" + rule_effect_text(row.effect) +
            "**\n\n";
    std::string lines = form_text(row.new_form, word, names);
    if (size_t ends = lines.size(); lines.find_first_not_of('\n') == std::string::npos)
        return text + (ends == 0 ? "No line." : ends == 1 ? "An empty line." : "Two empty lines.") + "\n";
    return text + code_block(lines);
}

static std::string section(const rule_row *first, const std::map<std::string, example> &examples)
{
    texts words = split(first->command, ", ");
    std::string text = "\n";
    for (const std::string &word : words) {
        text += "<a id=\"" + lower(word) + "\"></a>\n";
    }
    text += "\n### " + std::string(first->command) + "\n";
    for (int32_t i = 0; i < rule_row_count(first); i++)
        text += row_text(first[i], words[0]);
    for (const std::string &word : words)
        if (auto found = examples.find(word); found != examples.end()) {
            const example &shown = found->second;
            text += (shown.prose.empty() ? "" : "\n" + shown.prose) + "\nBefore:\n\n" +
                    code_block(shown.source) + "\nAfter:\n\n" + code_block(converted(shown.source));
        }
    return text;
}

// Tells of words without an example, and of examples of no word.
static void check_examples(const std::map<std::string, example> &examples)
{
    std::map<std::string, example> left = examples;
    for (const command_source_row &command : command_rows) {
        std::string word = command.name;
        if (command.id >= 1000)
            continue;
        if (left.erase(word) == 0)
            fault(word + " has no example");
        else if (("\n" + examples.at(word).source).find("\n" + word + " ") == std::string::npos &&
                 ("\n" + examples.at(word).source).find("\n" + word + "\n") == std::string::npos)
            fault("the example of " + word + " doesn't hold it");
    }
    for (const auto &[word, unused] : left)
        fault("an example of no command: " + word);
}

// ---- What is said of several commands ----

static bool has_kind(const rule_row &row, form_kind kind)
{
    return std::any_of(row.new_form.pieces, row.new_form.pieces + row.new_form.pieces_used,
                       [=](const form_piece &piece) { return piece.kind == kind; });
}

static bool has_own_rule(const rule_row &row)
{
    return !has_kind(row, TAIL_ATTR);
}

static bool has_items(const rule_row &row)
{
    return has_kind(row, PUT_ITEMS);
}

static bool spells_itself(const rule_row &row)
{
    const char *found = strstr(row.new_form.text, row.command);
    return found != nullptr && found[strlen(row.command)] == ' ';
}

// The commands of a family of which a row has a property, with links.
static std::string commands_with(const rule_family &family, bool (*has)(const rule_row &))
{
    std::string list;
    std::string last;
    for (int32_t i = 0; i < family.row_count; i++) {
        if (!has(family.rows[i]) || last == family.rows[i].command)
            continue;
        last = family.rows[i].command;
        for (const std::string &word : split(last, ", "))
            list += (list.empty() ? "[" : ", [") + word + "](#" + lower(word) + ")";
    }
    return list;
}

static std::string page_make(const std::map<std::string, example> &examples)
{
    static const struct {
        const char *title;
        const rule_family *family;
        const char *prose;
        bool (*listed)(const rule_row &); // the commands that the prose ends in
    } families[] = {
        {"Entity commands", &entity_family, entity_prose, has_own_rule},
        {"Setting commands", &setting_family, "", nullptr},
        {"Input, query and file commands", &input_family, input_prose, has_items},
        {"Flow commands and two dimensions", &flow_family, "", nullptr},
    };
    std::string page = page_head;
    std::string spelled;
    for (const auto &entry : families)
        if (std::string words = commands_with(*entry.family, spells_itself); !words.empty())
            spelled += (spelled.empty() ? "" : ", ") + words;
    page += spelled + effects_head;
    for (int effect = EFFECT_COPIED; effect <= EFFECT_SYSTEM; effect++)
        page += std::string("| ") + rule_effect_text(static_cast<rule_effect>(effect)) + " | " +
                effect_meaning(effect) + " |\n";
    for (const auto &[title, family, prose, listed] : families) {
        page += "\n## " + std::string(title) + "\n" + prose;
        if (listed != nullptr)
            page += commands_with(*family, listed) + ".\n";
        for (int32_t i = 0; i < family->row_count; i += rule_row_count(family->rows + i))
            page += section(family->rows + i, examples);
    }
    return page + "\n" + page_foot;
}

int main(int arg_count, char **arg_vector)
{
    bool check = arg_count == 4 && strcmp(arg_vector[1], "--check") == 0;
    if (!check && arg_count != 3) {
        fputs("usage: commands_page [--check] EXAMPLES PAGE\n", stderr);
        return 2;
    }
    std::string path = arg_vector[arg_count - 1];
    std::map<std::string, example> examples = read_examples(arg_vector[arg_count - 2]);
    check_examples(examples);
    std::string page = page_make(examples);
    if (check && page != read_file(path))
        fault(path + " is stale; cmake --build --preset debug --target guide writes it anew");
    if (!check && faults == 0) {
        std::ofstream file(path, std::ios::binary);
        file << page;
        if (!file.flush())
            fault("can't write " + path);
    }
    return faults == 0 ? 0 : 1;
}
