// JSON as text, for the writers that have some. They are compiled as one: the library's header takes the
// compiler longer than all that is written with it.
#pragma once

#include <nlohmann/json.hpp>

#include <stdio.h>

#include <string>

using json = nlohmann::ordered_json;

// A value on one line. What is no UTF-8 is replaced.
inline std::string json_text(const json &value)
{
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

inline void put_json(FILE *file, const json &value)
{
    fputs(json_text(value).c_str(), file);
}
