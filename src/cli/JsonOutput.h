#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tintorra::cli {

using Json = nlohmann::ordered_json;

// Prints one JSON value on its own line of standard output. Doubles are written in their
// shortest form that reads back to the same bits; values that JSON cannot hold (infinities and
// NaN, which a hand-made parameter string can produce) are written as null.
void printJson(const Json& value);

// A double, or null when JSON cannot represent it.
Json jsonNumber(double value);

} // namespace tintorra::cli
