// Corpus generator: writes scripts that a user could have written, for measuring.
//
//     corpus KIND SIZE SEED > FILE
//     corpus small=COUNT SIZE SEED FOLDER
//
// SIZE is in bytes, with K, M or G behind it if wanted; the last statement may run over it a little. The same
// kind, size and seed give the same bytes. `mixed` has the shares of mixed_shares, which are shares of
// statements; small makes COUNT such files, 0000.mrl and on. The other kinds hold one kind of statement each,
// see kinds. All of it is valid: no statement is refused, and nothing stops a file.
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// ---- Output ----

static FILE *stream;
static char buffer[1 << 16];
static size_t buffered;
static uint64_t written;     // bytes of this file, buffered ones too
static uint64_t target_size; // bytes wanted
static bool line_end_crlf;

static void flush()
{
    if (fwrite(buffer, 1, buffered, stream) != buffered) {
        perror("corpus");
        exit(1);
    }
    buffered = 0;
}

static void put_char(char c)
{
    if (buffered == sizeof buffer)
        flush();
    buffer[buffered++] = c;
    written++;
}

static void put_text(const char *text)
{
    while (*text != 0)
        put_char(*text++);
}

// A number with at least so many digits.
static void put_int(uint32_t value, int digits = 1)
{
    char text[12];
    int at = 0;
    do {
        text[at++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0 || at < digits);
    while (at > 0)
        put_char(text[--at]);
}

static void end_line()
{
    if (line_end_crlf)
        put_char('\r');
    put_char('\n');
}

// ---- Chance ----

static uint64_t random_state;

// 0 to count - 1. A xorshift generator with a multiplication behind it.
static uint32_t pick(uint32_t count)
{
    random_state ^= random_state >> 12;
    random_state ^= random_state << 25;
    random_state ^= random_state >> 27;
    uint64_t high = (random_state * 0x2545F4914F6CDD1Du) >> 32;
    return static_cast<uint32_t>((high * count) >> 32);
}

static bool chance(uint32_t percent)
{
    return pick(100) < percent;
}

template <uint32_t count> static const char *pick_of(const char *const (&texts)[count])
{
    return texts[pick(count)];
}

// ---- Parts of a statement ----

static uint32_t variables; // v0000 and on: doubles
static uint32_t labels;    // at0000 and on, each defined once, spread over the file
static uint32_t labels_defined;
static uint32_t tables;             // tab0 and on: arrays of table_size doubles
constexpr uint32_t table_size = 16; // elements
static uint32_t integers;           // n0 and on: ints that always hold a subscript of a table
static uint32_t strings;            // $s0 and on

static const char *separator; // between the arguments of this statement
static uint32_t indent;       // in steps of four blanks

static void put_words(uint32_t low, uint32_t high)
{
    static const char *const words[] = {
        "the",    "part",   "width",  "of",    "flange", "draw",  "left",  "side",   "first", "hole",
        "radius", "offset", "and",    "plate", "corner", "outer", "inner", "select", "next",  "view",
        "from",   "bolt",   "circle", "to",    "scale",  "start", "point", "check",  "size",  "thickness"};
    uint32_t count = low + pick(high - low + 1);
    for (uint32_t i = 0; i < count; i++) {
        if (i > 0)
            put_char(' ');
        put_text(pick_of(words));
    }
}

static void put_string(uint32_t low, uint32_t high)
{
    put_char('"');
    put_words(low, high);
    put_char('"');
}

// Blanks in front of a statement, and the statement's habit with commas.
static void start_statement()
{
    uint32_t turn = pick(8);
    if (turn == 0 && indent < 3)
        indent++;
    else if (turn == 1 && indent > 0)
        indent--;
    for (uint32_t i = 0; i < indent; i++)
        put_text(indent == 1 ? "\t" : "    ");
    separator = chance(60) ? ", " : ",";
}

static void put_command(const char *word)
{
    start_statement();
    if (chance(85))
        put_text(word);
    else
        for (; *word != 0; word++)
            put_char(static_cast<char>(*word >= 'A' && *word <= 'Z' ? *word + 32 : *word));
    put_char(' ');
}

static void put_number()
{
    if (chance(15))
        put_char('-');
    put_int(pick(pick(3) == 0 ? 1000 : 60));
    if (chance(30))
        return;
    put_char('.');
    int digits = 1 + static_cast<int>(pick(3));
    put_int(pick(digits == 1 ? 10 : digits == 2 ? 100 : 1000), digits);
}

static void put_variable()
{
    put_char('v');
    put_int(pick(variables), 4);
}

static void put_element()
{
    put_text("tab");
    put_int(pick(tables));
    put_char('[');
    if (chance(50)) {
        put_int(pick(table_size));
    } else {
        put_char('n');
        put_int(pick(integers));
    }
    put_char(']');
}

static void put_expression(uint32_t depth);

static void put_term(uint32_t depth)
{
    static const char *const functions[] = {"sin", "cos", "tan", "abs", "floor", "ceil", "atan"};
    uint32_t form = pick(100);
    if (form < 40 || depth == 0) {
        put_int(pick(100));
        put_text(chance(50) ? ".5" : "");
    } else if (form < 75) {
        put_variable();
    } else if (form < 82) {
        put_element();
    } else {
        if (form < 91)
            put_text(pick_of(functions));
        put_char('(');
        put_expression(depth - 1);
        put_char(')');
    }
}

// Divisors and factors are plain numbers, so that nothing divides by 0 and values stay of a usual size.
static void put_expression(uint32_t depth)
{
    put_term(depth);
    uint32_t operators = pick(3);
    for (uint32_t i = 0; i < operators; i++) {
        const char *blank = chance(50) ? " " : "";
        put_text(blank);
        uint32_t operation = pick(4);
        put_char("+-*/"[operation]);
        put_text(blank);
        if (operation < 2) {
            put_term(depth);
        } else {
            put_text("0.");
            put_int(1 + pick(9));
        }
    }
}

static void put_value()
{
    uint32_t form = pick(100);
    if (form < 78)
        put_number();
    else if (form < 90)
        put_variable();
    else if (form < 94)
        put_element();
    else
        put_expression(1);
}

static void put_values(uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        if (i > 0)
            put_text(separator);
        put_value();
    }
}

