#include "cli/CliFailure.h"

#include <cstdio>

namespace tintorra::cli {

void printError(const std::string& message)
{
    std::string line = message;
    for (char& c : line) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    std::fprintf(stderr, "tintorra-cli: %s\n", line.c_str());
}

} // namespace tintorra::cli
