#include "cli/CliFailure.h"

#include <cstdio>

namespace tintorra::cli {

std::string withHint(const std::string& reason, const std::string& hint)
{
    std::string text = reason;
    while (!text.empty() && (text.back() == '.' || text.back() == ' ' || text.back() == ';')) {
        text.pop_back();
    }
    if (!hint.empty()) {
        text += "; " + hint;
    }
    return text;
}

void printError(const std::string& message)
{
    std::string line = message;
    for (char& c : line) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    while (!line.empty() && (line.back() == ' ' || line.back() == '.')) {
        line.pop_back();
    }
    std::fprintf(stderr, "tintorra-cli: %s\n", line.c_str());
}

} // namespace tintorra::cli