// Attributes behind the values: small numbers, some of them left out between two commas, and some lists
// shorter than most.
static void put_attributes(uint32_t most)
{
    uint32_t count = chance(70) ? most - pick(3) : pick(most + 1);
    for (uint32_t i = 0; i < count; i++) {
        put_text(separator);
        if (i + 1 == count || chance(80))
            put_int(pick(16));
    }
    end_line();
}

static void put_label_name(uint32_t label)
{
    put_text("at");
    put_int(label, 4);
}

// ---- Statements ----

static void write_line()
{
    put_command("LINE");
    put_values(6);
    put_attributes(7);
}

struct drawing_row {
    const char *word;
    uint32_t values;
    uint32_t attributes;
};

static void write_drawing()
{
    static const drawing_row rows[] = {{"POINT", 3, 5},  {"VPOINT", 3, 6},   {"VLINE", 6, 8},
                                       {"ARC", 6, 8},    {"ARC", 6, 8},      {"CIRCLE", 4, 8},
                                       {"CIRCLE", 4, 8}, {"CONIC", 11, 8},   {"WITNESS", 4, 7},
                                       {"LEADER", 5, 7}, {"POLYLINE", 3, 8}, {"XHATCH", 3, 6}};
    if (chance(40)) {
        write_line();
        return;
    }
    const drawing_row &row = rows[pick(sizeof rows / sizeof rows[0])];
    put_command(row.word);
    if (row.word[0] == 'P' && row.values == 3 && row.attributes == 8) { // POLYLINE
        put_int(2 + pick(14));
        put_text(separator);
        put_text("tab");
        put_int(pick(tables));
        put_text(separator);
        put_value();
        put_text(separator);
        put_int(pick(4));
        put_text(separator);
        put_int(pick(2));
    } else if (row.word[0] == 'X') { // XHATCH
        put_int(1 + pick(4));
        put_text(separator);
        put_int(3 + pick(8));
        put_text(separator);
        put_text("tab");
        put_int(pick(tables));
        put_text(separator);
        put_int(pick(4));
    } else {
        put_values(row.values);
        if (row.attributes == 7 && row.values == 5) { // LEADER
            put_text(separator);
            put_int(pick(4));
        }
    }
    put_attributes(row.attributes);
}

