#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace tintorra::cli {

// Options every command sees.
struct GlobalOptions {
    bool quiet = false;
};

// Each command registers itself on the tool and returns what runs it once the arguments are
// parsed; the runner returns the exit code or throws CliFailure.
using CommandRunner = std::function<int()>;

CommandRunner addShiftCommand(CLI::App& tool, const GlobalOptions& global);
CommandRunner addParamsCommand(CLI::App& tool, const GlobalOptions& global);
CommandRunner addInfoCommand(CLI::App& tool, const GlobalOptions& global);
CommandRunner addSpectrumCommand(CLI::App& tool, const GlobalOptions& global);
CommandRunner addGamutCommand(CLI::App& tool, const GlobalOptions& global);
CommandRunner addDemoCommand(CLI::App& tool, const GlobalOptions& global);

} // namespace tintorra::cli
