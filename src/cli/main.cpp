// tintorra-cli: Tintorra's main job without a display.
#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "common/Diagnostics.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace {

// "tintorra-cli shift", "tintorra-cli params encode": the command the user was typing, so that a
// usage error points to the help that explains it.
std::string commandPath(const CLI::App& tool)
{
    std::string path = tool.get_name();
    const CLI::App* app = &tool;
    while (!app->get_subcommands().empty()) {
        app = app->get_subcommands().front();
        path += " " + app->get_name();
    }
    return path;
}

std::string usageHint(const CLI::App& tool)
{
    return "run '" + commandPath(tool) + " --help' for the usage";
}

// "help" and "help COMMAND..." stand for "--help" and "COMMAND... --help".
std::vector<std::string> argumentsWithHelpCommand(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    // CLI11 takes its arguments last first.
    return {arguments.rbegin(), arguments.rend()};
}

} // namespace

int main(int argc, char** argv)
{
    using namespace tintorra::cli;
    CLI::App tool("Tintorra recolours part of a photograph: it moves a range of hues towards a "
                  "target hue, changes their saturation and brightness, and keeps every result "
                  "inside the image's RGB gamut.",
                  "tintorra-cli");
    tool.footer("Run 'tintorra-cli help COMMAND' or 'tintorra-cli COMMAND --help' for a "
                "command's options. Exit status: 0 success, 1 processing failure, 2 usage error.");
    tool.require_subcommand(1);
    GlobalOptions global;
    tool.add_flag("-q,--quiet", global.quiet, "no progress bar and no messages besides errors")
        ->configurable(false);
    bool verbose = false;
    tool.add_flag("-v,--verbose", verbose,
                  "also print the engine's diagnostic messages (table and gamut builds) on stderr")
        ->configurable(false);
    tool.set_version_flag("--version", "tintorra-cli 0.1.0");

    const std::vector<CommandRunner> runners{
        addShiftCommand(tool, global), addParamsCommand(tool, global),
        addInfoCommand(tool, global),  addSpectrumCommand(tool, global),
        addGamutCommand(tool, global), addDemoCommand(tool, global),
    };
    // --quiet and --verbose are accepted after the command as well.
    for (CLI::App* command : tool.get_subcommands({})) {
        command->fallthrough();
    }

    try {
        std::vector<std::string> arguments = argumentsWithHelpCommand(argc, argv);
        tool.parse(arguments);
    } catch (const CLI::CallForHelp& help) {
        return tool.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return tool.exit(help);
    } catch (const CLI::CallForVersion& version) {
        return tool.exit(version);
    } catch (const CLI::ParseError& error) {
        printError(withHint(error.what(), usageHint(tool)));
        return kExitUsageError;
    }

    if (verbose) {
        tintorra::setDiagnosticsSink(
            [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); });
    }

    const std::vector<CLI::App*> chosen = tool.get_subcommands();
    const std::vector<CLI::App*> all = tool.get_subcommands({});
    try {
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (!chosen.empty() && all[i] == chosen.front()) {
                return runners[i]();
            }
        }
    } catch (const CliFailure& failure) {
        const std::string message = failure.what();
        // A message with a hint of its own already says what to type.
        const bool hinted = message.find(';') != std::string::npos;
        printError(failure.exitCode() == kExitUsageError && !hinted
                       ? withHint(message, usageHint(tool))
                       : message);
        return failure.exitCode();
    } catch (const std::exception& exception) {
        printError(withHint(std::string("unexpected failure: ") + exception.what(),
                            "please report it with the command you ran"));
        return kExitProcessingFailure;
    }
    printError("no command given; run 'tintorra-cli --help'");
    return kExitUsageError;
}