static void write_assignment()
{
    start_statement();
    const char *equals = chance(70) ? " = " : "=";
    if (chance(10)) {
        put_char('n');
        put_int(pick(integers));
        put_text(equals);
        put_int(pick(table_size));
    } else {
        if (chance(15))
            put_element();
        else
            put_variable();
        put_text(equals);
        put_expression(2);
    }
    end_line();
}

static void write_label()
{
    put_char(':');
    put_label_name(labels_defined++);
    end_line();
}

// A condition and its jump on the next line, or a jump alone; labels as the file goes on.
static void write_flow()
{
    static const char *const relations[] = {" > ", " < ", "==", " <= ", " >= ", " != "};
    if (labels_defined < labels && written * labels / target_size >= labels_defined) {
        write_label();
        return;
    }
    if (chance(60)) {
        put_command("IF");
        put_char('(');
        put_variable();
        put_text(pick_of(relations));
        put_value();
        if (chance(20)) {
            put_text(chance(50) ? " && " : " || ");
            put_variable();
            put_text(pick_of(relations));
            put_value();
        }
        put_char(')');
        end_line();
        return;
    }
    put_command(chance(85) ? "GOTO" : "DOSUB");
    put_label_name(pick(labels));
    end_line();
}

static void write_comment()
{
    start_statement();
    put_text(chance(50) ? "REM " : "// ");
    put_words(2, 10);
    end_line();
}

static void write_print()
{
    put_command(chance(80) ? "PRINT" : "PROMPT");
    put_string(2, 7);
    uint32_t items = pick(4);
    for (uint32_t i = 0; i < items; i++) {
        put_text(separator);
        put_variable();
    }
    end_line();
}

static void write_string()
{
    uint32_t form = pick(10);
    if (form < 7) {
        write_print();
        return;
    }
    uint32_t string = pick(strings);
    if (form < 9) {
        start_statement();
        put_text("$s");
        put_int(string);
        put_text(" = ");
        put_string(1, 6);
    } else {
        put_command("SPRINT");
        put_text("$s");
        put_int(string);
        put_text(separator);
        put_text("\"%f x %f\"");
        put_text(separator);
        put_variable();
        put_text(separator);
        put_variable();
    }
    end_line();
}

static void write_note()
{
    put_command(chance(60) ? "NOTE" : "TEXT");
    put_values(2);
    put_text(separator);
    put_string(1, 6);
    put_text(separator);
    put_number();
    put_text(separator);
    put_number();
    put_text(separator);
    put_int(pick(2));
    put_attributes(9);
}

static void write_blank()
{
    end_line();
}

static void write_menu()
{
    put_command("GETMENU");
    put_string(2, 5);
    uint32_t items = 2 + pick(8);
    for (uint32_t i = 0; i < items; i++) {
        put_text(separator);
        put_string(1, 2);
    }
    end_line();
}

static void write_query()
{
    uint32_t form = pick(4);
    put_command(form == 0 ? "GETFLT" : form == 1 ? "GETPOS" : form == 2 ? "GETSTR" : "GETENT");
    put_string(2, 5);
    put_text(separator);
    if (form == 0) {
        put_number();
        put_text(separator);
        put_variable();
    } else if (form == 1) {
        put_int(1 + pick(8));
    } else if (form == 2) {
        put_text("\"%s\"");
        put_text(separator);
        put_text("$s1");
    } else {
        put_variable();
        put_text(separator);
        put_variable();
    }
    end_line();
}

static void write_declaration()
{
    put_command("DOUBLE");
    uint32_t count = 1 + pick(6);
    for (uint32_t i = 0; i < count; i++) {
        if (i > 0)
            put_text(separator);
        put_variable();
    }
    end_line();
}

static void write_table_rows(uint32_t values)
{
    for (uint32_t i = 0; i < values; i++) {
        put_number();
        if (i + 1 < values)
            put_text(i % 8 == 7 ? "," : separator);
        if (i % 8 == 7 && i + 1 < values) {
            end_line();
            put_text("    ");
        }
    }
    put_text("}");
    end_line();
}

