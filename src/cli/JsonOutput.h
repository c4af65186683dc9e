#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace tintorra::cli {

using Json = nlohmann::ordered_json;

// Prints one JSON value on its own line of standard output. Doubles are written in their
// shortest form that reads back to the same bits; values that JSON cannot hold (infinities and
// NaN, which a hand-made parameter string can produce) are written as null.
void printJson(const Json& value, std::FILE* stream = stdout);

// A file name as JSON text: valid UTF-8 is kept, every other byte is written as the four
// characters \xNN, so that any name the system allows can be printed.
std::string jsonFileName(const std::string& name);

// A double, or null when JSON cannot represent it.
Json jsonNumber(double value);

} // namespace tintorra::cli
