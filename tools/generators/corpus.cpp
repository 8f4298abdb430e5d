// Corpus generator: writes scripts that a user could have written, for measuring, and for the fuzzers to
// start from.
//
//     corpus KIND SIZE SEED > FILE
//     corpus small=COUNT SIZE SEED FOLDER
//
// SIZE is in bytes, with K, M or G behind it if wanted; the last statement may run over it a little. The same
// kind, size and seed give the same bytes. small makes COUNT files of mixed statements, 0000.mrl and on. The
// other kinds are in the table at the end. All of it is valid: no statement is refused, and nothing stops a
// file.
#include "generators/random_texts.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

// What a script has of each sort of name.
struct name_counts {
    uint32_t variables; // v0000 and on: doubles
    uint32_t labels;    // at0000 and on, each defined once, spread over the file
    uint32_t tables;    // tab0 and on: arrays of 16 doubles
    uint32_t integers; // n0 and on: ints that always hold a subscript of a table; as many strings, $s0 and on
    uint32_t depth;    // of parentheses, or length of sums
};

// ---- Statements ----

// The numbers 0 to count - 1 for random_texts, behind a prefix.
static std::string numbered(const std::string &prefix, uint32_t count, const char *low = "0")
{
    return prefix + "%(" + low + "-" + std::to_string(count - 1) + ")";
}

// A list of a rule's alternatives, as many each time.
static std::string repeated(uint32_t count, const std::string &rule)
{
    return "%<" + std::to_string(count) + "-" + std::to_string(count) + rule + ">";
}

// Arguments are put with ", " between them here; half of the statements lose the blank later. Divisors and
// factors are plain numbers, so that nothing divides by 0 and values stay of a usual size.
static std::map<char, std::string> script_rules(const name_counts &counts)
{
    std::string operators =
        "%b;%b + %b;%b - %b;%b * 0.%(1-9);%b / 0.%(1-9);%b+%b-%b;%b*0.%(1-9);%b / 0.%(1-9)+%b";
    auto expression = [&](char term) {
        std::string text = operators;
        for (size_t at; (at = text.find("%b")) != std::string::npos;)
            text[at + 1] = term;
        return text;
    };
    return {
        // Names and numbers
        {'v', numbered("v", counts.variables, "0000")},
        {'@', numbered("at", counts.labels, "0000")},
        {'h', numbered("tab", counts.tables)},
        {'j', numbered("n", counts.integers)},
        {'s', numbered("$s", counts.integers)},
        {'e', "%h[%(0-15)];%h[%j]"},
        {'n', "85*%m;15*-%m"},
        {'m', "30*%i;23*%i.%(0-9);23*%i.%(00-99);24*%i.%(000-999)"},
        {'i', "2*%(0-59);%(0-999)"},
        {'w',
         "the;part;width;of;flange;draw;left;side;first;hole;radius;offset;and;plate;corner;outer;inner;"
         "select;"
         "next;view;from;bolt;circle;to;scale;start;point;check;size;thickness"},
        // Values: expressions of two levels of parentheses and functions, of one, of none
        {'x', expression('t')},
        {'t', "20*%(0-99);20*%(0-99).5;35*%v;7*%e;9*%f(%y);9*(%y)"},
        {'y', expression('u')},
        {'u', "20*%(0-99);20*%(0-99).5;35*%v;7*%e;9*%f(%z);9*(%z)"},
        {'z', expression('c')},
        {'c', "%(0-99);%(0-99).5"},
        {'f', "sin;cos;tan;abs;floor;ceil;atan"},
        {'a', "78*%n;12*%v;4*%e;6*%y"},
        {'r', " > ; < ;==; <= ; >= ; != "},
        // Attributes behind the values, at most 5 to 9 of them: small numbers, some of them left out
        {'k', "8*, %(0-15);2*, "},
        {'5', "66*%<2-4k>, %(0-15);30*%<0-4k>, %(0-15);4*"},
        {'6', "66*%<3-5k>, %(0-15);30*%<0-5k>, %(0-15);4*"},
        {'7', "66*%<4-6k>, %(0-15);30*%<0-6k>, %(0-15);4*"},
        {'8', "66*%<5-7k>, %(0-15);30*%<0-7k>, %(0-15);4*"},
        {'9', "66*%<6-8k>, %(0-15);30*%<0-8k>, %(0-15);4*"},
        // Statements
        {'L', "LINE %<6-6a, >%7"},
        {'D',
         "8*%L;POINT %<3-3a, >%5;VPOINT %<3-3a, >%6;VLINE %<6-6a, >%8;2*ARC %<6-6a, >%8;2*CIRCLE %<4-4a, >%8;"
         "CONIC %<11-11a, >%8;WITNESS %<4-4a, >%7;LEADER %<5-5a, >, %(0-3)%7;"
         "POLYLINE %(2-15), %h, %a, %(0-3), %(0-1)%8;XHATCH %(1-4), %(3-10), %h, %(0-3)%6"},
        {'A', "5*%j = %(0-15);5*%j=%(0-15);10*%e = %x;3*%e=%x;54*%v = %x;23*%v=%x"},
        {'J', "48*IF (%v%r%a);6*IF (%v%r%a && %v%r%a);6*IF (%v%r%a || %v%r%a);34*GOTO %@;6*DOSUB %@"},
        {'C', "REM %<2-10w >;// %<2-10w >"},
        {'P', "4*PRINT \"%<2-7w >\"%<0-3K>;PROMPT \"%<2-7w >\"%<0-3K>"},
        {'K', ", %v"},
        {'Q', "7*%P;2*%s = \"%<1-6w >\";SPRINT %s, \"%%f x %%f\", %v, %v"},
        {'N', "6*NOTE %a, %a, \"%<1-6w >\", %n, %n, %(0-1)%9;4*TEXT %a, %a, \"%<1-6w >\", %n, %n, %(0-1)%9"},
        {'G', "GETMENU \"%<2-5w >\", %<2-9g, >"},
        {'g', "\"%w\";\"%w %w\""},
        {'E',
         "GETFLT \"%<2-5w >\", %n, %v;GETPOS \"%<2-5w >\", %(1-8);GETSTR \"%<2-5w >\", \"%%s\", $s1;"
         "GETENT \"%<2-5w >\", %v, %v"},
        {'I', "DOUBLE %<1-6v, >"},
        {'T', "ARRAY %h[16] = {%<2-2l,\n    >}"},
        {'B', "ARRAY big[4000] = {%<500-500l,\n    >}"},
        {'l', "%<8-8n, >"},
        {'S', "2*%p;ePICK 1, %(0-2), %<3-3a, >;eCUR 1, %(0-2), %<3-3a, >;2*eSTR 1, \"%<1-4w >\""},
        {'p', "rLNENDP;rARC_3PT;iREDRAW;iAUTO;rTRM1;rFILENEW;rDTSET;uMACEND;rXFDELTAC;iLEVSET"},
        {'O', "ORDDIM %<3-3a, >, %h, %<2-2a, >, %(1-11)%5"},
        {'U', "SET COLOR, %(1-15);SET LEVEL, %(1-15);SET LTYPE, %(1-15);SET LWIDTH, %(1-15)"},
        // What a user's script has, in parts of 1,000 statements
        {'M', "450*%D;150*%A;140*%J;100*%C;80*%Q;50*%N;10*;6*%S;4*%I;4*%U;2*%G;2*%E;2*%T"},
        // Growth: which variables is the only difference; parentheses, and sums of the same length
        {'V', "%v = %v * 0.5 + %v;POINT %v, %v, %v, 3"},
        {'(', "("},
        {')', ")"},
        {'+', "%(0-9)+"},
        {'d', "POINT " + repeated(counts.depth, "(") + "%(0-9)" + repeated(counts.depth, ")") + ", 0, 0, 3"},
        {'q', "POINT " + repeated(counts.depth, "+") + "%(0-9), 0, 0, 3"},
    };
}

