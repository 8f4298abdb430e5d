#include "support/prompt_report.h"

#include "support/number.h"
#include "support/output.h"
#include "support/text.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>

const char *prompt_prefix_name;

// One line of the prompt file: 79 characters and the NUL. A longer one is read in pieces.
static constexpr int prompt_line_size = 80;
static constexpr size_t prompt_text_column = 4;

// Codes that end nothing although they are below 0.
static constexpr int32_t recoverable_codes[] = {-236, -242, -243, -244, -245, -246, -254, -255};

// A conversion that a prompt's text may have, with its flags.
struct conversion_row {
    char letter;
    prompt_kind kind;
    const char *flags;
    bool has_precision;
};

static constexpr conversion_row conversion_rows[] = {
    {'d', PROMPT_INT, "-+ 0", true}, {'i', PROMPT_INT, "-+ 0", true}, {'u', PROMPT_INT, "-0", true},
    {'o', PROMPT_INT, "-#0", true},  {'x', PROMPT_INT, "-#0", true},  {'X', PROMPT_INT, "-#0", true},
    {'c', PROMPT_INT, "-", false},   {'s', PROMPT_TEXT, "-", true},
};

// A parsed conversion.
struct conversion {
    const conversion_row *row;
    int width;            // 0 if there is none
    int precision;        // -1 if there is none
    char printf_form[12]; // % flags * .* letter: made here from the row, nothing of the prompt's own text
};

struct message_buffer {
    char text[prompt_message_size];
    size_t used; // characters in front of the NUL
};

// Adds one character unless the buffer is full.
static void message_char(message_buffer *message, char c)
{
    if (message->used + 1 >= sizeof message->text)
        return;
    message->text[message->used++] = c;
    message->text[message->used] = '\0';
}

// Reads digits into value, which stops at the size of the work buffer: more would be cut anyway. Returns
// the pointer after them.
static const char *read_digits(const char *text, int *value)
{
    for (*value = 0; text_is(*text, CHAR_DIGIT); text++)
        *value = std::min(*value * 10 + (*text - '0'), prompt_message_size);
    return text;
}

// Reads a conversion from after its percent sign: flags, width, precision, size letters (a value knows
// its own size, so they are ignored), letter. Returns the pointer after it, or null if conversion_rows lacks
// it.
static const char *read_conversion(const char *text, conversion *result)
{
    const char *flags = text;
    size_t flag_count = strspn(text, "-+ #0");
    text = read_digits(text + flag_count, &result->width);
    result->precision = -1;
    if (*text == '.')
        text = read_digits(text + 1, &result->precision);
    text += strspn(text, "hl");
    result->row = std::find_if(std::begin(conversion_rows), std::end(conversion_rows),
                               [=](const conversion_row &row) { return row.letter == *text; });
    if (result->row == std::end(conversion_rows))
        return nullptr;

    char *form = result->printf_form;
    *form++ = '%';
    for (const char *flag = result->row->flags; *flag != '\0'; flag++)
        if (memchr(flags, *flag, flag_count) != nullptr)
            *form++ = *flag;
    strcpy(form, result->row->has_precision ? "*.*" : "*");
    strncat(form, text, 1);
    return text + 1;
}

// Writes one value, cut at the end of the buffer.
static void message_value(message_buffer *message, const conversion &how, const prompt_value &value)
{
    char *to = message->text + message->used;
    size_t left = sizeof message->text - message->used;
    int length;
    if (how.row->kind == PROMPT_TEXT)
        length = snprintf(to, left, how.printf_form, how.width, how.precision, value.text);
    else if (how.row->has_precision)
        length =
            snprintf(to, left, how.printf_form, how.width, how.precision, static_cast<int>(value.number));
    else
        length = snprintf(to, left, how.printf_form, how.width, static_cast<int>(value.number));
    if (length > 0)
        message->used += std::min(static_cast<size_t>(length), left - 1);
}

// Formats a prompt's text with the values. A percent sign without a conversion and a value of its kind is
// plain text.
static void message_format(message_buffer *message, const char *format, const prompt_value *values, int count)
{
    const prompt_value *values_end = values + count;
    while (*format != '\0') {
        if (format[0] != '%' || format[1] == '%') {
            message_char(message, *format);
            format += *format == '%' ? 2 : 1;
            continue;
        }
        conversion how;
        const char *after = read_conversion(format + 1, &how);
        if (after != nullptr && values != values_end && values->kind == how.row->kind &&
            (values->kind != PROMPT_TEXT || values->text != nullptr)) {
            message_value(message, how, *values++);
            format = after;
        } else {
            message_char(message, *format++);
        }
    }
}

// True if a line begins with this number, after white space and a sign if there are any.
static bool line_has_number(const char *line, int64_t number)
{
    const char *digits = text_skip_white(line);
    if (*digits == '-' || *digits == '+')
        digits++;
    return text_is(*digits, CHAR_DIGIT) && int_from_text(line, strlen(line)) == number;
}

// Looks a prompt up in the file. If it is found, line is its line, or piece of a long line, as read.
static bool find_prompt(int64_t number, char (&line)[prompt_line_size])
{
    FILE *file = fopen(prompt_file_name, "r");
    if (file == nullptr)
        return false;
    bool found = false;
    while (!found && fgets(line, sizeof line, file) != nullptr)
        found = line_has_number(line, number);
    (void)fclose(file);
    return found;
}

// The text of a prompt's line: from column 4 on, without the last character, which is the line feed
// except in a piece of a long line and in a last line that has none. Empty if the line is shorter.
static const char *prompt_text(char (&line)[prompt_line_size])
{
    size_t length = strlen(line);
    if (length > 0)
        line[--length] = '\0';
    return length > prompt_text_column ? line + prompt_text_column : "";
}

static void make_prefix(char (&prefix)[prompt_prefix_size], int32_t line)
{
    prefix[0] = '\0';
    if (line == -1)
        return;
    if (prompt_prefix_name == nullptr)
        (void)snprintf(prefix, sizeof prefix, "%s: ", "mcomp");
    else if (line == 0)
        (void)snprintf(prefix, sizeof prefix, "%s: ", prompt_prefix_name);
    else
        (void)snprintf(prefix, sizeof prefix, "%s (%d): ", prompt_prefix_name, line);
}

static bool is_recoverable(int32_t code)
{
    const auto *end = std::end(recoverable_codes);
    return code > 0 || std::find(recoverable_codes, end, code) != end;
}

void prompt_report(int32_t code, int32_t line, const prompt_value *values, int count)
{
    char prefix[prompt_prefix_size];
    make_prefix(prefix, line);

    // 64 bits wide, so that the smallest code has an absolute value too.
    int64_t number = code < 0 ? -int64_t{code} : code;
    char found[prompt_line_size];
    message_buffer message = {};
    if (find_prompt(number, found))
        message_format(&message, prompt_text(found), values, count);
    else
        (void)snprintf(message.text, sizeof message.text, "Prompt not found: errfile = %s, pnum = %lld",
                       prompt_file_name, static_cast<long long>(number));
    printf("%s%s\n", prefix, message.text);
    if (is_recoverable(code))
        return;
    // What was written of the current script must not be lost with the process.
    if (out_file.open)
        out_close();
    exit(1);
}
