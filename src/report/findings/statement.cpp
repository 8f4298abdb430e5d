#include "report/findings/statement.h"

#include "report/show.h"
#include "statements/arg_slots.h"
#include "support/text.h"

#include <algorithm>

bool is_comment(std::string_view line)
{
    if (line.substr(0, 2) == "//")
        return true;
    return line.size() >= 3 && char_lower(line[0]) == 'r' && char_lower(line[1]) == 'e' &&
           char_lower(line[2]) == 'm' && (line.size() == 3 || !text_is(line[3], CHAR_WORD));
}

static void split_lines(statement_view *statement, uint64_t start)
{
    std::string_view rest = statement->output;
    for (uint64_t number = statement->output_line; !rest.empty(); number++) {
        size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view text = rest.substr(0, end);
        size_t white = std::min(text.find_first_not_of(" \t\r\v\f"), text.size());
        bool live = white < text.size() && !is_comment(text.substr(white));
        statement->lines.push_back({start, number, text, live, false, false});
        size_t taken = std::min(end + 1, rest.size());
        start += taken;
        rest.remove_prefix(taken);
    }
}

const written_line *line_at(const std::vector<written_line> &lines, uint64_t offset)
{
    auto after = std::upper_bound(lines.begin(), lines.end(), offset,
                                  [](uint64_t at, const written_line &line) { return at < line.start; });
    return after == lines.begin() ? nullptr : &after[-1];
}

static void mark_lines_inside(statement_view *statement)
{
    std::vector<written_line> &lines = statement->lines;
    for (int32_t i = 0; i < statement->record->write_count; i++) {
        const emit_write &write = statement->record->writes[i];
        const written_line *line = line_at(lines, write.from);
        if (line == nullptr)
            continue;
        bool of_live = line->live && !line->rest;
        for (size_t at = static_cast<size_t>(line - lines.data()) + 1; at < lines.size(); at++) {
            if (lines[at].start > write.to)
                break;
            lines[at].inside = true;
            lines[at].live |= of_live;
            lines[at].rest |= !of_live;
        }
    }
}

statement_view statement_view_of(const journal_record &record, std::string_view output, uint64_t start,
                                 uint64_t output_line)
{
    statement_view statement{};
    statement.record = &record;
    statement.row = record.done.result >= 0 ? &command_row_at(record.done.result) : nullptr;
    statement.line = record.done.head.line;
    statement.last_line = std::max(record.done.head.line, record.done.next_line - 1);
    statement.output = output;
    statement.output_line = output_line;
    split_lines(&statement, start);
    mark_lines_inside(&statement);
    statement.output_lines = statement.lines.size();
    return statement;
}

std::vector<const written_line *> next_live(const statement_view &statement, size_t *at, bool *rest)
{
    const std::vector<written_line> &lines = statement.lines;
    std::vector<const written_line *> found;
    while (*at < lines.size() && !lines[*at].live)
        ++*at;
    *rest = *at < lines.size() && lines[*at].rest;
    do {
        if (*at < lines.size())
            found.push_back(&lines[(*at)++]);
    } while (*at < lines.size() && lines[*at].inside);
    return found;
}

std::vector<uint64_t> lines_of(const statement_view &statement, bool live)
{
    std::vector<uint64_t> numbers;
    for (const written_line &line : statement.lines)
        if (line.live == live && line.text.find_first_not_of(" \t\r") != std::string_view::npos)
            numbers.push_back(line.number);
    return numbers;
}

std::vector<uint64_t> line_heads(const statement_view &statement, const std::vector<uint64_t> &numbers,
                                 size_t *more)
{
    const std::vector<written_line> &lines = statement.lines;
    std::vector<uint64_t> heads;
    for (uint64_t number : numbers) {
        auto at = static_cast<size_t>(number - lines.front().number);
        while (at > 0 && lines[at].inside)
            at--;
        if (std::find(heads.begin(), heads.end(), lines[at].number) == heads.end())
            heads.push_back(lines[at].number);
    }
    *more = 0;
    if (heads.size() == 1)
        for (auto at = static_cast<size_t>(heads[0] - lines.front().number) + 1;
             at < lines.size() && lines[at].inside; at++)
            ++*more;
    return heads;
}

// ---- Arguments ----

// The slot of a position; null if the list ended before it.
static const arg_slot *slot_of(int32_t position)
{
    const arg_slot *slot = arg_slots + position;
    return slot <= slots_last ? slot : nullptr;
}

int32_t argument_last(const statement_view &statement)
{
    return std::max(statement.record->done.fetched, statement.record->typed_count);
}

std::string_view argument_text(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    return slot != nullptr ? std::string_view(slot->text, slot->text_size) : std::string_view();
}

bool argument_is_string(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    return slot != nullptr && slot->holds == HOLDS_STRING;
}

double argument_number(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    bool numeric = slot != nullptr && (slot_holds(slot, HOLDS_LONG) || slot_holds(slot, HOLDS_INT) ||
                                       slot_holds(slot, HOLDS_FLOAT) || slot_holds(slot, HOLDS_DOUBLE));
    return numeric ? slot_number(slot) : 0;
}

double argument_value(int32_t position)
{
    const arg_slot *slot = slot_of(position);
    double number = argument_number(position);
    bool whole = slot != nullptr && (slot_holds(slot, HOLDS_LONG) || slot_holds(slot, HOLDS_INT));
    return whole ? int_from_double(number) : number;
}

uint8_t argument_spec(const statement_view &statement, int32_t position)
{
    return statement.row->spec[std::min<int32_t>(position, statement.row->spec_count) - 1];
}

std::string_view argument_typed(const statement_view &statement, int32_t position)
{
    if (position > statement.record->typed_count)
        return argument_text(position);
    const journal_text &typed = statement.record->typed[position - 1];
    return text_trimmed({typed.text, typed.size});
}

std::string_view without_quotes(std::string_view text)
{
    bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string escapes_decoded(std::string_view text)
{
    std::string decoded;
    for (size_t at = 0; at < text.size(); at++) {
        size_t size = 0;
        char c = text[at];
        if (c == '\\' && at + 1 < text.size())
            c = escape_decode(text.data() + at + 1, text.data() + text.size(), false, &size);
        decoded += c;
        at += size;
    }
    return decoded;
}

// True if what is written is an argument's text, quotes apart: as it is, or with its escapes written again.
static bool is_text_of(std::string_view written, std::string_view text)
{
    std::string_view content = without_quotes(text);
    return without_quotes(written) == content || escapes_decoded(written) == content;
}

argument_use argument_use_of(const statement_view &statement, int32_t position, bool live)
{
    argument_use use;
    uint64_t start = statement.lines.empty() ? 0 : statement.lines.front().start;
    for (int32_t i = 0; i < statement.record->write_count; i++) {
        const emit_write &write = statement.record->writes[i];
        const written_line *line = write.slot == position ? line_at(statement.lines, write.from) : nullptr;
        if (line == nullptr || (line->live && !line->rest) != live)
            continue;
        std::string_view written = statement.output.substr(static_cast<size_t>(write.from - start),
                                                           static_cast<size_t>(write.to - write.from));
        bool value = write.source == EMIT_VALUE || write.source == EMIT_CODE;
        bool text = !value && is_text_of(written, argument_text(position));
        use.text |= text;
        use.value |= value;
        use.code |= write.source == EMIT_CODE;
        if (use.line == 0 && (text || value)) {
            use.line = line->number;
            use.written = written;
        }
    }
    return use;
}
