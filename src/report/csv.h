// CSV: commas between fields, a line feed after a row, quotes where a field needs them, doubled inside.
//
// Fields are bytes; nothing is decoded.
#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <vector>

using csv_row = std::vector<std::string>;

// A row with its line end.
std::string csv_text(const csv_row &fields);

// The rows of a text; line ends inside quotes belong to fields, empty lines are skipped, an open quote ends
// with the text.
std::vector<csv_row> csv_rows(std::string_view text);

// A field as a number; 0 if it begins with none.
template <typename number> number csv_number(const std::string &field)
{
    number value = 0;
    std::from_chars(field.data(), field.data() + field.size(), value);
    return value;
}
