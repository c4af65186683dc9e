#pragma once

#include <stdexcept>
#include <string>

namespace tintorra::cli {

// Exit codes the tool promises to scripts.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitProcessingFailure = 1;
inline constexpr int kExitUsageError = 2;

// A failure that ends a command (or one file of a batch). The message is one line that says what
// went wrong and what to do; the tool prefixes it with its name on standard error.
class CliFailure : public std::runtime_error {
public:
    CliFailure(int exitCode, const std::string& message)
        : std::runtime_error(message), exitCode_(exitCode)
    {}
    int exitCode() const { return exitCode_; }

private:
    int exitCode_;
};

[[noreturn]] inline void failUsage(const std::string& message)
{
    throw CliFailure(kExitUsageError, message);
}

[[noreturn]] inline void failProcessing(const std::string& message)
{
    throw CliFailure(kExitProcessingFailure, message);
}

// Joins a reason and a hint into one sentence: "reason; hint", whatever full stops the reason
// (often a library's text) ends with. An empty hint leaves the reason alone, stop removed.
std::string withHint(const std::string& reason, const std::string& hint);

// Writes "tintorra-cli: <message>" as a single line on standard error (line breaks inside the
// message become spaces, so that scripts can rely on one line per error).
void printError(const std::string& message);

} // namespace tintorra::cli