static void write_table()
{
    put_command("ARRAY");
    put_text("tab");
    put_int(pick(tables));
    put_text("[16] = {");
    write_table_rows(table_size);
}

// The values outweigh the statement that they stand in.
static void write_big_table()
{
    put_text("ARRAY big[4000] = {");
    separator = chance(60) ? ", " : ",";
    write_table_rows(4000);
}

static void write_system()
{
    static const char *const plain[] = {"rLNENDP",  "rARC_3PT", "iREDRAW", "iAUTO",     "rTRM1",
                                        "rFILENEW", "rDTSET",   "uMACEND", "rXFDELTAC", "iLEVSET"};
    start_statement();
    uint32_t form = pick(4);
    if (form < 2) {
        put_text(pick_of(plain));
    } else if (form == 2) {
        put_text(chance(50) ? "ePICK " : "eCUR ");
        put_int(1);
        put_text(separator);
        put_int(pick(3));
        put_text(separator);
        put_values(3);
    } else {
        put_text("eSTR 1");
        put_text(separator);
        put_string(1, 4);
    }
    end_line();
}

static void write_setting()
{
    static const char *const settings[] = {"SET COLOR", "SET LEVEL", "SET LTYPE", "SET LWIDTH"};
    put_command(pick_of(settings));
    buffered--; // the blank behind the word
    written--;
    put_text(separator);
    put_int(1 + pick(15));
    end_line();
}

static void write_orddim()
{
    put_command("ORDDIM");
    put_values(3);
    put_text(separator);
    put_text("tab");
    put_int(pick(tables));
    put_text(separator);
    put_values(2);
    put_text(separator);
    put_int(1 + pick(11));
    put_attributes(5);
}

// ---- Kinds ----

struct share_row {
    void (*write)();
    uint32_t share; // of 1,000 statements
};

static constexpr share_row mixed_shares[] = {
    {write_drawing, 450},                        // drawing commands with attributes
    {write_assignment, 150}, {write_flow, 140},  // IF, GOTO and labels
    {write_comment, 100},    {write_string, 80}, // PRINT and other strings
    {write_note, 50},        {write_blank, 10},  {write_system, 6}, {write_declaration, 4},
    {write_setting, 4},      {write_menu, 2},    {write_query, 2},  {write_table, 2},
};

constexpr uint32_t shares_sum()
{
    uint32_t sum = 0;
    for (const share_row &row : mixed_shares)
        sum += row.share;
    return sum;
}
static_assert(shares_sum() == 1000, "the shares are parts of 1,000");

static void write_mixed()
{
    uint32_t drawn = pick(1000);
    const share_row *row = mixed_shares;
    while (drawn >= row->share)
        drawn -= (row++)->share;
    row->write();
}

// With N variables: which ones is the only difference.
static void write_of_variables()
{
    if (chance(50)) {
        put_variable();
        put_text(" = ");
        put_variable();
        put_text(" * 0.5 + ");
        put_variable();
        end_line();
        return;
    }
    put_text("POINT ");
    put_variable();
    put_text(", ");
    put_variable();
    put_text(", ");
    put_variable();
    put_text(", 3");
    end_line();
}

// 29,000 bytes have a thousand places, of which N hold a label and the others a comment of the same length.
static void write_labels()
{
    static uint32_t place;
    if (written == 0)
        place = 0;
    bool label = place * labels / 1000 < (place + 1) * labels / 1000;
    put_text(label ? ":at_" : "REM ");
    put_int(place, 5);
    end_line();
    put_text("POINT 1, 2.5, 0, 3");
    end_line();
    place++;
}

static uint32_t depth; // of the parentheses

static void write_deep()
{
    put_text("POINT ");
    for (uint32_t i = 0; i < depth; i++)
        put_char('(');
    put_int(pick(10));
    for (uint32_t i = 0; i < depth; i++)
        put_char(')');
    put_text(", 0, 0, 3");
    end_line();
}

static void write_shallow()
{
    put_text("POINT ");
    for (uint32_t i = 0; i < depth; i++) {
        put_int(pick(10));
        put_char('+');
    }
    put_int(pick(10));
    put_text(", 0, 0, 3");
    end_line();
}