// ---- Output ----

static FILE *stream;
static std::string pending;
static uint64_t written; // bytes of this file, pending ones too
static bool line_end_crlf;
static uint32_t indent; // in steps of four blanks

static void flush()
{
    if (fwrite(pending.data(), 1, pending.size(), stream) != pending.size()) {
        perror("corpus");
        exit(1);
    }
    pending.clear();
}

static void put_line(const std::string &text)
{
    size_t before = pending.size();
    for (char c : text + "\n") {
        if (c == '\n' && line_end_crlf)
            pending += '\r';
        pending += c;
    }
    written += pending.size() - before;
    if (pending.size() > 1 << 16)
        flush();
}

// A statement as it comes from somebody's hand: indented or not, its word in small letters now and then, and
// with or without blanks behind its commas.
static void put_statement(random_texts &texts, const std::string &statement)
{
    static std::string text;
    uint32_t turn = static_cast<uint32_t>(texts.die() % 8);
    if (turn == 0 && indent < 3)
        indent++;
    else if (turn == 1 && indent > 0)
        indent--;
    text = indent == 1 ? "\t" : std::string(4 * indent, ' ');
    size_t start = text.size();
    texts.expand(statement, &text);
    if (text.size() == start)
        text.clear();
    else if (text[start] >= 'A' && text[start] <= 'Z' && texts.die() % 100 < 15)
        for (size_t i = start; i < text.size() && text[i] != ' '; i++)
            text[i] = static_cast<char>(text[i] | 32);
    if (texts.die() % 100 < 40)
        for (size_t at = start; (at = text.find(", ", at)) != std::string::npos;)
            text.erase(at + 1, 1);
    put_line(text);
}

