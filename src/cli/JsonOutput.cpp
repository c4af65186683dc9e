#include "cli/JsonOutput.h"

#include <cmath>
#include <cstdio>

namespace tintorra::cli {

void printJson(const Json& value)
{
    const std::string text = value.dump();
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

Json jsonNumber(double value)
{
    if (!std::isfinite(value)) {
        return nullptr;
    }
    return value;
}

} // namespace tintorra::cli