// What a script of mixed kinds declares in front.
static void write_head()
{
    put_text("REM part family, drawn from a table of sizes");
    end_line();
    put_text("INT n0");
    for (uint32_t i = 1; i < integers; i++) {
        put_text(", n");
        put_int(i);
    }
    end_line();
    for (uint32_t i = 0; i < tables; i++) {
        put_text("ARRAY tab");
        put_int(i);
        put_text("[16]");
        end_line();
    }
}

static void write_head_collect()
{
    write_head();
    put_text("SET COLLECT, 1");
    end_line();
}

struct kind_row {
    const char *name;
    void (*head)(); // or null
    void (*write)();
    uint32_t *number; // what N of kind=N sets, or null
};

static const kind_row kinds[] = {
    {"mixed", write_head, write_mixed, nullptr},
    {"crlf", write_head, write_mixed, nullptr}, // mixed, with CR LF
    {"line", write_head, write_line, nullptr},
    {"assign", write_head, write_assignment, nullptr},
    {"comment", write_head, write_comment, nullptr},
    {"print", write_head, write_print, nullptr},
    {"orddim", write_head_collect, write_orddim, nullptr}, // in collect mode
    {"getmenu", write_head, write_menu, nullptr},
    {"array", write_head, write_big_table, nullptr}, // ARRAY values
    {"system", write_head, write_system, nullptr},
    {"vars", nullptr, write_of_variables, &variables}, // uses N variables
    {"labels", nullptr, write_labels, &labels},        // has N labels; SIZE is 29000
    {"deep", nullptr, write_deep, &depth},             // N parentheses around a number
    {"shallow", nullptr, write_shallow, &depth},       // as long, without parentheses
};

static void write_script(const kind_row *kind, uint64_t seed)
{
    random_state = seed * 0x9E3779B97F4A7C15u + 1;
    written = 0;
    labels_defined = 0;
    indent = 0;
    line_end_crlf = strcmp(kind->name, "crlf") == 0;
    if (kind->head != nullptr)
        kind->head();
    while (written < target_size)
        kind->write();
    flush();
}

static void write_small(uint32_t count, uint64_t seed, const char *folder)
{
    variables = 8;
    labels = 4;
    tables = 2;
    integers = strings = 3;
    for (uint32_t i = 0; i < count; i++) {
        char path[4096];
        snprintf(path, sizeof path, "%s/%04u.mrl", folder, i);
        stream = fopen(path, "wb");
        if (stream == nullptr) {
            perror(path);
            exit(1);
        }
        write_script(&kinds[0], seed + i);
        fclose(stream);
    }
}

static uint64_t size_of_text(const char *text)
{
    char *unit;
    uint64_t size = strtoull(text, &unit, 10);
    return size << (*unit == 'K' ? 10 : *unit == 'M' ? 20 : *unit == 'G' ? 30 : 0);
}

int main(int argc, char **argv)
{
    if (argc != 4 && argc != 5) {
        fputs("corpus KIND SIZE SEED > FILE\ncorpus small=COUNT SIZE SEED FOLDER\n", stderr);
        return 2;
    }
    const char *equals = strchr(argv[1], '=');
    size_t name_size = equals != nullptr ? static_cast<size_t>(equals - argv[1]) : strlen(argv[1]);
    uint32_t number = equals != nullptr ? static_cast<uint32_t>(atoi(equals + 1)) : 0;
    target_size = size_of_text(argv[2]);
    uint64_t seed = strtoull(argv[3], nullptr, 10);
    variables = labels = 300;
    tables = 24;
    integers = strings = 12;
    if (argc == 5) {
        write_small(number, seed, argv[4]);
        return 0;
    }
    stream = stdout;
    for (const kind_row &kind : kinds) {
        if (strlen(kind.name) != name_size || strncmp(kind.name, argv[1], name_size) != 0)
            continue;
        if (kind.number != nullptr)
            *kind.number = number;
        write_script(&kind, seed);
        return 0;
    }
    fprintf(stderr, "corpus: no kind is called %s\n", argv[1]);
    return 2;
}