// ---- Kinds ----

struct kind_row {
    const char *name;
    const char *statement; // in the rules
    uint32_t name_counts::*
        number;          // what N of kind=N sets; such a kind has no head and bare statements. Or null
    const char *setting; // behind the head, or null
};

static const kind_row kinds[] = {
    {"mixed", "%M", nullptr, nullptr},
    {"crlf", "%M", nullptr, nullptr}, // mixed, with CR LF
    {"line", "%L", nullptr, nullptr},
    {"assign", "%A", nullptr, nullptr},
    {"comment", "%C", nullptr, nullptr},
    {"print", "%P", nullptr, nullptr},
    {"orddim", "%O", nullptr, "SET COLLECT, 1"}, // in collect mode
    {"getmenu", "%G", nullptr, nullptr},
    {"array", "%B", nullptr, nullptr}, // the values outweigh the statement that they stand in
    {"system", "%S", nullptr, nullptr},
    {"vars", "%V", &name_counts::variables, nullptr},   // uses N variables
    {"labels", nullptr, &name_counts::labels, nullptr}, // has N labels; SIZE is 29000
    {"deep", "%d", &name_counts::depth, nullptr},       // N parentheses around a number
    {"shallow", "%q", &name_counts::depth, nullptr},    // as long, without parentheses
};

// 29,000 bytes have a thousand lines of which N hold a label and the others a comment of the same length.
static void put_labels(uint32_t labels, uint64_t size)
{
    for (uint32_t line = 0; written < size; line++) {
        bool label = line * labels / 1000 < (line + 1) * labels / 1000;
        char number[16];
        snprintf(number, sizeof number, "%05u", line);
        put_line((label ? ":at_" : "REM ") + std::string(number));
        put_line("POINT 1, 2.5, 0, 3");
    }
}

// What a script declares first.
static void put_head(const name_counts &counts, const char *setting)
{
    put_line("REM part family, drawn from a table of sizes");
    std::string integers = "INT n0";
    for (uint32_t i = 1; i < counts.integers; i++)
        integers += ", n" + std::to_string(i);
    put_line(integers);
    for (uint32_t i = 0; i < counts.tables; i++)
        put_line("ARRAY tab" + std::to_string(i) + "[16]");
    if (setting != nullptr)
        put_line(setting);
}

static void write_script(const kind_row &kind, random_texts &texts, const name_counts &counts, uint64_t size,
                         uint64_t seed)
{
    texts.die.seed(static_cast<uint32_t>(seed));
    written = 0;
    indent = 0;
    line_end_crlf = strcmp(kind.name, "crlf") == 0;
    if (kind.statement == nullptr)
        put_labels(counts.labels, size);
    if (kind.number == nullptr)
        put_head(counts, kind.setting);
    bool jumps = strcmp(kind.statement != nullptr ? kind.statement : "", "%M") == 0;
    for (uint32_t labels = 0; written < size;) {
        if (jumps && labels < counts.labels && written * counts.labels / size >= labels) {
            char label[16];
            snprintf(label, sizeof label, ":at%04u", labels++);
            put_line(label);
        } else if (kind.number != nullptr) {
            put_line(texts.expand(kind.statement));
        } else {
            put_statement(texts, kind.statement);
        }
    }
    flush();
}

static void write_small(uint32_t count, uint64_t size, uint64_t seed, const char *folder)
{
    name_counts counts = {8, 4, 2, 3, 1};
    random_texts texts(script_rules(counts));
    for (uint32_t i = 0; i < count; i++) {
        char path[4096];
        snprintf(path, sizeof path, "%s/%04u.mrl", folder, i);
        stream = fopen(path, "wb");
        if (stream == nullptr) {
            perror(path);
            exit(1);
        }
        write_script(kinds[0], texts, counts, size, seed + i);
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
    std::string name = std::string(argv[1]).substr(0, strcspn(argv[1], "="));
    uint32_t number = static_cast<uint32_t>(atoi(argv[1] + std::min(name.size() + 1, strlen(argv[1]))));
    uint64_t size = size_of_text(argv[2]);
    uint64_t seed = strtoull(argv[3], nullptr, 10);
    if (argc == 5) {
        write_small(number, size, seed, argv[4]);
        return 0;
    }
    stream = stdout;
    name_counts counts = {300, 300, 24, 12, 1};
    for (const kind_row &kind : kinds) {
        if (name != kind.name)
            continue;
        if (kind.number != nullptr)
            counts.*kind.number = number;
        random_texts texts(script_rules(counts));
        write_script(kind, texts, counts, size, seed);
        return 0;
    }
    fprintf(stderr, "corpus: no kind is called %s\n", argv[1]);
    return 2;
}
