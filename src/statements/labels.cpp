#include "statements/labels.h"

#include "source/src_stream.h"
#include "statements/statement_text.h"
#include "support/name_index.h"
#include "support/number.h"
#include "support/prompt_report.h"
#include "support/text.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

constexpr int32_t line_operands_size = 79; // characters of a #LINE that are read with it
constexpr int32_t prompt_no_memory = 203;

void (*label_refused)(const char *name);
label_row *label_table;
int32_t label_count;
line_directive_state line_directives = {1, 1, "", "", false, nullptr};

static name_index label_names; // over label_table

void labels_start(label_row *table)
{
    label_table = table;
    label_count = 0;
    name_index_start(&label_names, table->key, sizeof(label_row), label_name_length);
}

// Reports a second label of a name, or one label too many, and returns result.
static int32_t label_report(const char *name, int32_t result)
{
    if (label_refused != nullptr)
        label_refused(name);
    else
        fputs(name, stdout);
    return result;
}

int32_t label_define(const char *word)
{
    label_row row{};
    memcpy(row.name, word + 1, strnlen(word + 1, label_name_length));
    for (int i = 0; i < label_name_length; i++)
        row.key[i] = static_cast<char>(char_lower(row.name[i]));
    (void)rem_copy(word);
    if (row.name[0] == 0)
        return STATEMENT_NO_LABEL;
    row.line = src_line();

    if (name_index_find(&label_names, row.key, strlen(row.key)) >= 0)
        return label_report(row.name, STOP_LABEL_TWICE);
    if (label_count == label_capacity)
        return label_report(row.name, STOP_LABELS_FULL);
    label_table[label_count++] = row;
    name_index_add(&label_names);
    return STATEMENT_DONE;
}

int32_t line_directive(const char *)
{
    char operands[line_operands_size + 1];
    (void)src_read_line(operands, line_operands_size);
    return line_directive_parse(operands);
}

// Sets source_name from the word of a #LINE, cut to the size of source_name.
static void source_name_set(const char *word)
{
    auto &name = line_directives.source_name;
    const char *base = line_directives.source_name_base;
    size_t size = strlen(word);
    int length = 0; // of the whole; compilers warn where nobody looks at it
    if (word[0] == '<' && word[size - 1] == '>')
        length = snprintf(name, sizeof name, "%.*s", static_cast<int>(size - 2), word + 1);
    else
        length = snprintf(name, sizeof name, "%.*s%s", static_cast<int>(base_name(base) - base), base,
                          base_name(word));
    if (length < 0)
        name[0] = 0;
}

int32_t line_directive_parse(const char *text)
{
    char number[sizeof line_directives.source_name] = "";
    char name[sizeof line_directives.source_name] = "";
    (void)sscanf(text, "%511s %511s", number, name);
    if (!text_is(number[0], CHAR_DIGIT))
        return STATEMENT_TEXT;
    uint32_t value = 0;
    const char *c = number;
    for (; text_is(*c, CHAR_DIGIT); c++)
        value = value * 10 + static_cast<uint32_t>(*c - '0');
    line_directives.line_number = wrap_int32(value);
    line_directives.line_plus = *c == '+';
    if (name[0] == 0)
        return STATEMENT_TEXT;
    source_name_set(name);
    if (line_directives.source_name_recording)
        source_name_record();
    return STATEMENT_TEXT;
}

void source_name_record()
{
    const char *name = base_name(line_directives.source_name);
    size_t size = strlen(name);
    char *block = static_cast<char *>(malloc(size + 1));
    if (block == nullptr) {
        prompt_report(-prompt_no_memory, line_directives.line_number);
        return;
    }
    *line_directives.source_name_slot = static_cast<char *>(memcpy(block, name, size + 1));
}

const char *base_name(const char *path)
{
    const char *base = path;
    for (; *path != 0; path++)
        if (*path == '\\' || *path == '/' || *path == ':')
            base = path + 1;
    return base;
}
