#include "report/csv.h"

static void add_field(std::string *line, std::string_view field)
{
    if (field.find_first_of(",\"\r\n") == std::string_view::npos) {
        *line += field;
        return;
    }
    *line += '"';
    for (char c : field)
        line->append(c == '"' ? 2 : 1, c);
    *line += '"';
}

std::string csv_text(const csv_row &fields)
{
    std::string line;
    for (size_t i = 0; i < fields.size(); i++) {
        if (i > 0)
            line += ',';
        add_field(&line, fields[i]);
    }
    return line + "\n";
}

// Takes the next field off a text, and the comma after it. False if it was the last one of its row.
static bool take_field(std::string_view *text, std::string *field)
{
    bool quoted = text->substr(0, 1) == "\"";
    if (quoted)
        text->remove_prefix(1);
    for (; !text->empty(); text->remove_prefix(1)) {
        char c = text->front();
        if (quoted && c == '"') {
            if (text->substr(0, 2) != "\"\"") {
                quoted = false;
                continue;
            }
            text->remove_prefix(1);
        } else if (!quoted && (c == ',' || c == '\n')) {
            text->remove_prefix(1);
            return c == ',';
        } else if (!quoted && c == '\r') {
            continue;
        }
        *field += c;
    }
    return false;
}

std::vector<csv_row> csv_rows(std::string_view text)
{
    std::vector<csv_row> rows;
    while (!text.empty()) {
        csv_row row;
        bool more = true;
        while (more)
            more = take_field(&text, &row.emplace_back());
        if (row.size() > 1 || !row[0].empty())
            rows.push_back(std::move(row));
    }
    return rows;
}
